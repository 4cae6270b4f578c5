// The scrolled page of the profile editor: connection and contents, in two columns of equal width, or in one where the
// editor is narrow.
#pragma once

#include "ui/profile_editor/connection_fields.h"
#include "ui/profile_editor/content_fields.h"

#include <QBoxLayout>
#include <QScrollArea>

namespace zembrastel::ui {

class EditorPage : public QScrollArea {
    Q_OBJECT

public:
    // The margin that header, page and footer of the editor share.
    static constexpr int margin = 24;

    EditorPage(const Profile& shown, bool isNew, QWidget* parent = nullptr);

    [[nodiscard]] ConnectionFields& connection() const { return *left; }
    [[nodiscard]] ContentFields& contents() const { return *right; }

    // Arranges the columns for an editor of this width.
    void fitWidth(int width);

    // Gives this field, and no other, the border of a wrong value. Focuses the field and scrolls to it.
    void mark(EditorField bad);

private:
    void fitMargins();

    ConnectionFields* left;
    ContentFields* right;
    QBoxLayout* columns;
};

} // namespace zembrastel::ui
