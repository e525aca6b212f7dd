#include "Hid/HookManager.h"
#include "InputPresenterRig.h"
#include "Platform/WinUtils.h"
#include "Utils/AppPaths.h"

#include <QClipboard>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QMimeData>
#include <QProcess>
#include <QSignalSpy>
#include <QtTest>

#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>

namespace {

using P = InputPresenter;

void setSelection(const QString& text, bool binaryToo = false)
{
    auto* data = new QMimeData;
    data->setText(text);
    if (binaryToo) {
        data->setData(QStringLiteral("application/octet-stream"), "\x01");
    }
    QGuiApplication::clipboard()->setMimeData(data, QClipboard::Selection);
}

// Another application with a line edit that has the keyboard focus, in its own process.
class Client {
public:
    Client(const QString& text, const QString& clipboard)
    {
        mProcess.start(QStringLiteral(LINE_EDIT_CLIENT), {text, clipboard});
        const QStringList ready = readLine().split(QLatin1Char(' '));
        if (ready.size() == 5) {
            geometry =
                QRect(ready.at(1).toInt(), ready.at(2).toInt(), ready.at(3).toInt(), ready.at(4).toInt());
        }
    }
    // Ended whatever the outcome: a client left running would keep the clipboard.
    ~Client()
    {
        mProcess.kill();
        mProcess.waitForFinished();
    }
    // Key presses it got, whether it owns the clipboard, its text, the clipboard's text.
    QStringList state()
    {
        mProcess.write("get\n");
        return readLine().split(QLatin1Char('\t'));
    }
    // Its text once it equals expected and a moment later (a shrinking text passes through
    // the expected one), or what it holds after a time-out.
    QString text(const QString& expected)
    {
        for (int i = 0; i < 100 && state().value(2) != expected; ++i) {
            QTest::qWait(20);
        }
        QTest::qWait(100);
        return state().value(2);
    }

    QRect geometry;  // of the line edit, on the screen

private:
    QString readLine()
    {
        QElapsedTimer clock;
        clock.start();
        // Our event loop keeps running: the client may ask us for a clipboard we took.
        while (!mProcess.canReadLine() && clock.elapsed() < 10000) {
            QTest::qWait(5);
        }
        return QString::fromUtf8(mProcess.readLine()).chopped(1);
    }

    QProcess mProcess;
};

}  // namespace

// What the input presenter does to other applications on a real X server: the rewrite of
// revised text typed into them, and the text selected in them becoming the toolbar's.
class TestX11Presenter : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void revisionsLeaveExactlyTheNewText();
    void dragInAnotherApplication();
    void selectionRules();
    void selectionPolls();
    void readingPieces();

private:
    P* presenter() { return mRig->presenter.get(); }
    RecordingInputView& view() { return mRig->view; }
    void toolbarMayShow()
    {
        mRig->setPreferences([](UserPreferences& p) { p.textTranslateMode = 1; });
        view().answers[QStringLiteral("isShowPaddlewordsView")] = true;
        view().answers[QStringLiteral("isHiddenPaddleWordsView")] = true;
        view().answers[QStringLiteral("isHiddenTextTranslateView")] = true;
    }

    std::unique_ptr<InputPresenterRig> mRig;
};

void TestX11Presenter::init()
{
    mRig = std::make_unique<InputPresenterRig>();
    mRig->connectDevice();
}

void TestX11Presenter::cleanup()
{
    HookManager::getInstance()->stopMouseHook();
    mRig.reset();
}

void TestX11Presenter::revisionsLeaveExactlyTheNewText()
{
    Client client{QString(), QString()};
    QVERIFY(client.geometry.isValid());
    WinUtils::getInstance()->setBackend(nullptr);  // the desktop's own keys, not the recorder
    // Each pair: a partial result, then its revision; the box is emptied between pairs.
    const QList<QStringList> revisions{
        {QStringLiteral("好😀"), QStringLiteral("好")},
        {QStringLiteral("😀"), QStringLiteral("😃")},
        {QStringLiteral("我想去南"), QStringLiteral("我想去北京看👋")},
    };
    for (const QStringList& revision : revisions) {
        presenter()->sendOutput(revision.at(0));
        QCOMPARE(client.text(revision.at(0)), revision.at(0));
        presenter()->sendOutput(revision.at(1));
        QCOMPARE(client.text(revision.at(1)), revision.at(1));
        presenter()->sendOutput(QString());
        QCOMPARE(client.text(QString()), QString());
    }
    // Taken back for the panel being edited: only the differing emoji leaves the box.
    presenter()->sendOutput(QStringLiteral("你好😀"));
    QCOMPARE(client.text(QStringLiteral("你好😀")), QStringLiteral("你好😀"));
    QCOMPARE(presenter()->restoreContent(QStringLiteral("你好😃")), QStringLiteral("😃"));
    QCOMPARE(client.text(QStringLiteral("你好")), QStringLiteral("你好"));
}

