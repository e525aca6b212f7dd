#include "Platform/MacKeyMap.h"
#include "Utils/KeyTable.h"
#include "Widget/LineEdit.h"

#include <QSet>
#include <QSignalSpy>
#include <QtTest>

#include <X11/keysym.h>

namespace {

// The key a row's name says, as X names it: what a stored chord must press here.
unsigned long keysymOfName(const QString& name)
{
    static const QHash<QString, unsigned long> named{
        {QStringLiteral("esc"), XK_Escape},        {QStringLiteral("Delete"), XK_BackSpace},
        {QStringLiteral("Tab"), XK_Tab},           {QStringLiteral("CapsLock"), XK_Caps_Lock},
        {QStringLiteral("Return"), XK_Return},     {QStringLiteral("Shift"), XK_Shift_L},
        {QStringLiteral("Control"), XK_Control_L}, {QStringLiteral("Option"), XK_Alt_L},
        {QStringLiteral("Command"), XK_Control_L}, {QStringLiteral("Space"), XK_space},
        {QStringLiteral("Left"), XK_Left},         {QStringLiteral("Up"), XK_Up},
        {QStringLiteral("Right"), XK_Right},       {QStringLiteral("Down"), XK_Down}};
    if (named.contains(name)) {
        return named.value(name);
    }
    if (name.size() > 1 && name.startsWith(QLatin1Char('F'))) {
        return XK_F1 + static_cast<unsigned long>(name.mid(1).toInt() - 1);
    }
    // A character key's keysym is its Latin-1 code, letters in lower case.
    return name.at(0).toLower().unicode();
}

// A box taking a shortcut, and the chords it reported.
struct ShortcutBox {
    LineEdit box;
    QSignalSpy spy{&box, &LineEdit::signalShortcut};
    ShortcutBox() { box.setShortcutMode(true); }
    QList<int> chord(int i = 0) const { return spy.at(i).at(0).value<QList<int>>(); }
};

}  // namespace

class TestKeyTable : public QObject {
    Q_OBJECT

private slots:
    void tableAndItsQuirks();
    void eachCodePressesItsKey();
    void storedAndShownForms();
    void captureChord();
    void unknownKeyInAChord();
    void releaseFinishesAChord();
    void heldModifierDropsReleasedKeys();
    void unfinishedChordLapses();
    void ordinaryEditBoxOutsideShortcutMode();
};

void TestKeyTable::tableAndItsQuirks()
{
    QSet<QString> names;
    for (const KeyRow& row : kKeyTable) {
        names.insert(QString::fromLatin1(row.name));
    }
    QCOMPARE(names.size(), int(std::size(kKeyTable)));  // no name twice
    // "`" and "'" share a code; the comma comes before "Command", which is never found.
    QCOMPARE(KeyTable::getWinKey(Qt::Key_QuoteLeft), 39);
    QCOMPARE(KeyTable::getWinKey(Qt::Key_Apostrophe), 39);
    QCOMPARE(KeyTable::getKeyName(44), QStringLiteral(","));
    QCOMPARE(KeyTable::getWinKey(44), 43);
    QCOMPARE(KeyTable::getWinKey(Qt::Key_Alt), 0);
}

void TestKeyTable::eachCodePressesItsKey()
{
    for (const KeyRow& row : kKeyTable) {
        const QString name = QString::fromLatin1(row.name);
        // "`" is stored with the apostrophe's code, and so presses the apostrophe.
        const unsigned long expected = name == QLatin1String("`") ? XK_apostrophe : keysymOfName(name);
        QVERIFY2(MacKeyMap::toKeysym(row.macKey) == expected, row.name);
    }
}

void TestKeyTable::storedAndShownForms()
{
    const QList<int> chord = {Qt::Key_Control, Qt::Key_Shift, Qt::Key_S};
    QCOMPARE(KeyTable::buildShortcut(chord), QStringLiteral("59#,#56#,#1"));
    QCOMPARE(KeyTable::displayName(chord), QStringLiteral("Control+Shift+S"));
    QCOMPARE(KeyTable::buildShortcut({}), QString());
    QCOMPARE(KeyTable::buildShortcut({Qt::Key_A}), QStringLiteral("0"));
}

