#include "Platform/AtspiCaret.h"

#include "Utils/Logging.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QElapsedTimer>
#include <QHash>
#include <QVector>

#include <algorithm>
#include <mutex>

#include <unistd.h>

// Last: Xlib's macros clash with Qt's names.
#include "Platform/X11Window.h"

#include <X11/Xatom.h>

// Plain D-Bus rather than the accessibility client library: that library dispatches its
// connections on the process's default GLib context, which Qt's main thread runs, so it
// cannot be used from the thread that keeps the lookup off the key press.
namespace AtspiCaret {

namespace {

// Bounds of the walk through an application's tree, so that a huge document cannot stall it.
constexpr int kMaxNodes = 400;
constexpr int kMaxDepth = 24;
// Milliseconds one call may take, and the whole search.
constexpr int kCallTimeoutMs = 200;
constexpr int kSearchTimeoutMs = 1000;
// An application that let a call time out is skipped this long.
constexpr int kSkipHungMs = 5000;

// Bits of the accessibility state set.
constexpr int kStateActive = 1;
constexpr int kStateFocused = 12;

const QString kAccessible = QStringLiteral("org.a11y.atspi.Accessible");
const QString kText = QStringLiteral("org.a11y.atspi.Text");
const QString kRootPath = QStringLiteral("/org/a11y/atspi/accessible/root");

struct Node {
    QString service;
    QString path;
};

class Search {
public:
    Search(QDBusConnection bus, QHash<QString, qint64>* hungUntil, QHash<QString, uint>* pids)
        : mBus(std::move(bus)), mHungUntil(hungUntil), mPids(pids)
    {
        mClock.start();
    }

    // `focusPid`: the process of the focused window, asked first so that other applications,
    // which may be slow to answer, are asked only when it has no caret to give.
    QPoint run(uint focusPid)
    {
        QVector<Node> apps = children({QStringLiteral("org.a11y.atspi.Registry"), kRootPath});
        if (focusPid != 0) {
            std::stable_partition(apps.begin(), apps.end(),
                                  [&](const Node& app) { return pidOf(app.service) == focusPid; });
        }
        for (const Node& app : apps) {
            if (timeLeft() <= 0) {
                break;
            }
            if (skipped(app.service)) {
                continue;
            }
            // Only the application with the active window holds the caret the user types at.
            for (const Node& window : children(app)) {
                if (!hasState(window, kStateActive)) {
                    continue;
                }
                const Node focused = findFocusedText(window, 0);
                if (!focused.service.isEmpty()) {
                    return caretBelow(focused);
                }
            }
        }
        return QPoint(0, 0);
    }

private:
    int timeLeft() const { return kSearchTimeoutMs - static_cast<int>(mClock.elapsed()); }

    // The process behind a bus name, 0 when unknown; the bus itself answers, never an application.
    uint pidOf(const QString& service)
    {
        auto known = mPids->find(service);
        if (known == mPids->end()) {
            QDBusMessage ask = QDBusMessage::createMethodCall(
                QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
                QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetConnectionUnixProcessID"));
            ask << service;
            const QDBusMessage reply = mBus.call(ask, QDBus::Block, kCallTimeoutMs);
            const bool answered = reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty();
            known = mPids->insert(service, answered ? reply.arguments().constFirst().toUInt() : 0);
        }
        return *known;
    }

    // Our own windows never hold the caret, and the thread that would answer for them may be
    // the one waiting for this search.
    bool skipped(const QString& service)
    {
        const auto hung = mHungUntil->constFind(service);
        if (hung != mHungUntil->constEnd() && mClock.msecsSinceReference() < *hung) {
            return true;
        }
        return pidOf(service) == static_cast<uint>(getpid());
    }

    QDBusMessage call(const Node& node, const QString& interface, const QString& method,
                      const QList<QVariant>& arguments = {})
    {
        QDBusMessage message = QDBusMessage::createMethodCall(node.service, node.path, interface, method);
        message.setArguments(arguments);
        const QDBusMessage reply = mBus.call(message, QDBus::Block, qBound(1, timeLeft(), kCallTimeoutMs));
        if (reply.type() == QDBusMessage::ErrorMessage &&
            (reply.errorName() == QLatin1String("org.freedesktop.DBus.Error.NoReply") ||
             reply.errorName() == QLatin1String("org.freedesktop.DBus.Error.Timeout"))) {
            qCInfo(lcX11) << "accessibility: application" << node.service << "does not answer; skipped for"
                          << kSkipHungMs << "ms";
            mHungUntil->insert(node.service, mClock.msecsSinceReference() + kSkipHungMs);
        }
        return reply;
    }

    QVector<Node> children(const Node& node)
    {
        QVector<Node> result;
        if (skipped(node.service) || --mBudget < 0) {
            return result;
        }
        const QDBusMessage reply = call(node, kAccessible, QStringLiteral("GetChildren"));
        if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) {
            return result;
        }
        const QDBusArgument list = reply.arguments().constFirst().value<QDBusArgument>();
        list.beginArray();
        while (!list.atEnd()) {
            QString service;
            QDBusObjectPath path;
            list.beginStructure();
            list >> service >> path;
            list.endStructure();
            result.append({service, path.path()});
        }
        list.endArray();
        return result;
    }

    bool hasState(const Node& node, int bit)
    {
        if (skipped(node.service)) {
            return false;
        }
        const QDBusMessage reply = call(node, kAccessible, QStringLiteral("GetState"));
        if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) {
            return false;
        }
        const QList<uint> words = qdbus_cast<QList<uint>>(reply.arguments().constFirst());
        return bit / 32 < words.size() && (words.at(bit / 32) & (1u << (bit % 32))) != 0;
    }

