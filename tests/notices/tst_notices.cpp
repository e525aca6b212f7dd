#include "Widget/Notices/BLEConnectedDialog.h"
#include "Widget/Notices/LowbatDialog.h"
#include "Widget/Notices/RestDialog.h"
#include "Widget/Notices/USBChangeMessageDialog.h"
#include "Widget/Notices/WidgetConsoleNotices.h"
#include "WidgetPresenter/LowbatPresenter.h"

#include <QApplication>
#include <QCursor>
#include <QMouseEvent>
#include <QPointer>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QScreen>
#include <QTimer>
#include <QToolButton>
#include <QtTest>

namespace {

// With ZORVANE_SCREENSHOTS set, each window is also written there as a picture.
void shoot(QWidget* widget, const QString& name)
{
    const QString folder = qEnvironmentVariable("ZORVANE_SCREENSHOTS");
    if (!folder.isEmpty()) {
        QVERIFY(widget->grab().save(folder + QLatin1Char('/') + name + QStringLiteral(".png")));
    }
}

QRect available()
{
    return QGuiApplication::primaryScreen()->availableGeometry();
}

// The work area's bottom right corner, just outside it.
QPoint corner()
{
    return available().bottomRight() + QPoint(1, 1);
}

QList<USBChangeMessageDialog*> strips()
{
    QList<USBChangeMessageDialog*> found;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* strip = qobject_cast<USBChangeMessageDialog*>(widget); strip && strip->isVisible()) {
            found << strip;
        }
    }
    return found;
}

void drag(QWidget* widget, QEvent::Type type, const QPoint& global)
{
    QMouseEvent event(type, widget->mapFromGlobal(global), global, Qt::LeftButton,
                      type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(widget, &event);
}

}  // namespace

class TestNotices : public QObject {
    Q_OBJECT

private slots:
    void cleanup();
    void batteryPagesPlaceAndAnimations();
    void batteryFramesAreAllThere();
    void batteryGoesOnlyAfterFiveSecondsAway();
    void batteryButtonSilencesAndCloses();
    void batteryShownAgainWhileShrinking();
    void hiddenBatteryPanelRests();
    void reminderMovesOneWayAtATime();
    void stripSlidesInStandsAndGoes();
    void bleHintGoesByItself();
    void withoutCompositorCornersAreCut();
};

void TestNotices::cleanup()
{
    LowbatDialog::getInstance()->hide();
    for (USBChangeMessageDialog* strip : strips()) {
        strip->close();
    }
}

void TestNotices::batteryPagesPlaceAndAnimations()
{
    LowbatDialog* panel = LowbatDialog::getInstance();
    const QStringList names = {QStringLiteral("lowbat"), QStringLiteral("lowbat-critical"),
                               QStringLiteral("lowbat-shutdown"), QStringLiteral("lowbat-charging")};
    for (int page = 0; page < 4; ++page) {
        panel->changeView(page);
        QVERIFY(panel->isVisible());
        QCOMPARE(panel->currentPage(), page);
        QCOMPARE(panel->size(), QSize(298, 308));
        QCOMPARE(panel->pos(), corner() - QPoint(298, 308));
        QCOMPARE(panel->noLongerRemindButton()->isVisible(), page < 2);
        QCOMPARE(panel->presenter()->lowbatTimer()->isActive(), page == 0);
        QCOMPARE(panel->presenter()->minLowbatTimer()->isActive(), page == 1);
        QVERIFY(panel->autoHideTimer()->isActive());
        shoot(panel, names[page]);

        // Dragged away, the next showing puts it back in the corner.
        const QPoint start = panel->geometry().center();
        drag(panel, QEvent::MouseButtonPress, start);
        drag(panel, QEvent::MouseMove, start + QPoint(-40, -30));
        drag(panel, QEvent::MouseButtonRelease, start + QPoint(-50, -30));
        QCOMPARE(panel->pos(), corner() - QPoint(348, 338));
        panel->hide();
    }
}

void TestNotices::batteryFramesAreAllThere()
{
    LowbatDialog* panel = LowbatDialog::getInstance();
    for (int frame = 1; frame <= LowbatPresenter::kLowbatFrames; ++frame) {
        panel->setLowbatAnimationImage(frame);
        QVERIFY2(!panel->lowbatFrame().isNull(), qPrintable(QString::number(frame)));
    }
    for (int frame = 1; frame <= LowbatPresenter::kMinLowbatFrames; ++frame) {
        panel->setMinLowbatAnimationImage(frame);
        QVERIFY2(!panel->minLowbatFrame().isNull(), qPrintable(QString::number(frame)));
    }
    // Neighbouring frames differ, or the picture would not move.
    panel->setLowbatAnimationImage(1);
    const QImage first = panel->lowbatFrame().toImage();
    panel->setLowbatAnimationImage(40);
    QVERIFY(panel->lowbatFrame().toImage() != first);
}

