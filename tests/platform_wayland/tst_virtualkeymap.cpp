#include "Platform/Wayland/VirtualKeymap.h"

#include <QtTest>

class TestVirtualKeymap : public QObject {
    Q_OBJECT

private slots:
    void fullTableGivesUpLeastRecentlyUsedKeys();
};

// Whether compositors and clients take the keymaps, every kind of character included, is
// checked with real ones: tst_waylandtyping.
void TestVirtualKeymap::fullTableGivesUpLeastRecentlyUsedKeys()
{
    const unsigned long backSpace = 0xff08;
    VirtualKeymap keymap(4, {backSpace});
    QVERIFY(keymap.place({'a', 'b', 'c'}));
    const int keyOfB = keymap.keyFor('b');
    QVERIFY(!keymap.place({'a'}));
    QVERIFY(keymap.place({'d'}));  // b: the oldest of those not used since; BackSpace stays
    QCOMPARE(keymap.keyFor('b'), -1);
    QCOMPARE(keymap.keyFor('d'), keyOfB);
    // A run never gives up its own keys: c stays, a (older than d) goes.
    QVERIFY(keymap.place({'c', 'e', backSpace}));
    QVERIFY(keymap.keyFor('c') > 0 && keymap.keyFor('d') > 0 && keymap.keyFor('e') > 0);
    QCOMPARE(keymap.keyFor('a'), -1);
    QVERIFY(keymap.place({'f', 'g', 'h'}));
    QVERIFY(keymap.keyFor(backSpace) > 0);
    QCOMPARE(keymap.size(), 4);
    // Runs end where a fourth different keysym besides BackSpace would need a key.
    QCOMPARE(keymap.runEnd({'a', backSpace, 'b', 'c', 'd', 'a'}, 0), 4);
    QCOMPARE(keymap.runEnd({'a', 'b', 'a', 'c', 'd', 'a'}, 4), 6);
}

QTEST_GUILESS_MAIN(TestVirtualKeymap)
#include "tst_virtualkeymap.moc"
