#include "Platform/Wayland/VirtualKeymap.h"

#include <QSet>

#include <xkbcommon/xkbcommon.h>

namespace {
// The last use of a key never given up.
constexpr quint64 kForever = ~quint64(0);
}  // namespace

VirtualKeymap::VirtualKeymap(int capacity, const QVector<unsigned long>& kept)
    : mCapacity(qBound(1, capacity, kMaxKeys))
{
    place(kept);
    mLastUse.fill(kForever);
    mKept = mKeysyms.size();
}

int VirtualKeymap::runEnd(const QVector<unsigned long>& keysyms, int from) const
{
    QSet<unsigned long> distinct;
    int end = from;
    for (; end < keysyms.size(); ++end) {
        const int index = mIndexOf.value(keysyms[end], -1);
        if (index < 0 || index >= mKept) {
            distinct.insert(keysyms[end]);
        }
        if (distinct.size() > mCapacity - mKept) {
            break;
        }
    }
    return end;
}

bool VirtualKeymap::place(const QVector<unsigned long>& keysyms)
{
    // One clock value for the whole run: none of its keys may go to make room for another.
    const quint64 now = ++mClock;
    QVector<unsigned long> missing;
    for (unsigned long keysym : keysyms) {
        const auto found = mIndexOf.constFind(keysym);
        if (found != mIndexOf.constEnd()) {
            mLastUse[*found] = qMax(mLastUse[*found], now);
        } else if (!missing.contains(keysym)) {
            missing << keysym;
        }
    }
    for (unsigned long keysym : missing) {
        int index = mKeysyms.size();
        if (index < mCapacity) {
            mKeysyms << keysym;
            mLastUse << now;
        } else {
            index = int(std::min_element(mLastUse.cbegin(), mLastUse.cend()) - mLastUse.cbegin());
            Q_ASSERT(mLastUse[index] != now);  // the run did not fit
            mIndexOf.remove(mKeysyms[index]);
            mKeysyms[index] = keysym;
            mLastUse[index] = now;
        }
        mIndexOf.insert(keysym, index);
    }
    return !missing.isEmpty();
}

int VirtualKeymap::keyFor(unsigned long keysym) const
{
    const int index = mIndexOf.value(keysym, -1);
    return index < 0 ? -1 : index + 1;
}

QByteArray VirtualKeymap::text() const
{
    // No compatibility rules and one key type: the keymap is compiled by the compositor and by
    // every client at each change, and this form compiles several times faster than one that
    // includes the standard sets. Modifier state comes in as masks of the real modifiers, which
    // every keymap has.
    QByteArray keycodes;
    QByteArray symbols;
    char name[64];
    for (int i = 0; i < mKeysyms.size(); ++i) {
        const QByteArray code = QByteArray::number(i + 9);
        keycodes += "<K" + code + "> = " + code + ";\n";
        if (xkb_keysym_get_name(static_cast<xkb_keysym_t>(mKeysyms[i]), name, sizeof(name)) < 0) {
            qsnprintf(name, sizeof(name), "0x%lx", mKeysyms[i]);
        }
        symbols += "key <K" + code + "> { [ " + QByteArray(name) + " ] };\n";
    }
    return "xkb_keymap {\n"
           "xkb_keycodes \"zorvane\" { minimum = 8; maximum = 255;\n" +
           keycodes +
           "};\n"
           "xkb_types \"zorvane\" { type \"ONE_LEVEL\" { modifiers = none; level_name[Level1] = \"Any\"; }; "
           "};\n"
           "xkb_compatibility \"zorvane\" { };\n"
           "xkb_symbols \"zorvane\" {\n" +
           symbols + "};\n};\n";
}
