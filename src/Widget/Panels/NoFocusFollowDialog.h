#pragma once

#include "Utils/Singleton.h"
#include "Widget/Panels/FocusFollowPanel.h"
#include "WidgetPresenter/NoFocusFollowPresenter.h"
#include "WidgetPresenter/NoFocusFollowView.h"

// The panel for windows without a caret: it stands at the bottom right, or wherever the
// user dragged it, and carries dictation and voice translation like the caret panel. Its
// source box is never editable, so it never needs the keyboard.
class NoFocusFollowDialog : public FocusFollowPanel,
                            public NoFocusFollowView,
                            public Singleton<NoFocusFollowDialog> {
    Q_OBJECT

public:
    static constexpr int kPageShift = 7;
    static constexpr int kPickerTickMs = 100;
    static constexpr int kPickerHideMs = 2000;

    explicit NoFocusFollowDialog(QWidget* parent = nullptr);
    // Tests hand in their own services (not owned).
    NoFocusFollowDialog(QWidget* parent, const FocusFollowPanelPresenter::Collaborators& collaborators,
                        SpeechSynthesisUtils* synthesis);
    ~NoFocusFollowDialog() override;

    void toShow();
    // The cursor on the visible panel, now.
    bool isOnMouseEnter() const;
    bool isMouseOnRightClickMenuView() const;
    // Narrower: the language frame, a text box, or the waiting page's frame and mic.
    bool isMouseOnView() const;
    void forceFinishView();
    NoFocusFollowPresenter* noFocusPresenter() const { return mPresenter; }
    int pickerCounter() const { return mPickerCounter; }

    // NoFocusFollowView
    void toHide() override;
    void setVoiceTranslateSourceText(QString text) override;
    void setVoiceTranslateTargetText(QString text) override;
    void setInitDictationView() override;
    void startDictationAnimation() override;
    void setInitTranslateView(bool direct) override;
    void startTranslateAnimation() override;
    void changeView(int page) override;
    void hideMainWindows() override;
    void showMicView(bool wide) override;
    virtual void setInitAutoSendModeTranslateView();
    virtual void setInitNoAutoSendModeTranslateView();

signals:
    void signalsShowChangeTranLanguageView();
    // The console is to be minimised.
    void signalHideMainWindows();
    // The picker closed by its own timer: the session may close its panels now.
    void signalCheckVoiceViewStatus();

public slots:
    void onEditView() {}
    void onSetSendModeMenu(QPoint point);
    void onShowMenu();
    void onHoverTick() override;
    void onPickerTimeout() override;
    // The cursor test of the picker timer covers the pickers; their own signals add nothing.
    void onPickerMouseEnter() override {}
    void onPickerMouseLeave() override {}

protected:
    void onEditFinishReadOnly() override {}
    void onLanguageLabelPress(QLabel* label) override;
    QString levelImage(int page, int value) const override;
    ProgressBar* barOfPage(int page) override;
    int frameTop() const override { return 60; }
    int cardTop() const override { return 0; }
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void onPageChanged(int page);
    void showTranslatePicker(int x, int y);

    NoFocusFollowPresenter* mPresenter;
    int mLastPage = 0;
    int mPickerCounter = 0;
    bool mDragging = false;
    QPoint mDragFrom;
    QString mLastSourceText;
};
