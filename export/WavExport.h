#pragma once

#include "export/ExportDialogs.h"
#include "export/TrackEncoder.h"

#include <QObject>
#include <QPointer>
#include <QString>

#include <memory>

class DDPModel;
class DiscImage;
class FileWriter;
class QProgressBar;
class QThread;
class QWidget;

// Exports the loaded disc to WAV files: one track, or every track into a
// folder. The flows ask through ExportDialogs, then hand the copying to a
// worker on the exporter's own thread and show a progress bar over the parent
// widget. Everything here runs on the GUI thread; the worker talks back only
// through queued signals.
//
// For the window:
//   WavExport* exporter = new WavExport(this);        // parent: the main window
//   exporter->setDisc(model, image);                   // before every export
//   exporter->exportTrack(row, ddpFolder);             // a track's export button
//   exporter->exportAllTracks(ddpFolder);              // "Export as WAV"
//   exporter->exportAllTracks(ddpFolder, ExportFormat::Flac); // "Export as FLAC"
//   exporter->exportCueSheet(ddpFolder);               // "Export Cue Sheet"
// A track's file is WAV, FLAC or MP3 by the extension chosen in the dialog.
// With an image set, the export reads the audio the window plays (a folder,
// an archive or a split image alike); without one it opens the image from
// `ddpFolder`.
// Errors are shown by the exporter itself (ExportDialogs::showError) and
// announced by exportFailed; a cancelled dialog ends a flow without a signal.
class WavExport : public QObject
{
    Q_OBJECT

public:
    // The parent doubles as the parent of the dialogs and the progress bar
    // when it is a widget.
    explicit WavExport(QObject* parent = nullptr, ExportDialogs dialogs = defaultExportDialogs());
    // Asks a running worker to stop (its partial file is removed) and waits.
    ~WavExport() override;

    void setDialogs(ExportDialogs dialogs) { m_dialogs = std::move(dialogs); }
    // The window's current model, with its first-track number set as the
    // player's load sets it (rows count from that entry); a worker keeps the
    // model it started with.
    void setModel(std::shared_ptr<DDPModel> model)
    {
        m_model = std::move(model);
        m_image.reset();
    }
    // The model and the audio opened with it at load.
    void setDisc(std::shared_ptr<DDPModel> model, std::shared_ptr<const DiscImage> image)
    {
        m_model = std::move(model);
        m_image = std::move(image);
    }
    const std::shared_ptr<DDPModel>& model() const { return m_model; }

    // Table row `row` (counted from 0) of the disc in `ddpFolder`: asks for a
    // file name ("Save Track as WAV"), then exports in the background.
    void exportTrack(int row, const QString& ddpFolder);
    void exportTrack(int row, std::shared_ptr<DDPModel> model, const QString& ddpFolder);
    // Every track into a folder ("Save DDP as separated WAV files").
    void exportAllTracks(const QString& ddpFolder, ExportFormat format = ExportFormat::Wav);
    // A cue sheet and the disc's image as a BIN beside it, for burning a
    // reference CD ("Save Cue Sheet for a Reference CD").
    void exportCueSheet(const QString& ddpFolder);
    void exportAllTracks(std::shared_ptr<DDPModel> model, const QString& ddpFolder);

    // From the start of a worker until its thread has ended. A new export
    // asked for meanwhile is refused with an error.
    bool isRunning() const { return m_running; }
    QThread* workerThread() const { return m_thread; }

signals:
    void exportFinished();
    void exportFailed(const QString& message);

private:
    bool canStart();
    void reportError(const QString& message);
    QString imageName() const;
    std::shared_ptr<const DiscImage> imageOrReport(const QString& ddpFolder);
    void startWorker(FileWriter* worker, bool showProgress);
    void showProgressBar(FileWriter* worker);
    void onWorkerFailed(const QString& message);
    void onThreadFinished();

    QWidget* m_parentWidget = nullptr;
    ExportDialogs m_dialogs;
    std::shared_ptr<DDPModel> m_model;
    std::shared_ptr<const DiscImage> m_image;
    QPointer<QProgressBar> m_progressBar;
    // Made in the constructor, reused by every export, deleted by the
    // destructor.
    QThread* m_thread = nullptr;
    // GUI thread only.
    bool m_running = false;
    QString m_failure;
};
