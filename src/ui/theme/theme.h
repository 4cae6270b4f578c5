// The look of the whole program: colours, font, style sheet, animation.
//
// Main thread, after the QApplication, which owns it. Widgets read colours() each time they paint, so the repaint that
// a change triggers is enough; changed() is for code that keeps a picture.
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

    // Affects every widget before it returns. The first call also sets the style and the font of the program.
    void apply(Appearance chosen);

    // Light until apply() is called.
    [[nodiscard]] Appearance appearance() const { return applied.value_or(Appearance::light); }
    [[nodiscard]] const Colours& colours() const;

    // Uses the appearance's colours of high contrast. Off until it is called.
    void setHighContrast(bool wanted);
    [[nodiscard]] bool highContrast() const { return contrast; }

    // If false, turning icons stand still and switches move at once.
    void setAnimated(bool wanted);
    [[nodiscard]] bool animated() const { return animationsOn; }

Q_SIGNALS:
    void changed();

private:
    void restyle();

    std::optional<Appearance> applied;
    bool contrast = false;
    bool animationsOn = true;
};

// The theme of the running application.
[[nodiscard]] Theme& theme();

[[nodiscard]] inline const Colours& colours() { return theme().colours(); }

} // namespace zembrastel::ui
