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
    mFocusInsSeen = 0;
    mPendingDeletes = 0;
    mSinceChange.invalidate();
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
    change([this, &text, &sent] { sent = mService->commitText(text); });
    if (!sent && !mBus.isConnected()) {
        // A commit is one message: unsent, none of it was typed, so typing it again doubles nothing.
        qCWarning(lcWayland)
            << "ibus-daemon went away while typing: typing the text again on the one running now";
        if (joined() && activate()) {
            change([this, &text, &sent] { sent = mService->commitText(text); });
        }
    }
    if (!sent) {
        qCWarning(lcWayland) << "text not typed, ibus did not take it:" << text.size() << "characters";
    }
    mSwitch.scheduleRestore();
}

template <typename Change>
void IBusTypingBackend::change(Change send)
{
    // A field that has just gained our engine still reports its first caret place: that report
    // must not pass for the one of our first change.
    quint64 reportsAtFocusIn = 0;
    const int focusIns = mService->focusIns(&reportsAtFocusIn);
    int waitMs = kFieldReportMs;
    if (focusIns != mFocusInsSeen) {
        mFocusInsSeen = focusIns;
        mReportsBeforeChange = reportsAtFocusIn;
        mSinceChange.start();
        // Until it has, it takes no text either; on a loaded desktop that takes a while.
        waitMs = kFocusTimeoutMs;
    }
    if (mSinceChange.isValid()) {
        const qint64 left = waitMs - mSinceChange.elapsed();
        if (left > 0 && !mService->waitForFieldReport(mReportsBeforeChange, static_cast<int>(left))) {
            qCDebug(lcWayland) << "the field did not report our last change within" << kFieldReportMs << "ms";
        }
        // A field may report a change in steps (caret placed, then laid out): a report that
        // came at once may still be the one before.
        const qint64 gap = kChangeGapMs - mSinceChange.elapsed();
        if (gap > 0) {
            QThread::msleep(static_cast<unsigned long>(gap));
        }
    }
    mReportsBeforeChange = mService->fieldReports();
    send();
    mSinceChange.start();
}

void IBusTypingBackend::flushDeletes()
{
    mDeleteFlush.stop();
    if (mPendingDeletes == 0 || !mService->hasFocus()) {
        mPendingDeletes = 0;
        return;
    }
    const int characters = std::exchange(mPendingDeletes, 0);
    if (mService->deletesExactly(characters)) {
        change([this, characters] { mService->deleteBeforeCaret(characters); });
        return;
    }
    // The field's unit for deletions is not known for sure: BackSpace keys, one per character
    // as on X11, and the next change only once the field shows them all applied.
    change([this, characters] {
        mService->deletingByKeys(characters);
        for (int i = 0; i < characters; ++i) {
            for (const unsigned int release : {0u, kReleaseMask}) {
                mService->forwardKey(XK_BackSpace, keycodeOf(XK_BackSpace), release);
            }
        }
    });
    if (!mService->waitForDeleted(kFocusTimeoutMs)) {
        qCDebug(lcWayland) << "the field did not report the caret where our BackSpace keys leave it";
        mSinceForward.start();
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
