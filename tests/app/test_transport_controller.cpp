// The transport buttons and Space drive the player; the play button mirrors
// the playing flag.
#include "app/TransportController.h"
#include "audio/IAudioPlayerTransport.h"
#include "ddp/DDPModel.h"

#include <QShortcut>
#include <QToolButton>
#include <QtTest>

namespace {

// Records calls and keeps a transport state like the player's.
class FakeTransport : public Audio::IAudioPlayerTransport
{
public:
    enum State
    {
        Playing,
        Stopped,
        Paused
    };
    State state = Stopped;
    int track = 1;
    QStringList calls;
    std::shared_ptr<DDPModel> model;

    void play() override { enter(Playing, "play"); }
    void stop() override { enter(Stopped, "stop"); }
    void pause() override { enter(Paused, "pause"); }
    void selectNextTrack() override { step(+1, "next"); }
    void selectPreviousTrack() override { step(-1, "previous"); }
    bool isPlaying() const override { return state == Playing; }
    bool isStopped() const override { return state == Stopped; }
    bool isPaused() const override { return state == Paused; }
    std::int32_t currentTrackNumber() const override { return track; }

private:
    void enter(State next, const char* call)
    {
        calls << QLatin1String(call);
        state = next;
        model->setPlaying(next == Playing);
    }
    void step(int by, const char* call)
    {
        calls << QLatin1String(call);
        track += by;
    }
};

} // namespace

class TransportControllerTest : public QObject
{
    Q_OBJECT

    QWidget* window = nullptr;
    TransportController* controller = nullptr;
    FakeTransport transport;
    std::shared_ptr<DDPModel> model;

private slots:
    void init()
    {
        window = new QWidget;
        auto* transportWidget = new QWidget(window);
        for (const char* name : {"backButton", "nextButton", "stopButton", "playButton"}) {
            auto* button = new QToolButton(transportWidget);
            button->setObjectName(QLatin1String(name));
        }
        model = std::make_shared<DDPModel>();
        transport = FakeTransport();
        transport.model = model;
        controller = new TransportController(window);
        controller->setTransport(&transport);
        controller->setTransportWidget(transportWidget);
        controller->setTrackNumberModel(model);
        controller->connectControls();
    }
    void cleanup()
    {
        delete window;
        model.reset();
    }

    void playButtonMirrorsPlayingAndTellsTheTrack()
    {
        QSignalSpy updates(controller, &TransportController::update);
        controller->playButton()->click();
        QCOMPARE(transport.calls, QStringList{QStringLiteral("play")});
        QVERIFY(controller->playButton()->isChecked());
        QCOMPARE(model->currentRow(), 1);
        QCOMPARE(updates.count(), 1);
        controller->nextButton()->click();
        QCOMPARE(model->currentRow(), 2);
        controller->backButton()->click();
        QCOMPARE(model->currentRow(), 1);
    }

    void stopHoldsFirstThenReturnsToStart()
    {
        QSignalSpy resets(controller, &TransportController::reset);
        controller->playButton()->click();
        controller->stopButton()->click(); // playing -> paused
        QCOMPARE(transport.state, FakeTransport::Paused);
        QVERIFY(!controller->playButton()->isChecked());
        controller->stopButton()->click(); // paused -> stopped
        QCOMPARE(transport.state, FakeTransport::Stopped);
        controller->stopButton()->click(); // stopped: nothing more
        QCOMPARE(transport.calls, (QStringList{QStringLiteral("play"), QStringLiteral("pause"),
                                               QStringLiteral("stop")}));
        QCOMPARE(resets.count(), 2);
    }

    void spaceTogglesPlayAndPause()
    {
        controller->onSpaceActivated();
        QCOMPARE(transport.state, FakeTransport::Playing);
        controller->onSpaceActivated();
        QCOMPARE(transport.state, FakeTransport::Paused);
        controller->onSpaceActivated(); // resumes from pause
        QCOMPARE(transport.state, FakeTransport::Playing);
    }

    void reconnectingDoesNotDoubleTheHandlers()
    {
        controller->connectControls();
        controller->connectControls();
        controller->nextButton()->click();
        QCOMPARE(transport.calls, QStringList{QStringLiteral("next")});
        controller->disconnectControls();
        controller->nextButton()->click();
        QCOMPARE(transport.calls.size(), 1);
    }

    void anOldModelNoLongerReachesTheButton()
    {
        auto fresh = std::make_shared<DDPModel>();
        controller->setTrackNumberModel(fresh);
        model->setPlaying(true); // the previous model's listener was dropped
        QVERIFY(!controller->playButton()->isChecked());
        fresh->setPlaying(true);
        QVERIFY(controller->playButton()->isChecked());
    }
};

QTEST_MAIN(TransportControllerTest)
#include "test_transport_controller.moc"
