// The tree of the content picker as a list of lines, with the ticks of the selection in progress: one line for each
// visible entry, and one message where a folder shows no contents.
//
// Main thread. Observes one browser at a time, until it leaves it.
#pragma once

#include "app/remote_browser_model.h"
#include "model/download_selection.h"

#include <QAbstractListModel>

#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace zembrastel::ui {

struct ContentLine {
    enum class Kind { entry, loading, error, empty };

    Kind kind = Kind::entry;
    int depth = 0;
    std::string path;                         // of a message, that of its folder
    std::shared_ptr<const RemoteEntry> entry; // of an entry alone

    [[nodiscard]] bool isEntry() const { return kind == Kind::entry; }
    [[nodiscard]] bool isFolder() const { return isEntry() && entry->directory; }

    friend bool operator==(const ContentLine& a, const ContentLine& b) {
        return a.kind == b.kind && a.depth == b.depth && a.path == b.path;
    }
};

// From top to bottom.
[[nodiscard]] std::vector<ContentLine> contentLines(const RemoteBrowserModel& browser);

// Where two lists of lines differ: the lines from `first` up to `formerEnd` were replaced by those up to `nextEnd`.
struct LineChange {
    int first = 0;
    int formerEnd = 0;
    int nextEnd = 0;
};

[[nodiscard]] LineChange changeBetween(const std::vector<ContentLine>& former, const std::vector<ContentLine>& next);

class ContentTreeModel : public QAbstractListModel, private RemoteBrowserObserver {
    Q_OBJECT

public:
    ContentTreeModel(DownloadSelection selection, QObject* parent);

    [[nodiscard]] const DownloadSelection& selection() const { return chosen; }
    [[nodiscard]] const ContentLine& line(const QModelIndex& index) const { return lines[std::size_t(index.row())]; }

    // The former browser must still be there, and is not used any more.
    void follow(RemoteBrowserModel& next);
    // Before the browser goes.
    void leave();

    [[nodiscard]] bool isOpen(const ContentLine& line) const;
    [[nodiscard]] Qt::CheckState checkState(const ContentLine& line) const;
    [[nodiscard]] bool isExcluded(const ContentLine& line) const;
    // "Local only", "Excluded", "Empty folder", as far as they apply.
    [[nodiscard]] QStringList badges(const ContentLine& line) const;
    [[nodiscard]] QString shownText(const ContentLine& line) const;

    // The folder that a line lies in; not valid for what lies in the remote folder itself.
    [[nodiscard]] QModelIndex folderOf(const QModelIndex& child) const;

    // Whether what is ticked at a path is a folder, as far as it was listed.
    [[nodiscard]] std::optional<bool> isFolder(const std::string& path) const;

    // What is ticked in part becomes ticked as a whole.
    void toggleTick(const QModelIndex& index);
    void tickEverything(bool ticked);
    void toggleFold(const QModelIndex& index);
    void retry(const QModelIndex& index);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;

private:
    [[nodiscard]] QString failureOf(const ContentLine& line) const;
    [[nodiscard]] QString spoken(const ContentLine& line) const;
    void folderChanged(const std::string& path) override;
    void expandedChanged(const std::string& path) override;
    void update();
    void learnKinds(const std::string& folder);
    void tellAllChanged();

    RemoteBrowserModel* browser = nullptr;
    DownloadSelection chosen;
    std::unordered_map<std::string, bool> kinds; // by path: is it a folder? Of all that was ticked and listed.
    std::vector<ContentLine> lines;
};

} // namespace zembrastel::ui
