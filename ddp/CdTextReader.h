#pragma once

#include "ddp/CdTextRecord.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>

class IDdpFileSource;

// Decodes the first language block of a CD-Text stream (18-byte packs) into
// one CdTextRecord. A file that cannot be opened means the DDP has no
// CD-Text, which is never an error. A genre pack with a code outside 1..27
// throws std::out_of_range("invalid map<K, T> key"). A block longer than a
// disc allows (over 256 packs, its sequence numbers wrapped) is decoded
// whole, and the record says it will not fit the lead-in.
class CdTextReader
{
public:
    static constexpr std::size_t kPackSize = 18;

    // Nothing when the DDP has no CD-Text (no name, or the file cannot be
    // read). Throws std::length_error for a file over kMaxCdTextBytes.
    static std::optional<CdTextRecord> read(const IDdpFileSource& source,
                                            const std::string& fileName);
    // The whole stream's bytes; a last partial pack is ignored.
    static CdTextRecord decode(std::string_view data);

    // Code 1 "Not Defined" ... 20 "Pop Music", 21 "Rap", 22 "Reggae" ... 27
    // "World Music": the CD-Text standard's numbering, which real discs carry.
    static const std::map<int, std::string>& genreTable();

    // Code page 932 (Shift-JIS with the NEC and IBM extensions) to UTF-8;
    // an empty string when the text cannot be converted.
    static std::string cp932ToUtf8(std::string_view text);
};
