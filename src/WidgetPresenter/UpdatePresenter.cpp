#include "WidgetPresenter/UpdatePresenter.h"

#include "Http/HttpManager.h"
#include "Platform/DesktopLauncher.h"
#include "Utils/Logging.h"
#include "WidgetPresenter/UpdateView.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QProcess>
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
    QString text = tr("发现新版本:") + vi.version;
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
        mView->setNewestVersion(tr("版本号：%1").arg(QLatin1String(kAppVersion)));
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

QString UpdatePresenter::sha256Of(const QString& path)
{
    QFile file(path);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    if (!file.open(QIODevice::ReadOnly) || !hash.addData(&file)) {
        return QString();
    }
    return QString::fromLatin1(hash.result().toHex());
}

void UpdatePresenter::handOver(const QString& path)
{
    if (!isDownloadedInstaller(path)) {
        qCWarning(lcHttp) << "not the downloaded installer, not handed over:" << path;
        mView->setStackedWidgetCurrentIndex(1);
        mView->toShow();
        return;
    }
    const QString expected = mVersionInfo.sha256.trimmed().toLower();
    if (!expected.isEmpty() && sha256Of(path) != expected) {
        qCWarning(lcHttp) << "the downloaded package does not match its checksum; removed";
        QFile::remove(path);
        mView->showMessage(tr("下载的更新包已损坏，请稍后重试。"));
        mView->toShow();
        return;
    }
    const PackageInstaller::Command command = mInstaller(path);
    if (command.arguments.isEmpty()) {
        installByHand(path);
        return;
    }
    if (!command.waitForIt) {
        // A graphical installer takes over: once it runs, this program steps aside for it.
        if (QProcess::startDetached(command.arguments.first(), command.arguments.mid(1))) {
            qCInfo(lcHttp) << "update handed to" << command.arguments.first();
            mQuit();
        } else {
            installByHand(path);
        }
        return;
    }
    // apt behind the password prompt: quit once the package is in, else say how to do it.
    auto* install = new QProcess(this);
    install->setProcessChannelMode(QProcess::ForwardedChannels);
    connect(install, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this,
            [this, install, path](int code, QProcess::ExitStatus status) {
                install->deleteLater();
                if (status == QProcess::NormalExit && code == 0) {
                    qCInfo(lcHttp) << "update installed";
                    mQuit();
                } else {
                    qCWarning(lcHttp) << "the package installer ended with" << code;
                    installByHand(path);
                }
            });
    connect(install, &QProcess::errorOccurred, this, [this, install, path](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) {
            install->deleteLater();
            installByHand(path);
        }
    });
    qCInfo(lcHttp) << "update handed to" << command.arguments.mid(0, 2);
    install->start(command.arguments.first(), command.arguments.mid(1));
}

void UpdatePresenter::installByHand(const QString& path)
{
    mLauncher->openLocalPath(QFileInfo(path).absolutePath());
    mView->showMessage(tr("更新包已下载到 %1。\n请在终端中输入以下命令安装：\n%2")
                           .arg(path, PackageInstaller::manualCommand(path)));
    mView->toShow();
}
