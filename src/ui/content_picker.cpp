#include "ui/content_picker.h"

#include "ui/push_button.h"
#include "ui/surface.h"
#include "ui/symbol_icon.h"
#include "ui/text_style.h"
#include "ui/theme.h"
#include "ui/tile.h"
#include "ui/turning_clock.h"
#include "ui/wrap_label.h"

#include <QAbstractListModel>
#include <QCoreApplication>
#include <QCursor>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QScrollBar>
#include <QStyle>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

#include <algorithm>
#include <map>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace zembrastel {
namespace {

using Mark = DownloadSelection::Mark;

QString text(const std::string& utf8) { return QString::fromStdString(utf8); }

// A tool tip takes what looks like markup for markup.
QString asToolTip(const QString& plain) { return QStringLiteral("<span>%1</span>").arg(plain.toHtmlEscaped()); }

std::string_view parentOf(std::string_view path) {
    const auto slash = path.rfind('/');
    return slash == std::string_view::npos ? std::string_view() : path.substr(0, slash);
}

// One line of the list. A message stands where the contents of its folder will be.
struct Line {
    enum class Kind { entry, loading, error, empty };

    Kind kind = Kind::entry;
    int depth = 0;
    std::string path;                         // of a message, that of the folder
    std::shared_ptr<const RemoteEntry> entry; // of an entry alone

    friend bool operator==(const Line& a, const Line& b) {
        return a.kind == b.kind && a.depth == b.depth && a.path == b.path;
    }
};

// What an open folder shows in place of contents, if anything.
std::optional<Line> messageOf(const RemoteBrowserModel& browser, const std::string& folder, int depth) {
    const auto line = [&](Line::Kind kind) {
        return Line{.kind = kind, .depth = depth, .path = folder, .entry = nullptr};
    };
    if (browser.loading().contains(folder)) return line(Line::Kind::loading);
    if (browser.errors().contains(folder)) return line(Line::Kind::error);
    const auto found = browser.children().find(folder);
    if (found != browser.children().end() && found->second->empty()) return line(Line::Kind::empty);
    return std::nullopt;
}

std::vector<Line> linesOf(const RemoteBrowserModel& browser) {
    std::vector<RemoteBrowserRow> entries = browser.rows();
    std::vector<Line> lines;
    lines.reserve(entries.size() + 1);
    if (auto message = messageOf(browser, "", 0)) lines.push_back(std::move(*message));
    for (auto& row : entries) {
        lines.push_back(
            {.kind = Line::Kind::entry,
             .depth = row.depth,
             .path = std::move(row.path),
             .entry = std::move(row.entry)});
        const Line& added = lines.back();
        if (!added.entry->directory || !browser.expanded().contains(added.path)) continue;
        if (auto message = messageOf(browser, added.path, added.depth + 1)) lines.push_back(std::move(*message));
    }
    return lines;
}

} // namespace

// The lines of the tree as a list, with the ticks of the selection. Follows one browser at a time.
class ContentRows : public QAbstractListModel, private RemoteBrowserObserver {
    Q_DECLARE_TR_FUNCTIONS(zembrastel::RemoteDownloadPicker)

public:
    ContentRows(DownloadSelection selection, QObject* parent)
        : QAbstractListModel(parent), chosen(std::move(selection)) {}

    [[nodiscard]] const DownloadSelection& selection() const { return chosen; }
    [[nodiscard]] const Line& line(const QModelIndex& index) const { return lines[std::size_t(index.row())]; }

    // The former browser must still be there, and is not used any more.
    void follow(RemoteBrowserModel& next) {
        beginResetModel();
        if (browser != nullptr) browser->forget(*this);
        browser = &next;
        browser->observe(*this);
        lines = linesOf(*browser);
        endResetModel();
    }

    // Before the browser goes.
    void leave() {
        if (browser != nullptr) browser->forget(*this);
        browser = nullptr;
    }

    [[nodiscard]] bool isOpen(const Line& line) const {
        return line.kind == Line::Kind::entry && browser->expanded().contains(line.path);
    }
    [[nodiscard]] bool isExcluded(const Line& line) const { return browser->profile().excludes(line.path); }

