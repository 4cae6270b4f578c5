// The 128-bit XXH3 hash of bytes: equal hashes mean equal contents. It does not protect from attackers who choose both
// contents, so it is used only for files of the user's own.
//
// Any thread; a ContentHasher is used by one at a time.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>

struct XXH3_state_s;

namespace zembrastel {

struct ContentHash {
    std::uint64_t low = 0;
    std::uint64_t high = 0;

    friend bool operator==(const ContentHash&, const ContentHash&) = default;
};

// Relative path to the hash of a file's content.
using ContentHashes = std::map<std::string, ContentHash, std::less<>>;

[[nodiscard]] ContentHash hashOf(std::string_view bytes);

// The hash of bytes that come in pieces.
class ContentHasher {
public:
    ContentHasher(); // throws std::bad_alloc

    void add(std::span<const char> bytes);
    [[nodiscard]] ContentHash hash() const;

private:
    struct Free {
        void operator()(XXH3_state_s* used) const;
    };
    std::unique_ptr<XXH3_state_s, Free> state;
};

// The hash of an open file from its beginning, whatever its position. Calls `checkpoint` between pieces of at most
// 4 MiB; an exception from it ends the reading. Throws std::filesystem::filesystem_error with `name`.
[[nodiscard]] ContentHash hashContents(
    int file, const std::filesystem::path& name, const std::function<void()>& checkpoint);

} // namespace zembrastel
