// The audio thread's work while playing: one process() call per 256-frame
// device buffer (5.8 ms of audio), at full volume with no fade, the level
// meter fed. Twenty-four calls (the three refill chunks the reader keeps
// ready ahead) are timed together; between batches the reader thread is
// given time to refill, outside the timing, so that the figure is the
// callback alone. Also the reader's side: one 8 KiB chunk read from a file
// in the page cache and converted, with a plain file read and as the reader
// makes it, through the disc image (one file, and twenty).
#include "audio/DiskStreaming.h"
#include "audio/StreamingConstants.h"
#include "ddp/DiscImage.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <chrono>
#include <vector>

namespace {

constexpr unsigned kFrames = 256;
constexpr int kBatch = 24;                            // 3 chunks of 2048 frames
constexpr double kBudgetNs = 1e9 * kFrames / 44100.0; // 5.8 ms

// Thirty seconds of a changing 16-bit signal.
QString writeImage(const QTemporaryDir& dir)
{
    const int frames = 30 * 44100;
    QByteArray bytes(frames * 4, '\0');
    for (int i = 0; i < frames * 2; ++i) {
        const auto v = static_cast<quint16>(i * 2654435761u >> 16);
        bytes[2 * i] = static_cast<char>(v & 0xFF);
        bytes[2 * i + 1] = static_cast<char>(v >> 8);
    }
    const QString path = QDir(dir.path()).filePath(QStringLiteral("IMAGE.DAT"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        return {};
    return path;
}

void BM_ProcessPlaying256(benchmark::State& state)
{
    QTemporaryDir dir;
    const QString image = writeImage(dir);
    Audio::DiskStreaming streaming;
    streaming.openFile(image, {});
    streaming.setCurrentSampleInFile(0);
    streaming.waitForReader();
    streaming.play();
    std::vector<float> out(2 * kFrames);
    while (streaming.fadeState() != Audio::Idle)
        streaming.process(out.data(), kFrames);
    const std::uint64_t underrunsBefore = streaming.underrunCount();

    const auto imageBytes = static_cast<float>(30 * 176400 - 8192 * 2);
    double timedSeconds = 0.0;
    for (auto _ : state) {
        if (streaming.position() >= imageBytes) {
            streaming.setCurrentSampleInFile(0); // start over, untimed
        }
        streaming.waitForReader();
        const auto start = std::chrono::steady_clock::now();
        for (int i = 0; i < kBatch; ++i)
            streaming.process(out.data(), kFrames);
        const auto end = std::chrono::steady_clock::now();
        benchmark::DoNotOptimize(out.data());
        const double seconds = std::chrono::duration<double>(end - start).count() / kBatch;
        timedSeconds += seconds;
        state.SetIterationTime(seconds);
    }
    state.counters["ns_per_frame"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * kFrames,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    state.counters["frames/s"] = benchmark::Counter(
        static_cast<double>(state.iterations()) * kFrames, benchmark::Counter::kIsRate);
    // Share of the real-time budget of one buffer, in percent.
    state.counters["budget_pct"] =
        100.0 * timedSeconds * 1e9 / static_cast<double>(state.iterations()) / kBudgetNs;
    state.counters["underruns"] = static_cast<double>(streaming.underrunCount() - underrunsBefore);
}
BENCHMARK(BM_ProcessPlaying256)
    ->UseManualTime()
    ->Unit(benchmark::kNanosecond)
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);

// What the reader does for one refill: seek, read 8 KiB, convert.
void BM_ReaderRefill8KiB(benchmark::State& state)
{
    QTemporaryDir dir;
    QFile file(writeImage(dir));
    file.open(QIODevice::ReadOnly);
    std::vector<char> bytes(Audio::kRefillChunkBytes);
    std::vector<float> samples(Audio::kRefillChunkSamples);
    qint64 offset = 0;
    for (auto _ : state) {
        file.seek(offset);
        const qint64 got = file.read(bytes.data(), Audio::kRefillChunkBytes);
        Audio::convertSamples(bytes.data(), static_cast<std::uint32_t>(got), samples.data());
        benchmark::DoNotOptimize(samples.data());
        offset = (offset + Audio::kRefillChunkBytes) % (29 * 176400);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            Audio::kRefillChunkBytes);
}
BENCHMARK(BM_ReaderRefill8KiB)
    ->Unit(benchmark::kNanosecond)
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);

// The same refill as the reader makes it: a positional read through the
// disc image, then the conversion. Over one file, and over the same bytes
// split into twenty files, where one chunk in about eighty crosses from one
// file into the next.
void BM_DiscImageRefill8KiB(benchmark::State& state)
{
    QTemporaryDir dir;
    const QString path = writeImage(dir);
    std::shared_ptr<const DiscImage> image;
    const int files = static_cast<int>(state.range(0));
    if (files == 1) {
        image = DiscImage::openFile(path);
    } else {
        QFile whole(path);
        whole.open(QIODevice::ReadOnly);
        const QByteArray bytes = whole.readAll();
        // Parts of whole frames, the last taking the rest.
        const int part = bytes.size() / files / 4 * 4;
        std::vector<DiscImage::Segment> segments;
        for (int k = 0; k < files; ++k) {
            const int from = k * part;
            const int size = k + 1 == files ? bytes.size() - from : part;
            const QString name = QDir(dir.path()).filePath(QStringLiteral("IMAGE%1.DAT").arg(k));
            QFile file(name);
            file.open(QIODevice::WriteOnly);
            file.write(bytes.constData() + from, size);
            DiscImage::Segment segment;
            segment.kind = DiscImage::Segment::Kind::File;
            segment.path = name;
            segment.length = static_cast<std::uint64_t>(size);
            segments.push_back(segment);
        }
        image = DiscImage::open(std::move(segments));
    }
    if (!image) {
        state.SkipWithError("image did not open");
        return;
    }
    std::vector<char> bytes(Audio::kRefillChunkBytes);
    std::vector<float> samples(Audio::kRefillChunkSamples);
    std::uint64_t offset = 0;
    for (auto _ : state) {
        const std::uint64_t got = image->read(offset, bytes.data(), Audio::kRefillChunkBytes);
        Audio::convertSamples(bytes.data(), static_cast<std::uint32_t>(got), samples.data());
        benchmark::DoNotOptimize(samples.data());
        offset = (offset + Audio::kRefillChunkBytes) % (29 * 176400);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            Audio::kRefillChunkBytes);
}
BENCHMARK(BM_DiscImageRefill8KiB)
    ->Arg(1)
    ->Arg(20)
    ->Unit(benchmark::kNanosecond)
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);

} // namespace

BENCHMARK_MAIN();
