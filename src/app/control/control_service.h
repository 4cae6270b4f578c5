// Answers the requests of the user's other programs: see control_messages.h.
//
// Main context; the socket's thread only hands requests over. The model gets only complete requests, one of each client
// at a time.
#pragma once

#include "app/app_model.h"
#include "app/context/lifetime.h"
#include "app/control/control_messages.h"
#include "platform/local_socket.h"

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace zembrastel {

class ControlService final : private ModelObserver {
public:
    // The model, the context and the folder, which this program must hold, outlive the service. `show` brings the
    // window forward; nullptr for a program without a window.
    ControlService(
        AppModel& served, MainContext& mainContext, const std::filesystem::path& stateFolder,
        std::function<void()> show = nullptr);
    ControlService(const ControlService&) = delete;
    ControlService& operator=(const ControlService&) = delete;
    ~ControlService() override;

    // Why no program can send requests; nullopt if they can. The program works without that.
    [[nodiscard]] const std::optional<std::string>& failure() const { return unreachable; }

    // Whether a request has paused a profile that a later one may resume.
    [[nodiscard]] bool holdsPaused() const { return !pausedHere.empty(); }

private:
    using Client = LocalServer::Client;

    // A request whose answer waits for the profile's job.
    struct Waiting {
        Uuid profile;
        std::vector<RemoteChange> decided; // empty while the check is awaited
        PathSet selected;
        bool leavesMissing = false;    // once the check has found which files are missing
        std::optional<int> polls = {}; // a push: the scans that must find nothing to upload before it is complete
        std::optional<ControlRequest> adopts = std::nullopt; // once the first check has found what there is
    };

    // Ends a request.
    struct Refusal {
        answer::Failed answer;
    };
    [[noreturn]] static void refuse(
        answer::Failed::Reason reason, std::string text = {}, std::optional<Failure> failure = std::nullopt);

    void receive(Client client, const std::string& line);
    void carryOut(Client client, const ControlRequest& request);
    void requireProfiles(const ControlRequest& request) const;
    void show(Client client);
    void report(Client client, const ControlRequest& request);
    void changeEach(Client client, const ControlRequest& request);
    void retryEach(Client client, const ControlRequest& request);
    void decide(Client client, const ControlRequest& request);
    void forgetFiles(Client client, const ControlRequest& request);
    void sendAgain(Client client, const ControlRequest& request);
    void leaveMissing(Client client, const ControlRequest& request);
    void push(Client client, const ControlRequest& request);
    void adopt(Client client, const ControlRequest& request);
    void forget(Client client);

    void statusChanged(const Uuid& id) override;
    void progressChanged(const Uuid& id) override;
    void activityLogged(const Uuid& id, const Activity& activity) override;
    void reviewChanged(const Uuid& id) override;
    void profilesChanged() override;

    [[nodiscard]] answer::Status statusOf(const Profile& profile) const;
    void notifyFollowers(const Profile& profile);
    void answerSoon();
    void answerWaiting();
    void reportToPushers(const Profile& profile);
    [[nodiscard]] bool isSettled(const Waiting& waiting) const;
    [[nodiscard]] bool answerIfSettled(Client client, const Waiting& waiting);
    void leaveMissing(Client client, const Profile& profile);
    [[nodiscard]] bool adoptIfFound(Client client, const Profile& profile, const ControlRequest& request);
    void sendOutcomes(Client client, const Waiting& waiting);
    void send(Client client, const ControlAnswer& answer);
    void end(Client client, const ControlAnswer& last = answer::Done{});

    AppModel& model;
    MainContext& context;
    const std::function<void()> showWindow;
    std::map<Client, std::vector<Uuid>> followers; // the profiles that each follows; all if empty
    std::map<Uuid, std::string> lastSent;          // to followers
    std::map<Client, Waiting> waitings;
    std::set<Uuid> pausedHere;
    bool answersDue = false;
    std::optional<std::string> unreachable;
    Lifetime lifetime;
    std::unique_ptr<LocalServer> server; // last: its thread ends first
};

// The folder's socket, for both sides.
inline constexpr const char* controlSocketName = "socket";

} // namespace zembrastel