    // "Local only", "Excluded", "Empty folder", as far as they apply.
    [[nodiscard]] QStringList badges(const Line& line) const {
        QStringList found;
        if (line.entry->localOnly) found += tr("Local only");
        if (isExcluded(line)) found += tr("Excluded");
        const auto contents = browser->children().find(line.path);
        if (contents != browser->children().end() && contents->second->empty()) found += tr("Empty folder");
        return found;
    }

    [[nodiscard]] static QString label(Mark mark) {
        switch (mark) {
        case Mark::all:
            return tr("Selected");
        case Mark::partial:
            return tr("Partially selected");
        case Mark::none:
            break;
        }
        return tr("Not selected");
    }

    [[nodiscard]] QString shownText(const Line& line) const {
        switch (line.kind) {
        case Line::Kind::loading:
            return tr("Loading folder…");
        case Line::Kind::error:
            return failureOf(line);
        case Line::Kind::empty:
            return tr("This remote folder is empty.");
        case Line::Kind::entry:
            break;
        }
        return text(line.entry->name);
    }

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : static_cast<int>(lines.size());
    }

    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override {
        if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
        const Line& shown = line(index);
        switch (role) {
        case Qt::DisplayRole:
            return shownText(shown);
        case Qt::ToolTipRole:
            return asToolTip(shown.kind == Line::Kind::entry ? text(shown.path) : shownText(shown));
        case Qt::AccessibleTextRole:
            return spoken(shown);
        case Qt::CheckStateRole:
            if (shown.kind == Line::Kind::entry) return checkState(chosen.mark(shown.path));
            return {};
        default:
            return {};
        }
    }

    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override {
        const auto common = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
        return line(index).kind == Line::Kind::entry ? common | Qt::ItemIsUserCheckable : common;
    }

    // What is ticked in part becomes ticked as a whole.
    void toggleTick(const QModelIndex& index) {
        const Line& ticked = line(index);
        if (ticked.kind != Line::Kind::entry) return;
        kinds[ticked.path] = ticked.entry->directory;
        chosen.set(ticked.path, chosen.mark(ticked.path) != Mark::all);
        tellAllChanged();
    }

    void tickEverything(bool ticked) {
        chosen.set("", ticked);
        tellAllChanged();
    }

    void toggleFold(const QModelIndex& index) {
        const Line& folder = line(index);
        if (folder.kind == Line::Kind::entry && folder.entry->directory) browser->toggle(folder.path);
    }

    void retry(const QModelIndex& index) {
        if (line(index).kind == Line::Kind::error) browser->load(line(index).path);
    }

    // The folder that a line lies in; not valid for what lies in the remote folder itself.
    [[nodiscard]] QModelIndex folderOf(const QModelIndex& child) const {
        for (int row = child.row() - 1; row >= 0; --row) {
            if (lines[std::size_t(row)].depth < line(child).depth) return index(row);
        }
        return {};
    }

    [[nodiscard]] std::optional<TickedKinds> tickedKinds() const {
        TickedKinds count;
        for (const auto& [path, ticked] : chosen.rules) {
            if (!ticked) continue;
            const auto kind = kinds.find(path);
            if (kind == kinds.end()) return std::nullopt;
            ++(kind->second ? count.folders : count.files);
        }
        return count;
    }

