#pragma once

#include "Utils/Singleton.h"
#include "Widget/Common/MessageDialog.h"
#include "Widget/Common/WindowDrag.h"
#include "Widget/Console/Ui_MainWindow.h"
#include "Widget/Console/WidgetPathPicker.h"
#include "Widget/Notices/WidgetConsoleNotices.h"
#include "WidgetPresenter/InputPresenter.h"
#include "WidgetPresenter/MainWindowPresenter.h"
#include "WidgetPresenter/MainWindowView.h"

#include <QMainWindow>
#include <QPointer>

class FeedbackDialog;
class InputDialog;
class LowbatDialog;
class NoticeRoute;
class QMenu;
class SystemTray;
class UpdateDialog;

// The console: the device's picture and name, the command words, the application and mouse
// settings. It owns the console presenter, which starts everything that works in the
// background, and it opens the notices and dialogs the presenter asks for. Closing it (its
// cross or the window manager's) only hides it: the process, the device link and every timer
// go on until the user quits from the menu or the tray, after a question.
class MainWindow : public QMainWindow, public MainWindowView, public Singleton<MainWindow> {
    Q_OBJECT

public:
    using Singleton<MainWindow>::getInstance;
    ~MainWindow() override;

    MainWindowPresenter* presenter() const { return mPresenter; }
    Ui_MainWindow& widgets() { return mUi; }
    QMenu* menu() const { return mMenu; }
    LowbatDialog* lowbatDialog() const { return mLowbatDialog; }
    UpdateDialog* updateDialog() const { return mUpdateDialog; }
    InputDialog* inputDialog() const { return mInputDialog; }
    SystemTray* systemTray() const { return mTray; }
    // The question 退出 asks while it stands; null otherwise.
    MessageDialog* quitQuestion() const { return mQuitQuestion; }
    // The console at start; first the autostart question when it is due. Called once the
    // window exists: the question must not run inside the instance's creation.
    void showAtStart();

