#include "AudioTestSupport.h"

#include <QDir>
#include <QFile>

#include <cmath>

namespace audiotest {

std::int16_t sampleAt(std::uint32_t frame, int channel)
{
    const std::uint32_t h = (frame * 2 + static_cast<std::uint32_t>(channel)) * 2654435761u;
    return static_cast<std::int16_t>(h >> 16);
}

float expectedAt(std::uint32_t frame, int channel)
{
    return static_cast<float>(sampleAt(frame, channel)) * 3.051851e-5f;
}

QString writeImage(const QString& folder, std::uint32_t frames)
{
    QByteArray bytes(static_cast<int>(frames * 4), '\0');
    for (std::uint32_t f = 0; f < frames; ++f) {
        for (int c = 0; c < 2; ++c) {
            const auto v = static_cast<std::uint16_t>(sampleAt(f, c));
            bytes[static_cast<int>(4 * f + 2 * c)] = static_cast<char>(v & 0xFF);
            bytes[static_cast<int>(4 * f + 2 * c + 1)] = static_cast<char>(v >> 8);
        }
    }
    const QString path = QDir(folder).filePath(QStringLiteral("IMAGE.DAT"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        return {};
    return path;
}

std::vector<float> drive(Audio::DiskStreaming& streaming, unsigned perCall, unsigned totalFrames)
{
    std::vector<float> out(2 * static_cast<std::size_t>(totalFrames), -99.0f);
    for (unsigned done = 0; done < totalFrames;) {
        const unsigned n = std::min(perCall, totalFrames - done);
        streaming.waitForReader();
        // Like RtAudio's callback: the first half is cleared, the rest is
        // whatever was there.
        std::fill(out.begin() + 2 * done, out.begin() + 2 * done + n, 0.0f);
        streaming.process(out.data() + 2 * done, n);
        done += n;
    }
    return out;
}

QString checkTail(const std::vector<float>& out, const Audio::DiskStreaming& streaming,
                  unsigned count, float volume)
{
    const std::uint32_t played =
        (streaming.currentSampleInFile() + static_cast<std::uint32_t>(streaming.position())) / 4;
    const std::size_t frames = out.size() / 2;
    if (played < count || frames < count)
        return QStringLiteral("only %1 frames played").arg(played);
    for (unsigned k = 0; k < count; ++k) {
        const std::uint32_t imageFrame = played - count + k;
        const std::size_t outFrame = frames - count + k;
        for (int c = 0; c < 2; ++c) {
            const float want = expectedAt(imageFrame, c) * volume;
            const float got = out[2 * outFrame + static_cast<std::size_t>(c)];
            if (got != want)
                return QStringLiteral("frame %1 (image frame %2) channel %3: %4, want %5")
                    .arg(outFrame)
                    .arg(imageFrame)
                    .arg(c)
                    .arg(static_cast<double>(got), 0, 'g', 9)
                    .arg(static_cast<double>(want), 0, 'g', 9);
        }
    }
    return {};
}

QString checkStartsAt(const std::vector<float>& out, std::uint32_t first)
{
    constexpr std::size_t kFade = 440;
    constexpr std::size_t kProbe = 1000;
    const std::size_t frames = out.size() / 2;
    if (frames <= kProbe)
        return QStringLiteral("only %1 frames").arg(frames);
    for (std::size_t f = 0; f < frames; ++f) {
        for (int c = 0; c < 2; ++c) {
            const float want = expectedAt(first + static_cast<std::uint32_t>(f), c);
            const float got = out[2 * f + static_cast<std::size_t>(c)];
            const bool ok = f < kFade ? std::abs(got - want * float(f + 1) / float(kFade)) < 1e-4f
                                      : got == want;
            if (ok)
                continue;
            QString heard = QStringLiteral("never");
            for (std::size_t g = 0; g < frames; ++g) {
                if (out[2 * g] == expectedAt(first + kProbe, 0) &&
                    out[2 * g + 1] == expectedAt(first + kProbe, 1)) {
                    heard = QStringLiteral("at output frame %1, %2 frames late")
                                .arg(g)
                                .arg(static_cast<long long>(g) - static_cast<long long>(kProbe));
                    break;
                }
            }
            return QStringLiteral("output frame %1 channel %2 is %3, want %4 (image frame %5); "
                                  "image frame %6 heard %7")
                .arg(f)
                .arg(c)
                .arg(static_cast<double>(got), 0, 'g', 9)
                .arg(static_cast<double>(want), 0, 'g', 9)
                .arg(first + f)
                .arg(first + kProbe)
                .arg(heard);
        }
    }
    return {};
}

} // namespace audiotest
