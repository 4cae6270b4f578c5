// What a transfer in progress says of itself, on one line: in full where there is room, in short where there is less.
#pragma once

#include "sync/transfer_progress.h"

#include <QLabel>

#include <optional>

namespace zembrastel::ui {

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

} // namespace zembrastel::ui
