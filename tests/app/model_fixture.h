// A model on a queue, with a state folder, a clock on which hours pass in a moment, and one server.
#pragma once

#include "app/app_model.h"
#include "app/context/main_context.h"
#include "support/fake_clock.h"
#include "support/ftp_server.h"
#include "support/local_site.h"
#include "support/temporary_folder.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>

namespace zembrastel::testing {

class ModelFixture : public ::testing::Test {
protected:
    explicit ModelFixture(FtpServer::Kind kind = FtpServer::Kind::vsftpd) : server(kind), site(server) {
        site.profile.name = "Site";
        std::filesystem::create_directory(server.root() / "site");
        server.handOver();
    }

    // Ends the model and loads the state anew, as a restart of the program does.
    AppModel& restart(AppModel::Options how) {
        model.reset();
        how.storeOverride = StateStore(stateFolder / "state");
        how.passwordAccess = passwords;
        how.sessionPasswords[id()] = site.password;
        model = std::make_unique<AppModel>(queue, std::move(how));
        return *model;
    }

    AppModel& restart() { return restart({.clock = clock}); }

    // A model with the site's profile in it, not started.
    AppModel& withProfile() {
        restart();
        site.profile.enabled = false;
        model->save(site.profile, std::nullopt);
        return *model;
    }

    [[nodiscard]] const Uuid& id() const { return site.profile.id; }

    [[nodiscard]] bool runUntil(const std::function<bool()>& condition) {
        return queue.runUntil(condition, std::chrono::seconds(30));
    }

    [[nodiscard]] const ProfileStatus& status() const { return model->status(id()); }

    [[nodiscard]] bool reaches(Phase phase) {
        return runUntil([&] { return status().phase == phase && !status().unsaved; });
    }

    [[nodiscard]] bool uploads(std::int64_t count) {
        return runUntil([&] { return status().uploaded >= count; });
    }

    // Decides on the profile's current review.
    Decision decide(const PathSet& downloads) {
        const RemoteReview review = model->reviews().at(id());
        return model->resolveReview(review.id, review.reviewId, downloads);
    }

    // Returns the postponed review.
    RemoteReview stayPaused() {
        const RemoteReview review = model->reviews().at(id());
        model->pauseReview(review.id, review.reviewId);
        return review;
    }

    // So many more polls of the local folder.
    [[nodiscard]] bool polls(std::size_t count) {
        const auto all = clock.sleeps().size() + count;
        return runUntil([&] { return clock.sleeps().size() >= all; });
    }

    [[nodiscard]] std::size_t logged(const std::string& text) const {
        const auto& activity = status().activity;
        return static_cast<std::size_t>(
            std::count_if(activity.begin(), activity.end(), [&](const auto& line) { return line.text == text; }));
    }

    [[nodiscard]] SavedState saved() const { return StateStore(stateFolder / "state").load(); }

    // What is saved of the profile: nothing before the first save has completed.
    [[nodiscard]] FileMap savedBaseline() const { return saved().baselines[id()]; }
    [[nodiscard]] RemoteDates savedDates() const {
        auto dates = saved().remoteDates;
        return dates ? (*dates)[id()] : RemoteDates();
    }

    [[nodiscard]] std::string onServer(const std::string& path) const {
        return readFile(server.root() / "site" / path);
    }

    // Changes a file on the server, as a colleague would, some hours after now.
    void editOnServer(const std::string& path, const std::string& content, int hoursAhead) {
        server.put("site/" + path, content);
        touch(
            server.root() / "site" / path,
            std::chrono::ceil<std::chrono::seconds>(std::chrono::system_clock::now()) + std::chrono::hours(hoursAhead));
    }

    FtpServer server;
    LocalSite site;
    TemporaryFolder stateFolder;
    FakeClock clock;
    MainQueue queue;
    // Shared, because a call to a secret store may outlive the model.
    std::shared_ptr<std::map<Uuid, std::string>> storedPasswords = std::make_shared<std::map<Uuid, std::string>>();
    AppModel::PasswordAccess passwords{
        .save = [stored = storedPasswords](const std::string& password, const Uuid& id) { (*stored)[id] = password; },
        .read = [stored = storedPasswords](const Uuid& id) { return stored->at(id); },
        .remove = [stored = storedPasswords](const Uuid& id) { stored->erase(id); }};
    std::unique_ptr<AppModel> model;
};

} // namespace zembrastel::testing
