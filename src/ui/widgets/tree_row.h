// The places of the parts of a tree's row, and the look of its messages, so that all trees look alike.
//
// Main thread. All places are given for a left-to-right layout.
#pragma once

#include "ui/widgets/row_painter.h"

namespace zembrastel::ui {

class TreeRow {
public:
    enum class Message {
        loading, // with turning arrows
        failure, // with a "Retry" button
        note,    // only text
    };

    static constexpr int gap = 12;          // between the parts of a row
    static constexpr int afterChevron = 30; // from the left edge of a row of depth 0

    // Higher than in the design if the desktop's text is large.
    [[nodiscard]] static int height();

    // `whole` is the row's place in the list.
    TreeRow(const QRect& whole, int depth);

    [[nodiscard]] const QRect& plate() const { return row; }
    [[nodiscard]] QRect chevron() const;
    // A square symbol, from the left edge of a row of depth 0.
    [[nodiscard]] QRect symbol(int from, int side) const;
    // From there to the end of the row.
    [[nodiscard]] QRect textFrom(int from) const;

    // Small parts react slightly beyond their edges.
    [[nodiscard]] static bool isNear(const QRect& part, const QPoint& point) {
        constexpr int slack = 6;
        return part.adjusted(-slack, -slack, slack, slack).contains(point);
    }

    [[nodiscard]] QRect retryButton(const QString& text) const;
    void paintMessage(RowPainter& painter, Message kind, const QString& text) const;

private:
    [[nodiscard]] QRect failureText(const QString& text) const;

    QRect row;
    int left;
};

} // namespace zembrastel::ui
