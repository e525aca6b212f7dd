#include "E2e.h"
#include "Hid/DeviceMessage.h"

using namespace E2e;

namespace {

const QString kSentence = QStringLiteral("今天天气很好。");
const QSize kConsoleSize(880, 600);
constexpr int kStartMs = 25000;
constexpr int kTextMs = 15000;

// What the mouse hears: espeak-ng's voice at 16 kHz mono 16-bit.
bool writeSpeech(const QString& path)
{
    QProcess speak;
    speak.start(QStringLiteral("espeak-ng"), {QStringLiteral("-w"), path + QStringLiteral(".raw.wav"),
                                              QStringLiteral("testing one two three")});
    QProcess convert;
    if (speak.waitForFinished(20000) && speak.exitCode() == 0) {
        convert.start(
            QStringLiteral("sox"),
            {path + QStringLiteral(".raw.wav"), QStringLiteral("-r"), QStringLiteral("16000"),
             QStringLiteral("-c"), QStringLiteral("1"), QStringLiteral("-b"), QStringLiteral("16"), path});
    }
    return convert.waitForFinished(20000) && convert.exitCode() == 0;
}

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
    bool clientHasKeyboard();
    QString clientText();
    QString programLog();

    std::unique_ptr<Child> mServices;
    std::unique_ptr<Child> mWindow;
    std::unique_ptr<Child> mProgram;
    std::unique_ptr<Child> mClient;
    QString mClientWindow;
};

void TestTalkButton::initTestCase()
{
    const QString runtime = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    const QString script = runtime + QStringLiteral("/script.txt");
    {
        QFile file(script);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(kSentence.toUtf8() + '\n');
    }
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
    const QString lastQuestion =
        QStringLiteral("out ") +
        QString::fromLatin1(DeviceMessage::getSoundEffect().toByteArray(31).toHex(' '));
    QVERIFY(mWindow->waitForOutput(lastQuestion, kStartMs));
    const QString console = waitForWindow(QStringLiteral("^Zorvane$"), kConsoleSize, kStartMs);
    QVERIFY(!console.isEmpty());
    xdotool({QStringLiteral("windowminimize"), QStringLiteral("--sync"), console});

    mClient = std::make_unique<Child>();
    mClient->start(QStringLiteral(LINE_EDIT_CLIENT), {QString(), QString()});
    QVERIFY(mClient->waitForOutput(QStringLiteral("ready "), 10000));
    mClientWindow = waitForWindow(QStringLiteral("^selection source$"));
    QVERIFY(!mClientWindow.isEmpty());
    QVERIFY(clientHasKeyboard());
}

void TestTalkButton::cleanupTestCase()
{
    mProgram.reset();
    if (mClient) {
        mClient->process().write("quit\n");
    }
    mClient.reset();
    mWindow.reset();
    mServices.reset();
}

bool TestTalkButton::clientHasKeyboard()
{
    return xdotool({QStringLiteral("getwindowfocus")}) == mClientWindow &&
           xdotool({QStringLiteral("getactivewindow")}) == mClientWindow;
}

QString TestTalkButton::programLog()
{
    QFile log(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
              QStringLiteral("/ZorvaneV2/ZorvaneLog.txt"));
    return log.open(QIODevice::ReadOnly) ? QString::fromUtf8(log.readAll()) : QString();
}

QString TestTalkButton::clientText()
{
    const QString before = mClient->output();
    mClient->process().write("?\n");
    if (!QTest::qWaitFor(
            [&] {
                return mClient->output().size() > before.size() &&
                       mClient->output().endsWith(QLatin1Char('\n'));
            },
            2000)) {
        return QString();
    }
    // presses, owns clipboard, text, clipboard text
    return mClient->output().mid(before.size()).trimmed().section(QLatin1Char('\t'), 2, 2);
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
    QVERIFY(clientHasKeyboard());
    xdotool({QStringLiteral("mouseup"), QStringLiteral("1")});

    QString last;
    QVERIFY2(QTest::qWaitFor(
                 [&] {
                     last = clientText();
                     return last == kSentence;
                 },
                 kTextMs),
             qPrintable(QStringLiteral("client has '%1'\nzorvane: %2\nwindow: %3")
                            .arg(last, programLog().right(2000), mWindow->output().right(1500))));
    QVERIFY(clientHasKeyboard());
}

QTEST_MAIN(TestTalkButton)
#include "tst_talkbutton.moc"
