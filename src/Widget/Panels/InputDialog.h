#pragma once

#include "Database/CommandWord.h"
#include "Http/BackendRecords.h"
#include "Utils/Singleton.h"
#include "WidgetPresenter/InputPresenter.h"
#include "WidgetPresenter/InputView.h"

#include <QDialog>
#include <QList>
#include <QParallelAnimationGroup>
#include <QRect>
#include <QTimer>

class ChangeSearchLanguageDialog;
class ChangeTranLanguageDialog;
class ChangeTranMoreLanguageDialog;
class FocusFollowDialog;
class NoFocusFollowDialog;
class PaddleWordsDialog;
class QFrame;
class QLabel;
class QLineEdit;
class QMenu;
class TextTranslateDialog;
class label;

// The voice strip at the bottom right of the screen (language, microphone level and the
// recognised text of a voice command or search), and the one view of the voice session logic:
// it owns InputPresenter and passes its calls on to the panel they concern. The strip floats:
// it never takes the keyboard from the application the user types into.
class InputDialog : public QDialog, public InputView, public Singleton<InputDialog> {
    Q_OBJECT

public:
    static constexpr int kWidth = 840;
    static constexpr int kHeight = 54;
    static constexpr int kBoxWidth = 280;
    static constexpr int kBoxMinWidth = 281;
    static constexpr int kBoxMaxWidth = 736;
    static constexpr int kWidthTickMs = 100;
    static constexpr int kPickerHideMs = 2000;
    static constexpr int kShowDelayMs = 30;

    // The level shown by a bar label, moved a step at a time.
    struct ProgressBar {
        QLabel* label = nullptr;
        int value = 0;
    };
    struct WidgetAnimation {
        QWidget* widget = nullptr;
        QRect target;
    };

    using Singleton<InputDialog>::getInstance;
    ~InputDialog() override;

    InputPresenter* presenter() const { return mPresenter; }
    void stopVoiceStatus();
    int getCurVolume();
    bool isMouseOnRightClickMenuView();
    void checkVoiceViewStatus();

    // Tests: what the strip shows.
    QString shownText() const;
    int barValue() const { return mBar.value; }
    QLabel* barLabel() const { return mBar.label; }
    QLineEdit* textBox() const { return mTextInputOut; }
    QFrame* frame() const { return mFrame; }
    QLabel* languageLabel() const;
    QString languageImage() const { return mLanguageImage; }
    QTimer* widthTimer() { return &mTimerWidth; }
    QTimer* pickerHideTimer() { return &mTimerPickerHide; }
    QMenu* contextMenu() const { return mMenu; }

