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
    const std::string& path, const Fingerprint& version, const std::string& message, Time now) {
    Failure& failure = files[path];
    failure.count = failure.version == version ? failure.count + 1 : 1;
    failure.version = version;
    failure.message = message;
    const auto delay = fileRetryDelay(failure.count);
    failure.until = now + delay;
    return delay;
}

bool FileRetries::waits(const std::string& path, const Fingerprint& version, Time now) const {
    const auto found = files.find(path);
    return found != files.end() && found->second.version == version && now < found->second.until;
}

} // namespace zembrastel
