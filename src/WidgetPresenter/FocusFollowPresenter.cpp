#include "WidgetPresenter/FocusFollowPresenter.h"

#include "BaiduSpeech/BaiduSpeech.h"
#include "Http/HttpManager.h"
#include "IFlySpeech/IFlyWebSpeech.h"
#include "Platform/WinUtils.h"

FocusFollowPresenter::FocusFollowPresenter(FocusFollowView* view, QObject* parent)
    : FocusFollowPresenter(
          view,
          Collaborators{HttpManager::getInstance(), BaiduSpeech::getInstance(), IFlyWebSpeech::getInstance()},
          parent)
{
}

FocusFollowPresenter::FocusFollowPresenter(FocusFollowView* view, const Collaborators& collaborators,
                                           QObject* parent)
    : FocusFollowPanelPresenter(view, collaborators, parent), mView(view)
{
    mMoveTimer.setInterval(kMoveIntervalMs);
    connect(&mMoveTimer, &QTimer::timeout, this, &FocusFollowPresenter::onMoveTimeout);
}

bool FocusFollowPresenter::isHidden()
{
    return mView->IsHidden();
}

void FocusFollowPresenter::toHide()
{
    mView->toHide();
}

void FocusFollowPresenter::startMoveWindow()
{
    mMoveTimer.start();
}

void FocusFollowPresenter::stopMoveWindow()
{
    mMoveTimer.stop();
}

void FocusFollowPresenter::onMoveTimeout()
{
    if (!mView->IsHidden()) {
        mView->moveWindow();
    }
}

void FocusFollowPresenter::onTranslateFailure()
{
    mView->setTranslateStatus(mView->IsHidden() ? 0 : 2);
}

FocusFollowPanelPresenter::HidePlan FocusFollowPresenter::planHide(bool playing, int page, bool editing,
                                                                   bool sendPressed)
{
    HidePlan plan;
    if (holdForHide(playing, page, sendPressed, &plan)) {
        return plan;
    }
    plan.hideWindow = true;
    plan.deliver = page == ResultPage && ((!editing && isAutoSendMode()) || sendPressed);
    plan.clearEdit = true;
    plan.clear = true;
    return plan;
}

FocusFollowPresenter::Placement FocusFollowPresenter::placeAtCaret(QSize panel, int arrowWidth, int page)
{
    WinUtils* desktop = WinUtils::getInstance();
    return place(desktop->getPosition1(), desktop->getScreen(), panel, arrowWidth, page);
}

FocusFollowPresenter::Placement FocusFollowPresenter::place(QPoint p, const QRect& screen, QSize panel,
                                                            int arrowWidth, int page)
{
    Placement placement;
    if (p.x() == 0 || p.y() == 0) {
        return placement;
    }
    placement.move = true;
    const int a = arrowWidth;
    const int w = panel.width();
    const int h = panel.height();
    const int sw = screen.width();
    const int sh = screen.height();
    const bool wide = page == ResultPage || page == WaitingPage;
    // The arrow's own offset: half its width on the wide pages, all of it on the badge.
    const int reach = wide ? a / 2 : a;
    int x = 0;
    int arrowX = 0;
    if (p.x() < a / 2) {
        x = 2;
        arrowX = 2;
    } else if (p.x() < w / 2) {
        x = 2;
        arrowX = p.x() - reach;
    } else if (p.x() < sw - w / 2) {
        x = p.x() - w / 2;
        arrowX = wide ? 162 : 51;
    } else if (p.x() <= sw - a / 2) {
        x = sw - w;
        arrowX = w - (sw - p.x() + reach);
    } else if (p.x() <= sw) {
        x = sw - w - 2;
        arrowX = w - (sw - p.x() + reach) - 10;
    } else {
        x = sw - w - 2;
        arrowX = wide ? 320 : 95;
    }
    int y = 2;
    placement.arrowVisible = page != MicPage;
    if (p.y() > 0 && p.y() >= sh - h) {
        // Too close to the bottom to hang below the caret: the corner, without a pointer.
        y = sh - h - 2;
        x = sw - w - 2;
        placement.arrowVisible = false;
    } else if (p.y() > 0) {
        y = p.y();
    }
    placement.panel = QPoint(x, y);
    placement.arrowX = arrowX;
    return placement;
}
