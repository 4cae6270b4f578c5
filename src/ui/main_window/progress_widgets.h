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

    // What is seen of it at the present width.
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
