#pragma once

#include <QString>

// The update dialog as its presenter sees it: page 0 up to date, 1 the offer, 2 downloading, 3
// a message (the check under way or failed, how to install by hand).
class UpdateView {
public:
    virtual ~UpdateView() = default;

    virtual void done0() = 0;
    virtual void done1() = 0;
    virtual void setStackedWidgetCurrentIndex(int index) = 0;
    virtual void setProgressBarValue(int value) = 0;
    virtual void setProgressBarMaximum(int maximum) = 0;
    virtual void toHide() = 0;
    virtual bool isHidden() = 0;
    virtual void toShow() = 0;
    virtual void setNewestVersion(QString text) = 0;
    virtual void setDiscoverNewestVersionInfo(QString text) = 0;
    virtual void closeAppAutoRunView() = 0;
    virtual void showMessage(QString text) = 0;
};
