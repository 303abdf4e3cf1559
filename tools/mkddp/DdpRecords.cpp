// The DDPID and DDPMS files, in the DDP 2.00 record layouts (DDPID in 1.01 too).
#include "tools/mkddp/Bytes.h"
#include "tools/mkddp/DiscFiles.h"
#include "tools/mkddp/Expected.h"

namespace mkddp {

namespace {

constexpr int kRecordSize = 128;

QByteArray mapPacket(const QByteArray& streamType, const QByteArray& subcode,
                     const QByteArray& name, qint64 length, bool zeroPad, qint64 startSector = 0,
                     const QByteArray& cdMode = QByteArray())
{
    QByteArray p(kRecordSize, ' ');
    putField(p, 0, 4, "VVVM");
    putField(p, 4, 2, streamType);
    putField(p, 6, 8, digits(0, 8));            // data stream pointer
    putField(p, 14, 8, digits(length, 8));      // data stream length
    putField(p, 22, 8, digits(startSector, 8)); // data stream start
    putField(p, 30, 8, subcode);
    putField(p, 38, 2,
             !cdMode.isEmpty()    ? cdMode
             : streamType == "D0" ? QByteArray("DA")
                                  : QByteArray());
    putField(p, 40, 1, "0");                              // source storage mode
    putField(p, 41, 1, "0");                              // scrambled
    putField(p, 42, 4, digits(0, 4));                     // pre-gap 1
    putField(p, 46, 4, digits(0, 4));                     // pre-gap 2
    putField(p, 50, 4, digits(0, 4));                     // post-gap
    putField(p, 54, 1, "0");                              // media number
    putField(p, 55, 2, digits(0, 2));                     // track
    putField(p, 57, 2, digits(0, 2));                     // index
    putField(p, 71, 3, digits(qMin(name.size(), 17), 3)); // identifier size
    putField(p, 74, 17, name, zeroPad ? '\0' : ' ');
    return p;
}

} // namespace

QByteArray ddpidBytes(const DiscSpec& spec)
{
    QByteArray id(kRecordSize, ' ');
    QByteArray level = spec.ddpLevel;
    if (spec.has(Fault::DdpidBadTag))
        level.replace(0, 4, "DDQ ");
    putField(id, 0, 8, level);
    putField(id, 8, 13, spec.has(Fault::UpcMismatch) ? QByteArray("5901234123457") : spec.upcEan);
    putField(id, 21, 8, digits(0, 8));        // map stream start
    putField(id, 38, 48, "TIVORA TEST DISC"); // master identifier
    if (level.startsWith("DDP 1.")) {
        // 1.01 has no media type, side, layer or direction fields: after the
        // master identifier comes free text, which a reader must not take
        // for them.
        putField(id, 86, 42, "CD MASTER 1989 XXXXXXXXXXXX");
        return id;
    }
    putField(id, 87, 2, "DA");   // CD-DA
    putField(id, 89, 4, "1010"); // sides, side, layers, layer
    putField(id, 93, 1, "I");    // direction: inside out
    return id;
}

QByteArray ddpmsBytes(const DiscSpec& spec)
{
    if (spec.has(Fault::DdpmsEmpty))
        return {};
    const bool zeroPad = spec.zeroPadNames;
    QByteArray ms;
    if (!spec.has(Fault::NoImagePacket)) {
        // A single stream's length is the disc's, even where a fault cuts
        // its file short.
        const QVector<ImageStreamFile> streams = imageStreamFiles(spec);
        for (const ImageStreamFile& stream : streams) {
            const qint64 bytes = streams.size() == 1 ? imageSize(spec) : stream.end - stream.begin;
            ms +=
                mapPacket("D0", "", stream.name, bytes / kBytesPerCdFrame, zeroPad, stream.sector);
        }
    }
    if (spec.dataStream)
        ms += mapPacket("D0", "", kDataStreamName, kDataStreamBytes / 2048, zeroPad,
                        spec.startSector + imageSize(spec) / kBytesPerCdFrame + 11400, "M1");
    if (spec.has(Fault::DdpmsGarbagePackets)) {
        QByteArray garbage(2 * kRecordSize, '\xA5');
        putField(garbage, 0, 4, "GARB");
        putField(garbage, kRecordSize, 4, "VVVm");
        ms += garbage;
    }
    if (!spec.has(Fault::NoPqPacket))
        ms += mapPacket("S0", "PQ DESCR", spec.pqName, pqBytes(spec).size(), zeroPad);
    if (spec.cdText)
        ms += mapPacket("S0", "CDTEXT  ", spec.cdTextName, cdTextBytes(spec).size(), zeroPad);
    if (spec.has(Fault::DdpmsTooLarge)) {
        // Sound packets of a stream nobody reads, one more map's worth.
        const QByteArray spare = mapPacket("D2", "", "SPARE.DAT", 0, zeroPad);
        for (int i = 0; i < 1024; ++i)
            ms += spare;
    }
    if (spec.has(Fault::DdpmsBadFirstTag) && !ms.isEmpty())
        putField(ms, 0, 4, "VVVX");
    if (spec.has(Fault::DdpmsShortLastPacket) && ms.size() >= kRecordSize)
        ms.chop(kRecordSize - 100);
    return ms;
}

} // namespace mkddp
