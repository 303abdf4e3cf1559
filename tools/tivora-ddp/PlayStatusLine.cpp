#include "tools/tivora-ddp/PlayStatusLine.h"

#include "ddp/PqEntry.h"

#include <cmath>

QString decibelText(float level)
{
    if (!(level > 1e-9f))
        return QStringLiteral("-inf");
    return QString::number(20.0 * std::log10(static_cast<double>(level)), 'f', 1);
}

QString playStatusLine(const QString& trackText, int indexNumber, double seconds,
                       const MeterInfo& meter)
{
    return QStringLiteral("Track %1.%2  %3  peak %4 %5 dB  rms %6 %7 dB")
        .arg(trackText)
        .arg(indexNumber, 2, 10, QLatin1Char('0'))
        .arg(QString::fromStdString(timeText(static_cast<int>(seconds))))
        .arg(decibelText(meter.peakLeft), decibelText(meter.peakRight), decibelText(meter.rmsLeft),
             decibelText(meter.rmsRight));
}