    // MainWindowView
    bool isShow() override;
    void recvMenuSiganl(int index) override;
    void setCheckVoiceTranslateOnOffChecked(bool checked) override;
    void setCheckTextTranslateOnOffChecked(bool checked) override;
    void setCheckAutoRunOnOffChecked(bool checked) override;
    void setCheckAutoRunStatusChecked(bool checked) override;
    void setComboDictationLanguageCurrentIndex(int index) override;
    void setComboVoiceTranslateSrcLanguageCurrentIndex(int index) override;
    void setComboVoiceTranslateTarLanguageCurrentIndex(int index) override;
    void setComboTextTranslateLanguageCurrentIndex(int index) override;
    void setCheckCalendarPhrasesOnOffChecked(bool checked) override;
    void setCheckUpdateHintOnOffChecked(bool checked) override;
    void setCheckUpdateHintStatusChecked(bool checked) override;
    void setCheckLightingEffectOnOffEnabled(bool enabled) override;
    void setCheckLightingEffectOnOffChecked(bool checked) override;
    void setCheckLightingEffectStatusChecked(bool checked) override;
    void setCheckShakeOnOffEnabled(bool enabled) override;
    void setCheckShakeOnOffChecked(bool checked) override;
    void setCheckShakeStatusChecked(bool checked) override;
    void setCheckSoundEffectOnOffEnabled(bool enabled) override;
    void setCheckSoundEffectOnOffChecked(bool checked) override;
    void setCheckSoundEffectStatusChecked(bool checked) override;
    void setCheckLowbatOnOffChecked(bool checked) override;
    void setCheckLowbatStatusChecked(bool checked) override;
    void setDeviceRadioLevel0Checked(bool checked) override;
    void setDeviceRadioLevel1Checked(bool checked) override;
    void setDeviceRadioLevel2Checked(bool checked) override;
    void setDeviceRadioLevel3Checked(bool checked) override;
    void showMouseSettingsUnknown() override;
    void setDeviceSettingsEnabled(bool enabled) override;
    void clearCustomTableContents() override;
    void setCustomTableRowCount(int count) override;
    void scrollCustomTableToBottom() override;
    QList<int> selectedCustomTableItems() override;
    int getCurrentCustomTableIndex() override;
    int getCustomTableRowCounts() override;
    int getWidth() override;
    void toShow() override;
    void activateWindow() override;
    int getCommandViewPosX() override;
    int getCommandViewPosY() override;
    void setQTableWidgetItemIcon(int row, CommandWord word) override;
    void showUpdateView() override;
    int execDelPopupView() override;
    void onKeyEvent(int key, int status) override;
    void setHomeImage(QString path) override;
    void setDefaultHomeImage() override;
    void setExplain(bool enable) override;
    void setExplainImage(QString path) override;
    void setNavImage(QString path) override;
    void setDeviceEnable(bool enable) override;
    void setDeviceTypeIcon(int type) override;
    void setChargeUpTrayAnimationImage(int step) override;
    void setSystemTrayStatus(QString text) override;
    void showLowbatView(int page) override;
    void showCalendarPhrases(CalendarPhrases phrases) override;
    void updateSystemTray(int status) override;
    void setZorvaneMessage(QString text) override;
    void setDeviceName(QString name) override;
    void showRestDialog() override;
    void setComboRestTime(int index) override;
    void setVipFunction(bool enable) override;
    void setCpiValue(int value) override;
    void showLamplightModule(int module) override;
    void setUpdateView(int page) override;
    void setDiscoverNewestVersionInfo(QString text) override;
    void setSignalClickModeEnable(bool enable) override;
    int getCurVolume() override;
    int getCurrentStackedWidgetIndex() override;
    void setAddCommandContent(QString text) override;
    void setEditCommandContent(QString text) override;
    int getAddCommmandCurrentType() override;
    int getEditCommmandCurrentType() override;
    QString getAddCommandCurrentCommand() override;
    QString getEditCommandCurrentCommand() override;
    QString getAddCommandCurrentContent() override;
    QString getEditCommandCurrentContent() override;
    void setAddCommandWarningText(QString text) override;
    void setEditCommandWarningText(QString text) override;
    void closeWarningHint() override;
    void setPreferenceSettingCheckBoxClick(bool checked) override;
    void setPreferenceSettingRadioButtonClickSend(bool checked) override;
    void setPreferenceSettingRadioButtonAutoSend(bool checked) override;
    void setPreferenceSettingCheckBoxEnterKeySend(bool checked) override;
    void setPreferenceSettingCheckBoxSpaceKeySend(bool checked) override;
    void setPreferenceSettingCheckBoxDelAllSign(bool checked) override;

signals:
    void signalsMouseEnter();
    void signalsMouseLeave();

public slots:
    void onShowMainView(int index);
    void onAddCommandChangeType(int index);
    void onEditCommandChangeType(int index);
    void onShowExplainView();
    void onIntoHttpHome();
    void onIntoAboutUsView();
    void onManualCheckAppVersion();
    void onChangeRestTime(int index);
    void onShowFeedbackView();
    // The title bar's buttons.
    void onMinimize();
    // Asks whether to quit; quits on yes.
    void onQuit();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    friend class Singleton<MainWindow>;
    // The program hands in what its services made, tests their own; without them the
    // process-wide instances. The same for the voice presenter's collaborators.
    explicit MainWindow(QWidget* parent = nullptr,
                        const MainWindowPresenter::Collaborators* collaborators = nullptr,
                        const InputPresenter::Collaborators* voice = nullptr);

    void initDatas(const InputPresenter::Collaborators* voice);
    void initViews();
    void setListener();
    void initAddCommandView();
    void initEditCommandView();
    void initPreferenceSettingView();
    // Ctrl+1..4 for the pages, Esc out of the add, edit and preference pages, Delete and Enter
    // on the command words.
    void initKeyboard();
    void hintAppAutoRun();
    // Once in the program's life, on the first close: the program goes on, and how to get
    // the window back.
    void tellWhereZorvaneWent();
    // The battery panel on the page asked for, unless it stands already.
    void showLowbatPanel(int page);
    void createMenu();
    void changeCommandType(Ui_MainWindow::CommandForm& form, int index);
    void submitCommand(bool edit);
    void editSelectedCommand();
    void clearCommandForm(Ui_MainWindow::CommandForm& form);
    // The browse button of the form that shows: a file, a folder or an application by type.
    void browse(int type);
    void placeResolutionButtons(bool four);
    bool isComboPopupOpen() const;

    Ui_MainWindow mUi;
    WidgetConsoleNotices mNotices;
    WidgetPathPicker mPathPicker{this};
    NoticeRoute* mNoticeRoute = nullptr;
    MainWindowPresenter* mPresenter = nullptr;
    LowbatDialog* mLowbatDialog = nullptr;
    UpdateDialog* mUpdateDialog = nullptr;
    FeedbackDialog* mFeedback = nullptr;
    InputDialog* mInputDialog = nullptr;
    QMenu* mMenu = nullptr;
    SystemTray* mTray = nullptr;
    QPointer<MessageDialog> mQuitQuestion;
    bool mTranslucent = false;
    WindowDrag mDrag;
};
