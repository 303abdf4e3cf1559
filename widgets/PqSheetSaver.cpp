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

#include <utility>

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
    : QObject(parent), m_parent(parent), m_choose(defaultChoose), m_report(defaultReport),
      m_job(this)
{
    connect(&m_job, &BackgroundJob::progressed, this, &PqSheetSaver::onProgressed);
    connect(&m_job, &BackgroundJob::finished, this, &PqSheetSaver::onDigested);
}

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
    m_path = path;

    auto* dialog = new QProgressDialog(tr("Reading the files of the DDP for their MD5\u2026"),
                                       tr("Cancel"), 0, 100, m_parent);
    dialog->setObjectName(QStringLiteral("pqSheetProgressDialog"));
    dialog->setWindowTitle(tr("Save PQ Sheet"));
    dialog->setWindowModality(Qt::NonModal);
    dialog->setMinimumDuration(300);
    dialog->setAutoClose(false);
    dialog->setAutoReset(false);
    connect(dialog, &QProgressDialog::canceled, this, &PqSheetSaver::cancel);
    m_dialog = dialog;

    // The worker reads through its own references: the window may load
    // another disc meanwhile, which cancels this run first.
    std::shared_ptr<const IDdpFileSource> files = m_disc.files;
    std::shared_ptr<const DDPModel> model = m_disc.model;
    std::shared_ptr<const DiscImage> image = m_disc.image;
    std::optional<VerificationReport> verification = m_disc.verification;
    m_job.start([this, files, model, image, verification](JobContext& context) {
        m_digests.clear();
        if (files)
            m_digests = digestDdpFiles(
                *files, *model, image, verification ? &*verification : nullptr,
                &context.cancelFlag(), [&context](std::uint64_t done, std::uint64_t total) {
                    context.setProgress(done, total);
                });
    });
}

void PqSheetSaver::onProgressed(int percent)
{
    if (m_dialog)
        m_dialog->setValue(percent);
}

void PqSheetSaver::onDigested()
{
    closeDialog();
    write(m_path, std::exchange(m_digests, {}));
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
    m_job.cancel();
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
