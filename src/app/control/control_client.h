// A connection to the program that holds a state folder.
//
// One thread, except end().
#pragma once

#include "app/control/control_messages.h"
#include "platform/local_socket.h"

#include <chrono>
#include <filesystem>
#include <optional>

namespace zembrastel {

class ControlClient {
public:
    // nullopt if no program serves that folder.
    [[nodiscard]] static std::optional<ControlClient> connect(const std::filesystem::path& stateFolder);

    // False if the other program has ended.
    [[nodiscard]] bool ask(const ControlRequest& request) { return connection.send(encode(request)); }

    // The next answer; nullopt if the other program has ended, end() was called, or the time is over. Throws SyncError
    // for a line that is no answer.
    [[nodiscard]] std::optional<ControlAnswer> next(std::optional<std::chrono::milliseconds> atMost = std::nullopt);

    // Ends next() for good. Any thread.
    void end() const { connection.end(); }

    // Whether the other program has ended, or end() was called.
    [[nodiscard]] bool isOver() const { return connection.isOver(); }

    // The other program's process; nullopt if the system does not report it.
    [[nodiscard]] std::optional<int> process() const { return connection.process(); }

private:
    explicit ControlClient(LocalConnection opened) : connection(std::move(opened)) {}

    LocalConnection connection;
};

// Asks that program to show its window. False if there is none, or if it does not answer within a second.
[[nodiscard]] bool askToShow(const std::filesystem::path& stateFolder);

} // namespace zembrastel
