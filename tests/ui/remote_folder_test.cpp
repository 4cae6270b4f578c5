#include "ui/remote_folder/remote_folder_sheet.h"

#include "screen_fixture.h"
#include "support/ftp_server.h"
#include "support/local_site.h"

#include <QApplication>

#include <filesystem>

namespace zembrastel::testing {
namespace {

namespace fs = std::filesystem;

class RemoteFolderTest : public ScreenFixture {
protected:
    RemoteFolderTest() : server(FtpServer::Kind::odd, {.extra = {"--start", "/public_html"}}), site(server) {
        for (const char* const each : {"private", "public_html/blog/2025", "public_html/shop"}) {
            fs::create_directories(server.root() / each);
        }
        server.put("index.html", "");
    }

    void open(const std::string& remoteFolder) {
        site.profile.remoteFolder = remoteFolder;
        sheet = std::make_unique<RemoteFolderSheet>(
            context, site.profile, site.password, [this](const std::string& path) { chosen = path; });
        screen = sheet.get();
        sheet->open();
    }

    [[nodiscard]] QStringList rows() const {
        QStringList all;
        for (int number = 0; number < list().model()->rowCount(); ++number) {
            const QModelIndex index = list().model()->index(number, 0);
            all += row(number) + u'|' + index.data(Qt::AccessibleDescriptionRole).toString();
        }
        return all;
    }
    [[nodiscard]] bool reads(const QString& path) const {
        return waitFor([&] { return row(list().currentIndex().row()) == path; });
    }

    FtpServer server;
    LocalSite site;
    std::unique_ptr<RemoteFolderSheet> sheet;
    std::optional<std::string> chosen;
};

TEST_F(RemoteFolderTest, KeysFindAndNameTheFolderToUploadTo) {
    open("/public_html/blog");
    ASSERT_TRUE(reads("/public_html/blog"));
    EXPECT_TRUE(shows("/public_html/blog"));
    EXPECT_TRUE(namelessControls(*sheet).isEmpty());
    key(Qt::Key_Right);
    ASSERT_TRUE(waitFor([this] { return row(4) == "/public_html/blog/2025"; }));
    EXPECT_EQ(
        rows(), (QStringList{
                    "/|level 1, open folder", "/private|level 2, closed folder",
                    "/public_html|level 2, open folder, Login folder", "/public_html/blog|level 3, open folder",
                    "/public_html/blog/2025|level 4, closed folder", "/public_html/shop|level 3, closed folder"}));

    press("New folder…");
    auto* const field = sheet->findChild<QLineEdit*>();
    ASSERT_NE(field, nullptr);
    ASSERT_EQ(QApplication::focusWidget(), field);
    QTest::keyClicks(field, "dropped");
    QTest::keyClick(field, Qt::Key_Escape);
    ASSERT_TRUE(reads("/public_html/blog"));
    EXPECT_TRUE(sheet->isVisible());

    press("New folder…");
    QTest::keyClicks(QApplication::focusWidget(), "2026");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    ASSERT_TRUE(reads("/public_html/blog/2026"));
    EXPECT_TRUE(fs::is_directory(server.root() / "public_html/blog/2026"));
    EXPECT_FALSE(fs::exists(server.root() / "public_html/blog/dropped"));
    key(Qt::Key_Return);
    EXPECT_EQ(chosen, "/public_html/blog/2026");
    EXPECT_FALSE(sheet->isVisible());
}

TEST_F(RemoteFolderTest, LostServerOffersNoFolder) {
    server.stop();
    open("");
    ASSERT_TRUE(waitFor([this] { return row(0).endsWith(", Retry"); }));
    EXPECT_FALSE(button("Use this folder").isEnabled());
    server.restart();
    key(Qt::Key_Return);
    ASSERT_TRUE(reads("/public_html"));
    EXPECT_TRUE(button("Use this folder").isEnabled());
}

} // namespace
} // namespace zembrastel::testing
