// tivora-mkddp: writes DDP folders for testing and the bundled demo disc.
#include "tools/mkddp/Mkddp.h"

#include "ddp/FileNameCodec.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QJsonDocument>
#include <QStringList>

#include <cstdio>

namespace {

const char kUsage[] = R"(Usage:
  tivora-mkddp demo DIR            the demo disc: four short pieces, CD-Text
  tivora-mkddp test DIR [options]  a test disc with the test pattern
  tivora-mkddp --help

Options of "test":
  --tracks N            number of tracks (default 3, at most 199; past 99 the
                        PQ's two-digit track numbers wrap to 00)
  --seconds S           length of each track in seconds (default 10)
  --minutes M           a long disc of M minutes in four-minute tracks
  --realistic           the realistic disc (7 tracks, pauses, index 02, CD-Text)
  --first-pause-frames F  pause before track 1 in CD frames (default 150)
  --pause-frames F      pause before every later track (default 0)
  --index2 F            an index 02 in every track, F frames after index 01
  --empty-track N       track N (from 1) is of zero length
  --cdtext              write CD-Text
  --double-byte         CD-Text in code page 932 (Japanese sample titles)
  --second-block        a second CD-Text language block
  --long-title          CD-Text, track 1's title 159 Latin-1 letters long
  --control-text        CD-Text holding control characters (ESC, BEL, DEL, C1)
  --genre CODE          genre code (written as given; 1..27 are known)
  --upc DIGITS          UPC/EAN (13 digits)
  --hours H             hours field of every PQ entry
  --blank-hours         two blanks in the hours field of every PQ entry
  --control TEXT        the 4 control bytes of every PQ entry (default 0100;
                        shorter text is blank padded, e.g. A1, 0S)
  --lead-out-entries N  lead-out entries closing the PQ: 2 ("AA" 01 and 00,
                        the default) or 1 ("AA" 01 only)
  --ddp-level LEVEL     DDPID level and layout: 2.00 (default) or 1.01
  --long-cdtext         CD-Text whose first block passes 256 packs (with 3
                        tracks or more): every string about 150 characters
  --lower-case          all file names in lower case on disk
  --zero-pad            names in the DDPMS padded with zero bytes
  --cdtext-name NAME    CD-Text name as written in the DDPMS ("CD TEXT.BIN")
  --image-name NAME     image name (default IMAGE.DAT)
  --pq-name NAME        PQ descriptor name (default PQDESCR)
  --silence             silent audio instead of the test pattern
  --signals             five 20 s tracks of known signals for loudness meters
                        (1 kHz sines at -23 and -33 dBFS, a sine whose true
                        peak lies 3 dB over its samples, silence, clipping)
  --silent-pauses       index 00 pauses hold digital silence (by default they hold
                        the pattern's frame counter: audio a player can hear)
  --streams N           the image split over N files (IMAGE1.DAT, ...) at
                        track starts, each with its own map packet
  --stream-gap F        F frames left out at the start of every later
                        stream: silence between the files
  --start-sector S      the first stream's start sector in the map
  --data-stream         a data session after the audio (mode M1, DATA.DAT)
  --checksums STYLE     a checksum file beside the disc listing its files:
                        md5 (CHECKSUM.MD5), md5-crlf-upper (MD5_CHECKSUM.MD5,
                        CRLF, upper-case hex, "*NAME"), md5-lower-names
                        (checksum.md5, names in lower case), crc-ini
                        (CHECKSUM.TXT, [CRC32 Checksum]), unknown (CHECKSUM.TXT
                        of SHA-1 lines, a format no verifier is asked to read)
  --expected            print what `tivora-ddp info --json` should report
                        ("rows", "indexList", "cdText") after writing
  --fault NAME          inject a fault (repeatable); names:
)";

void usage(FILE* out)
{
    std::fputs(kUsage, out);
    for (const QString& name : mkddp::allFaultNames())
        std::fprintf(out, "                          %s\n", qPrintable(name));
}

int fail(const QString& message)
{
    std::fprintf(stderr, "tivora-mkddp: %s\n", qPrintable(message));
    return 2;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    FileNameCodec::install(); // before the arguments are read
    QStringList args = QCoreApplication::arguments().mid(1);
    if (args.isEmpty() || args.contains(QStringLiteral("--help")) ||
        args.contains(QStringLiteral("-h"))) {
        usage(args.isEmpty() ? stderr : stdout);
        return args.isEmpty() ? 2 : 0;
    }
    const QString command = args.takeFirst();
    if (args.isEmpty())
        return fail(QStringLiteral("missing DIR"));
    const QString dir = args.takeFirst();

    mkddp::DiscSpec spec;
    bool printExpected = false;
    if (command == QLatin1String("demo")) {
        if (!args.isEmpty())
            return fail(QStringLiteral("demo takes no options"));
        spec = mkddp::demoDisc();
    } else if (command == QLatin1String("test")) {
        int tracks = 3, seconds = 10, minutes = 0, firstPause = 150, pause = 0, index2 = 0;
        int emptyTrack = 0;
        bool realistic = false, longTitle = false, controlText = false, longCdText = false;
        bool knownSignals = false;
        mkddp::DiscSpec opts; // collects the flags applied at the end
        QVector<mkddp::Fault> faults;
        for (int i = 0; i < args.size(); ++i) {
            const QString& a = args.at(i);
            auto value = [&](QString* out) {
                if (i + 1 >= args.size())
                    return false;
                *out = args.at(++i);
                return true;
            };
            auto number = [&](int* out) {
                QString text;
                bool ok = false;
                if (value(&text))
                    *out = text.toInt(&ok);
                return ok;
            };
            QString text;
            bool ok = true;
            if (a == QLatin1String("--tracks"))
                ok = number(&tracks) && tracks >= 0 && tracks <= 199;
            else if (a == QLatin1String("--seconds"))
                ok = number(&seconds) && seconds > 0;
            else if (a == QLatin1String("--minutes"))
                ok = number(&minutes) && minutes > 0 && minutes < 100;
            else if (a == QLatin1String("--first-pause-frames"))
                ok = number(&firstPause) && firstPause >= 0;
            else if (a == QLatin1String("--pause-frames"))
                ok = number(&pause) && pause >= 0;
            else if (a == QLatin1String("--index2"))
                ok = number(&index2) && index2 > 0;
            else if (a == QLatin1String("--empty-track"))
                ok = number(&emptyTrack) && emptyTrack > 0;
            else if (a == QLatin1String("--long-title"))
                longTitle = true;
            else if (a == QLatin1String("--control-text"))
                controlText = true;
            else if (a == QLatin1String("--long-cdtext"))
                longCdText = true;
            else if (a == QLatin1String("--blank-hours"))
                opts.blankHours = true;
            else if (a == QLatin1String("--control"))
                ok = value(&text) && text.size() <= 4, opts.pqControl = text.toLatin1();
            else if (a == QLatin1String("--lead-out-entries"))
                ok = number(&opts.leadOutEntries) && opts.leadOutEntries >= 1 &&
                     opts.leadOutEntries <= 2;
            else if (a == QLatin1String("--ddp-level"))
                ok = value(&text) &&
                     (text == QLatin1String("2.00") || text == QLatin1String("1.01")),
                opts.ddpLevel = "DDP " + text.toLatin1();
            else if (a == QLatin1String("--realistic"))
                realistic = true;
            else if (a == QLatin1String("--signals"))
                knownSignals = true;
            else if (a == QLatin1String("--cdtext"))
                opts.cdText = true;
            else if (a == QLatin1String("--double-byte"))
                opts.doubleByte = opts.cdText = true;
            else if (a == QLatin1String("--second-block"))
                opts.secondBlock.append(mkddp::CdTextStrings());
            else if (a == QLatin1String("--genre"))
                ok = number(&opts.genre);
            else if (a == QLatin1String("--upc"))
                ok = value(&text), opts.upcEan = text.toLatin1();
            else if (a == QLatin1String("--hours"))
                ok = number(&opts.pqHours);
            else if (a == QLatin1String("--lower-case"))
                opts.lowerCaseOnDisk = true;
            else if (a == QLatin1String("--zero-pad"))
                opts.zeroPadNames = true;
            else if (a == QLatin1String("--cdtext-name"))
                ok = value(&text), opts.cdTextName = text.toLatin1();
            else if (a == QLatin1String("--image-name"))
                ok = value(&text), opts.imageName = text.toLatin1();
            else if (a == QLatin1String("--pq-name"))
                ok = value(&text), opts.pqName = text.toLatin1();
            else if (a == QLatin1String("--expected"))
                printExpected = true;
            else if (a == QLatin1String("--silence"))
                opts.content = mkddp::AudioContent::Silence;
            else if (a == QLatin1String("--silent-pauses"))
                opts.silentPauses = true;
            else if (a == QLatin1String("--streams"))
                ok = number(&opts.imageStreams) && opts.imageStreams >= 1;
            else if (a == QLatin1String("--stream-gap"))
                ok = number(&opts.streamGapFrames);
            else if (a == QLatin1String("--start-sector"))
                ok = number(&opts.startSector);
            else if (a == QLatin1String("--data-stream"))
                opts.dataStream = true;
            else if (a == QLatin1String("--checksums")) {
                ok = value(&text);
                const QStringList styles = {QStringLiteral("md5"), QStringLiteral("md5-crlf-upper"),
                                            QStringLiteral("md5-lower-names"),
                                            QStringLiteral("crc-ini"), QStringLiteral("unknown")};
                ok = ok && styles.contains(text);
                opts.checksums = mkddp::ChecksumStyle(styles.indexOf(text) + 1);
            } else if (a == QLatin1String("--fault")) {
                ok = value(&text);
                const std::optional<mkddp::Fault> fault = mkddp::faultFromName(text);
                if (!fault)
                    return fail(QStringLiteral("unknown fault %1").arg(text));
                faults.append(*fault);
            } else {
                return fail(QStringLiteral("unknown option %1").arg(a));
            }
            if (!ok)
                return fail(QStringLiteral("bad value for %1").arg(a));
        }

        if (realistic)
            spec = mkddp::realisticDisc();
        else if (knownSignals)
            spec = mkddp::signalsDisc();
        else if (minutes > 0)
            spec = mkddp::longDisc(minutes);
        else
            spec = mkddp::simpleDisc(tracks, seconds);
        if (!realistic) {
            for (int k = 0; k < spec.tracks.size(); ++k) {
                spec.tracks[k].pauseFrames = k == 0 ? firstPause : pause;
                if (index2 > 0 && index2 < spec.tracks[k].frames)
                    spec.tracks[k].indexOffsets = {index2};
            }
            spec.cdText = opts.cdText;
            if (opts.genre != 0)
                spec.genre = opts.genre;
            if (!opts.upcEan.isEmpty() && opts.upcEan != "0000000000000")
                spec.upcEan = opts.upcEan;
        } else {
            spec.cdText = true;
        }
        spec.doubleByte = opts.doubleByte;
        if (spec.doubleByte) {
            // Sample Japanese titles, so the double-byte path has real work.
            spec.album.title = QStringLiteral("テスト盤");
            spec.album.performer = QStringLiteral("試験信号");
            for (int k = 0; k < spec.tracks.size(); ++k)
                spec.tracks[k].text.title = QStringLiteral("曲 %1").arg(k + 1);
        }
        if (!opts.secondBlock.isEmpty()) {
            spec.secondBlock.append({QStringLiteral("Zweite Sprache"),
                                     QStringLiteral("Testsignal"),
                                     {},
                                     {},
                                     {},
                                     {},
                                     {}});
            for (int k = 0; k < spec.tracks.size(); ++k)
                spec.secondBlock.append(
                    {QStringLiteral("Stück %1").arg(k + 1), {}, {}, {}, {}, {}, {}});
        }
        if (emptyTrack > spec.tracks.size())
            return fail(QStringLiteral("--empty-track %1: no such track").arg(emptyTrack));
        if (emptyTrack > 0) {
            spec.tracks[emptyTrack - 1].frames = 0;
            spec.tracks[emptyTrack - 1].indexOffsets.clear();
        }
        if (longTitle && !spec.tracks.isEmpty()) {
            spec.cdText = true;
            spec.tracks[0].text.title = mkddp::longLatin1Title();
        }
        if (controlText)
            mkddp::putControlCharacters(spec);
        if (longCdText)
            mkddp::putLongCdText(spec);
        spec.pqHours = opts.pqHours;
        spec.blankHours = opts.blankHours;
        spec.pqControl = opts.pqControl;
        spec.leadOutEntries = opts.leadOutEntries;
        spec.ddpLevel = opts.ddpLevel;
        spec.lowerCaseOnDisk = opts.lowerCaseOnDisk;
        spec.zeroPadNames = opts.zeroPadNames;
        spec.cdTextName = opts.cdTextName;
        spec.imageName = opts.imageName;
        spec.pqName = opts.pqName;
        if (!knownSignals)
            spec.content = opts.content;
        spec.silentPauses = opts.silentPauses;
        spec.imageStreams = std::min(opts.imageStreams, int(spec.tracks.size()));
        spec.streamGapFrames = opts.streamGapFrames;
        spec.startSector = opts.startSector;
        spec.dataStream = opts.dataStream;
        spec.checksums = opts.checksums;
        spec.faults = faults;
    } else {
        return fail(QStringLiteral("unknown command %1 (try --help)").arg(command));
    }

    QElapsedTimer timer;
    timer.start();
    QString error;
    if (!mkddp::writeDisc(spec, dir, &error)) {
        std::fprintf(stderr, "tivora-mkddp: %s\n", qPrintable(error));
        return 1;
    }
    if (printExpected) {
        const QJsonObject expected{
            {QStringLiteral("rows"), mkddp::expectedRows(spec)},
            {QStringLiteral("indexList"), mkddp::expectedIndexList(spec)},
            {QStringLiteral("cdText"), mkddp::expectedCdText(spec)},
        };
        const QByteArray json = QJsonDocument(expected).toJson(QJsonDocument::Compact) + '\n';
        std::fwrite(json.constData(), 1, size_t(json.size()), stdout);
        return 0;
    }
    std::printf("%s: %d tracks, %lld bytes of audio, %.2f s\n", qPrintable(dir),
                int(spec.tracks.size()), static_cast<long long>(mkddp::imageSize(spec)),
                timer.elapsed() / 1000.0);
    return 0;
}
