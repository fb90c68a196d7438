#pragma once

#include <QHeaderView>
#include <QTableView>

namespace lumbra::shell {

// Every table of clips or values has the same fixed row height: a line of its font and a small margin.
inline void setClipRowHeight(QTableView& view) {
    view.verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    view.verticalHeader()->setDefaultSectionSize(view.fontMetrics().height() + 8);
}

} // namespace lumbra::shell
