#include "sync/file_retries.h"

#include <algorithm>
#include <array>

namespace zembrastel {

std::chrono::seconds fileRetryDelay(int failures) {
    using std::chrono::seconds;
    static constexpr std::array delays{seconds(5), seconds(10), seconds(20), seconds(40), seconds(60), seconds(600)};
    const auto index = static_cast<std::size_t>(std::max(failures, 1) - 1);
    return delays[std::min(index, delays.size() - 1)];
}

std::chrono::seconds FileRetries::failed(
    const std::string& path, const Fingerprint& version, const Failure& why, Time now) {
    Waiting& failure = files[path];
    failure.count = failure.version == version ? failure.count + 1 : 1;
    failure.version = version;
    failure.why = why;
    const auto delay = fileRetryDelay(failure.count);
    failure.until = now + delay;
    return delay;
}

bool FileRetries::waits(const std::string& path, const Fingerprint& version, Time now) const {
    const auto found = files.find(path);
    return found != files.end() && found->second.version == version && now < found->second.until;
}

void FileRetries::tryNow(const std::string& path) {
    if (const auto found = files.find(path); found != files.end()) found->second.until = Time::min();
}

std::vector<Failure> FileRetries::all() const {
    std::vector<Failure> failures;
    failures.reserve(files.size());
    for (const auto& [path, waiting] : files) failures.push_back(waiting.why);
    return failures;
}

} // namespace zembrastel
