#pragma once

#include <QObject>

// Tells the window when the machine is about to sleep, so playback stops
// instead of blaring on at wake-up. On Linux this is logind's PrepareForSleep
// signal on the system bus; without a system bus the watcher stays silent and
// the program runs normally. (On Windows the window's native event hook sees
// the power message itself.)
class SuspendWatcher : public QObject
{
    Q_OBJECT
public:
    explicit SuspendWatcher(QObject* parent = nullptr);
    bool isConnected() const { return m_connected; }

signals:
    void suspending();

private slots:
    void onPrepareForSleep(bool start);

private:
    bool m_connected = false;
};
