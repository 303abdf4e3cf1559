#pragma once

#include <cstdint>
#include <map>
#include <string>

// Every failure the user can see ends in exactly one of these kinds. The values
// are fixed: the error dialog switches on them and `tivora-ddp` prints them.
enum class ErrorKind : std::uint32_t
{
    SampleRateNotRecommended = 0,
    SampleRateNotCompatible = 1,
    ChannelConfigurationNotCompatible = 2,
    UnknownAudioEngineError = 3,
    InvalidPath = 4,
    DdpmsMissing = 5,
    DdpidMissing = 6,
    ImageMissing = 7,
    DdpidInvalid = 8,
    DdpmsInvalid = 9,
    PqdescrInvalid = 10,
    UnknownError = 11,
    NoError = 12,
    // A ZIP archive that cannot be read: damaged, truncated, encrypted, or
    // holding entries that are never opened (links, names leaving the
    // archive, sizes no disc comes near).
    ArchiveInvalid = 13,
};

// What a loading step returns: the kind and a message (8-bit; only the audio
// engine's kind 3 and the loader's parse faults carry text).
struct LoadResult
{
    ErrorKind kind = ErrorKind::NoError;
    std::string message;
};

// The answer of DdpImageReader::read: the first file that could not be read.
enum class ReadResult : std::uint32_t
{
    DdpidUnreadable = 0,
    DdpmsUnreadable = 1,
    PqDescriptorUnreadable = 2,
    Success = 3,
};

// {0 -> 8, 1 -> 9, 2 -> 10}, built once. Looking up Success (or anything else
// outside the map) is a programming fault and throws std::out_of_range with
// "invalid map<K, T> key".
ErrorKind errorKindForReadResult(ReadResult result);
