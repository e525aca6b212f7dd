#include "WidgetPresenter/AppAutoRunPresenter.h"

#include "Platform/AppAutoRunUtils.h"

AppAutoRunPresenter::AppAutoRunPresenter(AppAutoRunView* view, AppAutoRunUtils* autoRun, QObject* parent)
    : QObject(parent), mView(view), mAutoRun(autoRun != nullptr ? autoRun : AppAutoRunUtils::getInstance())
{
}

void AppAutoRunPresenter::submit()
{
    if (mView->isCheckAppAutoRun()) {
        mAutoRun->setAppAutoRun(true);
        mView->finish(1);
        return;
    }
    mView->finish(0);
}
