#include "ddp/DdpFileSource.h"

#include "ddp/DdpFileLookup.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <cctype>

namespace {

// Bytes held in memory, read as a DiscImage source.
class BytesSource : public DiscImage::Source
{
public:
    explicit BytesSource(std::string bytes) : m_bytes(std::move(bytes)) {}
    std::uint64_t read(std::uint64_t offset, char* out, std::uint64_t size) const override
    {
        if (offset >= m_bytes.size())
            return 0;
        const std::uint64_t count = std::min<std::uint64_t>(size, m_bytes.size() - offset);
        std::copy_n(m_bytes.data() + offset, count, out);
        return count;
    }

private:
    std::string m_bytes;
};

} // namespace

std::shared_ptr<const DiscImage> openBytesAsImage(std::string bytes, const QString& name)
{
    DiscImage::Segment segment;
    segment.kind = DiscImage::Segment::Kind::Source;
    segment.path = name;
    segment.length = bytes.size();
    return DiscImage::open({segment}, {std::make_shared<BytesSource>(std::move(bytes))});
}

FolderFileSource::FolderFileSource(QString folder) : m_folder(std::move(folder)) {}

QString FolderFileSource::path(const std::string& name) const
{
    return resolveDdpFile(m_folder, ddpFileNameFromBytes(name));
}

FileContent FolderFileSource::readFile(const std::string& name, std::uint64_t limit) const
{
    return readRegularFile(path(name), limit);
}

std::optional<std::string> FolderFileSource::readFileHead(const std::string& name,
                                                          std::uint64_t limit) const
{
    return readRegularFileHead(path(name), limit);
}

std::optional<std::uint64_t> FolderFileSource::fileSize(const std::string& name) const
{
    return regularFileSize(path(name));
}

std::vector<std::string> FolderFileSource::fileNames() const
{
    // Links are listed too: opening one goes through the same lookup as
    // every other name, which refuses a link out of the folder.
    std::vector<std::string> names;
    const QStringList entries =
        QDir(m_folder).entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Name);
    for (const QString& entry : entries)
        if (regularFileSize(QDir(m_folder).filePath(entry)))
            names.push_back(QFile::encodeName(entry).toStdString());
    return names;
}

std::shared_ptr<const DiscImage> FolderFileSource::openWholeFile(const std::string& name) const
{
    const QString resolved = path(name);
    if (resolved.isEmpty())
        return nullptr;
    return DiscImage::openFile(resolved);
}

void MemoryFileSource::setFile(const std::string& name, std::string content)
{
    m_files[name] = std::move(content);
}

const std::string* MemoryFileSource::find(const std::string& name) const
{
    const std::string key = name.substr(0, name.find('\0'));
    if (key.empty())
        return nullptr;
    if (auto it = m_files.find(key); it != m_files.end())
        return &it->second;
    auto lower = [](char c) {
        return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    };
    for (const auto& [fileName, content] : m_files) {
        if (fileName.size() == key.size() &&
            std::equal(fileName.begin(), fileName.end(), key.begin(),
                       [&](char a, char b) { return lower(a) == lower(b); }))
            return &content;
    }
    return nullptr;
}

std::optional<std::string> MemoryFileSource::content(const std::string& name) const
{
    if (const std::string* content = find(name))
        return *content;
    return std::nullopt;
}

FileContent MemoryFileSource::readFile(const std::string& name, std::uint64_t limit) const
{
    FileContent result;
    if (const std::string* content = find(name)) {
        if (content->size() > limit) {
            result.status = FileContent::TooLarge;
        } else {
            result.status = FileContent::Read;
            result.bytes = *content;
        }
    }
    return result;
}

std::optional<std::string> MemoryFileSource::readFileHead(const std::string& name,
                                                          std::uint64_t limit) const
{
    if (const std::string* content = find(name))
        return content->substr(
            0, static_cast<std::size_t>(std::min<std::uint64_t>(limit, content->size())));
    return std::nullopt;
}

std::optional<std::uint64_t> MemoryFileSource::fileSize(const std::string& name) const
{
    if (const std::string* content = find(name))
        return content->size();
    return std::nullopt;
}

std::vector<std::string> MemoryFileSource::fileNames() const
{
    std::vector<std::string> names;
    for (const auto& [name, content] : m_files)
        names.push_back(name);
    return names;
}

std::shared_ptr<const DiscImage> MemoryFileSource::openWholeFile(const std::string& name) const
{
    if (const std::string* content = find(name))
        return openBytesAsImage(*content, QString::fromStdString(name));
    return nullptr;
}
