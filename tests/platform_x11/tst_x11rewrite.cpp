#include "InputPresenterRig.h"
#include "Utils/WinUtils.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QtTest>

// The rewrite of a revised segment, typed by the real X11 backend into a Qt line edit in
// another process: what the user sees after each revision.
class TestX11Rewrite : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void revisionsLeaveExactlyTheNewText();

private:
    QString readLine(int timeoutMs);
    // What the line edit holds once it equals expected, or after a time-out.
    QString received(const QString& expected);

    QProcess mReceiver;
    std::unique_ptr<InputPresenterRig> mRig;
};

void TestX11Rewrite::init()
{
    mReceiver.start(QStringLiteral(TYPING_RECEIVER), QStringList());
    QVERIFY(readLine(10000).startsWith(QLatin1String("ready ")));
    mRig = std::make_unique<InputPresenterRig>(false);
    WinUtils::getInstance()->setBackend(nullptr);  // the desktop's own, not the recorder
}

void TestX11Rewrite::cleanup()
{
    mRig.reset();
    mReceiver.write("quit\n");
    if (!mReceiver.waitForFinished(2000)) {
        mReceiver.kill();
        mReceiver.waitForFinished();
    }
}

QString TestX11Rewrite::readLine(int timeoutMs)
{
    QElapsedTimer clock;
    clock.start();
    while (!mReceiver.canReadLine() && clock.elapsed() < timeoutMs) {
        mReceiver.waitForReadyRead(50);
    }
    return QString::fromUtf8(mReceiver.readLine()).chopped(1);
}

QString TestX11Rewrite::received(const QString& expected)
{
    QElapsedTimer clock;
    clock.start();
    QString last;
    while (clock.elapsed() < 3000) {
        mReceiver.write("get\n");
        last = readLine(1000).mid(5);
        if (last == expected) {
            break;
        }
        QTest::qWait(20);
    }
    return last;
}

void TestX11Rewrite::revisionsLeaveExactlyTheNewText()
{
    InputPresenter* presenter = mRig->presenter.get();
    // Each pair: a partial result, then its revision; the box is emptied between pairs.
    const QList<QStringList> revisions{
        {QStringLiteral("好😀"), QStringLiteral("好")},
        {QStringLiteral("😀"), QStringLiteral("😃")},
        {QStringLiteral("我想去南"), QStringLiteral("我想去北京看👋")},
    };
    for (const QStringList& revision : revisions) {
        presenter->sendOutput(revision.at(0));
        QCOMPARE(received(revision.at(0)), revision.at(0));
        presenter->sendOutput(revision.at(1));
        QCOMPARE(received(revision.at(1)), revision.at(1));
        presenter->sendOutput(QString());
        QCOMPARE(received(QString()), QString());
    }

    // Taken back for the panel being edited: only the differing emoji leaves the box.
    presenter->sendOutput(QStringLiteral("你好😀"));
    QCOMPARE(received(QStringLiteral("你好😀")), QStringLiteral("你好😀"));
    QCOMPARE(presenter->restoreContent(QStringLiteral("你好😃")), QStringLiteral("😃"));
    QCOMPARE(received(QStringLiteral("你好")), QStringLiteral("你好"));
}

QTEST_GUILESS_MAIN(TestX11Rewrite)
#include "tst_x11rewrite.moc"
