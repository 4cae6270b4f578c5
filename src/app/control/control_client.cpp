#include "app/control/control_client.h"

#include "app/control/control_service.h"
#include "model/error.h"

namespace zembrastel {

std::optional<ControlClient> ControlClient::connect(const std::filesystem::path& stateFolder) {
    auto opened = LocalConnection::open(stateFolder, controlSocketName);
    if (!opened) return std::nullopt;
    return ControlClient(*std::move(opened));
}

std::optional<ControlAnswer> ControlClient::next(std::optional<std::chrono::milliseconds> atMost) {
    const auto line = connection.readLine(atMost);
    if (!line) return std::nullopt;
    return decodeControlAnswer(*line);
}

bool askToShow(const std::filesystem::path& stateFolder) {
    constexpr std::chrono::seconds patience{1};
    auto program = ControlClient::connect(stateFolder);
    if (!program || !program->ask({.kind = ControlRequest::Kind::show})) return false;
    try {
        const auto answer = program->next(patience);
        return answer && std::holds_alternative<answer::Done>(*answer);
    } catch (const SyncError&) {
        return false; // a program of another version, which cannot be asked
    }
}

} // namespace zembrastel
