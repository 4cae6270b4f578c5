#include "app/jobs/job_work.h"

#include "transport/publish/leftovers.h"

namespace zembrastel {

FTPTransport transportFor(const Assignment& work, ProgressMeter& meter, const std::vector<PrivateItem>& privateItems) {
    return {
        .profile = work.profile,
        .password = work.password,
        .control = work.control,
        .observer = &meter,
        .privateItems = privateItems,
        .traits = work.traits};
}

JobWork serverWork() {
    return {
        .check = [](const FTPTransport& server, const ServerRecord& recorded,
                    const std::stop_token&) { return server.newerRemoteFiles(recorded, [](const std::string&) {}); },
        .watch =
            [](const SyncWorker& worker, const std::stop_token& stop) {
                clearLeftovers(worker.profile, *worker.control);
                worker.run(stop);
            },
        .compareContents = [](const FTPTransport& server, const auto& files,
                              const auto& compared) { server.filesWithEqualContents(files, compared); }};
}

JobWork onePass() {
    JobWork work = serverWork();
    work.watch = [](const SyncWorker& worker, const std::stop_token& stop) {
        clearLeftovers(worker.profile, *worker.control);
        worker.pass(stop);
    };
    return work;
}

} // namespace zembrastel
