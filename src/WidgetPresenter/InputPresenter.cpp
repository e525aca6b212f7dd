// The session state machine: engines, panels, key and click transitions, stops, the delayed
// hide and the volume handling.
#include "InputPresenter.h"

#include "BaiduSpeech/BaiduSpeech.h"
#include "Hid/DeviceManager.h"
#include "Hid/HookManager.h"
#include "Http/BaiduTranslate.h"
#include "Http/HttpManager.h"
#include "IFlySpeech/IFlyWebSpeech.h"
#include "InputView.h"
#include "Platform/DesktopLauncher.h"
#include "Platform/WinUtils.h"
#include "SpeechRec/SpeechSynthesisUtils.h"
#include "Utils/LanguageTables.h"
#include "Utils/Logging.h"
#include "Utils/PreferencesUtils.h"

#include <QClipboard>
#include <QGuiApplication>

namespace {

constexpr int kDelayHideCommandMs = 2000;
constexpr int kDelayHidePanelMs = 200;
constexpr int kCloseViewMs = 1000;
constexpr int kAnimationMs = 1000;
constexpr int kSyncDeviceVolumeMs = 200;
constexpr int kClipboardPollMs = 50;
constexpr int kBleDevice = 1;
constexpr int kMicPage = 3;

// A speech table row, or row 0 for a value that no picker can give.
int speechRow(int row)
{
    return row >= 0 && row < kSpeechLanguageRows ? row : 0;
}

template <typename Engine>
void connectRecogniser(Engine* engine, InputPresenter* presenter)
{
    QObject::connect(engine, &Engine::signalBegin, presenter, &InputPresenter::onRecBegin);
    QObject::connect(engine, &Engine::signalResult, presenter, &InputPresenter::onRecResult);
    QObject::connect(engine, &Engine::signalFlushResult, presenter, &InputPresenter::onRecFlushResult);
    QObject::connect(engine, &Engine::signalEnd, presenter, &InputPresenter::onRecFinish);
    QObject::connect(engine, &Engine::signalError, presenter, &InputPresenter::onRecError);
    QObject::connect(engine, &Engine::signalVolume, presenter, &InputPresenter::onRecVolume);
}

}  // namespace

InputPresenter::InputPresenter(InputView* view, QObject* parent)
    : InputPresenter(
          view,
          Collaborators{DeviceManager::getInstance(), BaiduSpeech::getInstance(),
                        IFlyWebSpeech::getInstance(), HookManager::getInstance(), HttpManager::getInstance(),
                        BaiduTranslate::getInstance(), SpeechSynthesisUtils::getInstance()},
          parent)
{
}

InputPresenter::InputPresenter(InputView* view, const Collaborators& collaborators, QObject* parent)
    : QObject(parent), mInputView(view), mDesktopLauncher(std::make_unique<DesktopLauncher>())
{
    initDatas(collaborators);
}

InputPresenter::~InputPresenter() = default;

