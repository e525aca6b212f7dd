#pragma once

#include "Database/CommandWord.h"
#include "Http/BackendRecords.h"
#include "Http/HttpRequest.h"
#include "Utils/UserHabit.h"
#include "Utils/UserPreferences.h"

#include <QList>
#include <QMap>
#include <QObject>
#include <QString>
#include <QTimer>

#include <atomic>
#include <functional>
#include <memory>

class AppLauncher;
class BaiduSpeech;
class BaiduTranslate;
class DeviceManager;
class HookManager;
class HttpManager;
class IFlyWebSpeech;
class InputView;
class QClipboard;
class SpeechSynthesisUtils;

// The session record of one voice key press, cleared whole by clearStatus().
struct InputStatus {
    bool isRunning = false;         // a session is open; results are ignored while false
    int type = 0;                   // 0 voice command, 1 dictation, 2 voice translation
    bool isListening = false;       // the session still wants audio
    bool isRecogning = false;       // a recogniser was started and no stop was issued
    bool isGetResult = false;       // at least one partial or final result was seen
    bool isAnalyzing = false;       // a semantic query is in flight
    int volume = 0;                 // last recogniser volume, 0 to 12
    int silentCount = 0;            // consecutive volume reports below 2
    bool recogniserFailed = false;  // an error came while listening went on: close when it stops
};

// The voice session logic behind the floating panels: turns the voice keys into sessions
// (engine, panel, when listening stops), and decides what becomes of the recognised text:
// typed and rewritten, obeyed as a command, searched, translated or read aloud.
class InputPresenter : public QObject {
    Q_OBJECT

public:
    enum SessionType { VoiceCommand = 0, Dictation = 1, VoiceTranslate = 2 };
    static constexpr int kInitialServiceCategory = 18;
    static constexpr int kMinListenMs = 790;
    static constexpr int kClickVerdictMs = 790;
    static constexpr int kSingleKeyStopMs = 800;
    static constexpr int kSilentReportsToStop = 50;
    static constexpr int kReadingPieceChars = 1024;

    // What the presenter talks to. The plain constructor takes the process-wide instances;
    // tests hand in their own (not owned).
    struct Collaborators {
        DeviceManager* device = nullptr;
        BaiduSpeech* baidu = nullptr;
        IFlyWebSpeech* ifly = nullptr;
        HookManager* hook = nullptr;
        HttpManager* http = nullptr;
        BaiduTranslate* translator = nullptr;
        SpeechSynthesisUtils* synthesis = nullptr;
    };
    // The timers, for tests that look at which ones run.
    enum TimerId {
        TimerMinListen,
        TimerCheckIsLongClick,
        TimerUpdateVolume,
        TimerRecogningAnimation,
        TimerCloseTranslateView,
        TimerSyncDeviceVolume,
        TimerDelayHide,
        TimerClipboardPoll,
        TimerSingleKeyStop
    };

    explicit InputPresenter(InputView* view, QObject* parent = nullptr);
    InputPresenter(InputView* view, const Collaborators& collaborators, QObject* parent = nullptr);
    ~InputPresenter() override;

    // Tests put a recording launcher in; not owned. Null goes back to the desktop's.
    void setLauncher(AppLauncher* launcher);

    // At quit: the session ends where it stands, nothing more is typed or said.
    void endForQuit();

    // Called by the panels.
    void stopStatus();
    int getCurVolume() const { return mDeviceVolume.load(); }
    void startCloseViewTimer();
    void clearAnimationStatus();
    void restartHook();
    void stopRecogningAnimation();
    bool isVoiceKeyPressing() const { return mVoiceKeyPressing; }
    // False in the applications whose own floating bars the selection toolbar would cover.
    bool foregroundTakesToolbar() const;
    bool isDelSign() const { return mUserPreferences.isDelAllSign != 0; }
    void setDelSign(int sign);
    bool isSupSingleClick() const { return mUserPreferences.isClickMode != 0; }
    void setSupSingleClick(int click);
    bool isSingleKeyMouse() const { return mUserPreferences.keyType == 1; }
    bool isPaddle() const { return mUserPreferences.textTranslateMode != 0; }
    bool isTextReadingMode() const { return mUserPreferences.textReadingMode != 0; }
    void setAudioEnable(bool enable);
    // The console's word on the battery. Sessions go on while the mouse's link is up: a low
    // battery is told by the battery panel, not by a voice key that stops answering.
    void setDeviceEnable(bool enable);

