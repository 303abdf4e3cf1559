#include "export/WavExport.h"

#include "ddp/DDPModel.h"
#include "ddp/DdpFileLookup.h"
#include "ddp/DiscTexts.h"
#include "ddp/ImageLayout.h"
#include "ddp/RegularFile.h"
#include "ddp/Settings.h"
#include "ddp/TrackRange.h"
#include "export/CueWriter.h"
#include "export/EncodeWriter.h"
#include "export/ExportFileName.h"
#include "export/FileWriterAllTracks.h"
#include "export/FileWriterOneTrack.h"

#include <QDir>
#include <QFileInfo>
#include <QPalette>
#include <QProgressBar>
#include <QThread>
#include <QWidget>

#include <exception>

namespace {

// Five minutes of CD audio: shorter tracks are done before a bar would help.
constexpr qint64 kProgressBarThreshold = 52920000;
constexpr int kProgressMaximum = 20000;

} // namespace

WavExport::WavExport(QObject* parent, ExportDialogs dialogs)
    : QObject(parent), m_parentWidget(qobject_cast<QWidget*>(parent)),
      m_dialogs(std::move(dialogs)), m_thread(new QThread)
{
    connect(m_thread, &QThread::finished, this, &WavExport::onThreadFinished);
}

WavExport::~WavExport()
{
    // The worker checks for this between pieces. quit() is called here, not
    // through the worker's queued signals, because this thread no longer runs
    // its event loop.
    m_thread->requestInterruption();
    m_thread->quit();
    m_thread->wait();
    delete m_thread;
    delete m_progressBar.data();
}

void WavExport::exportTrack(int row, std::shared_ptr<DDPModel> model, const QString& ddpFolder)
{
    setModel(std::move(model));
    exportTrack(row, ddpFolder);
}

void WavExport::exportAllTracks(std::shared_ptr<DDPModel> model, const QString& ddpFolder)
{
    setModel(std::move(model));
    exportAllTracks(ddpFolder);
}

void WavExport::exportTrack(int row, const QString& ddpFolder)
{
    if (!canStart())
        return;
    const std::shared_ptr<DDPModel> model = m_model;
    std::size_t entry = 0;
    QString name;
    try {
        entry = entryIndexForRow(*model, row);
        name = defaultFileName(*model, entry);
    } catch (const std::exception&) {
        reportError(tr("Row %1 is not a track of this DDP.").arg(row + 1));
        return;
    }

    const QString proposed =
        QDir(readSetting(kDefaultExportDirKey).toString()).absoluteFilePath(name);
    const QString chosen =
        m_dialogs.saveFileName(m_parentWidget, tr("Save Track"), proposed,
                               tr("WAV (*.wav);;FLAC (*.flac);;MP3, 320 kb/s (*.mp3)"), nullptr);
    if (chosen.isEmpty())
        return;
    rememberParentDirectory(chosen, kDefaultExportDirKey);

    TrackRange range;
    try {
        range = trackRange(model->entries(), entry);
    } catch (const std::exception& e) {
        reportError(tr("The end of this track is not in the PQ descriptor (%1).")
                        .arg(QString::fromStdString(e.what())));
        return;
    }
    const std::shared_ptr<const DiscImage> image = imageOrReport(ddpFolder);
    if (!image)
        return;
    // Any other extension is written as WAV, as it always was.
    const ExportFormat format = formatFromText(chosen).value_or(ExportFormat::Wav);
    FileWriter* worker = nullptr;
    if (format == ExportFormat::Wav)
        worker = new FileWriterOneTrack(chosen, imageName(), range.start, range.end);
    else
        worker = new EncodeWriter(format, chosen, imageName(), model, entry);
    worker->setImage(image);
    // Encoding takes far longer than a copy: every encoded track shows a bar.
    startWorker(worker, format != ExportFormat::Wav || range.length() >= kProgressBarThreshold);
}

void WavExport::exportAllTracks(const QString& ddpFolder, ExportFormat format)
{
    if (!canStart())
        return;
    const std::shared_ptr<DDPModel> model = m_model;
    const QString chosen = m_dialogs.existingDirectory(
        m_parentWidget, tr("Save DDP as separated %1 files").arg(formatName(format)),
        readSetting(kDefaultExportDirKey).toString());
    if (chosen.isEmpty())
        return;
    // A folder typed into the dialog may not exist yet, nor its parent.
    if (!QDir(chosen).exists() && !QDir().mkpath(chosen)) {
        reportError(tr("Could not create the folder \"%1\".").arg(chosen));
        return;
    }
    rememberParentDirectory(chosen, kDefaultExportDirKey);

    const std::shared_ptr<const DiscImage> image = imageOrReport(ddpFolder);
    if (!image)
        return;
    FileWriter* worker = nullptr;
    if (format == ExportFormat::Wav)
        worker = new FileWriterAllTracks(chosen, imageName(), model);
    else
        worker = new EncodeWriter(format, chosen, imageName(), model);
    worker->setImage(image);
    startWorker(worker, true);
}

