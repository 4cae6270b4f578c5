// The program that holds a state folder, as another program of the user's talks to it.
//
// One thread, but for end().
#pragma once

#include "app/control/control_messages.h"
#include "platform/local_socket.h"

#include <chrono>
#include <filesystem>
#include <optional>

namespace zembrastel {

class ControlClient {
public:
    // Nothing when no program serves that folder.
    [[nodiscard]] static std::optional<ControlClient> connect(const std::filesystem::path& stateFolder);

    // False when the other program has gone.
    [[nodiscard]] bool ask(const ControlRequest& request) { return connection.send(encode(request)); }

    // The next answer; nothing when the other program has gone, end() was called, or the time is over. Throws
    // SyncError for what is no answer.
    [[nodiscard]] std::optional<ControlAnswer> next(std::optional<std::chrono::milliseconds> atMost = std::nullopt);

    // Ends next() for good. Any thread.
    void end() const { connection.end(); }

    // Whether next() met the end: the other program has gone, or end() was called.
    [[nodiscard]] bool isOver() const { return connection.isOver(); }

    // The other program's process; nothing where the system does not tell.
    [[nodiscard]] std::optional<int> process() const { return connection.process(); }

private:
    explicit ControlClient(LocalConnection opened) : connection(std::move(opened)) {}

    LocalConnection connection;
};

// Asks that program to show its window. False when there is none, or it does not answer within a second.
[[nodiscard]] bool askToShow(const std::filesystem::path& stateFolder);

} // namespace zembrastel
