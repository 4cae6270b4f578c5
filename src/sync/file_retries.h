// Files that could not go up for reasons of their own, and how long each of them waits before it is tried again.
//
// Identity; used on the worker's thread.
#pragma once

#include "model/fingerprint.h"

#include <chrono>
#include <functional>
#include <map>
#include <string>

namespace zembrastel {

// How long a file waits after so many failures in a row: 5, 10, 20, 40, 60 seconds, then 10 minutes each time.
[[nodiscard]] std::chrono::seconds fileRetryDelay(int failures);

class FileRetries {
public:
    using Time = std::chrono::steady_clock::time_point;

    // This version of the file failed. Returns how long it waits. Another version counts anew.
    std::chrono::seconds failed(
        const std::string& path, const Fingerprint& version, const std::string& message, Time now);

    // Does this version of the file still wait? A changed file does not.
    [[nodiscard]] bool waits(const std::string& path, const Fingerprint& version, Time now) const;

    // The file is published, or gone.
    void forget(const std::string& path) { files.erase(path); }
    void forgetIf(const std::function<bool(const std::string& path)>& gone) {
        std::erase_if(files, [&gone](const auto& file) { return gone(file.first); });
    }

    // The failure of the first file, in the order of paths, that waits; nullptr when none does.
    struct Failure {
        Fingerprint version;
        std::string message; // for the user
        int count = 0;
        Time until{};
    };
    [[nodiscard]] const Failure* first() const { return files.empty() ? nullptr : &files.begin()->second; }

private:
    std::map<std::string, Failure, std::less<>> files;
};

} // namespace zembrastel