void InputPresenter::initDatas(const Collaborators& collaborators)
{
    isSingleClick = false;
    isLongClick = false;
    isKeyRelease = false;
    mHttpTimeoutLog = [](QString message) { qCWarning(lcInput).noquote() << "http timeout:" << message; };
    mHttpErrorLog = [](QString message, QNetworkReply::NetworkError code) {
        qCWarning(lcInput).noquote() << "http error:" << message << code;
    };

    mDeviceManager = collaborators.device;
    mBaiduSpeech = collaborators.baidu;
    mIFlySpeech = collaborators.ifly;
    mHookManager = collaborators.hook;
    mHttpManager = collaborators.http;
    mTranslator = collaborators.translator;
    mSynthesis = collaborators.synthesis;

    // Key events cross from the device's threads queued; the gesture signals are emitted
    // before the key event, and the queue keeps that order.
    connect(mDeviceManager, &DeviceManager::signalKeyEvent, this, &InputPresenter::onKeyEvent,
            Qt::QueuedConnection);
    connect(mDeviceManager, &DeviceManager::signalForeFinishKeyEvent, this,
            &InputPresenter::onForceFinshView);
    connect(mDeviceManager, &DeviceManager::signalClickListener, this, &InputPresenter::onClickListener);
    connect(mDeviceManager, &DeviceManager::signalLongClickListener, this,
            &InputPresenter::onLongClickListener);
    connect(mDeviceManager, &DeviceManager::signalDoubleClickListener, this,
            &InputPresenter::onDoubleClickListener);
    // These only store numbers, on the emitter's thread.
    connect(
        mDeviceManager, &DeviceManager::signalAudioVolume, this,
        [this](int volume) {
            mDeviceVolume = volume;
            if (mDynamicVolume < 1) {
                mDynamicVolume = volume;
            }
            // From the read thread: the resting sync tick is woken on the main thread.
            QMetaObject::invokeMethod(this, "resumeVolumeSync", Qt::QueuedConnection);
        },
        Qt::DirectConnection);
    connect(
        mDeviceManager, &DeviceManager::signalVolumeAdjust, this,
        [this](bool enable, int max, int min) {
            mVolumeAdjustEnable = enable;
            mVolumeMax = max;
            mVolumeMin = min;
        },
        Qt::DirectConnection);
    connect(mDeviceManager, &DeviceManager::signalUSBChange, this, [this](int, int, bool enable) {
        if (!enable) {
            onDeviceLost();
        }
    });
    connect(mDeviceManager, &DeviceManager::signalBLEDeviceConnectState, this,
            [this](bool connected, QString) {
                if (!connected) {
                    onDeviceLost();
                }
            });
    connect(mDeviceManager, &DeviceManager::signalDeviceReady, this, [this] {
        if (!mTimerSyncDeviceVolume.isActive()) {
            mTimerSyncDeviceVolume.start();
        }
    });

    connectRecogniser(mBaiduSpeech, this);
    connectRecogniser(mIFlySpeech, this);
    connect(
        mBaiduSpeech, &BaiduSpeech::signalChangeVolume, this,
        [this](int delta) {
            if (mDynamicVolume > 0) {
                const bool adjustable = mVolumeAdjustEnable;
                mDynamicVolume = qBound(adjustable ? mVolumeMin.load() : 28, mDynamicVolume + delta,
                                        adjustable ? mVolumeMax.load() : 40);
            }
            mDeviceManager->setAudioVolume(mDynamicVolume);
            resumeVolumeSync();
        },
        Qt::DirectConnection);

    PreferencesUtils* preferences = PreferencesUtils::getInstance();
    mUserHabits = preferences->getUserHabitList();
    mServiceCategory = kInitialServiceCategory;
    connect(preferences, &PreferencesUtils::signalPreferencesChange, this,
            &InputPresenter::onPreferencesChange);
    onPreferencesChange(preferences->getUserPreferences());

    const auto setUp = [this](QTimer& timer, int interval, bool singleShot,
                              void (InputPresenter::*expiry)()) {
        timer.setInterval(interval);
        timer.setSingleShot(singleShot);
        connect(&timer, &QTimer::timeout, this, expiry);
    };
    mTimerMinListen.setInterval(kMinListenMs);
    mTimerMinListen.setSingleShot(true);
    setUp(mTimerCheckIsLongClick, kClickVerdictMs, true, &InputPresenter::onCheckIsLongClick);
    // The two "always" timers run only while they have work: a session, a ready device.
    setUp(mTimerUpdateVolume, mInputView->getVolumeSample(), false, &InputPresenter::onUpdateVolume);
    setUp(mTimerRecogningAnimation, kAnimationMs, false, &InputPresenter::onRecogningAnimation);
    setUp(mTimerCloseTranslateView, kCloseViewMs, false, &InputPresenter::onCloseTranslateView);
    setUp(mTimerSyncDeviceVolume, kSyncDeviceVolumeMs, false, &InputPresenter::onSyncDeviceVolume);
    setUp(mTimerDelayHide, kDelayHidePanelMs, true, &InputPresenter::onDelayHide);
    setUp(mTimerClipboardPoll, kClipboardPollMs, false, &InputPresenter::onClipboardPoll);
    setUp(mTimerSingleKeyStop, kSingleKeyStopMs, true, &InputPresenter::onSingleKeyStop);
    if (mDeviceManager->isReady()) {
        mTimerSyncDeviceVolume.start();
    }

    mClipboard = QGuiApplication::clipboard();

    connect(mHookManager, &HookManager::signalMouseEvent, this, [this](int, int status) {
        if (status != 0) {
            mPressedSinceOutput = true;
        }
    });
    // In a Wayland session the pointer hook sees drags over X windows only. Xwayland mirrors the
    // PRIMARY selection of native windows too, so there a new owner of PRIMARY is the sign of a
    // selection, for every window (the drag would show the toolbar a second time). Our own
    // windows' selections are not offered.
    mSelectionFromOwner =
        qgetenv("XDG_SESSION_TYPE") == "wayland" && qEnvironmentVariableIsSet("WAYLAND_DISPLAY");
    if (mSelectionFromOwner) {
        connect(
            mClipboard, &QClipboard::selectionChanged, this,
            [this] {
                if (!mClipboard->ownsSelection()) {
                    onPaddleWords();
                }
            },
            Qt::QueuedConnection);
    }
    connect(
        mHookManager, &HookManager::signalPaddleWords, this,
        [this](int status) {
            if (status != 0 && !mSelectionFromOwner) {
                onPaddleWords();
            }
        },
        Qt::QueuedConnection);
    connect(
        mHookManager, &HookManager::signalDoubleClickListener, this,
        [this](int key, int status) {
            if (key == 1 && status == 0 && !mSelectionFromOwner) {
                onPaddleWords();
            }
        },
        Qt::QueuedConnection);
}

