// The selection windows under a real window manager (openbox) on Xvfb, while another
// application has the keyboard: the toolbar and the pickers neither take the keyboard when
// shown or clicked nor fall behind that application; the translation window shows without the
// keyboard and gets it when the user clicks into its text.
#include "FakePlayback.h"
#include "SpeechRec/SpeechSynthesisUtils.h"
#include "Utils/PreferencesUtils.h"
#include "Widget/Common/TextEdit.h"
#include "Widget/Panels/ChangeSearchLanguageDialog.h"
#include "Widget/Panels/ChangeTranLanguageDialog.h"
#include "Widget/Panels/ChangeTranMoreLanguageDialog.h"
#include "Widget/Panels/PaddleWordsDialog.h"
#include "Widget/Panels/TextTranslateDialog.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QPushButton>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QX11Info>
#include <QtTest>

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>

namespace {

Display* display()
{
    return QX11Info::display();
}

// The window that stands for w among the root's children: the window manager's frame, or w
// itself when the manager leaves it alone.
Window topLevel(Window w)
{
    for (;;) {
        Window root = 0;
        Window parent = 0;
        Window* children = nullptr;
        unsigned int count = 0;
        if (!XQueryTree(display(), w, &root, &parent, &children, &count)) {
            return 0;
        }
        if (children != nullptr) {
            XFree(children);
        }
        if (parent == root || parent == 0) {
            return w;
        }
        w = parent;
    }
}

// Bottom to top.
int stackIndex(Window w)
{
    const Window wanted = topLevel(w);
    Window root = 0;
    Window parent = 0;
    Window* children = nullptr;
    unsigned int count = 0;
    XQueryTree(display(), DefaultRootWindow(display()), &root, &parent, &children, &count);
    int index = -1;
    for (unsigned int i = 0; i < count; ++i) {
        if (children[i] == wanted) {
            index = static_cast<int>(i);
        }
    }
    if (children != nullptr) {
        XFree(children);
    }
    return index;
}

Window focusWindow()
{
    Window focus = 0;
    int revert = 0;
    XGetInputFocus(display(), &focus, &revert);
    return topLevel(focus);
}

bool wmRunning()
{
    const Atom check = XInternAtom(display(), "_NET_SUPPORTING_WM_CHECK", False);
    Atom type = 0;
    int format = 0;
    unsigned long items = 0;
    unsigned long after = 0;
    unsigned char* data = nullptr;
    const bool found = XGetWindowProperty(display(), DefaultRootWindow(display()), check, 0, 1, False,
                                          XA_WINDOW, &type, &format, &items, &after, &data) == Success &&
                       items == 1;
    if (data != nullptr) {
        XFree(data);
    }
    return found;
}

// A real click of the pointer, through the server, as the user's would be.
void click(QWidget* widget)
{
    const QPoint at = widget->mapToGlobal(widget->rect().center());
    XTestFakeMotionEvent(display(), -1, at.x(), at.y(), CurrentTime);
    XTestFakeButtonEvent(display(), 1, True, CurrentTime);
    XTestFakeButtonEvent(display(), 1, False, CurrentTime);
    XFlush(display());
    QTest::qWait(300);
}

}  // namespace

class TestPanelsSelectionWm : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void floatingWindowsLeaveTheKeyboard();
    void translationWindowTakesTheKeyboardToEdit();

private:
    QProcess mWm;
    QProcess mClient;
    Window mClientWindow = 0;
    FakePlayback mPlayback;
    std::unique_ptr<SpeechSynthesisUtils> mSynthesis;
};

void TestPanelsSelectionWm::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    if (QStandardPaths::findExecutable(QStringLiteral("openbox")).isEmpty()) {
        QSKIP("openbox is not installed");
    }
    mWm.start(QStringLiteral("openbox"), {QStringLiteral("--sm-disable")});
    QTRY_VERIFY_WITH_TIMEOUT(wmRunning(), 10000);
    mClient.start(QStringLiteral(LINE_EDIT_CLIENT), {QStringLiteral("selected text"), QString()});
    QElapsedTimer clock;
    clock.start();
    while (!mClient.canReadLine() && clock.elapsed() < 10000) {
        QTest::qWait(10);
    }
    QVERIFY(mClient.readLine().startsWith("ready"));
    mClientWindow = focusWindow();
    QVERIFY(mClientWindow != 0);
    mSynthesis = std::make_unique<SpeechSynthesisUtils>(SpeechSynthesisWorker::Service{}, &mPlayback);
}

void TestPanelsSelectionWm::cleanupTestCase()
{
    mClient.kill();
    mClient.waitForFinished();
    mWm.kill();
    mWm.waitForFinished();
}

void TestPanelsSelectionWm::floatingWindowsLeaveTheKeyboard()
{
    PaddleWordsDialog toolbar(nullptr, mSynthesis.get());
    ChangeSearchLanguageDialog search;
    ChangeTranMoreLanguageDialog more;
    ChangeTranLanguageDialog pairs(nullptr, &more);
    QCursor::setPos(300, 400);
    toolbar.startShow();
    search.move(500, 600);
    search.show();
    pairs.move(300, 700);
    pairs.show();
    QTest::mouseClick(pairs.moreButton(), Qt::LeftButton);
    QTest::qWait(500);
    for (QWidget* window : {static_cast<QWidget*>(&toolbar), static_cast<QWidget*>(&search),
                            static_cast<QWidget*>(&pairs), static_cast<QWidget*>(&more)}) {
        QVERIFY(window->isVisible());
        QVERIFY2(stackIndex(window->winId()) > stackIndex(mClientWindow), window->metaObject()->className());
    }
    QCOMPARE(focusWindow(), mClientWindow);

    // Pressed for real: the buttons work and the application keeps the keyboard.
    QSignalSpy reading(&toolbar, &PaddleWordsDialog::signalReadingButtonPress);
    click(toolbar.readButton());
    QCOMPARE(reading.size(), 1);
    QSignalSpy language(&search, &ChangeSearchLanguageDialog::signalChangeLanguage);
    click(search.findChildren<QPushButton*>().constLast());
    QCOMPARE(language.size(), 1);
    QCOMPARE(focusWindow(), mClientWindow);
}

void TestPanelsSelectionWm::translationWindowTakesTheKeyboardToEdit()
{
    PaddleWordsDialog toolbar(nullptr, mSynthesis.get());
    TextTranslateDialog window(nullptr, &toolbar, mSynthesis.get());
    QCursor::setPos(400, 300);
    toolbar.startShow();
    toolbar.toHide();
    window.setSourceText(QStringLiteral("你好"));
    QTest::qWait(500);
    QVERIFY(window.isVisible());
    QVERIFY(stackIndex(window.winId()) > stackIndex(mClientWindow));
    QCOMPARE(focusWindow(), mClientWindow);

    click(window.sourceBox()->viewport());
    QVERIFY(!window.sourceBox()->isReadOnly());
    QTRY_COMPARE(focusWindow(), topLevel(window.winId()));
    QTRY_VERIFY(window.sourceBox()->hasFocus());
    window.sourceBox()->moveCursor(QTextCursor::End);
    QProcess::execute(QStringLiteral("xdotool"), {QStringLiteral("type"), QStringLiteral("ab")});
    QTRY_COMPARE(window.getSourceText(), QStringLiteral("你好ab"));
    window.toHide();
}

QTEST_MAIN(TestPanelsSelectionWm)
#include "tst_panels_selection_wm.moc"
