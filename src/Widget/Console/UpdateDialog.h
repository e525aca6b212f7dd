#pragma once

#include "Http/BackendRecords.h"
#include "Utils/Singleton.h"
#include "Widget/Common/FramelessDialog.h"
#include "WidgetPresenter/UpdateView.h"

class HttpManager;
class AppLauncher;
class QLabel;
class QProgressBar;
class QPushButton;
class QStackedWidget;
class QTextBrowser;
class UpdatePresenter;

// The update dialog: up to date, the offer with its notes, the download's progress, or a
// message (the check under way or failed, how to install by hand).
// Closing it during the download cancels the download, and the offer waits for a retry.
class UpdateDialog : public FramelessDialog, public UpdateView, public Singleton<UpdateDialog> {
    Q_OBJECT

public:
    // http and launcher may be null for the process-wide ones.
    explicit UpdateDialog(QWidget* parent = nullptr, HttpManager* http = nullptr,
                          AppLauncher* launcher = nullptr);
    ~UpdateDialog() override;

    int toExec() { return exec(); }
    UpdatePresenter* presenter() const { return mPresenter; }

    void done0() override { done(0); }
    void done1() override { done(1); }
    void setStackedWidgetCurrentIndex(int index) override;
    void setProgressBarValue(int value) override;
    void setProgressBarMaximum(int maximum) override;
    void toHide() override { hide(); }
    bool isHidden() override { return QWidget::isHidden(); }
    void toShow() override;
    void setNewestVersion(QString text) override;
    void setDiscoverNewestVersionInfo(QString text) override;
    void closeAppAutoRunView() override;
    void showMessage(QString text) override;

    int currentIndex() const;
    QPushButton* button(const QString& name) const;

public slots:
    void onVersion(VersionInfo vi);
    void reject() override;

signals:
    void signalNoUpdate();

private:
    QWidget* makeUpToDatePage();
    QWidget* makeOfferPage();
    QWidget* makeDownloadPage();
    QWidget* makeMessagePage();

    UpdatePresenter* mPresenter;
    QStackedWidget* mPages;
    QLabel* mVersionLabel = nullptr;
    QTextBrowser* mNotes = nullptr;
    QProgressBar* mProgress = nullptr;
    QLabel* mMessage = nullptr;
};
