// The lines of the content picker's tree as a list, with the ticks of the selection that is being made.
//
// Main thread. Follows one browser at a time, and is told of nothing once it has left it.
#pragma once

#include "app/remote_browser_model.h"
#include "model/download_selection.h"
#include "ui/content_picker/content_lines.h"

#include <QAbstractListModel>

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace zembrastel::ui {

class ContentRows : public QAbstractListModel, private RemoteBrowserObserver {
    Q_OBJECT

public:
    ContentRows(DownloadSelection selection, QObject* parent);

    [[nodiscard]] const DownloadSelection& selection() const { return chosen; }
    [[nodiscard]] const ContentLine& line(const QModelIndex& index) const { return lines[std::size_t(index.row())]; }

    // The former browser must still be there, and is not used any more.
    void follow(RemoteBrowserModel& next);
    // Before the browser goes.
    void leave();

    [[nodiscard]] bool isOpen(const ContentLine& line) const;
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
