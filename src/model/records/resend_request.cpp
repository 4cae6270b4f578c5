#include "model/records/resend_request.h"

#include "platform/files.h"

#include <system_error>

namespace zembrastel {
namespace {

constexpr const char* missing = "missing\n";
constexpr const char* everything = "everything\n";

} // namespace

ResendRequest::ResendRequest(const std::filesystem::path& stateFolder, const Uuid& profile)
    : file(stateFolder / ("resend-" + profile.text() + ".txt")) {}

void ResendRequest::write(Resend what) const {
    writeAtomically(file, what == Resend::everything ? everything : missing);
}

std::optional<Resend> ResendRequest::read() const {
    try {
        const auto content = readFile(file);
        if (content == everything) return Resend::everything;
        if (content == missing) return Resend::missing;
    } catch (const std::filesystem::filesystem_error&) {
        // The user has to ask again.
    }
    return std::nullopt;
}

void ResendRequest::remove() const noexcept {
    std::error_code ignored; // a request that stays is carried out once more, and finds nothing to send
    std::filesystem::remove(file, ignored);
}

} // namespace zembrastel
