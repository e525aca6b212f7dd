#include "Widget/Console/MainWindow.h"

#include "Utils/AppConfig.h"
#include "Utils/KeyTable.h"
#include "Utils/Logging.h"
#include "Utils/PreferencesUtils.h"
#include "Widget/Common/DeletePopupDialog.h"
#include "Widget/Common/WindowLook.h"
#include "Widget/Common/ZorvaneMessageDialog.h"
#include "Widget/Console/AboutUsDialog.h"
#include "Widget/Console/AppAutoRunDialog.h"
#include "Widget/Console/ExplainDialog.h"
#include "Widget/Console/FeedbackDialog.h"
#include "Widget/Console/SystemTray.h"
#include "Widget/Console/UpdateDialog.h"
#include "Widget/LineEdit.h"
#include "Widget/Notices/BLEConnentionGuidanceDialog.h"
#include "Widget/Notices/CalendarPhrasesDialog.h"
#include "Widget/Notices/LowbatDialog.h"
#include "Widget/Notices/RestDialog.h"
#include "Widget/Panels/InputDialog.h"
#include "Widget/Panels/PaddleWordsDialog.h"
#include "WidgetPresenter/NoticeRoute.h"
#include "WidgetPresenter/ReadAloud.h"

#include <QAbstractItemView>
#include <QButtonGroup>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QCoreApplication>
#include <QHeaderView>
#include <QIcon>
#include <QImageReader>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QMouseEvent>
#include <QPushButton>
#include <QRadioButton>
#include <QShortcut>
#include <QSignalBlocker>
#include <QStackedWidget>
#include <QSystemTrayIcon>
#include <QTableWidget>
#include <QToolButton>

#include <memory>

