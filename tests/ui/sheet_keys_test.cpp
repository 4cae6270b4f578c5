// Keys in all sheets and dialogs, and the order in which sheets appear.
#include "screen_fixture.h"
#include "support/ftp_server.h"
#include "support/local_site.h"
#include "ui/backups/backups_sheet.h"
#include "ui/content_picker/content_picker.h"
#include "ui/import/import_sheet.h"
#include "ui/profile_editor/profile_editor.h"
#include "ui/remote_changes/review_sheet.h"
#include "ui/shell.h"
#include "ui/widgets/confirm_dialog.h"
#include "ui/widgets/row_list.h"

#include <QApplication>

#include <functional>
#include <utility>
#include <vector>

namespace zembrastel::testing {
namespace {

// Two profiles; every check of their server finds a newer file.
class SheetKeys : public ScreenFixture {
protected:
    SheetKeys() {
        options.work = {
            .check = [](const auto&...) { return ServerCheck{.changes = newerPage()}; },
            .watch = [](const auto&, const auto&) {}};
        first = addProfile("First");
        second = addProfile("Second");
    }

    [[nodiscard]] static std::vector<RemoteChange> newerPage() {
        return {{.path = "page", .local = {}, .remoteDate = RemoteDate(std::chrono::seconds(1))}};
    }

    // The filled button; in questions and in the list of backups, which have none, the default button.
    [[nodiscard]] static QPushButton& filled(const QDialog& dialog) {
        QPushButton* chosen = nullptr;
        for (auto* const each : dialog.findChildren<PushButton*>()) {
            const bool fillsNone = qobject_cast<const ConfirmDialog*>(&dialog) != nullptr
                                   || qobject_cast<const BackupsSheet*>(&dialog) != nullptr;
            if (each->isVisible() && (fillsNone ? each->isDefault() : each->isFilled())) chosen = each;
        }
        if (chosen == nullptr) throw std::logic_error("no filled button");
        return *chosen;
    }

    // The visible sheet of that class; nullptr if there is none.
    template <class Sheet>
    [[nodiscard]] static Sheet* visibleSheet() {
        for (QWidget* const each : QApplication::topLevelWidgets()) {
            if (auto* const sheet = qobject_cast<Sheet*>(each); sheet != nullptr && sheet->isVisible()) return sheet;
        }
        return nullptr;
    }

