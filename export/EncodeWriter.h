#pragma once

#include "export/FileWriter.h"
#include "export/TrackEncoder.h"

#include <QStringList>

#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

class DDPModel;

// Writes tracks as FLAC or MP3: one track to a chosen file, or every track
// into a folder under the names the WAV export gives them (with the format's
// extension). Tracks are encoded in parallel, one thread a core, each file
// under its own temporary name until complete; the first failure stops the
// others and removes their unfinished files. trackStarted comes when a
// track's encoding starts. Like the other workers it runs
// on the exporter's thread, or on the command line's main thread; its
// signals come from that thread only.
//
// Progress runs from 0 to 20000 once over the whole export.
class EncodeWriter : public FileWriter
{
    Q_OBJECT

public:
    // Every track into `outputFolder`.
    EncodeWriter(ExportFormat format, QString outputFolder, QString imagePath,
                 std::shared_ptr<DDPModel> model, QObject* parent = nullptr);
    // The track whose index-1 entry is `entryIndex`, into the file `outputPath`.
    EncodeWriter(ExportFormat format, QString outputPath, QString imagePath,
                 std::shared_ptr<DDPModel> model, std::size_t entryIndex,
                 QObject* parent = nullptr);

protected:
    QString run() override;

private:
    struct Job
    {
        QString path;
        qint64 start = 0;
        qint64 end = 0;
        TrackTags tags;
        int ordinal = 0;
    };
    // What the encoding threads tell the worker's own thread.
    struct Event
    {
        enum Kind
        {
            Started,
            Written,
        } kind;
        int ordinal;
        QString path;
    };

    QString prepareJobs(const DiscImage& image, std::vector<Job>& jobs);
    QString encodeTrack(const DiscImage& image, const Job& job);
    void post(Event event);
    void deliverEvents(int count);

    // Written before process() and then only read.
    ExportFormat m_format;
    QString m_outputFolder;
    std::shared_ptr<DDPModel> m_model;
    std::optional<std::size_t> m_entry;

    // Shared between the encoding threads and the worker's thread.
    std::atomic<bool> m_stop{false};    // set by either on a failure or a cancel
    std::atomic<qint64> m_bytesDone{0}; // written by the encoding threads
    std::mutex m_mutex;                 // guards the two below
    std::vector<Event> m_events;
    QString m_failure; // the first failure of an encoding thread
};
