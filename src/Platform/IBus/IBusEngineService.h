#pragma once

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QElapsedTimer>
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
// The field reports the text around its caret after each change it applied (we ask for it):
// the typing backend waits for the report that shows its last text before the caret, since
// GNOME Shell passes on only the last of the commits that reach it at once (the others are
// lost). A field that never reports its text is followed by its caret moves instead.
//
// From the text we also learn the unit the field counts its caret in, as the reading that puts
// the caret right after what we typed. Fields report and delete in different units: characters
// (the GTK input module), UTF-16 units (Qt's), UTF-8 bytes through GNOME Shell, which deletes in
// bytes for GTK 3 but in characters for GTK 4. Where the deletion's count is not the same in
// every unit still possible, the field gets BackSpace keys instead: one per character, never more.
//
// It answers the daemon on a thread of its own: the typing backend waits on the main thread
// for the daemon's engine switch, and the daemon makes our engine during that switch. The
// other members may be called from any thread.
class IBusEngineService : public QDBusVirtualObject {
    Q_OBJECT

public:
    static constexpr unsigned int kCapSurroundingText = 1u << 5;

    explicit IBusEngineService(const QDBusConnection& bus);

    // Waits until an engine of ours has a focused input context and something was heard of its
    // field (on GNOME a focus may pass through a context no field is on yet, which drops text);
    // true if one has the focus.
    bool waitForFocus(int timeoutMs);
    bool hasFocus();
    // Whether the focused context can delete text around its caret on request.
    bool focusedTakesDeletes();
    // Signals on the focused engine; false without one.
    bool commitText(const QString& text);
    // How the last `characters` characters can go: by a request whose count is certain; by a
    // request in characters that the field may take as fewer (never more), checked then by
    // waitForChecked; or by BackSpace keys.
    enum class Deletion { Exact, Checked, Keys };
    Deletion deletionOf(int characters);
    // Asks the field to delete them (Exact or Checked), counted in the unit it deletes in where
    // that is known.
    bool deleteBeforeCaret(int characters, Deletion how);
    // After a checked deletion: waits for the field's report of it. Returns how many of the
    // characters are left (0: all went), or -1 if the report did not come or did not tell.
    int waitForChecked(int timeoutMs);
    // The last `characters` characters go by BackSpace keys the caller forwards; waitForDeleted
    // then waits until the field reports its caret where they leave it (false if it did not, or
    // if that place is not known).
    void deletingByKeys(int characters);
    bool waitForDeleted(int timeoutMs);
    bool forwardKey(unsigned int keysym, unsigned int keycode, unsigned int state);
    // How many reports the focused field has sent so far.
    struct Reports {
        quint64 text = 0;
        quint64 caret = 0;
    };
    Reports fieldReports();
    enum class Shown { Nothing, Text, CaretOnly };
    // Waits until the field has reported, after `before`, text before its caret that ends with
    // what we typed there last (any text if none of ours is left), or, from a field that reports
    // no text, a caret move: for at most caretTimeoutMs from a field known to report only its
    // caret, else textTimeoutMs (a field that has not shown us its kind yet may be slow at first).
    Shown waitForField(const Reports& before, int caretTimeoutMs, int textTimeoutMs);

    QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    bool emitOnFocused(const char* name, const QVariantList& arguments);
    bool showsOurText() const;
    unsigned int deleteUnit() const;  // 0 while not known
    void checkDeletion(const QString& before);

    QDBusConnection mBus;
    QMutex mMutex;
    QWaitCondition mFocusChanged;                // and a field report arrived
    QString mFocused;                            // the engine whose context has the focus
    QHash<QString, unsigned int> mCapabilities;  // per engine, as its context declared them
    int mEngines = 0;
    static constexpr int kTypedKept = 4096;
    Reports mReports;              // from the focused field
    bool mFieldHeard = false;      // it has reported anything since it gained our engine
    bool mFieldSendsText = false;  // it has reported its text since then
    bool mFieldCaretOnly = false;  // it has shown a change by its caret alone
    quint64 mCaretAtText = 0;      // caret reports when its text was reported last
    QElapsedTimer mSinceText;      // since then
    static constexpr int kCaretAfterTextMs = 10;
    bool mDaemonsCaretDue = false;  // the caret ibus hands a new engine, not the field's report
    QString mReportedText;          // its text and caret, as it reported them last
    uint mReportedCaret = 0;
    unsigned int mReportUnits = 0;  // the units its reports may count in (all, until it showed)
    int mCaretCharacters = -1;      // its caret in characters, from its last report after our text
    int mKeysLeaveCaret = -1;       // where BackSpace keys we forwarded leave it; -1 once they did
    unsigned int mDeleteUnit = 0;   // the unit it deletes in, once a checked deletion showed it
    struct Check {
        bool pending = false;  // a checked deletion waits for the field's report
        QString expected;      // its text before the caret if the deletion was exact
        QString deleted;       // what it was to delete
        int left = -1;         // characters the deletion left of it
    } mCheck;
    QString mTyped;  // what we typed into it and did not delete, the last of it
};