void WavExport::exportCueSheet(const QString& ddpFolder)
{
    if (!canStart())
        return;
    const std::shared_ptr<DDPModel> model = m_model;
    // Named after the album when the disc has a title for it.
    const QString album = albumText(*model, CdTextRecord::Title);
    const QString name =
        safeFileName(album.isEmpty() ? tr("Reference CD") : album) + QStringLiteral(".cue");
    const QString proposed =
        QDir(readSetting(kDefaultExportDirKey).toString()).absoluteFilePath(name);
    // Burning programs take either; the BIN is the image's bytes as they are.
    const QString binary = tr("Cue sheet, with the image beside it as BIN (*.cue)");
    const QString wave = tr("Cue sheet, with the image beside it as WAV (*.cue)");
    QString selected = binary;
    QString chosen =
        m_dialogs.saveFileName(m_parentWidget, tr("Save Cue Sheet for a Reference CD"), proposed,
                               binary + QStringLiteral(";;") + wave, &selected);
    if (chosen.isEmpty())
        return;
    const CueAudioFile kind = selected == wave ? CueAudioFile::Wave : CueAudioFile::Binary;
    if (!chosen.endsWith(QLatin1String(".cue"), Qt::CaseInsensitive))
        chosen += QStringLiteral(".cue");
    rememberParentDirectory(chosen, kDefaultExportDirKey);
    const std::shared_ptr<const DiscImage> image = imageOrReport(ddpFolder);
    if (!image)
        return;
    auto* worker = new CueWriter(chosen, kind, imageName(), model);
    worker->setImage(image);
    startWorker(worker, true);
}

bool WavExport::canStart()
{
    if (m_running) {
        reportError(tr("An export is still running. Please wait until it has finished."));
        return false;
    }
    if (!m_model) {
        reportError(tr("No DDP is loaded."));
        return false;
    }
    return true;
}

void WavExport::reportError(const QString& message)
{
    if (m_dialogs.showError)
        m_dialogs.showError(m_parentWidget, message);
    emit exportFailed(message);
}

QString WavExport::imageName() const
{
    return ddpFileNameFromBytes(m_model->imageFileName());
}

std::shared_ptr<const DiscImage> WavExport::imageOrReport(const QString& ddpFolder)
{
    if (m_image)
        return m_image;
    // Every stream of the disc, opened as regular files inside its folder.
    // A model made without the loader names its one image file only.
    ImageLayout layout = m_model->imageLayout();
    if (layout.streams.empty() && !m_model->imageFileName().empty())
        layout.streams.push_back(
            {m_model->imageFileName(), 0,
             regularFileSize(resolveDdpFile(ddpFolder, imageName())).value_or(0)});
    QString error;
    std::shared_ptr<const DiscImage> image = openDiscImage(ddpFolder, layout, &error);
    if (!image)
        reportError(tr("The audio image \"%1\" is missing (%2).").arg(imageName(), error));
    return image;
}

void WavExport::startWorker(FileWriter* worker, bool showProgress)
{
    worker->moveToThread(m_thread);
    if (showProgress)
        showProgressBar(worker);
    connect(m_thread, &QThread::started, worker, &FileWriter::process);
    // Direct: the worker ends its thread itself, without a round trip through
    // the GUI thread's event loop.
    connect(worker, &FileWriter::finished, m_thread, &QThread::quit, Qt::DirectConnection);
    connect(worker, &FileWriter::failed, m_thread, &QThread::quit, Qt::DirectConnection);
    connect(m_thread, &QThread::finished, worker, &QObject::deleteLater);
    connect(worker, &FileWriter::failed, this, &WavExport::onWorkerFailed);
    m_failure.clear();
    m_running = true;
    m_thread->start(QThread::InheritPriority);
}

void WavExport::showProgressBar(FileWriter* worker)
{
    auto* bar = new QProgressBar(m_parentWidget);
    bar->setObjectName(QStringLiteral("exportProgressBar"));
    QPalette palette = bar->palette();
    palette.setColor(QPalette::Base, QColor(38, 39, 40));
    palette.setColor(QPalette::Text, Qt::white);
    bar->setPalette(palette);
    // A fixed size first: an unsized child would take its size hint when
    // shown and no longer sit in the middle.
    bar->resize(bar->sizeHint());
    if (m_parentWidget)
        bar->move(bar->pos() + m_parentWidget->rect().center() - bar->geometry().center());
    bar->setMaximum(kProgressMaximum);
    connect(worker, &FileWriter::processed, bar,
            [bar](qint64 value) { bar->setValue(static_cast<int>(value)); });
    connect(worker, &FileWriter::finished, bar, &QWidget::hide);
    connect(worker, &FileWriter::failed, bar, &QWidget::hide);
    connect(m_thread, &QThread::finished, bar, &QObject::deleteLater);
    bar->show();
    m_progressBar = bar;
}

void WavExport::onWorkerFailed(const QString& message)
{
    m_failure = message;
}

void WavExport::onThreadFinished()
{
    // `finished` is sent while the thread is still winding down; once it has
    // ended, the thread can be started again.
    m_thread->wait();
    m_running = false;
    if (m_failure.isEmpty()) {
        emit exportFinished();
    } else {
        const QString message = m_failure;
        m_failure.clear();
        reportError(message);
    }
}
