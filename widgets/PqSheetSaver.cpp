#include "widgets/PqSheetSaver.h"

#include "ddp/DDPModel.h"
#include "ddp/DdpFileSource.h"
#include "ddp/Settings.h"
#include "report/DdpFileDigests.h"
#include "report/PqSheetRender.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QProgressDialog>
#include <QTimer>

namespace {

QString defaultChoose(QWidget* parent, const QString& caption, const QString& proposed,
                      const QString& filters)
{
    return QFileDialog::getSaveFileName(parent, caption, proposed, filters);
}

void defaultReport(QWidget* parent, const QString& message)
{
    QMessageBox::warning(parent, QObject::tr("PQ Sheet"), message);
}

} // namespace

PqSheetSaver::PqSheetSaver(QWidget* parent)
    : QObject(parent), m_parent(parent), m_choose(defaultChoose), m_report(defaultReport)
{}

PqSheetSaver::~PqSheetSaver()
{
    cancel();
}

void PqSheetSaver::save(Disc disc)
{
    if (isRunning() || !disc.model)
        return;
    const QString folder = QFileInfo(disc.location).absolutePath();
    const QString name =
        QFileInfo(disc.location).completeBaseName() + QStringLiteral(" PQ Sheet.pdf");
    const QString path = m_choose(m_parent, tr("Save PQ Sheet"), QDir(folder).filePath(name),
                                  tr("PDF (*.pdf);;HTML (*.html);;Text (*.txt);;JSON (*.json)"));
    if (path.isEmpty())
        return;
    PqSheetFormat format = PqSheetFormat::Pdf;
    if (!pqSheetFormatForPath(path, &format)) {
        fail(tr("\"%1\" is not a PQ sheet format: end the name in .pdf, .html, .txt or .json.")
                 .arg(QFileInfo(path).fileName()));
        return;
    }
    m_disc = std::move(disc);
    m_cancel = false;
    m_done = 0;
    m_total = 0;
    const std::uint64_t run = ++m_run;

    auto* dialog = new QProgressDialog(tr("Reading the files of the DDP for their MD5\u2026"),
                                       tr("Cancel"), 0, 1000, m_parent);
    dialog->setObjectName(QStringLiteral("pqSheetProgressDialog"));
    dialog->setWindowTitle(tr("Save PQ Sheet"));
    dialog->setWindowModality(Qt::NonModal);
    dialog->setMinimumDuration(300);
    dialog->setAutoClose(false);
    dialog->setAutoReset(false);
    connect(dialog, &QProgressDialog::canceled, this, &PqSheetSaver::cancel);
    auto* timer = new QTimer(dialog);
    connect(timer, &QTimer::timeout, dialog, [this, dialog] {
        const std::uint64_t total = m_total;
        if (total > 0)
            dialog->setValue(int(m_done * 1000 / total));
    });
    timer->start(100);
    m_dialog = dialog;

    // The worker reads through its own references: the window may load
    // another disc meanwhile, which cancels this run first.
    std::shared_ptr<const IDdpFileSource> files = m_disc.files;
    std::shared_ptr<const DDPModel> model = m_disc.model;
    std::shared_ptr<const DiscImage> image = m_disc.image;
    std::optional<VerificationReport> verification = m_disc.verification;
    m_worker = std::thread([this, run, path, files, model, image, verification] {
        std::vector<PqSheetFile> digests;
        if (files)
            digests = digestDdpFiles(*files, *model, readDdpFileNames(*files), image,
                                     verification ? &*verification : nullptr, &m_cancel,
                                     [this](std::uint64_t done, std::uint64_t total) {
                                         m_done = done;
                                         m_total = total;
                                     });
        QMetaObject::invokeMethod(
            this,
            [this, run, path, digests = std::move(digests)]() mutable {
                if (run != m_run || !m_worker.joinable())
                    return;
                m_worker.join();
                closeDialog();
                write(path, std::move(digests));
            },
            Qt::QueuedConnection);
    });
}

void PqSheetSaver::write(const QString& path, std::vector<PqSheetFile> files)
{
    PqSheetInputs inputs;
    inputs.verification = m_disc.verification ? &*m_disc.verification : nullptr;
    inputs.loudness = m_disc.loudness ? &*m_disc.loudness : nullptr;
    inputs.files = std::move(files);
    PqSheetFormat format = PqSheetFormat::Pdf;
    pqSheetFormatForPath(path, &format);
    QString error;
    if (!writePqSheet(makePqSheet(*m_disc.model, inputs), format, path, &error)) {
        fail(tr("The PQ sheet could not be written to \"%1\": %2").arg(path, error));
        return;
    }
    rememberParentDirectory(path, kDefaultExportDirKey);
    emit saved(path);
}

void PqSheetSaver::cancel()
{
    if (m_worker.joinable()) {
        m_cancel = true;
        m_worker.join();
        ++m_run; // a result still queued is dropped
    }
    closeDialog();
}

void PqSheetSaver::closeDialog()
{
    if (m_dialog) {
        m_dialog->disconnect(this);
        m_dialog->deleteLater();
        m_dialog = nullptr;
    }
}

void PqSheetSaver::fail(const QString& message)
{
    if (m_report)
        m_report(m_parent, message);
    emit failed(message);
}
