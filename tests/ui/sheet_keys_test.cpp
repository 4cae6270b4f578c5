// Keys in all sheets and dialogs, and which of them comes to the screen when.
#include "screen.h"
#include "support/file_tree.h"
#include "support/ftp_server.h"
#include "support/local_site.h"
#include "support/temporary_folder.h"
#include "ui/backups/backups_sheet.h"
#include "ui/bridge/qt_main_context.h"
#include "ui/content_picker/content_picker.h"
#include "ui/import/import_sheet.h"
#include "ui/main_window/main_window.h"
#include "ui/profile_editor/profile_editor.h"
#include "ui/remote_changes/review_sheet.h"
#include "ui/shell.h"
#include "ui/widgets/confirm_dialog.h"
#include "ui/widgets/row_list.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QListView>
#include <QSignalSpy>

#include <filesystem>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace zembrastel::testing {

using namespace ui;

namespace {

// Two profiles; the check of their server always finds a newer file.
class SheetKeys : public ::testing::Test {
protected:
    SheetKeys() {
        for (Profile* const profile : {&first, &second}) {
            profile->name = profile == &first ? "First" : "Second";
            profile->host = "127.0.0.1";
            profile->port = 1; // nothing listens there
            profile->username = "web";
            profile->localFolder = folder / profile->name;
            std::filesystem::create_directory(profile->localFolder);
            model.save(*profile, std::nullopt);
            model.keepForSession(profile->id, "secret");
        }
    }

    [[nodiscard]] static QPushButton& filled(const QDialog& dialog) {
        QPushButton* chosen = nullptr;
        for (auto* const each : dialog.findChildren<PushButton*>()) {
            const bool cancels = qobject_cast<const ConfirmDialog*>(&dialog) != nullptr && each->isDefault();
            if (each->isVisible() && (each->isFilled() || cancels)) chosen = each;
        }
        if (chosen == nullptr) throw std::logic_error("no filled button");
        return *chosen;
    }

    template <class Sheet>
    [[nodiscard]] static Sheet* visibleSheet() {
        for (QWidget* const each : QApplication::topLevelWidgets()) {
            if (auto* const sheet = qobject_cast<Sheet*>(each); sheet != nullptr && sheet->isVisible()) return sheet;
        }
        return nullptr;
    }