const QTimer& InputPresenter::timer(TimerId id) const
{
    switch (id) {
        case TimerMinListen:
            return mTimerMinListen;
        case TimerCheckIsLongClick:
            return mTimerCheckIsLongClick;
        case TimerUpdateVolume:
            return mTimerUpdateVolume;
        case TimerRecogningAnimation:
            return mTimerRecogningAnimation;
        case TimerCloseTranslateView:
            return mTimerCloseTranslateView;
        case TimerSyncDeviceVolume:
            return mTimerSyncDeviceVolume;
        case TimerDelayHide:
            return mTimerDelayHide;
        case TimerClipboardPoll:
            return mTimerClipboardPoll;
        case TimerSingleKeyStop:
            break;
    }
    return mTimerSingleKeyStop;
}

void InputPresenter::expireTimer(TimerId id)
{
    QTimer& which = const_cast<QTimer&>(timer(id));
    if (which.isSingleShot()) {
        which.stop();
    }
    switch (id) {
        case TimerMinListen:
            break;  // its running is all it does
        case TimerCheckIsLongClick:
            onCheckIsLongClick();
            break;
        case TimerUpdateVolume:
            onUpdateVolume();
            break;
        case TimerRecogningAnimation:
            onRecogningAnimation();
            break;
        case TimerCloseTranslateView:
            onCloseTranslateView();
            break;
        case TimerSyncDeviceVolume:
            onSyncDeviceVolume();
            break;
        case TimerDelayHide:
            onDelayHide();
            break;
        case TimerClipboardPoll:
            onClipboardPoll();
            break;
        case TimerSingleKeyStop:
            onSingleKeyStop();
            break;
    }
}

void InputPresenter::setLauncher(AppLauncher* launcher)
{
    mLauncher = launcher;
}

AppLauncher* InputPresenter::launcher() const
{
    return mLauncher != nullptr ? mLauncher : mDesktopLauncher.get();
}

void InputPresenter::onPreferencesChange(UserPreferences preferences)
{
    mUserPreferences = preferences;
    setPreferencesView();
}

void InputPresenter::setPreferencesView()
{
    const int row = speechRow(mUserPreferences.recognitionLanguage);
    mInputView->setTextLanguageText(QString::fromUtf8(kIFlyLanguages[row].name));
}

void InputPresenter::setDelSign(int sign)
{
    mUserPreferences.isDelAllSign = sign;
    PreferencesUtils::getInstance()->setUserPreferences(mUserPreferences);
}

void InputPresenter::setSupSingleClick(int click)
{
    mUserPreferences.isClickMode = click;
    PreferencesUtils::getInstance()->setUserPreferences(mUserPreferences);
}

void InputPresenter::setAudioEnable(bool enable)
{
    // The audio path itself is switched by the device layer.
    qCDebug(lcInput) << "audio enable" << enable;
}

void InputPresenter::onLocalIpId(int id)
{
    mLocalIpId = id;
}

void InputPresenter::onGetDirectUIs(QList<DirectUI> directUIs)
{
    mDirectUIs = directUIs;
}

void InputPresenter::clearStatus()
{
    // Segments still waiting for their conversion are typed as heard before anything of the
    // next session: late is worse than simplified.
    typeReadySegments(true);
    mStatus = InputStatus();
    ++mSession;
}

void InputPresenter::clearAnimationStatus()
{
    mHasVoice = false;
}

void InputPresenter::restartHook()
{
    mHookManager->stopHook();
    mHookManager->startHook();
}

void InputPresenter::stopRecogningAnimation()
{
    mTimerRecogningAnimation.stop();
}

void InputPresenter::startCloseViewTimer()
{
    if (!mTimerCloseTranslateView.isActive()) {
        mTimerCloseTranslateView.start();
    }
}

// ---- engines

void InputPresenter::setDeviceEnable(bool enable)
{
    qCInfo(lcInput) << "device enable" << enable;
}

bool InputPresenter::checkDeviceEnable() const
{
    return mDeviceManager != nullptr && mDeviceManager->state() == 1 && mDeviceManager->isReady();
}