namespace {

constexpr int kRadius = 12;
const QString kClosedHint = QStringLiteral("consoleClosed");

// Puts a picture into a label at the label's size, keeping its proportions; false (and the
// label as it was) when the file does not load.
bool showPicture(QLabel* label, const QString& path)
{
    const qreal ratio = label->devicePixelRatioF();
    QImageReader reader(path);
    // Read at the size shown: a drawing is drawn there sharp, not stretched from its own size.
    if (reader.format() == "svg" && reader.size().isValid()) {
        reader.setScaledSize(reader.size().scaled(label->size() * ratio, Qt::KeepAspectRatio));
    }
    const QImage picture = reader.read();
    if (picture.isNull()) {
        return false;
    }
    QPixmap scaled = QPixmap::fromImage(
        picture.scaled(label->size() * ratio, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    scaled.setDevicePixelRatio(ratio);
    label->setPixmap(scaled);
    return true;
}

}  // namespace

MainWindow::MainWindow(QWidget* parent, const MainWindowPresenter::Collaborators* collaborators,
                       const InputPresenter::Collaborators* voice)
    : QMainWindow(parent), mNotices(nullptr)
{
    // The pictures live in a static library: nothing else would pull them into the program.
    Q_INIT_RESOURCE(console);
    mUi.setupUi(this);
    // The window draws its own title bar; the window manager still lists it and moves it.
    setWindowFlags(Qt::Window | Qt::FramelessWindowHint);
    setWindowTitle(QStringLiteral("Zorvane"));
    setWindowIcon(QIcon(QStringLiteral(":/console/logo.svg")));
    mTranslucent = WindowLook::compositing();
    setAttribute(Qt::WA_TranslucentBackground, mTranslucent);
    setExplain(false);

    MainWindowPresenter::Collaborators c =
        collaborators != nullptr ? *collaborators : MainWindowPresenter::processWide();
    if (c.notices == nullptr) {
        c.notices = &mNotices;
    }
    if (c.picker == nullptr) {
        c.picker = &mPathPicker;
    }
    // The presenter tells the tray its first status while it is built (no network at start).
    mTray = new SystemTray(this, this);
    mPresenter = new MainWindowPresenter(this, c, this);

    initDatas(voice);
    mTray->watchDevice(mPresenter->lifecycle());
    initViews();
    setListener();
    initAddCommandView();
    initEditCommandView();
    initPreferenceSettingView();
    initKeyboard();
    // The keyboard starts on the page names, not wherever the focus chain happens to begin.
    mUi.navButtons[0]->setFocus();
}

MainWindow::~MainWindow()
{
    // The presenter's controller thread may still post to this window: it goes first.
    delete mPresenter;
}

void MainWindow::initDatas(const InputPresenter::Collaborators* voice)
{
    mLowbatDialog = LowbatDialog::getInstance(nullptr);
    mUpdateDialog = UpdateDialog::getInstance(this);
    // The voice strip and the session logic behind every panel.
    mInputDialog = InputDialog::getInstance(nullptr, voice);
    connect(mPresenter, &MainWindowPresenter::signalLocalIpId, mInputDialog, &InputDialog::onLocalIpId);
    connect(mPresenter, &MainWindowPresenter::signalLoadUserCommandWord, mInputDialog,
            &InputDialog::onGetUserCommandWord);
    connect(mPresenter, &MainWindowPresenter::signalDirectUIsToInput, mInputDialog,
            &InputDialog::onGetDirectUIs);
    connect(this, &MainWindow::signalsMouseEnter, mInputDialog, &InputDialog::onMouseEnterMainwindow);
    connect(this, &MainWindow::signalsMouseLeave, mInputDialog, &InputDialog::onMouseLeaveMainwindow);
    connect(mPresenter, &MainWindowPresenter::signalAppVersion, mUpdateDialog, &UpdateDialog::onVersion);
    connect(mPresenter, &MainWindowPresenter::signalAppVersionUnknown, mUpdateDialog,
            [this] { mUpdateDialog->showMessage(tr("无法连接更新服务器，请检查网络后重试。")); });
    connect(mLowbatDialog, &LowbatDialog::signalLowbatNoLongerRemind, mPresenter,
            &MainWindowPresenter::recvLowbatSignalNoLongerRemind);
    connect(mLowbatDialog, &LowbatDialog::signalMinLowbatNoLongerRemind, mPresenter,
            &MainWindowPresenter::recvMinLowbatSignalNoLongerRemind);
    connect(mUpdateDialog, &UpdateDialog::signalNoUpdate, mPresenter,
            &MainWindowPresenter::recvUpdataSignalNoUpdata);
    // The pairing wizard is made when first needed: most starts find the mouse.
    connect(mPresenter, &MainWindowPresenter::signalShowBLEGuidanceDialog, this,
            [] { BLEConnentionGuidanceDialog::getInstance(nullptr)->showGuidance(); });
    connect(mPresenter, &MainWindowPresenter::signalHideBLEGuidanceDialog, this,
            [] { BLEConnentionGuidanceDialog::getInstance(nullptr)->close(); });
    // The presenter learns the matched mouse's name but gives it to no view operation.
    connect(mPresenter, &MainWindowPresenter::signalGetDeviceInfo, this,
            [this](const DeviceInfo& info) { setDeviceName(info.customerName); });
    // How battery and device notices reach the user: the box shows the preference and
    // stores the user's choice in it.
    mNoticeRoute = new NoticeRoute(nullptr, this);
    mUi.comboNoticeStyle->setCurrentIndex(mNoticeRoute->style());
    connect(mNoticeRoute, &NoticeRoute::signalStyleChanged, mUi.comboNoticeStyle,
            &QComboBox::setCurrentIndex);
    connect(mUi.comboNoticeStyle, qOverload<int>(&QComboBox::activated), this, [this](int index) {
        UserPreferences preferences = mPresenter->userPreferences();
        preferences.noticeStyle = index;
        PreferencesUtils::getInstance()->setUserPreferences(preferences);
    });
    mUi.tableCustom->setColumnWidth(0, 35);
    mUi.stackedWidget->setCurrentIndex(Ui_MainWindow::HomePage);
    mUi.navButtons[0]->setChecked(true);
}

void MainWindow::initViews()
{
    installEventFilter(this);
    setDefaultHomeImage();
    showPicture(mUi.labelNav, QStringLiteral(":/console/nav_default.svg"));
    mPresenter->loadUserCommand();
    setCheckAutoRunOnOffChecked(mPresenter->isAppAutoRun());
    createMenu();
    // Rows that only some mice have.
    showLamplightModule(0);
    mUi.calendarPhrases.status->hide();
}

void MainWindow::showAtStart()
{
    if (!mPresenter->asksAutoRunAtStart()) {
        show();
        return;
    }
    hintAppAutoRun();
}

void MainWindow::hintAppAutoRun()
{
    // Shown, not run in a loop of its own: the program goes on answering the mouse and the tray
    // meanwhile. Modal to the console only, which comes once the question is answered.
    AppAutoRunDialog* dialog = AppAutoRunDialog::getInstance(this);
    dialog->setCheckAppAutoRun(true);
    dialog->setWindowModality(Qt::WindowModal);
    // The console is not up yet: the question stands in the middle of the screen.
    dialog->centreOver(nullptr);
    auto answered = std::make_shared<QMetaObject::Connection>();
    *answered = connect(dialog, &QDialog::finished, this, [this, answered] {
        disconnect(*answered);
        show();
    });
    dialog->show();
    dialog->raise();
    dialog->activateWindow();
}

void MainWindow::createMenu()
{
    mMenu = new QMenu(this);
    connect(mMenu->addAction(QIcon(QStringLiteral(":/console/update.svg")), tr("检查更新")),
            &QAction::triggered, this, &MainWindow::onManualCheckAppVersion);
    connect(mMenu->addAction(QIcon(QStringLiteral(":/console/web.svg")), tr("软件网站")), &QAction::triggered,
            this, &MainWindow::onIntoHttpHome);
    connect(mMenu->addAction(QIcon(QStringLiteral(":/console/about.svg")), tr("关于我们")),
            &QAction::triggered, this, &MainWindow::onIntoAboutUsView);
    // Quitting is asked for here and in the tray; the title bar's cross only closes the window.
    mMenu->addSeparator();
    connect(mMenu->addAction(QIcon(QStringLiteral(":/console/close.svg")), tr("退出")), &QAction::triggered,
            this, &MainWindow::onQuit);
    mUi.buttonMenu->setMenu(mMenu);
}

void MainWindow::setListener()
{
    MainWindowPresenter* p = mPresenter;
    Ui_MainWindow& ui = mUi;
    connect(ui.navGroup, &QButtonGroup::idClicked, ui.stackedWidget, &QStackedWidget::setCurrentIndex);
    // A screen reader toggles a page's button rather than clicking it. A page reached from
    // another (add, edit, preferences) keeps its section's button on and stays.
    static const int kSection[] = {0, 1, 2, 3, 1, 1, 2};
    connect(ui.navGroup, &QButtonGroup::idToggled, this, [this](int section, bool on) {
        const int page = mUi.stackedWidget->currentIndex();
        if (on && page >= 0 && page < int(std::size(kSection)) && kSection[page] != section) {
            mUi.stackedWidget->setCurrentIndex(section);
        }
    });
    connect(ui.stackedWidget, &QStackedWidget::currentChanged, this, [this](int page) {
        if (page >= 0 && page < int(std::size(kSection))) {
            mUi.navButtons[kSection[page]]->setChecked(true);
        }
    });
    connect(ui.buttonMin, &QToolButton::clicked, this, &MainWindow::onMinimize);
    connect(ui.buttonClose, &QToolButton::clicked, this, &QWidget::close);
    connect(ui.buttonExplain, &QPushButton::clicked, this, &MainWindow::onShowExplainView);

    // A language set from code raises the same handlers: that is how the pickers reach the
    // preferences.
    for (QComboBox* box : {ui.comboDictationLanguage, ui.comboDictationLanguageHome}) {
        connect(box, qOverload<int>(&QComboBox::currentIndexChanged), p,
                &MainWindowPresenter::onComboChangeDictationLanguage);
    }
    connect(ui.comboVoiceTranslateSrc, qOverload<int>(&QComboBox::currentIndexChanged), p,
            &MainWindowPresenter::onComboChangeTranslateSrcLanguage);
    connect(ui.comboVoiceTranslateTar, qOverload<int>(&QComboBox::currentIndexChanged), p,
            &MainWindowPresenter::onComboChangeTranslateTarLanguage);
    connect(ui.comboTextTranslate, qOverload<int>(&QComboBox::currentIndexChanged), p,
            &MainWindowPresenter::onComboChangeTextTranslateLanguage);
    connect(ui.comboRestTime, qOverload<int>(&QComboBox::currentIndexChanged), this,
            &MainWindow::onChangeRestTime);

    // Switches answer the user's clicks only: the presenter sets them from what it learns,
    // and that must not read as a choice.
    connect(ui.checkVoiceTranslateOnOff, &QCheckBox::clicked, p,
            &MainWindowPresenter::onCheckVoiceTranslateMode);
    connect(ui.checkTextTranslateOnOff, &QCheckBox::clicked, this, [p](bool checked) {
        p->onCheckTextTranslateMode(checked);
        if (!checked) {
            ReadAloud::stopAll();
            PaddleWordsDialog* toolbar = PaddleWordsDialog::getInstance(nullptr);
            if (toolbar->isVisible()) {
                toolbar->toHide();
            }
        }
    });
    connect(ui.calendarPhrases.onOff, &QCheckBox::clicked, p,
            &MainWindowPresenter::onCheckCalendarPhrasesOnOff);
    connect(ui.updateHint.onOff, &QCheckBox::clicked, this, [this, p](bool checked) {
        p->onCheckUpdateHintOnOff(checked);
        setCheckUpdateHintStatusChecked(checked);
    });
    connect(ui.autoRun.onOff, &QCheckBox::clicked, this, [this, p](bool checked) {
        p->onCheckAutoRunOnOff(checked);
        setCheckAutoRunStatusChecked(checked);
    });
    connect(ui.buttonPreference, &QPushButton::clicked, this,
            [this] { mUi.stackedWidget->setCurrentIndex(Ui_MainWindow::PreferencePage); });
    connect(ui.buttonFeedback, &QPushButton::clicked, this, &MainWindow::onShowFeedbackView);

    // The speed buttons, left to right: levels 2, 0, 1 and the screen's best resolution.
    connect(ui.radioLevel[0], &QPushButton::clicked, p, &MainWindowPresenter::onRadioSelectDpi2);
    connect(ui.radioLevel[1], &QPushButton::clicked, p, &MainWindowPresenter::onRadioSelectDpi0);
    connect(ui.radioLevel[2], &QPushButton::clicked, p, &MainWindowPresenter::onRadioSelectDpi1);
    connect(ui.radioLevel[3], &QPushButton::clicked, p, &MainWindowPresenter::onRadioSelectDpi3);
    connect(ui.lighting.onOff, &QCheckBox::clicked, p, &MainWindowPresenter::onCheckLamplight);
    connect(ui.shake.onOff, &QCheckBox::clicked, p, &MainWindowPresenter::onCheckShake);
    connect(ui.soundEffect.onOff, &QCheckBox::clicked, p, &MainWindowPresenter::onCheckSoundEffect);
    connect(ui.lowbat.onOff, &QCheckBox::clicked, p, &MainWindowPresenter::onCheckLowbatReport);

    connect(ui.buttonAddCommand, &QPushButton::clicked, this, [this] {
        clearCommandForm(mUi.addForm);
        mUi.stackedWidget->setCurrentIndex(Ui_MainWindow::AddCommandPage);
        mUi.addForm.command->setFocus();
    });
    connect(ui.buttonEditCommand, &QPushButton::clicked, this, &MainWindow::editSelectedCommand);
    connect(ui.buttonDelCommand, &QPushButton::clicked, p, &MainWindowPresenter::onButtonDeleteCommand);
    connect(ui.tableCustom, &QTableWidget::cellDoubleClicked, this, &MainWindow::editSelectedCommand);
}

void MainWindow::initAddCommandView()
{
    Ui_MainWindow::CommandForm& form = mUi.addForm;
    connect(form.type, qOverload<int>(&QComboBox::currentIndexChanged), this,
            &MainWindow::onAddCommandChangeType);
    connect(form.submit, &QPushButton::clicked, this, [this] { submitCommand(false); });
    connect(form.back, &QPushButton::clicked, this, [this] {
        clearCommandForm(mUi.addForm);
        mUi.stackedWidget->setCurrentIndex(Ui_MainWindow::CommandPage);
    });
    connect(form.content, &LineEdit::signalShortcut, this, [this](QList<int> keys) {
        mPresenter->setShortcutList(keys);
        mUi.addForm.content->setText(KeyTable::displayName(keys));
    });
    connect(form.browse, &QPushButton::clicked, this, [this] { browse(mUi.addForm.type->currentIndex()); });
    onAddCommandChangeType(0);
}

void MainWindow::initEditCommandView()
{
    Ui_MainWindow::CommandForm& form = mUi.editForm;
    connect(form.type, qOverload<int>(&QComboBox::currentIndexChanged), this,
            &MainWindow::onEditCommandChangeType);
    connect(form.submit, &QPushButton::clicked, this, [this] { submitCommand(true); });
    connect(form.back, &QPushButton::clicked, this, [this] {
        clearCommandForm(mUi.editForm);
        mUi.stackedWidget->setCurrentIndex(Ui_MainWindow::CommandPage);
    });
    connect(form.content, &LineEdit::signalShortcut, this, [this](QList<int> keys) {
        mPresenter->setEditShortcutList(keys);
        mUi.editForm.content->setText(KeyTable::displayName(keys));
    });
    connect(form.browse, &QPushButton::clicked, this, [this] { browse(mUi.editForm.type->currentIndex()); });
    onEditCommandChangeType(0);
}

void MainWindow::initPreferenceSettingView()
{
    MainWindowPresenter* p = mPresenter;
    connect(mUi.checkClickMode, &QCheckBox::clicked, p,
            &MainWindowPresenter::onPreferenceSettingCheckBoxClick);
    connect(mUi.radioClickSend, &QRadioButton::clicked, p,
            &MainWindowPresenter::onPreferenceSettingRadioButtonClickSend);
    connect(mUi.radioAutoSend, &QRadioButton::clicked, p,
            &MainWindowPresenter::onPreferenceSettingRadioButtonAutoSend);
    connect(mUi.checkEnterSend, &QCheckBox::clicked, p,
            &MainWindowPresenter::onPreferenceSettingCheckBoxEnterKeySend);
    connect(mUi.checkSpaceSend, &QCheckBox::clicked, p,
            &MainWindowPresenter::onPreferenceSettingCheckBoxSpaceKeySend);
    connect(mUi.checkDelAllSign, &QCheckBox::clicked, p,
            &MainWindowPresenter::onPreferenceSettingCheckBoxDelAllSign);
    connect(mUi.buttonPreferenceBack, &QPushButton::clicked, this,
            [this] { mUi.stackedWidget->setCurrentIndex(Ui_MainWindow::AppSettingsPage); });
}

void MainWindow::initKeyboard()
{
    for (int page = 0; page < 4; ++page) {
        auto* shortcut = new QShortcut(QKeySequence(Qt::CTRL | (Qt::Key_1 + page)), this);
        connect(shortcut, &QShortcut::activated, this, [this, page] {
            mUi.navButtons[page]->click();
            // On the page's name, so that the next Tab goes into the page.
            mUi.navButtons[page]->setFocus(Qt::ShortcutFocusReason);
        });
    }
    // Esc does what the page's back button does, the add form's clearing included.
    connect(new QShortcut(Qt::Key_Escape, this), &QShortcut::activated, this, [this] {
        switch (mUi.stackedWidget->currentIndex()) {
            case Ui_MainWindow::AddCommandPage:
                mUi.addForm.back->click();
                break;
            case Ui_MainWindow::EditCommandPage:
                mUi.editForm.back->click();
                break;
            case Ui_MainWindow::PreferencePage:
                mUi.buttonPreferenceBack->click();
                break;
            default:
                return;
        }
        if (mUi.stackedWidget->currentIndex() == Ui_MainWindow::CommandPage) {
            mUi.tableCustom->setFocus(Qt::ShortcutFocusReason);
        } else {
            mUi.buttonPreference->setFocus(Qt::ShortcutFocusReason);
        }
    });
    // Only while the list has the keyboard: Delete in a text box deletes text.
    connect(new QShortcut(QKeySequence::Delete, mUi.tableCustom, nullptr, nullptr, Qt::WidgetShortcut),
            &QShortcut::activated, mPresenter, &MainWindowPresenter::onButtonDeleteCommand);
    for (const int key : {Qt::Key_Return, Qt::Key_Enter}) {
        connect(new QShortcut(key, mUi.tableCustom, nullptr, nullptr, Qt::WidgetShortcut),
                &QShortcut::activated, this, &MainWindow::editSelectedCommand);
    }
}

// ---- navigation and the title bar

void MainWindow::recvMenuSiganl(int index)
{
    if (index >= 0 && index < 4) {
        mUi.navButtons[index]->setChecked(true);
    }
    mUi.stackedWidget->setCurrentIndex(index);
}

void MainWindow::onShowMainView(int index)
{
    recvMenuSiganl(index);
    show();
    if (isVisible()) {
        showNormal();
    }
}

void MainWindow::onMinimize()
{
    mPresenter->hide();
    showMinimized();
}

void MainWindow::onQuit()
{
    if (mQuitQuestion != nullptr) {
        mQuitQuestion->raise();
        mQuitQuestion->activateWindow();
        return;
    }
    // Quitting ends dictation, which the user may not expect from a tray program: asked
    // first. Shown, not run in a loop of its own, so the mouse and a SIGTERM are still heard.
    mQuitQuestion = new MessageDialog(this);
    mQuitQuestion->setAttribute(Qt::WA_DeleteOnClose);
    mQuitQuestion->setWindowTitle(QStringLiteral("Zorvane"));
    mQuitQuestion->setTitle(tr("退出 Zorvane 后，语音听写将停止，鼠标的语音键不再起作用。确定退出吗？"));
    mQuitQuestion->submitButton()->setText(tr("退出"));
    mQuitQuestion->submitButton()->setDefault(true);
    mQuitQuestion->centreOver(isShow() ? this : nullptr);
    connect(mQuitQuestion, &QDialog::finished, this, [this](int result) {
        if (result != 1) {
            return;
        }
        const int page = mUi.stackedWidget->currentIndex();
        if (page == Ui_MainWindow::AddCommandPage || page == Ui_MainWindow::EditCommandPage) {
            clearCommandForm(page == Ui_MainWindow::AddCommandPage ? mUi.addForm : mUi.editForm);
            mUi.stackedWidget->setCurrentIndex(Ui_MainWindow::CommandPage);
        } else if (page == Ui_MainWindow::PreferencePage) {
            mUi.stackedWidget->setCurrentIndex(Ui_MainWindow::AppSettingsPage);
        }
        QCoreApplication::quit();
    });
    mQuitQuestion->show();
    mQuitQuestion->raise();
    mQuitQuestion->activateWindow();
}

void MainWindow::tellWhereZorvaneWent()
{
    PreferencesUtils* preferences = PreferencesUtils::getInstance();
    if (preferences->wasSaid(kClosedHint)) {
        return;
    }
    preferences->markSaid(kClosedHint);
    // Where there is no tray (GNOME, a bare window manager) the way back is a second start,
    // which the single-instance guard turns into showing this window.
    const QString back = QSystemTrayIcon::isSystemTrayAvailable()
                             ? tr("点击任务栏上的 Zorvane 图标可再次打开控制台，退出也在图标的菜单中。")
                             : tr("从应用程序菜单再次启动 Zorvane 即可打开控制台；"
                                  "退出请用控制台右上角菜单中的“退出”。");
    auto* hint = new MessageDialog(this);
    hint->setAttribute(Qt::WA_DeleteOnClose);
    hint->setWindowTitle(QStringLiteral("Zorvane"));
    hint->setObjectName(QStringLiteral("closedHint"));
    hint->setTitle(tr("Zorvane 仍在运行，鼠标的语音键照常可用。") + back);
    hint->submitButton()->setText(tr("知道了"));
    hint->submitButton()->setDefault(true);
    hint->setCancelHidden(true);
    hint->centreOver(this);
    hint->show();
    hint->raise();
}

void MainWindow::onShowExplainView()
{
    ExplainDialog* dialog = ExplainDialog::getInstance(this);
    dialog->centreOver(this);
    dialog->show();
    dialog->raise();
}

void MainWindow::onIntoHttpHome()
{
    mPresenter->openProductSite();
}

void MainWindow::onIntoAboutUsView()
{
    AboutUsDialog* dialog = AboutUsDialog::getInstance(this);
    dialog->centreOver(this);
    dialog->show();
    dialog->raise();
}

void MainWindow::onManualCheckAppVersion()
{
    mUpdateDialog->centreOver(this);
    mUpdateDialog->showMessage(tr("正在检查更新…"));
    mPresenter->checkNewestAppVersion();
    mUpdateDialog->toExec();
}

void MainWindow::onShowFeedbackView()
{
    if (mFeedback == nullptr) {
        mFeedback = new FeedbackDialog(this);
    }
    mFeedback->centreOver(this);
    mFeedback->toShow();
}

void MainWindow::onChangeRestTime(int index)
{
    static const int kWorkTimes[] = {10800000, 9000000, 7200000, 3600000};
    if (index >= 0 && index < 4) {
        mPresenter->setRestEnable(true);
        mPresenter->setWorkTime(kWorkTimes[index]);
    } else if (index == 4) {
        mPresenter->setRestEnable(false);
    }
}

// ---- window behaviour

bool MainWindow::isComboPopupOpen() const
{
    const QList<QComboBox*> boxes = findChildren<QComboBox*>();
    for (const QComboBox* box : boxes) {
        if (box->view() != nullptr && box->view()->isVisible()) {
            return true;
        }
    }
    return false;
}

bool MainWindow::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == this) {
        if (event->type() == QEvent::Enter) {
            emit signalsMouseEnter();
        } else if (event->type() == QEvent::Leave && !isComboPopupOpen()) {
            // A box's open list takes the pointer out of the window without it leaving.
            emit signalsMouseLeave();
        }
    }
    return QMainWindow::eventFilter(watched, event);
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    // The cross and the window manager's close both only hide: the mouse is still served.
    const bool shown = isVisible();
    hide();
    event->ignore();
    if (shown) {
        tellWhereZorvaneWent();
    }
}

