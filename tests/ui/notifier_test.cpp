#include "screen.h"
#include "support/program.h"
#include "support/temporary_folder.h"
#include "ui/bridge/qt_main_context.h"
#include "ui/desktop/notifier.h"

#include <gtest/gtest.h>

#include <QDBusMessage>
#include <QDBusVirtualObject>

#include <memory>

using namespace zembrastel;
using namespace zembrastel::ui;
using namespace zembrastel::testing;
using namespace std::chrono_literals;

namespace {

struct Shown {
    uint replaced;
    QString title;
    QString text;
};

class Service : public QDBusVirtualObject {
public:
    [[nodiscard]] QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
        const auto arguments = message.arguments();
        QVariantList answer;
        if (message.member() == "GetCapabilities") answer << QStringList{QStringLiteral("body-markup")};
        if (message.member() == "Notify") {
            shown.push_back({arguments[1].toUInt(), arguments[3].toString(), arguments[4].toString()});
            answer << number;
        }
        return bus.send(message.createReply(answer));
    }

    static constexpr uint number = 7;
    std::vector<Shown> shown;
};

class NotifierTest : public ::testing::Test {
protected:
    NotifierTest() {
        EXPECT_TRUE(serving.registerVirtualObject(QStringLiteral("/org/freedesktop/Notifications"), &service));
        EXPECT_TRUE(serving.registerService(QStringLiteral("org.freedesktop.Notifications")));
        std::filesystem::create_directory(folder / "site");
    }
    ~NotifierTest() override {
        for (const char* const name : {"serving", "asking"}) QDBusConnection::disconnectFromBus(QLatin1String(name));
    }

    [[nodiscard]] QDBusConnection connect(const char* name) const {
        return QDBusConnection::connectToBus(QString::fromStdString(address), QLatin1String(name));
    }

    // A profile whose server nobody runs.
    Uuid addProfile() {
        Profile profile;
        profile.name = "Site";
        profile.host = "127.0.0.1";
        profile.port = 1;
        profile.transport = TransferProtocol::ftp;
        profile.username = "user";
        profile.localFolder = folder / "site";
        profile.enabled = true;
        model.save(profile, "secret");
        return profile.id;
    }

    // Looked at by the notifier while something fails.
    [[nodiscard]] Notices::Time now() {
        for (const auto& profile : model.profiles()) sawFailure |= model.status(profile.id).failed();
        return time;
    }

    TemporaryFolder folder;
    Program daemon{{"/usr/bin/dbus-daemon", "--session", "--nofork", "--print-address=1"}};
    std::string address = daemon.readLine(30s);
    Service service;
    QDBusConnection serving = connect("serving");
    QtMainContext context;
    AppModel model{
        context,
        {.storeOverride = StateStore(folder / "state"),
         .passwordAccess = {.save = [](const std::string&, const Uuid&) {}, .remove = [](const Uuid&) {}}}};
    ModelBridge bridge{model};
    WindowSettings settings{true};
    Notices::Time time{};
    bool sawFailure = false;
    Notifier notifier{bridge, settings, connect("asking"), [this] { return now(); }};
};

TEST_F(NotifierTest, RecoveryTakesThePlaceOfAFailureThatWasTold) {
    const Uuid id = addProfile();
    ASSERT_TRUE(waitFor([this] { return sawFailure; }));
    EXPECT_TRUE(service.shown.empty());
    time += 10min;
    model.retryNow();
    ASSERT_TRUE(waitFor([this] { return service.shown.size() == 1; }));
    EXPECT_EQ(service.shown[0].title, "Site cannot be kept up to date");
    EXPECT_TRUE(service.shown[0].text.startsWith("curl: (7) ")) << service.shown[0].text.toStdString();
    model.startWithoutCheck(id);
    ASSERT_TRUE(waitFor([this] { return service.shown.size() == 2; }));
    EXPECT_EQ(service.shown[1].title, "Site is kept up to date again");
    EXPECT_EQ(service.shown[1].replaced, Service::number);
}

} // namespace