bool InputPresenter::useIFly() const
{
    const int language = mUserPreferences.recognitionLanguage;
    return (language == 0 || language == 3) && mUserPreferences.isIFlySpeech;
}

bool InputPresenter::isVoiceTranslateMode() const
{
    return ::isVoiceTranslateMode(mUserPreferences);
}

bool InputPresenter::isEngineRunning() const
{
    return useIFly() ? mIFlySpeech->isRunning() : mBaiduSpeech->isRunning();
}

void InputPresenter::startEngine(int type)
{
    if (useIFly()) {
        const IFlyLanguage& row = kIFlyLanguages[speechRow(mUserPreferences.voiceTranslateSourceLanguage)];
        // Traditional Mandarin is written by the service itself.
        const int mode =
            !isVoiceTranslateMode() && mUserPreferences.voiceTranslateTargetLanguage == 1 ? 2 : 0;
        mIFlySpeech->start(QString::fromUtf8(row.language), QString::fromUtf8(row.accent), mode);
    } else if (type == VoiceCommand) {
        mBaiduSpeech->stop();
        mBaiduSpeech->start(kRecognitionLanguages[speechRow(mUserPreferences.recognitionLanguage)].id);
    } else {
        mBaiduSpeech->start(
            kRecognitionLanguages[speechRow(mUserPreferences.voiceTranslateSourceLanguage)].id);
    }
    mStatus.silentCount = 0;
    mStatus.isRecogning = true;
}

void InputPresenter::stopEngine()
{
    if (useIFly()) {
        mIFlySpeech->stop();
    } else {
        mBaiduSpeech->stop();
    }
}

// ---- starting a session

bool InputPresenter::inCurrentEditUI()
{
    WinUtils* win = WinUtils::getInstance();
    const QPoint position = win->getPosition();
    const QString name = win->getForegroundWindowName();
    for (const DirectUI& ui : qAsConst(mDirectUIs)) {
        if (ui.uiName == name) {
            return ui.edit == 1;
        }
    }
    return position.x() > 0 && position.y() > 0;
}

bool InputPresenter::beginSession()
{
    if (!checkDeviceEnable()) {
        return false;
    }
    mTimerDelayHide.stop();
    mTimerCloseTranslateView.stop();
    mInputView->setMicStatus(true);
    clearStatus();
    mTimerMinListen.start();
    return true;
}

void InputPresenter::sessionTail(int type)
{
    if (type == VoiceCommand) {
        mTimerCloseTranslateView.stop();
        mInputView->clearContent();
        mResults.clear();
    }
    mStatus.isRunning = true;
    mStatus.type = type;
    mStatus.isListening = true;
    if (!mTimerUpdateVolume.isActive()) {
        mTimerUpdateVolume.start();
    }
    if (type == VoiceCommand) {
        mInputView->setInitVoiceSearchView();
    }
}

void InputPresenter::startVoiceCommand()
{
    if (isSingleKeyMouse()) {
        // The recogniser already runs since the first press of the double click.
        if (!mInputView->isHiddenNoFocusView() && mInputView->getCurrentNoFocusViewStatus() == kMicPage) {
            mInputView->toHideNoFocusView();
        }
    } else {
        if (!beginSession()) {
            return;
        }
        if (!mInputView->isHiddenFocusView()) {
            mInputView->toHideFocusView();
        }
        if (!mInputView->isHiddenNoFocusView()) {
            mInputView->toHideNoFocusView();
        }
        startEngine(VoiceCommand);
    }
    sessionTail(VoiceCommand);
}

void InputPresenter::startDictation()
{
    if (!isSingleKeyMouse()) {
        if (!beginSession()) {
            return;
        }
        mResults.clear();
        if (!mInputView->isViewHidden()) {
            mInputView->toHide();
        }
        if (inCurrentEditUI()) {
            mInputView->initFoDictationView();
        } else {
            mInputView->initNoFoDictationView();
        }
        startEngine(Dictation);
    }
    sessionTail(Dictation);
}

void InputPresenter::startTranslate()
{
    if (!isSingleKeyMouse()) {
        if (!beginSession()) {
            return;
        }
        mResults.clear();
        mInputView->clearTranslateContent();
        openTranslatePanel();
        startEngine(VoiceTranslate);
    }
    sessionTail(VoiceTranslate);
}

