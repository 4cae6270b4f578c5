// The user's request to send the published files of one profile again, kept until it is carried out.
//
// A program that is killed before the next server check forgets nothing: the next start reads the request. One small
// file a profile, beside profiles.json, for the owner alone; absent if there is no request. One thread.
#pragma once

#include "platform/uuid.h"

#include <filesystem>
#include <optional>

namespace zembrastel {

// What is sent again although it counts as published.
enum class Resend {
    missing,   // what the server does not have
    everything // all that the server is not known to have with the same contents
};

class ResendRequest {
public:
    ResendRequest(const std::filesystem::path& stateFolder, const Uuid& profile);

    // Returns once the request is on the disk. Throws std::filesystem::filesystem_error.
    void write(Resend what) const;

    // nullopt if there is no request, or none that can be understood.
    [[nodiscard]] std::optional<Resend> read() const;

    void remove() const noexcept;

private:
    std::filesystem::path file;
};

} // namespace zembrastel
