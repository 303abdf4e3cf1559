#include "tools/mkddp/Fault.h"

namespace mkddp {

namespace {

struct FaultInfo
{
    Fault fault;
    const char* name;
    int kind;
};

// Kinds: 5/6 no DDP, 7 image missing, 8 DDPID, 9 DDPMS, 10 PQ, 11 CD-Text, 12 loaded.
constexpr FaultInfo kFaults[] = {
    {Fault::NoDdpid, "no-ddpid", 6},
    {Fault::NoDdpms, "no-ddpms", 5},
    {Fault::DdpidBadTag, "ddpid-bad-tag", 8},
    {Fault::DdpmsEmpty, "ddpms-empty", 9},
    {Fault::DdpmsBadFirstTag, "ddpms-bad-first-tag", 9},
    {Fault::DdpmsGarbagePackets, "ddpms-garbage-packets", 12},
    {Fault::DdpmsShortLastPacket, "ddpms-short-last-packet", 12},
    {Fault::NoPqPacket, "no-pq-packet", 10},
    {Fault::NoPqFile, "no-pq-file", 10},
    {Fault::PqBadTag, "pq-bad-tag", 10},
    {Fault::PqNotANumber, "pq-not-a-number", 10},
    {Fault::PqTruncatedLast, "pq-truncated-last", 12},
    {Fault::LeadOutNotANumber, "lead-out-not-a-number", 12},
    {Fault::NoImagePacket, "no-image-packet", 7},
    {Fault::NoImageFile, "no-image-file", 7},
    {Fault::NoCdTextFile, "no-cdtext-file", 12},
    {Fault::CdTextEmptyFile, "cdtext-empty-file", 10},
    {Fault::CdTextBadGenre, "cdtext-bad-genre", 11},
    {Fault::CdTextLastTrackTooLow, "cdtext-last-track-too-low", 10},
    {Fault::CdTextExtraTrack, "cdtext-extra-track", 12},
    {Fault::CdTextBadDoubleByte, "cdtext-bad-double-byte", 12},
    {Fault::DdpmsTooLarge, "ddpms-too-large", 9},
    {Fault::PqTooManyEntries, "pq-too-many-entries", 10},
    {Fault::CdTextTooLarge, "cdtext-too-large", 11},
    {Fault::ImageEmpty, "image-empty", 12},
    {Fault::ImageCutShort, "image-cut-short", 12},
    {Fault::DuplicateTrackNumbers, "duplicate-track-numbers", 12},
    {Fault::TrackNumberGap, "track-number-gap", 10},
    {Fault::IndexGap, "index-gap", 12},
    {Fault::NoIndex01, "no-index-01", 12},
    {Fault::TimeNotRising, "time-not-rising", 12},
    {Fault::BadIsrc, "bad-isrc", 12},
    {Fault::DuplicateIsrc, "duplicate-isrc", 12},
    {Fault::UpcMismatch, "upc-mismatch", 12},
    {Fault::CdTextBadCrc, "cdtext-bad-crc", 12},
    {Fault::ImageTooLong, "image-too-long", 12},
    {Fault::ImagePartialFrame, "image-partial-frame", 12},
    {Fault::ChecksumFlippedByte, "checksum-flipped-byte", 12},
    {Fault::ChecksumMissingFile, "checksum-missing-file", 12},
    {Fault::ChecksumUnlistedFile, "checksum-unlisted-file", 12},
};

const FaultInfo& info(Fault fault)
{
    for (const FaultInfo& f : kFaults) {
        if (f.fault == fault)
            return f;
    }
    return kFaults[0]; // unreachable: every enumerator is listed
}

} // namespace

QString faultName(Fault fault)
{
    return QString::fromLatin1(info(fault).name);
}

std::optional<Fault> faultFromName(const QString& name)
{
    for (const FaultInfo& f : kFaults) {
        if (name == QLatin1String(f.name))
            return f.fault;
    }
    return std::nullopt;
}

QVector<Fault> allFaults()
{
    QVector<Fault> faults;
    for (const FaultInfo& f : kFaults)
        faults.append(f.fault);
    return faults;
}

QStringList allFaultNames()
{
    QStringList names;
    for (const FaultInfo& f : kFaults)
        names.append(QString::fromLatin1(f.name));
    return names;
}

int expectedKind(Fault fault)
{
    return info(fault).kind;
}

} // namespace mkddp
