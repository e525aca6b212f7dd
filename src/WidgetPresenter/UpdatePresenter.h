#pragma once

#include "Http/BackendRecords.h"
#include "Utils/AppVersion.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>

class AppLauncher;
class HttpManager;
class UpdateView;

// Offers a version the backend publishes, downloads its installer into the Downloads folder
// with a progress bar, hands the file to the desktop's handler and quits.
class UpdatePresenter : public QObject {
    Q_OBJECT

public:
    // The backend serves a self-extracting installer on this platform; the desktop's handler
    // for it takes over.
    static constexpr char kInstallerName[] = "ZorvaneInstaller.run";
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

public slots:
    void onVersion(VersionInfo vi);
    void onButtonUpdate();
    void onButtonCancel();
    void onButtonOk();
    void onButtonOnVerra();

private:
    void handOver(const QString& path);

    UpdateView* mView;
    VersionInfo mVersionInfo;
    HttpManager* mHttpManager;
    AppLauncher* mLauncher;
    std::unique_ptr<AppLauncher> mOwnedLauncher;
    std::function<void()> mQuit;
};
