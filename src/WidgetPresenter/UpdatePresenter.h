#pragma once

#include "Http/BackendRecords.h"
#include "Platform/PackageInstaller.h"
#include "Utils/AppVersion.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>

class AppLauncher;
class HttpManager;
class UpdateView;

// Offers a version the backend publishes, downloads its package into the Downloads folder with
// a progress bar, checks it, hands it to the system's package installer and quits once that has
// taken it. Without an installer it opens the folder and says how to install by hand.
class UpdatePresenter : public QObject {
    Q_OBJECT

public:
    // The backend serves the Debian package on this platform.
    static constexpr char kInstallerName[] = "zorvane-update.deb";
    static constexpr int kHandOverDelayMs = 1000;
    static constexpr int kHandOverSleepMs = 2000;

    // launcher and http may be null for the process-wide ones; not owned.
    UpdatePresenter(UpdateView* view, HttpManager* http = nullptr, AppLauncher* launcher = nullptr,
                    QObject* parent = nullptr);
    ~UpdatePresenter() override;

    // "发现新版本:" and the version, then each "#"-separated part of the description on a line.
    static QString releaseText(const VersionInfo& vi);
    static QString installerPath();
    // The file the download left at installerPath(): a regular file in the Downloads folder,
    // reached by no symbolic link. Nothing else is handed to the desktop to run.
    static bool isDownloadedInstaller(const QString& path);

    void toHide();
    bool isHidden();
    void toShow();
    void onUpdate();

    // Tests: what ends the process after the hand-over (by default a pause for the handler
    // to start, then quit).
    void setQuit(std::function<void()> quit) { mQuit = std::move(quit); }
    // Tests: which installer the package goes to (by default the system's).
    void setInstaller(std::function<PackageInstaller::Command(const QString&)> installer)
    {
        mInstaller = std::move(installer);
    }
    // The package's SHA-256 as lower-case hex; empty when it cannot be read.
    static QString sha256Of(const QString& path);

public slots:
    void onVersion(VersionInfo vi);
    void onButtonUpdate();
    void onButtonCancel();
    void onButtonOk();
    void onButtonOnVerra();

private:
    void handOver(const QString& path);
    void installByHand(const QString& path);

    UpdateView* mView;
    VersionInfo mVersionInfo;
    HttpManager* mHttpManager;
    AppLauncher* mLauncher;
    std::unique_ptr<AppLauncher> mOwnedLauncher;
    std::function<void()> mQuit;
    std::function<PackageInstaller::Command(const QString&)> mInstaller = &PackageInstaller::installCommand;
};
