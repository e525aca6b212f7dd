#include "Hid/HookManager.h"

#include <QSignalSpy>
#include <QtTest>

class TestHookManager : public QObject {
    Q_OBJECT

private slots:
    void init() { HookManager::resetInstanceForTest(); }
    void dragOfMoreThanNinePixelsSelects();
    void clickAfterTheWindowAndTimerOnlyWhileBusy();
    void doubleClickEndingInASelectionStaysQuiet();
    void rightButtonIsKeyTwo();

private:
    static void ticks(HookManager* hook, int n)
    {
        for (int i = 0; i < n; ++i) {
            hook->onKeyCheck();
        }
    }
};

void TestHookManager::dragOfMoreThanNinePixelsSelects()
{
    HookManager* hook = HookManager::getInstance();
    QSignalSpy paddle(hook, &HookManager::signalPaddleWords);
    QSignalSpy mouse(hook, &HookManager::signalMouseEvent);
    hook->OnMouseEvent(HookManager::LeftMouseDown, 100, 100);
    hook->OnMouseEvent(HookManager::LeftMouseUp, 109, 91);  // 9 on both axes: a click
    hook->OnMouseEvent(HookManager::LeftMouseDown, 500, 500);
    hook->OnMouseEvent(HookManager::LeftMouseUp, 500, 510);  // 10 down: a selection
    hook->OnMouseEvent(HookManager::LeftMouseDown, 500, 500);
    hook->OnMouseEvent(HookManager::LeftMouseUp, 490, 500);  // 10 to the left
    QCOMPARE(paddle.size(), 3);
    QCOMPARE(paddle.at(0).at(0).toInt(), 0);
    QCOMPARE(paddle.at(1).at(0).toInt(), 1);
    QCOMPARE(paddle.at(2).at(0).toInt(), 1);
    QCOMPARE(mouse.size(), 6);
    QCOMPARE(mouse.at(0), QVariantList({1, 1}));
    QCOMPARE(mouse.at(1), QVariantList({1, 0}));
    // Other event types pass by.
    hook->OnMouseEvent(7, 0, 0);
    QCOMPARE(mouse.size(), 6);
}

void TestHookManager::clickAfterTheWindowAndTimerOnlyWhileBusy()
{
    HookManager* hook = HookManager::getInstance();
    QSignalSpy click(hook, &HookManager::signalClickListener);
    QVERIFY(!hook->isKeyTimerActive());
    hook->OnMouseEvent(HookManager::LeftMouseDown, 10, 10);
    QVERIFY(hook->isKeyTimerActive());
    ticks(hook, 3);
    hook->OnMouseEvent(HookManager::LeftMouseUp, 10, 10);
    ticks(hook, 42);
    QCOMPARE(click.size(), 0);
    ticks(hook, 1);  // the 46th tick
    QCOMPARE(click.size(), 1);
    QCOMPARE(click.at(0).at(0).toInt(), 1);
    QVERIFY(!hook->isKeyTimerActive());
}

void TestHookManager::doubleClickEndingInASelectionStaysQuiet()
{
    HookManager* hook = HookManager::getInstance();
    QSignalSpy twice(hook, &HookManager::signalDoubleClickListener);
    hook->OnMouseEvent(HookManager::LeftMouseDown, 10, 10);
    hook->OnMouseEvent(HookManager::LeftMouseUp, 10, 10);
    ticks(hook, 5);
    hook->OnMouseEvent(HookManager::LeftMouseDown, 10, 10);
    hook->OnMouseEvent(HookManager::LeftMouseUp, 80, 10);  // double click and drag: selects
    QCOMPARE(twice.size(), 1);
    QCOMPARE(twice.at(0), QVariantList({1, 1}));

    // Without the drag the end is told.
    hook->OnMouseEvent(HookManager::LeftMouseDown, 10, 10);
    hook->OnMouseEvent(HookManager::LeftMouseUp, 10, 10);
    ticks(hook, 5);
    hook->OnMouseEvent(HookManager::LeftMouseDown, 10, 10);
    hook->OnMouseEvent(HookManager::LeftMouseUp, 12, 10);
    QCOMPARE(twice.size(), 3);
    QCOMPARE(twice.at(2), QVariantList({1, 0}));
}

void TestHookManager::rightButtonIsKeyTwo()
{
    HookManager* hook = HookManager::getInstance();
    QSignalSpy longClick(hook, &HookManager::signalLongClickListener);
    QSignalSpy paddle(hook, &HookManager::signalPaddleWords);
    hook->OnMouseEvent(HookManager::RightMouseDown, 0, 0);
    ticks(hook, 49);
    QCOMPARE(longClick.size(), 0);
    ticks(hook, 1);  // held for 500 ms
    QCOMPARE(longClick.size(), 1);
    hook->OnMouseEvent(HookManager::RightMouseUp, 300, 300);
    QCOMPARE(longClick.size(), 2);
    QCOMPARE(longClick.at(0), QVariantList({2, 1}));
    QCOMPARE(longClick.at(1), QVariantList({2, 0}));
    QCOMPARE(paddle.size(), 0);  // only the left button selects
}

QTEST_GUILESS_MAIN(TestHookManager)
#include "tst_hookmanager.moc"