    // True when the text was a built-in command or one of the user's command words.
    bool handleCommand(QString text);
    bool checkLocalCommand(QString text);
    // Acts on the backend's reading of a voice command: opens a page or a program, or shows
    // a message.
    void handleIntent(SemanticParsingResult result);
    // Types word over the text of the segment already typed, with as few keys as possible.
    void sendOutput(QString word);
    // Takes back the differing tail of the typed text and returns the new tail for the caller
    // to insert.
    QString restoreContent(QString content);

    // Read by tests and the panels.
    const InputStatus& status() const { return mStatus; }
    const QTimer& timer(TimerId id) const;
    // Tests: the expiry of a timer, now. A single-shot timer stops as if it had run out.
    void expireTimer(TimerId id);
    QList<QString> results() const { return mResults; }
    TextRecord textRecord() const { return mTextRecord; }
    QString paddleText() const { return mPaddleText; }
    int serviceCategory() const { return mServiceCategory; }
    QString lastOutput() const { return mLastOutput; }
    QMap<int, UserHabit> userHabits() const { return mUserHabits; }
    int dynamicVolume() const { return mDynamicVolume.load(); }

public slots:
    void onLocalIpId(int id);
    void onForceFinshView(int key, int status);
    void onKeyEvent(int key, int status);
    void onClickListener(int key);
    void onLongClickListener(int key, int status);
    void onDoubleClickListener(int key, int status);
    void onGetUserCommandWord(QList<CommandWord> words);
    void onGetDirectUIs(QList<DirectUI> directUIs);
    void onRecBegin();
    void onRecFlushResult(QString result);
    void onRecResult(QString result);
    void onRecFinish();
    void onRecError(int code, QString msg);
    void onPreferencesChange(UserPreferences preferences);
    void onClipboardDataChange();
    void onToShowTextTranslate();
    void onToStartTextReading(int pronPerson);
    void onToShowReviseSignView(int x, int y);
    void onDelayHide();
    void onRecVolume(int volume);
    void onUpdateVolume();

    // Expiries of the timers that have no slot of their own above.
    void onCheckIsLongClick();
    void onRecogningAnimation();
    void onCloseTranslateView();
    void onSyncDeviceVolume();
    // Either volume changed: the sync tick, resting while they agreed, runs again.
    void resumeVolumeSync();
    void onClipboardPoll();
    void onSingleKeyStop();
    // The mouse's link went (receiver pulled, Bluetooth dropped): a session in progress ends as
    // if the key had been let go, and its panels close.
    void onDeviceLost();
    // A selection ended (drag or double click of the left button).
    void onPaddleWords();

private:
    void initDatas(const Collaborators& collaborators);
    void connectEngine(QObject* engine);
    void setPreferencesView();
    void clearStatus();

    // Sessions.
    bool checkDeviceEnable() const;
    bool useIFly() const;
    bool isVoiceTranslateMode() const;
    bool inCurrentEditUI();
    bool isEngineRunning() const;
    void startEngine(int type);
    void stopEngine();
    bool beginSession();
    void sessionTail(int type);
    void startVoiceCommand();
    void startDictation();
    void startTranslate();
    void startSingleKeyMouseRec();
    void openTranslatePanel();
    void stopVoiceCommand();
    void stopDictation();
    void stopTranslate();
    void stopLongVoiceCommand();
    void stopLongDictation();
    void stopLongTranslate();
    void stopListening(bool hard, bool muteMic);
    void stopLongOfType(int type);
    bool isPickerOpen();
    void startDelayHide();
    void delayHidePanel(bool focusFollow);

