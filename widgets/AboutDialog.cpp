#include "widgets/AboutDialog.h"

#include "widgets/PixmapRoutines.h"

#include <QIcon>
#include <QLabel>
#include <QPainter>
#include <QToolButton>

namespace {
const char* const kVersion = "1.5.0";
const char* const kBuild = "18";
} // namespace

QString AboutDialog::versionText()
{
    return QStringLiteral("Tivora ") + QLatin1String(kVersion) + QStringLiteral(" (build ") +
           QLatin1String(kBuild) + QStringLiteral(")");
}

AboutDialog::AboutDialog(QWidget* parent) : QDialog(parent)
{
    if (objectName().isEmpty())
        setObjectName(QStringLiteral("AboutDialog"));
    resize(450, 400);
    setWindowTitle(tr("About"));
    QMetaObject::connectSlotsByName(this);

    if (parent) {
        const QPoint centre = parent->mapToGlobal(parent->rect().center());
        move(centre.x() - width() / 2, centre.y() - height() / 2);
    }

    m_closeButton = new QToolButton(this);
    m_closeButton->setObjectName(QStringLiteral("closeButton"));
    m_closeButton->setGeometry(rect().right() - 20, 5, 20, 20);
    m_closeButton->setAutoRaise(true);
    m_closeButton->setIcon(QIcon(QStringLiteral(":close_icon")));
    QPalette buttonPalette = m_closeButton->palette();
    for (QPalette::ColorRole role : {QPalette::Window, QPalette::Button, QPalette::Mid})
        buttonPalette.setColor(role, Qt::transparent);
    m_closeButton->setPalette(buttonPalette);
    connect(m_closeButton, &QToolButton::clicked, this, &QDialog::close);

    m_versionLabel = new QLabel(versionText(), this);
    m_versionLabel->setObjectName(QStringLiteral("versionLabel"));
    QFont f = m_versionLabel->font();
    f.setBold(true);
    m_versionLabel->setFont(f);
    QPalette labelPalette = m_versionLabel->palette();
    labelPalette.setColor(QPalette::WindowText, Qt::white);
    m_versionLabel->setPalette(labelPalette);
    m_versionLabel->adjustSize();
    m_versionLabel->move(5, height() - m_versionLabel->height());

    setWindowFlags(Qt::Dialog | Qt::FramelessWindowHint);
}

void AboutDialog::paintEvent(QPaintEvent*)
{
    const qreal ratio = devicePixelRatioF();
    QPixmap picture = renderIcon(QStringLiteral(":about_dialog"),
                                 QSize(int(width() * ratio), int(height() * ratio)));
    picture.setDevicePixelRatio(ratio);
    QPainter p(this);
    p.drawPixmap(rect(), picture);
}