    Profile first;
    Profile second;
};

TEST_F(SheetKeys, EnterPressesTheFilledButtonEscapeNone) {
    FtpServer server(FtpServer::Kind::odd);
    server.put("site/page", "x");
    const LocalSite site(server);
    writeFile(
        folder / "sites.xml",
        "<FileZilla3><Servers><Server><Name>Third</Name><Host>a.example</Host><Protocol>4</Protocol><User>u</User>"
        "<LocalDir>"
            + first.localFolder + "</LocalDir></Server></Servers></FileZilla3>");
    const auto picker = [&](bool forSync) {
        return std::make_unique<RemoteDownloadPicker>(
            context, site.profile, site.password, DownloadSelection(), forSync, [](const auto&...) {});
    };
    const auto question = [](const QString& confirmText) {
        return std::make_unique<ConfirmDialog>("Really?", "It may hurt.", confirmText);
    };
    const auto editor = [&](const std::optional<Uuid>& id) {
        return std::make_unique<ProfileEditor>(*bridge, context, id, nullptr);
    };
    const RemoteReview review{.id = first.id, .changes = newerPage()};
    const std::vector<std::pair<QString, std::function<std::unique_ptr<QDialog>()>>> cases{
        {"Use selection", [&] { return picker(false); }},
        {"Use sync selection", [&] { return picker(true); }},
        {"Download 1 && start watching", [&] { return std::make_unique<RemoteChangesView>(*bridge, review); }},
        {"Import 1 profile",
         [&] { return std::make_unique<ImportSheet>(*bridge, context, folder / "sites.xml", nullptr); }},
        {"Choose download contents…", [&] { return editor(std::nullopt); }},
        {"Save changes", [&] { return editor(second.id); }},
        {"Close", [&] { return std::make_unique<BackupsSheet>(context, first); }},
        {"Cancel", [&] { return question("Remove"); }},
        {"OK", [&] { return question({}); }}};
    for (const Qt::Key key : {Qt::Key_Escape, Qt::Key_Return}) {
        for (const auto& [label, make] : cases) {
            SCOPED_TRACE(label.toStdString());
            const std::unique_ptr<QDialog> dialog = make();
            dialog->open();
            const auto* const list = dialog->findChild<RowList*>();
            ASSERT_TRUE(waitFor([&] {
                const QModelIndex at = list == nullptr ? QModelIndex() : list->currentIndex();
                const bool isListed = list == nullptr || label == "Close" || at.isValid();
                const bool isLoading = at.data(Qt::AccessibleTextRole).toString().startsWith("Loading");
                return dialog->focusWidget() != nullptr && filled(*dialog).isEnabled() && isListed && !isLoading;
            }));
            EXPECT_EQ(filled(*dialog).text(), label);
            QStringList pressed;
            for (auto* const each : dialog->findChildren<PushButton*>()) {
                QObject::connect(each, &QPushButton::clicked, [&pressed, text = each->text()] { pressed << text; });
            }
            QTest::keyClick(dialog->focusWidget(), key);
            EXPECT_EQ(pressed, key == Qt::Key_Escape ? QStringList() : QStringList(label));
            EXPECT_FALSE(key == Qt::Key_Escape && dialog->isVisible());
        }
    }
}

TEST_F(SheetKeys, KeysMeantForAnotherFieldDecideNoReview) {
    const auto review = [] { return visibleSheet<RemoteChangesView>(); };
    const auto start = [this](const Uuid& id) {
        model->start(id);
        return waitFor([&] { return model->reviews().contains(id); });
    };
    Shell shell(*model, context);
    shell.showWindow();
    QCoreApplication::processEvents();
    auto* const window = QApplication::activeWindow();
    model->select(second.id);
    QTest::keyClick(window, Qt::Key_N, Qt::ControlModifier);
    ASSERT_TRUE(start(first.id));
    QTest::keyClicks(QApplication::activeModalWidget()->focusWidget(), "a b c");
    QCoreApplication::processEvents();
    ASSERT_NE(visibleSheet<ProfileEditor>(), nullptr);
    EXPECT_EQ(testing::line(*visibleSheet<ProfileEditor>(), "Profile name").text(), "a b c");
    EXPECT_EQ(review(), nullptr);

    testing::button(*visibleSheet<ProfileEditor>(), "Cancel").click();
    ASSERT_TRUE(waitFor([&] { return review() != nullptr; }));
    EXPECT_EQ(review()->windowTitle(), "Newer files on the server – First");
    EXPECT_EQ(model->selection(), first.id);
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Escape, Qt::Key_Tab, Qt::Key_Space}) {
        QTest::keyClick(review()->focusWidget(), key);
        ASSERT_NE(review(), nullptr) << "a key meant for another field has decided";
        EXPECT_EQ(review()->selected(), PathSet{"page"});
    }
    ASSERT_TRUE(start(second.id)); // its review follows this one
    ASSERT_TRUE(waitFor([&] { return review()->focusWidget() == review()->findChild<QListView*>(); }));
    QTest::keyClick(review()->focusWidget(), Qt::Key_Space);
    QTest::keyClick(review()->focusWidget(), Qt::Key_Return);
    EXPECT_FALSE(model->reviews().contains(first.id));
    ASSERT_TRUE(waitFor([&] { return review() != nullptr; }));
    EXPECT_EQ(review()->windowTitle(), "Newer files on the server – Second");
    QTest::keyClick(review()->focusWidget(), Qt::Key_Return);
    EXPECT_TRUE(model->reviews().contains(second.id)) << "a second Enter has decided the next review";
    EXPECT_EQ(model->selection(), second.id);
    review()->close();
    window->close();
}

} // namespace
} // namespace zembrastel::testing
