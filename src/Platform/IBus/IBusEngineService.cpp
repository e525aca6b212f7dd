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

unsigned int IBusEngineService::deleteUnit() const
{
    // A field's input module deletes in the unit it reports in; through the shell a field that
    // reports bytes may delete in bytes (GTK 3) or characters (GTK 4): learnt from a checked
    // deletion.
    if (mDeleteUnit != 0) {
        return mDeleteUnit;
    }
    return mReportUnits == kCharacters || mReportUnits == kUtf16 ? mReportUnits : 0;
}

IBusEngineService::Deletion IBusEngineService::deletionOf(int characters)
{
    QMutexLocker lock(&mMutex);
    const QVector<uint> typed = mTyped.toUcs4();
    const unsigned int unit = deleteUnit();
    if (characters > typed.size()) {
        // Text we did not type has no count but in characters.
        return unit == kCharacters ? Deletion::Exact : Deletion::Keys;
    }
    const QString deleted = QString::fromUcs4(typed.constData() + typed.size() - characters, characters);
    if (unit != 0) {
        return Deletion::Exact;
    }
    const unsigned int possible = mReportUnits & kBytes ? mReportUnits | kCharacters : mReportUnits;
    bool agree = true;
    for (const unsigned int other : {kUtf16, kBytes}) {
        agree = agree && (!(possible & other) || unitsOf(deleted, other) == characters);
    }
    if (agree) {
        return Deletion::Exact;
    }
    // Bytes or characters through the shell: a count in characters deletes at most that many
    // characters either way (a field counting bytes stops short), and the field's report of the
    // result tells which it was. That needs the field's last report to show our text.
    return mReportUnits == kBytes && showsOurText() ? Deletion::Checked : Deletion::Keys;
}

bool IBusEngineService::deleteBeforeCaret(int characters, Deletion how)
{
    int count = characters;
    {
        QMutexLocker lock(&mMutex);
        const QVector<uint> typed = mTyped.toUcs4();
        const int from = std::max(0, typed.size() - characters);
        const QString deleted = QString::fromUcs4(typed.constData() + from, typed.size() - from);
        mTyped = QString::fromUcs4(typed.constData(), from);
        mCaretCharacters = -1;
        const unsigned int unit = deleteUnit();
        if (unit == kUtf16 || unit == kBytes) {
            count = unitsOf(deleted, unit);
        } else if (how == Deletion::Checked) {
            // Checked: what the field's text before its caret becomes if it deletes characters.
            QString before;
            textBefore(mReportedText, mReportedCaret, kBytes, &before);
            if (before.endsWith(deleted)) {
                mCheck = {true, before.left(before.size() - deleted.size()), deleted, -1};
            }
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

int IBusEngineService::waitForChecked(int timeoutMs)
{
    QMutexLocker lock(&mMutex);
    QDeadlineTimer deadline(timeoutMs);
    while (mCheck.pending) {
        if (!mFocusChanged.wait(&mMutex, deadline)) {
            break;
        }
    }
    const int left = mCheck.pending ? -1 : mCheck.left;
    mCheck = {};
    return left;
}

void IBusEngineService::checkDeletion(const QString& before)
{
    // Called with the field's first text report after a checked deletion.
    mCheck.pending = false;
    const QString all = mCheck.expected + mCheck.deleted;
    if (before == mCheck.expected) {
        mCheck.left = 0;
        // A field counting bytes stops short wherever a character of more than one byte
        // starts within the last `count` bytes; one that did not, counts characters.
        const int count = mCheck.deleted.toUcs4().size();
        const QByteArray last = all.toUtf8().right(count);
        if (std::any_of(last.begin(), last.end(), [](char byte) { return (byte & 0xC0) == 0xC0; })) {
            mDeleteUnit = kCharacters;
        }
    } else if (before.size() > mCheck.expected.size() && all.startsWith(before) &&
               before.startsWith(mCheck.expected)) {
        // Short: the field counted bytes. What it left of ours is still ours to delete.
        const QString left = before.mid(mCheck.expected.size());
        mCheck.left = left.toUcs4().size();
        mDeleteUnit = kBytes;
        mTyped = QString(mTyped + left).right(kTypedKept);
    } else {
        qCWarning(lcWayland) << "the field's text after our deletion is not what either unit leaves";
    }
    qCDebug(lcWayland) << "checked deletion: characters left" << mCheck.left << "delete unit" << mDeleteUnit;
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
            mDeleteUnit = 0;
            mCheck = {};
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
            // A report from before our last change fits no true reading, and a few characters
            // of ours may end a wrong one by chance: only a longer run of ours tells units apart.
            constexpr int kTypedTelling = 8;
            if (fitting != 0 && (ours.isEmpty() || ours.size() >= kTypedTelling)) {
                mReportUnits = (mReportUnits & fitting) != 0 ? mReportUnits & fitting : kUnits;
            }
            if (fitting != 0 && mCaretCharacters == mKeysLeaveCaret) {
                mKeysLeaveCaret = -1;
            }
            qCDebug(lcWayland) << "field reports caret" << caret << "anchor"
                               << message.arguments().value(2).toUInt() << "in" << text.size()
                               << "UTF-16 units; readings after our text" << fitting << "units still possible"
                               << mReportUnits;
            mReportedText = text;
            mReportedCaret = caret;
            if (mCheck.pending) {
                QString reported;
                textBefore(text, caret, kBytes, &reported);
                checkDeletion(reported);
            }
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
