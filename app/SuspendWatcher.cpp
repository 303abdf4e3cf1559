#include "app/SuspendWatcher.h"

#include <QDBusConnection>

SuspendWatcher::SuspendWatcher(QObject* parent) : QObject(parent)
{
#ifndef Q_OS_WIN
    QDBusConnection bus = QDBusConnection::systemBus();
    if (bus.isConnected()) {
        m_connected = bus.connect(
            QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
            QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("PrepareForSleep"),
            this, SLOT(onPrepareForSleep(bool)));
    }
#endif
}

void SuspendWatcher::onPrepareForSleep(bool start)
{
    // The signal comes twice: true before sleeping, false after waking.
    if (start)
        emit suspending();
}
