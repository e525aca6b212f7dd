#pragma once

#include <QList>
#include <QString>

// One row per key a command-word chord can hold: the Qt key number the console captures, the
// macOS virtual key code the chord is stored as, and the name shown. Lookups take the first
// matching row. The values are the stored chords' format and stay as they are: "`" and "'"
// share code 39, "Option" holds 0x10000e1 rather than Qt's Alt, and "Command" holds 44, the
// comma's number, so it is never found by Qt key.
struct KeyRow {
    int qtKey;
    int macKey;
    const char* name;
};

inline constexpr int kKeyTableSize = 81;
extern const KeyRow kKeyTable[kKeyTableSize];

namespace KeyTable {

// The shown name of a Qt key, or empty.
QString getKeyName(int qtKey);
// The stored code of a Qt key, or 0.
int getWinKey(int qtKey);
// The stored form of a chord: codes in press order joined by "#,#".
QString buildShortcut(const QList<int>& qtKeys);
// The shown form of a chord: names joined by "+".
QString displayName(const QList<int>& qtKeys);

}  // namespace KeyTable
