#include "Platform/X11InputBackend.h"
#include "Utils/WinUtils.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QtTest>

#include <X11/Xlib.h>

// A fresh receiver window per case, in its own process as a real application would be.
class Receiver {
public:
    Receiver() { mProcess.start(QStringLiteral(TYPING_RECEIVER), QStringList()); }
    ~Receiver()
    {
        mProcess.write("quit\n");
        if (!mProcess.waitForFinished(2000)) {
            mProcess.kill();
            mProcess.waitForFinished();
        }
    }
    bool waitReady()
    {
        const QString line = readLine(10000);
        return line.startsWith(QLatin1String("ready "));
    }
    // What the line edit holds once it has stopped changing, or the last value at the time-out.
    QString text(const QString& expected, int timeoutMs = 3000)
    {
        QElapsedTimer clock;
        clock.start();
        QString last;
        while (clock.elapsed() < timeoutMs) {
            mProcess.write("get\n");
            const QString line = readLine(1000);
            last = line.mid(5);
            if (last == expected) {
                return last;
            }
            QTest::qWait(20);
        }
        return last;
    }

private:
    QString readLine(int timeoutMs)
    {
        QElapsedTimer clock;
        clock.start();
        while (!mProcess.canReadLine() && clock.elapsed() < timeoutMs) {
            mProcess.waitForReadyRead(50);
        }
        return QString::fromUtf8(mProcess.readLine()).chopped(1);
    }

    QProcess mProcess;
};

class TestX11Typing : public QObject {
    Q_OBJECT

private slots:
    void mixedTextArrivesEveryTime();
    void backspaceRemovesWhatItShould();
    void chordsFromStoredCodes();
    void foregroundWindowName();
};

void TestX11Typing::mixedTextArrivesEveryTime()
{
    const QString text = QStringLiteral("你好世界, world 👋 ü");
    QElapsedTimer clock;
    qint64 typing = 0;
    for (int round = 0; round < 20; ++round) {
        Receiver receiver;
        QVERIFY(receiver.waitReady());
        // A fresh backend each time: every CJK character, the emoji and the ü go through a
        // remap of a spare keycode, the case where characters used to get lost.
        X11InputBackend backend;
        WinUtils::getInstance()->setBackend(&backend);
        clock.start();
        WinUtils::getInstance()->sendInput(text);
        typing += clock.elapsed();
        QVERIFY(backend.remapCount() >= 6);
        QCOMPARE(receiver.text(text), text);
        WinUtils::getInstance()->setBackend(nullptr);
    }
    qInfo("typing cost with fresh remaps: %.1f ms per character on average",
          double(typing) / (20.0 * text.toUcs4().size()));
}

void TestX11Typing::backspaceRemovesWhatItShould()
{
    Receiver receiver;
    QVERIFY(receiver.waitReady());
    WinUtils* win = WinUtils::getInstance();
    win->sendInput(QStringLiteral("abc你好"));
    QCOMPARE(receiver.text(QStringLiteral("abc你好")), QStringLiteral("abc你好"));
    win->backspace();
    win->backspace();
    win->backspace();
    QCOMPARE(receiver.text(QStringLiteral("ab")), QStringLiteral("ab"));
}

void TestX11Typing::chordsFromStoredCodes()
{
    Receiver receiver;
    QVERIFY(receiver.waitReady());
    WinUtils* win = WinUtils::getInstance();
    win->sendInput(QStringLiteral("Hello World"));
    QCOMPARE(receiver.text(QStringLiteral("Hello World")), QStringLiteral("Hello World"));
    // A stored "Command+A" chord (55, 0) replaces the text with what is typed next.
    win->sendKeyboard(55, true);
    win->sendKeyboard(0, true);
    win->sendKeyboard(0, false);
    win->sendKeyboard(55, false);
    win->sendInput(QStringLiteral("Y"));
    QCOMPARE(receiver.text(QStringLiteral("Y")), QStringLiteral("Y"));
    // And the editing helpers are whole chords, not stuck keys.
    win->sendInput(QStringLiteral("zz"));
    win->selectAll();
    win->sendInput(QStringLiteral("q"));
    QCOMPARE(receiver.text(QStringLiteral("q")), QStringLiteral("q"));
}

void TestX11Typing::foregroundWindowName()
{
    Receiver receiver;
    QVERIFY(receiver.waitReady());
    QCOMPARE(WinUtils::getInstance()->getForegroundWindowName(), QStringLiteral("typing_receiver"));
}

QTEST_GUILESS_MAIN(TestX11Typing)
#include "tst_x11typing.moc"
