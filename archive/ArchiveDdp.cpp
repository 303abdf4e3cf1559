#include "archive/ArchiveDdp.h"

#include "archive/UnpackFolder.h"
#include "ddp/DdpNames.h"
#include "ddp/ImageLayout.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cctype>

namespace {

bool sameIgnoringCase(const std::string& a, const std::string& b)
{
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) ==
                      std::tolower(static_cast<unsigned char>(y));
           });
}

// A name that would land outside a folder it was unpacked into: absolute,
// with a drive letter, or with a ".." part (either slash counts, as some
// tools write Windows paths).
bool leavesFolder(const std::string& name)
{
    if (name.empty() || name[0] == '/' || name[0] == '\\')
        return true;
    if (name.size() >= 2 && name[1] == ':')
        return true;
    std::size_t start = 0;
    while (start <= name.size()) {
        const std::size_t end = std::min(name.find_first_of("/\\", start), name.size());
        if (name.compare(start, end - start, "..") == 0)
            return true;
        start = end + 1;
    }
    return name.find('\0') != std::string::npos;
}

std::string parentOf(const std::string& name)
{
    const std::size_t slash = name.rfind('/');
    return slash == std::string::npos ? std::string() : name.substr(0, slash + 1);
}

std::string baseOf(const std::string& name)
{
    const std::size_t slash = name.rfind('/');
    return slash == std::string::npos ? name : name.substr(slash + 1);
}

QString entryName(const std::string& name)
{
    return QString::fromUtf8(name.data(), static_cast<int>(name.size()));
}

LoadResult invalid(const QString& message)
{
    return {ErrorKind::ArchiveInvalid, message.toStdString()};
}

// Stored bytes of one entry, read in place.
class StoredEntrySource : public DiscImage::Source
{
public:
    StoredEntrySource(std::shared_ptr<const ZipArchive> archive, ZipArchive::Entry entry)
        : m_archive(std::move(archive)), m_entry(std::move(entry))
    {}
    std::uint64_t read(std::uint64_t offset, char* out, std::uint64_t size) const override
    {
        return m_archive->readStored(m_entry, offset, out, size);
    }

private:
    std::shared_ptr<const ZipArchive> m_archive;
    ZipArchive::Entry m_entry;
};

} // namespace

bool isZipArchivePath(const QString& path)
{
    return path.endsWith(QLatin1String(".zip"), Qt::CaseInsensitive) && QFileInfo(path).isFile();
}

ArchiveDdp::Opened ArchiveDdp::open(const QString& path, const Options& options)
{
    Opened opened;
    const QString base =
        options.unpackBase.isEmpty() ? UnpackFolder::defaultBase() : options.unpackBase;
    UnpackFolder::removeStale(base);

    QString error;
    std::shared_ptr<ZipArchive> archive = ZipArchive::open(path, &error);
    if (!archive) {
        opened.result = invalid(QStringLiteral("%1 cannot be read as a ZIP archive: %2.")
                                    .arg(QFileInfo(path).fileName(), error));
        return opened;
    }
    for (const ZipArchive::Entry& entry : archive->entries()) {
        const QString name = entryName(entry.name);
        if (leavesFolder(entry.name)) {
            opened.result =
                invalid(QStringLiteral("The entry \"%1\" leads out of the archive.").arg(name));
            return opened;
        }
        if (entry.symlink) {
            opened.result = invalid(QStringLiteral("The entry \"%1\" is a link.").arg(name));
            return opened;
        }
        if (entry.encrypted) {
            opened.result = invalid(QStringLiteral("The entry \"%1\" is encrypted.").arg(name));
            return opened;
        }
    }

    // The root first, then the first folder in the archive's order.
    std::vector<std::string> folders{std::string()};
    for (const ZipArchive::Entry& entry : archive->entries()) {
        const std::string parent = parentOf(entry.name);
        if (std::find(folders.begin(), folders.end(), parent) == folders.end())
            folders.push_back(parent);
    }
    auto holds = [&](const std::string& folder, const char* file) {
        return std::any_of(archive->entries().begin(), archive->entries().end(),
                           [&](const ZipArchive::Entry& e) {
                               return e.regular && parentOf(e.name) == folder &&
                                      sameIgnoringCase(baseOf(e.name), file);
                           });
    };
    bool anyDdpid = false;
    std::optional<std::string> found;
    for (const std::string& folder : folders) {
        const bool ddpid = holds(folder, "DDPID");
        anyDdpid = anyDdpid || ddpid;
        if (ddpid && holds(folder, "DDPMS")) {
            found = folder;
            break;
        }
    }
    if (!found) {
        opened.result.kind = anyDdpid ? ErrorKind::DdpmsMissing : ErrorKind::DdpidMissing;
        return opened;
    }
    for (const ZipArchive::Entry& entry : archive->entries()) {
        if (parentOf(entry.name) == *found && !entry.stored &&
            entry.size > options.maxUnpackedEntry) {
            opened.result =
                invalid(QStringLiteral("The entry \"%1\" claims to unpack to %2 bytes, more than "
                                       "any DDP holds.")
                            .arg(entryName(entry.name))
                            .arg(entry.size));
            return opened;
        }
    }

    opened.ddp.reset(new ArchiveDdp);
    opened.ddp->m_archive = std::move(archive);
    opened.ddp->m_options = options;
    opened.ddp->m_options.unpackBase = base;
    opened.ddp->m_folder = *found;
    opened.result.kind = ErrorKind::NoError;
    return opened;
}