void InputPresenter::openTranslatePanel()
{
    // A press on an open translation panel closes it.
    if (inCurrentEditUI()) {
        WinUtils* win = WinUtils::getInstance();
        const QPoint caret = win->getPosition1();
        const QRect screen = win->getScreen();
        if (screen.height() - caret.y() >= mInputView->getCurrentFoViewHeight()) {
            if (mInputView->isHiddenFocusView()) {
                mInputView->initFoTranslateView();
            } else {
                mInputView->toHideFocusView();
                stopLongTranslate();
            }
        } else if (mInputView->isHiddenFocusView()) {
            mInputView->initNoFoTranslateView(false);
        }
    } else if (mInputView->isHiddenNoFocusView()) {
        mInputView->initNoFoTranslateView(false);
    } else {
        mInputView->toHideNoFocusView();
        stopLongTranslate();
    }
}

void InputPresenter::startSingleKeyMouseRec()
{
    // Recognition starts before the gesture is known; isRunning stays false until a gesture
    // claims the press, so early results are dropped.
    if (!checkDeviceEnable()) {
        return;
    }
    mTimerDelayHide.stop();
    mTimerCloseTranslateView.stop();
    mInputView->setMicStatus(true);
    clearStatus();
    mInputView->clearContent();
    mResults.clear();
    mTimerMinListen.start();
    if (!mInputView->isViewHidden()) {
        mInputView->toHide();
    }
    startEngine(VoiceCommand);
}

// ---- stopping

void InputPresenter::stopListening(bool hard, bool muteMic)
{
    if (hard) {
        mTimerMinListen.stop();
    } else if (mTimerMinListen.isActive()) {
        return;
    }
    stopEngine();
    mStatus.isListening = false;
    mStatus.isRecogning = false;
    if (muteMic) {
        mInputView->setMicStatus(false);
    }
    if (mStatus.recogniserFailed) {
        // A failed recogniser may never end the session itself: it closes from here.
        mStatus.recogniserFailed = false;
        startDelayHide();
    }
}

void InputPresenter::stopVoiceCommand()
{
    stopListening(false, false);
}

void InputPresenter::stopDictation()
{
    stopListening(false, true);
}

void InputPresenter::stopTranslate()
{
    stopListening(false, true);
}

void InputPresenter::stopLongVoiceCommand()
{
    stopListening(true, false);
}

void InputPresenter::stopLongDictation()
{
    stopListening(true, true);
}

void InputPresenter::stopLongTranslate()
{
    stopListening(true, true);
}

void InputPresenter::stopLongOfType(int type)
{
    if (type == Dictation) {
        stopLongDictation();
    } else if (type == VoiceTranslate) {
        stopLongTranslate();
    }
}

void InputPresenter::onDeviceLost()
{
    const bool preListening = !mStatus.isRunning && isEngineRunning();
    if (!mVoiceKeyPressing && !mStatus.isListening && !mDoubleClickHold && !preListening) {
        return;
    }
    qCInfo(lcInput) << "the mouse went during a session: it ends as if the key were let go";
    // No release will come from a mouse that is gone, nor the second half of a gesture.
    mVoiceKeyPressing = false;
    isKeyRelease = true;
    mDoubleClickHold = false;
    mTimerCheckIsLongClick.stop();
    mTimerSingleKeyStop.stop();
    mInputView->setMuteVolume();
    mInputView->setMicStatus(false);
    if (mStatus.isRunning) {
        // The final already asked for still comes, is used, and closes the panels.
        stopListening(true, true);
        return;
    }
    if (preListening) {
        stopEngine();  // listening ahead of a gesture that will never come
        clearStatus();
    }
    if (!mInputView->isHiddenFocusView()) {
        mInputView->toHideFocusView();
    }
    if (!mInputView->isHiddenNoFocusView()) {
        mInputView->toHideNoFocusView();
    }
    if (!mInputView->isViewHidden()) {
        mInputView->toHide();
    }
}

void InputPresenter::endForQuit()
{
    for (QTimer* timer : {&mTimerMinListen, &mTimerCheckIsLongClick, &mTimerUpdateVolume,
                          &mTimerRecogningAnimation, &mTimerCloseTranslateView, &mTimerSyncDeviceVolume,
                          &mTimerDelayHide, &mTimerClipboardPoll, &mTimerSingleKeyStop}) {
        timer->stop();
    }
    if (mStatus.isRunning || isEngineRunning()) {
        qCInfo(lcInput) << "quitting: the session ends where it stands";
        stopEngine();
    }
    // What is typed stays as it was typed; no rewrite starts now and segments still waiting
    // for their conversion are dropped: keys sent while the program goes could land anywhere.
    mSegments.clear();
    mStatus = InputStatus();
    ++mSession;
    mVoiceKeyPressing = false;
}

