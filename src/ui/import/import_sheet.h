// The sheet that shows what profiles a file holds and has the user take some of them, and the choice of that file.
//
// Main thread; show it with open(). The file is read on a thread of its own. Passwords go to the secret store, which
// may wait for a person; what fails is told in the sheet, which closes by itself once all that was ticked has been
// imported. Whoever made the sheet deletes it, at the earliest when finished() has been told.
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

// Lets the user choose the file, at first one in which other programs are known to keep theirs.
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
    std::shared_ptr<ImportSheet*> self; // watched by what a thread posts
    bool busy = true;
    std::deque<int> waiting;      // rows to be imported
    std::vector<Profile> others;  // that each of them must differ from
    std::map<int, Profile> ready; // those with all that they need, to be saved together
    std::optional<Uuid> first;    // that was imported
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
