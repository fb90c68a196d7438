#include "binbox/box_header.h"

#include <QLabel>
#include <QMouseEvent>
#include <algorithm>

namespace lumbra::shell {

BoxHeader::BoxHeader(QWidget* parent) : QHeaderView(Qt::Horizontal, parent) {
    setSectionsClickable(false);
    setSectionsMovable(false);
    setHighlightSections(true);
    setMouseTracking(true);
    setSectionResizeMode(QHeaderView::Interactive);
    setMinimumSectionSize(16);
}

void BoxHeader::setSelectedColumns(std::vector<int> columns) {
    std::sort(columns.begin(), columns.end());
    columns.erase(std::unique(columns.begin(), columns.end()), columns.end());
    m_selected = std::move(columns);
}

int BoxHeader::edgeColumnAt(int x) const {
    const int clicked = logicalIndexAt(x);
    const int before = logicalIndexAt(x - edgeMargin);
    if (before >= 0 && before != clicked)
        return before;
    if (clicked >= 0 && logicalIndexAt(x + edgeMargin) != clicked)
        return clicked;
    return -1;
}

void BoxHeader::mousePressEvent(QMouseEvent* event) {
    press(event, false);
}

void BoxHeader::mouseDoubleClickEvent(QMouseEvent* event) {
    press(event, true);
}

void BoxHeader::press(QMouseEvent* event, bool doubleClick) {
    emit pressed();
    m_resizing = false;
    m_dragged = false;
    // Only the release that ends a fitting press is swallowed; a new press starts afresh.
    m_ignoreMouseUp = false;
    const int x = event->position().toPoint().x();
    const int clicked = logicalIndexAt(x);
    m_leftClicked = clicked;
    if (clicked < 0 || event->button() != Qt::LeftButton)
        return;
    const Qt::KeyboardModifiers mods = event->modifiers();
    if (mods & Qt::ShiftModifier) {
        const int from = m_selected.empty() ? 0 : m_selected.front();
        std::vector<int> grown = m_selected.empty() ? std::vector<int>{0} : m_selected;
        for (int c = std::min(from, clicked); c <= std::max(from, clicked); ++c)
            grown.push_back(c);
        setSelectedColumns(std::move(grown));
    } else if (mods & Qt::ControlModifier) {
        auto at = std::find(m_selected.begin(), m_selected.end(), clicked);
        if (at != m_selected.end())
            m_selected.erase(at);
        else
            setSelectedColumns([&] {
                auto s = m_selected;
                s.push_back(clicked);
                return s;
            }());
    } else if (const int edge = edgeColumnAt(x); edge >= 0) {
        if (doubleClick) {
            emit fitRequested(edge);
            m_ignoreMouseUp = true;
            return;
        }
        m_leftClicked = edge;
        m_resizing = true;
        m_resizingLastX = x;
        return;
    } else if (std::find(m_selected.begin(), m_selected.end(), clicked) == m_selected.end()) {
        m_selected = {clicked};
    }
    emit columnsSelected(m_selected);
}

void BoxHeader::mouseMoveEvent(QMouseEvent* event) {
    const int x = event->position().toPoint().x();
    if (!(event->buttons() & Qt::LeftButton)) {
        setCursor(edgeColumnAt(x) >= 0 ? Qt::SplitHCursor : Qt::ArrowCursor);
        return;
    }
    if (m_resizing) {
        resizeSection(m_leftClicked,
                      std::max(minimumSectionSize(), sectionSize(m_leftClicked) + x - m_resizingLastX));
        m_resizingLastX = x;
        return;
    }
    const int over = logicalIndexAt(x);
    if (over >= 0 && m_leftClicked >= 0 && over != m_leftClicked) {
        m_dragged = true;
        showMoveLabel(event->position().toPoint());
    }
}

void BoxHeader::mouseReleaseEvent(QMouseEvent* event) {
    if (m_moveLabel)
        m_moveLabel->hide();
    if (m_ignoreMouseUp) {
        m_ignoreMouseUp = false;
        return;
    }
    if (m_resizing) {
        m_resizing = false;
        emit widthChosen(m_leftClicked);
        return;
    }
    const int over = logicalIndexAt(event->position().toPoint().x());
    const bool modified = event->modifiers() & (Qt::ShiftModifier | Qt::ControlModifier);
    if (event->button() != Qt::LeftButton || m_leftClicked < 0 || over < 0 || modified)
        return;
    if (over == m_leftClicked && !m_dragged)
        emit orderRequested(over);
    else if (over != m_leftClicked)
        emit blockMoveRequested(m_selected, m_leftClicked, over);
}

void BoxHeader::showMoveLabel(const QPoint& at) {
    QWidget* host = parentWidget() ? parentWidget() : this;
    if (!m_moveLabel) {
        m_moveLabel = new QLabel(tr("Move\nColumn"), host);
        m_moveLabel->setAlignment(Qt::AlignCenter);
        m_moveLabel->setFrameShape(QFrame::StyledPanel);
        m_moveLabel->setAutoFillBackground(true);
        m_moveLabel->setAttribute(Qt::WA_TransparentForMouseEvents);
    }
    m_moveLabel->adjustSize();
    m_moveLabel->move(mapTo(host, at) + QPoint(8, 8));
    m_moveLabel->show();
    m_moveLabel->raise();
}

} // namespace lumbra::shell