void TestNotices::batteryGoesOnlyAfterFiveSecondsAway()
{
    LowbatDialog* panel = LowbatDialog::getInstance();
    QSignalSpy lowGone(panel, &LowbatDialog::signalLowbatViewAutoHide);
    QSignalSpy minGone(panel, &LowbatDialog::signalMinLowbatViewAutoHide);
    const QPoint inside = panel->geometry().center();
    const QPoint outside(10, 10);

    // Under the pointer it stays, also on a page without a button.
    for (int page : {0, 3}) {
        panel->changeView(page);
        QCursor::setPos(panel->geometry().center());
        for (int tick = 0; tick < 200; ++tick) {
            panel->onAutoHideTick();
        }
        QVERIFY(panel->autoHideTimer()->isActive());
    }

    // 4.9 seconds away and back restarts the count.
    panel->changeView(1);
    QCursor::setPos(outside);
    for (int tick = 0; tick < 49; ++tick) {
        panel->onAutoHideTick();
    }
    QCursor::setPos(inside);
    panel->onAutoHideTick();
    QCursor::setPos(outside);
    for (int tick = 0; tick < 49; ++tick) {
        panel->onAutoHideTick();
    }
    QVERIFY(panel->autoHideTimer()->isActive());
    panel->onAutoHideTick();
    QVERIFY(!panel->autoHideTimer()->isActive());
    QTRY_VERIFY(panel->isHidden());
    QCOMPARE(panel->height(), 0);
    QCOMPARE(minGone.count(), 1);
    QCOMPARE(lowGone.count(), 0);

    // Shrunk to nothing, the next showing has its full size again.
    panel->changeView(2);
    QCOMPARE(panel->size(), QSize(298, 308));
    panel->animationHide();
    QTRY_VERIFY(panel->isHidden());
    QCOMPARE(minGone.count() + lowGone.count(), 1);
}

void TestNotices::batteryButtonSilencesAndCloses()
{
    LowbatDialog* panel = LowbatDialog::getInstance();
    QSignalSpy low(panel, &LowbatDialog::signalLowbatNoLongerRemind);
    QSignalSpy min(panel, &LowbatDialog::signalMinLowbatNoLongerRemind);
    for (int page : {0, 1}) {
        panel->changeView(page);
        panel->noLongerRemindButton()->click();
        QVERIFY(panel->isHidden());
        QVERIFY(!panel->presenter()->lowbatTimer()->isActive());
        QVERIFY(!panel->presenter()->minLowbatTimer()->isActive());
        QCOMPARE(QPair(low.count(), min.count()), QPair(1, page));
    }
    // The cross only closes: the next report shows the panel again.
    panel->changeView(0);
    panel->closeButton()->click();
    QTRY_VERIFY(panel->isHidden());
    QCOMPARE(QPair(low.count(), min.count()), QPair(1, 1));
}

void TestNotices::batteryShownAgainWhileShrinking()
{
    LowbatDialog* panel = LowbatDialog::getInstance();
    QSignalSpy gone(panel, &LowbatDialog::signalLowbatViewAutoHide);
    panel->changeView(0);
    panel->animationHide();
    QTest::qWait(300);
    panel->changeView(0);
    QTest::qWait(LowbatDialog::kHideMs);
    QVERIFY(panel->isVisible());
    QCOMPARE(panel->size(), QSize(298, 308));
    QCOMPARE(gone.count(), 0);
}

void TestNotices::hiddenBatteryPanelRests()
{
    // However the panel goes, nothing keeps loading pictures or watching the pointer for it.
    LowbatDialog* panel = LowbatDialog::getInstance();
    LowbatPresenter* presenter = panel->presenter();
    const auto resting = [&] {
        return !presenter->lowbatTimer()->isActive() && !presenter->minLowbatTimer()->isActive() &&
               !panel->autoHideTimer()->isActive();
    };
    panel->changeView(LowbatDialog::LowbatPage);
    panel->hide();  // by its owner
    QVERIFY(resting());
    panel->changeView(LowbatDialog::MinLowbatPage);
    QVERIFY(presenter->minLowbatTimer()->isActive());
    panel->animationHide();  // shrunk away
    QTRY_VERIFY(panel->isHidden());
    QVERIFY(resting());
}