private:
    [[nodiscard]] static int checkState(Mark mark) {
        if (mark == Mark::partial) return Qt::PartiallyChecked;
        return mark == Mark::all ? Qt::Checked : Qt::Unchecked;
    }

    [[nodiscard]] QString failureOf(const Line& line) const {
        const auto failure = browser->errors().find(line.path);
        return failure == browser->errors().end() ? QString() : text(failure->second);
    }

    [[nodiscard]] QString spoken(const Line& line) const {
        if (line.kind == Line::Kind::error) return shownText(line) + QStringLiteral(", ") + tr("Retry");
        if (line.kind != Line::Kind::entry) return shownText(line);
        QStringList parts{shownText(line)};
        if (line.entry->directory) parts += isOpen(line) ? tr("open folder") : tr("closed folder");
        parts += label(chosen.mark(line.path));
        return (parts + badges(line)).join(QStringLiteral(", "));
    }

    void folderChanged(const std::string& path) override {
        learnKinds(path);
        update();
    }
    void expandedChanged(const std::string&) override { update(); }

    // Takes over what the browser has now. Only the lines between the unchanged ones above and below are replaced, so
    // that the view stays where it is.
    void update() {
        std::vector<Line> next = linesOf(*browser);
        const auto top = std::ranges::mismatch(lines, next);
        const auto first = top.in1 - lines.begin();
        const auto most = std::min(lines.end() - top.in1, next.end() - top.in2);
        const auto bottom = std::mismatch(lines.rbegin(), lines.rbegin() + most, next.rbegin());
        const auto same = bottom.first - lines.rbegin();
        if (const auto last = std::ssize(lines) - same; last > first) {
            beginRemoveRows({}, static_cast<int>(first), static_cast<int>(last - 1));
            lines.erase(lines.begin() + first, lines.begin() + last);
            endRemoveRows();
        }
        if (const auto last = std::ssize(next) - same; last > first) {
            beginInsertRows({}, static_cast<int>(first), static_cast<int>(last - 1));
            lines.insert(
                lines.begin() + first, std::move_iterator(next.begin() + first),
                std::move_iterator(next.begin() + last));
            endInsertRows();
        }
        tellAllChanged();
    }

    // Remembers whether what is ticked in a folder are folders or files.
    void learnKinds(const std::string& folder) {
        const auto contents = browser->children().find(folder);
        if (contents == browser->children().end()) return;
        std::unordered_map<std::string_view, const std::string*> ruled;
        for (const auto& [path, ticked] : chosen.rules) {
            if (path.empty() || parentOf(path) != folder) continue;
            ruled.emplace(std::string_view(path).substr(folder.empty() ? 0 : folder.size() + 1), &path);
        }
        if (ruled.empty()) return;
        for (const auto& entry : *contents->second) {
            if (const auto found = ruled.find(entry.name); found != ruled.end()) {
                kinds[*found->second] = entry.directory;
            }
        }
    }

    void tellAllChanged() {
        if (!lines.empty()) Q_EMIT dataChanged(index(0), index(rowCount() - 1));
    }

    RemoteBrowserModel* browser = nullptr;
    DownloadSelection chosen;
    std::map<std::string, bool, std::less<>> kinds; // by path: is it a folder? Of every line that was ticked.
    std::vector<Line> lines;
};

