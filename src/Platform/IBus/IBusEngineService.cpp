#include "Platform/IBus/IBusEngineService.h"

#include "Platform/IBus/IBusSerialization.h"
#include "Utils/Logging.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDeadlineTimer>
#include <QMutexLocker>

#include <algorithm>
#include <utility>

namespace {

const char* const kEngineInterface = "org.freedesktop.IBus.Engine";

}  // namespace

IBusEngineService::IBusEngineService(const QDBusConnection& bus) : mBus(bus) {}

bool IBusEngineService::waitForFocus(int timeoutMs)
{
    QMutexLocker lock(&mMutex);
    QDeadlineTimer deadline(timeoutMs);
    while (mFocused.isEmpty() || !mFieldHeard) {
        if (!mFocusChanged.wait(&mMutex, deadline)) {
            return !mFocused.isEmpty();
        }
    }
    return true;
}

IBusEngineService::Reports IBusEngineService::fieldReports()
{
    QMutexLocker lock(&mMutex);
    return mReports;
}

bool IBusEngineService::showsOurText() const
{
    // The field may report only the line the caret is on, or cut a long text short: the end of
    // what we typed since its last line break is enough to tell our last change from the ones
    // before it.
    constexpr int kChecked = 16;
    const QString ours = mTyped.mid(mTyped.lastIndexOf(QLatin1Char('\n')) + 1).right(kChecked);
    return mBeforeCaret.endsWith(ours);
}

IBusEngineService::Shown IBusEngineService::waitForField(const Reports& before, int caretTimeoutMs,
                                                         int textTimeoutMs)
{
    QMutexLocker lock(&mMutex);
    const QDeadlineTimer caretDeadline(caretTimeoutMs);
    const QDeadlineTimer textDeadline(textTimeoutMs);
    for (;;) {
        if (mReports.text > before.text && showsOurText()) {
            // The field reports its caret a moment after its text; a change that reaches the
            // shell in between may be lost. The caret does not move for every change.
            const QDeadlineTimer settle(std::max<qint64>(0, kCaretAfterTextMs - mSinceText.elapsed()));
            while (mReports.caret == mCaretAtText && mFocusChanged.wait(&mMutex, settle)) {
            }
            return Shown::Text;
        }
        if (!mFieldSendsText && mReports.caret > before.caret) {
            mFieldCaretOnly = true;
            return Shown::CaretOnly;
        }
        if (mFocused.isEmpty() ||
            !mFocusChanged.wait(&mMutex, mFieldCaretOnly ? caretDeadline : textDeadline)) {
            return Shown::Nothing;
        }
    }
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
    {
        QMutexLocker lock(&mMutex);
        mTyped = QString(mTyped + text).right(kTypedKept);
    }
    return emitOnFocused("CommitText", {QVariant::fromValue(IBusSerialization::text(text))});
}

bool IBusEngineService::deleteBeforeCaret(int characters)
{
    int count = characters;
    {
        QMutexLocker lock(&mMutex);
        const QVector<uint> typed = mTyped.toUcs4();
        const int from = std::max(0, typed.size() - characters);
        const QString deleted = QString::fromUcs4(typed.constData() + from, typed.size() - from);
        mTyped = QString::fromUcs4(typed.constData(), from);
        // GNOME Shell 43 hands a Wayland field's counts to ibus as the field gives them, in UTF-8
        // bytes, and ours to the field likewise: there we count the bytes of the characters we
        // typed last.
        if (mFieldCountsBytes) {
            count = deleted.toUtf8().size() + std::max(0, characters - deleted.toUcs4().size());
        }
    }
    return emitOnFocused("DeleteSurroundingText", {-count, static_cast<unsigned int>(count)});
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
            mFieldHeard = false;
            mFieldSendsText = mFieldCaretOnly = false;
            mDaemonsCaretDue = true;
            mBeforeCaret.clear();
            mFieldCountsBytes = false;
            mTyped.clear();
            // The text around the caret, now and after each change: the shell reports it only
            // to engines that ask.
            mBus.send(QDBusMessage::createSignal(path, QLatin1String(kEngineInterface),
                                                 QStringLiteral("RequireSurroundingText")));
        } else if (mFocused == path) {
            mFocused.clear();
        }
        if (member == QLatin1String("Destroy")) {
            mCapabilities.remove(path);
        }
        mFocusChanged.wakeAll();
    } else if (member == QLatin1String("SetSurroundingText")) {
        // A caret past the text's last character: the field counts in bytes.
        const QString text = IBusSerialization::textOf(message.arguments().value(0));
        const int caret = static_cast<int>(message.arguments().value(1).toUInt());
        const QVector<uint> characters = text.toUcs4();
        QMutexLocker lock(&mMutex);
        if (path == mFocused) {
            mFieldCountsBytes = mFieldCountsBytes || caret > characters.size();
            mBeforeCaret = mFieldCountsBytes ? QString::fromUtf8(text.toUtf8().left(caret))
                                             : QString::fromUcs4(characters.constData(),
                                                                 std::min(caret, characters.size()));
            mFieldHeard = mFieldSendsText = true;
            ++mReports.text;
            mCaretAtText = mReports.caret;
            mSinceText.start();
            mFocusChanged.wakeAll();
        }
    } else if (member == QLatin1String("SetCursorLocation")) {
        // A field that reports no text: each change it applies moves its caret, and the daemon
        // passes on only moves. A field that has no caret place yet reports an empty one; the
        // daemon gives a new engine the place it knows, which may come after our first change.
        QMutexLocker lock(&mMutex);
        if (path == mFocused) {
            mFieldHeard = true;
            if (!std::exchange(mDaemonsCaretDue, false) && message.arguments().value(3).toInt() > 0) {
                ++mReports.caret;
            }
            mFocusChanged.wakeAll();
        }
    } else if (member == QLatin1String("SetCapabilities")) {
        QMutexLocker lock(&mMutex);
        mCapabilities.insert(path, message.arguments().value(0).toUInt());
    } else if (member == QLatin1String("Get")) {
        // FocusId: we want none. ActiveSurroundingText: we want it.
        reply << QVariant::fromValue(
            QDBusVariant(message.arguments().value(1).toString() == QLatin1String("ActiveSurroundingText")));
    } else if (member == QLatin1String("GetAll")) {
        reply << QVariantMap{{QStringLiteral("ActiveSurroundingText"), true},
                             {QStringLiteral("FocusId"), false}};
    }
    if (message.isReplyRequired()) {
        connection.send(message.createReply(reply));
    }
    return true;
}
