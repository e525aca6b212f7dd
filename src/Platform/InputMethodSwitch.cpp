#include "Platform/InputMethodSwitch.h"

#include "Utils/Logging.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QThread>

#include <algorithm>

namespace {

constexpr int kCallTimeoutMs = 300;
// ibus answers a switch only once the new engine runs, and the first switch starts that
// engine's process: on a busy machine this takes far longer than a plain call. Typing while a
// switch is still under way mixes the keys up, and a switch taken for failed is never undone.
constexpr int kSwitchTimeoutMs = 2000;
// The controller's state of the focused field: 0 none, 1 off, 2 composing.
constexpr int kStateActive = 2;
QString ibusConnectionName()
{
    return QStringLiteral("zorvane.ibus");
}

QDBusMessage callFcitx(const char* method)
{
    QDBusMessage call =
        QDBusMessage::createMethodCall(QStringLiteral("org.fcitx.Fcitx5"), QStringLiteral("/controller"),
                                       QStringLiteral("org.fcitx.Fcitx.Controller1"), QLatin1String(method));
    // A desktop that does not run fcitx5 must not get it started by us.
    call.setAutoStartService(false);
    return QDBusConnection::sessionBus().call(call, QDBus::Block, kCallTimeoutMs);
}

// Only a bus that is there: asking for the session bus without one would have a new one
// started for the X display.
bool hasSessionBus()
{
    return qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS") ||
           QFile::exists(qEnvironmentVariable("XDG_RUNTIME_DIR") + QStringLiteral("/bus"));
}

// Where ibus-daemon listens: IBUS_ADDRESS, then the file it writes for this machine and the
// display it was started on. ibus names that after the Wayland display where there is one (a
// GNOME session starts it from the shell: "unix-wayland-0"), else after the X display. A daemon
// started again (ibus restart) leaves IBUS_ADDRESS behind and rewrites the file.
QStringList ibusAddresses()
{
    QStringList addresses;
    const QString fromEnv = qEnvironmentVariable("IBUS_ADDRESS");
    if (!fromEnv.isEmpty()) {
        addresses << fromEnv;
    }
    QString machine;
    for (const char* path : {"/var/lib/dbus/machine-id", "/etc/machine-id"}) {
        QFile file(QString::fromLatin1(path));
        if (machine.isEmpty() && file.open(QIODevice::ReadOnly)) {
            machine = QString::fromLatin1(file.readAll().trimmed());
        }
    }
    if (machine.isEmpty()) {
        return addresses;
    }
    QStringList names;
    const QString wayland = qEnvironmentVariable("WAYLAND_DISPLAY");
    if (!wayland.isEmpty()) {
        names << QStringLiteral("unix-") + wayland;
    }
    // A daemon started without a Wayland display (an X session, or by hand) has the X one.
    const QRegularExpressionMatch display =
        QRegularExpression(QStringLiteral("^([^:]*):(\\d+)")).match(qEnvironmentVariable("DISPLAY"));
    if (display.hasMatch()) {
        const QString host = display.captured(1).isEmpty() ? QStringLiteral("unix") : display.captured(1);
        names << host + QLatin1Char('-') + display.captured(2);
    }
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                           QStringLiteral("/ibus/bus/");
    for (const QString& name : names) {
        QFile file(folder + machine + QLatin1Char('-') + name);
        if (!file.open(QIODevice::ReadOnly)) {
            continue;
        }
        for (const QByteArray& line : file.readAll().split('\n')) {
            if (line.startsWith("IBUS_ADDRESS=")) {
                addresses << QString::fromUtf8(line.mid(13).trimmed());
                return addresses;
            }
        }
    }
    return addresses;
}

}  // namespace

QDBusConnection InputMethodSwitch::ibusBus()
{
    QDBusConnection bus(ibusConnectionName());
    if (!bus.isConnected()) {
        for (const QString& address : ibusAddresses()) {
            QDBusConnection::disconnectFromBus(ibusConnectionName());
            bus = QDBusConnection::connectToBus(address, ibusConnectionName());
            if (bus.isConnected()) {
                break;
            }
        }
    }
    return bus;
}

namespace {

QDBusMessage ibusCall(const QDBusConnection& bus, const QString& interface, const QString& method,
                      const QVariantList& arguments, int timeoutMs = kCallTimeoutMs)
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.IBus"), QStringLiteral("/org/freedesktop/IBus"), interface, method);
    call.setArguments(arguments);
    return bus.call(call, QDBus::Block, timeoutMs);
}

// Switches the global engine. Without an answer the switch may still be under way, so it counts
// as made: giving the engine back later does no harm if it never happened.
bool setIbusGlobalEngine(const QDBusConnection& bus, const QString& engine, QString* error)
{
    const QDBusMessage reply = ibusCall(bus, QStringLiteral("org.freedesktop.IBus"),
                                        QStringLiteral("SetGlobalEngine"), {engine}, kSwitchTimeoutMs);
    if (reply.type() == QDBusMessage::ReplyMessage) {
        return true;
    }
    *error = reply.errorMessage();
    const QDBusError::ErrorType type = QDBusError(reply).type();
    return type == QDBusError::NoReply || type == QDBusError::Timeout;
}

