#include "widgets/MeterNumericalDisplayWidget.h"

#include "widgets/ClickableLabel.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

#include <cmath>
#include <limits>

MeterNumericalDisplayWidget::MeterNumericalDisplayWidget(QWidget* parent)
    : QWidget(parent), m_highestPeak(-std::numeric_limits<double>::infinity()),
      m_highestRms(-std::numeric_limits<double>::infinity())
{
    setupUi();
}

void MeterNumericalDisplayWidget::setupUi()
{
    if (objectName().isEmpty())
        setObjectName(QStringLiteral("MeterNumericalDisplayWidget"));
    m_horizontalLayout1 = new QHBoxLayout(this);
    m_horizontalLayout1->setObjectName(QStringLiteral("horizontalLayout1"));
    m_horizontalLayout1->setSpacing(0);
    m_horizontalLayout1->setContentsMargins(0, 4, 0, 0);

    auto column = [this](QVBoxLayout*& layout, const char* layoutName, QLabel*& caption,
                         const char* captionName, ClickableLabel*& value, const char* valueName) {
        layout = new QVBoxLayout();
        layout->setObjectName(QString::fromLatin1(layoutName));
        layout->setSpacing(0);
        caption = new QLabel(this);
        caption->setObjectName(QString::fromLatin1(captionName));
        caption->setAlignment(Qt::AlignHCenter | Qt::AlignBottom);
        value = new ClickableLabel(this);
        value->setObjectName(QString::fromLatin1(valueName));
        value->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
        layout->addWidget(caption);
        layout->addWidget(value);
        m_horizontalLayout1->addLayout(layout);
    };
    column(m_verticalLayout1, "verticalLayout1", m_levelCaptionLabel, "levelCaptionLabel",
           m_levelValueLabel, "levelValueLabel");
    column(m_verticalLayout2, "verticalLayout2", m_rmsCaptionLabel, "rmsCaptionLabel",
           m_rmsValueLabel, "rmsValueLabel");

    connect(m_levelValueLabel, &ClickableLabel::clicked, this,
            &MeterNumericalDisplayWidget::onUpdatePeak);
    connect(m_rmsValueLabel, &ClickableLabel::clicked, this,
            &MeterNumericalDisplayWidget::onUpdateRms);
    retranslateUi();
}

void MeterNumericalDisplayWidget::retranslateUi()
{
    m_levelCaptionLabel->setText(tr("Level"));
    m_rmsCaptionLabel->setText(tr("RMS"));
    m_levelValueLabel->setText(tr("0 dB"));
    m_rmsValueLabel->setText(tr("0 dB"));
    const QString hint = tr("Highest level since the last click. Click to reset.");
    m_levelValueLabel->setToolTip(hint);
    m_rmsValueLabel->setToolTip(hint);
}

QString MeterNumericalDisplayWidget::decibelText(double decibels)
{
    const QString text = QString::number(decibels, 'f', 1);
    if (text == QLatin1String("-inf"))
        return QString(QChar(0x221E));
    return text;
}

void MeterNumericalDisplayWidget::levelChanged(MeterInfo info)
{
    // On a tie the left channel wins; the value is the same either way.
    const float peak = info.peakLeft >= info.peakRight ? info.peakLeft : info.peakRight;
    const float rms = info.rmsLeft >= info.rmsRight ? info.rmsLeft : info.rmsRight;
    const double peakDb = 20.0 * std::log10(double(peak));
    const double rmsDb = 20.0 * std::log10(double(rms));

    if (peakDb > m_highestPeak || m_resetPeak) {
        m_levelValueLabel->setText(decibelText(peakDb));
        m_highestPeak = peakDb;
        m_resetPeak = false;
    }
    if (rmsDb > m_highestRms || m_resetRms) {
        m_rmsValueLabel->setText(decibelText(rmsDb));
        m_highestRms = rmsDb;
        m_resetRms = false;
    }
}

void MeterNumericalDisplayWidget::onUpdateRms()
{
    m_resetRms = true;
}

void MeterNumericalDisplayWidget::onUpdatePeak()
{
    m_resetPeak = true;
}

void MeterNumericalDisplayWidget::paintEvent(QPaintEvent*)
{
    QPainter p(this);
    p.setPen(Qt::gray);
    const int x = int(0.5 * width());
    const int top = int(0.25 * height());
    const int rows = int(0.45 * height());
    if (rows > 0)
        p.drawLine(x, top, x, top + rows - 1);
}
