#pragma once

#include <QString>

#include <cstdint>
#include <optional>
#include <string>

class QFile;

// Every file of a DDP comes from outside, often unpacked from a client's
// archive, so anything may stand at a file's name: a named pipe, a device, a
// folder. Only regular files (after following links) are read, and they are
// opened in a way that cannot block: a pipe with no writer would otherwise
// hold the caller for good, and /dev/zero never ends.

// The size of the regular file at `path`, or nothing when there is none
// (absent, a folder, a pipe, a device, a socket, an empty path).
std::optional<std::uint64_t> regularFileSize(const QString& path);

// Opens the regular file at `path` read-only. False, with the file closed,
// for anything else; `reason` then says why in the system's words.
bool openRegularFile(QFile& file, const QString& path, QString* reason = nullptr);

// What reading a whole file up to a limit found.
struct FileContent
{
    enum Status
    {
        Read,     // `bytes` holds the whole file
        Missing,  // no regular file there, or it could not be read
        TooLarge, // a regular file larger than the limit; nothing was read
    };
    Status status = Missing;
    std::string bytes;
};

// Reads the whole regular file at `path` when it holds at most `limit` bytes.
FileContent readRegularFile(const QString& path, std::uint64_t limit);

// Reads at most the first `limit` bytes of the regular file at `path`.
std::optional<std::string> readRegularFileHead(const QString& path, std::uint64_t limit);
