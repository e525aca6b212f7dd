#pragma once

#include "Http/BaiduTranslateMessage.h"
#include "Utils/UserPreferences.h"
#include "WidgetPresenter/FocusFollowPanelView.h"

#include <QObject>
#include <QPoint>
#include <QRect>
#include <QSize>
#include <QString>
#include <QStringList>
#include <QTimer>

class BaiduSpeech;
class HttpManager;
class IFlyWebSpeech;
class ReadAloud;
class SpeechSynthesisUtils;

// The rules both voice panels share: the settings they read and write, the level, the
// debounced translation of the spoken source and the delivery of the result into the
// foreground application, and what a request to hide leads to.
class FocusFollowPanelPresenter : public QObject {
    Q_OBJECT

public:
    enum Page { DictationPage = 0, ResultPage = 1, WaitingPage = 2, MicPage = 3 };
    static constexpr int kMaxLevel = 12;
    static constexpr int kTranslateDelayMs = 1000;
    static constexpr int kMaxBoxHeight = 134;
    static constexpr int kReadingPieceChars = 1024;

    // Process-wide instances by default; tests hand in their own (not owned). Null recognisers
    // simply feed no level.
    struct Collaborators {
        HttpManager* http = nullptr;
        BaiduSpeech* baidu = nullptr;
        IFlyWebSpeech* ifly = nullptr;
        // Null: the process-wide one, reached when the panel first reads.
        SpeechSynthesisUtils* synthesis = nullptr;
    };

    // What the panel does on a request to hide, decided from its state and the translation's.
    struct HidePlan {
        bool stay = false;         // nothing more: a reading or an unfinished translation holds it
        bool hideWindow = false;   // the window goes out of sight
        bool deliver = false;      // outputResult()
        bool waitingHide = false;  // toWaitingHide() decides later
        bool clearEdit = false;    // the edit state ends
        bool clear = false;        // boxes and result are emptied
    };

    FocusFollowPanelPresenter(FocusFollowPanelView* view, const Collaborators& collaborators,
                              QObject* parent = nullptr);

    int getVolume() const { return mLevel; }
    // The panel's reading of its translation.
    ReadAloud* reading() const { return mReading; }
    virtual void translate(QString text);
    // The request for text goes out at once, without the debounce.
    void translateNow(const QString& text);
    void outputResult();
    bool isTranslateFinish() const { return mTranslateFinish; }
    void setTranslateFinish(bool finish) { mTranslateFinish = finish; }
    bool isAutoSendMode() const { return mPreferences.isAutoSendMode != 0; }
    bool isEnterKeySend() const { return mPreferences.isEnterSend != 0; }
    bool isSpaceKeySend() const { return mPreferences.isSpaceSend != 0; }
    bool isDelSign() const { return mPreferences.isDelAllSign != 0; }
    bool isSupSingleClick() const { return mPreferences.isClickMode != 0; }
    bool isSingleKeyMouse() const { return mPreferences.keyType == 1; }
    // Reading aloud is offered for the Chinese, Cantonese and English targets only.
    bool isSupportFollowSpeak() const;
    void setEnterMode(int mode);
    void setSpaceMode(int mode);
    void setAutoSendMode(int mode);
    void setDelSign(int sign);
    void setSupSingleClick(int click);
    void setAudioEnable(bool enable);
    void selectAllAndCopy();
    void copyContent();
    void setCurrentIpId(int id) { mCurrentIpId = id; }
    void clearTranslateResult();
    void setWaitingToHideStatus(bool waiting) { mWaitingToHide = waiting; }
    bool isWaitingToHide() const { return mWaitingToHide; }
    bool isVoiceTranslateMode() const;

    QString sourceText() const { return mSourceText; }
    QString translateResult() const { return mTranslateResult; }
    const UserPreferences& preferences() const { return mPreferences; }
    const QTimer& translateTimer() const { return mTranslateTimer; }

    virtual HidePlan planHide(bool playing, int page, bool editing, bool sendPressed) = 0;

    // The heights the two boxes take for documents of heights s and t; false when they keep
    // their size (one of the documents is exactly at the limit, or nothing changes).
    static bool boxHeights(int s, int t, int currentS, int currentT, int* newS, int* newT);
    // The text handed to the synthesis: line breaks and the characters it reads out removed.
    static QString readableText(QString text);
    static QStringList readingPieces(const QString& text);

public slots:
    void onChangePreferences(UserPreferences preferences);
    void onRecVolume(int value);
    void onUpdateVolume();
    // The panel came up: its level display runs again.
    void onViewShown();
    bool isLevelTimerActive() const { return mLevelTimer.isActive(); }
    // The debounce's expiry: the request goes out.
    void onTranslateTimeout();

protected:
    // A second request for the traditional script, for these target rows.
    virtual bool needsTraditional(int targetRow) const = 0;
    virtual void onTranslateFailure() = 0;
    void startTranslateTimer() { mTranslateTimer.start(); }
    void storeSource(const QString& text);
    // What both panels do first on a request to hide: a reading holds the panel, and a
    // translation still out makes it wait (out of sight once sent). True when that settles it.
    bool holdForHide(bool playing, int page, bool sendPressed, HidePlan* plan);

    FocusFollowPanelView* mPanelView;
    UserPreferences mPreferences;

private:
    void onTranslateResult(bool ok, const BaiduTranslateMessage& message);
    void translateFailed();
    void requestTraditional(const QString& simplified);
    // The translation has its answer (or its failure): the panel may close.
    void settleTranslation();
    QString sourceLanguage() const;

    HttpManager* mHttp;
    ReadAloud* mReading;
    int mLevel = 0;
    QString mSourceText;
    QString mTranslateResult;
    bool mTranslateFinish = true;
    bool mWaitingToHide = false;
    int mCurrentIpId = 0;
    QTimer mLevelTimer;
    QTimer mTranslateTimer;
};
