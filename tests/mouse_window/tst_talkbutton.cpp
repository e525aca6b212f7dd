#include "E2e.h"
#include "Hid/DeviceMessage.h"

using namespace E2e;

namespace {

const QString kSentence = QStringLiteral("今天天气很好。");
constexpr int kStartMs = 25000;
constexpr int kTextMs = 15000;

}  // namespace

// The control window as the user meets it: the real program on the window's virtual mouse
// with the stand-ins, and another application with the keyboard. Holding the talk button with
// the pointer dictates into that application, which keeps the keyboard throughout.
class TestTalkButton : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void holdingTheTalkButtonTypesIntoTheFocusedClient();

private:
    std::unique_ptr<Child> mServices;
    std::unique_ptr<Child> mWindow;
    std::unique_ptr<Child> mProgram;
    std::unique_ptr<LineEditClient> mClient;
};

void TestTalkButton::initTestCase()
{
    const QString runtime = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    const QString script = runtime + QStringLiteral("/script.txt");
    QVERIFY(writeFile(script, kSentence.toUtf8() + '\n'));
    const QString speech = runtime + QStringLiteral("/speech.wav");
    QVERIFY(writeSpeech(speech));
    mServices = std::make_unique<Child>();
    QString failure;
    QVERIFY2(startServices(mServices.get(), QStringLiteral(SERVICES_BINARY),
                           {QStringLiteral("--script"), script}, &failure),
             qPrintable(failure));
    writeAutostartEntry();

    const QString socket = runtime + QStringLiteral("/mouse");
    mWindow = std::make_unique<Child>();
    mWindow->start(QStringLiteral(MOUSE_WINDOW_BINARY), {socket, QStringLiteral("--wav"), speech});
    QVERIFY2(mWindow->waitForOutput(QStringLiteral("ready "), 10000), qPrintable(mWindow->output()));

    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("ZORVANE_DEVICE_SOCKET"), socket);
    mProgram = std::make_unique<Child>(environment);
    mProgram->start(QStringLiteral(ZORVANE_BINARY));
    // The program has asked the mouse for its last setting: it is ready for the keys.
    QVERIFY(mWindow->waitForOutput(out(DeviceMessage::getSoundEffect()), kStartMs));
    const QString console = waitForWindow(QStringLiteral("^Zorvane$"), kConsoleSize, kStartMs);
    QVERIFY(!console.isEmpty());
    xdotool({QStringLiteral("windowminimize"), QStringLiteral("--sync"), console});

    mClient = std::make_unique<LineEditClient>();
    QVERIFY(mClient->start(QStringLiteral(LINE_EDIT_CLIENT)));
    QVERIFY(mClient->hasKeyboard());
}

void TestTalkButton::cleanupTestCase()
{
    mProgram.reset();
    mClient.reset();
    mWindow.reset();
    mServices.reset();
}

void TestTalkButton::holdingTheTalkButtonTypesIntoTheFocusedClient()
{
    mWindow->process().write("where dictate\n");
    QVERIFY(mWindow->waitForOutput(QStringLiteral("at dictate "), 5000));
    const QStringList at = mWindow->output()
                               .section(QStringLiteral("at dictate "), 1)
                               .section(QLatin1Char('\n'), 0, 0)
                               .split(QLatin1Char(' '));
    QCOMPARE(at.size(), 4);
    const QPoint button(at.at(0).toInt() + at.at(2).toInt() / 2, at.at(1).toInt() + at.at(3).toInt() / 2);

    xdotool({QStringLiteral("mousemove"), QString::number(button.x()), QString::number(button.y()),
             QStringLiteral("mousedown"), QStringLiteral("1")});
    QVERIFY2(mWindow->waitForOutput(QStringLiteral("recording"), 10000),
             qPrintable(programLog().right(3000)));
    QVERIFY(mWindow->waitForOutput(QStringLiteral("audio done"), 10000));
    // Holding the button has not taken the keyboard from the client.
    QVERIFY(mClient->hasKeyboard());
    xdotool({QStringLiteral("mouseup"), QStringLiteral("1")});

    QVERIFY2(mClient->waitForText(kSentence, kTextMs),
             qPrintable(QStringLiteral("zorvane: %1\nwindow: %2")
                            .arg(programLog().right(2000), mWindow->output().right(1500))));
    QVERIFY(mClient->hasKeyboard());
}

QTEST_MAIN(TestTalkButton)
#include "tst_talkbutton.moc"
