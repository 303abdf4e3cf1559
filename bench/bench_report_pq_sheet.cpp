// The PQ sheet of a 99-track disc with CD-Text and loudness, in each of its
// four forms: the PDF must take under 300 ms, the others under 20 ms.
#include "ddp/DDPModel.h"
#include "ddp/DdpLoader.h"
#include "report/PqSheet.h"
#include "report/PqSheetRender.h"
#include "tools/mkddp/Mkddp.h"

#include <QBuffer>
#include <QGuiApplication>
#include <QStandardItemModel>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace {

struct Disc
{
    QTemporaryDir dir;
    DDPModel model;
    DiscLoudness loudness;
    PqSheet sheet;

    Disc()
    {
        mkddp::DiscSpec spec = mkddp::simpleDisc(99, 150);
        spec.cdText = true;
        spec.album.title = QStringLiteral("Harbour Sessions");
        spec.album.performer = QStringLiteral("Mara Lindqvist");
        for (int i = 0; i < spec.tracks.size(); ++i) {
            spec.tracks[i].text.title = QStringLiteral("Song number %1 of the album").arg(i + 1);
            spec.tracks[i].text.performer = QStringLiteral("Mara Lindqvist");
            spec.tracks[i].text.composer = QStringLiteral("J. Öberg");
            spec.tracks[i].pauseFrames = 150;
        }
        const QString path = dir.filePath(QStringLiteral("disc"));
        mkddp::writeDisc(spec, path);
        QStandardItemModel table;
        loadDdp(path, &table, model);
        for (int i = 0; i < 99; ++i) {
            LoudnessResult track;
            track.integrated = -9.5 - i * 0.05;
            track.truePeak = -0.8;
            loudness.tracks.push_back(track);
        }
        PqSheetInputs inputs;
        inputs.loudness = &loudness;
        sheet = makePqSheet(model, inputs);
    }
};

Disc& disc()
{
    static Disc instance;
    return instance;
}

void BM_Model(benchmark::State& state)
{
    PqSheetInputs inputs;
    inputs.loudness = &disc().loudness;
    for (auto _ : state)
        benchmark::DoNotOptimize(makePqSheet(disc().model, inputs));
}
BENCHMARK(BM_Model)->Unit(benchmark::kMillisecond);

void BM_Text(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(pqSheetText(disc().sheet));
}
BENCHMARK(BM_Text)->Unit(benchmark::kMillisecond);

void BM_Html(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(pqSheetHtml(disc().sheet));
}
BENCHMARK(BM_Html)->Unit(benchmark::kMillisecond);

void BM_Json(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(pqSheetJson(disc().sheet));
}
BENCHMARK(BM_Json)->Unit(benchmark::kMillisecond);

void BM_Pdf(benchmark::State& state)
{
    const QString path = disc().dir.filePath(QStringLiteral("sheet.pdf"));
    for (auto _ : state)
        writePqSheetPdf(disc().sheet, path, QPageSize(QPageSize::A4));
}
BENCHMARK(BM_Pdf)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
