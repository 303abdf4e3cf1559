// The window's 16 ms display tick with a loaded disc while playing: seek
// slider, end-of-track check, track and time labels, meters.
#include "app/MainWindow.h"
#include "tools/mkddp/Mkddp.h"
#include "widgets/MeterSectionWidget.h"
#include "widgets/TimeWidget.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

// Lets the window be exposed and the start-up work run before measuring.
static void settle()
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < 300)
        QApplication::processEvents(QEventLoop::AllEvents, 20);
}

static void BM_DisplayTick(benchmark::State& state)
{
    QTemporaryDir dir;
    const QString disc = dir.filePath(QStringLiteral("disc"));
    mkddp::writeDisc(mkddp::realisticDisc(), disc);
    MainWindow window;
    window.show();
    window.openPath(disc);
    window.player().play();
    settle();
    for (auto _ : state) {
        window.onTimeout();
        QApplication::processEvents(); // let the labels and meters repaint
    }
    window.player().stop();
}
BENCHMARK(BM_DisplayTick)->Unit(benchmark::kMicrosecond);

// The same tick plus what it makes visible: the meters and the time display
// painted at once rather than at the next frame.
static void BM_DisplayTickWithRepaint(benchmark::State& state)
{
    QTemporaryDir dir;
    const QString disc = dir.filePath(QStringLiteral("disc"));
    mkddp::writeDisc(mkddp::realisticDisc(), disc);
    MainWindow window;
    window.show();
    window.openPath(disc);
    window.player().play();
    settle();
    QWidget* meters = window.meterSection();
    QWidget* time = window.timeWidget();
    for (auto _ : state) {
        window.onTimeout();
        meters->repaint();
        time->repaint();
    }
    window.player().stop();
}
BENCHMARK(BM_DisplayTickWithRepaint)->Unit(benchmark::kMicrosecond);

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QStandardPaths::setTestModeEnabled(true);
    QSettings::setDefaultFormat(QSettings::IniFormat);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
