#include "Utils/KeyTable.h"

#include <QStringList>

const KeyRow kKeyTable[kKeyTableSize] = {
    {0x1000000, 53, "esc"},
    {0x1000030, 122, "F1"},
    {0x1000031, 120, "F2"},
    {0x1000032, 99, "F3"},
    {0x1000033, 118, "F4"},
    {0x1000034, 96, "F5"},
    {0x1000035, 97, "F6"},
    {0x1000036, 98, "F7"},
    {0x1000037, 100, "F8"},
    {0x1000038, 101, "F9"},
    {0x1000039, 109, "F10"},
    {0x100003a, 103, "F11"},
    {0x100003b, 111, "F12"},
    {0x100003c, 105, "F13"},
    {0x100003d, 107, "F14"},
    {0x100003e, 113, "F15"},
    {0x100003f, 106, "F16"},
    {0x1000040, 64, "F17"},
    {0x1000041, 79, "F18"},
    {0x1000042, 80, "F19"},
    {0x1000043, 90, "F20"},
    {96, 39, "`"},
    {49, 18, "1"},
    {50, 19, "2"},
    {51, 20, "3"},
    {52, 21, "4"},
    {53, 23, "5"},
    {54, 22, "6"},
    {55, 26, "7"},
    {56, 28, "8"},
    {57, 25, "9"},
    {48, 29, "0"},
    {45, 27, "-"},
    {61, 24, "="},
    {0x1000003, 51, "Delete"},
    {65, 0, "A"},
    {66, 11, "B"},
    {67, 8, "C"},
    {68, 2, "D"},
    {69, 14, "E"},
    {70, 3, "F"},
    {71, 5, "G"},
    {72, 4, "H"},
    {73, 34, "I"},
    {74, 38, "J"},
    {75, 40, "K"},
    {76, 37, "L"},
    {77, 46, "M"},
    {78, 45, "N"},
    {79, 31, "O"},
    {80, 35, "P"},
    {81, 12, "Q"},
    {82, 15, "R"},
    {83, 1, "S"},
    {84, 17, "T"},
    {85, 32, "U"},
    {86, 9, "V"},
    {87, 13, "W"},
    {88, 7, "X"},
    {89, 16, "Y"},
    {90, 6, "Z"},
    {0x1000001, 48, "Tab"},
    {91, 33, "["},
    {93, 30, "]"},
    {92, 42, "\\"},
    {0x1000024, 57, "CapsLock"},
    {59, 41, ";"},
    {39, 39, "'"},
    {0x1000004, 36, "Return"},
    {0x1000020, 56, "Shift"},
    {44, 43, ","},
    {46, 47, "."},
    {47, 44, "/"},
    {0x1000021, 59, "Control"},
    {0x10000e1, 58, "Option"},
    {44, 55, "Command"},
    {32, 49, "Space"},
    {0x1000012, 123, "Left"},
    {0x1000013, 126, "Up"},
    {0x1000014, 124, "Right"},
    {0x1000015, 125, "Down"},
};

namespace KeyTable {

namespace {
const KeyRow* findByQtKey(int qtKey)
{
    for (const KeyRow& row : kKeyTable) {
        if (row.qtKey == qtKey) {
            return &row;
        }
    }
    return nullptr;
}
}  // namespace

QString getKeyName(int qtKey)
{
    const KeyRow* row = findByQtKey(qtKey);
    return row != nullptr ? QString::fromLatin1(row->name) : QString();
}

int getWinKey(int qtKey)
{
    const KeyRow* row = findByQtKey(qtKey);
    return row != nullptr ? row->macKey : 0;
}

QString buildShortcut(const QList<int>& qtKeys)
{
    QStringList codes;
    for (int key : qtKeys) {
        codes << QString::number(getWinKey(key));
    }
    return codes.join(QStringLiteral("#,#"));
}

QString displayName(const QList<int>& qtKeys)
{
    QStringList names;
    for (int key : qtKeys) {
        names << getKeyName(key);
    }
    return names.join(QLatin1Char('+'));
}

}  // namespace KeyTable
