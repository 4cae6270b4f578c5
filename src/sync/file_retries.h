// Files whose upload failed for a reason of their own, and how long each waits before the next attempt.
//
// Used on the worker's thread.
#pragma once

#include "model/fingerprint.h"
#include "transport/failure.h"

#include <chrono>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace zembrastel {

// The wait after this number of failures in a row: 5, 10, 20, 40, 60 seconds, then 10 minutes each time.
[[nodiscard]] std::chrono::seconds fileRetryDelay(int failures);

class FileRetries {
public:
    using Time = std::chrono::steady_clock::time_point;

    // This version of the file failed. Returns how long it waits. Another version starts a new count.
    std::chrono::seconds failed(const std::string& path, const Fingerprint& version, const Failure& why, Time now);

    // Ends the wait of this file. It still counts as failed.
    void tryNow(const std::string& path);

    // True if this version of the file still waits.
    [[nodiscard]] bool waits(const std::string& path, const Fingerprint& version, Time now) const;

    // Call it when the file is published or gone.
    void forget(const std::string& path) { files.erase(path); }
    void forgetIf(const std::function<bool(const std::string& path)>& gone) {
        std::erase_if(files, [&gone](const auto& file) { return gone(file.first); });
    }

    // The failure of the first file in the order of paths; nullptr if there is none.
    struct Waiting {
        Fingerprint version;
        Failure why;
        int count = 0;
        Time until{};
    };
    [[nodiscard]] const Waiting* first() const { return files.empty() ? nullptr : &files.begin()->second; }

    // All of them, in that order.
    [[nodiscard]] std::vector<Failure> all() const;

private:
    std::map<std::string, Waiting, std::less<>> files;
};

} // namespace zembrastel
