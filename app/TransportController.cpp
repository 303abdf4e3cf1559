#include "app/TransportController.h"

#include "audio/IAudioPlayerTransport.h"
#include "ddp/ITrackNumberModel.h"

#include <QAbstractButton>
#include <QShortcut>
#include <QWidget>

TransportController::TransportController(QWidget* window) : QObject(window)
{
    m_space = new QShortcut(QKeySequence(Qt::Key_Space), window);
    m_space->setContext(Qt::WindowShortcut);
}

TransportController::~TransportController()
{
    // The model outlives this controller in other hands: it must not call a
    // listener bound to a destroyed object.
    if (m_model)
        m_model->setPlayingListener({});
}

void TransportController::setTransport(Audio::IAudioPlayerTransport* transport)
{
    m_transport = transport;
}

void TransportController::setTransportWidget(QWidget* transportWidget)
{
    disconnectControls();
    m_transportWidget = transportWidget;
    auto find = [transportWidget](const char* name) {
        return transportWidget ? transportWidget->findChild<QAbstractButton*>(QLatin1String(name))
                               : nullptr;
    };
    m_back = find("backButton");
    m_next = find("nextButton");
    m_stop = find("stopButton");
    m_play = find("playButton");
    if (m_play)
        m_play->setCheckable(true);
}

void TransportController::setTrackNumberModel(std::shared_ptr<Audio::ITrackNumberModel> model)
{
    if (m_model)
        m_model->setPlayingListener({});
    m_model = std::move(model);
    if (m_model)
        m_model->setPlayingListener([this](bool playing) { setPlayButtonChecked(playing); });
}

void TransportController::connectControls()
{
    disconnectControls();
    auto wire = [this](QAbstractButton* button, void (TransportController::*handler)()) {
        if (button)
            m_connections << connect(button, &QAbstractButton::released, this, handler);
    };
    wire(m_play, &TransportController::onPlayReleased);
    wire(m_next, &TransportController::onNextReleased);
    wire(m_stop, &TransportController::onStopReleased);
    wire(m_back, &TransportController::onBackReleased);
    m_connections << connect(m_space, &QShortcut::activated, this,
                             &TransportController::onSpaceActivated);
}

void TransportController::disconnectControls()
{
    for (const QMetaObject::Connection& connection : qAsConst(m_connections))
        disconnect(connection);
    m_connections.clear();
}

void TransportController::onPlayReleased()
{
    if (!m_transport)
        return;
    m_transport->play();
    tellTrackNumber();
    emit update();
}

void TransportController::onNextReleased()
{
    if (!m_transport)
        return;
    m_transport->selectNextTrack();
    tellTrackNumber();
    emit update();
}

void TransportController::onBackReleased()
{
    if (!m_transport)
        return;
    m_transport->selectPreviousTrack();
    tellTrackNumber();
    emit update();
}

void TransportController::onStopReleased()
{
    if (!m_transport)
        return;
    // The first press holds the position, the second returns to the track start.
    if (m_transport->isStopped())
        return;
    if (m_transport->isPaused())
        m_transport->stop();
    else if (m_transport->isPlaying())
        m_transport->pause();
    emit reset();
}

void TransportController::onSpaceActivated()
{
    if (!m_transport)
        return;
    if (!m_transport->isPlaying())
        onPlayReleased();
    else
        onStopReleased();
}

void TransportController::tellTrackNumber()
{
    if (m_model && m_transport)
        m_model->setCurrentRow(m_transport->currentTrackNumber());
}

void TransportController::setPlayButtonChecked(bool checked)
{
    if (m_play)
        m_play->setChecked(checked);
}
