// tivora-ddp play PATH [--track N] [--seconds S] [--device NAME]: the
// window's player from the command line, for listening to a master on a
// machine without a display. Stops after S seconds, at the end of the disc
// or on Ctrl+C, each time with the fade-out.
#include "tools/tivora-ddp/Commands.h"
#include "tools/tivora-ddp/InfoReport.h"
#include "tools/tivora-ddp/PlayStatusLine.h"

#include "audio/Player.h"
#include "ddp/DdpFileLookup.h"
#include "ddp/ErrorTexts.h"
#include "ddp/ImageLayout.h"

#include <QElapsedTimer>
#include <QFileInfo>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <exception>
#include <optional>
#include <thread>
#include <unistd.h>

namespace {

volatile std::sig_atomic_t g_interrupted = 0;

void onInterrupt(int signal)
{
    g_interrupted = 1;
    // A second Ctrl+C ends the program at once.
    std::signal(signal, SIG_DFL);
}

int usage()
{
    std::fputs("usage: tivora-ddp play PATH [--track N] [--seconds S] [--device NAME]\n", stderr);
    return 2;
}

void printText(std::FILE* stream, const QString& text)
{
    const QByteArray bytes = text.toLocal8Bit();
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stream);
    std::fflush(stream);
}

// The error dialog's title and text, as plain words.
int fail(ErrorKind kind, const std::string& message)
{
    QString text =
        QStringLiteral("Error %1: %2\n").arg(static_cast<int>(kind)).arg(errorTitle(kind));
    text += plainErrorText(kind, message).trimmed() + QLatin1Char('\n');
    if (!message.empty())
        text += QStringLiteral("Message: %1\n").arg(QString::fromStdString(message));
    printText(stderr, text);
    return 1;
}

struct Arguments
{
    QString path;
    std::optional<int> track;
    std::optional<double> seconds;
    std::string device;
};

std::optional<Arguments> parse(const QStringList& args)
{
    Arguments parsed;
    for (int i = 0; i < args.size(); ++i) {
        const QString& arg = args[i];
        const bool hasValue = i + 1 < args.size();
        bool ok = true;
        if (arg == QLatin1String("--track") && hasValue) {
            parsed.track = args[++i].toInt(&ok);
        } else if (arg == QLatin1String("--seconds") && hasValue) {
            parsed.seconds = args[++i].toDouble(&ok);
            ok = ok && *parsed.seconds >= 0;
        } else if (arg == QLatin1String("--device") && hasValue) {
            parsed.device = args[++i].toStdString();
        } else if (arg.startsWith(QLatin1String("--")) || !parsed.path.isEmpty()) {
            return std::nullopt;
        } else {
            parsed.path = arg;
        }
        if (!ok)
            return std::nullopt;
    }
    if (parsed.path.isEmpty())
        return std::nullopt;
    return parsed;
}

int numberOr(const PqEntry& entry, int (PqEntry::*field)() const, int fallback)
{
    try {
        return (entry.*field)();
    } catch (const std::exception&) {
        return fallback;
    }
}

// The table row of track N's index 01 entry (the first track when N is not
// given); -1 when the disc has no such track.
int trackRow(const DDPModel& model, std::optional<int> track)
{
    const std::vector<PqEntry>& entries = model.entries();
    const int first = static_cast<int>(model.firstTrackNumber());
    for (int e = first; e + 2 < static_cast<int>(entries.size()); ++e) {
        const PqEntry& entry = entries[static_cast<std::size_t>(e)];
        if (numberOr(entry, &PqEntry::indexNumber, -1) != 1)
            continue;
        if (!track || numberOr(entry, &PqEntry::trackNumber, -1) == *track)
            return e - first;
    }
    return -1;
}

// A fresh PulseAudio stream takes a first gulp of data at once, then may
// wait a second or two before the server asks for more. Playback starts
// once buffers are asked for at the device's pace, so that what is heard
// starts with the fade-in and --seconds means seconds heard.
void waitUntilTheStreamFlows(const Audio::DiskStreaming& streaming)
{
    QElapsedTimer waited;
    waited.start();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    std::uint64_t before = streaming.framesProcessed();
    while (waited.elapsed() < 5000) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        const std::uint64_t now = streaming.framesProcessed();
        if (now != before)
            return;
        before = now;
    }
}

} // namespace

int runPlay(const QStringList& args)
{
    const std::optional<Arguments> arguments = parse(args);
    if (!arguments)
        return usage();

    const InfoReport report = makeInfoReport(arguments->path);
    if (report.result.kind != ErrorKind::NoError)
        return fail(report.result.kind, report.result.message);
    LoadResult imageError;
    const std::shared_ptr<const DiscImage> image = openReportImage(report, &imageError);
    if (!image)
        return fail(imageError.kind == ErrorKind::ArchiveInvalid ? imageError.kind
                                                                 : ErrorKind::ImageMissing,
                    imageError.kind == ErrorKind::ArchiveInvalid ? imageError.message
                                                                 : std::string());

    Audio::Player player;
    player.setTrackSource(report.model);
    if (!player.initialize(arguments->device)) {
        const LoadResult error = player.lastError();
        return fail(error.kind, error.message);
    }
    player.load(image, {});
    const int row = trackRow(*report.model, arguments->track);
    if (row < 0) {
        printText(stderr, QStringLiteral("tivora-ddp play: the DDP has no track %1.\n")
                              .arg(arguments->track.value_or(1)));
        return 1;
    }

    g_interrupted = 0;
    std::signal(SIGINT, onInterrupt);
    std::signal(SIGTERM, onInterrupt);
    const bool terminal = isatty(fileno(stdout)) != 0;

    waitUntilTheStreamFlows(player.streaming());
    player.selectTrack(row);
    QElapsedTimer clock;
    clock.start();
    bool stopping = false;
    int tick = 0;
    // A device that no longer asks for audio cannot finish the fade-out.
    std::uint64_t framesSeen = player.streaming().framesProcessed();
    QElapsedTimer sinceFrames;
    sinceFrames.start();
    // The window's 16 ms display tick: move on at a track's end; the player
    // stops by itself after the last track.
    while (!player.isStopped()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(16));
        const std::uint64_t frames = player.streaming().framesProcessed();
        if (frames != framesSeen) {
            framesSeen = frames;
            sinceFrames.restart();
        } else if (stopping && sinceFrames.elapsed() > 500) {
            break;
        }
        const bool timeUp = arguments->seconds &&
                            clock.elapsed() >= static_cast<qint64>(*arguments->seconds * 1000);
        if (!stopping && (g_interrupted || timeUp)) {
            player.stop();
            stopping = true;
        }
        const std::uint32_t length = player.currentTrackLength();
        if (!stopping && length > 0 && player.position() >= static_cast<float>(length))
            player.onTrackEnded();
        if (terminal && ++tick % 6 == 0) {
            const std::vector<PqEntry>& entries = report.model->entries();
            const auto e = static_cast<std::size_t>(player.entryIndex());
            const PqEntry entry = e < entries.size() ? entries[e] : PqEntry{};
            printText(stdout, QLatin1Char('\r') +
                                  playStatusLine(QString::fromLatin1(entry.trackText().data(), 2),
                                                 numberOr(entry, &PqEntry::indexNumber, 0),
                                                 player.position() / 176400.0, player.meterInfo()) +
                                  QStringLiteral("   "));
        }
    }
    if (terminal)
        printText(stdout, QStringLiteral("\n"));
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
    return 0;
}
