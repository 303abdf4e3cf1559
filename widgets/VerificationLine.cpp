#include "widgets/VerificationLine.h"

#include "verify/VerificationText.h"
#include "verify/VerificationWorker.h"
#include "widgets/FontTable.h"
#include "widgets/Theme.h"
#include "widgets/VerificationDetailsDialog.h"

namespace {

QColor colourOf(VerificationLine::Tone tone)
{
    switch (tone) {
    case VerificationLine::Tone::Good:
        return QColor(96, 200, 110);
    case VerificationLine::Tone::Bad:
        return QColor(240, 90, 80);
    case VerificationLine::Tone::Neutral:
        break;
    }
    return Theme::caption();
}

} // namespace

VerificationLine::VerificationLine(QWidget* parent)
    : ClickableLabel(parent), m_worker(new VerificationWorker(this)),
      m_shown(std::make_unique<VerificationReport>())
{
    setObjectName(QStringLiteral("verificationLine"));
    setTextFormat(Qt::PlainText);
    // The size of the notes above it.
    setFont(FontTable::font(2));
    // One line, cut to the window: the details hold the rest.
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    setWordWrap(false);
    setToolTip(tr("Click for the checksums of every file and the disc check"));
    connect(m_worker, &VerificationWorker::progressed, this, &VerificationLine::showProgress);
    connect(m_worker, &VerificationWorker::finished, this,
            [this]() { showReport(m_worker->report()); });
    connect(this, &ClickableLabel::clicked, this, &VerificationLine::showDetails);
    setTone(Tone::Neutral);
    hide();
}

VerificationLine::~VerificationLine() = default;

void VerificationLine::start(std::shared_ptr<const IDdpFileSource> source,
                             std::shared_ptr<const DDPModel> model,
                             std::shared_ptr<const DiscImage> image)
{
    *m_shown = VerificationReport();
    m_worker->start(std::move(source), std::move(model), std::move(image));
    showProgress(0);
    show();
}

void VerificationLine::cancel()
{
    m_worker->cancel();
    *m_shown = VerificationReport();
    clear();
    hide();
}

bool VerificationLine::isRunning() const
{
    return m_worker->isRunning();
}

const VerificationReport& VerificationLine::report() const
{
    return *m_shown;
}

void VerificationLine::showProgress(int percent)
{
    setTone(Tone::Neutral);
    setText(tr("Verifying checksums… %1 %").arg(percent));
}

void VerificationLine::showReport(const VerificationReport& report)
{
    *m_shown = report;
    switch (report.state()) {
    case VerificationReport::Ok:
        setTone(report.hasErrorFindings() ? Tone::Bad : Tone::Good);
        break;
    case VerificationReport::Failed:
        setTone(Tone::Bad);
        break;
    case VerificationReport::NoChecksumFile:
    case VerificationReport::Cancelled:
        setTone(report.hasErrorFindings() ? Tone::Bad : Tone::Neutral);
        break;
    }
    setText(verdictLine(report));
    show();
    emit verified();
}

void VerificationLine::setVisible(bool visible)
{
    const bool changed = visible == isHidden();
    ClickableLabel::setVisible(visible);
    if (changed)
        emit visibilityChanged(visible);
}

void VerificationLine::setTone(Tone tone)
{
    m_tone = tone;
    QPalette palette = this->palette();
    palette.setColor(QPalette::WindowText, colourOf(tone));
    setPalette(palette);
}

void VerificationLine::showDetails()
{
    if (isRunning())
        return;
    VerificationDetailsDialog dialog(*m_shown, window());
    dialog.exec();
}
