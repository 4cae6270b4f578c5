#include "ui/content_picker/content_tree_model.h"

#include "ui/theme/qt_text.h"
#include "ui/theme/text_style.h"

#include <optional>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace zembrastel::ui {
namespace {

// The message that an open folder shows instead of contents, if any.
std::optional<ContentLine> messageOf(const RemoteBrowserModel& browser, const std::string& folder, int depth) {
    const auto line = [&](ContentLine::Kind kind) {
        return ContentLine{.kind = kind, .depth = depth, .path = folder, .entry = nullptr};
    };
    if (browser.loading().contains(folder)) return line(ContentLine::Kind::loading);
    if (browser.errors().contains(folder)) return line(ContentLine::Kind::error);
    const auto found = browser.children().find(folder);
    if (found != browser.children().end() && found->second->empty()) return line(ContentLine::Kind::empty);
    return std::nullopt;
}

// For more ticks the summary does not count folders and files apart: that would block the window.
constexpr int maxCountedTicks = 2000;

using Mark = DownloadSelection::Mark;

QString labelOf(Mark mark) {
    switch (mark) {
    case Mark::all:
        return ContentTreeModel::tr("Selected");
    case Mark::partial:
        return ContentTreeModel::tr("Partially selected");
    case Mark::none:
        break;
    }
    return ContentTreeModel::tr("Not selected");
}

} // namespace

std::vector<ContentLine> contentLines(const RemoteBrowserModel& browser) {
    std::vector<RemoteBrowserRow> entries = browser.rows();
    std::vector<ContentLine> lines;
    lines.reserve(entries.size() + 1);
    if (auto message = messageOf(browser, "", 0)) lines.push_back(std::move(*message));
    for (auto& row : entries) {
        lines.push_back(
            {.kind = ContentLine::Kind::entry,
             .depth = row.depth,
             .path = std::move(row.path),
             .entry = std::move(row.entry)});
        const ContentLine& added = lines.back();
        if (!added.isFolder() || !browser.expanded().contains(added.path)) continue;
        if (auto message = messageOf(browser, added.path, added.depth + 1)) lines.push_back(std::move(*message));
    }
    return lines;
}

namespace {

class Search {
public:
    Search(const RemoteBrowserModel& searchedTree, const QString& searchedText)
        : browser(searchedTree), text(searchedText) {}

    ContentMatches run() {
        visit("", 0);
        return std::move(found);
    }

private:
    void visit(const std::string& folder, int depth) {
        const auto contents = browser.children().find(folder);
        if (contents == browser.children().end()) {
            found.all = false;
            return;
        }
        const auto& entries = contents->second;
        for (const auto& entry : *entries) {
            const std::size_t place = found.lines.size();
            const std::size_t before = found.names;
            found.lines.push_back(
                {.kind = ContentLine::Kind::entry,
                 .depth = depth,
                 .path = childPath(folder, entry.name),
                 .entry = {entries, &entry}});
            const std::string path = found.lines.back().path;
            if (entry.directory) visit(path, depth + 1);
            const bool isAbove = found.names > before;
            const bool matches = toQString(entry.name).contains(text, Qt::CaseInsensitive);
            if (isAbove) found.foldersAbove.insert(path);
            if (matches) ++found.names;
            if (!isAbove && !matches) found.lines.resize(place);
        }
    }

    const RemoteBrowserModel& browser;
    const QString& text;
    ContentMatches found;
};

} // namespace

ContentMatches findContents(const RemoteBrowserModel& browser, const QString& text) {
    return Search(browser, text).run();
}

ContentTreeModel::ContentTreeModel(DownloadSelection selection, QObject* parent)
    : FoldingRows(parent), chosen(std::move(selection)) {}

void ContentTreeModel::follow(RemoteBrowserModel& next) {
    beginResetModel();
    leave();
    browser = &next;
    browser->observe(*this);
    lines = wantedLines();
    endResetModel();
}

void ContentTreeModel::leave() {
    if (browser != nullptr) browser->forget(*this);
    browser = nullptr;
}

bool ContentTreeModel::isOpen(const ContentLine& line) const {
    if (!searched.isEmpty()) return matches.foldersAbove.contains(line.path);
    return line.isEntry() && browser->expanded().contains(line.path);
}

QString ContentTreeModel::sizeOf(const ContentLine& line) const {
    const bool known = line.isEntry() && !line.entry->directory && line.entry->size;
    return known ? sizeText(*line.entry->size) : QString();
}

void ContentTreeModel::search(const QString& text) {
    searched = text;
    update();
}

qsizetype ContentTreeModel::matchIn(const QString& name) const {
    return searched.isEmpty() ? -1 : name.indexOf(searched, 0, Qt::CaseInsensitive);
}

std::vector<ContentLine> ContentTreeModel::wantedLines() {
    if (searched.isEmpty()) return contentLines(*browser);
    matches = findContents(*browser, searched);
    auto shown = std::exchange(matches.lines, {});
    shown.push_back({.kind = ContentLine::Kind::note, .depth = 0, .path = {}, .entry = nullptr});
    return shown;
}

QString ContentTreeModel::noteText() const {
    const QString found = matches.names == 0 ? tr("No name matches “%1”.").arg(searched)
                                             : tr("%n names match.", nullptr, static_cast<int>(matches.names));
    return matches.all ? found : tr("%1 Folders that were not opened yet are not searched.").arg(found);
}

bool ContentTreeModel::isExcluded(const ContentLine& line) const { return browser->profile().excludes(line.path); }