// The global engine's name and keyboard layout, from its serialised description: a structure of
// its type name, attachments, then name, long name, description, language, licence, author, icon
// and layout, among others.
bool ibusGlobalEngine(const QDBusConnection& bus, QString* name, QString* layout)
{
    const QDBusMessage reply =
        ibusCall(bus, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"),
                 {QStringLiteral("org.freedesktop.IBus"), QStringLiteral("GlobalEngine")});
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) {
        return false;
    }
    QVariant value = reply.arguments().constFirst().value<QDBusVariant>().variant();
    if (value.userType() == qMetaTypeId<QDBusVariant>()) {
        value = value.value<QDBusVariant>().variant();
    }
    if (value.userType() != qMetaTypeId<QDBusArgument>()) {
        return false;
    }
    const QDBusArgument description = value.value<QDBusArgument>();
    QStringList fields;
    description.beginStructure();
    QString typeName;
    QVariantMap attachments;
    description >> typeName >> attachments;
    while (!description.atEnd() && description.currentType() == QDBusArgument::BasicType &&
           fields.size() < 8) {
        QVariant field = description.asVariant();
        if (field.userType() != QMetaType::QString) {
            break;
        }
        fields << field.toString();
    }
    if (fields.size() < 8) {
        return false;
    }
    *name = fields.at(0);
    *layout = fields.at(7);
    return true;
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
    if (QCoreApplication::instance() == nullptr) {
        return;
    }
    suspendFcitx();
    suspendIbus();
}

void InputMethodSwitch::suspendFcitx()
{
    if (mFcitxSuspended || !hasSessionBus() || !QDBusConnection::sessionBus().isConnected()) {
        return;
    }
    const QDBusMessage state = callFcitx("State");
    if (state.type() != QDBusMessage::ReplyMessage || state.arguments().value(0).toInt() != kStateActive) {
        return;
    }
    const QDBusMessage reply = callFcitx("Deactivate");
    if (reply.type() == QDBusMessage::ReplyMessage) {
        mFcitxSuspended = true;
        qCDebug(lcX11) << "fcitx5 off while typing";
    } else {
        qCWarning(lcX11) << "could not switch fcitx5 off:" << reply.errorMessage();
    }
}

void InputMethodSwitch::suspendIbus()
{
    if (mIbusSwitched) {
        return;
    }
    const QDBusConnection bus = ibusBus();
    if (!bus.isConnected()) {
        return;
    }
    QString name;
    QString layout;
    const bool known = ibusGlobalEngine(bus, &name, &layout);
    QString target = mIbusTypingEngine;
    if (target.isEmpty()) {
        if (!known || name.startsWith(QLatin1String("xkb:"))) {
            return;
        }
        if (layout != QLatin1String("us") && layout != QLatin1String("default")) {
            qCInfo(lcX11) << "ibus engine" << name << "types on layout" << layout << "and is left on";
            return;
        }
        target = QStringLiteral("xkb:us::eng");
    } else if (name == target) {
        // Left on by a run that ended without giving the user's engine back: nothing to restore.
        name.clear();
    }
    QString error;
    if (setIbusGlobalEngine(bus, target, &error)) {
        mIbusSwitched = true;
        mIbusEngine = name;
        if (error.isEmpty()) {
            qCDebug(lcX11) << "ibus engine" << target << "instead of" << name << "while typing";
        } else {
            qCWarning(lcX11) << "ibus did not confirm switching to" << target << ":" << error;
        }
    } else {
        qCWarning(lcX11) << "could not switch ibus to" << target << ":" << error;
    }
}

void InputMethodSwitch::scheduleRestore()
{
    if (isSuspended()) {
        mRestoreTimer.start();
    }
}

void InputMethodSwitch::finish()
{
    // The last keys may still be on their way to the input method: it must not compose them.
    if (mRestoreTimer.isActive()) {
        QThread::msleep(static_cast<unsigned long>(std::max(0, mRestoreTimer.remainingTime())));
    }
    restore();
}

void InputMethodSwitch::restore()
{
    mRestoreTimer.stop();
    if (!isSuspended() || QCoreApplication::instance() == nullptr) {
        return;
    }
    if (mFcitxSuspended) {
        mFcitxSuspended = false;
        const QDBusMessage reply = callFcitx("Activate");
        if (reply.type() != QDBusMessage::ReplyMessage) {
            qCWarning(lcX11) << "could not switch fcitx5 back on:" << reply.errorMessage();
        }
    }
    if (mIbusSwitched) {
        mIbusSwitched = false;
        const QString engine = mIbusEngine;
        mIbusEngine.clear();
        if (engine.isEmpty()) {
            return;
        }
        QString error;
        setIbusGlobalEngine(ibusBus(), engine, &error);
        if (!error.isEmpty()) {
            qCWarning(lcX11) << "could not give ibus its engine back:" << error;
        }
    }
}
