#pragma once

#include "export/ImageRange.h"

class DDPModel;
class DiscImage;

#include <QObject>
#include <QString>

#include <cstddef>
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
    // From the writers of several tracks only: before each track, its place
    // in the export (from 1) and the count.
    void trackStarted(int ordinal, int count);
    // From the writers of several tracks only, instead of a file for a track
    // of no length (its start is the next track's).
    void trackSkipped(const QString& path);

public slots:
    // Runs the export and ends in `finished` or `failed`.
    void process();

protected:
    // The export itself: an empty string on success, else the message for the
    // user, with every unfinished file removed.
    virtual QString run() = 0;

    // Reads the image bytes [start, end) into memory and writes them behind a
    // WAV header to the output path. Returns an empty string on success, else
    // the message for the user, with the partial file removed.
    QString copyRange();

    // The image set with setImage(), else the image path opened as one file;
    // null with the message in `error` when it cannot be opened.
    std::shared_ptr<const DiscImage> openImage(QString* error) const;
    // The same for a writer that needs the disc's model too: null with the
    // message in `error` when no DDP is loaded as well.
    std::shared_ptr<const DiscImage> openImage(const DDPModel* model, QString* error) const;
    // An empty string when `path` may take the track [start, end) of `image`,
    // else why not: the range is not valid, `path` is the image itself (which
    // would destroy the master), or the image does not hold the whole track
    // (which would be written as silence behind a success). `fileKind` names
    // the file in the message ("WAV", "FLAC").
    QString checkTrack(const DiscImage& image, const QString& path, qint64 start, qint64 end,
                       const QString& fileKind) const;
    // Whether `path` names one of the files the image is read from.
    static bool isImageFile(const DiscImage& image, const QString& path);
    // The image could not be read while `path` was written: it was cut short
    // meanwhile, or the disk refused.
    QString readFailure(const QString& path) const;
    // The start and end of the track whose index-1 entry is `entryIndex`, or
    // the message for `path` when the PQ descriptor has no end for it.
    QString trackBytes(const DDPModel& model, std::size_t entryIndex, const QString& path,
                       qint64& start, qint64& end) const;
    // 0 to 20000 for `done` of `total` bytes (0 while there is nothing to do).
    static qint64 progressValue(qint64 done, qint64 total)
    {
        return total > 0 ? done * 20000 / total : 0;
    }

    QString m_outputPath;
    QString m_imagePath;
    std::shared_ptr<const DiscImage> m_image;
    qint64 m_start = 0;
    qint64 m_end = 0;
    qint64 m_bytesProcessed = 0;

private:
    void reportProgress(qint64 length);

    // The range between its read and its write; kept from track to track.
    ImageRange m_range;
};
