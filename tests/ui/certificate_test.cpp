// Certificates in the window, from the failed test of a connection to the trusted key, against a real server.
#include "screen_fixture.h"
#include "support/certificates.h"
#include "support/ftp_server.h"
#include "ui/certificate/certificate_review.h"
#include "ui/certificate/certificate_sheet.h"
#include "ui/profile_editor/profile_editor.h"
#include "ui/shell.h"
#include "ui/widgets/confirm_dialog.h"

#include <QApplication>
#include <QClipboard>

namespace zembrastel::testing {
namespace {

class CertificateScreens : public ScreenFixture {
protected:
    CertificateScreens() {
        server.emplace(
            FtpServer::Kind::odd, FtpServer::Options{
                                      .tls = FtpServer::Tls::explicitTls,
                                      .certificate = certificates().selfSigned,
                                      .extra = {"--log", log.string()}});
        Profile profile = addProfile();
        profile.host = "127.0.0.1"; // for which the certificate is not
        profile.port = server->port();
        profile.transport = TransferProtocol::ftps;
        profile.remoteFolder = "/";
        stored[profile.id] = server->password();
        model->save(profile, std::nullopt);
        id = profile.id;
    }

    // Waits for the visible dialog of that class and works in it from now on.
    template <class Dialog>
    [[nodiscard]] bool reach() {
        screen = nullptr;
        return waitFor([this] {
            for (QWidget* const each : QApplication::topLevelWidgets()) {
                if (qobject_cast<Dialog*>(each) != nullptr && each->isVisible()) screen = each;
            }
            return screen != nullptr;
        });
    }

    [[nodiscard]] bool reads(const QString& part) const {
        return waitFor([&] { return message().contains(part); });
    }

    [[nodiscard]] std::string commands() const { return std::filesystem::exists(log) ? readFile(log) : std::string(); }

    static KeyHash keyOf(const std::filesystem::path& certificate) {
        return ServerCertificate::parse(readFile(certificate)).key;
    }

    const ScopedTrust authority{certificates().ca};
    std::filesystem::path log = folder / "log";
    std::optional<FtpServer> server;
    Uuid id;
};

TEST_F(CertificateScreens, TrustIsDeliberateAndCanBeUndone) {
    Shell shell(*model, context);
    shell.showWindow();
    model->select(id);
    ASSERT_TRUE(reach<MainWindow>());
    key(Qt::Key_Return);
    ASSERT_TRUE(reach<ProfileEditor>());
    ASSERT_TRUE(waitFor([this] { return line("Password").isEnabled(); }));
    auto* const editor = screen;
    EXPECT_EQ(find("Forget"), nullptr);
    press("Test connection");
    ASSERT_TRUE(reads("The certificate of 127.0.0.1 cannot be verified."));
    press("Review certificate…");
    ASSERT_TRUE(reach<CertificateSheet>());
    EXPECT_TRUE(shows("Not the name of this server, 127.0.0.1") && shows("Signed by itself, not by an authority"));
    press("Copy key");
    EXPECT_EQ(QApplication::clipboard()->text().toStdString(), keyOf(certificates().selfSigned).text());
    press("Trust this certificate for this profile…");
    ASSERT_TRUE(reach<ConfirmDialog>());
    EXPECT_EQ(screen->focusWidget(), &button("Cancel"));
    press("Cancel");
    ASSERT_TRUE(reach<CertificateSheet>());
    EXPECT_EQ(commands().find("USER"), std::string::npos);
    press("Trust this certificate for this profile…");
    ASSERT_TRUE(reach<ConfirmDialog>());
    press("Trust this key");

    screen = editor;
    ASSERT_TRUE(reads("Connected."));
    EXPECT_FALSE(model->profile(id)->trustedKey); // not before saving
    press("Save changes");
    ASSERT_TRUE(waitFor([this] { return model->profile(id)->keyInForce() != nullptr; }));

    ASSERT_TRUE(reach<MainWindow>());
    key(Qt::Key_Return);
    ASSERT_TRUE(reach<ProfileEditor>());
    type("Server", "localhost");
    EXPECT_EQ(find("Forget"), nullptr); // the key is of another server
    type("Server", "127.0.0.1");
    press("Forget");
    EXPECT_TRUE(shows("Certificate is verified again after saving."));
    press("Undo");
    press("Forget");
    press("Save changes");
    ASSERT_TRUE(waitFor([this] { return !model->profile(id)->trustedKey; }));
}

TEST_F(CertificateScreens, ChangedKeyIsComparedBeforeItIsTrusted) {
    Shell shell(*model, context);
    shell.showWindow();
    model->select(id);
    model->start(id);
    ASSERT_TRUE(reach<MainWindow>());
    ASSERT_TRUE(waitFor([this] { return find("Review certificate…") != nullptr; }));
    press("Review certificate…");
    ASSERT_TRUE(reach<CertificateSheet>());
    press("Cancel");

    Profile profile = *model->profile(id);
    profile.trustedKey = TrustedKey{.key = keyOf(certificates().impostor), .host = profile.host, .port = profile.port};
    model->save(profile, std::nullopt);
    model->start(id);
    ASSERT_TRUE(reach<MainWindow>());
    ASSERT_TRUE(waitFor([this] { return find("Compare keys…") != nullptr; }));
    press("Compare keys…");
    ASSERT_TRUE(reach<CertificateSheet>());
    EXPECT_TRUE(shows("The key of 127.0.0.1 has changed"));
    EXPECT_EQ(screen->focusWidget(), &button("Keep stopped"));
    press("Trust the new key for this profile…");
    ASSERT_TRUE(reach<ConfirmDialog>());
    press("Trust this key");
    EXPECT_EQ(model->profile(id)->keyInForce()->key, keyOf(certificates().selfSigned));
    EXPECT_EQ(commands().find("USER"), std::string::npos);
    QWidget window;
    window.show();
    CertificateReview review(*bridge, context);
    server->stop();
    review.start(id, window);
    ASSERT_TRUE(reach<ConfirmDialog>());
    EXPECT_EQ(screen->windowTitle(), "Certificate of 127.0.0.1");
}

} // namespace
} // namespace zembrastel::testing
