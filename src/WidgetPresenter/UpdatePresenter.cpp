#include "WidgetPresenter/UpdatePresenter.h"

#include "Http/HttpManager.h"
#include "Platform/DesktopLauncher.h"
#include "Utils/Logging.h"
#include "WidgetPresenter/UpdateView.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QStandardPaths>
#include <QThread>
#include <QTimer>

UpdatePresenter::UpdatePresenter(UpdateView* view, HttpManager* http, AppLauncher* launcher, QObject* parent)
    : QObject(parent), mView(view), mHttpManager(http != nullptr ? http : HttpManager::getInstance())
{
    if (launcher == nullptr) {
        mOwnedLauncher = std::make_unique<DesktopLauncher>();
        launcher = mOwnedLauncher.get();
    }
    mLauncher = launcher;
    mQuit = [] {
        // The handler is a separate process; give it a moment before the event loop goes.
        QThread::msleep(kHandOverSleepMs);
        for (int i = 0; i < 10; ++i) {
            QCoreApplication::quit();
        }
    };
}

UpdatePresenter::~UpdatePresenter() = default;

QString UpdatePresenter::releaseText(const VersionInfo& vi)
{
    QString text = QStringLiteral("发现新版本:") + vi.version;
    const QStringList lines = vi.description.split(QLatin1Char('#'));
    for (const QString& line : lines) {
        text += QStringLiteral("\r\n") + line;
    }
    return text;
}

QString UpdatePresenter::installerPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::DownloadLocation) + QLatin1Char('/') +
           QLatin1String(kInstallerName);
}

bool UpdatePresenter::isDownloadedInstaller(const QString& path)
{
    const QFileInfo file(path);
    const QFileInfo expected(installerPath());
    if (file.isSymLink() || !file.isFile() || file.absoluteFilePath() != expected.absoluteFilePath()) {
        return false;
    }
    const QString downloads =
        QFileInfo(QStandardPaths::writableLocation(QStandardPaths::DownloadLocation)).canonicalFilePath();
    return !downloads.isEmpty() && file.canonicalFilePath() == downloads + QLatin1Char('/') + file.fileName();
}

void UpdatePresenter::toHide()
{
    mView->toHide();
}

bool UpdatePresenter::isHidden()
{
    return mView->isHidden();
}

void UpdatePresenter::toShow()
{
    mView->toShow();
}

void UpdatePresenter::onVersion(VersionInfo vi)
{
    mVersionInfo = vi;
    // A plain text comparison: any other text, older or of another case, counts as new.
    if (vi.version == QLatin1String(kAppVersion)) {
        mView->setNewestVersion(QStringLiteral("版本号：%1").arg(QLatin1String(kAppVersion)));
        mView->setStackedWidgetCurrentIndex(0);
        return;
    }
    mView->setStackedWidgetCurrentIndex(1);
    mView->setDiscoverNewestVersionInfo(releaseText(vi));
}

void UpdatePresenter::onButtonUpdate()
{
    mView->closeAppAutoRunView();
    onUpdate();
}

void UpdatePresenter::onButtonCancel()
{
    mHttpManager->cancelDownload();
}

void UpdatePresenter::onButtonOk()
{
    mView->toHide();
}

void UpdatePresenter::onButtonOnVerra()
{
    mView->toHide();
}

void UpdatePresenter::onUpdate()
{
    mView->setProgressBarValue(0);
    mView->setProgressBarMaximum(100);
    mView->setStackedWidgetCurrentIndex(2);
    const QString path = installerPath();
    if (QFile::exists(path)) {
        QFile::remove(path);
    }
    // A fresh account may have no Downloads folder yet.
    QDir().mkpath(QFileInfo(path).path());
    // Replies may outlive the presenter.
    QPointer<UpdatePresenter> self(this);
    mHttpManager->downloadApp(
        mVersionInfo.version, path,
        [this, self](int total, int received) {
            if (!self) {
                return;
            }
            mView->setProgressBarMaximum(total);
            mView->setProgressBarValue(received);
        },
        [this, self](bool ok, QString saved) {
            if (!self) {
                return;
            }
            if (!ok) {
                mView->setStackedWidgetCurrentIndex(1);
                return;
            }
            mView->toHide();
            mView->closeAppAutoRunView();
            QTimer::singleShot(kHandOverDelayMs, this, [this, saved] { handOver(saved); });
        },
        [this, self](QString url, QNetworkReply::NetworkError code) {
            if (!self) {
                return;
            }
            // A cancelled download ends here too: back to the offer, to try again.
            qCWarning(lcHttp).noquote() << "installer download failed:" << url << code;
            mView->setStackedWidgetCurrentIndex(1);
        });
}

void UpdatePresenter::handOver(const QString& path)
{
    if (!isDownloadedInstaller(path)) {
        qCWarning(lcHttp) << "not the downloaded installer, not handed over:" << path;
        mView->setStackedWidgetCurrentIndex(1);
        mView->toShow();
        return;
    }
    mLauncher->openLocalPath(path);
    mQuit();
}