void TestNotices::reminderMovesOneWayAtATime()
{
    RestDialog* rest = RestDialog::getInstance();
    const QRect up(corner() - QPoint(384 + 2, 384 + 2), QSize(384, 384));
    const auto animations = [rest] { return rest->findChildren<QPropertyAnimation*>().size(); };
    rest->showContent();
    QCOMPARE(rest->geometry(), QRect(up.bottomLeft() + QPoint(0, 1), QSize(384, 0)));
    // Sunk while rising and asked for again while sinking: one movement, and it ends up.
    rest->animationHide();
    QVERIFY(!rest->autoHideTimer()->isActive());
    rest->animationShow();
    QCOMPARE(animations(), 1);
    QTRY_VERIFY(!rest->isMoving());
    QVERIFY(rest->isVisible());
    QCOMPARE(rest->geometry(), up);
    QVERIFY(rest->autoHideTimer()->isActive());
    rest->animationHide();
    QTRY_VERIFY(rest->isHidden());
    QVERIFY(!rest->autoHideTimer()->isActive());
}

void TestNotices::stripSlidesInStandsAndGoes()
{
    const QRect screen = available();
    WidgetConsoleNotices notices;
    notices.showDeviceChange(true);
    notices.showDeviceChange(false);

    // Each change gets its own strip, slid in at the top right corner, standing on its own timer.
    const QList<USBChangeMessageDialog*> shown = strips();
    QCOMPARE(shown.size(), 2);
    QStringList texts;
    for (USBChangeMessageDialog* strip : shown) {
        texts << strip->text();
        QTRY_VERIFY(strip->standTimer()->isActive());
        QCOMPARE(strip->geometry(),
                 QRect(corner().x() - 336, screen.y(), 336, USBChangeMessageDialog::kHeight));
        QVERIFY(strip->focusPolicy() == Qt::NoFocus);
        QVERIFY(strip->windowFlags() & Qt::WindowDoesNotAcceptFocus);
        const bool inserted = strip->text() == QStringLiteral("设备插入");
        shoot(strip, QStringLiteral("usb-change-") +
                         (inserted ? QStringLiteral("insert") : QStringLiteral("remove")));
    }
    texts.sort();
    QCOMPARE(texts, QStringList({QStringLiteral("设备拔出"), QStringLiteral("设备插入")}));

    // Out over the right edge, then gone for good.
    QPointer<USBChangeMessageDialog> first = shown.first();
    first->hideAnimation();
    QTest::qWait(USBChangeMessageDialog::kSlideMs / 2);
    QVERIFY(first->x() > corner().x() - 336);
    QTRY_VERIFY(first.isNull());
    QCOMPARE(strips().size(), 1);
}

void TestNotices::bleHintGoesByItself()
{
    WidgetConsoleNotices notices;
    notices.showBleConnected();
    BLEConnectedDialog* hint = BLEConnectedDialog::getInstance();
    QVERIFY(hint->isVisible());
    shoot(hint, QStringLiteral("ble-connected"));
    QVERIFY(QMetaObject::invokeMethod(hint->hideTimer(), "timeout"));
    QVERIFY(hint->isHidden());
}

void TestNotices::withoutCompositorCornersAreCut()
{
    // Offscreen nothing blends: the see-through parts must be cut away, or they show black.
    LowbatDialog* panel = LowbatDialog::getInstance();
    panel->changeView(3);
    BLEConnectedDialog* hint = BLEConnectedDialog::getInstance();
    hint->showHint();
    for (QWidget* window : {static_cast<QWidget*>(panel), static_cast<QWidget*>(hint)}) {
        const QRegion cut = window->mask();
        QVERIFY(cut.contains(QPoint(150, 150)));
        QVERIFY(!cut.contains(QPoint(0, 0)));
        QVERIFY(!cut.contains(QPoint(window->width() - 1, 0)));
    }
    QVERIFY(!panel->mask().contains(QPoint(290, 150)));  // the margin beside the page
    QVERIFY(!panel->mask().contains(QPoint(150, 300)));  // and below it
    hint->hide();

    // A strip not yet shown waits just outside the top right corner, with nothing to show.
    QPointer<USBChangeMessageDialog> strip = new USBChangeMessageDialog;
    QCOMPARE(strip->pos(), QPoint(corner().x(), available().y()));
    QVERIFY(strip->mask().boundingRect().width() <= 1);
    delete strip;
}

QTEST_MAIN(TestNotices)
#include "tst_notices.moc"
