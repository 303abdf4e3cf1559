#include "widgets/TransportWidget.h"

#include "widgets/TransportButton.h"

#include <QHBoxLayout>
#include <QIcon>

TransportWidget::TransportWidget(QWidget* parent) : QWidget(parent)
{
    setupUi();
}

TransportButton* TransportWidget::makeButton(const char* name, const char* icon)
{
    auto* button = new TransportButton(this);
    button->setObjectName(QString::fromLatin1(name));
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    policy.setHorizontalStretch(1);
    policy.setVerticalStretch(1);
    button->setSizePolicy(policy);
    button->setMinimumSize(QSize(30, 30));
    button->setMaximumSize(QSize(30, 30));
    QIcon buttonIcon;
    buttonIcon.addFile(QString::fromLatin1(icon), QSize(), QIcon::Normal, QIcon::Off);
    button->setIcon(buttonIcon);
    button->setAutoRaise(true);
    m_horizontalLayout->addWidget(button);
    return button;
}

void TransportWidget::setupUi()
{
    if (objectName().isEmpty())
        setObjectName(QStringLiteral("TransportWidget"));
    m_horizontalLayout = new QHBoxLayout(this);
    m_horizontalLayout->setObjectName(QStringLiteral("horizontalLayout"));
    // Only the volume beside it sets the row's height; no band under them.
    m_horizontalLayout->setContentsMargins(6, 2, 6, 2);
    m_backButton = makeButton("backButton", ":/back_icon");
    m_nextButton = makeButton("nextButton", ":/next_icon");
    m_stopButton = makeButton("stopButton", ":/stop_icon");
    m_playButton = makeButton("playButton", ":/play_icon");
    retranslateUi();
    QMetaObject::connectSlotsByName(this);
}

void TransportWidget::retranslateUi()
{
    m_backButton->setToolTip(tr("Skip to previous track"));
    m_nextButton->setToolTip(tr("Skip to next track"));
    m_stopButton->setToolTip(tr("Stop playback"));
    m_playButton->setToolTip(tr("Start playback from cursor"));
}
