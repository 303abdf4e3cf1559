#pragma once

#include <QFile>
#include <QString>

// A file written under a temporary name of its own beside its target,
// "NAME.<8 letters>.part", made new (a link planted at that name is never
// followed, two writers never share one) and renamed over the target in one
// step when complete. Anything else that goes wrong removes the temporary
// file and nothing else. A target that exists and is no regular file or
// link (a device) is written in place.
//
// One PartFile belongs to one thread at a time.
class PartFile
{
public:
    explicit PartFile(QString target);
    PartFile(const PartFile&) = delete;
    PartFile& operator=(const PartFile&) = delete;
    // Removes the temporary file unless it was committed.
    ~PartFile();

    // Opens the file for writing, unbuffered: every write reaches the system
    // at once, and so does its failure. An empty string on success, else
    // "Could not create …" with the system's reason.
    QString create();
    QFile& file() { return m_file; }
    // The name written to until commit().
    const QString& writingPath() const { return m_writingPath; }

    // "Could not write …" with the system's reason for the last failure
    // (errno as the failing call left it, when Qt has no words of its own).
    QString writeFailure(int savedErrno) const;
    // Closes the file (when still open) and puts it in the target's place.
    QString commit();
    // Closes and removes what this file wrote under its temporary name.
    void discard();

    // The system's words for the last failure of `file`.
    static QString systemReason(const QFile& file, int savedErrno = 0);

private:
    QString m_target;
    QString m_writingPath;
    QFile m_file;
    bool m_direct = false;
    bool m_done = false;
};
