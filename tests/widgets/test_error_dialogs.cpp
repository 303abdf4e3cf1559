// The error boxes: every kind's title and text word for word, the Rescan
// button's result line for each outcome of a fake device set-up, and the
// audio start-up check that decides whether a box appears at all.

#include "app/ErrorDialog.h"
#include "app/ErrorDialogs.h"
#include "app/SampleRateErrorDialog.h"
#include "tests/app/ModalAnswerer.h"
#include "tests/widgets/FakeDeviceSetup.h"
#include "widgets/CustomStyle.h"
#include "widgets/Resources.h"

#include <QApplication>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>

#include <algorithm>
#include <cmath>

namespace {

const QString kProper = QStringLiteral(
    "<br><br>A proper DDP must contain the following parts:<ul><li>Audio images (IMAGE "
    "files)</li><li>DDP Identifier(DDPID)</li><li>DDP Stream descriptor(DDPMS)</li><li>Subcode "
    "descriptor(PQDESCR)</li></ul");
const QString kUnsupported = QStringLiteral(
    "<br>The Korvane Tivora does not support your DDP.<br><br>Note: The Korvane Tivora is "
    "designed to load DDPs that were created with Quorvex.");
const QString kNotValid = QStringLiteral("The file that you have selected is not a valid DDP.");

// WCAG 2 relative luminance and contrast ratio.
double luminance(const QColor& c)
{
    auto channel = [](double v) {
        return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * channel(c.redF()) + 0.7152 * channel(c.greenF()) + 0.0722 * channel(c.blueF());
}

double contrast(const QColor& a, const QColor& b)
{
    const double la = luminance(a), lb = luminance(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

QString resultLine(const char* colour, const QString& text)
{
    return QStringLiteral("<font color= \"") + QLatin1String(colour) + QStringLiteral("\">") +
           text + QStringLiteral("</font>");
}

} // namespace

class TestErrorDialogs : public QObject
{
    Q_OBJECT

private slots:
    // The result lines are read on the dark dialog, not on a sheet of paper.
    void initTestCase()
    {
        initResources();
        QApplication::setPalette(CustomStyle::darkPalette());
    }

    void titleAndTextOfEveryKind_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("text");
        QTest::newRow("0")
            << 0 << QString() << "Audio Device Sample Rate Not Recommended"
            << "Your audio device is running with a sample rate that is not recommended for "
               "Tivora. <br><br>Set the sample rate of your audio device to <b>16 bit, 44100 Hz "
               "(CD Quality)</b>, and click <b>Rescan</b>. Otherwise a samplerate conversion is "
               "done during playback. To select another audio device in Tivora, open the Tivora "
               "menu and select the audio device from the <b>Devices</b> menu.<br><br>";
        // The way to the device's format is the system's own.
#ifdef Q_OS_WIN
        const QString formatHelp = QStringLiteral(
            "open the Control Panel in Windows and select <b>Sound > Properties > Advanced > "
            "Default Format</b>.");
#else
        const QString formatHelp = QStringLiteral(
            "open the <b>Sound</b> settings of your desktop and choose a profile of the output "
            "device that runs 44100 Hz, or allow 44100 Hz in the configuration of your sound "
            "server (PulseAudio or PipeWire).");
#endif
        QTest::newRow("1")
            << 1 << QString() << "Audio Device Sample Rate Not Compatible"
            << "Your audio device runs with a sample rate that is not compatible with Tivora. "
               "<br><br>Set the sample rate of your audio device to <b>16 bit, 44100 Hz (CD "
               "Quality)</b> and click <b>Rescan</b>. To change the sample rate of your audio "
               "device, " +
                   formatHelp +
                   " <br><br>To select another audio device in Tivora, open the Tivora menu and "
                   "select it from the <b>Devices</b> menu.<br><br>";
        QTest::newRow("2")
            << 2 << QString() << "Audio Device Channel Configuration Not Compatible"
            << "The channel configuration of your audio device is not compatible with Tivora. "
               "Change your audio device settings to at least stereo and click <b>Rescan</b>. To "
               "select another audio device in Tivora, open the Tivora menu and select the audio "
               "device from the <b>Devices</b> menu.<br>";
        const QString engine = QStringLiteral(
            "Tivora experienced an error while initializing the audio engine. <br></br> Make sure "
            "to select an audio device that supports the recommend sample rate of <b>16 bit, "
            "44100 Hz (CD Quality)</b>. <br></br><br></br> Message: ");
        QTest::newRow("3 with message")
            << 3 << "RtApiPulse: no device"
            << "Unknown Audio Engine Error" << engine + "RtApiPulse: no device";
        QTest::newRow("3 empty message")
            << 3 << QString() << "Unknown Audio Engine Error" << engine;
        QTest::newRow("4") << 4 << QString() << "Invalid Path"
                           << "The directory you selected does not exist. Please make sure you "
                              "created and selected a proper directory. Please make also sure to "
                              "hit return, if you created a new folder or renamed it.";
        QTest::newRow("5") << 5 << QString() << "No DDP Selected" << kNotValid + kProper;
        QTest::newRow("6") << 6 << QString() << "No DDP Selected" << kNotValid + kProper;
        QTest::newRow("7") << 7 << QString() << "IMAGE Missing"
                           << "Tivora cannot find the IMAGE file." + kProper + kUnsupported;
        QTest::newRow("8") << 8 << QString() << "DDPID Invalid"
                           << "Tivora cannot read the DDPID file." + kProper + kUnsupported;
        QTest::newRow("9") << 9 << QString() << "DDPMS Invalid"
                           << "Tivora cannot read the DDPMS file." + kProper + kUnsupported;
        QTest::newRow("10") << 10 << QString() << "PQDESCR Invalid"
                            << "Tivora cannot read the PQ DESCR file." + kProper + kUnsupported;
        QTest::newRow("11") << 11 << QString() << "Unknown Error"
                            << "Tivora went into unknown issues." + kProper;
        QTest::newRow("12") << 12 << QString() << QString() << QString();
        QTest::newRow("13") << 13 << "The entry \"link\" is a link."
                            << "ZIP Archive Invalid"
                            << "Tivora cannot read the DDP in this ZIP archive. The archive is "
                               "damaged, truncated or encrypted, or it holds entries that Tivora "
                               "does not open for your safety: links, names that lead out of the "
                               "archive, or files larger than any disc.<br><br>Unpack the archive "
                               "with a tool you trust and open the DDP folder, or ask for a new "
                               "archive.";
        QTest::newRow("14") << 14 << QString() << QString() << QString();
    }

    void titleAndTextOfEveryKind()
    {
        QFETCH(int, kind);
        QFETCH(QString, message);
        QFETCH(QString, title);
        QFETCH(QString, text);
        const LoadResult result{ErrorKind(kind), message.toStdString()};
        ErrorDialog dialog(result);
        QCOMPARE(dialog.windowTitle(), title);
        QCOMPARE(dialog.text(), text);
        QCOMPARE(dialog.icon(), QMessageBox::Information);

        FakeDeviceSetup setup;
        SampleRateErrorDialog audio(result, setup);
        QCOMPARE(audio.windowTitle(), title);
        QCOMPARE(audio.text(), text);
        QCOMPARE(audio.icon(), QMessageBox::Critical);
    }

    void rescanButtonKeepsTheBoxOpen()
    {
        FakeDeviceSetup setup;
        SampleRateErrorDialog dialog(LoadResult{ErrorKind::SampleRateNotCompatible, {}}, setup);
        QCOMPARE(dialog.buttons().size(), 2);
        QCOMPARE(dialog.okButton()->text(), QStringLiteral("OK"));
        QCOMPARE(dialog.buttonRole(dialog.okButton()), QMessageBox::AcceptRole);
        QCOMPARE(dialog.rescanButton()->text(), QStringLiteral("Rescan"));
        QCOMPARE(dialog.buttonRole(dialog.rescanButton()), QMessageBox::NoRole);

        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        QTest::mouseClick(dialog.rescanButton(), Qt::LeftButton);
        QVERIFY(dialog.isVisible());
        QCOMPARE(setup.rescans, std::vector<std::string>{"Null Output"});
        QTest::mouseClick(dialog.okButton(), Qt::LeftButton);
        QVERIFY(!dialog.isVisible());
    }

    void rescanResultLine_data()
    {
        QTest::addColumn<bool>("succeeds");
        QTest::addColumn<int>("rate");
        QTest::addColumn<int>("errorKind");
        QTest::addColumn<QString>("line");
        QTest::newRow("usable at 44100")
            << true << 44100 << 12
            << resultLine("#4ca647", "Rescan successful! The device can be used now.");
        QTest::newRow("usable at 48000")
            << true << 48000 << 12
            << resultLine("#989800", "Rescan successful! The device can be used now but runs with "
                                     "a sample rate that is not recommended (48000 Hz).");
        QTest::newRow("failed: sample rate")
            << false << 0 << 1
            << resultLine("#c7807c",
                          "The sample rate of your audio device is not set to 44100 Hz.");
        QTest::newRow("failed: channels")
            << false << 0 << 2
            << resultLine("#c7807c",
                          "The channel configuration of your audio device is not compatible.");
        QTest::newRow("failed: other")
            << false << 0 << 3 << resultLine("#c7807c", "Unexpected error with your audio device.");
        QTest::newRow("failed: no kind to tell") << false << 0 << 12 << QString();
    }

    void rescanResultLine()
    {
        QFETCH(bool, succeeds);
        QFETCH(int, rate);
        QFETCH(int, errorKind);
        QFETCH(QString, line);
        FakeDeviceSetup setup{std::uint32_t(rate)};
        SampleRateErrorDialog dialog(LoadResult{ErrorKind::SampleRateNotRecommended, {}}, setup);
        const QString built = dialog.text();

        // After another outcome, then twice: the line is replaced, never stacked
        // (a failure with nothing to tell leaves it as it was).
        if (!line.isEmpty()) {
            setup.rescanResult = !succeeds;
            setup.error = LoadResult{ErrorKind::ChannelConfigurationNotCompatible, {}};
            dialog.rescanButton()->click();
        }
        setup.rescanResult = succeeds;
        setup.error = LoadResult{ErrorKind(errorKind), "engine says no"};
        dialog.rescanButton()->click();
        dialog.rescanButton()->click();
        QCOMPARE(dialog.text(), built + line);
        if (line.isEmpty())
            return;

        const QRegularExpressionMatch colour =
            QRegularExpression(QStringLiteral("<font color= \"(#[0-9a-f]{6})\""))
                .match(dialog.text());
        QVERIFY(colour.hasMatch());
        const QColor text(colour.captured(1));
        const QColor background = dialog.palette().color(QPalette::Window);
        QVERIFY2(contrast(text, background) >= 4.5,
                 qPrintable(QStringLiteral("%1 on %2: %3:1")
                                .arg(text.name(), background.name())
                                .arg(contrast(text, background), 0, 'f', 2)));
    }

    void audioStartupCheck_data()
    {
        QTest::addColumn<bool>("succeeded");
        QTest::addColumn<int>("rate");
        QTest::addColumn<int>("errorKind");
        QTest::addColumn<QString>("title"); // empty: no box
        QTest::newRow("ok at 44100") << true << 44100 << 12 << QString();
        QTest::newRow("ok at 48000")
            << true << 48000 << 12 << "Audio Device Sample Rate Not Recommended";
        QTest::newRow("sample rate")
            << false << 0 << 1 << "Audio Device Sample Rate Not Compatible";
        QTest::newRow("channels") << false << 0 << 2
                                  << "Audio Device Channel Configuration Not Compatible";
        QTest::newRow("engine") << false << 0 << 3 << "Unknown Audio Engine Error";
        QTest::newRow("other kind") << false << 0 << 7 << QString();
    }

    void audioStartupCheck()
    {
        QFETCH(bool, succeeded);
        QFETCH(int, rate);
        QFETCH(int, errorKind);
        QFETCH(QString, title);
        FakeDeviceSetup setup{std::uint32_t(rate)};
        setup.error = LoadResult{ErrorKind(errorKind), "device vanished"};
        QWidget window;
        ModalAnswerer answerer;
        checkAudioStartup(succeeded, setup, &window);
        const auto shown = answerer.boxes();
        QCOMPARE(shown.size(), title.isEmpty() ? 0 : 1);
        if (title.isEmpty())
            return;
        QCOMPARE(shown.first().title, title);
        // Every audio problem goes through the box with Rescan.
        QVERIFY(shown.first().critical);
        // Only the engine error carries its message.
        QCOMPARE(shown.first().text.endsWith(QStringLiteral("Message: device vanished")),
                 errorKind == 3);
    }

    void showFunctions()
    {
        QWidget window;
        ModalAnswerer answerer;
        showError(ErrorKind::DdpidMissing, &window);
        QCOMPARE(answerer.boxes().size(), 1);
        QCOMPARE(answerer.boxes().last().title, QStringLiteral("No DDP Selected"));
        QVERIFY(!answerer.boxes().last().critical);
        showError(LoadResult{ErrorKind::ImageMissing, {}}, &window);
        QCOMPARE(answerer.boxes().last().title, QStringLiteral("IMAGE Missing"));

        // No window, no box.
        answerer.clear();
        FakeDeviceSetup setup(48000);
        showError(ErrorKind::InvalidPath, nullptr);
        showAudioError(LoadResult{ErrorKind::SampleRateNotCompatible, {}}, setup, nullptr);
        checkAudioStartup(true, setup, nullptr);
        QCOMPARE(answerer.boxes().size(), 0);
    }
};

QTEST_MAIN(TestErrorDialogs)
#include "test_error_dialogs.moc"
