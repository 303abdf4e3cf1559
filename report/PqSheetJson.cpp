#include "report/PqSheet.h"
#include "report/PqSheetRender.h"
#include "verify/VerificationText.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

namespace {

QJsonValue orNull(const QString& text)
{
    return text.isEmpty() ? QJsonValue(QJsonValue::Null) : QJsonValue(text);
}

QJsonValue frames(const std::optional<std::int64_t>& value)
{
    return value ? QJsonValue(qint64(*value)) : QJsonValue(QJsonValue::Null);
}

// JSON has no infinity: silence is null with the text saying "-inf".
QJsonValue level(const std::optional<double>& value)
{
    return value && std::isfinite(*value) ? QJsonValue(*value) : QJsonValue(QJsonValue::Null);
}

} // namespace

QByteArray pqSheetJson(const PqSheet& sheet)
{
    QJsonObject root;
    root.insert(QStringLiteral("albumTitle"), orNull(sheet.albumTitle));
    root.insert(QStringLiteral("albumPerformer"), orNull(sheet.albumPerformer));
    root.insert(QStringLiteral("upcEan"), orNull(sheet.upcEan));
    root.insert(QStringLiteral("ddpLevel"), orNull(sheet.ddpLevel));
    root.insert(QStringLiteral("imageFiles"), QJsonArray::fromStringList(sheet.imageFiles));
    root.insert(QStringLiteral("trackCount"), sheet.trackCount);
    root.insert(QStringLiteral("totalTime"), orNull(sheet.totalTime));
    root.insert(QStringLiteral("date"), sheet.date.toString(Qt::ISODate));
    root.insert(QStringLiteral("checksums"), sheet.checksums);
    root.insert(QStringLiteral("discCheck"), orNull(sheet.discCheck));
    root.insert(QStringLiteral("discLoudness"), orNull(sheet.discLoudness));

    static const char* const kTextKeys[] = {"title",    "performer", "songwriter",
                                            "composer", "arranger",  "message"};
    QJsonArray rows;
    for (const PqSheetRow& row : sheet.rows) {
        QJsonObject object;
        if (row.leadOut) {
            object.insert(QStringLiteral("leadOut"), true);
        } else {
            object.insert(QStringLiteral("track"), row.track);
            object.insert(QStringLiteral("index"), row.index);
        }
        // A lead-out whose time is no number reads "" and 0, as it always has.
        object.insert(QStringLiteral("start"), row.startText());
        object.insert(QStringLiteral("startFrames"), qint64(row.startFrames.value_or(0)));
        object.insert(QStringLiteral("duration"), orNull(row.durationText()));
        object.insert(QStringLiteral("durationFrames"), frames(row.durationFrames));
        object.insert(QStringLiteral("pause"), orNull(row.pauseText()));
        object.insert(QStringLiteral("pauseFrames"), frames(row.pauseFrames));
        object.insert(QStringLiteral("isrc"), orNull(row.isrc));
        object.insert(QStringLiteral("flags"), QJsonArray::fromStringList(row.flags.split(
                                                   QLatin1Char(' '), Qt::SkipEmptyParts)));
        for (int i = 0; i < row.cdText.size() && i < 6; ++i)
            object.insert(QString::fromLatin1(kTextKeys[i]), orNull(row.cdText.at(i)));
        object.insert(QStringLiteral("loudness"), orNull(row.loudnessText()));
        object.insert(QStringLiteral("loudnessLufs"), level(row.loudnessLufs));
        object.insert(QStringLiteral("truePeak"), orNull(row.truePeakText()));
        object.insert(QStringLiteral("truePeakDbtp"), level(row.truePeakDbtp));
        rows.append(object);
    }
    root.insert(QStringLiteral("rows"), rows);

    root.insert(QStringLiteral("findings"), findingsJson(sheet.findings));

    QJsonArray files;
    for (const PqSheetFile& file : sheet.files)
        files.append(QJsonObject{
            {QStringLiteral("name"), file.name},
            {QStringLiteral("size"), qint64(file.size)},
            {QStringLiteral("md5"), orNull(file.md5)},
        });
    root.insert(QStringLiteral("files"), files);
    return QJsonDocument(root).toJson(QJsonDocument::Indented);
}
