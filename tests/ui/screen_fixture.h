// Shared by the tests of all screens: a model on Qt's main loop with a secret store in memory, and the screen under
// test, used by the texts that the user sees. Main thread.
#pragma once

#include "model/error.h"
#include "screen.h"
#include "support/fake_clock.h"
#include "support/file_tree.h"
#include "support/temporary_folder.h"
#include "ui/bridge/model_bridge.h"
#include "ui/bridge/qt_main_context.h"
#include "ui/widgets/message_strip.h"

#include <gtest/gtest.h>

#include <QListView>

#include <map>
#include <memory>
#include <string>

namespace zembrastel::testing {

using namespace ui;

class ScreenFixture : public ::testing::Test {
protected:
    // A job that waits stays in its state, because no sleep ends by itself.
    ScreenFixture() {
        clock.onSleep = [](std::chrono::nanoseconds) { return false; };
    }

    // Starts the model anew from the saved state.
    AppModel& startModel(bool demo = false) {
        bridge.reset();
        model.reset();
        options.demonstration = demo ? std::optional(demonstration(clock)) : std::nullopt;
        options.storeOverride = StateStore(folder / "state");
        options.passwordAccess = passwords;
        model = std::make_unique<AppModel>(context, options);
        bridge = std::make_unique<ModelBridge>(*model);
        return *model;
    }

    // A saved profile with the password "old", whose server refuses connections.
    Profile addProfile(const std::string& name = "Site") {
        if (!model) startModel();
        Profile profile;
        profile.name = name;
        profile.host = "127.0.0.1";
        profile.port = 1; // nothing listens there
        profile.transport = TransferProtocol::ftp;
        profile.username = "web";
        profile.localFolder = folder / name;
        std::filesystem::create_directory(profile.localFolder);
        stored[profile.id] = "old";
        model->save(profile, std::nullopt);
        QCoreApplication::processEvents();
        return *model->profile(profile.id);
    }

    [[nodiscard]] QAbstractButton* find(const QString& name) const { return findButton(*screen, name); }
    [[nodiscard]] QAbstractButton& button(const QString& name) const { return testing::button(*screen, name); }
    [[nodiscard]] bool shows(const QString& text) const { return findLabel(*screen, text) != nullptr; }
    [[nodiscard]] QLineEdit& line(const QString& caption) const { return testing::line(*screen, caption); }
    [[nodiscard]] QString message() const { return screen->findChild<MessageStrip*>()->message(); }

    void press(const QString& name) const { QTest::mouseClick(&button(name), Qt::LeftButton); }
    void type(const QString& caption, const QString& text) const {
        line(caption).selectAll();
        QTest::keyClicks(&line(caption), text);
    }

    // The list of that accessible name; the first one if there is no name.
    [[nodiscard]] QListView& list(const QString& name = {}) const {
        for (auto* const each : screen->findChildren<QListView*>()) {
            if (name.isEmpty() || each->accessibleName() == name) return *each;
        }
        throw std::logic_error("there is no list " + name.toStdString());
    }
    void key(Qt::Key which) const { QTest::keyClick(&list(), which); }
    // A row as a screen reader announces it.
    [[nodiscard]] QString row(int number) const {
        return list().model()->index(number, 0).data(Qt::AccessibleTextRole).toString();
    }

    TemporaryFolder folder;
    FakeClock clock;
    std::map<Uuid, std::string> stored;
    AppModel::PasswordAccess passwords{
        .save = [this](const std::string& password, const Uuid& id) { stored[id] = password; },
        .read = [this](const Uuid& id) { return stored.at(id); },
        .remove = [this](const Uuid& id) { stored.erase(id); }};
    QtMainContext context;
    AppModel::Options options{.clock = clock};
    std::unique_ptr<AppModel> model;
    std::unique_ptr<ModelBridge> bridge;
    QWidget* screen = nullptr;
};

} // namespace zembrastel::testing
