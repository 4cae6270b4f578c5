#include "ui/desktop/notifier.h"

#include "app/diagnosis/failure_catalogue.h"
#include "screen_fixture.h"
#include "support/program.h"

#include <QDBusMessage>
#include <QDBusVirtualObject>

namespace zembrastel::testing {
namespace {

using namespace std::chrono_literals;

// The desktop's notification service.
class Service : public QDBusVirtualObject {
public:
    struct Shown {
        uint replaced;
        QString title;
        QString text;
    };

    [[nodiscard]] QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
        const auto arguments = message.arguments();
        QVariantList answer;
        if (message.member() == "GetCapabilities") answer << QStringList{"body-markup"};
        if (message.member() == "Notify") {
            shown.push_back({arguments[1].toUInt(), arguments[3].toString(), arguments[4].toString()});
            answer << number;
        }
        return bus.send(message.createReply(answer));
    }

    static constexpr uint number = 7;
    std::vector<Shown> shown;
};

class NotifierTest : public ScreenFixture {
protected:
    NotifierTest() {
        EXPECT_TRUE(serving.registerVirtualObject("/org/freedesktop/Notifications", &service));
        EXPECT_TRUE(serving.registerService("org.freedesktop.Notifications"));
    }
    ~NotifierTest() override {
        for (const char* const name : {"serving", "asking"}) QDBusConnection::disconnectFromBus(name);
    }

    [[nodiscard]] QDBusConnection connect(const char* name) const {
        return QDBusConnection::connectToBus(QString::fromStdString(address), name);
    }

    [[nodiscard]] Uuid addFirst() {
        options.work.hasNetwork = [this](const std::string&) { return online; };
        return addProfile().id;
    }

    // Notes that the notifier checked the profiles while one was failing.
    [[nodiscard]] Notices::Time now() {
        for (const auto& profile : model->profiles()) sawFailure |= model->status(profile.id).failed();
        return time;
    }

    Program daemon{
        {ZEMBRASTEL_SOURCE_DIR "/tests/support/with_user_name", "dbus-daemon", "--session", "--nofork",
         "--print-address=1"}};
    std::string address = daemon.readLine(30s);
    Service service;
    QDBusConnection serving = connect("serving");
    WindowSettings settings{true};
    Notices::Time time{};
    bool sawFailure = false;
    bool online = true;
    const Uuid id = addFirst();
    Notifier notifier{*bridge, settings, connect("asking"), [this] { return now(); }};
};

TEST_F(NotifierTest, RecoveryReplacesTheFailureNotification) {
    model->start(id);
    ASSERT_TRUE(waitFor([this] { return sawFailure; }));
    EXPECT_TRUE(service.shown.empty());
    time += 10min;
    model->retryNow();
    ASSERT_TRUE(waitFor([this] { return service.shown.size() == 1; }));
    EXPECT_EQ(service.shown[0].title, "Site cannot be kept up to date");
    EXPECT_TRUE(service.shown[0].text.startsWith("There is no answer from ")) << service.shown[0].text.toStdString();
    model->startWithoutCheck(id);
    ASSERT_TRUE(waitFor([this] { return service.shown.size() == 2; }));
    EXPECT_EQ(service.shown[1].title, "Site is kept up to date again");
    EXPECT_EQ(service.shown[1].replaced, Service::number);
}

TEST_F(NotifierTest, LostNetworkIsNotifiedOnceForAllProfiles) {
    online = false;
    const Uuid second = addProfile("Second").id;
    for (const Uuid& each : {id, second}) {
        model->start(each);
        ASSERT_TRUE(waitFor([&] { return model->status(each).failed() && sawFailure; }));
        sawFailure = false;
    }
    time += 10min;
    model->retryNow();
    ASSERT_TRUE(waitFor([this] { return !service.shown.empty(); }));
    EXPECT_EQ(service.shown[0].title, "There is no network connection.");
    EXPECT_EQ(
        explainedText(*model->status(second).failure, *model->profile(second)).substr(0, 56),
        "There is no network connection. Nothing is wrong with th");
    EXPECT_EQ(service.shown.size(), 1U);
}

} // namespace
} // namespace zembrastel::testing
