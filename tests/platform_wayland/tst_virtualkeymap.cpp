#include "Platform/Wayland/VirtualKeymap.h"

#include <QtTest>

#include <xkbcommon/xkbcommon.h>

class TestVirtualKeymap : public QObject {
    Q_OBJECT

private slots:
    void compiledKeymapTypesEachCharacter();
    void fullTableGivesUpLeastRecentlyUsedKeys();
};

// What the compositor and the client do with the text: compile it and translate key codes.
void TestVirtualKeymap::compiledKeymapTypesEachCharacter()
{
    VirtualKeymap keymap;
    // ASCII, digits (bare numbers in the text), Latin-1, CJK, an emoji beyond the BMP, editing keys.
    const QVector<unsigned long> keysyms{'a',  'Z',       ' ',       ',',    '0',   '9',
                                         0xe9, 0x1004e2d, 0x101f600, 0xff08, 0xff0d};
    QVERIFY(keymap.place(keysyms));
    QVERIFY(!keymap.place({0x1004e2d, 'a'}));  // all there: no new keymap
    QCOMPARE(keymap.size(), keysyms.size());

    xkb_context* context = xkb_context_new(XKB_CONTEXT_NO_DEFAULT_INCLUDES);
    xkb_keymap* compiled = xkb_keymap_new_from_string(context, keymap.text().constData(),
                                                      XKB_KEYMAP_FORMAT_TEXT_V1, XKB_KEYMAP_COMPILE_NO_FLAGS);
    QVERIFY(compiled != nullptr);
    xkb_state* state = xkb_state_new(compiled);
    for (unsigned long keysym : keysyms) {
        const xkb_keycode_t code = xkb_keycode_t(keymap.keyFor(keysym) + 8);
        QCOMPARE(xkb_state_key_get_one_sym(state, code), xkb_keysym_t(keysym));
    }
    char utf8[8];
    xkb_state_key_get_utf8(state, xkb_keycode_t(keymap.keyFor(0x101f600) + 8), utf8, sizeof(utf8));
    QCOMPARE(QString::fromUtf8(utf8), QStringLiteral("😀"));
    // A held Shift does not turn a key into another character.
    xkb_state_update_mask(state, 1, 0, 0, 0, 0, 0);
    QCOMPARE(xkb_state_key_get_one_sym(state, xkb_keycode_t(keymap.keyFor('a') + 8)), xkb_keysym_t('a'));
    xkb_state_unref(state);
    xkb_keymap_unref(compiled);
    xkb_context_unref(context);
}

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