void InputPresenter::stopStatus()
{
    mInputView->setMuteVolume();
    if (mStatus.isRunning) {
        // isRunning stays, so that a final result can still finish the session.
        mTimerMinListen.stop();
        stopEngine();
        mStatus.isListening = false;
        mStatus.isRecogning = false;
    }
}

bool InputPresenter::isPickerOpen()
{
    return !mInputView->isHiddenChangeSearchLanguageView() || !mInputView->isHiddenChangeTranLanguageView() ||
           !mInputView->isHiddenChangeTranMoreLanguageView();
}

// ---- keys and gestures

void InputPresenter::onKeyEvent(int key, int status)
{
    if (!mDeviceManager->isReady() || (key != 5 && key != 6)) {
        return;
    }
    mKey = key;
    if (status != 0) {
        mInputView->hideMainWindows();
        isKeyRelease = false;
        mHasVoice = false;
        mVoiceKeyPressing = true;
        if (!isSingleKeyMouse()) {
            if (key == 5) {
                startVoiceCommand();
            } else if (isVoiceTranslateMode()) {
                startTranslate();
            } else {
                startDictation();
            }
        } else {
            mTimerSingleKeyStop.stop();
            if (mDoubleClickHold) {
                mTimerCloseTranslateView.stop();
                mTimerDelayHide.stop();
                return;
            }
            const bool translate = isVoiceTranslateMode();
            if (inCurrentEditUI()) {
                mInputView->setFoMicView(translate);
            } else {
                mInputView->setNoFoMicView(translate);
            }
            if (key == 6) {
                if (!mInputView->isViewHidden()) {
                    mInputView->toHide();
                }
                startSingleKeyMouseRec();
            }
        }
        mTimerCheckIsLongClick.start();
        return;
    }

    isKeyRelease = true;
    mVoiceKeyPressing = false;
    if (!isSingleKeyMouse()) {
        if (mTimerCheckIsLongClick.isActive()) {
            return;  // the verdict comes at its expiry
        }
        if (mUserPreferences.isClickMode != 0) {
            return;
        }
        if (isPickerOpen()) {
            stopStatus();
            return;
        }
        if (key == 5) {
            if (mStatus.isRunning && mStatus.type == VoiceCommand) {
                stopLongVoiceCommand();
            }
        } else if (isVoiceTranslateMode()) {
            if (mStatus.isRunning && mStatus.type == VoiceTranslate) {
                stopLongTranslate();
            }
        } else if (mStatus.isRunning && mStatus.type == Dictation) {
            stopLongDictation();
        }
        return;
    }
    if (!mDoubleClickHold) {
        if (!mInputView->isHiddenNoFocusView() && mInputView->getCurrentNoFocusViewStatus() == kMicPage) {
            mInputView->toHideNoFocusView();
            mTimerSingleKeyStop.start();
            return;
        }
        if (!mInputView->isHiddenFocusView() && mInputView->getCurrentFocusViewStatus() == kMicPage) {
            mInputView->toHideFocusView();
        }
    }
    mTimerSingleKeyStop.start();
}

void InputPresenter::onCheckIsLongClick()
{
    if (!isKeyRelease) {
        isSingleClick = false;
        isLongClick = true;
        return;
    }
    isSingleClick = true;
    isLongClick = false;
    if (isSingleKeyMouse()) {
        return;
    }
    // A panel under the pointer stays open through a short click.
    const auto closeSearchPanel = [this] {
        if (!mInputView->isViewHidden() && !mInputView->isOnMouseEnter()) {
            if (mStatus.isRunning) {
                stopLongVoiceCommand();
            }
            mInputView->toHide();
        }
    };
    closeSearchPanel();
    if (mUserPreferences.isClickMode != 0 && mDeviceManager->getDeviceType() != kBleDevice) {
        return;  // click mode: the session goes on with the key up
    }
    if (!mInputView->isHiddenFocusView() && !mInputView->isFocusOnMouseEnter()) {
        if (mStatus.isRunning) {
            stopLongOfType(mStatus.type);
        }
        mInputView->toHideFocusView();
    }
    if (!mInputView->isHiddenNoFocusView() && !mInputView->isNoFocusOnMouseEnter()) {
        if (mStatus.isRunning) {
            stopLongOfType(mStatus.type);
        }
        mInputView->toHideNoFocusView();
    }
    closeSearchPanel();
}

void InputPresenter::onClickListener(int key)
{
    Q_UNUSED(key)  // a short click says nothing that the key events do not
}

