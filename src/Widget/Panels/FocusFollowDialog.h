#pragma once

#include "Utils/Singleton.h"
#include "Widget/Panels/FocusFollowPanel.h"
#include "WidgetPresenter/FocusFollowPresenter.h"
#include "WidgetPresenter/FocusFollowView.h"

// The panel beside the text caret: a mic badge while dictating, the source and its
// translation while translating by voice. It follows the caret ten times a second and points
// at it with an arrow.
//
// It never takes the keyboard, with one exception: when the user asks to edit the spoken
// source (the edit button or a click into the source box), the panel takes the focus for the
// edit and hands it back to the window that had it when the edit ends, so that the result is
// typed where the user was.
class FocusFollowDialog : public FocusFollowPanel,
                          public FocusFollowView,
                          public Singleton<FocusFollowDialog> {
    Q_OBJECT

public:
    static constexpr int kWideArrowWidth = 36;
    static constexpr int kBadgeArrowWidth = 22;
    static constexpr int kArrowY = 7;
    static constexpr int kPickerDelayMs = 2000;

    explicit FocusFollowDialog(QWidget* parent = nullptr);
    // Tests hand in their own services (not owned).
    FocusFollowDialog(QWidget* parent, const FocusFollowPanelPresenter::Collaborators& collaborators,
                      SpeechSynthesisUtils* synthesis);
    ~FocusFollowDialog() override;

    void stopMoveWindow();
    bool isMouseOnClickRightMenuView() const;
    void forceFinishView() { mIsButtonSendPress = true; }
    FocusFollowPresenter* focusPresenter() const { return mPresenter; }
    QLabel* arrow() const { return mArrow; }

    // FocusFollowView
    void toShow() override;
    void toHide() override;
    void setCurrentStackedWidgetIndex(int index) override;
    void moveWindow() override;
    void setVoiceTranslateSourceText(QString text) override;
    void setVoiceTranslateTargetText(QString text) override;
    void setInitDictationView() override;
    void startDictationAnimation() override;
    void setInitTranslateView() override;
    void startTranslateAnimation() override;
    void showMicView(bool wide) override;
    virtual void setInitAutoSendModeTranslateView();
    virtual void setInitNoAutoSendModeTranslateView();

public slots:
    void onEditView();
    void onHoverTick() override;
    void onPickerTimeout() override;

protected:
    void onEditFinishReadOnly() override;
    void onLanguageLabelPress(QLabel* label) override;
    void onLanguageLabelRelease(QLabel* label) override;
    void onLanguageLabelLeave(QLabel* label) override;
    void onSourceBoxRelease() override { onEditView(); }
    QString levelImage(int page, int value) const override;
    ProgressBar* barOfPage(int page) override;
    int frameTop() const override { return 77; }
    void reshape() override;
    void hideEvent(QHideEvent* event) override;

private:
    void markMouse();
    void takeFocusForEdit();
    void giveFocusBack();

    FocusFollowPresenter* mPresenter;
    QLabel* mArrow = nullptr;
    quint32 mFocusBeforeEdit = 0;
};
