#include "checks/workplace.h"

#include "model/scan.h"
#include "platform/files.h"

#include <algorithm>

namespace zembrastel {
namespace {

namespace fs = std::filesystem;

// The machine's clock, but every wait is over in a moment: two polls then take no four seconds.
class HastyClock final : public Clock {
public:
    [[nodiscard]] std::chrono::system_clock::time_point now() const override { return systemClock().now(); }
    [[nodiscard]] std::chrono::steady_clock::time_point steadyNow() const override { return systemClock().steadyNow(); }
    [[nodiscard]] bool sleep(const std::stop_token& stop, std::chrono::nanoseconds duration) override {
        return systemClock().sleep(stop, std::min(duration, longest));
    }

private:
    static constexpr std::chrono::nanoseconds longest = std::chrono::milliseconds(20);
};

} // namespace

Workplace::Workplace() {
    fs::create_directory(siteFolder);
    profile.name = "Built-in check";
    profile.host = "127.0.0.1";
    profile.username = "web";
    profile.localFolder = siteFolder;
}

void Workplace::write(const std::string& path, const std::string& text, std::chrono::seconds ago) const {
    const auto file = local(path);
    fs::create_directories(file.parent_path());
    writeAtomically(file, text);
    fs::last_write_time(file, fs::file_time_type::clock::now() - ago);
}

std::string Workplace::read(const std::string& path) const { return readFile(local(path)).value_or("no such file"); }

std::vector<std::string> Workplace::scanned() const {
    std::vector<std::string> paths;
    for (const auto& [path, fingerprint] : scan(profile)) paths.push_back(path);
    std::sort(paths.begin(), paths.end());
    return paths;
}

AppModel& Workplace::open() {
    close();
    static HastyClock clock;
    model = std::make_unique<AppModel>(
        queue, AppModel::Options{
                   .storeOverride = StateStore(folder() / "state"),
                   .sessionPasswords = passwords,
                   .passwordAccess = {
                       .save = [this](const std::string& password, const Uuid& id) { passwords[id] = password; },
                       .read = [this](const Uuid& id) { return passwords.at(id); },
                       .remove = [this](const Uuid& id) { passwords.erase(id); }},
                   .clock = clock});
    return *model;
}

} // namespace zembrastel
