#include "Platform/X11PointerObserver.h"

#include <QSignalSpy>
#include <QtTest>

#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>

#include <chrono>
#include <thread>

class TestX11PointerObserver : public QObject {
    Q_OBJECT

private slots:
    void seesButtonsAndTheirPositions();
    void aFastDragOnABusyMainThreadKeepsItsPositions();
    void withoutADisplayStaysInert();

private:
    static void pressAt(Display* dpy, unsigned button, int x, int y, bool press)
    {
        XTestFakeMotionEvent(dpy, -1, x, y, 0);
        XTestFakeButtonEvent(dpy, button, press ? True : False, 0);
        XSync(dpy, False);
    }
};

void TestX11PointerObserver::seesButtonsAndTheirPositions()
{
    X11PointerObserver observer;
    QVERIFY(observer.start());
    QSignalSpy spy(&observer, &X11PointerObserver::signalButton);

    Display* dpy = XOpenDisplay(nullptr);
    QVERIFY(dpy != nullptr);
    pressAt(dpy, 1, 100, 120, true);
    pressAt(dpy, 1, 130, 120, false);
    pressAt(dpy, 4, 130, 120, true);  // the wheel is not a button here
    pressAt(dpy, 4, 130, 120, false);
    pressAt(dpy, 3, 200, 220, true);
    pressAt(dpy, 3, 200, 220, false);
    QTRY_COMPARE(spy.size(), 4);
    QCOMPARE(spy.at(0), QVariantList({X11PointerObserver::LeftMouseDown, qint64(100), qint64(120)}));
    QCOMPARE(spy.at(1), QVariantList({X11PointerObserver::LeftMouseUp, qint64(130), qint64(120)}));
    QCOMPARE(spy.at(2), QVariantList({X11PointerObserver::RightMouseDown, qint64(200), qint64(220)}));
    QCOMPARE(spy.at(3), QVariantList({X11PointerObserver::RightMouseUp, qint64(200), qint64(220)}));

    XCloseDisplay(dpy);
    observer.stop();
    QVERIFY(!observer.isActive());
}

void TestX11PointerObserver::aFastDragOnABusyMainThreadKeepsItsPositions()
{
    X11PointerObserver observer;
    QVERIFY(observer.start());
    QSignalSpy spy(&observer, &X11PointerObserver::signalButton);
    // The user drags across text and moves back while the main thread is busy for 200 ms: the
    // press and the release are still placed where they happened.
    std::thread user([] {
        Display* dpy = XOpenDisplay(nullptr);
        pressAt(dpy, 1, 100, 300, true);
        pressAt(dpy, 1, 400, 300, false);
        XTestFakeMotionEvent(dpy, -1, 104, 302, 0);
        XSync(dpy, False);
        XCloseDisplay(dpy);
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    user.join();
    QTRY_COMPARE(spy.size(), 2);
    QCOMPARE(spy.at(0), QVariantList({X11PointerObserver::LeftMouseDown, qint64(100), qint64(300)}));
    QCOMPARE(spy.at(1), QVariantList({X11PointerObserver::LeftMouseUp, qint64(400), qint64(300)}));
}

void TestX11PointerObserver::withoutADisplayStaysInert()
{
    const QByteArray saved = qgetenv("DISPLAY");
    qputenv("DISPLAY", ":4999");
    X11PointerObserver observer;
    QTest::ignoreMessage(QtWarningMsg, "no X display: mouse button gestures are off");
    QVERIFY(!observer.start());
    observer.processPendingEvents();
    QVERIFY(!observer.isActive());
    qputenv("DISPLAY", saved);
}

QTEST_GUILESS_MAIN(TestX11PointerObserver)
#include "tst_x11pointerobserver.moc"
