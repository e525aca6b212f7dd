#include "Utils/KeyTable.h"
#include "Widget/LineEdit.h"

#include <QSet>
#include <QSignalSpy>
#include <QtTest>

class TestKeyTable : public QObject {
    Q_OBJECT

private slots:
    void tableAndItsQuirks();
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
    QCOMPARE(int(sizeof(kKeyTable) / sizeof(kKeyTable[0])), 81);
    QSet<QString> names;
    for (const KeyRow& row : kKeyTable) {
        names.insert(QString::fromLatin1(row.name));
    }
    QCOMPARE(names.size(), 81);
    // "`" and "'" share a code; the comma comes before "Command", which is never found.
    QCOMPARE(KeyTable::getWinKey(Qt::Key_QuoteLeft), 39);
    QCOMPARE(KeyTable::getWinKey(Qt::Key_Apostrophe), 39);
    QCOMPARE(KeyTable::getKeyName(44), QStringLiteral(","));
    QCOMPARE(KeyTable::getWinKey(44), 43);
    QCOMPARE(KeyTable::getWinKey(0x10000e1), 58);
    QCOMPARE(KeyTable::getWinKey(Qt::Key_Alt), 0);
    QCOMPARE(KeyTable::getKeyName(Qt::Key_Backslash), QStringLiteral("\\"));
    QCOMPARE(KeyTable::getWinKey(Qt::Key_Backspace), 51);
    QCOMPARE(KeyTable::getWinKey(Qt::Key_F20), 90);
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
    LineEdit box;
    box.setShortcutMode(true);
    QSignalSpy spy(&box, &LineEdit::signalShortcut);
    QTest::keyPress(&box, Qt::Key_Control);
    QTest::keyPress(&box, Qt::Key_A);
    QCOMPARE(box.text(), QStringLiteral("Control+A"));
    QVERIFY(box.clearTimer()->isActive());
    QTest::keyRelease(&box, Qt::Key_A);
    QCOMPARE(spy.size(), 0);
    QTest::keyRelease(&box, Qt::Key_Control);
    QCOMPARE(spy.size(), 1);
    QCOMPARE(spy.at(0).at(0).value<QList<int>>(), QList<int>({Qt::Key_Control, Qt::Key_A}));
    QCOMPARE(box.text(), QStringLiteral("Control+A"));  // the box keeps its text
}

void TestKeyTable::unknownKeyInAChord()
{
    LineEdit box;
    box.setShortcutMode(true);
    QSignalSpy spy(&box, &LineEdit::signalShortcut);
    QTest::keyPress(&box, Qt::Key_A);
    QTest::keyPress(&box, Qt::Key_Pause);
    QCOMPARE(box.text(), QStringLiteral("A+"));
    QTest::keyRelease(&box, Qt::Key_Pause);
    QTest::keyRelease(&box, Qt::Key_A);
    QCOMPARE(spy.size(), 1);
    QCOMPARE(KeyTable::buildShortcut(spy.at(0).at(0).value<QList<int>>()), QStringLiteral("0#,#0"));
}

void TestKeyTable::releaseFinishesAChord()
{
    LineEdit box;
    box.setShortcutMode(true);
    QSignalSpy spy(&box, &LineEdit::signalShortcut);
    QTest::keyPress(&box, Qt::Key_A);
    QTest::keyRelease(&box, Qt::Key_A);
    QTest::keyPress(&box, Qt::Key_B);
    QCOMPARE(spy.size(), 1);
    QCOMPARE(spy.at(0).at(0).value<QList<int>>(), QList<int>({Qt::Key_A}));
    QCOMPARE(box.text(), QStringLiteral("B"));
}

void TestKeyTable::heldModifierDropsReleasedKeys()
{
    LineEdit box;
    box.setShortcutMode(true);
    QSignalSpy spy(&box, &LineEdit::signalShortcut);
    QTest::keyPress(&box, Qt::Key_Shift);
    QTest::keyPress(&box, Qt::Key_A);
    QTest::keyRelease(&box, Qt::Key_A);
    QTest::keyPress(&box, Qt::Key_B);
    QCOMPARE(box.text(), QStringLiteral("Shift+B"));
    QTest::keyRelease(&box, Qt::Key_B);
    QTest::keyRelease(&box, Qt::Key_Shift);
    QCOMPARE(spy.size(), 1);
    QCOMPARE(spy.at(0).at(0).value<QList<int>>(), QList<int>({Qt::Key_Shift, Qt::Key_B}));
}

void TestKeyTable::unfinishedChordLapses()
{
    LineEdit box;
    box.setShortcutMode(true);
    QSignalSpy spy(&box, &LineEdit::signalShortcut);
    QTest::keyPress(&box, Qt::Key_Control);
    QCOMPARE(box.clearTimer()->interval(), 3000);
    box.onClearTimeout();
    QVERIFY(box.text().isEmpty());
    QVERIFY(!box.clearTimer()->isActive());
    // The lapsed press is forgotten: the next chord starts afresh.
    QTest::keyPress(&box, Qt::Key_X);
    QTest::keyRelease(&box, Qt::Key_X);
    QCOMPARE(spy.size(), 1);
    QCOMPARE(spy.at(0).at(0).value<QList<int>>(), QList<int>({Qt::Key_X}));
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