    // Results.
    QString stripped(QString text) const;
    QString targetName() const;
    // The traditional script of text, handed to done when the service answers (the text as it
    // is if it fails); nothing when a new session has started meanwhile.
    void requestTraditional(const QString& text, std::function<void(const QString&)> done);
    // A final dictation segment to type, once converted when asked.
    void typeSegment(const QString& text, bool convert);
    // Types the segments whose text is ready, in order; all of them as they stand when all.
    void typeReadySegments(bool all);
    // Shows the source of a voice translation; true when it went into a panel being edited.
    bool setTranslateSource(QString source);
    void finishVoiceCommand(const QString& content);
    void searchTheWeb(QString query);
    void onSemanticReply(quint64 session, bool ok, const QString& content,
                         const SemanticParsingResult& result);
    void onSemanticFailure(quint64 session);

    // Commands and output.
    AppLauncher* launcher() const;
    // Backspaces over what differs from content; the length of the common prefix.
    int eraseDifferingTail(const QString& content);
    void replayChord(const QString& pro);
    // A command word of an application: its desktop entry, or the same entry found by id.
    void startApplication(const QString& path);

    // Selection, translation and reading.
    bool isClipboardUsable();
    void showPaddleWords();

    InputView* mInputView;
    DeviceManager* mDeviceManager = nullptr;
    BaiduSpeech* mBaiduSpeech = nullptr;
    IFlyWebSpeech* mIFlySpeech = nullptr;
    HookManager* mHookManager = nullptr;
    HttpManager* mHttpManager = nullptr;
    BaiduTranslate* mTranslator = nullptr;
    SpeechSynthesisUtils* mSynthesis = nullptr;
    HttpRequest::TimeoutFunc mHttpTimeoutLog;
    HttpRequest::ErrorFunc mHttpErrorLog;
    std::unique_ptr<AppLauncher> mDesktopLauncher;
    AppLauncher* mLauncher = nullptr;

    QList<CommandWord> mCommandWords;
    UserPreferences mUserPreferences;
    QMap<int, UserHabit> mUserHabits;
    TextRecord mTextRecord;
    int mServiceCategory = kInitialServiceCategory;
    QList<QString> mResults;
    InputStatus mStatus;
    quint64 mSession = 0;  // counts clearStatus(), so that a late reply knows its session is gone
    QClipboard* mClipboard = nullptr;
    bool mSelectionFromOwner = false;  // PRIMARY's owner changes tell of selections, not drags
    bool isSingleClick = false;
    bool isLongClick = false;
    bool isKeyRelease = false;
    int mKey = 0;
    int mAnimationDot = 0;
    bool mHasVoice = false;
    int mLocalIpId = 0;
    QString mLastOutput;
    struct Segment {
        quint64 id;
        QString text;
        bool ready;
    };
    QList<Segment> mSegments;  // final segments of the session waiting for their turn
    quint64 mSegmentSerial = 0;
    unsigned long mOutputWindow = 0;  // where mLastOutput was typed
    // A button went down since mLastOutput was typed: the caret may be in another field of
    // the same window, which the focused window alone does not tell.
    bool mPressedSinceOutput = false;
    // The user's key presses counted when the last text went out.
    quint64 mKeysAtOutput = 0;
    QList<DirectUI> mDirectUIs;
    bool mVoiceKeyPressing = false;
    // Written by the device's read thread, read on the main thread.
    std::atomic<int> mDynamicVolume{0};
    std::atomic<int> mDeviceVolume{0};
    std::atomic<bool> mVolumeAdjustEnable{false};
    std::atomic<int> mVolumeMax{0};
    std::atomic<int> mVolumeMin{0};
    QString mPaddleText;
    int mClipboardTries = 0;
    bool mDoubleClickHold = false;

    QTimer mTimerMinListen;
    QTimer mTimerCheckIsLongClick;
    QTimer mTimerUpdateVolume;
    QTimer mTimerRecogningAnimation;
    QTimer mTimerCloseTranslateView;
    QTimer mTimerSyncDeviceVolume;
    QTimer mTimerDelayHide;
    QTimer mTimerClipboardPoll;
    QTimer mTimerSingleKeyStop;
};
