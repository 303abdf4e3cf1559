// The window's load of the largest disc the loader accepts, 99 tracks of 99
// indexes each (about 9 900 table rows): the whole load as the user waits
// for it, and the track table's share of it (header, row buttons).
#include "app/MainWindow.h"
#include "ddp/DDPModel.h"
#include "ddp/DdpLoader.h"
#include "tools/mkddp/Mkddp.h"
#include "widgets/TableViewWidget.h"

#include <QApplication>
#include <QSettings>
#include <QStandardItemModel>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace {

// 99 tracks of 2 s, each with indexes 02 to 99 one CD frame apart.
mkddp::DiscSpec indexHeavyDisc()
{
    mkddp::DiscSpec spec = mkddp::simpleDisc(99, 2);
    spec.content = mkddp::AudioContent::Silence;
    for (mkddp::TrackSpec& track : spec.tracks) {
        track.indexOffsets.clear();
        for (int offset = 1; offset <= 98; ++offset)
            track.indexOffsets.append(offset);
    }
    return spec;
}

struct Disc
{
    QTemporaryDir dir;
    QString path = dir.filePath(QStringLiteral("disc"));
    Disc() { mkddp::writeDisc(indexHeavyDisc(), path); }
};

const Disc& disc()
{
    static const Disc d;
    return d;
}

} // namespace

static void BM_WindowLoadLargestDisc(benchmark::State& state)
{
    MainWindow window;
    window.show();
    QApplication::processEvents();
    int rows = 0;
    for (auto _ : state) {
        window.load(QDir(disc().path));
        QApplication::processEvents(); // the table lays out and paints
        rows = window.itemModel()->rowCount();
    }
    state.counters["rows"] = rows;
    state.counters["time_per_row"] = benchmark::Counter(
        double(rows), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_WindowLoadLargestDisc)->Unit(benchmark::kMillisecond)->Iterations(3);

// Only the table's part: header, column set-up and the row buttons.
static void BM_TableInstallLargestDisc(benchmark::State& state)
{
    QStandardItemModel table;
    auto model = std::make_shared<DDPModel>();
    loadDdp(disc().path, &table, *model);
    TableViewWidget widget;
    widget.resize(466, 420);
    widget.show();
    for (auto _ : state)
        widget.installModel(&table, model);
    state.counters["rows"] = table.rowCount();
    state.counters["time_per_row"] =
        benchmark::Counter(double(table.rowCount()), benchmark::Counter::kIsIterationInvariantRate |
                                                         benchmark::Counter::kInvert);
}
BENCHMARK(BM_TableInstallLargestDisc)->Unit(benchmark::kMillisecond)->Iterations(3);

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QStandardPaths::setTestModeEnabled(true);
    QSettings::setDefaultFormat(QSettings::IniFormat);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