void MainWindow::showEvent(QShowEvent* event)
{
    QMainWindow::showEvent(event);
    mPresenter->onViewShown();
}

void MainWindow::changeEvent(QEvent* event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::WindowStateChange && isShow()) {
        mPresenter->onViewShown();  // back from minimised
    }
}

void MainWindow::keyPressEvent(QKeyEvent* event)
{
    // Outside a dialog Qt's buttons answer Space only; Enter does the same here, as users of
    // other desktops expect. Keys a focused control used never get this far.
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    QWidget* focused = focusWidget();
    if (enter && event->modifiers() == Qt::NoModifier && focused != nullptr && focused->isEnabled()) {
        if (auto* button = qobject_cast<QAbstractButton*>(focused)) {
            button->click();
            return;
        }
        if (auto* box = qobject_cast<QComboBox*>(focused)) {
            box->showPopup();
            return;
        }
    }
    QMainWindow::keyPressEvent(event);
}

void MainWindow::resizeEvent(QResizeEvent* event)
{
    QMainWindow::resizeEvent(event);
    if (!mTranslucent) {
        WindowLook::shape(this, rect(), kRadius);
    }
}

void MainWindow::mousePressEvent(QMouseEvent* event)
{
    mDrag.press(this, event);
}

void MainWindow::mouseMoveEvent(QMouseEvent* event)
{
    mDrag.move(this, event);
}