    // InputView
    void toHide() override;
    void toShow() override;
    bool isViewHidden() override;
    void forceFinish() override;
    void changeVolume(int volume) override;
    void setContent(QString text) override;
    void setVoiceSearchViewStyle(int style) override;
    void setTRContent(bool show, QString source, QString target) override;
    void clearContent() override;
    int getVolumeSample() override;
    void setTextLanguageText(QString name) override;
    void setInitVoiceSearchView() override;
    void startVoiceSearchAnimation() override;
    void toHideImageSpeak() override;
    void setMuteVolume() override;
    void showFace(int face) override;
    bool isOnMouseEnter() override;
    int getCurrentFocusViewStatus() override;
    bool isHiddenFocusView() override;
    void toHideFocusView() override;
    void initFoDictationView() override;
    void startFoDictationAnimation() override;
    void initFoTranslateView() override;
    void startFoTranslateAnimation() override;
    int getCurrentFoViewHeight() override;
    bool isFoOnEditing() override;
    bool isFoMouseEnter() override;
    bool isFoPlaying() override;
    void clearFoTranslateResult() override;
    void setFoMicView(bool translate) override;
    void forceFinishFoView() override;
    int getCurrentNoFocusViewStatus() override;
    bool isHiddenNoFocusView() override;
    void toHideNoFocusView() override;
    void initNoFoDictationView() override;
    void startNoFoDictationAnimation() override;
    void initNoFoTranslateView(bool keepText) override;
    void startNoFoTranslateAnimation() override;
    void changNoFoView(int page) override;
    bool isNoFoOnEditing() override;
    bool isNoFoMouseEnter() override;
    bool isNoFoPlaying() override;
    void clearNoFoTranslateResult() override;
    void setNoFoMicView(bool translate) override;
    void forceFinishNoFoView() override;
    void toShowTextTranslateView() override;
    bool isHiddenTextTranslateView() override;
    QString getTextTranslateSourceText() override;
    void setTextTranslateSourceText(QString text) override;
    void setTextTranslateTargetText(QString text) override;
    void setVoiceTranslateSourceText(QString text) override;
    void setVoiceTranslateTargetText(QString text) override;
    void insertVoiceTranslateOnEditingSourceText(QString text) override;
    bool isVoiceTranslateTextNull() override;
    void clearTranslateContent() override;
    void setDeviceEnable(bool enable) override;
    void toShowPaddleWordsView() override;
    bool isHiddenPaddleWordsView() override;
    void toHiddenPaddleWordsView() override;
    bool isShowPaddlewordsView() override;
    bool isPaddleWords() override;
    void clearPaddleWordsStatus() override;
    void setReviseSignViewText(int x, int y, QString text) override;
    bool isHiddenChangeSearchLanguageView() override;
    bool isHiddenChangeTranLanguageView() override;
    bool isHiddenChangeTranMoreLanguageView() override;
    bool isFocusOnMouseEnter() override;
    bool isNoFocusOnMouseEnter() override;
    void setMicStatus(bool on) override;
    void hideCommandWidget() override;
    void showMainView(int page) override;
    void showExplain() override;
    void hideMainWindows() override;

signals:
    void signalIntoMainWindow();

public slots:
    void onLocalIpId(int id);
    void onGetUserCommandWord(QList<CommandWord> words);
    void onGetDirectUIs(QList<DirectUI> directUIs);
    void onTextChange();
    void onShortMenu(QPoint point);
    void onMouseEnterMainwindow();
    void onMouseLeaveMainwindow();
    void onChangeTranLanguage(int src, int dst);
    // The width timer's tick: the box follows the text's width.
    void onTimerWidth();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    friend class Singleton<InputDialog>;
    // Tests hand in the presenter's collaborators; the process-wide ones otherwise.
    explicit InputDialog(QWidget* parent = nullptr,
                         const InputPresenter::Collaborators* collaborators = nullptr);

    void setupUi();
    void createMenu();
    // The panels' signals to the presenter and to this strip.
    void connectPanels();
    void resetBoxes();
    void reshape();
    void placeOnScreen();
    void animation(const QList<WidgetAnimation>& list, int duration);
    void changeVolume(ProgressBar* bar, int level);
    // Over a panel or a picker, or one of their menus: a click there is no click outside.
    bool isCursorOnAnyView() const;
    // The hover and normal looks of the language frame.
    void setFrameHover(bool hover);
    void onLanguagePress();

    InputPresenter* mPresenter = nullptr;
    FocusFollowDialog* mFo = nullptr;
    NoFocusFollowDialog* mNoFo = nullptr;
    TextTranslateDialog* mTextTranslate = nullptr;
    PaddleWordsDialog* mPaddleWords = nullptr;
    ChangeSearchLanguageDialog* mSearchLanguage = nullptr;
    ChangeTranLanguageDialog* mTranLanguage = nullptr;
    ChangeTranMoreLanguageDialog* mTranMoreLanguage = nullptr;

    QFrame* mFrame = nullptr;
    ProgressBar mBar;
    QLabel* mMicLabel = nullptr;
    label* mLabelChangeLanguage = nullptr;
    QLineEdit* mTextInputOut = nullptr;
    QLabel* mSpeak = nullptr;
    QLabel* mFace = nullptr;
    QMenu* mMenu = nullptr;
    QString mContent;
    QString mLanguageImage;
    int mStyle = 0;
    bool mTranslucent = false;
    QParallelAnimationGroup mAnimationGroup;
    QTimer mTimerPickerHide;
    QTimer mTimerWidth;
    bool mMouseInside = false;
    bool mMouseOnMainWindow = false;
};