void InputPresenter::onLongClickListener(int key, int status)
{
    if (mUserPreferences.keyType == 0 || key != 6 || !mDeviceManager->isReady()) {
        return;
    }
    const bool translate = isVoiceTranslateMode();
    if (status == 1) {
        mVoiceKeyPressing = true;
        if (translate) {
            startTranslate();
            if (!mInputView->isHiddenFocusView()) {
                mInputView->initFoTranslateView();
            } else if (!mInputView->isHiddenNoFocusView()) {
                mInputView->initNoFoTranslateView(true);
            }
        } else {
            startDictation();
            if (!mInputView->isHiddenFocusView()) {
                mInputView->startFoDictationAnimation();
            } else if (!mInputView->isHiddenNoFocusView()) {
                mInputView->startNoFoDictationAnimation();
            }
        }
        return;
    }
    mVoiceKeyPressing = false;
    const int type = translate ? VoiceTranslate : Dictation;
    if (mStatus.isRunning && mStatus.type == type) {
        stopLongOfType(type);
    }
}

void InputPresenter::onDoubleClickListener(int key, int status)
{
    if (mUserPreferences.keyType == 0 || key != 6 || !mDeviceManager->isReady()) {
        return;
    }
    if (status == 1) {
        mVoiceKeyPressing = true;
        mDoubleClickHold = true;
        if (!mInputView->isHiddenFocusView()) {
            mInputView->forceFinishFoView();
            mInputView->toHideFocusView();
        }
        if (!mInputView->isHiddenNoFocusView()) {
            mInputView->forceFinishNoFoView();
            mInputView->toHideNoFocusView();
        }
        startVoiceCommand();
        return;
    }
    mVoiceKeyPressing = false;
    mDoubleClickHold = false;
    if (mStatus.isRunning && mStatus.type == VoiceCommand) {
        stopLongVoiceCommand();
    }
}

void InputPresenter::onSingleKeyStop()
{
    // A press too short for a gesture abandons its recognition.
    if (isEngineRunning()) {
        stopEngine();
        clearStatus();
    }
    mTimerCloseTranslateView.start();
}

void InputPresenter::onForceFinshView(int key, int status)
{
    if (status != 0 && (key == 1 || key == 2)) {
        mInputView->forceFinish();
        mTimerCloseTranslateView.stop();
    }
}

// ---- closing panels

void InputPresenter::startDelayHide()
{
    mTimerDelayHide.setInterval(mStatus.type == VoiceCommand ? kDelayHideCommandMs : kDelayHidePanelMs);
    mTimerDelayHide.start();
}

void InputPresenter::onDelayHide()
{
    if (mStatus.isListening) {
        return;
    }
    if (mStatus.type == VoiceCommand) {
        if (!mStatus.isRunning) {
            if (!mInputView->isOnMouseEnter()) {
                stopStatus();
                mInputView->toHide();
            } else {
                startCloseViewTimer();
            }
        }
        return;
    }
    stopStatus();
    if (!mInputView->isHiddenFocusView()) {
        if (!mInputView->isHiddenChangeTranLanguageView() ||
            !mInputView->isHiddenChangeTranMoreLanguageView()) {
            return;
        }
        const int page = mInputView->getCurrentFocusViewStatus();
        if (page == 1 && (mUserPreferences.isAutoSendMode == 0 || mInputView->isFoOnEditing())) {
            return;  // a result waits to be sent or edited
        }
        if (mInputView->isFoMouseEnter()) {
            mInputView->setMicStatus(false);
            mTimerCloseTranslateView.start();
            return;
        }
        if (page == kMicPage) {
            return;
        }
        mInputView->toHideFocusView();
    }
    if (!mInputView->isHiddenNoFocusView()) {
        if (!mInputView->isHiddenChangeTranLanguageView() ||
            !mInputView->isHiddenChangeTranMoreLanguageView()) {
            return;
        }
        const int page = mInputView->getCurrentNoFocusViewStatus();
        if (page == 1 && (mUserPreferences.isAutoSendMode == 0 || mInputView->isNoFoOnEditing())) {
            return;
        }
        if (!mInputView->isNoFoMouseEnter()) {
            if (page != kMicPage) {
                mInputView->toHideNoFocusView();
            }
            return;
        }
        mInputView->setMicStatus(false);
        mTimerCloseTranslateView.start();
    }
}

