// The tree of the content picker as a list of lines, with the ticks of the selection: one line per visible entry, and
// one message in place of the contents of a folder that shows none.
//
// Main thread. Observes one browser at a time, until leave().
#pragma once

#include "app/remote_browser_model.h"
#include "model/download_selection.h"
#include "ui/widgets/folding_list.h"

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace zembrastel::ui {

struct ContentLine {
    enum class Kind { entry, loading, error, empty, note };

    Kind kind = Kind::entry;
    int depth = 0;
    std::string path;                         // of a message, the path of its folder
    std::shared_ptr<const RemoteEntry> entry; // null for a message

    [[nodiscard]] bool isEntry() const { return kind == Kind::entry; }
    [[nodiscard]] bool isFolder() const { return isEntry() && entry->directory; }

    friend bool operator==(const ContentLine& a, const ContentLine& b) {
        return a.kind == b.kind && a.depth == b.depth && a.path == b.path;
    }
};

// All visible lines, from top to bottom.
[[nodiscard]] std::vector<ContentLine> contentLines(const RemoteBrowserModel& browser);

// What a search shows: the entries whose names contain the text, ignoring case, and the folders above them.
struct ContentMatches {
    std::vector<ContentLine> lines;
    std::size_t names = 0; // that match
    bool all = true;       // false if folders were not opened yet
    std::set<std::string, std::less<>> foldersAbove = {};
};

[[nodiscard]] ContentMatches findContents(const RemoteBrowserModel& browser, const QString& text);

class ContentTreeModel : public FoldingRows, private RemoteBrowserObserver {
    Q_OBJECT

public:
    ContentTreeModel(DownloadSelection selection, QObject* parent);

    [[nodiscard]] const DownloadSelection& selection() const { return chosen; }
    [[nodiscard]] const ContentLine& line(const QModelIndex& index) const { return lines[std::size_t(index.row())]; }

    // Observes another browser. The former browser must still exist and is not used afterwards.
    void follow(RemoteBrowserModel& next);
    // Call it before the browser is destroyed.
    void leave();

    // Shows only what matches, and a note below it; without a text, the whole tree.
    void search(const QString& text);
    // Where the searched text begins in the name of the line; -1 if it is not there.
    [[nodiscard]] qsizetype matchIn(const QString& name) const;
    [[nodiscard]] qsizetype searchedLength() const { return searched.size(); }

    [[nodiscard]] bool isOpen(const ContentLine& line) const;
    [[nodiscard]] Qt::CheckState checkState(const ContentLine& line) const;
    [[nodiscard]] bool isExcluded(const ContentLine& line) const;
    // Of a file, if it is known.
    [[nodiscard]] QString sizeOf(const ContentLine& line) const;
    // "Local only", "Excluded" and "Empty folder", as far as they apply.
    [[nodiscard]] QStringList badges(const ContentLine& line) const;
    [[nodiscard]] QString shownText(const ContentLine& line) const;

    [[nodiscard]] int depthOf(const QModelIndex& row) const override { return line(row).depth; }
    [[nodiscard]] bool isFolder(const QModelIndex& row) const override { return line(row).isFolder(); }
    [[nodiscard]] bool isOpen(const QModelIndex& row) const override { return isOpen(line(row)); }
    [[nodiscard]] bool isMessage(const QModelIndex& row) const override { return !line(row).isEntry(); }

    // Whether the ticked path is a folder; nullopt if it was not listed.
    [[nodiscard]] std::optional<bool> isListedFolder(const std::string& path) const;

    // A partially ticked line becomes fully ticked.
    void toggleTick(const QModelIndex& index);
    void tickEverything(bool ticked);
    void toggleFold(const QModelIndex& index) override;
    void retry(const QModelIndex& index) override;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;

private:
    [[nodiscard]] QString failureOf(const ContentLine& line) const;
    [[nodiscard]] QString describe(const QModelIndex& row) const;
    [[nodiscard]] QString accessibleText(const ContentLine& line) const;
    void folderChanged(const std::string& path) override;
    void expandedChanged(const std::string& path) override;
    void update();
    [[nodiscard]] std::vector<ContentLine> wantedLines();
    [[nodiscard]] QString noteText() const;
    void rememberKinds(const std::string& folder);
    void notifyAllChanged();

    RemoteBrowserModel* browser = nullptr;
    DownloadSelection chosen;
    std::unordered_map<std::string, bool> kinds; // true for folders; only paths that were ticked and listed
    std::vector<ContentLine> lines;
    QString searched;
    ContentMatches matches; // without its lines; while a text is searched
};

} // namespace zembrastel::ui
