#pragma once

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

class QFile;
struct zip;
struct zip_file;

// A ZIP archive read through libzip, opened once with its consistency checks
// on. libzip's handle is not thread-safe, so every call that touches it takes
// one lock: playback and export may read stored entries at the same time.
class ZipArchive
{
public:
    struct Entry
    {
        std::string name; // the archive's bytes, as written
        std::uint64_t index = 0;
        std::uint64_t size = 0;           // unpacked, as the archive claims
        std::uint64_t compressedSize = 0; // as the archive claims
        bool stored = false;              // kept without compression
        bool encrypted = false;
        bool directory = false;
        bool symlink = false;
        bool regular = true; // no Unix type bits other than a regular file's
    };

    // Nothing, with `error` saying why in libzip's words, when the file is
    // not a ZIP archive or is damaged or truncated.
    static std::shared_ptr<ZipArchive> open(const QString& path, QString* error);
    ~ZipArchive();
    ZipArchive(const ZipArchive&) = delete;
    ZipArchive& operator=(const ZipArchive&) = delete;

    const QString& path() const { return m_path; }
    const std::vector<Entry>& entries() const { return m_entries; }

    // The whole entry when it unpacks to at most `limit` bytes; nothing on a
    // read error (`error` then says why) or when it holds more.
    std::optional<std::string> readAll(const Entry& entry, std::uint64_t limit,
                                       QString* error = nullptr) const;
    // At most the first `limit` bytes of the entry; nothing on a read error.
    std::optional<std::string> readHead(const Entry& entry, std::uint64_t limit,
                                        QString* error = nullptr) const;
    // Reads [offset, offset + size) of a stored entry in place; returns the
    // count read. The entry stays open for the next read.
    std::uint64_t readStored(const Entry& entry, std::uint64_t offset, char* out,
                             std::uint64_t size) const;

    // Unpacks the entry into `out`, calling `progress` with the bytes written
    // so far. Stops, false, when `cancel` is set, on a read or write error,
    // or when the entry unpacks to more than it claims (`error` says which).
    bool unpack(const Entry& entry, QFile& out,
                const std::function<void(std::uint64_t done)>& progress,
                const std::atomic<bool>* cancel, QString* error) const;

private:
    ZipArchive() = default;
    zip_file* openEntry(const Entry& entry, QString* error) const;
    // At most `count` bytes of the entry from its start, under the lock.
    std::optional<std::string> readUpTo(const Entry& entry, std::uint64_t count,
                                        QString* error) const;

    QString m_path;
    zip* m_zip = nullptr;
    std::vector<Entry> m_entries;
    // Every thread that reads (playback's reader thread, an export worker,
    // the loader on the GUI thread) takes m_mutex before touching m_zip or
    // m_openStored; m_entries is written once by open() and only read after.
    mutable std::mutex m_mutex;
    mutable std::map<std::uint64_t, zip_file*> m_openStored; // stored entries kept open
};