void TestX11Presenter::dragInAnotherApplication()
{
    const QString words = QStringLiteral("翻译这段文字 translate this");
    const QString usersClipboard = QStringLiteral("the user's own clipboard");
    Client client(words, usersClipboard);
    QVERIFY(client.geometry.isValid());
    toolbarMayShow();
    // The desktop's own keys: a copy chord would reach the client and be counted there.
    WinUtils::getInstance()->setBackend(nullptr);
    HookManager::getInstance()->startMouseHook();
    Display* dpy = XOpenDisplay(nullptr);
    QVERIFY(dpy != nullptr);
    // Each step is let through before the next, as a hand drags.
    const auto pointer = [dpy](int x, int y, int button, bool press) {
        XTestFakeMotionEvent(dpy, -1, x, y, 0);
        if (button != 0) {
            XTestFakeButtonEvent(dpy, button, press ? True : False, 0);
        }
        XSync(dpy, False);
        QTest::qWait(20);
    };
    const int y = client.geometry.center().y();
    pointer(client.geometry.left() + 3, y, 1, true);
    for (int x = client.geometry.left() + 20; x < client.geometry.right(); x += 40) {
        pointer(x, y, 0, false);
    }
    pointer(client.geometry.right() - 3, y, 1, false);
    XCloseDisplay(dpy);

    QTRY_COMPARE(view().callsOf(QStringLiteral("toShowPaddleWordsView")).size(), 1);
    QCOMPARE(presenter()->paddleText(), words);
    // No key reached the application, and the user's clipboard is still its own.
    QCOMPARE(client.state(), QStringList({QStringLiteral("0"), QStringLiteral("1"), words, usersClipboard}));
}

void TestX11Presenter::selectionRules()
{
    toolbarMayShow();
    setSelection(QStringLiteral("selected words"));
    HookManager* hook = HookManager::getInstance();
    // The end of a click captures nothing; the end of a double click does, as a drag does.
    emit hook->signalPaddleWords(0);
    QTest::qWait(20);
    QVERIFY(presenter()->paddleText().isEmpty());
    emit hook->signalDoubleClickListener(1, 0);
    QTRY_COMPARE(view().callsOf(QStringLiteral("toShowPaddleWordsView")).size(), 1);
    QCOMPARE(presenter()->paddleText(), QStringLiteral("selected words"));
    QVERIFY(mRig->desktop.log.isEmpty());

    // Refused: binary data, a lone line break; with the text panel open, no toolbar.
    view().takeCalls();
    setSelection(QStringLiteral("binary"), true);
    presenter()->onClipboardDataChange();
    setSelection(QStringLiteral("\r\n"));
    presenter()->onClipboardDataChange();
    QVERIFY(!presenter()->timer(P::TimerClipboardPoll).isActive());
    view().answers[QStringLiteral("isHiddenTextTranslateView")] = false;
    setSelection(QStringLiteral("more words"));
    presenter()->onClipboardDataChange();
    QVERIFY(view().callsOf(QStringLiteral("toShowPaddleWordsView")).isEmpty());
    QCOMPARE(presenter()->paddleText(), QStringLiteral("more words"));

    // Translate mode off: the selection is not read.
    mRig->setPreferences([](UserPreferences& p) { p.textTranslateMode = 0; });
    setSelection(QStringLiteral("ignored"));
    presenter()->onPaddleWords();
    QCOMPARE(presenter()->paddleText(), QStringLiteral("more words"));
}

void TestX11Presenter::selectionPolls()
{
    toolbarMayShow();
    QGuiApplication::clipboard()->clear(QClipboard::Selection);
    presenter()->onClipboardDataChange();
    QVERIFY(presenter()->timer(P::TimerClipboardPoll).isActive());
    for (int i = 0; i < 3; ++i) {
        presenter()->expireTimer(P::TimerClipboardPoll);
    }
    QVERIFY(!presenter()->timer(P::TimerClipboardPoll).isActive());
    // The selection is claimed by the second poll.
    presenter()->onClipboardDataChange();
    presenter()->expireTimer(P::TimerClipboardPoll);
    setSelection(QStringLiteral("late"));
    presenter()->expireTimer(P::TimerClipboardPoll);
    QVERIFY(!presenter()->timer(P::TimerClipboardPoll).isActive());
    QCOMPARE(presenter()->paddleText(), QStringLiteral("late"));
    QCOMPARE(view().callsOf(QStringLiteral("toShowPaddleWordsView")).size(), 1);
}

void TestX11Presenter::readingPieces()
{
    toolbarMayShow();
    QSignalSpy pieces(mRig->synthesis.get(), &SpeechSynthesisUtils::speechSynthesis);
    const auto read = [&](const QString& text) {
        setSelection(text);
        presenter()->onClipboardDataChange();
        pieces.clear();
        presenter()->onToStartTextReading(3);
    };
    read(QString(2048, QLatin1Char('a')));
    QCOMPARE(pieces.size(), 2);
    read(QString(2049, QLatin1Char('a')));
    QCOMPARE(pieces.size(), 3);
    QCOMPARE(pieces.last().at(0).toString(), QStringLiteral("a"));
    QCOMPARE(pieces.last().mid(1), QVariantList({3, 5, 5, 5}));

    read(QStringLiteral("and/or <b>*</b>, a\\b?\n"));
    QCOMPARE(pieces.first().at(0).toString(), QStringLiteral("andor bb ab"));
    pieces.clear();
    presenter()->onToStartTextReading(0);  // the selection keeps the change
    QCOMPARE(pieces.first().at(0).toString(), QStringLiteral("andor bb ab"));
    // What was read is kept nowhere in our folders.
    for (const AppPaths::Kind kind : {AppPaths::Kind::Data, AppPaths::Kind::Cache, AppPaths::Kind::Config}) {
        QDirIterator files(AppPaths::dir(kind), QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            QFile file(files.next());
            QVERIFY(file.open(QIODevice::ReadOnly));
            QVERIFY2(!file.readAll().contains("andor bb ab"), qPrintable(file.fileName()));
        }
    }
}

QTEST_MAIN(TestX11Presenter)
#include "tst_x11presenter.moc"
