#include "Platform/InputMethodSwitch.h"

#include "Utils/Logging.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>

namespace {

constexpr int kCallTimeoutMs = 300;
// The controller's state of the focused field: 0 none, 1 off, 2 composing.
constexpr int kStateActive = 2;

QDBusMessage callController(const char* method)
{
    QDBusMessage call =
        QDBusMessage::createMethodCall(QStringLiteral("org.fcitx.Fcitx5"), QStringLiteral("/controller"),
                                       QStringLiteral("org.fcitx.Fcitx.Controller1"), QLatin1String(method));
    // A desktop that does not run fcitx5 must not get it started by us.
    call.setAutoStartService(false);
    return QDBusConnection::sessionBus().call(call, QDBus::Block, kCallTimeoutMs);
}

}  // namespace

InputMethodSwitch::InputMethodSwitch(QObject* parent) : QObject(parent)
{
    mRestoreTimer.setSingleShot(true);
    mRestoreTimer.setInterval(kRestoreDelayMs);
    connect(&mRestoreTimer, &QTimer::timeout, this, &InputMethodSwitch::restore);
}

InputMethodSwitch::~InputMethodSwitch()
{
    restore();
}

void InputMethodSwitch::suspend()
{
    mRestoreTimer.stop();
    if (mSuspended || QCoreApplication::instance() == nullptr ||
        !QDBusConnection::sessionBus().isConnected()) {
        return;
    }
    const QDBusMessage state = callController("State");
    if (state.type() != QDBusMessage::ReplyMessage || state.arguments().value(0).toInt() != kStateActive) {
        return;
    }
    const QDBusMessage reply = callController("Deactivate");
    if (reply.type() == QDBusMessage::ReplyMessage) {
        mSuspended = true;
        qCDebug(lcX11) << "input method off while typing";
    } else {
        qCWarning(lcX11) << "could not switch the input method off:" << reply.errorMessage();
    }
}

void InputMethodSwitch::scheduleRestore()
{
    if (mSuspended) {
        mRestoreTimer.start();
    }
}

void InputMethodSwitch::restore()
{
    mRestoreTimer.stop();
    if (!mSuspended || QCoreApplication::instance() == nullptr) {
        return;
    }
    mSuspended = false;
    const QDBusMessage reply = callController("Activate");
    if (reply.type() != QDBusMessage::ReplyMessage) {
        qCWarning(lcX11) << "could not switch the input method back on:" << reply.errorMessage();
    }
}
