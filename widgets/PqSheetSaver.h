#pragma once

#include "analysis/LoudnessResult.h"
#include "jobs/BackgroundJob.h"
#include "report/PqSheet.h"
#include "verify/Verification.h"

#include <QObject>
#include <QPointer>
#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class DDPModel;
class DiscImage;
class IDdpFileSource;
class QProgressDialog;
class QWidget;

// "Save PQ Sheet…": asks for a file (its extension picks PDF, HTML, text or
// JSON), digests the DDP's files on a BackgroundJob with a progress dialog
// that cancels it, then writes the sheet. MD5s the verification has computed
// are not read again; checksum verdict and loudness are printed as far as
// they are known when the sheet is asked for.
class PqSheetSaver : public QObject
{
    Q_OBJECT

public:
    using FileChooser = std::function<QString(QWidget* parent, const QString& caption,
                                              const QString& proposed, const QString& filters)>;
    using ErrorReporter = std::function<void(QWidget* parent, const QString& message)>;

    explicit PqSheetSaver(QWidget* parent);
    ~PqSheetSaver() override;

    // For tests: answer the file dialog and take the error message.
    void setFileChooser(FileChooser chooser) { m_choose = std::move(chooser); }
    void setErrorReporter(ErrorReporter reporter) { m_report = std::move(reporter); }

    struct Disc
    {
        std::shared_ptr<const DDPModel> model;
        std::shared_ptr<const DiscImage> image;
        std::shared_ptr<const IDdpFileSource> files;
        QString location; // its folder or archive: the sheet is proposed beside it
        std::optional<VerificationReport> verification;
        std::optional<DiscLoudness> loudness;
    };
    void save(Disc disc);
    // Stops a sheet being made (no file is written) and waits for its worker.
    void cancel();
    bool isRunning() const { return m_job.isRunning(); }

signals:
    void saved(const QString& path);
    void failed(const QString& message);

private:
    void onProgressed(int percent);
    void onDigested();
    void write(const QString& path, std::vector<PqSheetFile> files);
    void closeDialog();
    void fail(const QString& message);

    QWidget* m_parent;
    FileChooser m_choose;
    ErrorReporter m_report;
    Disc m_disc;    // GUI thread; the job has its own copies
    QString m_path; // GUI thread: where the sheet being made goes
    QPointer<QProgressDialog> m_dialog;
    // Written by the job's thread before its work returns, read by the GUI
    // thread in onDigested(), after the job has joined that thread.
    std::vector<PqSheetFile> m_digests;
    // Last: destroyed first, so that a run still going is stopped before
    // the members it writes go.
    BackgroundJob m_job;
};
