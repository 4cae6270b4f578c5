// Checks on a thread of its own whether a server's folder can be read, or creates it.
//
// Used on the main context, which also receives the result. One check at a time; a cancelled check delivers nothing.
// The destructor cancels the check and waits for its thread, which takes no longer than ending the transfer.
#pragma once

#include "app/context/background_tasks.h"
#include "app/context/main_context.h"
#include "model/profile.h"
#include "transport/certificate/certificate_inspection.h"
#include "transport/failure.h"
#include "transport/transfer_control.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace zembrastel::ui {

class ConnectionCheck {
public:
    struct Result {
        std::size_t items = 0;          // in the remote folder
        std::optional<Failure> failure; // nullopt if the folder can be read, or was created
        std::optional<InspectedCertificate> certificate = std::nullopt; // if it is the reason of the failure
    };

    explicit ConnectionCheck(MainContext& mainContext) : context(mainContext), tasks(mainContext) {}
    ConnectionCheck(const ConnectionCheck&) = delete;
    ConnectionCheck& operator=(const ConnectionCheck&) = delete;
    ~ConnectionCheck() { cancel(); }

    // Cancels a running check first.
    void start(const Profile& profile, const std::string& password, std::function<void(Result)> done);

    // The same for creating the profile's folder on the server, which is then read.
    void createFolder(const Profile& profile, const std::string& password, std::function<void(Result)> done);

    void cancel();

    [[nodiscard]] bool running() const { return current != nullptr; }

private:
    void run(const Profile& profile, const std::string& password, bool creates, std::function<void(Result)> done);

    struct Running {
        std::shared_ptr<TransferControl> control;
    };

    MainContext& context;
    std::shared_ptr<Running> current; // the only owner; a result whose check is gone is dropped
    BackgroundTasks tasks;
};

} // namespace zembrastel::ui