void MainWindow::mouseReleaseEvent(QMouseEvent* event)
{
    mDrag.release(this, event);
}

// ---- MainWindowView: state of the window

bool MainWindow::isShow()
{
    return isVisible() && !isMinimized();
}

void MainWindow::toShow()
{
    const QRect screen = WindowLook::workArea();
    if (screen.isValid()) {
        move(screen.center() - rect().center());
    }
    show();
}

void MainWindow::activateWindow()
{
    QMainWindow::activateWindow();
}

int MainWindow::getWidth()
{
    return width();
}

int MainWindow::getCommandViewPosX()
{
    return mUi.tableCustom->mapToGlobal(QPoint(0, 0)).x();
}

int MainWindow::getCommandViewPosY()
{
    return mUi.tableCustom->mapToGlobal(QPoint(0, 0)).y();
}

int MainWindow::getCurrentStackedWidgetIndex()
{
    return mUi.stackedWidget->currentIndex();
}

void MainWindow::onKeyEvent(int, int) {}

void MainWindow::setChargeUpTrayAnimationImage(int step)
{
    mTray->setChargeStep(step);
}

void MainWindow::setSystemTrayStatus(QString text)
{
    mTray->setNote(text);
}

void MainWindow::updateSystemTray(int status)
{
    mTray->setStatus(status);
    QString warning;
    if (status == 2) {
        warning = tr("麦克风无法打开");
    } else if (status == 3) {
        warning = tr("网络未连接：联网后才能使用语音输入");
    } else if (status == 7) {
        warning = tr("无法连接到服务器：正在重试");
    }
    mUi.labelHomeWarning->setText(warning);
    mUi.labelHomeWarning->setVisible(!warning.isEmpty());
}