    TemporaryFolder folder;
    QtMainContext context;
    Profile first;
    Profile second;
    AppModel model{
        context,
        {.storeOverride = StateStore(folder / "state"),
         .passwordAccess = {
             .save = [](const std::string&, const Uuid&) {},
             .read = [](const Uuid&) { return std::string("secret"); },
             .remove = [](const Uuid&) {}},
         .work = {
             .check =
                 [](const auto&...) {
                     return ServerCheck{
                         .changes = {{.path = "page", .local = {}, .remoteDate = RemoteDate(std::chrono::seconds(1))}}};
                 },
             .watch = [](const auto&, const auto&) {}}}};
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
    ModelBridge bridge(model);
    const auto picker = [&](bool forSync) {
        return std::make_unique<RemoteDownloadPicker>(
            context, site.profile, site.password, DownloadSelection(), forSync, [](const DownloadSelection&) {});
    };
    const auto question = [](const QString& confirmText) {
        return std::make_unique<ConfirmDialog>(QStringLiteral("Really?"), QStringLiteral("It may hurt."), confirmText);
    };
    const RemoteReview review{
        .id = first.id, .changes = {{.path = "page", .local = {}, .remoteDate = RemoteDate(std::chrono::seconds(1))}}};
    const std::vector<std::pair<QString, std::function<std::unique_ptr<QDialog>()>>> cases{
        {"Use selection", [&] { return picker(false); }},
        {"Use sync selection", [&] { return picker(true); }},
        {"Download 1 && start watching", [&] { return std::make_unique<RemoteChangesView>(bridge, review); }},
        {"Import 1 profile",
         [&] { return std::make_unique<ImportSheet>(bridge, context, folder / "sites.xml", nullptr); }},
        {"Choose download contents…",
         [&] { return std::make_unique<ProfileEditor>(bridge, context, std::nullopt, nullptr); }},
        {"Save changes", [&] { return std::make_unique<ProfileEditor>(bridge, context, second.id, nullptr); }},
        {"Close", [&] { return std::make_unique<BackupsSheet>(context, first); }},
        {"Cancel", [&] { return question(QStringLiteral("Remove")); }},
        {"OK", [&] { return question({}); }}};
    for (const Qt::Key key : {Qt::Key_Escape, Qt::Key_Return}) {
        for (const auto& [label, make] : cases) {
            SCOPED_TRACE(label.toStdString());
            const std::unique_ptr<QDialog> dialog = make();
            dialog->open();
            const auto* const list = dialog->findChild<RowList*>();
            const auto isReady = [&] {
                const QModelIndex at = list == nullptr ? QModelIndex() : list->currentIndex();
                const bool isListed = list == nullptr || label == "Close" || at.isValid();
                const bool waits = at.data(Qt::AccessibleTextRole).toString().startsWith("Loading");
                return dialog->focusWidget() != nullptr && filled(*dialog).isEnabled() && isListed && !waits;
            };
            ASSERT_TRUE(waitFor(isReady));
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

TEST_F(SheetKeys, ReviewWaitsForWhatIsTypedElsewhere) {
    const auto review = [] { return visibleSheet<RemoteChangesView>(); };
    const auto isFound = [this](const Uuid& id) { return waitFor([&] { return model.reviews().contains(id); }); };
    const auto type = [](const char* keys) {
        QTest::keyClicks(QApplication::activeModalWidget()->focusWidget(), keys);
    };
    Shell shell(model, context);
    shell.showWindow();
    QCoreApplication::processEvents();
    auto* const window = QApplication::activeWindow();
    model.select(second.id);
    QTest::keyClick(window, Qt::Key_N, Qt::ControlModifier);
    model.start(first.id);
    ASSERT_TRUE(isFound(first.id));
    type("a b c");
    QCoreApplication::processEvents();
    ASSERT_NE(visibleSheet<ProfileEditor>(), nullptr);
    EXPECT_EQ(line(*visibleSheet<ProfileEditor>(), "Profile name").text(), QStringLiteral("a b c"));
    EXPECT_EQ(review(), nullptr);

    QTest::keyClick(QApplication::activeModalWidget(), Qt::Key_Escape);
    ASSERT_TRUE(waitFor([&] { return review() != nullptr; }));
    EXPECT_EQ(review()->windowTitle(), QStringLiteral("Newer files on the server – First"));
    EXPECT_EQ(model.selection(), first.id);
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Escape, Qt::Key_Tab, Qt::Key_Space}) {
        QTest::keyClick(review()->focusWidget(), key);
        ASSERT_NE(review(), nullptr) << "what was typed for something else has decided";
        EXPECT_EQ(review()->selected(), PathSet{"page"});
    }
    model.start(second.id); // whose review comes after this one
    ASSERT_TRUE(isFound(second.id));
    ASSERT_TRUE(waitFor([&] { return review()->focusWidget() == review()->findChild<QListView*>(); }));
    QTest::keyClick(review()->focusWidget(), Qt::Key_Space);
    QTest::keyClick(review()->focusWidget(), Qt::Key_Return);
    EXPECT_FALSE(model.reviews().contains(first.id));
    ASSERT_TRUE(waitFor([&] { return review() != nullptr; }));
    EXPECT_EQ(review()->windowTitle(), QStringLiteral("Newer files on the server – Second"));
    QTest::keyClick(review()->focusWidget(), Qt::Key_Return);
    EXPECT_TRUE(model.reviews().contains(second.id)) << "one Enter too many has decided the next review";
    EXPECT_EQ(model.selection(), second.id);
    review()->close();
    window->close();
}

} // namespace
} // namespace zembrastel::testing
