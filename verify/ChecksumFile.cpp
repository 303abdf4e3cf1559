#include "verify/ChecksumFile.h"

#include <algorithm>
#include <cctype>
#include <cstdint>

namespace {

std::vector<std::string> splitLines(const std::string& bytes)
{
    std::vector<std::string> lines;
    std::size_t start = 0;
    // A byte order mark from Windows editors is not part of the first name.
    if (bytes.compare(0, 3, "\xEF\xBB\xBF") == 0)
        start = 3;
    while (start < bytes.size()) {
        std::size_t end = bytes.find('\n', start);
        if (end == std::string::npos)
            end = bytes.size();
        std::string line = bytes.substr(start, end - start);
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        lines.push_back(std::move(line));
        start = end + 1;
    }
    return lines;
}

bool isBlank(const std::string& line)
{
    return std::all_of(line.begin(), line.end(),
                       [](char c) { return std::isspace(static_cast<unsigned char>(c)); });
}

std::string trimmed(const std::string& text)
{
    const auto first = std::find_if_not(text.begin(), text.end(), [](char c) {
        return std::isspace(static_cast<unsigned char>(c));
    });
    const auto last = std::find_if_not(text.rbegin(), text.rend(), [](char c) {
                          return std::isspace(static_cast<unsigned char>(c));
                      }).base();
    return first < last ? std::string(first, last) : std::string();
}

std::string lower(std::string text)
{
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

bool isHex(const std::string& text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
        return std::isxdigit(static_cast<unsigned char>(c));
    });
}

// Checksum files written one folder up name the files with their folder.
std::string baseName(const std::string& name)
{
    const std::size_t slash = name.find_last_of("/\\");
    return slash == std::string::npos ? name : name.substr(slash + 1);
}

// "<32 hex> *NAME" (binary mode) or "<32 hex>  NAME" (text mode).
std::optional<ChecksumEntry> md5Line(const std::string& line)
{
    if (line.size() < 35 || !isHex(line.substr(0, 32)) || line[32] != ' ' ||
        (line[33] != ' ' && line[33] != '*'))
        return std::nullopt;
    ChecksumEntry entry;
    entry.algorithm = ChecksumAlgorithm::Md5;
    entry.expected = lower(line.substr(0, 32));
    entry.name = baseName(line.substr(34));
    if (entry.name.empty())
        return std::nullopt;
    return entry;
}

} // namespace

bool sameNameIgnoringCase(const std::string& a, const std::string& b)
{
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) ==
                      std::tolower(static_cast<unsigned char>(y));
           });
}

bool looksLikeChecksumFileName(const std::string& fileName)
{
    const std::string name = lower(fileName);
    auto endsWith = [&name](const char* suffix) {
        const std::string s(suffix);
        return name.size() >= s.size() && name.compare(name.size() - s.size(), s.size(), s) == 0;
    };
    return endsWith(".md5") || endsWith(".crc") || endsWith(".sfv") || endsWith(".sha1") ||
           endsWith(".sha256") || name.find("checksum") != std::string::npos ||
           name.find("md5") != std::string::npos;
}

std::optional<ChecksumFile> parseChecksumFile(const std::string& fileName, const std::string& bytes)
{
    const std::vector<std::string> lines = splitLines(bytes);

    ChecksumFile md5;
    md5.fileName = fileName;
    md5.format = ChecksumFile::Md5Sum;
    for (const std::string& line : lines) {
        if (isBlank(line) || line[0] == '#')
            continue;
        if (std::optional<ChecksumEntry> entry = md5Line(line))
            md5.entries.push_back(std::move(*entry));
        else
            ++md5.unreadLines;
    }
    if (!md5.entries.empty())
        return md5;

    ChecksumFile crc;
    crc.fileName = fileName;
    crc.format = ChecksumFile::Crc32Ini;
    bool inSection = false;
    bool sawSection = false;
    for (const std::string& raw : lines) {
        const std::string line = trimmed(raw);
        if (line.empty() || line[0] == ';' || line[0] == '#')
            continue;
        if (line.front() == '[') {
            inSection = sameNameIgnoringCase(line, "[CRC32 Checksum]");
            sawSection = sawSection || inSection;
            continue;
        }
        if (!inSection)
            continue;
        const std::size_t equals = line.rfind('=');
        std::string value =
            equals == std::string::npos ? std::string() : trimmed(line.substr(equals + 1));
        if (value.size() > 2 && (value.compare(0, 2, "0x") == 0 || value.compare(0, 2, "0X") == 0))
            value = value.substr(2);
        const std::string name =
            equals == std::string::npos ? std::string() : baseName(trimmed(line.substr(0, equals)));
        if (name.empty() || !isHex(value) || value.size() > 8) {
            ++crc.unreadLines;
            continue;
        }
        ChecksumEntry entry;
        entry.algorithm = ChecksumAlgorithm::Crc32;
        entry.name = name;
        // Leading zeros are sometimes left out.
        entry.expected = std::string(8 - value.size(), '0') + lower(value);
        crc.entries.push_back(std::move(entry));
    }
    if (sawSection && !crc.entries.empty())
        return crc;

    if (!looksLikeChecksumFileName(fileName))
        return std::nullopt;
    ChecksumFile unknown;
    unknown.fileName = fileName;
    unknown.format = ChecksumFile::Unrecognised;
    return unknown;
}
