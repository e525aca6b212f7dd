#pragma once

#include "WidgetPresenter/FocusFollowPanelPresenter.h"
#include "WidgetPresenter/FocusFollowPanelView.h"

#include <QDialog>
#include <QPointer>
#include <QTimer>

class QAction;
class QFrame;
class QLabel;
class QMenu;
class QParallelAnimationGroup;
class QPushButton;
class QStackedWidget;
class QTextEdit;
class SpeechSynthesisUtils;

// What the two voice panels share on screen: the dictation badge, the two translation boxes
// that grow with the text, the level display, the send-mode and context menus, copying,
// reading aloud, and the language labels that open the translation picker.
//
// A panel never takes the keyboard from the application the user dictates into: it is a tool
// window the window manager does not manage and that refuses the focus. The language pickers
// are handed in as plain windows (setLanguagePickers), so that the panel only places, shows and
// hides them and hears when the cursor enters or leaves them.
class FocusFollowPanel : public QDialog, public virtual FocusFollowPanelView {
    Q_OBJECT

public:
    struct ProgressBar {
        QLabel* label = nullptr;
        int value = 0;
    };
    static constexpr int kDictationWidth = 124;
    static constexpr int kDictationHeight = 131;
    static constexpr int kTranslateWidth = 360;
    static constexpr int kBoxStartHeight = 28;
    static constexpr int kCardTop = 16;  // above it the pointer arrow of the caret panel
    static constexpr int kWaitingHideMs = 1000;
    // The send row, below the top of the text frame.
    static constexpr int kSendButtonDy = 93;
    static constexpr int kSendModeDy = 100;
    static constexpr int kEditDelayMs = 500;

    ~FocusFollowPanel() override;

    // The translation pickers (ChangeTranLanguageDialog, ChangeTranMoreLanguageDialog); their
    // signalsMouseEnter() and signalsMouseLeave() drive this panel's picker timer.
    void setLanguagePickers(QWidget* picker, QWidget* morePicker);

    bool isOnMouseEnter() const { return mMouseOnPanel; }
    bool isOnEditing() const { return isEditState; }
    bool isPlaying() const;
    bool isMouseOnSetSendModeMenuView() const;
    bool isMouseOnTargetMenuView() const;
    void changeVoiceTranslateLang();
    void clearTranslateResult();
    // Speech that arrives while the user edits the source goes in at the cursor, and the
    // whole source is translated anew. A read-only box takes nothing.
    void insertVoiceTranslateOnEditingSourceText(QString text);

    // FocusFollowPanelView, the parts both panels do alike.
    void onUpdateVolume() override;
    void setDictationTextLanguageName(QString name) override;
    void setTranslateTextSourceLanguageName(QString name) override;
    void setTranslateTextTargetLanguageName(QString name) override;
    void setInitTranslateSrcLanguage(QString name) override;
    void setInitTranslateDstLanguage(QString name) override;
    bool IsHidden() override { return isHidden(); }
    void toWaitingHide() override;
    int getVolumeSample() override { return 40; }
    bool isVoiceTranslateTextNull() override;
    void clearText() override;
    int getCurrentViewStatus() override;
    void setMicStatus(bool on) override;
    void setTranslateStatus(int status) override;
    void changeMenuEnterStatus(int status) override;
    void changeMenuSpaceStatus(int status) override;
    void changeMenuAutoSendStatus(int status) override;
    void setCurrentIpId(int id) override;

    FocusFollowPanelPresenter* presenter() const { return mPanelPresenter; }
    QTextEdit* sourceBox() const { return mSourceBox; }
    QTextEdit* targetBox() const { return mTargetBox; }
    const QTimer& hoverTimer() const { return mHoverTimer; }
    const QTimer& pickerTimer() const { return mPickerTimer; }

signals:
    // The voice session is to stop listening (the strip's stopVoiceStatus()).
    void signalStopVoiceStatus();

public slots:
    void onRecVolume(int value);
    void textChange();
    void onShortMenu(QPoint point);
    void onTargetMenu(QPoint point);
    // The timers' expiries; tests call them instead of waiting.
    virtual void onHoverTick() = 0;
    virtual void onPickerTimeout() = 0;
    void onWaitingHideTimeout();
    // The service ended a piece; own: it was this panel's reading.
    void onReadingOver(bool own);
    virtual void onPickerMouseEnter();
    virtual void onPickerMouseLeave();
    void onEditTimeout();

protected:
    explicit FocusFollowPanel(QWidget* parent);
    // Builds the pages; called by the subclass once its presenter exists.
    void setupUi(FocusFollowPanelPresenter* presenter);