ArchiveDdp::~ArchiveDdp() = default;

const ZipArchive::Entry* ArchiveDdp::find(const std::string& name) const
{
    // Like a folder: the name up to its first zero byte, never a path.
    const std::string key = name.substr(0, name.find('\0'));
    if (key.empty() || key == "." || key == ".." || key.find_first_of("/\\") != std::string::npos)
        return nullptr;
    const ZipArchive::Entry* caseless = nullptr;
    for (const ZipArchive::Entry& entry : m_archive->entries()) {
        if (!entry.regular || parentOf(entry.name) != m_folder)
            continue;
        const std::string base = baseOf(entry.name);
        if (base == key)
            return &entry;
        if (!caseless && sameIgnoringCase(base, key))
            caseless = &entry;
    }
    return caseless;
}

FileContent ArchiveDdp::readFile(const std::string& name, std::uint64_t limit) const
{
    FileContent content;
    const ZipArchive::Entry* entry = find(name);
    if (!entry)
        return content;
    if (entry->size > limit) {
        content.status = FileContent::TooLarge;
        return content;
    }
    QString error;
    std::optional<std::string> bytes = m_archive->readAll(*entry, limit, &error);
    if (!bytes) {
        noteDamage(*entry, error);
        return content;
    }
    content.status = FileContent::Read;
    content.bytes = std::move(*bytes);
    return content;
}

std::optional<std::string> ArchiveDdp::readFileHead(const std::string& name,
                                                    std::uint64_t limit) const
{
    const ZipArchive::Entry* entry = find(name);
    if (!entry)
        return std::nullopt;
    QString error;
    std::optional<std::string> head = m_archive->readHead(*entry, limit, &error);
    if (!head)
        noteDamage(*entry, error);
    return head;
}

std::optional<std::uint64_t> ArchiveDdp::fileSize(const std::string& name) const
{
    if (const ZipArchive::Entry* entry = find(name))
        return entry->size;
    return std::nullopt;
}

std::vector<std::string> ArchiveDdp::fileNames() const
{
    std::vector<std::string> names;
    for (const ZipArchive::Entry& entry : m_archive->entries())
        if (entry.regular && !entry.directory && parentOf(entry.name) == m_folder)
            names.push_back(baseOf(entry.name));
    return names;
}

std::shared_ptr<const DiscImage> ArchiveDdp::openWholeFile(const std::string& name) const
{
    const ZipArchive::Entry* entry = find(name);
    if (!entry)
        return nullptr;
    if (entry->stored) {
        DiscImage::Segment segment;
        segment.kind = DiscImage::Segment::Kind::Source;
        segment.path = m_archive->path() + QLatin1Char('/') + entryName(entry->name);
        segment.length = entry->size;
        return DiscImage::open({segment}, {std::make_shared<StoredEntrySource>(m_archive, *entry)});
    }
    QString error;
    std::optional<std::string> bytes = m_archive->readAll(*entry, kMaxWholeFileInMemory, &error);
    if (!bytes)
        return nullptr;
    return openBytesAsImage(std::move(*bytes), entryName(entry->name));
}

void ArchiveDdp::noteDamage(const ZipArchive::Entry& entry, const QString& error) const
{
    std::lock_guard<std::mutex> lock(m_damageMutex);
    if (m_damage.empty())
        m_damage = QStringLiteral("The entry \"%1\" cannot be read: %2.")
                       .arg(entryName(entry.name), error)
                       .toStdString();
}

std::string ArchiveDdp::damage() const
{
    std::lock_guard<std::mutex> lock(m_damageMutex);
    return m_damage;
}

QString ArchiveDdp::unpackFolder() const
{
    return m_unpackFolder ? m_unpackFolder->path() : QString();
}

