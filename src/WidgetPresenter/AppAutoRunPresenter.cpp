#include "WidgetPresenter/AppAutoRunPresenter.h"

#include "Platform/AppAutoRunUtils.h"

#include <QCoreApplication>
#include <QFileInfo>

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
    AppAutoRunUtils::declineQuestion();
    mView->finish(0);
}

QString AppAutoRunPresenter::loginNote() const
{
    const QString running = QCoreApplication::applicationFilePath();
    const QString installed = AppAutoRunUtils::installedProgram();
    if (installed.isEmpty()) {
        return tr("Zorvane 尚未安装：登录时将直接启动 %1。").arg(running);
    }
    if (QFileInfo(installed).canonicalFilePath() != QFileInfo(running).canonicalFilePath()) {
        return tr("登录时启动的是已安装的 %1，不是正在运行的这一个。").arg(installed);
    }
    return QString();
}
