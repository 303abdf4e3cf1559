#pragma once

#include "widgets/ClickableLabel.h"

#include <memory>

class DDPModel;
class DiscImage;
class IDdpFileSource;
class VerificationWorker;
struct VerificationReport;

// The info area's line about the loaded disc's checksums and disc check:
// "Verifying checksums… 43 %" while the worker reads, then the verdict in
// green ("Checksums OK: 5 of 5 files (CHECKSUM.MD5)"), red ("IMAGE.DAT does
// not match its checksum") or grey ("No checksum file"), with the count of
// findings after it. A click opens the details.
//
// It owns the worker: start() after a load, cancel() at the next load or at
// close. Nothing here waits for the worker but cancel(), for the block it is
// reading, a few milliseconds.
class VerificationLine : public ClickableLabel
{
    Q_OBJECT
public:
    enum class Tone
    {
        Neutral, // running, or nothing to verify
        Good,
        Bad,
    };

    explicit VerificationLine(QWidget* parent = nullptr);
    ~VerificationLine() override;

    // `source` gives the DDP's files as the loader read them (the folder or
    // the archive), `image` the disc's audio as playback reads it.
    void start(std::shared_ptr<const IDdpFileSource> source, std::shared_ptr<const DDPModel> model,
               std::shared_ptr<const DiscImage> image);
    // Stops the run at once and hides the line.
    void cancel();

    Tone tone() const { return m_tone; }
    bool isRunning() const;
    // The last finished run's report (empty before one).
    const VerificationReport& report() const;

    // Shows a finished report; used by start()'s worker and by tests.
    void showReport(const VerificationReport& report);
    void showProgress(int percent);
    void setVisible(bool visible) override;

public slots:
    // The details dialog, modal.
    void showDetails();

signals:
    void verified();
    void visibilityChanged(bool visible);

private:
    void setTone(Tone tone);

    VerificationWorker* m_worker = nullptr;
    std::unique_ptr<VerificationReport> m_shown;
    Tone m_tone = Tone::Neutral;
};