    void toShowPanel();
    // Runs the presenter's plan for a request to hide.
    void runHidePlan(const FocusFollowPanelPresenter::HidePlan& plan);
    void clearBoxes();
    void sendNow();
    void translateEditNow();
    // Ends an edit of the source; `send` hands the translation over at once.
    void onEditFinish(bool send);
    virtual void onEditFinishReadOnly() = 0;
    virtual void onLanguageLabelPress(QLabel* label) = 0;
    virtual void onLanguageLabelRelease(QLabel* label);
    virtual void onLanguageLabelEnter(QLabel* label);
    virtual void onLanguageLabelLeave(QLabel* label);
    virtual void onSourceBoxRelease() {}
    virtual QString levelImage(int page, int value) const = 0;
    virtual ProgressBar* barOfPage(int page) = 0;

    // The stepped level animation: at most 40 ms for a whole move.
    void changeVolume(ProgressBar* bar, int level, int page);
    void setCurrentIndex(int page);
    void layoutTranslatePage(int height, int frameHeight, bool sendRow);
    void setChangeTranslateView(int s, int t, int msPerPixel);
    QRect targetGeometry(QWidget* widget) const;
    bool pickerVisible() const;
    bool cursorOnPickers() const;
    void hidePickers();
    // Moves the translation picker, kept on the screen.
    void moveChangeTranLanguageDialog(int x, int y);
    void showPicker(int x, int y);
    void toggleReading();
    void stopReading();

    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    // The card's top edge in the panel; the caret panel leaves room for its arrow.
    virtual int cardTop() const { return kCardTop; }
    // Cuts the window to what it draws where nothing blends it.
    virtual void reshape();
    // Where the text boxes begin; the language labels and the mic sit above.
    virtual int frameTop() const = 0;
    // The mic-only page, wide or as small as the dictation badge.
    void layoutMicPage(bool wide, QPoint micAt);
    bool cursorOnPanel() const;

    FocusFollowPanelPresenter* mPanelPresenter = nullptr;
    QStackedWidget* mStack = nullptr;
    QWidget* mPages[4] = {};
    // Dictation page.
    QLabel* mDictationLanguage = nullptr;
    QLabel* mDictationMic = nullptr;
    QLabel* mWaitingImage = nullptr;
    // Translation pages: the result page and the page that waits for speech.
    QLabel* mSourceLanguage[2] = {};
    QLabel* mTargetLanguage[2] = {};
    QLabel* mTranslateMic[2] = {};
    QLabel* mHint = nullptr;
    QPushButton* mReadButton = nullptr;
    QPushButton* mEditButton = nullptr;
    QFrame* mTextFrame = nullptr;
    QFrame* mWaitingFrame = nullptr;
    QTextEdit* mSourceBox = nullptr;
    QFrame* mBoxLine = nullptr;
    QTextEdit* mTargetBox = nullptr;
    QPushButton* mSendButton = nullptr;
    QPushButton* mSendModeButton = nullptr;
    QFrame* mSendSeparator = nullptr;
    // Mic-only page.
    QLabel* mMicOnly = nullptr;
    QLabel* mMicOnlyBar = nullptr;

    ProgressBar mBars[3];
    QMenu* mSendModeMenu = nullptr;
    QAction* mEnterAction = nullptr;
    QAction* mSpaceAction = nullptr;
    QAction* mAutoSendAction = nullptr;
    QMenu* mRightClickMenu = nullptr;
    QAction* mSingleClickAction = nullptr;
    QAction* mDelSignAction = nullptr;
    QMenu* mTargetMenu = nullptr;
    QParallelAnimationGroup* mGrowth = nullptr;

    QPointer<QWidget> mPicker;
    QPointer<QWidget> mMorePicker;
    QTimer mHoverTimer;
    QTimer mPickerTimer;
    QTimer mWaitingHideTimer;
    QTimer mEditTimer;

    bool mMouseOnPanel = false;
    bool isEditState = false;
    bool mIsButtonSendPress = false;
    bool mEditByButton = false;
    bool mMicOn = true;

private:
    QAction* addCheckAction(QMenu* menu, const QString& text);
    void buildMenus();
    void buildDictationPage();
    void buildTranslatePages();
    void buildMicPage();
    void fillContextMenu(QMenu* menu);
    static void markAction(QAction* action, bool on);

    bool mTranslucent;
};
