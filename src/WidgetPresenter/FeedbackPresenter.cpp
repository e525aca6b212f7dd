#include "WidgetPresenter/FeedbackPresenter.h"

#include "Http/HttpManager.h"
#include "Utils/Logging.h"
#include "Utils/TextUtils.h"
#include "WidgetPresenter/FeedbackView.h"
#include "WidgetPresenter/MessageBoxView.h"

#include <QTimer>

FeedbackPresenter::FeedbackPresenter(FeedbackView* view, MessageBoxView* messageBox, HttpManager* http,
                                     QObject* parent)
    : QObject(parent),
      mView(view),
      mTimerCountdown(new QTimer(this)),
      mMessageDialog(messageBox),
      mHttpManager(http != nullptr ? http : HttpManager::getInstance())
{
    mTimerCountdown->setInterval(1000);
    connect(mTimerCountdown, &QTimer::timeout, this, &FeedbackPresenter::onFeekbackResult);
    mMessageDialog->setSubmitHidden(true);
    mMessageDialog->setCancelHidden(true);
    mTimeout = [](QString message) { qCWarning(lcHttp).noquote() << "feedback timeout:" << message; };
    mError = [](QString message, QNetworkReply::NetworkError code) {
        qCWarning(lcHttp).noquote() << "feedback error:" << message << code;
    };
}

bool FeedbackPresenter::isHidden()
{
    return mView->isHidden();
}

void FeedbackPresenter::toShow()
{
    mView->toShow();
}

QString FeedbackPresenter::farewell() const
{
    return tr("感谢您的建议, 我们将尽快处理, 此界面%1秒后退出").arg(mCountdown);
}

void FeedbackPresenter::submit()
{
    const QString title = mView->getFeedbackEditTitleText();
    if (TextUtils::isEmpty(title)) {
        mView->setFeedbackEditTitlePlaceholderText(tr("不能为空!"));
        return;
    }
    const QString content = mView->getFeedbackEditContentPlainText();
    if (content.isEmpty()) {
        mView->setFeedbackEditContentPlaceholderText(tr("不能为空!"));
        return;
    }
    mView->setFeedbackEditTitlePlaceholderText(QString());
    mView->setFeedbackEditContentPlaceholderText(QString());
    mHttpManager->feedback(
        title, content, kRequestTimeoutMs, [](bool ok) { qCInfo(lcHttp) << (ok ? "反馈成功" : "数据异常"); },
        mTimeout, mError);
    // The thanks come at once, before any answer.
    mCountdown = kCountdown;
    mMessageDialog->setTitle(farewell());
    mMessageDialog->show();
    mTimerCountdown->start();
}

void FeedbackPresenter::cancel()
{
    mView->toClose();
}

void FeedbackPresenter::onFeekbackResult()
{
    --mCountdown;
    mMessageDialog->setTitle(farewell());
    if (mCountdown <= 0) {
        mTimerCountdown->stop();
        mMessageDialog->close();
        mView->clearText();
        mView->toClose();
    }
}
