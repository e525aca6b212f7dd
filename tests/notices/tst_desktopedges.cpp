// On Xvfb whose work area does not start at the screen's corner (a dock on the left and the
// right, bars at the top and the bottom, published as a window manager does) and where a
// compositor owns its selection: the notices sit at the work area's edges, and the see-through
// parts of the panels let the clicks through to the window below.
#include "Widget/Common/WindowLook.h"
#include "Widget/Notices/CalendarPhrasesDialog.h"
#include "Widget/Notices/LowbatDialog.h"
#include "Widget/Notices/RestDialog.h"
#include "Widget/Notices/USBChangeMessageDialog.h"
#include "Widget/Notices/WidgetConsoleNotices.h"
#include "Widget/NotificationDialog.h"
#include "Widget/Panels/ChangeTranMoreLanguageDialog.h"
#include "Widget/Panels/FocusFollowDialog.h"
#include "Widget/WidgetNoticeSink.h"

#include <QApplication>
#include <QLabel>
#include <QPointer>
#include <QScreen>
#include <QtTest>

#include <X11/Xatom.h>
#include <X11/Xlib.h>

namespace {

// Left 64, top 32, right 40, bottom 48 of the 1280 x 1024 screen are taken.
const QRect kWorkArea(64, 32, 1280 - 64 - 40, 1024 - 32 - 48);
const int kRight = kWorkArea.x() + kWorkArea.width();
const int kBottom = kWorkArea.y() + kWorkArea.height();

template <typename Window>
Window* shown()
{
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* window = qobject_cast<Window*>(widget); window && window->isVisible()) {
            return window;
        }
    }
    return nullptr;
}

}  // namespace

class TestDesktopEdges : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void noticesSitAtTheWorkAreasEdges();
    void seeThroughPartsTakeNoClicks();
};

void TestDesktopEdges::initTestCase()
{
    QCOMPARE(QGuiApplication::primaryScreen()->availableGeometry(), kWorkArea);
    QVERIFY(WindowLook::compositing());
}

void TestDesktopEdges::noticesSitAtTheWorkAreasEdges()
{
    LowbatDialog* battery = LowbatDialog::getInstance();
    battery->changeView(LowbatDialog::ChargingPage);
    QCOMPARE(battery->geometry(), QRect(kRight - 298, kBottom - 308, 298, 308));

    // The reminders rise out of the bottom edge, 2 pixels in from the corner.
    RestDialog* rest = RestDialog::getInstance();
    rest->showContent();
    QTRY_COMPARE(rest->geometry(), QRect(kRight - 384 - 2, kBottom - 2 - 384, 384, 384));
    rest->hide();
    CalendarPhrases phrase;
    phrase.content = QStringLiteral("早安");
    CalendarPhrasesDialog* calendar = CalendarPhrasesDialog::getInstance();
    calendar->showContentAt(phrase, 10);
    QTRY_COMPARE(calendar->geometry(), QRect(kRight - 384 - 2, kBottom - 2 - 384, 384, 384));

    // The plug strip slides in at the top right corner of the work area.
    WidgetConsoleNotices notices;
    notices.showDeviceChange(true);
    USBChangeMessageDialog* strip = shown<USBChangeMessageDialog>();
    QVERIFY(strip != nullptr);
    QTRY_COMPARE(strip->geometry(), QRect(kRight - 336, kWorkArea.y(), 336, USBChangeMessageDialog::kHeight));

    // The one-line notice: bottom right, above whatever has the focus, drawn like the strip.
    WidgetNoticeSink sink;
    sink.showNotice(QStringLiteral("无法连接到服务!"));
    NotificationDialog* notice = shown<NotificationDialog>();
    QVERIFY(notice != nullptr);
    QCOMPARE(notice->geometry().bottomRight(), QPoint(kRight - 24 - 1, kBottom - 24 - 1));
    QVERIFY(notice->windowFlags().testFlag(Qt::X11BypassWindowManagerHint));
    QVERIFY(notice->testAttribute(Qt::WA_TranslucentBackground));
    QCOMPARE(notice->text(), QStringLiteral("无法连接到服务!"));
    QVERIFY(notice->hideTimer()->isActive());

    // With ZORVANE_SCREENSHOTS set, the whole screen as it stands (run it beside docks of
    // these sizes under a window manager to see them side by side).
    const QString folder = qEnvironmentVariable("ZORVANE_SCREENSHOTS");
    if (!folder.isEmpty()) {
        QTest::qWait(300);
        QVERIFY(QGuiApplication::primaryScreen()->grabWindow(0).save(folder +
                                                                     QStringLiteral("/desktop-edges.png")));
    }
    for (QWidget* window : std::initializer_list<QWidget*>{battery, calendar, strip}) {
        window->close();
    }
    // The bubble goes by itself, for good.
    QPointer<NotificationDialog> gone(notice);
    notice->hideTimer()->setInterval(0);
    notice->hideTimer()->start();
    QTRY_VERIFY(gone.isNull());
}

void TestDesktopEdges::seeThroughPartsTakeNoClicks()
{
    // The 更多 picker is taller than its card: below the card nothing is drawn.
    ChangeTranMoreLanguageDialog picker;
    picker.show();
    QVERIFY(picker.mask().contains(QPoint(126, 70)));
    QVERIFY(!picker.mask().contains(QPoint(126, ChangeTranMoreLanguageDialog::kFrameHeight + 20)));

    // Above the caret panel's card only the arrow is drawn.
    FocusFollowDialog panel;
    const QRect arrow = panel.arrow()->geometry();
    QVERIFY(panel.mask().contains(QPoint(arrow.center().x(), arrow.bottom())));
    QVERIFY(panel.mask().contains(QPoint(20, FocusFollowPanel::kCardTop + 40)));
    QVERIFY(!panel.mask().contains(QPoint(4, 4)));
    QVERIFY(!panel.mask().contains(QPoint(arrow.right() + 6, arrow.center().y())));
}

int main(int argc, char* argv[])
{
    // What a window manager and a compositor publish, in place before the application reads it.
    Display* display = XOpenDisplay(nullptr);
    if (display == nullptr) {
        return 1;
    }
    const Window root = DefaultRootWindow(display);
    const long area[4] = {kWorkArea.x(), kWorkArea.y(), kWorkArea.width(), kWorkArea.height()};
    XChangeProperty(display, root, XInternAtom(display, "_NET_WORKAREA", False), XA_CARDINAL, 32,
                    PropModeReplace, reinterpret_cast<const unsigned char*>(area), 4);
    const Window owner = XCreateSimpleWindow(display, root, 0, 0, 1, 1, 0, 0, 0);
    XSetSelectionOwner(display, XInternAtom(display, "_NET_WM_CM_S0", False), owner, CurrentTime);
    XSync(display, False);

    QApplication app(argc, argv);
    TestDesktopEdges test;
    const int failed = QTest::qExec(&test, argc, argv);
    XCloseDisplay(display);
    return failed;
}

#include "tst_desktopedges.moc"
