// The backups of one local folder for those who show them: everything that touches the disk runs in the background.
//
// Lives on the main context: every call comes from there, and none blocks. Each `done` is called there, once, with what
// was asked for or the text of a failure, and not once the model has gone.
#pragma once

#include "app/context/background_tasks.h"
#include "app/context/lifetime.h"
#include "app/context/main_context.h"
#include "transport/download/backups.h"
#include "transport/transfer_control.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace zembrastel {

template <class Value>
struct BackupResult {
    Value value{};
    std::string failure{}; // empty where there is none
};

class BackupsModel {
public:
    template <class Value>
    using Done = std::function<void(const BackupResult<Value>& result)>;

    // The context must outlive the model.
    BackupsModel(MainContext& mainContext, std::string folder);
    BackupsModel(const BackupsModel&) = delete;
    BackupsModel& operator=(const BackupsModel&) = delete;
    // Ends what is under way: a file that is being restored is then as it was.
    ~BackupsModel();

    // As listBackups() orders them.
    void list(Done<std::vector<Backup>> done);
    void locate(const Backup& backup, Done<std::filesystem::path> done);
    void restore(const Backup& backup, Done<Restored> done);

private:
    template <class Value>
    void run(std::function<Value(const TransferControl&)> work, Done<Value> done);

    MainContext& context;
    const std::string localFolder;
    const std::shared_ptr<TransferControl> control = std::make_shared<TransferControl>();
    Lifetime lifetime;
    BackgroundTasks tasks;
};

} // namespace zembrastel
