#pragma once

#include <QObject>
#include <QPointer>

#include <memory>

#include <QAbstractButton>
class QShortcut;
class QWidget;

namespace Audio {
class IAudioPlayerTransport;
class ITrackNumberModel;
} // namespace Audio

// Connects the four transport buttons and the Space key to the player, and
// tells the track-number model which track is current. The play button is
// checkable and mirrors whether playback runs: the model calls back whenever
// the player sets its playing flag.
class TransportController : public QObject
{
    Q_OBJECT
public:
    // Creates the window-wide Space shortcut on `window`.
    explicit TransportController(QWidget* window);
    ~TransportController() override;

    void setTransport(Audio::IAudioPlayerTransport* transport);
    // The widget that holds "backButton", "nextButton", "stopButton" and
    // "playButton" (the transport widget, or any ancestor of it).
    void setTransportWidget(QWidget* transportWidget);
    // The model is shared with the window; the controller keeps it alive
    // while it may still call into it.
    void setTrackNumberModel(std::shared_ptr<Audio::ITrackNumberModel> model);

    void connectControls();
    void disconnectControls();

    QAbstractButton* playButton() const { return m_play; }
    QAbstractButton* nextButton() const { return m_next; }
    QAbstractButton* stopButton() const { return m_stop; }
    QAbstractButton* backButton() const { return m_back; }
    QShortcut* spaceShortcut() const { return m_space; }

signals:
    void update();
    void reset();

public slots:
    void onPlayReleased();
    void onNextReleased();
    void onBackReleased();
    void onStopReleased();
    void onSpaceActivated();

private:
    void tellTrackNumber();
    void setPlayButtonChecked(bool checked);

    QShortcut* m_space;
    Audio::IAudioPlayerTransport* m_transport = nullptr;
    std::shared_ptr<Audio::ITrackNumberModel> m_model;
    QPointer<QWidget> m_transportWidget;
    QPointer<QAbstractButton> m_play;
    QPointer<QAbstractButton> m_next;
    QPointer<QAbstractButton> m_stop;
    QPointer<QAbstractButton> m_back;
    QList<QMetaObject::Connection> m_connections;
};