void InputPresenter::onCloseTranslateView()
{
    if (isPickerOpen() || mInputView->isFoMouseEnter() || mInputView->isNoFoMouseEnter()) {
        return;  // keeps ticking
    }
    if (mInputView->isFoOnEditing() || mInputView->isNoFoOnEditing()) {
        mTimerCloseTranslateView.stop();
        return;
    }
    if (mInputView->isViewHidden() && mInputView->isHiddenFocusView() && mInputView->isHiddenNoFocusView()) {
        mTimerCloseTranslateView.stop();
        return;
    }
    const bool holdMode = mUserPreferences.isClickMode == 0;
    if (!mInputView->isHiddenFocusView() && holdMode && !mInputView->isFoMouseEnter()) {
        mInputView->toHideFocusView();
        mTimerCloseTranslateView.stop();
    }
    if (!mInputView->isHiddenNoFocusView() && holdMode && !mInputView->isNoFoMouseEnter()) {
        mInputView->toHideNoFocusView();
        mTimerCloseTranslateView.stop();
    }
    if (!mInputView->isViewHidden() && !mInputView->isOnMouseEnter()) {
        mInputView->toHide();
        mTimerCloseTranslateView.stop();
    }
}

void InputPresenter::onRecogningAnimation()
{
    mAnimationDot = mAnimationDot >= 4 ? 1 : mAnimationDot + 1;
    mInputView->setContent(tr("正在识别中") + QString(mAnimationDot, QLatin1Char('.')));
}

// ---- volume

void InputPresenter::onRecVolume(int volume)
{
    volume = qBound(0, volume, 12);
    mStatus.volume = volume;
    if (volume >= 3 && !mHasVoice) {
        mHasVoice = true;
        if (!isSingleKeyMouse()) {
            const bool translate = isVoiceTranslateMode();
            if (!mInputView->isHiddenNoFocusView()) {
                translate ? mInputView->startNoFoTranslateAnimation()
                          : mInputView->startNoFoDictationAnimation();
            }
            if (!mInputView->isHiddenFocusView()) {
                translate ? mInputView->startFoTranslateAnimation() : mInputView->startFoDictationAnimation();
            }
        }
        if (!mInputView->isViewHidden()) {
            mInputView->startVoiceSearchAnimation();
            mTimerRecogningAnimation.start();
        }
    }
    if (volume >= 2) {
        mStatus.silentCount = 0;
    } else {
        ++mStatus.silentCount;
    }
    // Only a short click leaves the key up with nobody on a panel; silence then ends a
    // voice command.
    if (mStatus.silentCount >= kSilentReportsToStop && isSingleClick && !isLongClick &&
        !mInputView->isNoFoOnEditing() && !mInputView->isNoFoMouseEnter() && !mInputView->isFoMouseEnter() &&
        !mInputView->isOnMouseEnter()) {
        qCInfo(lcInput).noquote() << "静音2S退出...";
        if (mStatus.type == VoiceCommand) {
            mInputView->setMicStatus(false);
            stopVoiceCommand();
        }
        mStatus.silentCount = 0;
    }
}

void InputPresenter::onUpdateVolume()
{
    if (!mStatus.isRunning) {
        mTimerUpdateVolume.stop();  // back when the next session opens
        return;
    }
    if (!mStatus.isListening) {
        // Heard all it will: the bar drops once and the tick rests, also while a command
        // that was not understood stays on the strip.
        mStatus.volume = 0;
        mStatus.silentCount = 0;
        mTimerUpdateVolume.stop();
    }
    if (mStatus.type == VoiceCommand) {
        mInputView->changeVolume(mStatus.volume);
    }
}

void InputPresenter::resumeVolumeSync()
{
    if (mDeviceManager->isReady() && !mTimerSyncDeviceVolume.isActive()) {
        mTimerSyncDeviceVolume.start();
    }
}

void InputPresenter::onSyncDeviceVolume()
{
    if (!mDeviceManager->isReady()) {
        mTimerSyncDeviceVolume.stop();  // back at the next signalDeviceReady
        return;
    }
    const int dynamicVolume = mDynamicVolume;
    const int deviceVolume = mDeviceVolume;
    if (dynamicVolume > 0 && deviceVolume > 0) {
        if (dynamicVolume != deviceVolume) {
            mDeviceManager->setAudioVolume(dynamicVolume);
        } else {
            // In step, a tick would send nothing: it rests until either value changes.
            mTimerSyncDeviceVolume.stop();
        }
    } else {
        mDeviceManager->getAudioVolume();
    }
}

bool InputPresenter::foregroundTakesToolbar() const
{
    static const QStringList kNoToolbar = {
        QStringLiteral("XLMAIN"),  QStringLiteral("bosa_sdm_XL9"), QStringLiteral("Net UI Tool Window"),
        QStringLiteral("Flash12"), QStringLiteral("illustrator"),  QStringLiteral("Photoshop")};
    return !kNoToolbar.contains(WinUtils::getInstance()->getForegroundWindowName());
}
