// What a profile is doing: its status symbol, title and detail, as the model words them, and how far it has come.
#pragma once

#include "ui/main_window/status_symbol.h"
#include "ui/widgets/progress_label.h"
#include "ui/widgets/wrap_label.h"

namespace zembrastel::ui {

class StatusLine : public QWidget {
    Q_OBJECT

public:
    explicit StatusLine(QWidget* parent = nullptr);

    void setStatus(const ProfileStatus& status, bool running);

private:
    StatusSymbol* symbol;
    QLabel* title;
    ProgressLabel* progress;
    WrapLabel* detail;
};

} // namespace zembrastel::ui
