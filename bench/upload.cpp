// Uploads by the whole program but for its faces: model, saves, worker, transfers. Only the pauses between polls are
// left out.
#include "app/app_model.h"
#include "app/context/main_context.h"
#include "measure.h"
#include "platform/descriptor.h"
#include "subjects.h"

#include <CLI/CLI.hpp>
#include <array>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <sys/inotify.h>

namespace zembrastel::bench {
namespace {

struct Options {
    std::string stateFolder;
    std::size_t count = 200;
    std::size_t bytes = 4096;
    std::size_t folders = 1;
    std::size_t most = 0;
};

// The pauses of the one worker. What is to be uploaded is there from the start or comes up in the first pause; the poll
// after the one that saw it first uploads it.
class Pauses final : public Clock {
public:
    Pauses(MainQueue& mainQueue, std::function<void()> makeFiles) : queue(mainQueue), make(std::move(makeFiles)) {}

    std::chrono::system_clock::time_point now() const override { return systemClock().now(); }
    std::chrono::steady_clock::time_point steadyNow() const override { return systemClock().steadyNow(); }

    bool sleep(const std::stop_token& stop, std::chrono::nanoseconds duration) override {
        ++pauses;
        failed = failed || duration != pollInterval;
        if (pauses == 1 && make) make();
        const int seen = make ? 2 : 1;
        if (pauses == seen) begin = bench::now();
        if (pauses <= seen && !failed) return true;
        end();
        return systemClock().sleep(stop, std::chrono::hours(1));
    }

    void end() {
        done = true;
        queue.quit();
    }

    Moment begin; // of the poll that uploads
    std::atomic<bool> done = false;
    bool failed = false;

private:
    MainQueue& queue;
    const std::function<void()> make;
    int pauses = 0;
};

// Counts the renames in a folder, which is what a save ends with.
class Renames {
public:
    explicit Renames(const std::string& folder) : watch(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
        // Both ends of each: of equal events in a row the kernel keeps one.
        inotify_add_watch(watch.get(), folder.c_str(), IN_MOVED_FROM | IN_MOVED_TO);
    }

    [[nodiscard]] std::size_t count() {
        alignas(inotify_event) std::array<char, 65536> buffer{};
        std::size_t renames = 0;
        for (ssize_t size = 0; (size = read(watch.get(), buffer.data(), buffer.size())) > 0;) {
            for (ssize_t at = 0; at < size;) {
                const auto* const event = reinterpret_cast<const inotify_event*>(buffer.data() + at);
                if ((event->mask & IN_MOVED_TO) != 0) ++renames;
                at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
            }
        }
        return renames;
    }

private:
    const Descriptor watch;
};

class UploadCount final : public ModelObserver {
public:
    UploadCount(const AppModel& seen, std::size_t toUpload, std::function<void()> whenUploaded)
        : model(seen), most(toUpload), then(std::move(whenUploaded)) {}

    void statusChanged(const Uuid& id) override {
        uploaded = static_cast<std::size_t>(model.status(id).uploaded);
        title = model.status(id).title() + ": " + model.status(id).detail;
        if (most != 0 && uploaded == most) then();
    }

    std::size_t uploaded = 0;
    std::string title;

private:
    const AppModel& model;
    const std::size_t most;
    const std::function<void()> then;
};

void makeFiles(const std::filesystem::path& top, const Options& options) {
    for (std::size_t i = 0; i < options.count; ++i) {
        const auto folder = options.folders == 1 ? top : top / std::to_string(i % options.folders);
        std::filesystem::create_directories(folder);
        std::ofstream(folder / ("new-" + std::to_string(i) + ".html")) << std::string(options.bytes, 'x');
    }
}

void measure(const Options& options) {
    const StateStore store(options.stateFolder);
    const Profile profile = store.load().profiles.at(0);
    MainQueue queue;
    const auto make = [&] { makeFiles(std::filesystem::path(profile.localFolder) / "new", options); };
    Pauses pauses(queue, options.count == 0 ? std::function<void()>() : make);
    AppModel model(queue, {.storeOverride = store, .sessionPasswords = {{profile.id, "s3cret"}}, .clock = pauses});
    UploadCount watch(model, options.most, [&pauses] { pauses.end(); });
    model.observe(watch);
    Renames saves(options.stateFolder);
    model.start(profile.id);
    constexpr std::chrono::hours patience{10};
    queue.runUntil([&] { return pauses.done.load(); }, patience);
    model.shutdown();
    const Moment end = now();
    const std::chrono::duration<double> today = systemClock().now().time_since_epoch();
    const std::size_t wanted = options.most != 0 ? options.most : options.count;
    if (pauses.failed || watch.uploaded < wanted) throw std::runtime_error("uploads failed: " + watch.title);
    Figures()
        .since(pauses.begin, end)
        .set("uploads", static_cast<double>(watch.uploaded))
        .set("began", today.count() - (end.wall - pauses.begin.wall))
        .set("saves", static_cast<double>(saves.count()))
        .print();
}

} // namespace

void addUpload(CLI::App& parent) {
    auto* const command = parent.add_subcommand("upload", "Uploads of small files from the first profile's folder");
    const auto options = std::make_shared<Options>();
    command->add_option("FOLDER", options->stateFolder, "The state folder")->required();
    command->add_option("--count", options->count, "Files to make in the folder \"new\"; none uploads what is there");
    command->add_option("--bytes", options->bytes, "In each of them");
    command->add_option("--folders", options->folders, "Folders in \"new\" to spread them over; one is \"new\" itself");
    command->add_option("--most", options->most, "End after so many uploads");
    command->callback([options] { measure(*options); });
}

} // namespace zembrastel::bench
