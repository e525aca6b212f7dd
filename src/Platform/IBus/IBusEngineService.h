#pragma once

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QHash>
#include <QMutex>
#include <QString>
#include <QWaitCondition>

// The engine factory and the engines ibus-daemon asks of us, on the daemon's bus: the factory
// (/org/freedesktop/IBus/Factory) makes one engine per input context that selects our engine,
// and the daemon tells each engine when its context gains or loses the focus. Our engines
// compose nothing: every key goes on to the application; text reaches it only when the
// typing backend commits it, through the engine of the focused context.
//
// It answers the daemon on a thread of its own: the typing backend waits on the main thread
// for the daemon's engine switch, and the daemon makes our engine during that switch. The
// other members may be called from any thread.
class IBusEngineService : public QDBusVirtualObject {
    Q_OBJECT

public:
    static constexpr unsigned int kCapSurroundingText = 1u << 5;

    explicit IBusEngineService(const QDBusConnection& bus);

    // Waits until an engine of ours has a focused input context; true if one has.
    bool waitForFocus(int timeoutMs);
    bool hasFocus();
    // Whether the focused context can delete text around its caret on request.
    bool focusedTakesDeletes();
    // Signals on the focused engine; false without one.
    bool commitText(const QString& text);
    bool deleteBeforeCaret(int characters);
    bool forwardKey(unsigned int keysym, unsigned int keycode, unsigned int state);

    QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    bool emitOnFocused(const char* name, const QVariantList& arguments);

    QDBusConnection mBus;
    QMutex mMutex;
    QWaitCondition mFocusChanged;
    QString mFocused;                            // the engine whose context has the focus
    QHash<QString, unsigned int> mCapabilities;  // per engine, as its context declared them
    int mEngines = 0;
};
