// What the whole program looks like: colours, font, style sheet, motion.
//
// Main thread, after the QApplication, which owns it. Widgets that paint read colours() each time they do, so that
// they need no more than the repaint that a change causes by itself; changed() is for what keeps a picture.
#pragma once

#include "ui/theme/colours.h"

#include <QObject>

#include <optional>

namespace zembrastel::ui {

enum class Appearance { light, dark };

class Theme : public QObject {
    Q_OBJECT

public:
    explicit Theme(QObject* parent);

    // Takes effect on every widget before it returns. The first call also sets the style and the font of the program.
    void apply(Appearance chosen);

    // Light as long as nothing was applied.
    [[nodiscard]] Appearance appearance() const { return applied.value_or(Appearance::light); }
    [[nodiscard]] const Colours& colours() const;

    // Whether things may move. Without it turning icons stand still.
    void setAnimated(bool wanted);
    [[nodiscard]] bool animated() const { return moves; }

Q_SIGNALS:
    void changed();

private:
    std::optional<Appearance> applied;
    bool moves = true;
};

// The theme of the running application.
[[nodiscard]] Theme& theme();

[[nodiscard]] inline const Colours& colours() { return theme().colours(); }

} // namespace zembrastel::ui
