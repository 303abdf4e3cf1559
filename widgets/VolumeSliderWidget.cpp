#include "widgets/VolumeSliderWidget.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QSlider>
#include <QVBoxLayout>

VolumeSliderWidget::VolumeSliderWidget(QWidget* parent) : QWidget(parent)
{
    setupUi();
}

void VolumeSliderWidget::setupUi()
{
    if (objectName().isEmpty())
        setObjectName(QStringLiteral("VolumeSliderWidget"));
    resize(526, 337);

    m_verticalLayout = new QVBoxLayout(this);
    m_verticalLayout->setObjectName(QStringLiteral("verticalLayout"));
    m_verticalLayout->setSpacing(0);
    m_verticalLayout->setContentsMargins(9, 2, 9, 4);
    m_verticalLayout2 = new QVBoxLayout();
    m_verticalLayout2->setObjectName(QStringLiteral("verticalLayout_2"));
    m_verticalLayout2->setSpacing(0);

    m_volumeLabel = new QLabel(this);
    m_volumeLabel->setObjectName(QStringLiteral("volumeLabel"));
    m_volumeLabel->setAlignment(Qt::AlignHCenter | Qt::AlignBottom);
    m_verticalLayout2->addWidget(m_volumeLabel);

    // dB and percent side by side under the caption.
    m_horizontalLayout = new QHBoxLayout();
    m_horizontalLayout->setObjectName(QStringLiteral("horizontalLayout"));
    m_dBValueLabel = new QLabel(this);
    m_dBValueLabel->setObjectName(QStringLiteral("dBValueLabel"));
    m_dBValueLabel->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    m_volumeValueLabel = new QLabel(this);
    m_volumeValueLabel->setObjectName(QStringLiteral("volumeValueLabel"));
    m_volumeValueLabel->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    m_horizontalLayout->addWidget(m_dBValueLabel);
    m_horizontalLayout->addWidget(m_volumeValueLabel);
    m_verticalLayout2->addLayout(m_horizontalLayout);
    m_verticalLayout->addLayout(m_verticalLayout2);

    m_horizontalLayout2 = new QHBoxLayout();
    m_horizontalLayout2->setObjectName(QStringLiteral("horizontalLayout_2"));
    m_volumeSlider = new QSlider(this);
    m_volumeSlider->setObjectName(QStringLiteral("volumeSlider"));
    m_volumeSlider->setOrientation(Qt::Horizontal);
    m_volumeSlider->setRange(0, 10000);
    m_volumeSlider->setValue(10000);
    m_volumeSlider->setPageStep(500);
    m_horizontalLayout2->addWidget(m_volumeSlider);
    m_verticalLayout->addLayout(m_horizontalLayout2);

    retranslateUi();
    QMetaObject::connectSlotsByName(this);
}

void VolumeSliderWidget::retranslateUi()
{
    m_volumeLabel->setText(tr("VOLUME"));
    m_dBValueLabel->setText(tr("0 dB"));
    m_volumeValueLabel->setText(tr("100 %"));
}

void VolumeSliderWidget::setDisplayedValue(int value)
{
    m_volumeValueLabel->setText(QStringLiteral("%1 %").arg(value / 100));
}
