#include "ddp/DdpFileSource.h"

#include "ddp/DdpFileLookup.h"

#include <algorithm>
#include <cctype>

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
