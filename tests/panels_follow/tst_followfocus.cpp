#include "TranslationService.h"
#include "Widget/Panels/FocusFollowDialog.h"
#include "Widget/Panels/NoFocusFollowDialog.h"

#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QStandardPaths>
#include <QX11Info>

#include <X11/Xlib.h>

namespace {

unsigned long focusedWindow()
{
    Window focus = 0;
    int revert = 0;
    XGetInputFocus(QX11Info::display(), &focus, &revert);
    return focus;
}

}  // namespace

// Under a real X server with a window manager: the panels never take the keyboard from the
// application the user dictates into, except while the user edits the spoken source, and
// then they give it back.
class TestFollowFocus : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void panelsLeaveTheKeyboardAlone();

private:
    TranslationService mService;
    QProcess mWindowManager;
};

void TestFollowFocus::initTestCase()
{
    mService.start();
    mService.reset();
    const QString openbox = QStandardPaths::findExecutable(QStringLiteral("openbox"));
    if (openbox.isEmpty()) {
        QSKIP("openbox is not installed");
    }
    mWindowManager.start(openbox, {QStringLiteral("--sm-disable")});
    QVERIFY(mWindowManager.waitForStarted());
    QTest::qWait(500);
}

void TestFollowFocus::cleanupTestCase()
{
    mWindowManager.terminate();
    mWindowManager.waitForFinished();
}

void TestFollowFocus::panelsLeaveTheKeyboardAlone()
{
    QLineEdit editor;
    editor.resize(400, 40);
    editor.show();
    editor.activateWindow();
    QTRY_COMPARE(focusedWindow(), static_cast<unsigned long>(editor.winId()));

    const FocusFollowPanelPresenter::Collaborators services{mService.http.get(), nullptr, nullptr};
    NoFocusFollowDialog fixed(nullptr, services, nullptr);
    fixed.setInitTranslateView(false);
    QTRY_VERIFY(fixed.isVisible());
    QTest::qWait(300);
    QCOMPARE(focusedWindow(), static_cast<unsigned long>(editor.winId()));
    fixed.toHide();

    FocusFollowDialog focus(nullptr, services, nullptr);
    focus.setInitTranslateView();
    QTRY_VERIFY(focus.isVisible());
    focus.startTranslateAnimation();
    focus.setVoiceTranslateSourceText(QStringLiteral("你好"));
    QTest::qWait(300);
    QCOMPARE(focusedWindow(), static_cast<unsigned long>(editor.winId()));

    // Editing the source is typing into the panel: it takes the keyboard, and gives it back.
    focus.findChild<QPushButton*>(QStringLiteral("editButton"))->click();
    QTRY_COMPARE(focusedWindow(), static_cast<unsigned long>(focus.winId()));
    focus.clearTranslateResult();
    focus.forceFinishView();
    focus.toHide();
    QVERIFY(focus.isHidden());
    QTRY_COMPARE(focusedWindow(), static_cast<unsigned long>(editor.winId()));
}

QTEST_MAIN(TestFollowFocus)
#include "tst_followfocus.moc"