void TestKeyTable::captureChord()
{
    ShortcutBox s;
    QTest::keyPress(&s.box, Qt::Key_Control);
    QTest::keyPress(&s.box, Qt::Key_A);
    QCOMPARE(s.box.text(), QStringLiteral("Control+A"));
    QVERIFY(s.box.clearTimer()->isActive());
    QTest::keyRelease(&s.box, Qt::Key_A);
    QCOMPARE(s.spy.size(), 0);
    QTest::keyRelease(&s.box, Qt::Key_Control);
    QCOMPARE(s.spy.size(), 1);
    QCOMPARE(s.chord(), QList<int>({Qt::Key_Control, Qt::Key_A}));
    QCOMPARE(s.box.text(), QStringLiteral("Control+A"));  // the box keeps its text
}

void TestKeyTable::unknownKeyInAChord()
{
    ShortcutBox s;
    QTest::keyPress(&s.box, Qt::Key_A);
    QTest::keyPress(&s.box, Qt::Key_Pause);
    QCOMPARE(s.box.text(), QStringLiteral("A+"));
    QTest::keyRelease(&s.box, Qt::Key_Pause);
    QTest::keyRelease(&s.box, Qt::Key_A);
    QCOMPARE(s.spy.size(), 1);
    QCOMPARE(KeyTable::buildShortcut(s.chord()), QStringLiteral("0#,#0"));
}

void TestKeyTable::releaseFinishesAChord()
{
    ShortcutBox s;
    QTest::keyPress(&s.box, Qt::Key_A);
    QTest::keyRelease(&s.box, Qt::Key_A);
    QTest::keyPress(&s.box, Qt::Key_B);
    QCOMPARE(s.spy.size(), 1);
    QCOMPARE(s.chord(), QList<int>({Qt::Key_A}));
    QCOMPARE(s.box.text(), QStringLiteral("B"));
}

void TestKeyTable::heldModifierDropsReleasedKeys()
{
    ShortcutBox s;
    QTest::keyPress(&s.box, Qt::Key_Shift);
    QTest::keyPress(&s.box, Qt::Key_A);
    QTest::keyRelease(&s.box, Qt::Key_A);
    QTest::keyPress(&s.box, Qt::Key_B);
    QCOMPARE(s.box.text(), QStringLiteral("Shift+B"));
    QTest::keyRelease(&s.box, Qt::Key_B);
    QTest::keyRelease(&s.box, Qt::Key_Shift);
    QCOMPARE(s.spy.size(), 1);
    QCOMPARE(s.chord(), QList<int>({Qt::Key_Shift, Qt::Key_B}));
}

void TestKeyTable::unfinishedChordLapses()
{
    ShortcutBox s;
    QTest::keyPress(&s.box, Qt::Key_Control);
    QCOMPARE(s.box.clearTimer()->interval(), 3000);
    s.box.onClearTimeout();
    QVERIFY(s.box.text().isEmpty());
    QVERIFY(!s.box.clearTimer()->isActive());
    // The lapsed press is forgotten: the next chord starts afresh.
    QTest::keyPress(&s.box, Qt::Key_X);
    QTest::keyRelease(&s.box, Qt::Key_X);
    QCOMPARE(s.spy.size(), 1);
    QCOMPARE(s.chord(), QList<int>({Qt::Key_X}));
}

void TestKeyTable::ordinaryEditBoxOutsideShortcutMode()
{
    LineEdit box;
    QVERIFY(!box.isShortcutMode());
    QSignalSpy spy(&box, &LineEdit::signalShortcut);
    QTest::keyClicks(&box, QStringLiteral("abc"));
    QCOMPARE(box.text(), QStringLiteral("abc"));
    QCOMPARE(spy.size(), 0);
}

QTEST_MAIN(TestKeyTable)
#include "tst_keytable.moc"
