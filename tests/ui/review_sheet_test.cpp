#include "ui/remote_changes/review_sheet.h"

#include "app/model_fixture.h"
#include "screen.h"
#include "ui/theme/local_time.h"

#include <gtest/gtest.h>

#include <QListView>

namespace zembrastel::testing {
namespace {

using namespace ui;

RemoteChange change(const std::string& path, bool bothChanged = false) {
    return {.path = path, .local = {}, .remoteDate = RemoteDate(std::chrono::seconds(1)), .bothChanged = bothChanged};
}

// A profile with two files that are newer on the server, one of them also edited locally.
class ReviewSheet : public ModelFixture {
protected:
    ReviewSheet() {
        writeTree(site.root(), {{"both", "local"}, {"theirs", "local"}});
        withProfile().save(
            site.profile, std::nullopt, FileMap{{"both", Fingerprint{}}, {"theirs", site.fingerprint("theirs")}});
        editOnServer("both", "server", 1);
        editOnServer("theirs", "server", 1);
        bridge = std::make_unique<ModelBridge>(*model);
    }
    ~ReviewSheet() override {
        sheet.reset();
        bridge.reset();
    }

    void openAfterCheck() {
        model->start(id());
        ASSERT_TRUE(reaches(Phase::awaitingReview));
        ASSERT_TRUE(model->presentedReview());
        open(*model->presentedReview());
    }

    void open(const RemoteReview& review) {
        sheet = std::make_unique<RemoteChangesView>(*bridge, review);
        sheet->open();
        list = sheet->findChild<QListView*>();
    }

    void press(const QString& label) const { button(*sheet, label).click(); }
    [[nodiscard]] bool shows(const QString& text) const { return findLabel(*sheet, text) != nullptr; }

    std::unique_ptr<ModelBridge> bridge;
    std::unique_ptr<RemoteChangesView> sheet;
    QListView* list = nullptr;
};

TEST_F(ReviewSheet, ClosingStaysPausedAndKeepsTheReview) {
    for (const int way : {0, 1, 2}) {
        openAfterCheck();
        if (way == 0) QTest::keyClick(list, Qt::Key_Escape);
        if (way == 1) sheet->close();
        if (way == 2) press("Stay paused");
        EXPECT_FALSE(sheet->isVisible());
        EXPECT_FALSE(model->running(id()));
        EXPECT_FALSE(model->presentedReview());
        EXPECT_TRUE(model->reviews().contains(id()));
    }
    model->openReview(id()); // of a profile that is already paused
    open(*model->presentedReview());
    EXPECT_EQ(sheet->selected(), PathSet{"theirs"});
    sheet->close();
    EXPECT_FALSE(model->presentedReview());
    EXPECT_EQ(onServer("theirs"), "server");
    EXPECT_EQ(readFile(site / "theirs"), "local");
}

TEST_F(ReviewSheet, OnlyTickedFilesAreReplaced) {
    openAfterCheck();
    EXPECT_TRUE(shows("1 of 2 selected"));
    EXPECT_NE(findButton(*sheet, "Download 1 & start watching"), nullptr);
    press("Select all");
    EXPECT_NE(findButton(*sheet, "Download 2 & start watching"), nullptr);
    const QModelIndex theirs = list->model()->index(1, 0);
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualRect(theirs).center());
    EXPECT_EQ(sheet->selected(), PathSet{"both"});
    press("Download 1 & start watching");
    EXPECT_FALSE(sheet->isVisible());
    EXPECT_TRUE(model->running(id()));
    ASSERT_TRUE(reaches(Phase::watching));
    EXPECT_EQ(readFile(site / "both"), "server");
    EXPECT_EQ(readFile(site / "theirs"), "local");
}

TEST_F(ReviewSheet, OutdatedSheetClosesAndPausesNothing) {
    openAfterCheck();
    model->retryCheck(id());
    EXPECT_FALSE(sheet->isVisible());
    EXPECT_TRUE(model->running(id()));
    ASSERT_TRUE(reaches(Phase::awaitingReview));
}

TEST_F(ReviewSheet, UnsavedDecisionLeavesTheSheetOpen) {
    openAfterCheck();
    std::filesystem::remove_all(stateFolder / "state");
    writeFile(stateFolder / "state", "in the way");
    press("Select none");
    press("Keep local & start watching");
    EXPECT_TRUE(model->alert());
    EXPECT_TRUE(sheet->isVisible());
    EXPECT_TRUE(model->presentedReview());
}

TEST_F(ReviewSheet, LongReviewIsReachableByKeyboard) {
    RemoteReview review{.id = id(), .changes = {}};
    for (int number = 0; number < 5000; ++number) {
        review.changes.push_back(change("folder/file" + std::to_string(number), number % 2 == 0));
    }
    open(review);
    EXPECT_LE(sheet->height(), sheet->screen()->availableGeometry().height());
    EXPECT_TRUE(shows("2500 of 5000 selected"));
    QTest::keyClick(list, Qt::Key_End);
    QTest::keyClick(list, Qt::Key_Space);
    EXPECT_TRUE(shows("2499 of 5000 selected"));
    const QModelIndex last = list->model()->index(4999, 0);
    EXPECT_EQ(list->currentIndex(), last);
    EXPECT_TRUE(list->viewport()->rect().contains(list->visualRect(last)));
    const QString row = list->model()->index(4998, 0).data(Qt::AccessibleTextRole).toString();
    EXPECT_TRUE(row.startsWith("folder/file4998, Not selected, Local: ")) << row.toStdString();
    EXPECT_TRUE(row.contains(", Server: ") && row.endsWith(", Also changed locally since the last sync"));
}

TEST(Review, LocalEditIsNotTickedForReplacement) {
    EXPECT_EQ(preselection({change("a"), change("b", true), change("c")}), (PathSet{"a", "c"}));
    EXPECT_EQ(preselection({change("a", true), change("b", true)}), PathSet{});
    EXPECT_EQ(confirmLabel(0), "Keep local & start watching");
    EXPECT_EQ(confirmLabel(1), "Download 1 & start watching");
}

TEST(Review, DatesFollowTheUsersLocale) {
    const QDateTime date({2026, 11, 4}, {17, 48, 30});
    EXPECT_EQ(dateWithMonthName(date, QLocale("en_GB")), "4 Nov 2026, 17:48");
    EXPECT_EQ(dateWithMonthName(date, QLocale("en_US")), "Nov 4, 2026, 5:48 PM");
    EXPECT_EQ(dateWithMonthName(date, QLocale("de_DE")), "4. Nov. 2026, 17:48");
    EXPECT_EQ(dateWithMonthName(date, QLocale::c()), "4 Nov 2026, 17:48") << "seconds do not fit into the column";
    EXPECT_EQ(dateWithMonthName(date, QLocale("ja_JP")), "2026年11月4日, 17:48");
}

} // namespace
} // namespace zembrastel::testing
