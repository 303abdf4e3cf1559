#pragma once

#include <QString>

#include <map>
#include <optional>
#include <string>

// Where the reader gets the files of a DDP from. The parsers never see a
// path: the folder implementation opens files at the edge, the in-memory one
// lets tests and the fuzzer run without touching the disk.
class IDdpFileSource
{
public:
    virtual ~IDdpFileSource() = default;
    // The whole content of the named file, or nothing when it cannot be
    // opened (absent, a folder, unreadable, or an empty name).
    virtual std::optional<std::string> readFile(const std::string& name) const = 0;
    // At most the first maxBytes of the file (the reader needs 128 bytes of
    // DDPID, not a whole file somebody renamed).
    virtual std::optional<std::string> readFileHead(const std::string& name,
                                                    std::size_t maxBytes) const;
    // Whether the named file exists (used for the audio image, which the
    // loader never reads).
    virtual bool exists(const std::string& name) const = 0;
};

// The files of a DDP folder on disk. Names are the map's byte strings, cut at
// their first zero byte and resolved case-insensitively when the exact name
// is absent.
class FolderFileSource : public IDdpFileSource
{
public:
    explicit FolderFileSource(QString folder);
    std::optional<std::string> readFile(const std::string& name) const override;
    std::optional<std::string> readFileHead(const std::string& name,
                                            std::size_t maxBytes) const override;
    bool exists(const std::string& name) const override;
    // Where a name is looked for: the resolved path in the folder.
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
    std::optional<std::string> readFile(const std::string& name) const override;
    bool exists(const std::string& name) const override;

private:
    const std::string* find(const std::string& name) const;
    std::map<std::string, std::string> m_files;
};
