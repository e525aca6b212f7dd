#include "WidgetPresenter/NoFocusFollowPresenter.h"

#include "BaiduSpeech/BaiduSpeech.h"
#include "Http/HttpManager.h"
#include "IFlySpeech/IFlyWebSpeech.h"
#include "Utils/LanguageTables.h"

NoFocusFollowPresenter::NoFocusFollowPresenter(NoFocusFollowView* view, QObject* parent)
    : NoFocusFollowPresenter(
          view,
          Collaborators{HttpManager::getInstance(), BaiduSpeech::getInstance(), IFlyWebSpeech::getInstance()},
          parent)
{
}

NoFocusFollowPresenter::NoFocusFollowPresenter(NoFocusFollowView* view, const Collaborators& collaborators,
                                               QObject* parent)
    : FocusFollowPanelPresenter(view, collaborators, parent), mView(view)
{
}

void NoFocusFollowPresenter::translate(QString text)
{
    if (text.isEmpty()) {
        return;
    }
    storeSource(text);
    startTranslateTimer();
    mView->setTranslateStatus(1);
}

bool NoFocusFollowPresenter::needsTraditional(int targetRow) const
{
    return QString::fromUtf8(kTranslateLanguages[targetRow].name).contains(QStringLiteral("繁体"));
}

void NoFocusFollowPresenter::onTranslateFailure()
{
    if (!mView->IsHidden()) {
        mView->setTranslateStatus(2);
    }
}

FocusFollowPanelPresenter::HidePlan NoFocusFollowPresenter::planHide(bool playing, int page, bool editing,
                                                                     bool sendPressed)
{
    HidePlan plan;
    if (holdForHide(playing, page, sendPressed, &plan)) {
        return plan;
    }
    // In single-click mode a finished translation stays up until it is sent or times out.
    const bool singleClickWait = isSupSingleClick() && !sendPressed;
    plan.hideWindow = page != ResultPage || !singleClickWait;
    if ((!editing && isAutoSendMode()) || sendPressed || isSupSingleClick()) {
        if (singleClickWait) {
            plan.waitingHide = true;
            return plan;
        }
        plan.deliver = true;
    }
    plan.clearEdit = true;
    plan.clear = true;
    return plan;
}
