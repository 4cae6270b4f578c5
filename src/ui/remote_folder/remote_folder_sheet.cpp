#include "ui/remote_folder/remote_folder_sheet.h"

#include "ui/remote_folder/folder_view.h"
#include "ui/theme/qt_text.h"
#include "ui/theme/text_style.h"
#include "ui/widgets/elide_label.h"
#include "ui/widgets/layouts.h"
#include "ui/widgets/push_button.h"

#include <QHBoxLayout>
#include <QScreen>

#include <utility>

namespace zembrastel::ui {
namespace {

constexpr QSize defaultSize(640, 600);
constexpr QSize smallestSize(560, 440);
constexpr int listInset = 5;

} // namespace

RemoteFolderSheet::RemoteFolderSheet(
    MainContext& mainContext, Profile draft, std::string password, Apply applyFolder, QWidget* parent)
    : QDialog(parent), apply(std::move(applyFolder)),
      folders(mainContext, draft, std::move(password), [this] { followFolders(); }),
      rows(new FolderTreeModel(folders, this)), list(new FolderView(*rows)), path(new ElideLabel) {
    setWindowModality(Qt::WindowModal);
    list->setAccessibleName(tr("Folders on the server"));
    QLayout* const head = makeSheetHead(
        *this, "server", tr("Choose the remote folder"),
        {tr("Zembrastel uploads to the folder that you choose on %1.").arg(onOneLine(toQString(draft.host)))});
    layOutSheet(*this, head, makeTools(), makeListCard(list, listInset), makeFoot());
    connect(list->selectionModel(), &QItemSelectionModel::currentChanged, this, &RemoteFolderSheet::showSelection);
    connect(list, &FolderView::movedByUser, this, [this] { folders.settleTarget(); });
    connect(list, &FolderView::chosen, this, &RemoteFolderSheet::confirm);
    connect(list, &FolderView::namingDropped, this, &RemoteFolderSheet::endNaming);
    connect(list, &FolderView::named, this, [this](const QString& name) {
        const auto where = rows->editedParent();
        endNaming();
        if (where) folders.create(*where, name.toStdString());
    });
    const QSize room = screen()->availableGeometry().size();
    setMinimumSize(scaledToText(smallestSize).boundedTo(room));
    resize(scaledToText(defaultSize).boundedTo(room));
    list->setFocus();
    folders.connect();
}

RemoteFolderSheet::~RemoteFolderSheet() {
    delete list; // before the folders that its rows show
}

QLayout* RemoteFolderSheet::makeTools() {
    create = new PushButton(tr("New folder…"));
    create->setSymbol("folder.badge.plus");
    connect(create, &QPushButton::clicked, this, &RemoteFolderSheet::nameNewFolder);
    auto* const again = new PushButton(tr("Refresh"));
    again->setSymbol("arrow.clockwise");
    connect(again, &QPushButton::clicked, this, [this] {
        rows->endEditing();
        folders.connect(selectedFolder());
        list->setFocus();
    });
    path->setFont(fontOf(TextStyle::strong));
    path->setAlignment(Qt::AlignTrailing | Qt::AlignVCenter);
    auto* const tools = makeLayout<QHBoxLayout>(8);
    tools->addWidget(create);
    tools->addWidget(again);
    tools->addWidget(path, 1);
    return tools;
}

QWidget* RemoteFolderSheet::makeFoot() {
    auto* const cancel = new PushButton(tr("Cancel"));
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    use = new PushButton(tr("Use this folder"), ButtonKind::primary);
    connect(use, &QPushButton::clicked, this, &RemoteFolderSheet::confirm);
    return makeSheetFoot({cancel, use});
}

std::optional<std::string> RemoteFolderSheet::selectedFolder() const {
    const QModelIndex row = list->currentIndex();
    if (!folders.loginFolder() || !row.isValid()) return std::nullopt;
    return rows->line(row).path;
}

void RemoteFolderSheet::followFolders() {
    if (folders.certificateRefused()) {
        Q_EMIT certificateRefused();
        reject();
        return;
    }
    rows->update();
    if (const auto target = folders.target()) list->setCurrentIndex(rows->rowOf(*target));
    if (!list->currentIndex().isValid()) list->setCurrentIndex(rows->index(0));
    showSelection();
}

void RemoteFolderSheet::showSelection() {
    const auto folder = selectedFolder();
    path->setWholeText(folder ? u'/' + toQString(*folder) : QString());
    create->setEnabled(folder.has_value());
    use->setEnabled(folder && rows->isFolder(list->currentIndex()));
}

void RemoteFolderSheet::nameNewFolder() {
    const auto parent = selectedFolder();
    if (!parent) return;
    folders.settleTarget();
    folders.forgetCreation();
    rows->edit(*parent);
    list->openField();
}

void RemoteFolderSheet::endNaming() {
    if (const auto parent = rows->editedParent()) list->setCurrentIndex(rows->rowOf(*parent));
    rows->endEditing();
    list->setFocus();
}

void RemoteFolderSheet::confirm() {
    const auto folder = selectedFolder();
    if (!folder || !use->isEnabled()) return;
    apply('/' + *folder);
    accept();
}

} // namespace zembrastel::ui
