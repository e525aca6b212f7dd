#pragma once

#include "Utils/Singleton.h"
#include "WidgetPresenter/BleGuidancePresenter.h"

#include <QDialog>

#include <memory>

class QFrame;
class QLabel;
class QPushButton;
class QStackedWidget;
class QBluetoothLocalDevice;

// The pairing wizard shown when no mouse is found: six pages, from the first question through
// the model choice and instructions to the search. Its flow is the presenter's.
class BLEConnentionGuidanceDialog : public QDialog,
                                    public BleGuidanceView,
                                    public Singleton<BLEConnentionGuidanceDialog> {
    Q_OBJECT

public:
    using Page = BleGuidancePresenter::Page;

    static constexpr int kWideWidth = 1156;
    static constexpr int kWideHeight = 405;
    static constexpr int kPromptWidth = 300;
    static constexpr int kPromptHeight = 168;

    ~BLEConnentionGuidanceDialog() override;

    void showGuidance();
    void changePage(Page page);
    BleGuidancePresenter* presenter() const { return mPresenter; }

    // BleGuidanceView
    void setPage(int page) override;
    int currentPage() override;
    bool isHidden() override { return QDialog::isHidden(); }
    void toShow() override { show(); }
    // Ends it without passing through reject(), which is how the user closes it.
    void toClose() override { done(QDialog::Rejected); }
    void setRegisterFailed(bool failed) override;
    void setModelBackground(QString picture) override;
    void showSettingsMissing() override;

public slots:
    void onClose() { mPresenter->onClose(); }
    void onDeviceScanFinished() { mPresenter->onDeviceScanFinished(); }
    void onDeviceRegister() { mPresenter->onDeviceRegister(); }
    void onStartRegister() { mPresenter->onStartRegister(); }
    void onNext() { mPresenter->onNext(); }
    void onDelayDeviceScan() { mPresenter->onDelayDeviceScan(); }
    void onConnectTimeout() { mPresenter->onConnectTimeout(); }

protected:
    // Escape and the window manager's close end the wizard as its cross does.
    void reject() override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    friend class Singleton<BLEConnentionGuidanceDialog>;
    // Without a device the real mouse link is used, without a launcher the desktop's.
    explicit BLEConnentionGuidanceDialog(QWidget* parent = nullptr, BleGuidanceDevice* device = nullptr,
                                         AppLauncher* launcher = nullptr);

    QWidget* buildRegisteringPage();
    QWidget* buildModelChoicePage();
    QWidget* buildModelPage();
    QWidget* buildConnectedPage();
    QWidget* buildPromptPage(const QString& picture, const QString& question);
    QPushButton* settingsButton();
    void placeAtBottomCentre();

    BleGuidancePresenter* mPresenter = nullptr;
    QStackedWidget* mStack = nullptr;
    QPushButton* mCross = nullptr;
    QLabel* mProgressLabel = nullptr;
    QLabel* mFailedLabel = nullptr;
    QPushButton* mRetryButton = nullptr;
    QPushButton* mFailedSettingsButton = nullptr;
    QFrame* mModelFrame = nullptr;
    QBluetoothLocalDevice* mLocalDevice = nullptr;
    QPoint mDragPosition;
    bool mDragging = false;
    bool mTranslucent = false;
};
