#pragma once

#include "WidgetPresenter/FocusFollowPanelPresenter.h"
#include "WidgetPresenter/FocusFollowView.h"

// The presenter of the panel beside the caret: the shared rules plus following the caret.
class FocusFollowPresenter : public FocusFollowPanelPresenter {
    Q_OBJECT

public:
    static constexpr int kMoveIntervalMs = 100;

    // Where the panel and its pointer arrow go for a caret at p.
    struct Placement {
        bool move = false;  // false: a caret at 0 leaves everything where it is
        QPoint panel;
        int arrowX = 0;
        bool arrowVisible = true;
    };

    explicit FocusFollowPresenter(FocusFollowView* view, QObject* parent = nullptr);
    FocusFollowPresenter(FocusFollowView* view, const Collaborators& collaborators,
                         QObject* parent = nullptr);

    bool isHidden();
    void toHide();
    void startMoveWindow();
    void stopMoveWindow();
    const QTimer& moveTimer() const { return mMoveTimer; }

    HidePlan planHide(bool playing, int page, bool editing, bool sendPressed) override;

    // page: the stacked widget's page; arrowWidth 0 for a page without arrow.
    static Placement place(QPoint p, const QRect& screen, QSize panel, int arrowWidth, int page);
    // The same at the caret the desktop reports now.
    static Placement placeAtCaret(QSize panel, int arrowWidth, int page);

public slots:
    void onMoveTimeout();

protected:
    bool needsTraditional(int targetRow) const override { return targetRow == 3; }
    void onTranslateFailure() override;

private:
    FocusFollowView* mView;
    QTimer mMoveTimer;
};
