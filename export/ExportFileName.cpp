#include "export/ExportFileName.h"

#include "ddp/CdTextStrings.h"
#include "ddp/CheckedAccess.h"
#include "ddp/DDPModel.h"
#include "ddp/TrackRange.h"

#include <QSet>
#include <QStringView>
#include <QTextBoundaryFinder>

#include <algorithm>
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

// The name without ".wav", safe but not yet cut to fit.
QString nameStem(const DDPModel& model, const PqEntry& entry)
{
    const QString number = trackNumberText(entry);
    const QString title = cdTextTitle(model, entry);
    return safeFileName(title.isEmpty() ? QStringLiteral("Track ") + number
                                        : number + QStringLiteral(" - ") + title);
}

bool isControl(QChar c)
{
    return c.unicode() < 0x20 || (c.unicode() >= 0x7F && c.unicode() <= 0x9F);
}

} // namespace

QString defaultFileName(const DDPModel& model, std::size_t entryIndex)
{
    const PqEntry& entry = checkedAt(model.entries(), entryIndex);
    const std::vector<std::size_t> tracks = exportedTrackEntries(model);
    const auto track = std::find(tracks.begin(), tracks.end(), entryIndex);
    if (track != tracks.end())
        return exportFileNames(model).at(static_cast<int>(track - tracks.begin()));
    return fittedFileName(nameStem(model, entry), QStringLiteral(".wav"));
}

QStringList exportFileNames(const DDPModel& model)
{
    QStringList names;
    // Compared as a file system that folds case and composes accents would.
    QSet<QString> taken;
    for (std::size_t entry : exportedTrackEntries(model)) {
        const QString base = nameStem(model, model.entries()[entry]);
        for (int copy = 1;; ++copy) {
            const QString tail =
                copy == 1 ? QStringLiteral(".wav") : QStringLiteral(" (%1).wav").arg(copy);
            const QString name = fittedFileName(base, tail);
            const QString key = name.normalized(QString::NormalizationForm_C).toCaseFolded();
            if (!taken.contains(key)) {
                taken.insert(key);
                names.append(name);
                break;
            }
        }
    }
    return names;
}

QString safeFileName(QString name)
{
#ifdef Q_OS_WIN
    static const QString forbidden = QStringLiteral("/\\:*?\"<>|");
#else
    static const QString forbidden = QStringLiteral("/");
#endif
    for (QChar& c : name) {
        if (forbidden.contains(c) || isControl(c))
            c = QLatin1Char('_');
    }
    return name;
}

QString fittedFileName(const QString& stem, const QString& tail, int maxBytes)
{
    const int room = maxBytes - static_cast<int>(tail.toUtf8().size());
    if (stem.toUtf8().size() <= room)
        return stem + tail;
    QTextBoundaryFinder characters(QTextBoundaryFinder::Grapheme, stem);
    int cut = 0;
    int bytes = 0;
    for (int next = characters.toNextBoundary(); next > 0; next = characters.toNextBoundary()) {
        bytes += static_cast<int>(QStringView(stem).mid(cut, next - cut).toUtf8().size());
        if (bytes > room)
            break;
        cut = next;
    }
    while (cut > 0 && stem.at(cut - 1).isSpace())
        --cut;
    return stem.left(cut) + tail;
}