// ---- MainWindowView: application settings

void MainWindow::setCheckVoiceTranslateOnOffChecked(bool checked)
{
    mUi.checkVoiceTranslateOnOff->setChecked(checked);
}

void MainWindow::setCheckTextTranslateOnOffChecked(bool checked)
{
    mUi.checkTextTranslateOnOff->setChecked(checked);
}

void MainWindow::setCheckAutoRunOnOffChecked(bool checked)
{
    mUi.autoRun.onOff->setChecked(checked);
    mUi.autoRun.status->setChecked(checked);
}

void MainWindow::setCheckAutoRunStatusChecked(bool checked)
{
    mUi.autoRun.status->setChecked(checked);
}

void MainWindow::setComboDictationLanguageCurrentIndex(int index)
{
    mUi.comboDictationLanguage->setCurrentIndex(index);
    mUi.comboDictationLanguageHome->setCurrentIndex(index);
}

void MainWindow::setComboVoiceTranslateSrcLanguageCurrentIndex(int index)
{
    mUi.comboVoiceTranslateSrc->setCurrentIndex(index);
}

void MainWindow::setComboVoiceTranslateTarLanguageCurrentIndex(int index)
{
    mUi.comboVoiceTranslateTar->setCurrentIndex(index);
}

void MainWindow::setComboTextTranslateLanguageCurrentIndex(int index)
{
    mUi.comboTextTranslate->setCurrentIndex(index);
}

