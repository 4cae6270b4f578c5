#include "ui/content_picker/content_tree_model.h"

#include "ui/theme/text_style.h"

#include <iterator>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace zembrastel::ui {
namespace {

// Of more ticks nobody minds how many are folders, and to find out would hold the window up.
constexpr std::size_t mostToTellApart = 2000;

using Mark = DownloadSelection::Mark;

QString text(const std::string& utf8) { return QString::fromStdString(utf8); }

QString labelOf(Mark mark) {
    switch (mark) {
    case Mark::all:
        return ContentRows::tr("Selected");
    case Mark::partial:
        return ContentRows::tr("Partially selected");
    case Mark::none:
        break;
    }
    return ContentRows::tr("Not selected");
}

int checkState(Mark mark) {
    if (mark == Mark::partial) return Qt::PartiallyChecked;
    return mark == Mark::all ? Qt::Checked : Qt::Unchecked;
}

} // namespace

ContentRows::ContentRows(DownloadSelection selection, QObject* parent)
    : QAbstractListModel(parent), chosen(std::move(selection)) {}

void ContentRows::follow(RemoteBrowserModel& next) {
    beginResetModel();
    leave();
    browser = &next;
    browser->observe(*this);
    lines = contentLines(*browser);
    endResetModel();
}

void ContentRows::leave() {
    if (browser != nullptr) browser->forget(*this);
    browser = nullptr;
}

bool ContentRows::isOpen(const ContentLine& line) const {
    return line.isEntry() && browser->expanded().contains(line.path);
}

bool ContentRows::isExcluded(const ContentLine& line) const { return browser->profile().excludes(line.path); }

QStringList ContentRows::badges(const ContentLine& line) const {
    QStringList found;
    if (line.entry->localOnly) found += tr("Local only");
    if (isExcluded(line)) found += tr("Excluded");
    const auto contents = browser->children().find(line.path);
    if (contents != browser->children().end() && contents->second->empty()) found += tr("Empty folder");
    return found;
}

QString ContentRows::shownText(const ContentLine& line) const {
    switch (line.kind) {
    case ContentLine::Kind::loading:
        return tr("Loading folder…");
    case ContentLine::Kind::error:
        return failureOf(line);
    case ContentLine::Kind::empty:
        return tr("This remote folder is empty.");
    case ContentLine::Kind::entry:
        break;
    }
    return text(line.entry->name);
}

QString ContentRows::failureOf(const ContentLine& line) const {
    const auto failure = browser->errors().find(line.path);
    return failure == browser->errors().end() ? QString() : text(failure->second);
}

QString ContentRows::spoken(const ContentLine& line) const {
    if (line.kind == ContentLine::Kind::error) return shownText(line) + QStringLiteral(", ") + tr("Retry");
    if (!line.isEntry()) return shownText(line);
    QStringList parts{shownText(line)};
    if (line.isFolder()) parts += isOpen(line) ? tr("open folder") : tr("closed folder");
    parts += labelOf(chosen.mark(line.path));
    return (parts + badges(line)).join(QStringLiteral(", "));
}

int ContentRows::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(lines.size());
}

QVariant ContentRows::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    const ContentLine& shown = line(index);
    switch (role) {
    case Qt::DisplayRole:
        return shownText(shown);
    case Qt::ToolTipRole:
        return asToolTip(shown.isEntry() ? text(shown.path) : shownText(shown));
    case Qt::AccessibleTextRole:
        return spoken(shown);
    case Qt::CheckStateRole:
        return shown.isEntry() ? checkState(chosen.mark(shown.path)) : QVariant();
    default:
        return {};
    }
}

Qt::ItemFlags ContentRows::flags(const QModelIndex& index) const {
    const auto common = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
    return line(index).isEntry() ? common | Qt::ItemIsUserCheckable : common;
}

QModelIndex ContentRows::folderOf(const QModelIndex& child) const {
    for (int row = child.row() - 1; row >= 0; --row) {
        if (lines[std::size_t(row)].depth < line(child).depth) return index(row);
    }
    return {};
}

std::optional<bool> ContentRows::isFolder(const std::string& path) const {
    const auto kind = kinds.find(path);
    return kind == kinds.end() ? std::nullopt : std::optional(kind->second);
}

void ContentRows::toggleTick(const QModelIndex& index) {
    const ContentLine& ticked = line(index);
    if (!ticked.isEntry()) return;
    kinds.insert_or_assign(ticked.path, ticked.isFolder());
    chosen.set(ticked.path, chosen.mark(ticked.path) != Mark::all);
    tellAllChanged();
}

void ContentRows::tickEverything(bool ticked) {
    chosen.set("", ticked);
    tellAllChanged();
}

void ContentRows::toggleFold(const QModelIndex& index) {
    if (const ContentLine& folder = line(index); folder.isFolder()) browser->toggle(folder.path);
}

void ContentRows::retry(const QModelIndex& index) {
    if (line(index).kind == ContentLine::Kind::error) browser->load(line(index).path);
}

void ContentRows::folderChanged(const std::string& path) {
    learnKinds(path);
    update();
}

void ContentRows::expandedChanged(const std::string&) { update(); }

// Only the lines between the unchanged ones above and below are replaced, so that the view stays where it is.
void ContentRows::update() {
    std::vector<ContentLine> next = contentLines(*browser);
    const auto [first, formerEnd, nextEnd] = changeBetween(lines, next);
    if (formerEnd > first) {
        beginRemoveRows({}, first, formerEnd - 1);
        lines.erase(lines.begin() + first, lines.begin() + formerEnd);
        endRemoveRows();
    }
    if (nextEnd > first) {
        beginInsertRows({}, first, nextEnd - 1);
        lines.insert(
            lines.begin() + first, std::move_iterator(next.begin() + first),
            std::move_iterator(next.begin() + nextEnd));
        endInsertRows();
    }
    tellAllChanged();
}

// Remembers whether what is ticked in a folder are folders or files.
void ContentRows::learnKinds(const std::string& folder) {
    const auto contents = browser->children().find(folder);
    if (contents == browser->children().end() || chosen.rules.size() > mostToTellApart) return;
    // Folders are large where rules are few, and the other way round: neither is searched for each of the other.
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

void ContentRows::tellAllChanged() {
    if (!lines.empty()) Q_EMIT dataChanged(index(0), index(rowCount() - 1));
}

} // namespace zembrastel::ui
