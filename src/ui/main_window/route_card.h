// From where to where a profile syncs, and what of it.
#pragma once

#include "model/fingerprint.h"
#include "model/profile.h"
#include "ui/widgets/elide_label.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/symbol_widgets.h"

#include <QFrame>
#include <QVBoxLayout>

#include <vector>

namespace zembrastel::ui {

class RouteCard : public QFrame {
    Q_OBJECT

public:
    explicit RouteCard(QWidget* parent = nullptr);

    // The files are those that were synchronised once: they tell what was chosen.
    void setProfile(const Profile& profile, const FileMap& synchronised);

    // Leaves the tiles out, so that the paths get their room.
    void setNarrow(bool narrow);

    // In the order of tabulation.
    [[nodiscard]] QList<QWidget*> buttons() const { return {openFolder, editContents}; }

Q_SIGNALS:
    void openFolderRequested();
    void editContentsRequested();

private:
    [[nodiscard]] QWidget* makeRoute();
    [[nodiscard]] QLayout* makeEnd(std::string_view symbol, QVBoxLayout* texts);
    [[nodiscard]] QVBoxLayout* makeLocal();
    [[nodiscard]] QVBoxLayout* makeRemote();
    [[nodiscard]] QWidget* makeContents();

    ElideLabel* localPath;
    ElideLabel* remotePath;
    ElideLabel* host;
    QLabel* port;
    QLabel* contents;
    PushButton* openFolder;
    PushButton* editContents;
    SymbolView* contentsSymbol;
    std::vector<QWidget*> tiles;
};

} // namespace zembrastel::ui
