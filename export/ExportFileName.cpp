#include "export/ExportFileName.h"

#include "ddp/CdTextStrings.h"
#include "ddp/CheckedAccess.h"
#include "ddp/DDPModel.h"

#include <exception>

namespace {

// The two track characters as a number; a field that holds none is used as it
// stands, so that an odd entry still gets a name.
QString trackNumberText(const PqEntry& entry)
{
    try {
        return QString::number(entry.trackNumber());
    } catch (const std::exception&) {
        return QString::fromLatin1(entry.trackText().data(),
                                   static_cast<int>(entry.trackText().size()))
            .trimmed();
    }
}

QString cdTextTitle(const DDPModel& model, const PqEntry& entry)
{
    if (!model.hasCdText())
        return {};
    try {
        const int track = entry.trackNumber();
        if (track < 0)
            return {};
        return cdTextString(model.cdText(), static_cast<std::size_t>(track), CdTextRecord::Title);
    } catch (const std::exception&) {
        // A track without a CD-Text record is named like one without a title.
        return {};
    }
}

} // namespace

QString defaultFileName(const DDPModel& model, std::size_t entryIndex)
{
    const PqEntry& entry = checkedAt(model.entries(), entryIndex);
    const QString number = trackNumberText(entry);
    const QString title = cdTextTitle(model, entry);
    const QString name = title.isEmpty() ? QStringLiteral("Track ") + number
                                         : number + QStringLiteral(" - ") + title;
    return safeFileName(name + QStringLiteral(".wav"));
}

QString safeFileName(QString name)
{
#ifdef Q_OS_WIN
    static const QString forbidden = QStringLiteral("/\\:*?\"<>|");
#else
    static const QString forbidden = QStringLiteral("/");
#endif
    for (QChar& c : name) {
        if (forbidden.contains(c))
            c = QLatin1Char('_');
    }
    return name;
}
