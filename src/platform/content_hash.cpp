#include "platform/content_hash.h"

#include "platform/files.h"

#include <cerrno>
#include <new>
#include <unistd.h>
#include <vector>
#include <xxhash.h>

namespace zembrastel {
namespace {

constexpr std::size_t hashedPiece = std::size_t{256} << 10;
constexpr std::uint64_t hashedBetweenChecks = std::uint64_t{4} << 20;

ContentHash fromLibrary(XXH128_hash_t hash) { return {.low = hash.low64, .high = hash.high64}; }

} // namespace

ContentHash hashOf(std::string_view bytes) { return fromLibrary(XXH3_128bits(bytes.data(), bytes.size())); }

void ContentHasher::Free::operator()(XXH3_state_s* used) const { XXH3_freeState(used); }

ContentHasher::ContentHasher() : state(XXH3_createState()) {
    if (!state) throw std::bad_alloc();
    (void)XXH3_128bits_reset(state.get());
}

void ContentHasher::add(std::span<const char> bytes) {
    (void)XXH3_128bits_update(state.get(), bytes.data(), bytes.size());
}

ContentHash ContentHasher::hash() const { return fromLibrary(XXH3_128bits_digest(state.get())); }

ContentHash hashContents(int file, const std::filesystem::path& name, const std::function<void()>& checkpoint) {
    ContentHasher hasher;
    std::vector<char> piece(hashedPiece);
    for (std::uint64_t done = 0;;) {
        if (done % hashedBetweenChecks == 0) checkpoint();
        const auto size = ::pread(file, piece.data(), piece.size(), static_cast<off_t>(done));
        if (size < 0 && errno == EINTR) continue;
        if (size < 0) throwFileError("read", name);
        if (size == 0) return hasher.hash();
        hasher.add({piece.data(), static_cast<std::size_t>(size)});
        done += static_cast<std::uint64_t>(size);
    }
}

} // namespace zembrastel