    // The focused descendant with a text interface, or an empty node.
    Node findFocusedText(const Node& node, int depth)
    {
        if (depth > kMaxDepth || mBudget <= 0 || timeLeft() <= 0) {
            return {};
        }
        if (hasState(node, kStateFocused)) {
            const QDBusMessage reply = call(node, kAccessible, QStringLiteral("GetInterfaces"));
            if (reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty() &&
                reply.arguments().constFirst().toStringList().contains(kText)) {
                return node;
            }
        }
        for (const Node& child : children(node)) {
            const Node found = findFocusedText(child, depth + 1);
            if (!found.service.isEmpty()) {
                return found;
            }
        }
        return {};
    }

    // Below the caret, where a panel should not cover it.
    QPoint caretBelow(const Node& text)
    {
        const QDBusMessage offset = call(text, QStringLiteral("org.freedesktop.DBus.Properties"),
                                         QStringLiteral("Get"), {kText, QStringLiteral("CaretOffset")});
        if (offset.type() != QDBusMessage::ReplyMessage || offset.arguments().isEmpty()) {
            return QPoint(0, 0);
        }
        const int at = offset.arguments().constFirst().value<QDBusVariant>().variant().toInt();
        constexpr uint kScreenCoordinates = 0;
        const QDBusMessage extents = call(text, kText, QStringLiteral("GetCharacterExtents"),
                                          {at, QVariant::fromValue(kScreenCoordinates)});
        const QList<QVariant> box = extents.arguments();
        if (extents.type() != QDBusMessage::ReplyMessage || box.size() < 4) {
            return QPoint(0, 0);
        }
        const int x = box.at(0).toInt();
        const int y = box.at(1).toInt();
        if (x <= 0 || y <= 0) {
            return QPoint(0, 0);
        }
        return QPoint(x, y + box.at(3).toInt());
    }

    QDBusConnection mBus;
    QHash<QString, qint64>* mHungUntil;
    QHash<QString, uint>* mPids;
    QElapsedTimer mClock;
    int mBudget = kMaxNodes;
};

// The process that owns the focused top-level window (_NET_WM_PID), 0 when unknown. Its own
// connection to the X server, since it runs on the search's thread.
uint focusedWindowPid()
{
    static Display* display = XOpenDisplay(nullptr);
    if (display == nullptr) {
        return 0;
    }
    const Window root = DefaultRootWindow(display);
    // The window manager's word first; without one, the window holding the input focus.
    Window window = X11Window::property(display, root, "_NET_ACTIVE_WINDOW", XA_WINDOW);
    if (window == 0) {
        int revert = 0;
        XGetInputFocus(display, &window, &revert);
    }
    if (window == PointerRoot || window == root) {
        // The keyboard goes to the window under the pointer: the top-level one there.
        Window top = 0;
        Window child = 0;
        int x = 0;
        int y = 0;
        unsigned int mask = 0;
        XQueryPointer(display, root, &top, &child, &x, &y, &x, &y, &mask);
        window = child;
    }
    unsigned long pid = 0;
    X11Window::findUpwards(display, window, [&](Window w) {
        pid = X11Window::property(display, w, "_NET_WM_PID", XA_CARDINAL);
        return pid != 0;
    });
    return static_cast<uint>(pid);
}

// The accessibility bus, connected on first use and again after it went away (then `fresh`).
bool accessibilityBus(QDBusConnection* bus, bool* fresh)
{
    static const QString kName = QStringLiteral("zorvane-accessibility");
    static const QString kSessionName = QStringLiteral("zorvane-accessibility-session");
    QDBusConnection existing(kName);
    if (existing.isConnected()) {
        *bus = existing;
        return true;
    }
    QDBusConnection::disconnectFromBus(kName);
    *fresh = true;
    QDBusConnection session = QDBusConnection::connectToBus(QDBusConnection::SessionBus, kSessionName);
    if (!session.isConnected()) {
        QDBusConnection::disconnectFromBus(kSessionName);
        return false;
    }
    const QDBusMessage reply = session.call(
        QDBusMessage::createMethodCall(QStringLiteral("org.a11y.Bus"), QStringLiteral("/org/a11y/bus"),
                                       QStringLiteral("org.a11y.Bus"), QStringLiteral("GetAddress")),
        QDBus::Block, 2000);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) {
        return false;
    }
    *bus = QDBusConnection::connectToBus(reply.arguments().constFirst().toString(), kName);
    return bus->isConnected();
}

}  // namespace

QPoint lookUp()
{
    // One search at a time shares what the searches remember.
    static std::mutex searching;
    const std::lock_guard<std::mutex> lock(searching);
    static QHash<QString, qint64> hungUntil;
    static QHash<QString, uint> pids;
    static bool toldMissing = false;
    QDBusConnection bus(QString{});
    bool fresh = false;
    const bool connected = accessibilityBus(&bus, &fresh);
    if (fresh) {
        // Names on a new bus say nothing about the old one's.
        hungUntil.clear();
        pids.clear();
    }
    if (!connected) {
        if (!toldMissing) {
            qCInfo(lcX11) << "no accessibility bus: the caret position is unknown";
            toldMissing = true;
        }
        return QPoint(0, 0);
    }
    toldMissing = false;
    const uint focusPid = focusedWindowPid();
    qCDebug(lcX11) << "accessibility: caret search, focused window of process" << focusPid;
    return Search(bus, &hungUntil, &pids).run(focusPid);
}

}  // namespace AtspiCaret
