#pragma once

#include "WidgetPresenter/FocusFollowPanelView.h"

// The panel for windows without a caret: it stands where the user last dragged it.
class NoFocusFollowView : public virtual FocusFollowPanelView {
public:
    // direct: straight to the result page, as when the text is already there.
    virtual void setInitTranslateView(bool direct) = 0;
    virtual void changeView(int page) = 0;
    virtual void hideMainWindows() = 0;
};