std::uint64_t ArchiveDdp::bytesToUnpack(const ImageLayout& layout) const
{
    std::uint64_t total = 0;
    for (const ImageStream& stream : layout.streams)
        if (const ZipArchive::Entry* entry = find(stream.name))
            if (!entry->stored && !m_unpacked.count(entry->index))
                total += entry->size;
    return total;
}

std::shared_ptr<const DiscImage> ArchiveDdp::openImage(const ImageLayout& layout,
                                                       const Progress& progress,
                                                       const std::atomic<bool>* cancel,
                                                       LoadResult* error)
{
    auto fail = [error](LoadResult result) -> std::shared_ptr<const DiscImage> {
        if (error)
            *error = std::move(result);
        return nullptr;
    };
    if (layout.streams.empty())
        return fail({ErrorKind::ImageMissing, {}});

    std::vector<const ZipArchive::Entry*> entries;
    for (const ImageStream& stream : layout.streams) {
        const ZipArchive::Entry* entry = find(stream.name);
        if (!entry)
            return fail({ErrorKind::ImageMissing, {}});
        entries.push_back(entry);
    }
    const std::uint64_t toUnpack = bytesToUnpack(layout);
    if (toUnpack > m_options.maxUnpackedImage)
        return fail(
            invalid(QStringLiteral("The audio unpacks to %1 bytes, more than any disc holds.")
                        .arg(toUnpack)));

    std::uint64_t unpackedBefore = 0;
    std::vector<DiscImage::Segment> segments;
    std::vector<std::shared_ptr<const DiscImage::Source>> sources;
    std::uint64_t end = 0;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const ZipArchive::Entry& entry = *entries[i];
        const ImageStream& stream = layout.streams[i];
        if (stream.discOffset > end) {
            DiscImage::Segment gap;
            gap.length = stream.discOffset - end;
            segments.push_back(gap);
            sources.emplace_back();
        }
        end = stream.discOffset + stream.length;
        DiscImage::Segment segment;
        segment.length = stream.length;
        segment.path = m_archive->path() + QLatin1Char('/') + entryName(entry.name);
        if (entry.stored) {
            // An entry that claims more than the archive holds shows here,
            // not as a short read in the middle of playback.
            char last = 0;
            if (entry.size > 0 && m_archive->readStored(entry, entry.size - 1, &last, 1) != 1)
                return fail(invalid(
                    QStringLiteral("The entry \"%1\" claims %2 bytes, more than the archive holds.")
                        .arg(entryName(entry.name))
                        .arg(entry.size)));
            segment.kind = DiscImage::Segment::Kind::Source;
            segments.push_back(segment);
            sources.push_back(std::make_shared<StoredEntrySource>(m_archive, entry));
            continue;
        }
        auto unpacked = m_unpacked.find(entry.index);
        if (unpacked == m_unpacked.end()) {
            QString why;
            if (!m_unpackFolder) {
                m_unpackFolder = UnpackFolder::create(m_options.unpackBase, &why);
                if (!m_unpackFolder)
                    return fail({ErrorKind::ImageMissing, why.toStdString()});
            }
            // Our own name, never the entry's: nothing the archive says can
            // reach outside the folder.
            const QString path = QDir(m_unpackFolder->path())
                                     .filePath(QStringLiteral("stream-%1.pcm").arg(entry.index));
            QFile out(path);
            if (!out.open(QIODevice::WriteOnly | QIODevice::NewOnly))
                return fail({ErrorKind::ImageMissing,
                             QStringLiteral("%1: %2").arg(path, out.errorString()).toStdString()});
            const std::uint64_t before = unpackedBefore;
            const bool ok = m_archive->unpack(
                entry, out,
                [&](std::uint64_t done) {
                    if (progress)
                        progress(before + done, toUnpack);
                },
                cancel, &why);
            out.close();
            if (!ok) {
                QFile::remove(path);
                if (cancel && cancel->load())
                    return fail({ErrorKind::ArchiveInvalid, "cancelled"});
                return fail(invalid(QStringLiteral("The entry \"%1\" cannot be unpacked: %2.")
                                        .arg(entryName(entry.name), why)));
            }
            unpackedBefore += entry.size;
            unpacked = m_unpacked.emplace(entry.index, path).first;
        }
        segment.kind = DiscImage::Segment::Kind::File;
        segment.path = unpacked->second;
        segments.push_back(segment);
        sources.emplace_back();
    }
    QString why;
    std::shared_ptr<const DiscImage> image =
        DiscImage::open(std::move(segments), std::move(sources), &why);
    if (!image)
        return fail({ErrorKind::ImageMissing, why.toStdString()});
    return image;
}
