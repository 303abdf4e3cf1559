#include "app/DisplayText.h"

#include "ddp/PqEntry.h"

#include <cmath>
#include <exception>

QString volumeDecibelText(int sliderValue)
{
    const double gain = sliderValue * 0.0001;
    const double decibels = gain != 0.0 ? 20.0 * std::log10(gain) : -144.0;
    const QString text = QString::number(decibels, 'f', 1) + QStringLiteral(" dB");
    if (text == QLatin1String("-144.0 dB"))
        return QString::fromUtf8(QByteArray::fromHex("e2889e"));
    return text;
}

int wholeSecondsOfBytes(double bytes)
{
    return static_cast<int>(bytes / kBytesPerSecond);
}

int cdSecondsAt(const std::vector<PqEntry>& entries, double bytePosition)
{
    // The table counts from the end of the lead-in gap (entry 1 to entry 2).
    int gap = 0;
    if (entries.size() > 2) {
        try {
            gap = durationSeconds(entries[1], entries[2]);
        } catch (const std::exception&) {
            gap = 0; // a loaded disc has parsed fields; be safe anyway
        }
    }
    return wholeSecondsOfBytes(bytePosition) - gap;
}

QString signedTimeText(int seconds)
{
    if (seconds < 0)
        return QLatin1Char('-') + QString::fromStdString(timeText(-seconds));
    return QString::fromStdString(timeText(seconds));
}

QString remainingTimeText(int seconds)
{
    return QLatin1Char('-') + QString::fromStdString(timeText(seconds > 0 ? seconds : 0));
}