void MainWindow::setCheckCalendarPhrasesOnOffChecked(bool checked)
{
    mUi.calendarPhrases.onOff->setChecked(checked);
}

void MainWindow::setCheckUpdateHintOnOffChecked(bool checked)
{
    mUi.updateHint.onOff->setChecked(checked);
    mUi.updateHint.status->setChecked(checked);
}

void MainWindow::setCheckUpdateHintStatusChecked(bool checked)
{
    mUi.updateHint.status->setChecked(checked);
}

void MainWindow::setComboRestTime(int index)
{
    // Shown, not chosen: a change from here must not restart the work clock.
    const QSignalBlocker blocker(mUi.comboRestTime);
    mUi.comboRestTime->setCurrentIndex(index);
}

void MainWindow::setPreferenceSettingCheckBoxClick(bool checked)
{
    mUi.checkClickMode->setChecked(checked);
}

void MainWindow::setPreferenceSettingRadioButtonClickSend(bool checked)
{
    mUi.radioClickSend->setChecked(checked);
}

void MainWindow::setPreferenceSettingRadioButtonAutoSend(bool checked)
{
    mUi.radioAutoSend->setChecked(checked);
}

void MainWindow::setPreferenceSettingCheckBoxEnterKeySend(bool checked)
{
    mUi.checkEnterSend->setChecked(checked);
}

