#include "Hid/HookManager.h"
#include "InputPresenterRig.h"
#include "Utils/AppPaths.h"
#include "Utils/WinUtils.h"

#include <QClipboard>
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

}  // namespace

// Text selected with the mouse, as the X session holds it, becomes the toolbar's text.
class TestX11Selection : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
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

void TestX11Selection::init()
{
    mRig = std::make_unique<InputPresenterRig>();
    mRig->connectDevice();
}

void TestX11Selection::cleanup()
{
    HookManager::getInstance()->stopMouseHook();
    mRig.reset();
}

void TestX11Selection::dragInAnotherApplication()
{
    const QString words = QStringLiteral("翻译这段文字 translate this");
    const QString usersClipboard = QStringLiteral("the user's own clipboard");
    QProcess source;
    const auto readLine = [&source] {
        QElapsedTimer clock;
        clock.start();
        // Our event loop keeps running: the source may ask us for a clipboard we took.
        while (!source.canReadLine() && clock.elapsed() < 10000) {
            QTest::qWait(20);
        }
        return QString::fromUtf8(source.readLine()).trimmed();
    };
    // Ended whatever the outcome: a source left running would keep the clipboard.
    const std::unique_ptr<QProcess, void (*)(QProcess*)> ending(&source, [](QProcess* p) {
        p->kill();
        p->waitForFinished();
    });
    source.start(QStringLiteral(SELECTION_SOURCE), {words, usersClipboard});
    const QStringList ready = readLine().split(QLatin1Char(' '));
    QCOMPARE(ready.size(), 5);
    const int left = ready.at(1).toInt();
    const int middle = ready.at(2).toInt() + ready.at(4).toInt() / 2;
    const int right = left + ready.at(3).toInt();

    toolbarMayShow();
    // The desktop's own keys: a copy chord would reach the source and be counted there.
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
    pointer(left + 3, middle, 1, true);
    for (int x = left + 20; x < right; x += 40) {
        pointer(x, middle, 0, false);
    }
    pointer(right - 3, middle, 1, false);
    XCloseDisplay(dpy);

    QTRY_COMPARE(view().callsOf(QStringLiteral("toShowPaddleWordsView")).size(), 1);
    QCOMPARE(presenter()->paddleText(), words);
    // No key reached the application, and the user's clipboard is still its own.
    source.write("get\n");
    QCOMPARE(readLine(), QString(QStringLiteral("keys 0 1 ") + usersClipboard));
}

void TestX11Selection::selectionRules()
{
    toolbarMayShow();
    setSelection(QStringLiteral("selected words"));
    HookManager* hook = HookManager::getInstance();
    // A drag of 9 pixels is a click; 10 on one axis selects.
    hook->OnMouseEvent(HookManager::LeftMouseDown, 100, 100);
    hook->OnMouseEvent(HookManager::LeftMouseUp, 109, 91);
    QTest::qWait(20);
    QVERIFY(presenter()->paddleText().isEmpty());
    hook->OnMouseEvent(HookManager::LeftMouseDown, 100, 100);
    hook->OnMouseEvent(HookManager::LeftMouseUp, 100, 110);
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

void TestX11Selection::selectionPolls()
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

void TestX11Selection::readingPieces()
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
    QFile file(AppPaths::dataFile(QStringLiteral("/text.txt")));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("andor bb ab\n"));
}

QTEST_MAIN(TestX11Selection)
#include "tst_x11selection.moc"
