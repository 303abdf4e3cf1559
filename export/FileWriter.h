#pragma once

#include "export/ImageRange.h"

class DiscImage;

#include <QFile>
#include <QObject>
#include <QString>

#include <memory>

// The base of the export workers. A worker is made on the GUI thread, moved to
// the exporter's worker thread and run there by `process()`; it has no widgets
// and talks back only through its signals, which reach the GUI thread queued.
// The command line runs the same workers directly on its main thread.
//
// Every field is written by the constructor on the GUI thread before the move
// and afterwards read and written only by the thread that runs `process()`.
class FileWriter : public QObject
{
    Q_OBJECT

public:
    // Bytes moved per read and per write call.
    static constexpr qint64 kPieceSize = 8388608;

    // Read the image into a buffer instead of using its mapped pages (see
    // ImageRange); the result is the same.
    void setMappedReads(bool mapped) { m_range.setMappingAllowed(mapped); }

    FileWriter(QString outputPath, QString imagePath, qint64 start, qint64 end,
               QObject* parent = nullptr);
    // The disc's audio as the loader laid it out; without it the image path
    // is opened as one whole file. The path names the image in messages.
    void setImage(std::shared_ptr<const DiscImage> image) { m_image = std::move(image); }

signals:
    // A value on the two-phase scale: 0 to 10000 while reading the range,
    // 10000 to 20000 while writing it (the final short piece of each phase is
    // not counted, so a phase ends a little below its mark).
    void processed(qint64 value);
    // Every file was written and closed.
    void finished();
    // The export stopped; the file it was writing is already removed. Sent
    // instead of `finished`.
    void failed(const QString& message);
    // Around each file, for whoever lists the files (the command line does).
    void fileStarted(const QString& path);
    void fileWritten(const QString& path);

public slots:
    virtual void process() = 0;

protected:
    // Reads the image bytes [start, end) into memory and writes them behind a
    // WAV header to the output path. Returns an empty string on success, else
    // the message for the user, with the partial file removed.
    QString copyRange();

    QString m_outputPath;
    QString m_imagePath;
    std::shared_ptr<const DiscImage> m_image;
    qint64 m_start = 0;
    qint64 m_end = 0;
    qint64 m_bytesProcessed = 0;
    QString m_writingPath; // the output path, or its temporary ".part" name while written

private:
    void reportProgress(qint64 length);
    QString writeFailure(QFile& out);
    QString imageFailure(const QString& readError);
    QString createTemporaryFile(QFile& out);
    QString replaceTarget();
    void removeOwnFile(QFile& out, bool direct);

    // The range between its read and its write; kept from track to track.
    ImageRange m_range;
};
