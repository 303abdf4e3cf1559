// tivora-ddp cue PATH OUT.cue [--bin | --wav]: a cue sheet for burning a
// reference CD, with the disc's audio beside it as OUT.bin (raw samples, the
// default) or OUT.wav. Burning the pair gives the disc's tracks, indexes,
// ISRCs, flags and CD-Text again.
#include "tools/tivora-ddp/CommandSupport.h"
#include "tools/tivora-ddp/Commands.h"
#include "tools/tivora-ddp/TerminalText.h"

#include "ddp/DdpFileLookup.h"
#include "export/CueWriter.h"

#include <QDir>
#include <QFileInfo>

#include <cstdio>

namespace {

int usage()
{
    return usageError("tivora-ddp cue PATH OUT.cue [--bin | --wav]");
}

int fail(const QString& message)
{
    return commandFailed("cue", message);
}

} // namespace

int runCue(const QStringList& args)
{
    QStringList positional;
    CueAudioFile kind = CueAudioFile::Binary;
    int kinds = 0;
    for (const QString& arg : args) {
        if (arg == QLatin1String("--bin")) {
            kind = CueAudioFile::Binary;
            ++kinds;
        } else if (arg == QLatin1String("--wav")) {
            kind = CueAudioFile::Wave;
            ++kinds;
        } else if (arg.startsWith(QLatin1String("--"))) {
            return usage();
        } else {
            positional.append(arg);
        }
    }
    if (positional.size() != 2 || kinds > 1 ||
        !positional[1].endsWith(QLatin1String(".cue"), Qt::CaseInsensitive))
        return usage();

    const InfoReport report = makeInfoReport(positional[0]);
    if (report.result.kind != ErrorKind::NoError)
        return fail(loadErrorLine(report.result));
    const QString image = ddpFileNameFromBytes(report.model->imageFileName());
    LoadResult imageError;
    const std::shared_ptr<const DiscImage> disc = openReportImage(report, &imageError);
    if (!disc)
        return fail(imageMissing(imageError, image));

    const QString cuePath = QFileInfo(positional[1]).absoluteFilePath();
    CueWriter writer(cuePath, kind, image, report.model);
    writer.setImage(disc);
    QString failure;
    QObject::connect(&writer, &FileWriter::failed,
                     [&failure](const QString& message) { failure = message; });
    QObject::connect(&writer, &FileWriter::fileWritten, [](const QString& path) {
        const QByteArray line = terminalText(QDir::toNativeSeparators(path)).toLocal8Bit() + '\n';
        std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stdout);
    });
    writer.process();
    return failure.isEmpty() ? 0 : fail(failure);
}
