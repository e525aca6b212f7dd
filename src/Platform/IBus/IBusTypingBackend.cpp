#include "Platform/IBus/IBusTypingBackend.h"

#include "Platform/IBus/IBusEngineService.h"
#include "Platform/IBus/IBusSerialization.h"
#include "Utils/Logging.h"

#include <QDBusMessage>
#include <QGuiApplication>
#include <QScreen>

#include <X11/keysym.h>

#include <utility>

const QString IBusTypingBackend::kEngineName = QStringLiteral("zorvane");

namespace {

const QString kObjectRoot = QStringLiteral("/org/freedesktop/IBus");
constexpr unsigned int kShiftMask = 1u << 0;
constexpr unsigned int kControlMask = 1u << 2;
constexpr unsigned int kAltMask = 1u << 3;
constexpr unsigned int kSuperMask = (1u << 6) | (1u << 26);
constexpr unsigned int kReleaseMask = 1u << 30;

unsigned int modifierOf(unsigned long keysym)
{
    switch (keysym) {
        case XK_Shift_L:
        case XK_Shift_R:
            return kShiftMask;
        case XK_Control_L:
        case XK_Control_R:
            return kControlMask;
        case XK_Alt_L:
        case XK_Alt_R:
            return kAltMask;
        case XK_Super_L:
        case XK_Super_R:
            return kSuperMask;
        default:
            return 0;
    }
}

// The evdev code of a key on a US keyboard: the field's shortcuts (Ctrl+A) are matched by key,
// not by symbol. 0 where we have none.
unsigned int keycodeOf(unsigned long keysym)
{
    static const char kLetters[] = "qwertyuiop----asdfghjkl-----zxcvbnm";
    if (keysym >= XK_a && keysym <= XK_z) {
        for (unsigned int i = 0; i + 1 < sizeof(kLetters); ++i) {
            if (kLetters[i] == static_cast<char>(keysym)) {
                return 16 + i;
            }
        }
    }
    if (keysym >= XK_1 && keysym <= XK_9) {
        return 2 + static_cast<unsigned int>(keysym - XK_1);
    }
    static const std::pair<unsigned long, unsigned int> kKeys[] = {
        {XK_0, 11},     {XK_Escape, 1}, {XK_BackSpace, 14}, {XK_Tab, 15},   {XK_Return, 28},
        {XK_space, 57}, {XK_Home, 102}, {XK_Up, 103},       {XK_Left, 105}, {XK_Right, 106},
        {XK_End, 107},  {XK_Down, 108}, {XK_Delete, 111},
    };
    for (const auto& key : kKeys) {
        if (key.first == keysym) {
            return key.second;
        }
    }
    return 0;
}

}  // namespace

IBusTypingBackend::IBusTypingBackend() : mBus(InputMethodSwitch::ibusBus())
{
    mDeleteFlush.setSingleShot(true);
    mDeleteFlush.setInterval(0);
    QObject::connect(&mDeleteFlush, &QTimer::timeout, [this] { flushDeletes(); });
    mThread.setObjectName(QStringLiteral("ibus engine"));
    join();
}

void IBusTypingBackend::join()
{
    mUnavailable.clear();
    mPendingDeletes = 0;
    mUnshown = mUnshownCommit = false;
    if (!mBus.isConnected()) {
        mUnavailable = QStringLiteral("no ibus-daemon reachable");
        return;
    }
    mService = std::make_unique<IBusEngineService>(mBus);
    // Registered before it moves: the bus gives it a helper child, which moves with it.
    const bool served = mBus.registerVirtualObject(kObjectRoot, mService.get(), QDBusConnection::SubPath);
    mService->moveToThread(&mThread);
    mThread.start();
    if (!served) {
        // Another backend of this process serves there (one connection, one factory path).
        mUnavailable = QStringLiteral("another ibus typing backend runs in this process");
        return;
    }
    mServing = true;
    QDBusMessage call = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.IBus"), kObjectRoot,
                                                       QStringLiteral("org.freedesktop.IBus"),
                                                       QStringLiteral("RegisterComponent"));
    call << QVariant::fromValue(IBusSerialization::component(
        QStringLiteral("org.zorvane.Typing"), QStringLiteral("Zorvane dictation"),
        {kEngineName, QStringLiteral("Zorvane"), QStringLiteral("Text dictated with the Zorvane mouse"),
         QStringLiteral("other")}));
    const QDBusMessage reply = mBus.call(call, QDBus::Block, kFocusTimeoutMs);
    if (reply.type() != QDBusMessage::ReplyMessage) {
        mUnavailable = QStringLiteral("ibus refused our engine: %1").arg(reply.errorMessage());
        return;
    }
    mSwitch.setIbusTypingEngine(kEngineName);
}

