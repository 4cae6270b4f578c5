// The page of the main window while there are no profiles.
#pragma once

#include "ui/widgets/push_button.h"

namespace zembrastel::ui {

class WelcomePage : public QWidget {
    Q_OBJECT

public:
    explicit WelcomePage(QWidget* parent = nullptr);

    [[nodiscard]] PushButton& createButton() const { return *create; }
    [[nodiscard]] PushButton& importButton() const { return *import; }

private:
    PushButton* create;
    PushButton* import;
};

} // namespace zembrastel::ui