namespace {

constexpr int indent = 24;
constexpr int endMargin = 6; // room to the scroll bar
constexpr int badgeHeight = 20;
constexpr int badgePadding = 8;
constexpr int gap = 12;
constexpr int retryHeight = 26;
constexpr int retryPadding = 15;

// Where the parts of a line are, as though the reading direction were from left to right.
struct Places {
    QRect row;
    QRect chevron;
    QRect tick;
    QRect icon;
    QRect text; // up to the end of the row
    QRect retry;
};

// More than the design's where the desktop's text is large.
int rowHeight() { return std::max(32, QFontMetrics(fontOf(TextStyle::strong)).height() + 12); }

QFont badgeFont() {
    QFont font = fontOf(TextStyle::fieldLabel);
    font.setPointSizeF(8.25);
    return font;
}

QString retryLabel() { return RemoteDownloadPicker::tr("Retry"); }

QRect centred(const QRect& row, int left, int side) {
    return {left, row.top() + (row.height() - side) / 2, side, side};
}

QFont nameFont(const Line& line) {
    const bool folder = line.kind == Line::Kind::entry && line.entry->directory;
    return fontOf(folder ? TextStyle::strong : TextStyle::body);
}

int widthOf(const QFont& font, const QString& shown) { return QFontMetrics(font).horizontalAdvance(shown); }

Places placesOf(const QRect& whole, const Line& line, const QString& shown) {
    Places at;
    at.row = whole.adjusted(0, 0, -endMargin, 0);
    const int left = at.row.left() + line.depth * indent;
    at.chevron = centred(at.row, left + 6, 16);
    at.tick = centred(at.row, left + 30, 18);
    const bool entry = line.kind == Line::Kind::entry;
    at.icon = entry ? centred(at.row, left + 58, 18) : centred(at.row, left + 30, 16);
    const int textLeft = line.kind == Line::Kind::empty ? left + 30 : left + (entry ? 84 : 56);
    at.text = QRect(QPoint(textLeft, at.row.top()), QPoint(at.row.right() - gap, at.row.bottom()));
    if (line.kind == Line::Kind::error) {
        const int width = widthOf(fontOf(TextStyle::body), retryLabel()) + 2 * retryPadding;
        const int textWidth = std::min(widthOf(nameFont(line), shown) + 1, at.text.width() - gap - width);
        at.text.setWidth(std::max(textWidth, 0));
        at.retry = QRect(at.text.right() + gap, at.row.top() + (at.row.height() - retryHeight) / 2, width, retryHeight);
    }
    return at;
}

enum class Zone { none, chevron, tick, retry };

Zone zoneAt(const Places& at, const Line& line, const QPoint& point) {
    constexpr int slack = 6; // what is small is hit more easily than seen
    const auto near = [&point](const QRect& part) {
        return part.adjusted(-slack, -slack, slack, slack).contains(point);
    };
    if (line.kind == Line::Kind::error) return at.retry.contains(point) ? Zone::retry : Zone::none;
    if (line.kind != Line::Kind::entry) return Zone::none;
    if (near(at.tick)) return Zone::tick;
    return line.entry->directory && near(at.chevron) ? Zone::chevron : Zone::none;
}

std::string_view symbolOf(Mark mark) {
    switch (mark) {
    case Mark::all:
        return "checkmark.square.fill";
    case Mark::partial:
        return "minus.square.fill";
    case Mark::none:
        break;
    }
    return "square";
}

class LineDelegate : public QStyledItemDelegate {
public:
    LineDelegate(const ContentRows& shown, QObject* parent) : QStyledItemDelegate(parent), rows(shown) {}

    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const override {
        return {1, rowHeight()};
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        const Line& line = rows.line(index);
        const QString shown = rows.shownText(line);
        const Painting to{*painter, option, placesOf(option.rect, line, shown)};
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        paintGround(to);
        switch (line.kind) {
        case Line::Kind::entry:
            paintEntry(to, line, shown);
            break;
        case Line::Kind::loading:
            paintLoading(to, shown);
            break;
        case Line::Kind::error:
            paintError(to, shown);
            break;
        case Line::Kind::empty:
            paintText(to, to.at.text, shown, fontOf(TextStyle::body), colours().dim, Qt::ElideRight);
            break;
        }
        painter->restore();
    }

    [[nodiscard]] Zone zone(const QRect& whole, const QModelIndex& index, QPoint point, bool mirrored) const {
        const Line& line = rows.line(index);
        if (mirrored) point.setX(whole.left() + whole.right() - point.x());
        return zoneAt(placesOf(whole, line, rows.shownText(line)), line, point);
    }

private:
    struct Painting {
        QPainter& painter;
        const QStyleOptionViewItem& option;
        Places at;

        [[nodiscard]] QRect visual(const QRect& part) const {
            return QStyle::visualRect(option.direction, option.rect, part);
        }
    };

    static void paintGround(const Painting& to) {
        const QRectF row = to.visual(to.at.row);
        if (to.option.state.testFlag(QStyle::State_MouseOver)) {
            to.painter.setPen(Qt::NoPen);
            to.painter.setBrush(colours().hover);
            to.painter.drawRoundedRect(row, 8, 8);
        }
        if (to.option.state.testFlag(QStyle::State_HasFocus)) {
            to.painter.setPen(QPen(colours().accent, 2));
            to.painter.setBrush(Qt::NoBrush);
            to.painter.drawRoundedRect(row.adjusted(1, 1, -1, -1), 7, 7);
        }
    }

