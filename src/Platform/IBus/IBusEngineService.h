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
// The field reports its caret place after each change it applied: the typing backend waits for
// that report before its next change, since GNOME Shell passes on only the last of the changes
// that reach it at once (the others are lost). We ask for the text around the caret too: from
// it we learn the unit the field counts its caret in, as the reading that puts the caret right
// after what we typed. Fields report and delete in different units: characters (the GTK input
// module), UTF-16 units (Qt's), UTF-8 bytes through GNOME Shell, which deletes in bytes for
// GTK 3 but in characters for GTK 4. Where the deletion's count is not the same in every unit
// still possible, the field gets BackSpace keys instead: one per character, never more.
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
    // Whether a request deletes exactly the last `characters` characters in the focused field.
    bool deletesExactly(int characters);
    bool deleteBeforeCaret(int characters);
    // The last `characters` characters go by BackSpace keys the caller forwards; waitForDeleted
    // then waits until the field reports its caret where they leave it (false if it did not).
    void deletingByKeys(int characters);
    bool waitForDeleted(int timeoutMs);
    bool forwardKey(unsigned int keysym, unsigned int keycode, unsigned int state);
    // How many caret moves the focused field has reported; waits until it has reported more
    // than `seen`, for at most timeoutMs: false if it reported none.
    quint64 fieldReports();
    // How often a field gained our engine, and the reports count when the last one did.
    int focusIns(quint64* reportsAtFocusIn);
    bool waitForFieldReport(quint64 seen, int timeoutMs);

    QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    bool emitOnFocused(const char* name, const QVariantList& arguments);

    QDBusConnection mBus;
    QMutex mMutex;
    QWaitCondition mFocusChanged;                // and a field report arrived
    QString mFocused;                            // the engine whose context has the focus
    QHash<QString, unsigned int> mCapabilities;  // per engine, as its context declared them
    int mEngines = 0;
    static constexpr int kTypedKept = 4096;
    quint64 mFieldReports = 0;  // caret moves the focused field reported
    int mFocusIns = 0;
    quint64 mReportsAtFocusIn = 0;
    unsigned int mReportUnits = 0;  // the units its reports may count in (all, until it showed)
    int mCaretCharacters = -1;      // its caret in characters, from its last report after our text
    int mKeysLeaveCaret = -1;       // where BackSpace keys we forwarded leave it; -1 once they did
    QString mTyped;                 // what we typed into it and did not delete, the last of it
};
