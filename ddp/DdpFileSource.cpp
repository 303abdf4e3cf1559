#include "ddp/DdpFileSource.h"

#include "ddp/DdpFileLookup.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cctype>

std::optional<std::string> IDdpFileSource::readFileHead(const std::string& name,
                                                        std::size_t maxBytes) const
{
    std::optional<std::string> content = readFile(name);
    if (content && content->size() > maxBytes)
        content->resize(maxBytes);
    return content;
}

FolderFileSource::FolderFileSource(QString folder) : m_folder(std::move(folder)) {}

QString FolderFileSource::path(const std::string& name) const
{
    return resolveDdpFile(m_folder, ddpFileNameFromBytes(name));
}

namespace {

// Opens a regular file for reading; an empty name would be the folder itself,
// which cannot be read as a file.
bool openFile(QFile& file)
{
    if (QFileInfo(file.fileName()).isDir())
        return false;
    return file.open(QIODevice::ReadOnly);
}

} // namespace

std::optional<std::string> FolderFileSource::readFile(const std::string& name) const
{
    QFile file(path(name));
    if (!openFile(file))
        return std::nullopt;
    const QByteArray data = file.readAll();
    return data.toStdString();
}

std::optional<std::string> FolderFileSource::readFileHead(const std::string& name,
                                                          std::size_t maxBytes) const
{
    QFile file(path(name));
    if (!openFile(file))
        return std::nullopt;
    const QByteArray data = file.read(static_cast<qint64>(maxBytes));
    return data.toStdString();
}

bool FolderFileSource::exists(const std::string& name) const
{
    const QString trimmed = ddpFileNameFromBytes(name);
    if (trimmed.isEmpty())
        return false;
    return QFileInfo::exists(path(name));
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

std::optional<std::string> MemoryFileSource::readFile(const std::string& name) const
{
    if (const std::string* content = find(name))
        return *content;
    return std::nullopt;
}

bool MemoryFileSource::exists(const std::string& name) const
{
    return find(name) != nullptr;
}
