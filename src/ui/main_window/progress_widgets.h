// A thin bar for the file in transfer, which lies in the gap below the status and takes its room whether it shows or
// not.
#pragma once

#include "sync/transfer_progress.h"

#include <QProgressBar>

#include <optional>

namespace zembrastel::ui {

class ProgressStrip : public QProgressBar {
    Q_OBJECT

public:
    // As high as the gap that it takes the place of.
    explicit ProgressStrip(int height, QWidget* parent = nullptr);

    // Hidden where there is no telling how much is still to come.
    void setProgress(const std::optional<TransferProgress>& progress);

    [[nodiscard]] QSize sizeHint() const override { return {0, height()}; }
    [[nodiscard]] QSize minimumSizeHint() const override { return {0, height()}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    double fraction = 0;
};

} // namespace zembrastel::ui