    static void paintText(
        const Painting& to, const QRect& where, const QString& shown, const QFont& font, const QColor& colour,
        Qt::TextElideMode elide) {
        to.painter.setFont(font);
        to.painter.setPen(colour);
        // A name reads in its own direction wherever it stands.
        to.painter.setLayoutDirection(shown.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
        const auto side = QStyle::visualAlignment(to.option.direction, Qt::AlignLeft | Qt::AlignVCenter);
        to.painter.drawText(
            to.visual(where), static_cast<int>(side | Qt::AlignAbsolute) | Qt::TextSingleLine,
            QFontMetrics(font).elidedText(shown, elide, where.width()));
    }

    void paintEntry(const Painting& to, const Line& line, const QString& name) const {
        const Colours& palette = colours();
        const bool excluded = rows.isExcluded(line);
        const bool folder = line.entry->directory;
        const Mark mark = rows.selection().mark(line.path);
        if (folder) {
            const auto* const chevron = rows.isOpen(line) ? "chevron.down" : "chevron.right";
            paintSymbol(to.painter, to.visual(to.at.chevron), chevron, palette.dim);
        }
        const bool pale = mark == Mark::none || excluded;
        paintSymbol(
            to.painter, to.visual(to.at.tick), symbolOf(mark), pale ? palette.edge : palette.accent, 0, palette.card);
        const QColor& ink = folder ? palette.accent : palette.dim;
        paintSymbol(to.painter, to.visual(to.at.icon), folder ? "folder" : "file", excluded ? palette.edge : ink);
        const QStringList badges = rows.badges(line);
        const QFont font = nameFont(line);
        QRect nameAt = to.at.text;
        nameAt.setWidth(std::max(0, std::min(widthOf(font, name) + 1, nameAt.width() - widthOfBadges(badges))));
        paintText(to, nameAt, name, font, excluded ? palette.dim : palette.text, Qt::ElideMiddle);
        paintBadges(to, badges, nameAt.right() + gap, line.entry->localOnly);
    }

    [[nodiscard]] static int widthOfBadge(const QString& badge) {
        return widthOf(badgeFont(), badge) + 2 * badgePadding;
    }

    [[nodiscard]] static int widthOfBadges(const QStringList& badges) {
        int width = 0;
        for (const QString& badge : badges) width += gap + widthOfBadge(badge);
        return width;
    }

    static void paintBadges(const Painting& to, const QStringList& badges, int left, bool firstIsLocal) {
        bool local = firstIsLocal;
        for (const QString& badge : badges) {
            const QRect pill(
                left, to.at.row.top() + (to.at.row.height() - badgeHeight) / 2, widthOfBadge(badge), badgeHeight);
            to.painter.setPen(Qt::NoPen);
            to.painter.setBrush(local ? colours().soft : colours().side);
            to.painter.drawRoundedRect(to.visual(pill), badgeHeight / 2.0, badgeHeight / 2.0);
            to.painter.setFont(badgeFont());
            to.painter.setPen(local ? colours().accentHover : colours().dim);
            to.painter.drawText(to.visual(pill), Qt::AlignCenter | Qt::TextSingleLine, badge);
            left += pill.width() + gap;
            local = false;
        }
    }

    static void paintLoading(const Painting& to, const QString& shown) {
        const QRect icon = to.visual(to.at.icon);
        paintSymbol(to.painter, icon, "arrow.triangle.2.circlepath", colours().accent, turningClock().angle());
        if (const auto* const view = qobject_cast<const QAbstractItemView*>(to.option.widget)) {
            turningClock().repaintSoon(*view->viewport(), icon.adjusted(-1, -1, 1, 1));
        }
        paintText(to, to.at.text, shown, fontOf(TextStyle::body), colours().dim, Qt::ElideRight);
    }

    static void paintError(const Painting& to, const QString& shown) {
        paintSymbol(to.painter, to.visual(to.at.icon), "exclamationmark.circle", colours().warn);
        paintText(to, to.at.text, shown, fontOf(TextStyle::body), colours().warnText, Qt::ElideRight);
        const QRect button = to.visual(to.at.retry);
        const bool hovered = to.option.state.testFlag(QStyle::State_MouseOver) && isUnderPointer(to, button);
        to.painter.setPen(colours().control);
        to.painter.setBrush(hovered ? colours().hover : colours().card);
        to.painter.drawRoundedRect(QRectF(button).adjusted(0.5, 0.5, -0.5, -0.5), 6, 6);
        to.painter.setFont(fontOf(TextStyle::body));
        to.painter.setPen(colours().text);
        to.painter.drawText(button, Qt::AlignCenter | Qt::TextSingleLine, retryLabel());
    }

    [[nodiscard]] static bool isUnderPointer(const Painting& to, const QRect& part) {
        const auto* const view = qobject_cast<const QAbstractItemView*>(to.option.widget);
        return view != nullptr && part.contains(view->viewport()->mapFromGlobal(QCursor::pos()));
    }

    const ContentRows& rows;
};

// The list with the pointer and the keys of a tree.
class LineView : public QListView {
public:
    LineView(ContentRows& shown, QWidget* parent) : QListView(parent), rows(shown) {
        setModel(&rows);
        delegate = new LineDelegate(rows, this);
        setItemDelegate(delegate);
        setUniformItemSizes(true);
        setSelectionMode(NoSelection);
        setEditTriggers(NoEditTriggers);
        setVerticalScrollMode(ScrollPerPixel);
        setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        verticalScrollBar()->setSingleStep(rowHeight());
        viewport()->setAttribute(Qt::WA_Hover);
        viewport()->setMouseTracking(true);
        setMouseTracking(true);
    }

protected:
    // The keyboard stays in its place when a message gives way to what it stood for: it goes on to the first line of
    // that, and to the folder when that closes.
    void rowsAboutToBeRemoved(const QModelIndex& parent, int first, int last) override {
        const int current = currentIndex().row();
        const bool goes = current >= first && current <= last;
        if (goes && first > 0) setCurrentIndex(rows.index(first - 1));
        QListView::rowsAboutToBeRemoved(parent, first, last);
        if (goes) placeToReturnTo = first;
    }
    void rowsInserted(const QModelIndex& parent, int first, int last) override {
        QListView::rowsInserted(parent, first, last);
        if (placeToReturnTo == first) setCurrentIndex(rows.index(first));
    }
    void dataChanged(const QModelIndex& first, const QModelIndex& last, const QList<int>& roles) override {
        QListView::dataChanged(first, last, roles);
        placeToReturnTo.reset(); // it comes after the last of an update
    }

