#include "widgets/ControlSectionWidget.h"

#include "widgets/SectionPainter.h"
#include "widgets/Theme.h"
#include "widgets/TimeWidget.h"
#include "widgets/TransportWidget.h"
#include "widgets/VolumeSliderWidget.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QVBoxLayout>

ControlSectionWidget::ControlSectionWidget(QWidget* parent) : QWidget(parent)
{
    if (objectName().isEmpty())
        setObjectName(QStringLiteral("controlSectionWidget"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 4, 6, 4);
    layout->setSpacing(0);

    m_timeWidget = new TimeWidget(this);
    m_timeWidget->setObjectName(QStringLiteral("timeWidget"));
    layout->addWidget(m_timeWidget);

    auto* row = new QHBoxLayout();
    row->setSpacing(0);
    m_transportWidget = new TransportWidget(this);
    m_transportWidget->setObjectName(QStringLiteral("transportWidget"));
    m_volumeSliderWidget = new VolumeSliderWidget(this);
    m_volumeSliderWidget->setObjectName(QStringLiteral("volumeSliderWidget"));
    m_volumeSliderWidget->setFixedWidth(170);
    row->addWidget(m_transportWidget);
    row->addStretch(1);
    row->addWidget(m_volumeSliderWidget);
    layout->addLayout(row);
}

void ControlSectionWidget::paintEvent(QPaintEvent*)
{
    QPainter p(this);
    paintSection(p, rect(), Theme::controlSection());
}
