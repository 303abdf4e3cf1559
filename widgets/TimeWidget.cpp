#include "widgets/TimeWidget.h"

#include "ddp/PqEntry.h"
#include "widgets/ClickableLabel.h"
#include "widgets/SeekSlider.h"

#include <QGridLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace {

template <typename Label>
Label* makeLabel(const char* name, Qt::Alignment alignment, bool expanding, QWidget* parent)
{
    auto* label = new Label(parent);
    label->setObjectName(QString::fromLatin1(name));
    label->setAlignment(alignment);
    if (expanding)
        label->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    return label;
}

} // namespace

TimeWidget::TimeWidget(QWidget* parent) : QWidget(parent)
{
    setupUi();
}

void TimeWidget::setupUi()
{
    if (objectName().isEmpty())
        setObjectName(QStringLiteral("TimeWidget"));
    resize(742, 118);

    m_verticalLayout = new QVBoxLayout(this);
    m_verticalLayout->setObjectName(QStringLiteral("verticalLayout"));
    m_verticalLayout->setSpacing(0);
    m_verticalLayout->setContentsMargins(4, 2, 4, 2);
    m_gridLayout = new QGridLayout();
    m_gridLayout->setObjectName(QStringLiteral("gridLayout"));
    m_gridLayout->setSpacing(0);

    const Qt::Alignment centreBottom = Qt::AlignHCenter | Qt::AlignBottom;
    const Qt::Alignment leftBottom = Qt::AlignLeft | Qt::AlignBottom;
    m_trackCaptionLabel = makeLabel<QLabel>("trackCaptionLabel", centreBottom, true, this);
    m_timeCaptionLabel = makeLabel<ClickableLabel>("timeCaptionLabel", leftBottom, true, this);
    m_cdTimeCaptionLabel = makeLabel<ClickableLabel>("cdTimeCaptionLabel", leftBottom, true, this);
    m_trackLabel = makeLabel<QLabel>("trackLabel", Qt::AlignHCenter | Qt::AlignTop, true, this);
    m_timeLabel = makeLabel<ClickableLabel>("timeLabel", Qt::AlignLeft | Qt::AlignTop, false, this);
    m_cdTimeLabel =
        makeLabel<ClickableLabel>("cdTimeLabel", Qt::AlignLeft | Qt::AlignTop, false, this);

    m_gridLayout->addWidget(m_trackCaptionLabel, 0, 0);
    m_gridLayout->addWidget(m_timeCaptionLabel, 0, 1);
    m_gridLayout->addWidget(m_cdTimeCaptionLabel, 0, 2);
    m_gridLayout->addWidget(m_trackLabel, 1, 0);
    m_gridLayout->addWidget(m_timeLabel, 1, 1);
    m_gridLayout->addWidget(m_cdTimeLabel, 1, 2);
    m_verticalLayout->addLayout(m_gridLayout);

    m_seekSlider = new SeekSlider(this);
    m_seekSlider->setObjectName(QStringLiteral("seekslider"));
    m_seekSlider->setOrientation(Qt::Horizontal);
    m_seekSlider->setMinimumSize(QSize(0, 14));
    m_seekSlider->setMaximumSize(QSize(16777215, 14));
    m_verticalLayout->addWidget(m_seekSlider);

    retranslateUi();
    QMetaObject::connectSlotsByName(this);
}

void TimeWidget::retranslateUi()
{
    m_trackCaptionLabel->setText(tr("TRACK"));
    m_timeCaptionLabel->setText(tr("TIME"));
    m_cdTimeCaptionLabel->setText(tr("CD TIME"));
    m_trackLabel->setText(tr("01"));
    m_timeLabel->setText(tr("00:00"));
    m_cdTimeLabel->setText(tr("00:00"));
}

void TimeWidget::setTrackTime(int seconds)
{
    m_timeLabel->setText(QString::fromStdString(timeText(seconds)));
}

void TimeWidget::setCdTime(int seconds)
{
    m_cdTimeLabel->setText(QString::fromStdString(timeText(seconds)));
}

void TimeWidget::setTrackNumber(int number)
{
    m_trackLabel->setText(QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0')));
}
