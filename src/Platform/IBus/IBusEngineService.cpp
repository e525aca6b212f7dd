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

// The units a field may count its text in.
constexpr unsigned int kCharacters = 1;
constexpr unsigned int kUtf16 = 2;
constexpr unsigned int kBytes = 4;
constexpr unsigned int kUnits = kCharacters | kUtf16 | kBytes;
// What we typed last that a report must end with: enough to tell the units' readings apart.
constexpr int kTypedCompared = 64;
// ... and enough to tell our last change from the ones before it.
constexpr int kTypedShown = 16;

int unitsOf(const QString& text, unsigned int unit)
{
    return unit == kCharacters ? text.toUcs4().size() : unit == kUtf16 ? text.size() : text.toUtf8().size();
}

// The text before the caret read in `unit`; false where the caret cannot fall in that unit.
bool textBefore(const QString& text, uint caret, unsigned int unit, QString* before)
{
    if (unit == kCharacters) {
        const QVector<uint> characters = text.toUcs4();
        if (caret > static_cast<uint>(characters.size())) {
            return false;
        }
        *before = QString::fromUcs4(characters.constData(), static_cast<int>(caret));
    } else if (unit == kUtf16) {
        if (caret > static_cast<uint>(text.size()) ||
            (caret < static_cast<uint>(text.size()) && text.at(static_cast<int>(caret)).isLowSurrogate())) {
            return false;
        }
        *before = text.left(static_cast<int>(caret));
    } else {
        const QByteArray bytes = text.toUtf8();
        if (caret > static_cast<uint>(bytes.size()) ||
            (caret < static_cast<uint>(bytes.size()) && (bytes.at(static_cast<int>(caret)) & 0xC0) == 0x80)) {
            return false;
        }
        *before = QString::fromUtf8(bytes.left(static_cast<int>(caret)));
    }
    return true;
}

// The last `length` characters of what we typed since its last line break: a field may report
// only the line its caret is on.
QString typedTail(const QString& typed, int length)
{
    const QVector<uint> line = typed.mid(typed.lastIndexOf(QLatin1Char('\n')) + 1).toUcs4();
    const int from = std::max(0, line.size() - length);
    return QString::fromUcs4(line.constData() + from, line.size() - from);
}

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
    // The field may cut a long text short: the end of what we typed is enough.
    const QString ours = typedTail(mTyped, kTypedShown);
    QString before;
    for (const unsigned int unit : {kCharacters, kUtf16, kBytes}) {
        if ((mReportUnits & unit) && textBefore(mReportedText, mReportedCaret, unit, &before) &&
            before.endsWith(ours)) {
            return true;
        }
    }
    return false;
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
        mCaretCharacters = -1;  // until the field reports where the text left it
    }
    return emitOnFocused("CommitText", {QVariant::fromValue(IBusSerialization::text(text))});
}

bool IBusEngineService::deletesExactly(int characters)
{
    QMutexLocker lock(&mMutex);
    const QVector<uint> typed = mTyped.toUcs4();
    const int from = std::max(0, typed.size() - characters);
    const QString deleted = QString::fromUcs4(typed.constData() + from, typed.size() - from);
    // Through GNOME Shell a field that reports bytes may delete in bytes (GTK 3) or characters
    // (GTK 4): both counts must agree. Text we did not type has no count but in characters.
    const unsigned int deleteUnits = mReportUnits & kBytes ? mReportUnits | kCharacters : mReportUnits;
    for (const unsigned int unit : {kUtf16, kBytes}) {
        if ((deleteUnits & unit) &&
            (characters > typed.size() || unitsOf(deleted, unit) != unitsOf(deleted, kCharacters))) {
            return false;
        }
    }
    return true;
}

bool IBusEngineService::deleteBeforeCaret(int characters)
{
    int count = characters;
    {
        QMutexLocker lock(&mMutex);
        const QVector<uint> typed = mTyped.toUcs4();
        const int from = std::max(0, typed.size() - characters);
        mTyped = QString::fromUcs4(typed.constData(), from);
        mCaretCharacters = -1;
        // A field that reports UTF-16 units (and no other unit) deletes in them: deletesExactly
        // let through only counts that agree otherwise.
        if (mReportUnits == kUtf16) {
            count = unitsOf(QString::fromUcs4(typed.constData() + from, typed.size() - from), kUtf16);
        }
    }
    return emitOnFocused("DeleteSurroundingText", {-count, static_cast<unsigned int>(count)});
}

void IBusEngineService::deletingByKeys(int characters)
{
    QMutexLocker lock(&mMutex);
    const QVector<uint> typed = mTyped.toUcs4();
    mTyped = QString::fromUcs4(typed.constData(), std::max(0, typed.size() - characters));
    mKeysLeaveCaret = mCaretCharacters >= characters ? mCaretCharacters - characters : -1;
    mCaretCharacters = -1;
}

bool IBusEngineService::waitForDeleted(int timeoutMs)
{
    QMutexLocker lock(&mMutex);
    if (mKeysLeaveCaret < 0) {
        return false;  // where they leave it is not known
    }
    QDeadlineTimer deadline(timeoutMs);
    while (mKeysLeaveCaret >= 0) {
        if (!mFocusChanged.wait(&mMutex, deadline)) {
            break;
        }
    }
    const bool deleted = mKeysLeaveCaret < 0;
    mKeysLeaveCaret = -1;
    return deleted;
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
            mReportedText.clear();
            mReportedCaret = 0;
            mReportUnits = kUnits;
            mCaretCharacters = -1;
            mKeysLeaveCaret = -1;
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
        const QString text = IBusSerialization::textOf(message.arguments().value(0));
        const uint caret = message.arguments().value(1).toUInt();
        QMutexLocker lock(&mMutex);
        if (path == mFocused) {
            // The units whose reading puts the caret right after what we typed; readings that
            // agree tell nothing apart, a contradiction makes the unit unknown again.
            const QString ours = typedTail(mTyped, kTypedCompared);
            unsigned int fitting = 0;
            QString before;
            QVector<int> carets;
            for (const unsigned int unit : {kCharacters, kUtf16, kBytes}) {
                if (textBefore(text, caret, unit, &before) && before.endsWith(ours)) {
                    fitting |= unit;
                    carets << unitsOf(before, kCharacters);
                }
            }
            mCaretCharacters = carets.count(carets.value(0)) == carets.size() ? carets.value(0, -1) : -1;
            if (fitting != 0) {
                mReportUnits = (mReportUnits & fitting) != 0 ? mReportUnits & fitting : kUnits;
                if (mCaretCharacters == mKeysLeaveCaret) {
                    mKeysLeaveCaret = -1;
                }
            }
            qCDebug(lcWayland) << "field reports caret" << caret << "anchor"
                               << message.arguments().value(2).toUInt() << "in" << text.size()
                               << "UTF-16 units; readings after our text" << fitting << "units still possible"
                               << mReportUnits;
            mReportedText = text;
            mReportedCaret = caret;
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