void MainWindow::setPreferenceSettingCheckBoxSpaceKeySend(bool checked)
{
    mUi.checkSpaceSend->setChecked(checked);
}

void MainWindow::setPreferenceSettingCheckBoxDelAllSign(bool checked)
{
    mUi.checkDelAllSign->setChecked(checked);
}

void MainWindow::setSignalClickModeEnable(bool enable)
{
    mUi.checkClickMode->setEnabled(enable);
}

// ---- MainWindowView: the mouse

namespace {

// A switch whose state is known: it leaves the unknown look for good.
void showSwitch(QCheckBox* onOff, bool checked)
{
    onOff->setTristate(false);
    onOff->setChecked(checked);
}

}  // namespace

void MainWindow::setCheckLightingEffectOnOffEnabled(bool enabled)
{
    mUi.lighting.onOff->setEnabled(enabled);
}

void MainWindow::setCheckLightingEffectOnOffChecked(bool checked)
{
    showSwitch(mUi.lighting.onOff, checked);
}

void MainWindow::setCheckLightingEffectStatusChecked(bool checked)
{
    mUi.lighting.status->setChecked(checked);
}

void MainWindow::setCheckShakeOnOffEnabled(bool enabled)
{
    mUi.shake.onOff->setEnabled(enabled);
}

void MainWindow::setCheckShakeOnOffChecked(bool checked)
{
    showSwitch(mUi.shake.onOff, checked);
}

void MainWindow::setCheckShakeStatusChecked(bool checked)
{
    mUi.shake.status->setChecked(checked);
}

void MainWindow::setCheckSoundEffectOnOffEnabled(bool enabled)
{
    mUi.soundEffect.onOff->setEnabled(enabled);
}

void MainWindow::setCheckSoundEffectOnOffChecked(bool checked)
{
    showSwitch(mUi.soundEffect.onOff, checked);
}

void MainWindow::setCheckSoundEffectStatusChecked(bool checked)
{
    mUi.soundEffect.status->setChecked(checked);
}

void MainWindow::setCheckLowbatOnOffChecked(bool checked)
{
    showSwitch(mUi.lowbat.onOff, checked);
}

void MainWindow::setCheckLowbatStatusChecked(bool checked)
{
    mUi.lowbat.status->setChecked(checked);
}

void MainWindow::setDeviceRadioLevel0Checked(bool checked)
{
    mUi.radioLevel[0]->setChecked(checked);
}

void MainWindow::setDeviceRadioLevel1Checked(bool checked)
{
    mUi.radioLevel[1]->setChecked(checked);
}

void MainWindow::setDeviceRadioLevel2Checked(bool checked)
{
    mUi.radioLevel[2]->setChecked(checked);
}

void MainWindow::setDeviceRadioLevel3Checked(bool checked)
{
    mUi.radioLevel[3]->setChecked(checked);
}

void MainWindow::showMouseSettingsUnknown()
{
    // An exclusive group keeps one button down: let go of it to clear them all.
    mUi.dpiGroup->setExclusive(false);
    for (QPushButton* button : mUi.radioLevel) {
        button->setChecked(false);
    }
    mUi.dpiGroup->setExclusive(true);
    for (const Ui_MainWindow::SwitchRow* row : {&mUi.lighting, &mUi.shake, &mUi.soundEffect, &mUi.lowbat}) {
        row->onOff->setCheckState(Qt::PartiallyChecked);
        row->status->setChecked(false);
        row->onOff->setEnabled(false);
    }
    setDeviceSettingsEnabled(false);
}

