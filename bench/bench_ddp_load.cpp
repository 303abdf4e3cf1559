// Loading a full disc from memory: 99 tracks, each with a pause, an ISRC,
// user text and all seven CD-Text strings. Covers the reader, CD-Text
// decoding, the ISRC pass and the rows into the item model; the files come
// from memory so the figure is the parsing alone (about 20 KB).
#include "ddp/CdTextReader.h"
#include "ddp/DDPModel.h"
#include "ddp/DdpFileSource.h"
#include "ddp/DdpImageReader.h"
#include "ddp/DdpLoader.h"
#include "ddp/TrackTable.h"
#include "tools/mkddp/Mkddp.h"

#include <QStandardItemModel>

#include <benchmark/benchmark.h>

#include <cstdlib>

namespace {

mkddp::DiscSpec fullDisc()
{
    mkddp::DiscSpec spec = mkddp::simpleDisc(99, 40);
    spec.cdText = true;
    spec.genre = 20;
    spec.album = {QStringLiteral("A Full Disc With Ninety-Nine Tracks"),
                  QStringLiteral("The Benchmark Orchestra"),
                  QStringLiteral("Various Songwriters"),
                  QStringLiteral("Various Composers"),
                  QStringLiteral("Various Arrangers"),
                  QStringLiteral("Mastered for replication"),
                  QStringLiteral("4006381333931")};
    for (int i = 0; i < spec.tracks.size(); ++i) {
        mkddp::TrackSpec& t = spec.tracks[i];
        const QString n = QString::number(i + 1);
        t.pauseFrames = i == 0 ? mkddp::cdFrames(2) : mkddp::cdFrames(1);
        t.isrc = "DEA62600" + QByteArray::number(1000 + i).right(4);
        t.userText = "Take " + QByteArray::number(i + 1);
        t.text = {QStringLiteral("Track title number ") + n,
                  QStringLiteral("Performer of track ") + n,
                  QStringLiteral("Songwriter ") + n,
                  QStringLiteral("Composer ") + n,
                  QStringLiteral("Arranger ") + n,
                  QStringLiteral("A message for track ") + n,
                  QString::fromLatin1(t.isrc)};
    }
    return spec;
}

MemoryFileSource fullDiscSource()
{
    const mkddp::DiscSpec spec = fullDisc();
    MemoryFileSource source;
    for (const auto& [name, bytes] : mkddp::buildFiles(spec))
        source.setFile(name.toStdString(), bytes.toStdString());
    source.setFile(mkddp::imageFileName(spec).toStdString(), std::string());
    return source;
}

void BM_LoadFullDisc(benchmark::State& state)
{
    const MemoryFileSource source = fullDiscSource();
    QStandardItemModel table; // reused from load to load, as the window's is
    for (auto _ : state) {
        DDPModel model;
        const LoadResult result = loadDdp(source, &table, model);
        if (result.kind != ErrorKind::NoError || table.rowCount() < 198) {
            state.SkipWithError("the disc did not load");
            break;
        }
        benchmark::DoNotOptimize(model.entries().data());
    }
    state.counters["rows"] = table.rowCount();
}
BENCHMARK(BM_LoadFullDisc)
    ->Unit(benchmark::kMicrosecond)
    ->Repetitions(10)
    ->ReportAggregatesOnly(true);

// The same work without the item model, to see what the rows cost.
void BM_ParseFullDisc(benchmark::State& state)
{
    const MemoryFileSource source = fullDiscSource();
    for (auto _ : state) {
        DdpImageReader reader;
        reader.read(source);
        const auto cdText = CdTextReader::read(source, reader.cdTextFileName());
        std::vector<PqEntry> entries = reader.pqEntries();
        correctIsrcs(entries);
        const TrackTableRows rows = buildTrackTableRows(entries, cdText ? &*cdText : nullptr);
        benchmark::DoNotOptimize(rows.rows.data());
    }
}
BENCHMARK(BM_ParseFullDisc)
    ->Unit(benchmark::kMicrosecond)
    ->Repetitions(10)
    ->ReportAggregatesOnly(true);

} // namespace

BENCHMARK_MAIN();