    void mousePressEvent(QMouseEvent* event) override {
        QListView::mousePressEvent(event);
        press(*event);
    }
    void mouseDoubleClickEvent(QMouseEvent* event) override { press(*event); }

    void mouseReleaseEvent(QMouseEvent* event) override {
        QListView::mouseReleaseEvent(event);
        const QModelIndex index = indexAt(event->position().toPoint());
        // A line may have come between under the pointer since.
        const bool same = index.isValid() && index == pressed && zoneOf(*event, index) == pressedZone;
        pressed = QPersistentModelIndex();
        if (same && event->button() == Qt::LeftButton) act(index, pressedZone);
    }

    void mouseMoveEvent(QMouseEvent* event) override {
        QListView::mouseMoveEvent(event);
        viewport()->update(visualRect(indexAt(event->position().toPoint())));
    }

    void keyPressEvent(QKeyEvent* event) override {
        const QModelIndex index = currentIndex();
        if (index.isValid() && event->modifiers() == Qt::NoModifier && press(index, event->key())) {
            event->accept();
            return;
        }
        QListView::keyPressEvent(event);
    }

private:
    [[nodiscard]] Zone zoneOf(const QMouseEvent& event, const QModelIndex& index) const {
        return delegate->zone(visualRect(index), index, event.position().toPoint(), isRightToLeft());
    }

    void press(const QMouseEvent& event) {
        const QModelIndex index = indexAt(event.position().toPoint());
        pressed = index;
        pressedZone = index.isValid() ? zoneOf(event, index) : Zone::none;
    }

    void act(const QModelIndex& index, Zone zone) {
        switch (zone) {
        case Zone::chevron:
            rows.toggleFold(index);
            break;
        case Zone::tick:
            rows.toggleTick(index);
            break;
        case Zone::retry:
            rows.retry(index);
            break;
        case Zone::none:
            break;
        }
    }

    // Whether the key meant something.
    [[nodiscard]] bool press(const QModelIndex& index, int key) {
        const bool message = rows.line(index).kind != Line::Kind::entry;
        switch (key) {
        case Qt::Key_Space:
            rows.toggleTick(index);
            return true;
        case Qt::Key_Return:
        case Qt::Key_Enter:
            // On a message it never goes on to the button that confirms: a second Enter after "Retry" would.
            rows.retry(index);
            return message;
        case Qt::Key_Left:
        case Qt::Key_Right:
            if ((key == Qt::Key_Right) != isRightToLeft()) {
                unfold(index);
            } else {
                fold(index);
            }
            return true;
        default:
            return false;
        }
    }

