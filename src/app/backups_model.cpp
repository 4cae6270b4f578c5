#include "app/backups_model.h"

#include "model/error.h"

#include <system_error>
#include <utility>

namespace zembrastel {

BackupsModel::BackupsModel(MainContext& mainContext, std::string folder)
    : context(mainContext), localFolder(std::move(folder)), tasks(mainContext) {}

BackupsModel::~BackupsModel() { control->cancel(); }

template <class Value>
void BackupsModel::run(std::function<Value(const TransferControl&)> work, Done<Value> done) {
    const auto report = [this, done = std::move(done)](BackupResult<Value> result) {
        context.post(lifetime.guard([done, result = std::move(result)] { done(result); }));
    };
    try {
        (void)tasks.start([work = std::move(work), report, stopper = control](const std::stop_token&) {
            try {
                report({.value = work(*stopper)});
            } catch (const Cancelled&) {
                // No caller waits for it any more.
            } catch (const std::exception& error) {
                report({.failure = describe(error)});
            }
        });
    } catch (const std::system_error& error) {
        report({.failure = describe(error)});
    }
}

void BackupsModel::list(Done<std::vector<Backup>> done) {
    run<std::vector<Backup>>(
        [folder = localFolder](const TransferControl& stopper) { return listBackups(folder, stopper); },
        std::move(done));
}

void BackupsModel::locate(const Backup& backup, Done<std::filesystem::path> done) {
    run<std::filesystem::path>(
        [folder = localFolder, backup](const TransferControl&) { return placeOf(folder, backup); }, std::move(done));
}

void BackupsModel::restore(const Backup& backup, Done<Restored> done) {
    run<Restored>(
        [folder = localFolder, backup](const TransferControl& stopper) {
            return restoreBackup(folder, backup, stopper);
        },
        std::move(done));
}

} // namespace zembrastel
