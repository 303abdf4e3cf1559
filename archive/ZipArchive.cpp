#include "archive/ZipArchive.h"

#include <QFile>

#include <zip.h>

#include <sys/stat.h>

#include <algorithm>
#include <vector>

namespace {

QString libzipText(int code)
{
    zip_error_t error;
    zip_error_init_with_code(&error, code);
    const QString text = QString::fromLocal8Bit(zip_error_strerror(&error));
    zip_error_fini(&error);
    return text;
}

constexpr std::size_t kChunk = 1 << 20;

} // namespace

std::shared_ptr<ZipArchive> ZipArchive::open(const QString& path, QString* error)
{
    int code = 0;
    // The consistency checks compare every local header with the central
    // directory and refuse entries that run into it: a truncated or patched
    // archive fails here rather than halfway through playback.
    zip* handle = zip_open(QFile::encodeName(path).constData(), ZIP_RDONLY | ZIP_CHECKCONS, &code);
    if (!handle) {
        if (error)
            *error = libzipText(code);
        return nullptr;
    }
    std::shared_ptr<ZipArchive> archive(new ZipArchive);
    archive->m_path = path;
    archive->m_zip = handle;
    const zip_int64_t count = zip_get_num_entries(handle, 0);
    for (zip_int64_t i = 0; i < count; ++i) {
        const auto index = static_cast<zip_uint64_t>(i);
        zip_stat_t stat;
        zip_stat_init(&stat);
        if (zip_stat_index(handle, index, ZIP_FL_ENC_RAW, &stat) != 0) {
            if (error)
                *error = QString::fromLocal8Bit(zip_strerror(handle));
            return nullptr;
        }
        Entry entry;
        entry.index = index;
        entry.name = (stat.valid & ZIP_STAT_NAME) && stat.name ? stat.name : "";
        entry.size = (stat.valid & ZIP_STAT_SIZE) ? stat.size : 0;
        entry.compressedSize = (stat.valid & ZIP_STAT_COMP_SIZE) ? stat.comp_size : 0;
        entry.stored = (stat.valid & ZIP_STAT_COMP_METHOD) && stat.comp_method == ZIP_CM_STORE;
        entry.encrypted =
            (stat.valid & ZIP_STAT_ENCRYPTION_METHOD) && stat.encryption_method != ZIP_EM_NONE;
        entry.directory = !entry.name.empty() && entry.name.back() == '/';
        zip_uint8_t system = 0;
        zip_uint32_t attributes = 0;
        if (zip_file_get_external_attributes(handle, index, 0, &system, &attributes) == 0 &&
            system == ZIP_OPSYS_UNIX) {
            const zip_uint32_t type = (attributes >> 16) & S_IFMT;
            entry.symlink = type == S_IFLNK;
            entry.regular = type == 0 || type == S_IFREG;
            entry.directory = entry.directory || type == S_IFDIR;
        }
        entry.regular = entry.regular && !entry.directory;
        archive->m_entries.push_back(std::move(entry));
    }
    return archive;
}

ZipArchive::~ZipArchive()
{
    for (auto& [index, file] : m_openStored)
        zip_fclose(file);
    if (m_zip)
        zip_discard(m_zip);
}

zip_file* ZipArchive::openEntry(const Entry& entry, QString* error) const
{
    zip_file* file = zip_fopen_index(m_zip, entry.index, 0);
    if (!file && error)
        *error = QString::fromLocal8Bit(zip_strerror(m_zip));
    return file;
}

std::optional<std::string> ZipArchive::readUpTo(const Entry& entry, std::uint64_t count,
                                                QString* error) const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    zip_file* file = openEntry(entry, error);
    if (!file)
        return std::nullopt;
    std::string bytes(static_cast<std::size_t>(count), '\0');
    std::uint64_t done = 0;
    while (done < bytes.size()) {
        const zip_int64_t got = zip_fread(file, bytes.data() + done, bytes.size() - done);
        if (got < 0) {
            if (error)
                *error = QString::fromLocal8Bit(zip_file_strerror(file));
            zip_fclose(file);
            return std::nullopt;
        }
        if (got == 0)
            break;
        done += static_cast<std::uint64_t>(got);
    }
    zip_fclose(file);
    bytes.resize(static_cast<std::size_t>(done));
    return bytes;
}

std::optional<std::string> ZipArchive::readAll(const Entry& entry, std::uint64_t limit,
                                               QString* error) const
{
    if (entry.size > limit)
        return std::nullopt;
    // One byte past the claim shows an entry that unpacks to more.
    std::optional<std::string> bytes = readUpTo(entry, entry.size + 1, error);
    if (bytes && bytes->size() != entry.size) {
        if (error)
            *error = QStringLiteral("holds %1 bytes, not the %2 it claims")
                         .arg(bytes->size())
                         .arg(entry.size);
        return std::nullopt;
    }
    return bytes;
}

std::optional<std::string> ZipArchive::readHead(const Entry& entry, std::uint64_t limit,
                                                QString* error) const
{
    return readUpTo(entry, std::min(limit, entry.size), error);
}

std::uint64_t ZipArchive::readStored(const Entry& entry, std::uint64_t offset, char* out,
                                     std::uint64_t size) const
{
    if (!entry.stored || offset >= entry.size)
        return 0;
    size = std::min(size, entry.size - offset);
    std::lock_guard<std::mutex> lock(m_mutex);
    zip_file*& file = m_openStored[entry.index];
    if (!file)
        file = openEntry(entry, nullptr);
    if (!file)
        return 0;
    // Seeking is only possible in stored data, which is all this reads.
    if (zip_fseek(file, static_cast<zip_int64_t>(offset), SEEK_SET) != 0)
        return 0;
    std::uint64_t done = 0;
    while (done < size) {
        const zip_int64_t got = zip_fread(file, out + done, size - done);
        if (got <= 0)
            break;
        done += static_cast<std::uint64_t>(got);
    }
    return done;
}

bool ZipArchive::unpack(const Entry& entry, QFile& out,
                        const std::function<void(std::uint64_t done)>& progress,
                        const std::atomic<bool>* cancel, QString* error) const
{
    auto fail = [error](const QString& why) {
        if (error)
            *error = why;
        return false;
    };
    std::vector<char> buffer(kChunk);
    std::uint64_t done = 0;
    std::lock_guard<std::mutex> lock(m_mutex);
    zip_file* file = openEntry(entry, error);
    if (!file)
        return false;
    struct Closer
    {
        zip_file* file;
        ~Closer() { zip_fclose(file); }
    } closer{file};
    for (;;) {
        if (cancel && cancel->load(std::memory_order_relaxed))
            return fail(QStringLiteral("cancelled"));
        const zip_int64_t got = zip_fread(file, buffer.data(), buffer.size());
        if (got < 0)
            return fail(QString::fromLocal8Bit(zip_file_strerror(file)));
        if (got == 0)
            break;
        done += static_cast<std::uint64_t>(got);
        // A bomb stops at its claim, not at the end of the disk.
        if (done > entry.size)
            return fail(
                QStringLiteral("unpacks to more than the %1 bytes it claims").arg(entry.size));
        if (out.write(buffer.data(), got) != got)
            return fail(out.errorString());
        if (progress)
            progress(done);
    }
    if (done != entry.size)
        return fail(
            QStringLiteral("holds %1 bytes, not the %2 it claims").arg(done).arg(entry.size));
    if (!out.flush())
        return fail(out.errorString());
    return true;
}