    // Opens a folder; in an open one, goes on to what it holds.
    void unfold(const QModelIndex& index) {
        const Line& line = rows.line(index);
        if (line.kind != Line::Kind::entry || !line.entry->directory) return;
        if (!rows.isOpen(line)) {
            rows.toggleFold(index);
            return;
        }
        const QModelIndex next = rows.index(index.row() + 1);
        if (next.isValid() && rows.line(next).depth > line.depth) setCurrentIndex(next);
    }

    // Closes an open folder; from all else, goes back to the folder that it lies in.
    void fold(const QModelIndex& index) {
        if (rows.isOpen(rows.line(index))) {
            rows.toggleFold(index);
        } else if (const QModelIndex folder = rows.folderOf(index); folder.isValid()) {
            setCurrentIndex(folder);
        }
    }

    ContentRows& rows;
    LineDelegate* delegate = nullptr;
    QPersistentModelIndex pressed;
    Zone pressedZone = Zone::none;
    std::optional<int> placeToReturnTo;
};

constexpr int margin = 24;
constexpr QSize defaultSize(720, 600);
constexpr QSize smallestSize(560, 440);

// "1 file", "2 files".
QString counted(std::size_t count, const QString& one, const QString& many) {
    return count == 1 ? one : many.arg(count);
}

QString describeTicked(const DownloadSelection& selection, const std::optional<TickedKinds>& kinds) {
    const auto root = selection.rules.find("");
    if (root != selection.rules.end() && root->second) return RemoteDownloadPicker::tr("Everything selected");
    if (!kinds) {
        const auto ticked = std::ranges::count_if(selection.rules, [](const auto& rule) { return rule.second; });
        return counted(
            static_cast<std::size_t>(ticked), RemoteDownloadPicker::tr("1 item selected"),
            RemoteDownloadPicker::tr("%1 items selected"));
    }
    const QString folders =
        counted(kinds->folders, RemoteDownloadPicker::tr("1 folder"), RemoteDownloadPicker::tr("%1 folders"));
    const QString files =
        counted(kinds->files, RemoteDownloadPicker::tr("1 file"), RemoteDownloadPicker::tr("%1 files"));
    if (kinds->files == 0) return RemoteDownloadPicker::tr("%1 selected").arg(folders);
    if (kinds->folders == 0) return RemoteDownloadPicker::tr("%1 selected").arg(files);
    return RemoteDownloadPicker::tr("%1 and %2 selected").arg(folders, files);
}

} // namespace

QString selectionSummary(const DownloadSelection& selection, const std::optional<TickedKinds>& kinds) {
    if (!selection.hasSelection()) return RemoteDownloadPicker::tr("Nothing selected");
    const QString ticked = describeTicked(selection, kinds);
    const auto exceptions = std::ranges::count_if(selection.rules, [](const auto& rule) { return !rule.second; });
    if (exceptions == 0) return ticked;
    const QString left = counted(
        static_cast<std::size_t>(exceptions), RemoteDownloadPicker::tr("1 exception"),
        RemoteDownloadPicker::tr("%1 exceptions"));
    return RemoteDownloadPicker::tr("%1, %2").arg(ticked, left);
}

RemoteDownloadPicker::RemoteDownloadPicker(
    MainContext& mainContext, Profile toBrowse, std::string knownPassword, DownloadSelection chosen, bool forSync,
    Apply applySelection, QWidget* parent)
    : QDialog(parent), context(mainContext), profile(std::move(toBrowse)), password(std::move(knownPassword)),
      syncMode(forSync), apply(std::move(applySelection)), rows(new ContentRows(std::move(chosen), this)) {
    setWindowModality(Qt::WindowModal);
    auto* const body = new QVBoxLayout;
    body->setContentsMargins(margin, 20, margin, 16);
    body->setSpacing(gap);
    body->addLayout(makeHeader());
    body->addLayout(makeTools());
    body->addWidget(makeList(), 1);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(body, 1);
    layout->addWidget(makeFooter());
    const QSize room = screen()->availableGeometry().size();
    setMinimumSize(smallestSize.boundedTo(room));
    resize(defaultSize.boundedTo(room));
    connect(rows, &QAbstractItemModel::modelReset, this, &RemoteDownloadPicker::showSummary);
    connect(rows, &QAbstractItemModel::dataChanged, this, &RemoteDownloadPicker::showSummary);
    list->setFocus();
    refresh();
}

RemoteDownloadPicker::~RemoteDownloadPicker() { rows->leave(); }

const DownloadSelection& RemoteDownloadPicker::selection() const { return rows->selection(); }

QLayout* RemoteDownloadPicker::makeHeader() {
    auto* const texts = new QVBoxLayout;
    texts->setSpacing(4);
    const QString title = syncMode ? tr("Choose what to synchronise") : tr("Choose what to download");
    setWindowTitle(title);
    setAccessibleName(title);
    texts->addWidget(new WrapLabel(title, TextStyle::dialogTitle));
    const QStringList explanation =
        syncMode
            ? QStringList{tr("Tick folders to sync all their contents, or expand folders to tick individual files. "
                             "Unticked items stop syncing and keep their existing copies. Local-only items can be "
                             "included too.")}
            : QStringList{
                tr("Nothing is selected automatically. Tick files or whole folders, or choose Select all. Expand a "
                   "folder to pick individual items. This selection also sets what will be watched for uploads."),
                tr("Excluded items are dimmed. Existing files update only if the server copy is newer; replaced local "
                   "files are backed up.")};
    for (const QString& part : explanation) texts->addWidget(new WrapLabel(part, TextStyle::explanation, Tone::dim));
    setAccessibleDescription(explanation.join(u' '));
    auto* const header = new QHBoxLayout;
    header->setSpacing(16);
    header->addWidget(new Tile("checklist", TileKind::soft, 44), 0, Qt::AlignTop);
    header->addLayout(texts, 1);
    return header;
}

QLayout* RemoteDownloadPicker::makeTools() {
    auto* const all = new PushButton(tr("Select all"));
    connect(all, &QPushButton::clicked, this, [this] { rows->tickEverything(true); });
    auto* const none = new PushButton(tr("Select none"));
    connect(none, &QPushButton::clicked, this, [this] { rows->tickEverything(false); });
    auto* const again = new PushButton(tr("Refresh"));
    again->setSymbol("arrow.clockwise");
    connect(again, &QPushButton::clicked, this, &RemoteDownloadPicker::refresh);
    summary = makeLabel(QString(), TextStyle::body, Tone::dim);
    auto* const tools = new QHBoxLayout;
    tools->setSpacing(8);
    for (PushButton* const button : {all, none, again}) tools->addWidget(button);
    tools->addStretch(1);
    tools->addWidget(summary);
    return tools;
}

QWidget* RemoteDownloadPicker::makeList() {
    QFrame* const card = makeSurface(Surface::card);
    auto* const layout = new QVBoxLayout(card);
    // The scroll bar stands nearer to the edge than the rows do.
    const bool mirrored = isRightToLeft();
    layout->setContentsMargins(mirrored ? 1 : 7, 5, mirrored ? 7 : 1, 5);
    list = new LineView(*rows, card);
    list->setAccessibleName(tr("Files and folders"));
    layout->addWidget(list);
    return card;
}

QWidget* RemoteDownloadPicker::makeFooter() {
    QFrame* const footer = makeSurface(Surface::footer);
    auto* const layout = new QHBoxLayout(footer);
    layout->setContentsMargins(margin, gap, margin, gap);
    layout->setSpacing(8);
    auto* const cancel = new PushButton(tr("Cancel"));
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    auto* const confirm =
        new PushButton(syncMode ? tr("Use sync selection") : tr("Use selection"), ButtonKind::primary);
    confirm->setDefault(true);
    connect(confirm, &QPushButton::clicked, this, [this] {
        apply(selection());
        accept();
    });
    layout->addStretch(1);
    layout->addWidget(cancel);
    layout->addWidget(confirm);
    return footer;
}

void RemoteDownloadPicker::showSummary() { summary->setText(selectionSummary(selection(), rows->tickedKinds())); }

void RemoteDownloadPicker::refresh() {
    auto next = std::make_unique<RemoteBrowserModel>(context, profile, password, syncMode);
    rows->follow(*next);
    tree = std::move(next);
    tree->load("");
}

void RemoteDownloadPicker::done(int result) {
    tree->cancel();
    QDialog::done(result);
}

} // namespace zembrastel