void IBusTypingBackend::leave()
{
    if (mServing) {
        mBus.unregisterObject(kObjectRoot, QDBusConnection::UnregisterTree);
        mServing = false;
    }
    mThread.quit();
    mThread.wait();
    mService.reset();
}

bool IBusTypingBackend::joined()
{
    // Only a lost connection is joined again: a backend left off beside another one stays off.
    if (mShutDown || mBus.isConnected()) {
        return isAvailable();
    }
    qCWarning(lcWayland)
        << "the connection to ibus-daemon is gone (ibus restarted?): joining the one running now";
    leave();
    mBus = InputMethodSwitch::ibusBus();
    join();
    if (!isAvailable()) {
        qCWarning(lcWayland) << "could not join ibus again, nothing typed:" << mUnavailable;
        return false;
    }
    // The engine to give back was the old daemon's: it gets it now, our engine on the next switch.
    mSwitch.restore();
    qCInfo(lcWayland) << "our engine is registered with the new ibus-daemon";
    return true;
}

IBusTypingBackend::~IBusTypingBackend()
{
    shutDown();
}

void IBusTypingBackend::shutDown()
{
    if (mShutDown) {
        return;
    }
    mShutDown = true;
    if (isAvailable()) {
        flushDeletes();
        waitForField();
        mSwitch.finish();
    }
    mUnavailable = QStringLiteral("shut down");
    // The daemon stops our engines while the user's comes back: they answer until then.
    leave();
}

bool IBusTypingBackend::activate()
{
    mSwitch.suspend();
    if (mService->waitForFocus(kFocusTimeoutMs)) {
        return true;
    }
    qCWarning(lcWayland) << "ibus did not give our engine the focused field: nothing typed";
    return false;
}

void IBusTypingBackend::typeText(const QString& text)
{
    if (!joined() || !activate()) {
        return;
    }
    settleForwardedKeys();
    flushDeletes();
    bool sent = false;
    change(true, [this, &text, &sent] { sent = mService->commitText(text); });
    if (!sent && !mBus.isConnected()) {
        // A commit is one message: unsent, none of it was typed, so typing it again doubles nothing.
        qCWarning(lcWayland)
            << "ibus-daemon went away while typing: typing the text again on the one running now";
        if (joined() && activate()) {
            change(true, [this, &text, &sent] { sent = mService->commitText(text); });
        }
    }
    if (!sent) {
        qCWarning(lcWayland) << "text not typed, ibus did not take it:" << text.size() << "characters";
    }
    mSwitch.scheduleRestore();
}

void IBusTypingBackend::waitForField()
{
    if (!mUnshown) {
        return;
    }
    mUnshown = mUnshownCommit = false;
    const int elapsed = static_cast<int>(std::min<qint64>(mSinceChange.elapsed(), kFieldTextMs));
    const IBusEngineService::Shown shown = mService->waitForField(
        mReportsBeforeChange, std::max(0, kFieldReportMs - elapsed), kFieldTextMs - elapsed);
    if (shown == IBusEngineService::Shown::Nothing) {
        qCDebug(lcWayland) << "the field did not show our last change";
    } else if (shown == IBusEngineService::Shown::CaretOnly) {
        // A caret may be placed in steps (placed, then laid out): a move that came at once may
        // still be the one before.
        const qint64 gap = kChangeGapMs - mSinceChange.elapsed();
        if (gap > 0) {
            QThread::msleep(static_cast<unsigned long>(gap));
        }
    }
}

