// The head of a profile's page, which stays while the page scrolls: the name and the main switch.
#pragma once

#include "ui/widgets/elide_label.h"
#include "ui/widgets/push_button.h"

namespace zembrastel::ui {

class DetailHeader : public QWidget {
    Q_OBJECT

public:
    explicit DetailHeader(QWidget* parent = nullptr);

    void setName(const QString& text);
    void setRunning(bool running);

    // "Pause watching" or "Start watching".
    [[nodiscard]] PushButton& mainSwitch() const { return *watching; }

private:
    ElideLabel* name;
    PushButton* watching;
};

} // namespace zembrastel::ui
