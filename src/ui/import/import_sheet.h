// The sheet that imports profiles from a file, and the dialog that chooses the file.
//
// Main thread; show it with open(). A separate thread reads the file. Passwords go to the secret store, which may wait
// for the user. The sheet shows failures and closes by itself once all ticked profiles are imported. The caller deletes
// the sheet, not before finished() was emitted.
#pragma once

#include "app/context/background_tasks.h"
#include "ui/bridge/model_bridge.h"
#include "ui/import/import_list.h"
#include "ui/widgets/push_button.h"

#include <QDialog>
#include <QLabel>

#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace zembrastel::ui {

class ImportListView;
class MessageStrip;

// Opens a file dialog. It starts at a file of another program, if there is one in its usual place.
void chooseImportFile(QWidget* parent, std::function<void(const std::filesystem::path& file)> chosen);

class ImportSheet : public QDialog {
    Q_OBJECT

public:
    // The bridge and the context must outlive the sheet.
    ImportSheet(ModelBridge& bridge, MainContext& mainContext, const std::filesystem::path& file, QWidget* parent);
    ~ImportSheet() override;

    void reject() override;

private:
    struct Reading;

    [[nodiscard]] QWidget* makeFoot();
    void read(const std::filesystem::path& file);
    void showFound(const Reading& result);
    void showState();
    void chooseFolder(int row);

    void importTicked();
    void importNext();
    void passwordStored(int row, const Profile& profile, const std::optional<std::string>& failure);
    void finish(int row, const Profile& profile);
    [[nodiscard]] bool saveAll();
    [[nodiscard]] bool fail(const std::string& message);
    void showFailure(const std::string& message);
    void end();

    AppModel& model;
    MainContext& context;
    BackgroundTasks tasks;
    std::shared_ptr<ImportSheet*> self; // observed by callbacks from other threads
    bool busy = true;
    std::deque<int> waiting;      // rows to import
    std::vector<Profile> others;  // profiles that each import must not conflict with
    std::map<int, Profile> ready; // rows with all data, to be saved together
    std::optional<Uuid> first;    // imported profile
    ImportListModel* rows = nullptr;
    ImportListView* list = nullptr;
    QLabel* count = nullptr;
    PushButton* all = nullptr;
    PushButton* none = nullptr;
    PushButton* another = nullptr;
    PushButton* take = nullptr;
    MessageStrip* strip = nullptr;
};

} // namespace zembrastel::ui
