// A bin of 100,000 clips and 20 columns in a box, offscreen: first paint, scrolling to the end, one sort,
// one typed cell edit.
#include "binbox/bin_box.h"
#include "project/bin.h"
#include "project/shared_stuff.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QScrollBar>
#include <QTableView>
#include <benchmark/benchmark.h>

using namespace lumbra;

namespace {

constexpr int clipCount = 100000;
constexpr int columnCount = 20;

class QuietHost final : public shell::BoxHost {
public:
    bool panelInFront() const override { return false; }
    void toggleViewMode() override {}
    QWidget* boxesArea() override { return nullptr; }
    void showNotification(const base::NotificationData&) override {}
};

std::unique_ptr<tables::ALETable> bigTable() {
    auto table = std::make_unique<tables::ALETable>();
    table->tablename = "big";
    for (int c = 0; c < columnCount; ++c)
        table->cols.push_back(c == 0 ? "Name" : "Column " + std::to_string(c));
    table->data.reserve(clipCount);
    for (int r = 0; r < clipCount; ++r) {
        tables::RowData row;
        for (int c = 0; c < columnCount; ++c)
            row.set(table->cols[static_cast<std::size_t>(c)],
                    "value " + std::to_string((r * 7919 + c * 31) % 100003));
        table->appendEntry(std::make_shared<tables::ALEEntry>(std::move(row)));
    }
    return table;
}

// One project with the big bin open; the box is made anew for each first-paint round.
struct BigBin {
    BigBin() {
        sharedstuff.autosave = false;
        auto table = bigTable();
        auto layout = std::make_shared<tables::ColumnsLayout>("Big", table->cols);
        bin = std::make_shared<project::Bin>(std::move(table), &sharedstuff, layout, true);
        sharedstuff.addBin(bin);
        bin->setSelected(true);
    }
    QuietHost host;
    project::SharedStuff sharedstuff;
    std::shared_ptr<project::Bin> bin;
};

BigBin& bigBin() {
    static BigBin big;
    return big;
}

void BM_FirstPaint(benchmark::State& state) {
    BigBin& big = bigBin();
    for (auto _ : state) {
        shell::BinBox box(*big.bin, big.sharedstuff, big.host);
        box.resize(1200, 800);
        box.show();
        benchmark::DoNotOptimize(box.grab());
    }
}

void BM_ScrollToEnd(benchmark::State& state) {
    BigBin& big = bigBin();
    shell::BinBox box(*big.bin, big.sharedstuff, big.host);
    box.resize(1200, 800);
    box.show();
    QScrollBar* rows = box.mainTable()->verticalScrollBar();
    for (auto _ : state) {
        rows->setValue(rows->maximum());
        benchmark::DoNotOptimize(box.grab());
        state.PauseTiming();
        rows->setValue(0);
        state.ResumeTiming();
    }
}

void BM_SortByColumn(benchmark::State& state) {
    BigBin& big = bigBin();
    shell::BinBox box(*big.bin, big.sharedstuff, big.host);
    box.resize(1200, 800);
    box.show();
    for (auto _ : state) {
        box.orderByColumn("Column 7");
        benchmark::DoNotOptimize(box.grab());
    }
}

void typeKey(QWidget* editor, Qt::Key key, const QString& text) {
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, text);
    QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier, text);
    QApplication::sendEvent(editor, &press);
    QApplication::sendEvent(editor, &release);
}

// A person's edit: the editor opens on a visible cell and takes a typed digit (untimed), then Return stores
// the value, refits its column from the kept widths and the box repaints.
void BM_EditOneCell(benchmark::State& state) {
    BigBin& big = bigBin();
    shell::BinBox box(*big.bin, big.sharedstuff, big.host);
    box.resize(1200, 800);
    box.show();
    QApplication::processEvents();
    QTableView* view = box.mainTable();
    int round = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const QModelIndex cell = view->model()->index(10 + round % 10, 3);
        view->setCurrentIndex(cell);
        view->edit(cell);
        auto* editor = qobject_cast<QLineEdit*>(view->indexWidget(cell));
        editor->selectAll();
        const QString digit = QString::number(round++ % 10);
        typeKey(editor, Qt::Key(Qt::Key_0 + digit.toInt()), digit);
        QApplication::processEvents();
        state.ResumeTiming();
        typeKey(editor, Qt::Key_Return, QStringLiteral("\r"));
        QApplication::processEvents();
        state.PauseTiming();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        state.ResumeTiming();
    }
}

BENCHMARK(BM_FirstPaint)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_ScrollToEnd)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_SortByColumn)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_EditOneCell)->Unit(benchmark::kMillisecond)->Iterations(50);

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
