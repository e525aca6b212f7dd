#include "Platform/IBus/IBusEngineService.h"

#include "Platform/IBus/IBusSerialization.h"
#include "Utils/Logging.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDeadlineTimer>
#include <QMutexLocker>

namespace {

const char* const kEngineInterface = "org.freedesktop.IBus.Engine";

}  // namespace

IBusEngineService::IBusEngineService(const QDBusConnection& bus) : mBus(bus) {}

bool IBusEngineService::waitForFocus(int timeoutMs)
{
    QMutexLocker lock(&mMutex);
    QDeadlineTimer deadline(timeoutMs);
    while (mFocused.isEmpty()) {
        if (!mFocusChanged.wait(&mMutex, deadline)) {
            return !mFocused.isEmpty();
        }
    }
    return true;
}

bool IBusEngineService::hasFocus()
{
    QMutexLocker lock(&mMutex);
    return !mFocused.isEmpty();
}

bool IBusEngineService::focusedTakesDeletes()
{
    QMutexLocker lock(&mMutex);
    return (mCapabilities.value(mFocused) & kCapSurroundingText) != 0;
}

bool IBusEngineService::commitText(const QString& text)
{
    return emitOnFocused("CommitText", {QVariant::fromValue(IBusSerialization::text(text))});
}

bool IBusEngineService::deleteBeforeCaret(int characters)
{
    return emitOnFocused("DeleteSurroundingText", {-characters, static_cast<unsigned int>(characters)});
}

bool IBusEngineService::forwardKey(unsigned int keysym, unsigned int keycode, unsigned int state)
{
    return emitOnFocused("ForwardKeyEvent", {keysym, keycode, state});
}

bool IBusEngineService::emitOnFocused(const char* name, const QVariantList& arguments)
{
    QString path;
    {
        QMutexLocker lock(&mMutex);
        path = mFocused;
    }
    if (path.isEmpty()) {
        return false;
    }
    QDBusMessage signal =
        QDBusMessage::createSignal(path, QLatin1String(kEngineInterface), QLatin1String(name));
    signal.setArguments(arguments);
    return mBus.send(signal);
}

QString IBusEngineService::introspect(const QString& path) const
{
    Q_UNUSED(path)
    return QString();
}

bool IBusEngineService::handleMessage(const QDBusMessage& message, const QDBusConnection& connection)
{
    const QString member = message.member();
    const QString path = message.path();
    QVariantList reply;
    if (member == QLatin1String("CreateEngine")) {
        QMutexLocker lock(&mMutex);
        const QString engine = QStringLiteral("/org/freedesktop/IBus/Engine/Zorvane/%1").arg(++mEngines);
        reply << QVariant::fromValue(QDBusObjectPath(engine));
        qCDebug(lcWayland) << "ibus made engine" << engine;
    } else if (member == QLatin1String("ProcessKeyEvent")) {
        reply << false;  // the key is the application's
    } else if (member == QLatin1String("FocusIn") || member == QLatin1String("FocusOut") ||
               member == QLatin1String("Destroy")) {
        QMutexLocker lock(&mMutex);
        if (member == QLatin1String("FocusIn")) {
            mFocused = path;
        } else if (mFocused == path) {
            mFocused.clear();
        }
        if (member == QLatin1String("Destroy")) {
            mCapabilities.remove(path);
        }
        mFocusChanged.wakeAll();
    } else if (member == QLatin1String("SetCapabilities")) {
        QMutexLocker lock(&mMutex);
        mCapabilities.insert(path, message.arguments().value(0).toUInt());
    } else if (member == QLatin1String("Get")) {
        // FocusId and ActiveSurroundingText: we want neither.
        reply << QVariant::fromValue(QDBusVariant(false));
    } else if (member == QLatin1String("GetAll")) {
        reply << QVariantMap();
    }
    if (message.isReplyRequired()) {
        connection.send(message.createReply(reply));
    }
    return true;
}
