#pragma once

#include <QString>

#include <memory>

class QLockFile;

// The private folder that compressed audio is unpacked into: one per process
// and disc, under a base folder of Tivora's own. Each folder has a lock file
// beside it ("<name>.lock", holding the owner's process id) for as long as
// its owner lives; the folder goes when the object goes (the next disc, or
// the program's end). A crash leaves both behind, and the next start removes
// every folder whose owner is gone.
class UnpackFolder
{
public:
    // ~/.cache/tivora/unpacked, or the system's temporary folder when there
    // is no cache folder.
    static QString defaultBase();
    // A new folder under `base` (made, owner-only, when absent). Nothing,
    // with `error` saying why, when it cannot be made.
    static std::unique_ptr<UnpackFolder> create(const QString& base, QString* error = nullptr);
    // Removes the folders under `base` whose owners are no longer running;
    // returns how many. Folders of running processes stay, whoever runs them.
    static int removeStale(const QString& base);

    ~UnpackFolder();
    UnpackFolder(const UnpackFolder&) = delete;
    UnpackFolder& operator=(const UnpackFolder&) = delete;

    const QString& path() const { return m_path; }

private:
    UnpackFolder() = default;
    QString m_path;
    std::unique_ptr<QLockFile> m_lock;
};
