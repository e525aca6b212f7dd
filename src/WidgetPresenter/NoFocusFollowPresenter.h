#pragma once

#include "WidgetPresenter/FocusFollowPanelPresenter.h"
#include "WidgetPresenter/NoFocusFollowView.h"

// The presenter of the panel at a fixed place. Differs in the order of the translation hint,
// the wider rule for the traditional script, silence on a hidden panel's failures, and
// single-click mode on hiding.
class NoFocusFollowPresenter : public FocusFollowPanelPresenter {
    Q_OBJECT

public:
    explicit NoFocusFollowPresenter(NoFocusFollowView* view, QObject* parent = nullptr);
    NoFocusFollowPresenter(NoFocusFollowView* view, const Collaborators& collaborators,
                           QObject* parent = nullptr);

    void translate(QString text) override;
    HidePlan planHide(bool playing, int page, bool editing, bool sendPressed) override;

protected:
    bool needsTraditional(int targetRow) const override;
    void onTranslateFailure() override;

private:
    NoFocusFollowView* mView;
};
