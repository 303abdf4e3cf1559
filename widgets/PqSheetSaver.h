#pragma once

#include "analysis/LoudnessResult.h"
#include "report/PqSheet.h"
#include "verify/Verification.h"

#include <QObject>
#include <QPointer>
#include <QString>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

class DDPModel;
class DiscImage;
class IDdpFileSource;
class QProgressDialog;
class QWidget;

// "Save PQ Sheet…": asks for a file (its extension picks PDF, HTML, text or
// JSON), digests the DDP's files on a worker thread with a progress dialog
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
    bool isRunning() const { return m_worker.joinable(); }

signals:
    void saved(const QString& path);
    void failed(const QString& message);

private:
    void write(const QString& path, std::vector<PqSheetFile> files);
    void closeDialog();
    void fail(const QString& message);

    QWidget* m_parent;
    FileChooser m_choose;
    ErrorReporter m_report;
    std::thread m_worker;
    std::atomic<bool> m_cancel{false};
    std::atomic<std::uint64_t> m_done{0};
    std::atomic<std::uint64_t> m_total{0};
    std::uint64_t m_run = 0;
    Disc m_disc; // GUI thread; the worker has its own copies
    QPointer<QProgressDialog> m_dialog;
};