QStringList ContentTreeModel::badges(const ContentLine& line) const {
    QStringList found;
    if (line.entry->localOnly) found += tr("Local only");
    if (isExcluded(line)) found += tr("Excluded");
    const auto contents = browser->children().find(line.path);
    if (contents != browser->children().end() && contents->second->empty()) found += tr("Empty folder");
    return found;
}

QString ContentTreeModel::shownText(const ContentLine& line) const {
    switch (line.kind) {
    case ContentLine::Kind::loading:
        return tr("Loading folder…");
    case ContentLine::Kind::error:
        return failureOf(line);
    case ContentLine::Kind::empty:
        return tr("This remote folder is empty.");
    case ContentLine::Kind::note:
        return noteText();
    case ContentLine::Kind::entry:
        break;
    }
    return toQString(line.entry->name);
}

QString ContentTreeModel::failureOf(const ContentLine& line) const {
    const auto failure = browser->errors().find(line.path);
    return failure == browser->errors().end() ? QString() : toQString(failure->second);
}

QString ContentTreeModel::accessibleText(const ContentLine& line) const {
    if (line.kind == ContentLine::Kind::error) return shownText(line) + QStringLiteral(", ") + tr("Retry");
    if (!line.isEntry()) return shownText(line);
    QStringList parts{shownText(line)};
    if (line.isFolder()) parts += isOpen(line) ? tr("open folder") : tr("closed folder");
    parts += labelOf(chosen.mark(line.path));
    return (parts + badges(line)).join(QStringLiteral(", "));
}

QString ContentTreeModel::describe(const QModelIndex& row) const {
    const QString size = sizeOf(line(row));
    return size.isEmpty() ? levelOf(row) : levelOf(row) + QStringLiteral(", ") + size;
}

int ContentTreeModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(lines.size());
}

QVariant ContentTreeModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    const ContentLine& shown = line(index);
    switch (role) {
    case Qt::DisplayRole:
        return shownText(shown);
    case Qt::ToolTipRole:
        return asToolTip(shown.isEntry() ? toQString(shown.path) : shownText(shown));
    case Qt::AccessibleDescriptionRole:
        return describe(index);
    case Qt::AccessibleTextRole:
        return accessibleText(shown);
    case Qt::CheckStateRole:
        return shown.isEntry() ? QVariant(checkState(shown)) : QVariant();
    default:
        return {};
    }
}

Qt::ItemFlags ContentTreeModel::flags(const QModelIndex& index) const {
    const auto common = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
    return line(index).isEntry() ? common | Qt::ItemIsUserCheckable : common;
}

Qt::CheckState ContentTreeModel::checkState(const ContentLine& line) const {
    switch (chosen.mark(line.path)) {
    case Mark::all:
        return Qt::Checked;
    case Mark::partial:
        return Qt::PartiallyChecked;
    case Mark::none:
        break;
    }
    return Qt::Unchecked;
}

std::optional<bool> ContentTreeModel::isListedFolder(const std::string& path) const {
    const auto kind = kinds.find(path);
    return kind == kinds.end() ? std::nullopt : std::optional(kind->second);
}

void ContentTreeModel::toggleTick(const QModelIndex& index) {
    const ContentLine& ticked = line(index);
    if (!ticked.isEntry()) return;
    kinds.insert_or_assign(ticked.path, ticked.isFolder());
    chosen.set(ticked.path, chosen.mark(ticked.path) != Mark::all);
    notifyAllChanged();
}

void ContentTreeModel::tickEverything(bool ticked) {
    chosen.set("", ticked);
    notifyAllChanged();
}

void ContentTreeModel::toggleFold(const QModelIndex& index) {
    const ContentLine& folder = line(index);
    // In a search, folders only open, to be searched as well.
    if (!folder.isFolder() || (!searched.isEmpty() && browser->children().contains(folder.path))) return;
    browser->toggle(folder.path);
}

void ContentTreeModel::retry(const QModelIndex& index) {
    if (line(index).kind == ContentLine::Kind::error) browser->load(line(index).path);
}

void ContentTreeModel::folderChanged(const std::string& path) {
    rememberKinds(path);
    update();
}

void ContentTreeModel::expandedChanged(const std::string&) { update(); }

void ContentTreeModel::update() {
    replaceLines(lines, wantedLines());
    notifyAllChanged();
}

// Remembers for each ticked path in a folder whether it is a folder.
void ContentTreeModel::rememberKinds(const std::string& folder) {
    const auto contents = browser->children().find(folder);
    if (contents == browser->children().end() || chosen.rules.size() > maxCountedTicks) return;
    // Neither many entries nor many rules may be searched once per item of the other.
    const std::string inside = folder.empty() ? folder : folder + '/';
    std::unordered_map<std::string_view, const std::string*> ruled;
    for (auto rule = chosen.rules.lower_bound(inside); rule != chosen.rules.end(); ++rule) {
        const std::string& path = rule->first;
        if (!path.starts_with(inside)) break;
        const auto name = std::string_view(path).substr(inside.size());
        if (!name.empty() && name.find('/') == std::string_view::npos) ruled.emplace(name, &path);
    }
    if (ruled.empty()) return;
    for (const auto& entry : *contents->second) {
        if (const auto rule = ruled.find(entry.name); rule != ruled.end()) {
            kinds.insert_or_assign(*rule->second, entry.directory);
        }
    }
}

void ContentTreeModel::notifyAllChanged() {
    if (!lines.empty()) Q_EMIT dataChanged(index(0), index(rowCount() - 1));
}

} // namespace zembrastel::ui
