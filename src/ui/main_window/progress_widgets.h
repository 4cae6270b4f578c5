// The progress of a transfer: a text on one line, and a thin bar for the file in transfer.
#pragma once

#include "sync/transfer_progress.h"

#include <QLabel>
#include <QProgressBar>

#include <optional>

namespace zembrastel::ui {

// The text of a transfer in progress: long where there is room, else short.
class ProgressLabel : public QLabel {
    Q_OBJECT

public:
    explicit ProgressLabel(QWidget* parent = nullptr);

    // Empty without progress.
    void setProgress(const std::optional<TransferProgress>& progress);

    // The text as shown at the current width.
    [[nodiscard]] QString visibleText() const;

    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString shortText;
};

// The bar of the file in transfer. It takes its room whether it is visible or not.
class ProgressStrip : public QProgressBar {
    Q_OBJECT

public:
    // `height` is that of the gap that the bar replaces.
    explicit ProgressStrip(int height, QWidget* parent = nullptr);

    // Hidden while the total is unknown.
    void setProgress(const std::optional<TransferProgress>& progress);

    [[nodiscard]] QSize sizeHint() const override { return {0, height()}; }
    [[nodiscard]] QSize minimumSizeHint() const override { return {0, height()}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    double fraction = 0;
};

} // namespace zembrastel::ui
