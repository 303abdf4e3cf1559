#include "analysis/LoudnessText.h"

#include <QJsonValue>

#include <cmath>

namespace {

QString withUnit(double value, const char* unit)
{
    if (std::isinf(value) && value < 0)
        return QStringLiteral("-inf");
    return QStringLiteral("%1 %2").arg(QString::number(value, 'f', 1), QLatin1String(unit));
}

QJsonValue number(double value)
{
    if (!std::isfinite(value))
        return QJsonValue(QJsonValue::Null);
    // Two decimals: finer than any meter shows, coarse enough to read.
    return std::round(value * 100.0) / 100.0;
}

} // namespace

QString lufsText(double lufs)
{
    return withUnit(lufs, "LUFS");
}
QString luText(double lu)
{
    return withUnit(lu, "LU");
}
QString dbfsText(double dbfs)
{
    return withUnit(dbfs, "dBFS");
}
QString dbtpText(double dbtp)
{
    return withUnit(dbtp, "dBTP");
}

bool truePeakNeedsLook(double dbtp)
{
    return dbtp > -1.0;
}

QVector<QPair<QString, QString>> loudnessLines(const LoudnessResult& r)
{
    QVector<QPair<QString, QString>> lines{
        {QStringLiteral("Loudness"), lufsText(r.integrated)},
        {QStringLiteral("Loudness Range"), luText(r.range)},
        {QStringLiteral("Max. Momentary"), lufsText(r.maxMomentary)},
        {QStringLiteral("Max. Short-Term"), lufsText(r.maxShortTerm)},
        {QStringLiteral("Sample Peak"), dbfsText(r.samplePeak)},
        {QStringLiteral("True Peak"), dbtpText(r.truePeak)},
        {QStringLiteral("Clipped Runs"), QString::number(r.clippedRuns)},
    };
    if (!r.complete)
        lines.append({QStringLiteral("Note"), QStringLiteral("the audio image ends early")});
    return lines;
}

QJsonObject loudnessJson(const LoudnessResult& r)
{
    return QJsonObject{
        {QStringLiteral("integratedLufs"), number(r.integrated)},
        {QStringLiteral("rangeLu"), number(r.range)},
        {QStringLiteral("maxMomentaryLufs"), number(r.maxMomentary)},
        {QStringLiteral("maxShortTermLufs"), number(r.maxShortTerm)},
        {QStringLiteral("samplePeakDbfs"), number(r.samplePeak)},
        {QStringLiteral("truePeakDbtp"), number(r.truePeak)},
        {QStringLiteral("clippedRuns"), r.clippedRuns},
        {QStringLiteral("seconds"), number(double(r.frames) / 44100.0)},
        {QStringLiteral("complete"), r.complete},
    };
}
