#pragma once

#include "archive/ZipArchive.h"
#include "ddp/DdpFileSource.h"
#include "ddp/DiscImage.h"
#include "ddp/ErrorKind.h"
#include "ddp/ReadLimits.h"

#include <QString>

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

struct ImageLayout;
class UnpackFolder;

// The most audio that is unpacked from an archive: a fifth over the 870 MB
// of the longest disc. An entry that claims more is a zip bomb, not a disc.
inline constexpr std::uint64_t kMaxUnpackedImageBytes = 870'000'000ull * 12 / 10;
// The most any one compressed entry of the DDP may claim: the image and the
// most the loader reads of every other file.
inline constexpr std::uint64_t kMaxUnpackedEntryBytes = kMaxUnpackedImageBytes + kDdpidReadBytes +
                                                        kMaxDdpmsBytes + kMaxPqDescriptorBytes +
                                                        kMaxCdTextBytes;

// True for a path ending in ".zip" (any case) that is a regular file: what
// opens as an archive rather than as a file inside a DDP folder.
bool isZipArchivePath(const QString& path);

// A DDP inside a ZIP archive, at its root or in the first folder that holds
// both DDPID and DDPMS. As a file source it gives the loader the files of
// that folder, names matched like a folder's (the exact name, then ignoring
// ASCII case), with the same size limits; so the loader runs unchanged.
//
// The audio is read through DiscImage: entries stored without compression
// (the usual case) in place, through libzip; compressed ones unpacked once
// into a private folder that goes with this object.
//
// Stored entries are read with libzip's seek and read rather than as a file
// range of the archive at the entry's data offset: libzip 1.7 does not say
// where an entry's data starts, and reading the local header ourselves would
// be a second ZIP parser beside the library. The cost is one lock per
// archive (libzip's handle is not thread-safe) and no mapped export, which
// reading at disk speed does not notice.
class ArchiveDdp : public IDdpFileSource
{
public:
    struct Options
    {
        QString unpackBase; // empty: UnpackFolder::defaultBase()
        std::uint64_t maxUnpackedImage = kMaxUnpackedImageBytes;
        std::uint64_t maxUnpackedEntry = kMaxUnpackedEntryBytes;
    };
    struct Opened
    {
        std::shared_ptr<ArchiveDdp> ddp; // null on failure
        LoadResult result;               // NoError, DdpidMissing, DdpmsMissing or ArchiveInvalid
    };
    // Opens the archive and checks every entry: damaged, truncated or
    // encrypted archives, links, names that leave the archive and entries
    // claiming more than the limits are ArchiveInvalid, with the reason as
    // the message; an archive without a DDP is the kind a folder without one
    // gets. Removes the unpack folders of processes that are gone.
    static Opened open(const QString& path, const Options& options);
    static Opened open(const QString& path) { return open(path, Options()); }
    ~ArchiveDdp() override;

    const QString& archivePath() const { return m_archive->path(); }
    // The DDP's folder inside the archive, as written there with its slash
    // ("DISC/"), or "" at the root.
    const std::string& folderInArchive() const { return m_folder; }

    FileContent readFile(const std::string& name, std::uint64_t limit) const override;
    std::optional<std::string> readFileHead(const std::string& name,
                                            std::uint64_t limit) const override;
    std::optional<std::uint64_t> fileSize(const std::string& name) const override;
    // The regular entries of the DDP's folder in the archive.
    std::vector<std::string> fileNames() const override;
    // A stored entry is read in place; a compressed one is unpacked into
    // memory when it holds at most kMaxWholeFileInMemory bytes (the audio
    // of a compressed image is read through openImage's DiscImage instead).
    std::shared_ptr<const DiscImage> openWholeFile(const std::string& name) const override;
    static constexpr std::uint64_t kMaxWholeFileInMemory = 64ull << 20;

    // What went wrong while the loader read a file that the directory lists
    // but that does not unpack to what it claims; empty when nothing did.
    std::string damage() const;

    // Bytes unpacked so far of those to unpack.
    using Progress = std::function<void(std::uint64_t done, std::uint64_t total)>;
    // The disc's audio. Compressed streams are unpacked on the first call
    // (reporting progress, stopped by `cancel`); a failure is ArchiveInvalid
    // with the reason, or "cancelled" as the message when cancelled.
    std::shared_ptr<const DiscImage> openImage(const ImageLayout& layout,
                                               const Progress& progress = {},
                                               const std::atomic<bool>* cancel = nullptr,
                                               LoadResult* error = nullptr);
    // The bytes openImage still has to unpack for `layout`: 0 when every
    // stream is stored (or unpacked already) and the image opens at once.
    std::uint64_t bytesToUnpack(const ImageLayout& layout) const;
    // Where compressed streams were unpacked; empty before any was.
    QString unpackFolder() const;

private:
    ArchiveDdp() = default;
    const ZipArchive::Entry* find(const std::string& name) const;
    void noteDamage(const ZipArchive::Entry& entry, const QString& error) const;

    std::shared_ptr<ZipArchive> m_archive;
    Options m_options;
    std::string m_folder;                        // "" or "NAME/" inside the archive, with its slash
    std::map<std::uint64_t, QString> m_unpacked; // entry index -> unpacked file
    std::unique_ptr<UnpackFolder> m_unpackFolder;
    mutable std::mutex m_damageMutex;
    mutable std::string m_damage; // written by the loader's reads
};
