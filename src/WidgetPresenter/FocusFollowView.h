#pragma once

#include "WidgetPresenter/FocusFollowPanelView.h"

// The panel that stands beside the text caret and follows it.
class FocusFollowView : public virtual FocusFollowPanelView {
public:
    virtual void toShow() = 0;
    virtual void setCurrentStackedWidgetIndex(int index) = 0;
    virtual void moveWindow() = 0;
    virtual void setInitTranslateView() = 0;
};
