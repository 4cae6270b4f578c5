// The lines that the tree of the content picker shows: one for each visible entry, and one where a folder has something
// to say in place of contents.
//
// Values; main thread, as the browser is.
#pragma once

#include "app/remote_browser_model.h"

#include <memory>
#include <string>
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

} // namespace zembrastel::ui
