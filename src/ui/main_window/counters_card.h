// A profile's counters since the program began.
#pragma once

#include "app/profile_status.h"
#include "ui/widgets/elide_label.h"

#include <QFrame>
#include <QHBoxLayout>

namespace zembrastel::ui {

class CountersCard : public QFrame {
    Q_OBJECT

public:
    explicit CountersCard(QWidget* parent = nullptr);

    void setStatus(const ProfileStatus& status);

private:
    ElideLabel* addCounter(QHBoxLayout& row, const QString& caption, int share);

    ElideLabel* uploaded;
    ElideLabel* pending;
    ElideLabel* lastUpload;
};

} // namespace zembrastel::ui
