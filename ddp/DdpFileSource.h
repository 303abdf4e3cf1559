#pragma once

#include "ddp/DiscImage.h"
#include "ddp/RegularFile.h"

#include <QString>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

// Where the reader gets the files of a DDP from. The parsers never see a
// path: the folder implementation opens files at the edge, the in-memory one
// lets tests and the fuzzer run without touching the disk.
//
// Both read only regular files, never more than the limit asked for, and
// resolve a name only inside the DDP (see DdpFileLookup.h).
class IDdpFileSource
{
public:
    virtual ~IDdpFileSource() = default;
    // The whole file when it holds at most `limit` bytes. Missing when it
    // cannot be opened (absent, not a regular file, outside the DDP,
    // unreadable, or an empty name), TooLarge when it is over the limit.
    virtual FileContent readFile(const std::string& name, std::uint64_t limit) const = 0;
    // At most the first `limit` bytes of the file, whatever its size (the
    // reader needs 128 bytes of DDPID, not a whole file somebody renamed).
    virtual std::optional<std::string> readFileHead(const std::string& name,
                                                    std::uint64_t limit) const = 0;
    // The size of the named regular file; nothing when there is none (used
    // for the audio image, which the loader never reads).
    virtual std::optional<std::uint64_t> fileSize(const std::string& name) const = 0;
    bool exists(const std::string& name) const { return fileSize(name).has_value(); }
    // The regular files beside the DDP's own (checksum files, for one), as
    // names that the calls above take. None where a source cannot list.
    virtual std::vector<std::string> fileNames() const { return {}; }
    // One whole file as a DiscImage of its own, so that a reader can take it
    // in blocks (checksums of files of any size); nothing when it cannot be
    // opened. Whatever readFile reads up to 64 MB opens here too.
    virtual std::shared_ptr<const DiscImage> openWholeFile(const std::string& name) const = 0;
};

// The files of a DDP folder on disk. Names are the map's byte strings, cut at
// their first zero byte and resolved case-insensitively when the exact name
// is absent.
class FolderFileSource : public IDdpFileSource
{
public:
    explicit FolderFileSource(QString folder);
    FileContent readFile(const std::string& name, std::uint64_t limit) const override;
    std::optional<std::string> readFileHead(const std::string& name,
                                            std::uint64_t limit) const override;
    std::optional<std::uint64_t> fileSize(const std::string& name) const override;
    std::vector<std::string> fileNames() const override;
    std::shared_ptr<const DiscImage> openWholeFile(const std::string& name) const override;
    // Where a name is looked for: the resolved path in the folder, or empty
    // when the name leads out of it.
    QString path(const std::string& name) const;

private:
    QString m_folder;
};

// Files held in memory, looked up like the folder's: the exact name, then an
// ASCII case-insensitive match; names are cut at their first zero byte.
class MemoryFileSource : public IDdpFileSource
{
public:
    void setFile(const std::string& name, std::string content);
    // The stored bytes, for tests that build one disc from another.
    std::optional<std::string> content(const std::string& name) const;

    FileContent readFile(const std::string& name, std::uint64_t limit) const override;
    std::optional<std::string> readFileHead(const std::string& name,
                                            std::uint64_t limit) const override;
    std::optional<std::uint64_t> fileSize(const std::string& name) const override;
    std::vector<std::string> fileNames() const override;
    std::shared_ptr<const DiscImage> openWholeFile(const std::string& name) const override;

private:
    const std::string* find(const std::string& name) const;
    std::map<std::string, std::string> m_files;
};

// Bytes in memory as a DiscImage of one Source segment called `name`.
std::shared_ptr<const DiscImage> openBytesAsImage(std::string bytes, const QString& name);
