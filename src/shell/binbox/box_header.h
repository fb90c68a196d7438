#pragma once

#include <QHeaderView>
#include <QPointer>
#include <vector>

class QLabel;

namespace lumbra::shell {

// The header of a box's table. A click orders by the column; shift and control clicks select
// columns; a press within 6 points of a column's edge resizes it, a double click there fits it;
// dragging from a column moves the selected columns as a block. It decides nothing about the bin:
// it reports gestures, the box applies them.
class BoxHeader final : public QHeaderView {
    Q_OBJECT

public:
    explicit BoxHeader(QWidget* parent = nullptr);

    [[nodiscard]] const std::vector<int>& selectedColumns() const noexcept { return m_selected; }
    void setSelectedColumns(std::vector<int> columns);

    // Points each side of an edge that still count as the edge.
    static constexpr int edgeMargin = 6;

signals:
    void pressed();
    void columnsSelected(const std::vector<int>& columns);
    void orderRequested(int column);
    void fitRequested(int column);
    void widthChosen(int column);
    void blockMoveRequested(const std::vector<int>& selected, int from, int to);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    // The column whose right edge is within the margin of x, or -1.
    [[nodiscard]] int edgeColumnAt(int x) const;
    void press(QMouseEvent* event, bool doubleClick);
    void showMoveLabel(const QPoint& at);

    std::vector<int> m_selected;
    int m_leftClicked = -1;
    bool m_resizing = false;
    int m_resizingLastX = 0;
    bool m_ignoreMouseUp = false;
    bool m_dragged = false;
    QPointer<QLabel> m_moveLabel;
};

} // namespace lumbra::shell
