// The card with the two ends of a profile's route, local folder and server, and its sync contents.
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

    // `synchronised` are the files that were synchronised before; they show which selected paths are folders.
    void setProfile(const Profile& profile, const FileMap& synchronised);

    // Hides the tiles, to give the paths their room.
    void setNarrow(bool narrow);

    // In tab order.
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