template <typename Change>
void IBusTypingBackend::change(bool textWaits, Change send)
{
    // The field applies a deletion request before a commit that reaches it together with it, so
    // text may follow one at once; anything else waits until the field shows the last change.
    if (textWaits ? mUnshownCommit : mUnshown) {
        waitForField();
    }
    // Only a report that comes after this change can show it.
    mReportsBeforeChange = mService->fieldReports();
    send();
    mUnshown = true;
    mUnshownCommit = mUnshownCommit || textWaits;
    mSinceChange.start();
}

void IBusTypingBackend::flushDeletes()
{
    mDeleteFlush.stop();
    if (mPendingDeletes == 0 || !mService->hasFocus()) {
        mPendingDeletes = 0;
        return;
    }
    deleteBeforeCaret(std::exchange(mPendingDeletes, 0));
}

void IBusTypingBackend::deleteBeforeCaret(int characters)
{
    const IBusEngineService::Deletion how = mService->deletionOf(characters);
    switch (how) {
        case IBusEngineService::Deletion::Exact:
            change(false, [this, characters, how] { mService->deleteBeforeCaret(characters, how); });
            return;
        case IBusEngineService::Deletion::Checked: {
            change(true, [this, characters, how] { mService->deleteBeforeCaret(characters, how); });
            const int left = mService->waitForChecked(kFieldTextMs);
            if (left >= 0) {
                mUnshown = mUnshownCommit = false;
            }
            if (left > 0) {
                deleteBeforeCaret(left);  // the field's unit is known now
            }
            return;
        }
        case IBusEngineService::Deletion::Keys:
            break;
    }
    // The field's unit for deletions is not known for sure: BackSpace keys, one per character
    // as on X11. A client takes them after text committed at once, so what follows waits until
    // the field shows them all applied.
    change(true, [this, characters] {
        mService->deletingByKeys(characters);
        for (int i = 0; i < characters; ++i) {
            for (const unsigned int release : {0u, kReleaseMask}) {
                mService->forwardKey(XK_BackSpace, keycodeOf(XK_BackSpace), release);
            }
        }
    });
    // Where the field's caret is known, its report of the place they leave it is exact;
    // otherwise the next change waits for the field's text as after any other change.
    if (mService->waitForDeleted(kFieldTextMs)) {
        mUnshown = mUnshownCommit = false;
    }
}

void IBusTypingBackend::settleForwardedKeys()
{
    if (mSinceForward.isValid()) {
        const qint64 left = kForwardSettleMs - mSinceForward.elapsed();
        mSinceForward.invalidate();
        if (left > 0) {
            QThread::msleep(static_cast<unsigned long>(left));
        }
    }
}

void IBusTypingBackend::sendKey(unsigned long keysym, bool down)
{
    if (const unsigned int modifier = modifierOf(keysym)) {
        mModifiers = down ? (mModifiers | modifier) : (mModifiers & ~modifier);
        return;
    }
    if (!joined() || !activate()) {
        return;
    }
    if (keysym == XK_BackSpace && mModifiers == 0 && mService->focusedTakesDeletes()) {
        if (down) {
            settleForwardedKeys();
            ++mPendingDeletes;
            mDeleteFlush.start();
        }
    } else {
        flushDeletes();
        mService->forwardKey(static_cast<unsigned int>(keysym), keycodeOf(keysym),
                             mModifiers | (down ? 0 : kReleaseMask));
        mSinceForward.start();
    }
    mSwitch.scheduleRestore();
}

QRect IBusTypingBackend::screenGeometry()
{
    auto* app = qobject_cast<QGuiApplication*>(QCoreApplication::instance());
    return app != nullptr && app->primaryScreen() != nullptr ? app->primaryScreen()->geometry() : QRect();
}
