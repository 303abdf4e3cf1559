#include "widgets/MeterSectionWidget.h"

#include "widgets/LevelMeterWidget.h"
#include "widgets/MeterNumericalDisplayWidget.h"
#include "widgets/SectionPainter.h"
#include "widgets/Theme.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QVBoxLayout>

MeterSectionWidget::MeterSectionWidget(QWidget* parent) : QWidget(parent)
{
    if (objectName().isEmpty())
        setObjectName(QStringLiteral("meterSectionWidget"));
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(8, 2, 8, 2);
    m_holder = new QWidget(this);
    m_holder->setObjectName(QStringLiteral("levelMeterHolderWidget"));
    outer->addWidget(m_holder);

    m_horizontalLayout1 = new QHBoxLayout(m_holder);
    m_horizontalLayout1->setObjectName(QStringLiteral("horizontalLayout1"));
    m_horizontalLayout1->setContentsMargins(0, 0, 0, 0);
    m_horizontalLayout1->setSpacing(8);
    m_levelMeter = new LevelMeterWidget(m_holder);
    m_levelMeter->setObjectName(QStringLiteral("levelMeter"));
    m_numericalDisplay = new MeterNumericalDisplayWidget(m_holder);
    m_numericalDisplay->setObjectName(QStringLiteral("numericalDisplay"));
    m_numericalDisplay->setFixedWidth(104);
    m_horizontalLayout1->addWidget(m_levelMeter, 1);
    m_horizontalLayout1->addWidget(m_numericalDisplay);
}

void MeterSectionWidget::levelChanged(MeterInfo info)
{
    m_levelMeter->levelChanged(info);
    m_numericalDisplay->levelChanged(info);
}

void MeterSectionWidget::reset()
{
    m_levelMeter->reset();
}

void MeterSectionWidget::setState(int state)
{
    m_levelMeter->setState(state);
}

void MeterSectionWidget::paintEvent(QPaintEvent*)
{
    QPainter p(this);
    paintSection(p, rect(), Theme::meterSection());
}