void MainWindow::setDeviceSettingsEnabled(bool enabled)
{
    mUi.frameResolution->setEnabled(enabled);
    mUi.lowbat.onOff->setEnabled(enabled);
}

void MainWindow::placeResolutionButtons(bool four)
{
    // Centred in the card; the buttons are as wide as their longest name.
    const int count = four ? 4 : 3;
    const int gap = four ? Ui_MainWindow::kFourButtonsGap : Ui_MainWindow::kThreeButtonsGap;
    const int width = mUi.radioLevel[0]->width();
    int x = (mUi.frameResolution->width() - count * width - (count - 1) * gap) / 2;
    for (int i = 0; i < count; ++i) {
        mUi.radioLevel[i]->move(x, Ui_MainWindow::kButtonsY);
        x += width + gap;
    }
    mUi.radioLevel[3]->setVisible(four);
    mUi.labelCpi->move(mUi.radioLevel[3]->x(), Ui_MainWindow::kButtonsY + 52);
    mUi.labelCpi->setVisible(four);
}

void MainWindow::setVipFunction(bool enable)
{
    placeResolutionButtons(enable);
}

void MainWindow::setCpiValue(int value)
{
    const int label = MainWindowPresenter::cpiLabel(value);
    mUi.labelCpi->setText(label > 0 ? QStringLiteral("%1 DPI").arg(label) : tr("最佳分辨率"));
}

void MainWindow::showLamplightModule(int module)
{
    mUi.lighting.row->setVisible(module != 0);
}

int MainWindow::getCurVolume()
{
    return mInputDialog->getCurVolume();
}

void MainWindow::setDeviceEnable(bool enable)
{
    mInputDialog->setDeviceEnable(enable);
}

// ---- MainWindowView: the device's pictures and name

void MainWindow::setHomeImage(QString path)
{
    if (!showPicture(mUi.labelHomeImage, path)) {
        qCWarning(lcConsole) << "home picture does not load:" << path;
    }
}

void MainWindow::setDefaultHomeImage()
{
    showPicture(mUi.labelHomeImage, QStringLiteral(":/console/home_default.svg"));
}

void MainWindow::setNavImage(QString path)
{
    if (!showPicture(mUi.labelNav, path)) {
        qCWarning(lcConsole) << "navigation picture does not load:" << path;
    }
}

void MainWindow::setExplain(bool enable)
{
    mUi.buttonExplain->setVisible(enable);
}

void MainWindow::setExplainImage(QString path)
{
    if (!ExplainDialog::getInstance(this)->setImage(path)) {
        qCWarning(lcConsole) << "explanation picture does not load:" << path;
    }
}

void MainWindow::setDeviceTypeIcon(int type)
{
    mUi.labelTypeUsb->setVisible(type == 0);
    mUi.labelTypeBle->setVisible(type != 0);
}

void MainWindow::setDeviceName(QString name)
{
    mUi.labelDeviceName->setText(name);
}

// ---- MainWindowView: notices and dialogs

void MainWindow::showLowbatView(int page)
{
    const QPointer<MainWindow> self = this;
    const auto panel = [self, page] {
        if (self != nullptr) {
            self->showLowbatPanel(page);
        }
    };
    mNoticeRoute->battery(page, panel);
}

void MainWindow::showLowbatPanel(int page)
{
    if (!mLowbatDialog->isHidden()) {
        return;
    }
    switch (page) {
        case 0:
            mLowbatDialog->setLowbatAnimationView();
            break;
        case 1:
            mLowbatDialog->setMinLowAnimationView();
            break;
        case 2:
            mLowbatDialog->setMouseShutdownView();
            break;
        case 3:
            mLowbatDialog->setMouseChargingView();
            break;
        default:
            break;
    }
}

void MainWindow::showCalendarPhrases(CalendarPhrases phrases)
{
    CalendarPhrasesDialog::getInstance(nullptr)->showContent(phrases);
}

void MainWindow::showRestDialog()
{
    RestDialog::getInstance(nullptr)->showContent();
}

void MainWindow::setZorvaneMessage(QString text)
{
    ZorvaneMessageDialog::getInstance(nullptr)->setMessageText(text);
}

void MainWindow::showUpdateView()
{
    mUpdateDialog->centreOver(this);
    mUpdateDialog->toShow();
}

void MainWindow::setUpdateView(int page)
{
    mUpdateDialog->setStackedWidgetCurrentIndex(page);
    showUpdateView();
}

void MainWindow::setDiscoverNewestVersionInfo(QString text)
{
    mUpdateDialog->setDiscoverNewestVersionInfo(text);
}

int MainWindow::execDelPopupView()
{
    DeletePopupDialog* dialog = DeletePopupDialog::getInstance(this);
    dialog->centreOver(this);
    return dialog->toExec() == QDialog::Accepted ? 1 : 0;
}
