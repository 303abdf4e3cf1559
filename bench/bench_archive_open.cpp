// A DDP inside a ZIP archive against the same DDP as a folder, on a 74-minute
// disc (about 780 MB of audio):
//   BM_OpenFolder, BM_OpenStoredZip  from "open" to loaded: the loader, the
//       DiscImage opened and the first read of playback (64 KiB);
//   BM_UnpackDeflated, BM_Unzip      unpacking the deflated archive's audio,
//       ours against Info-ZIP's unzip of the whole archive, in bytes a second.
// The discs and archives are made once in a temporary folder (zip -0 and
// zip -6 of the generated disc); TIVORA_BENCH_DIR keeps them between runs.
#include "archive/ArchiveDdp.h"
#include "ddp/DDPModel.h"
#include "ddp/DdpFileSource.h"
#include "ddp/DdpLoader.h"
#include "ddp/ImageLayout.h"
#include "tools/mkddp/Mkddp.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QStandardItemModel>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

struct Fixture
{
    QString base;
    QString folder;
    QString stored;
    QString deflated;
    std::uint64_t imageBytes = 0;
};

bool zipDisc(const QString& folder, const QString& zip, const QString& level)
{
    if (QFileInfo::exists(zip))
        return true;
    QProcess process;
    process.setWorkingDirectory(folder);
    process.start(QStringLiteral("zip"),
                  {QStringLiteral("-q"), level, QStringLiteral("-r"), zip, QStringLiteral(".")});
    return process.waitForFinished(-1) && process.exitCode() == 0;
}

const Fixture& fixture()
{
    static std::unique_ptr<QTemporaryDir> temporary;
    static Fixture f = [] {
        Fixture made;
        made.base = qEnvironmentVariable("TIVORA_BENCH_DIR");
        if (made.base.isEmpty()) {
            temporary = std::make_unique<QTemporaryDir>();
            made.base = temporary->path();
        }
        made.folder = QDir(made.base).filePath(QStringLiteral("disc74"));
        made.stored = QDir(made.base).filePath(QStringLiteral("disc74-stored.zip"));
        made.deflated = QDir(made.base).filePath(QStringLiteral("disc74-deflated.zip"));
        const mkddp::DiscSpec spec = mkddp::longDisc(74);
        made.imageBytes = std::uint64_t(mkddp::imageSize(spec));
        QString error;
        if ((!QFileInfo::exists(made.folder) && !mkddp::writeDisc(spec, made.folder, &error)) ||
            !zipDisc(made.folder, made.stored, QStringLiteral("-0")) ||
            !zipDisc(made.folder, made.deflated, QStringLiteral("-6"))) {
            std::fprintf(stderr, "cannot make the discs: %s\n", qPrintable(error));
            std::exit(1);
        }
        return made;
    }();
    return f;
}

void firstRead(const DiscImage& image)
{
    static char buffer[65536];
    benchmark::DoNotOptimize(image.read(0, buffer, sizeof buffer));
}

void BM_OpenFolder(benchmark::State& state)
{
    const Fixture& f = fixture();
    for (auto _ : state) {
        QStandardItemModel table;
        DDPModel model;
        const LoadResult result = loadDdp(FolderFileSource(f.folder), &table, model);
        auto image = openDiscImage(f.folder, model.imageLayout());
        if (result.kind != ErrorKind::NoError || !image)
            state.SkipWithError("the folder does not load");
        else
            firstRead(*image);
    }
}
BENCHMARK(BM_OpenFolder)->Unit(benchmark::kMillisecond);

void BM_OpenStoredZip(benchmark::State& state)
{
    const Fixture& f = fixture();
    for (auto _ : state) {
        QStandardItemModel table;
        DDPModel model;
        ArchiveDdp::Opened opened = ArchiveDdp::open(f.stored);
        if (!opened.ddp) {
            state.SkipWithError("the archive does not open");
            break;
        }
        const LoadResult result = loadDdp(*opened.ddp, &table, model);
        auto image = opened.ddp->openImage(model.imageLayout());
        if (result.kind != ErrorKind::NoError || !image)
            state.SkipWithError("the archive does not load");
        else
            firstRead(*image);
    }
}
BENCHMARK(BM_OpenStoredZip)->Unit(benchmark::kMillisecond);

void BM_UnpackDeflated(benchmark::State& state)
{
    const Fixture& f = fixture();
    for (auto _ : state) {
        QStandardItemModel table;
        DDPModel model;
        ArchiveDdp::Opened opened = ArchiveDdp::open(f.deflated);
        if (!opened.ddp || loadDdp(*opened.ddp, &table, model).kind != ErrorKind::NoError ||
            !opened.ddp->openImage(model.imageLayout()))
            state.SkipWithError("the archive does not unpack");
    }
    state.SetBytesProcessed(std::int64_t(state.iterations() * f.imageBytes));
}
BENCHMARK(BM_UnpackDeflated)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();

void BM_Unzip(benchmark::State& state)
{
    const Fixture& f = fixture();
    for (auto _ : state) {
        QTemporaryDir out;
        QProcess unzip;
        unzip.start(QStringLiteral("unzip"), {QStringLiteral("-q"), QStringLiteral("-o"),
                                              f.deflated, QStringLiteral("-d"), out.path()});
        if (!unzip.waitForFinished(-1) || unzip.exitCode() != 0)
            state.SkipWithError("unzip failed");
    }
    state.SetBytesProcessed(std::int64_t(state.iterations() * f.imageBytes));
}
BENCHMARK(BM_Unzip)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
