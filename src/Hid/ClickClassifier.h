#pragma once

#include <QHash>
#include <QObject>
#include <QVarLengthArray>

#include <mutex>

// Turns press and release of keys into single clicks, double clicks and long presses,
// counted in 10 ms ticks. Presses and releases may come from another thread than the
// ticks; the table is guarded here. Results are handed back rather than emitted, so that
// the owner emits its signals outside the lock.
class ClickClassifier {
public:
    static constexpr int kTickMs = 10;
    static constexpr int kDoubleClickTicks = 45;  // a second press below this is a double click
    static constexpr int kLongPressTicks = 50;    // exactly at this tick a held key is a long press

    // One key in progress.
    struct KeyEvent {
        int key = 0;
        int state = 0;  // 0 press seen, 2 long press running, 3 double click running
        int pressCount = 0;
        int releaseCount = 0;
        int ticks = 0;
    };

    enum class Kind { Click, LongClick, DoubleClick };

    // A result to report: a click (status unused), or the start (1) / end (0) of a long
    // press or double click.
    struct Result {
        int key;
        Kind kind;
        int status;
    };
    using Results = QVarLengthArray<Result, 4>;

    // A press (status not 0) or release (0) of key. reportDoubleClickRelease false keeps the
    // end of a double click quiet (the pointer hook while text is being selected).
    Results buildClickType(int key, int status, bool reportDoubleClickRelease = true);

    // One tick for every key in progress.
    Results onKeyCheck();

    // No key in progress: ticks have no work.
    bool isIdle() const;

    // Tests: the entry of a key, if any.
    bool entry(int key, KeyEvent* out) const;

private:
    mutable std::mutex mMutex;
    QHash<int, KeyEvent> mKeys;
};

// Emits the results through an owner's click signals (signalClickListener,
// signalLongClickListener, signalDoubleClickListener).
template <typename Owner>
void emitClickResults(Owner* owner, const ClickClassifier::Results& results)
{
    for (const ClickClassifier::Result& r : results) {
        switch (r.kind) {
            case ClickClassifier::Kind::Click:
                emit owner->signalClickListener(r.key);
                break;
            case ClickClassifier::Kind::LongClick:
                emit owner->signalLongClickListener(r.key, r.status);
                break;
            case ClickClassifier::Kind::DoubleClick:
                emit owner->signalDoubleClickListener(r.key, r.status);
                break;
        }
    }
}
