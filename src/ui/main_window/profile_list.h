// The list of profiles in the sidebar: model, delegate and view.
//
// Main thread. The view follows and sets the model's selection. It reports what the user asks for on a row by signals:
// Enter and the menu edit, Delete and the menu remove.
#pragma once

#include "ui/bridge/model_bridge.h"

#include <QAbstractListModel>
#include <QListView>
#include <QStyledItemDelegate>

#include <vector>

namespace zembrastel::ui {

// The second line of a profile's row; `missing` files are known to be missing on the server.
[[nodiscard]] QString profileSummary(const ProfileStatus& status, std::size_t missing);

class ProfileListModel : public QAbstractListModel {
    Q_OBJECT

public:
    explicit ProfileListModel(ModelBridge& modelBridge, QObject* parent = nullptr);

    [[nodiscard]] const Uuid& idAt(const QModelIndex& index) const;
    [[nodiscard]] QModelIndex indexOf(const Uuid& id) const; // invalid if the list has no such profile

    [[nodiscard]] const ProfileStatus& statusAt(const QModelIndex& index) const;
    [[nodiscard]] bool runningAt(const QModelIndex& index) const;

    // The title of the status; for an up-to-date profile, the number of files that are missing on its server.
    [[nodiscard]] QString summaryAt(const QModelIndex& index) const;

    // Shows only the profiles with this text in their names, ignoring case; all without a text.
    void setFilter(const QString& text);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;

private:
    [[nodiscard]] std::vector<Uuid> wantedRows() const;
    void updateRows();

    ModelBridge& bridge;
    QString filter;
    std::vector<Uuid> rows;
};

class RowPainter;

// Paints the status symbol, the name, the status title, and the "more" button of a row that is selected or under the
// pointer.
class ProfileListDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    ProfileListDelegate(const ProfileListModel& rowModel, QObject* parent);

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

Q_SIGNALS:
    void moreRequested(const QModelIndex& index, const QPoint& globalPosition);

protected:
    // The "more" button has a tool tip of its own.
    bool helpEvent(
        QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
        const QModelIndex& index) override;
    bool editorEvent(
        QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
        const QModelIndex& index) override;

private:
    void paintTexts(RowPainter& painter, const QRect& row, const QModelIndex& index) const;

    const ProfileListModel& rows;
};

class ProfileListView : public QListView {
    Q_OBJECT

public:
    explicit ProfileListView(ModelBridge& modelBridge, QWidget* parent = nullptr);

    void setFilter(const QString& text) { rows->setFilter(text); }
    [[nodiscard]] bool isEmpty() const { return rows->rowCount() == 0; }

Q_SIGNALS:
    void editRequested(const zembrastel::Uuid& id);
    void sendAllRequested(const zembrastel::Uuid& id);
    void removeRequested(const zembrastel::Uuid& id);

protected:
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    void showSelection();
    void showMenu(const QModelIndex& index, const QPoint& globalPosition);

    ModelBridge& bridge;
    ProfileListModel* rows;
};

} // namespace zembrastel::ui
