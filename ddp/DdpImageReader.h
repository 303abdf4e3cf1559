#pragma once

#include "ddp/DdpIdRecord.h"
#include "ddp/ErrorKind.h"
#include "ddp/MapPacket.h"
#include "ddp/PqEntry.h"

#include <QString>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

class IDdpFileSource;

// Turns the files of a DDP into records: DDPID, then the DDPMS map, then the
// PQ descriptor the map names. Tags are checked, a few fields are looked up by
// exact comparison; everything else is stored and never interpreted. The
// CD-Text and the audio image are not opened here.
class DdpImageReader
{
public:
    // The first file that could not be read, or Success. A failed read may
    // leave part of the records behind; the loader discards the reader then.
    ReadResult read(const IDdpFileSource& source);
    ReadResult read(const QString& folder);

    std::vector<MapPacket> mapPackets() const { return m_map; }
    std::vector<PqEntry> pqEntries() const { return m_pqEntries; }
    const std::vector<PqEntry>& pqEntriesRef() const { return m_pqEntries; }
    const DdpIdRecord& idRecord() const { return m_id; }
    // Why the last read failed, when there is more to say than its result
    // (a file over its size limit); empty otherwise.
    const std::string& failureDetail() const { return m_failureDetail; }

    // The audio image: the first "D0" packet's identifier without trailing
    // white space. Empty when there is no such packet.
    std::string imageFileName() const;
    // The first "PQ DESCR" packet's identifier without trailing white space.
    std::string pqFileName() const;
    // The first "CDTEXT  " packet's identifier with every blank removed,
    // wherever it stands (other white space stays).
    std::string cdTextFileName() const;

    // The bytes-level steps, for tests and the fuzzer.
    static bool parseMap(std::string_view data, std::vector<MapPacket>& map);
    static std::vector<PqEntry> parsePqEntries(std::string_view data);

private:
    ReadResult tooLarge(ReadResult result, std::string_view name, std::uint64_t limit);

    std::vector<MapPacket> m_map;
    DdpIdRecord m_id;
    std::vector<PqEntry> m_pqEntries;
    std::string m_failureDetail;
};
