#include "Database/DBManager.h"
#include "FakeBleTransport.h"
#include "FakeHidBackend.h"
#include "Hid/BLEManager.h"
#include "Hid/DeviceManager.h"
#include "Hid/HidManager.h"
#include "Hid/HookManager.h"
#include "Platform/AppAutoRunUtils.h"
#include "Screenshot.h"
#include "Utils/PreferencesUtils.h"
#include "Widget/Common/DeletePopupDialog.h"
#include "Widget/Common/MessageDialog.h"
#include "Widget/Console/AppAutoRunDialog.h"
#include "Widget/Console/MainWindow.h"
#include "Widget/Console/SystemTray.h"
#include "Widget/Console/UpdateDialog.h"
#include "Widget/LineEdit.h"
#include "Widget/Notices/LowbatDialog.h"
#include "Widget/Panels/InputDialog.h"
#include "Widget/Translations.h"
#include "WidgetPresenter/DeviceLifecycle.h"

#include <QAbstractItemView>
#include <QAbstractScrollArea>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QStackedWidget>
#include <QStyleOptionButton>
#include <QTableWidget>
#include <QTimer>
#include <QToolButton>
#include <QTranslator>
#include <QtTest>

// The console window over the real presenter, a fake receiver and the real database, on the
// offscreen platform. One window for the whole run, as in the program.
class TestMainWindow : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void closeHidesAndSaysOnceQuitAsks();
    void leaveWithAnOpenListSaysNothing();
    void languageBoxesReachThePreferencesOnlyOnAChange();
    void restTimeFromThePresenterLeavesTheWorkClock();
    void speedButtonsAnswerClicksNotReports();
    void commandWordsAddEditDelete();
    void commandTypesBringTheirSamples();
    void tabReachesEveryControlOfEveryPage();
    void keysChoosePagesAndActLikeClicks();
    void lowbatViewIsLeftAloneWhileShown();
    void brokenHomePictureKeepsTheShownOne();
    void offlineIsSaidOnTheHomePage();
    void englishTextsFitTheirControls();
    void screenshots();

private:
    // Runs fn on the next modal dialog that opens, once it is up.
    static void onNextModal(const std::function<void(QWidget*)>& fn)
    {
        QTimer::singleShot(0, qApp, [fn] {
            QTRY_VERIFY(QApplication::activeModalWidget() != nullptr);
            fn(QApplication::activeModalWidget());
        });
    }
    // A key as the keyboard gives it: to the focused control, shortcuts first.
    static void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QWidget* target = QApplication::focusWidget();
        QVERIFY(target != nullptr);
        QTest::keyClick(target, Qt::Key(key), modifiers);
    }
    void activate()
    {
        mWindow->show();
        // The offscreen platform activates nothing by itself.
        QApplication::setActiveWindow(mWindow);
        QVERIFY(QTest::qWaitForWindowActive(mWindow));
    }
    UserPreferences preferences() const { return PreferencesUtils::getInstance()->getUserPreferences(); }

    FakeHidBackend mBackend;
    HidManager mHid{&mBackend};
    FakeBleTransport mBleTransport;
    BLEManager mBle{&mBleTransport, nullptr};
    DeviceManager mDevice{&mHid, &mBle};
    MainWindow* mWindow = nullptr;
};

void TestMainWindow::initTestCase()
{
    AppAutoRunUtils* autoRun = AppAutoRunUtils::getInstance();
    autoRun->setAppAutoRun(false);
    MainWindowPresenter::Collaborators c;
    c.device = &mDevice;
    c.db = DBManager::getInstance();
    c.autoRun = autoRun;
    c.screenWidth = [] { return 1440; };

    // The voice side hears the same mouse; it needs no engine here.
    InputPresenter::Collaborators voice;
    voice.device = &mDevice;
    voice.hook = HookManager::getInstance();
    mWindow = MainWindow::getInstance(nullptr, &c, &voice);
    // Autostart off: the question stands alone first, once the window exists; meanwhile the
    // program runs on and the tray's 退出 is heard.
    mWindow->showAtStart();
    AppAutoRunDialog* question = AppAutoRunDialog::getInstance(nullptr);
    QVERIFY(question->isVisible());
    QVERIFY(question->checkBox()->isChecked());
    QVERIFY(!mWindow->isVisible());
    QTimer::singleShot(0, mWindow, [this] {
        mWindow->systemTray()->menu()->actions().constLast()->trigger();
        mWindow->quitQuestion()->submitButton()->click();
    });
    QCOMPARE(QCoreApplication::exec(), 0);
    question->submitButton()->click();
    QVERIFY(question->isHidden());
    QVERIFY(mWindow->isVisible());
    QVERIFY(autoRun->isAppAutoRun());
    QCOMPARE(mWindow->getCurrentStackedWidgetIndex(), 0);
}

void TestMainWindow::closeHidesAndSaysOnceQuitAsks()
{
    const auto closedHints = [] {
        QList<MessageDialog*> shown;
        for (QWidget* w : QApplication::topLevelWidgets()) {
            if (w->objectName() == QLatin1String("closedHint") && w->isVisible()) {
                shown << static_cast<MessageDialog*>(w);
            }
        }
        return shown;
    };
    // The title bar's cross closes as the window manager's close does: hidden, still running,
    // and the first time the user is told where the program went (no tray here).
    Ui_MainWindow& ui = mWindow->widgets();
    mWindow->show();
    QVERIFY(mWindow->isShow());
    ui.buttonClose->click();
    QVERIFY(!mWindow->isVisible());
    QVERIFY(mWindow->presenter()->lifecycle()->isDeviceControllerRunning());
    QCOMPARE(closedHints().size(), 1);
    MessageDialog* hint = closedHints().constFirst();
    QVERIFY(hint->title().contains(QStringLiteral("再次启动 Zorvane")));
    QVERIFY(hint->height() >= hint->heightForWidth(hint->width()));  // the whole text shows
    hint->submitButton()->click();
    QVERIFY(PreferencesUtils::getInstance()->wasSaid(QStringLiteral("consoleClosed")));
    // A voice key press leaves a closed console closed, and puts a shown one aside.
    mWindow->inputDialog()->hideMainWindows();
    QVERIFY(!mWindow->isVisible());

    // Navigation shows the window again on the page asked for.
    mWindow->onShowMainView(3);
    QVERIFY(mWindow->isShow());
    QCOMPARE(mWindow->getCurrentStackedWidgetIndex(), 3);
    QVERIFY(mWindow->widgets().navButtons[3]->isChecked());
    mWindow->inputDialog()->hideMainWindows();
    QVERIFY(mWindow->isMinimized());
    mWindow->onShowMainView(3);
    // Said once: the next close is silent.
    QVERIFY(!mWindow->close());
    QVERIFY(closedHints().isEmpty());
    mWindow->onShowMainView(3);

    // 退出 in the menu asks first; "取消" leaves everything running.
    QAction* quit = mWindow->menu()->actions().constLast();
    QCOMPARE(quit->text(), QStringLiteral("退出"));
    quit->trigger();
    QVERIFY(mWindow->quitQuestion()->isVisible());
    QVERIFY(mWindow->quitQuestion()->title().contains(QStringLiteral("语音听写将停止")));
    QCOMPARE(mWindow->quitQuestion()->geometry().center(), mWindow->geometry().center());
    mWindow->quitQuestion()->cancelButton()->click();
    QTRY_VERIFY(mWindow->quitQuestion() == nullptr);
    QVERIFY(mWindow->isShow());

    // Quitting from the add page leaves the form clean and the table showing.
    mWindow->recvMenuSiganl(Ui_MainWindow::AddCommandPage);
    ui.addForm.command->setText(QStringLiteral("半截"));
    QTimer::singleShot(0, mWindow, [this, quit] {
        quit->trigger();
        mWindow->quitQuestion()->submitButton()->click();
    });
    QCOMPARE(QCoreApplication::exec(), 0);
    QCOMPARE(mWindow->getCurrentStackedWidgetIndex(), int(Ui_MainWindow::CommandPage));
    QVERIFY(ui.addForm.command->text().isEmpty());
}

void TestMainWindow::leaveWithAnOpenListSaysNothing()
{
    mWindow->show();
    QSignalSpy enter(mWindow, &MainWindow::signalsMouseEnter);
    QSignalSpy leave(mWindow, &MainWindow::signalsMouseLeave);
    QEvent enterEvent(QEvent::Enter);
    QEvent leaveEvent(QEvent::Leave);
    QCoreApplication::sendEvent(mWindow, &enterEvent);
    QCOMPARE(enter.count(), 1);

    QComboBox* box = mWindow->widgets().comboTextTranslate;
    mWindow->recvMenuSiganl(Ui_MainWindow::AppSettingsPage);
    box->showPopup();
    QTRY_VERIFY(box->view()->isVisible());
    QCoreApplication::sendEvent(mWindow, &leaveEvent);
    QCOMPARE(leave.count(), 0);
    box->hidePopup();
    QTRY_VERIFY(!box->view()->isVisible());
    QCoreApplication::sendEvent(mWindow, &leaveEvent);
    QCOMPARE(leave.count(), 1);
}

void TestMainWindow::languageBoxesReachThePreferencesOnlyOnAChange()
{
    QSignalSpy saved(PreferencesUtils::getInstance(), &PreferencesUtils::signalPreferencesChange);
    const int current = mWindow->widgets().comboDictationLanguage->currentIndex();
    mWindow->setComboDictationLanguageCurrentIndex(current);
    QCOMPARE(saved.count(), 0);

    // A picker choosing Cantonese: both dictation boxes and the source box follow; written
    // Chinese stays the target, so the pair is remembered.
    mWindow->setComboDictationLanguageCurrentIndex(1);
    QVERIFY(saved.count() >= 1);
    QCOMPARE(preferences().recognitionLanguage, 1);
    QCOMPARE(preferences().voiceTranslateTargetLanguage, 0);
    QCOMPARE(preferences().lastVoiceTranslateSourceLanguage, 1);
    QCOMPARE(mWindow->widgets().comboDictationLanguageHome->currentIndex(), 1);
    QCOMPARE(mWindow->widgets().comboVoiceTranslateSrc->currentIndex(), 1);

    // The user's own choice in a box lands the same way, and settles after one save.
    saved.clear();
    mWindow->widgets().comboTextTranslate->setCurrentIndex(6);
    QCOMPARE(preferences().textTranslateLanguage, 6);
    QCOMPARE(saved.count(), 1);
}

void TestMainWindow::restTimeFromThePresenterLeavesTheWorkClock()
{
    MainWindowPresenter* p = mWindow->presenter();
    mWindow->widgets().comboRestTime->setCurrentIndex(3);  // "1小时"
    QCOMPARE(preferences().restRemind, 1);
    QCOMPARE(preferences().workTime, 3600000);
    QTimer* clock = p->timer(MainWindowPresenter::TimerWorkTime);
    p->onWorkInput();
    QVERIFY(clock->isActive());
    // Shown from the preferences, not chosen: the running period goes on.
    mWindow->setComboRestTime(0);
    QVERIFY(clock->isActive());
    QCOMPARE(preferences().workTime, 3600000);
    mWindow->widgets().comboRestTime->setCurrentIndex(4);  // "不提醒"
    QCOMPARE(preferences().restRemind, 0);
    QVERIFY(!clock->isActive());
}

void TestMainWindow::speedButtonsAnswerClicksNotReports()
{
    Ui_MainWindow& ui = mWindow->widgets();
    MainWindowPresenter* p = mWindow->presenter();
    mWindow->setVipFunction(false);
    QVERIFY(ui.radioLevel[3]->isHidden());
    mWindow->setVipFunction(true);
    QVERIFY(!ui.radioLevel[3]->isHidden());

    // A report lights a button and chooses nothing.
    p->lifecycle()->onDeviceDpi(2);
    QVERIFY(ui.radioLevel[0]->isChecked());
    const int target = p->lifecycle()->deviceStatus().targetDpi;
    mWindow->setDeviceRadioLevel2Checked(true);
    QCOMPARE(p->lifecycle()->deviceStatus().targetDpi, target);
    // The user's click on "快速" is level 1.
    ui.radioLevel[2]->click();
    QCOMPARE(p->lifecycle()->deviceStatus().targetDpi, 1);
    QCOMPARE(preferences().dpiValue, 1);

    // The mouse gone: nothing lit and nothing to click. A switch the mouse has not reported
    // yet goes from unknown to on, and never back to unknown.
    mWindow->showMouseSettingsUnknown();
    QVERIFY(!ui.frameResolution->isEnabled() && !ui.lowbat.onOff->isEnabled());
    QVERIFY(!ui.radioLevel[2]->isChecked());
    mWindow->setCheckShakeOnOffEnabled(true);
    QCOMPARE(ui.shake.onOff->checkState(), Qt::PartiallyChecked);
    ui.shake.onOff->click();
    QVERIFY(p->lifecycle()->deviceStatus().shake.target);
    ui.shake.onOff->click();
    QCOMPARE(ui.shake.onOff->checkState(), Qt::Unchecked);
    QVERIFY(!p->lifecycle()->deviceStatus().shake.target);

    mWindow->setCpiValue(1440 / 1.2);
    QCOMPARE(ui.labelCpi->text(), QStringLiteral("1200 DPI"));
    mWindow->setCpiValue(2000);
    QVERIFY(!ui.labelCpi->text().contains(QLatin1Char('0')));
}

void TestMainWindow::commandWordsAddEditDelete()
{
    Ui_MainWindow& ui = mWindow->widgets();
    MainWindowPresenter* p = mWindow->presenter();
    ui.buttonAddCommand->click();
    QCOMPARE(mWindow->getCurrentStackedWidgetIndex(), int(Ui_MainWindow::AddCommandPage));

    // Two characters ending in a full stop are one: refused, nothing stored.
    ui.addForm.command->setText(QStringLiteral("打。"));
    ui.addForm.content->setText(QStringLiteral("https://example.org"));
    ui.addForm.submit->click();
    QCOMPARE(ui.addForm.warning->text(), QStringLiteral("* 命令词长度必须要大于一个字！！！"));
    QCOMPARE(mWindow->getCurrentStackedWidgetIndex(), int(Ui_MainWindow::AddCommandPage));
    QVERIFY(p->getCommandWords().isEmpty());
    QMetaObject::invokeMethod(p->timer(MainWindowPresenter::TimerWarningHint), "timeout");
    QVERIFY(ui.addForm.warning->text().isEmpty());

    ui.addForm.command->setText(QStringLiteral("打开主页"));
    ui.addForm.submit->click();
    QCOMPARE(mWindow->getCurrentStackedWidgetIndex(), int(Ui_MainWindow::CommandPage));
    QVERIFY(ui.addForm.command->text().isEmpty());
    QCOMPARE(ui.tableCustom->rowCount(), 1);
    QCOMPARE(ui.tableCustom->item(0, 1)->text(), QStringLiteral("打开主页"));
    QCOMPARE(ui.tableCustom->item(0, 2)->toolTip(), QStringLiteral("https://example.org"));

    // A shortcut word: the captured chord is shown and stored.
    ui.buttonAddCommand->click();
    ui.addForm.type->setCurrentIndex(3);
    ui.addForm.command->setText(QStringLiteral("全部选中"));
    QTest::keyPress(ui.addForm.content, Qt::Key_Control, Qt::ControlModifier);
    QTest::keyPress(ui.addForm.content, Qt::Key_A, Qt::ControlModifier);
    QTest::keyRelease(ui.addForm.content, Qt::Key_A, Qt::ControlModifier);
    // A release of a key pressed before the box had the keyboard leaves the chord alone.
    QTest::keyRelease(ui.addForm.content, Qt::Key_Shift, Qt::NoModifier);
    QCOMPARE(ui.addForm.content->text(), QStringLiteral("Control+A"));
    ui.addForm.submit->click();
    QCOMPARE(p->getCommandWords().size(), 2);
    QCOMPARE(p->getCommandWords().first().type, 3);
    QVERIFY(!p->getCommandWords().first().pro.isEmpty());

    // Edit without a selection says so; with one, the page opens on the row's word.
    ui.tableCustom->clearSelection();
    ui.tableCustom->setCurrentCell(-1, -1);
    ui.buttonEditCommand->click();
    QCOMPARE(ui.labelCommandWarning->text(), QStringLiteral("请选择要编辑的命令词！"));
    ui.tableCustom->selectRow(1);
    ui.buttonEditCommand->click();
    QCOMPARE(mWindow->getCurrentStackedWidgetIndex(), int(Ui_MainWindow::EditCommandPage));
    QCOMPARE(ui.editForm.type->currentIndex(), 0);
    QCOMPARE(ui.editForm.command->text(), QStringLiteral("打开主页"));
    ui.editForm.content->clear();
    ui.editForm.submit->click();
    QCOMPARE(ui.editForm.warning->text(), QStringLiteral("* 内容不能为空！！！"));
    ui.editForm.content->setText(QStringLiteral("https://example.com"));
    ui.editForm.command->setText(QStringLiteral("打开网站"));
    ui.editForm.submit->click();
    QCOMPARE(mWindow->getCurrentStackedWidgetIndex(), int(Ui_MainWindow::CommandPage));
    QCOMPARE(ui.tableCustom->item(1, 1)->text(), QStringLiteral("打开网站"));

    // Delete asks first: a refusal keeps both, a yes removes the selected one.
    ui.tableCustom->selectRow(0);
    onNextModal([](QWidget* modal) { qobject_cast<DeletePopupDialog*>(modal)->cancelButton()->click(); });
    ui.buttonDelCommand->click();
    QCOMPARE(p->getCommandWords().size(), 2);
    ui.tableCustom->selectRow(0);
    onNextModal([](QWidget* modal) { qobject_cast<DeletePopupDialog*>(modal)->submitButton()->click(); });
    ui.buttonDelCommand->click();
    QCOMPARE(p->getCommandWords().size(), 1);
    QCOMPARE(p->getCommandWords().first().keyword, QStringLiteral("打开网站"));
    QCOMPARE(ui.tableCustom->rowCount(), 1);
}

void TestMainWindow::commandTypesBringTheirSamples()
{
    Ui_MainWindow::CommandForm& form = mWindow->widgets().addForm;
    mWindow->recvMenuSiganl(Ui_MainWindow::AddCommandPage);
    // Files and programs are browsed for, a shortcut is captured, a web address typed.
    const struct {
        int type;
        bool browse;
        bool capture;
    } rows[] = {{1, true, false}, {2, true, false}, {3, false, true}, {0, false, false}, {4, true, false}};
    for (const auto& row : rows) {
        form.command->setText(QStringLiteral("旧的"));
        form.type->setCurrentIndex(row.type);
        QVERIFY(form.command->text().isEmpty());
        QCOMPARE(!form.browse->isHidden(), row.browse);
        QCOMPARE(form.content->isShortcutMode(), row.capture);
    }
}

void TestMainWindow::tabReachesEveryControlOfEveryPage()
{
    Ui_MainWindow& ui = mWindow->widgets();
    // A mouse that answered: its controls are enabled, and Tab must find them.
    mWindow->setVipFunction(true);
    mWindow->setDeviceSettingsEnabled(true);
    mWindow->setCheckShakeOnOffEnabled(true);
    activate();
    for (int page = 0; page < ui.stackedWidget->count(); ++page) {
        mWindow->recvMenuSiganl(page);
        ui.navButtons[0]->setFocus(Qt::TabFocusReason);
        QSet<QWidget*> reached;
        for (int step = 0; step < 60; ++step) {
            press(Qt::Key_Tab);
            reached << QApplication::focusWidget();
        }
        const QList<QWidget*> widgets = mWindow->findChildren<QWidget*>();
        for (QWidget* w : widgets) {
            const bool control = qobject_cast<QAbstractButton*>(w) != nullptr ||
                                 qobject_cast<QComboBox*>(w) != nullptr ||
                                 qobject_cast<QLineEdit*>(w) != nullptr || w == ui.tableCustom;
            // The lamps only show the mouse's state; the table's own parts are reached through it.
            const bool part = w->objectName() == QLatin1String("status") ||
                              qobject_cast<QAbstractScrollArea*>(w->parentWidget()) != nullptr;
            // Of a set of radio buttons Tab reaches one; the arrows move among them.
            const bool radio = qobject_cast<QRadioButton*>(w) != nullptr;
            if (radio && std::any_of(reached.cbegin(), reached.cend(),
                                     [](QWidget* r) { return qobject_cast<QRadioButton*>(r) != nullptr; })) {
                continue;
            }
            if (control && !part && w->isVisible() && w->isEnabled()) {
                QVERIFY2(reached.contains(w),
                         qPrintable(QStringLiteral("page %1: %2 %3")
                                        .arg(page)
                                        .arg(QLatin1String(w->metaObject()->className()), w->objectName())));
            }
        }
    }
}

void TestMainWindow::keysChoosePagesAndActLikeClicks()
{
    Ui_MainWindow& ui = mWindow->widgets();
    MainWindowPresenter* p = mWindow->presenter();
    activate();
    ui.navButtons[0]->setFocus(Qt::TabFocusReason);
    for (int page = 3; page >= 0; --page) {
        press(Qt::Key_1 + page, Qt::ControlModifier);
        QCOMPARE(mWindow->getCurrentStackedWidgetIndex(), page);
        QVERIFY(ui.navButtons[page]->isChecked());
    }

    // Space and Enter on a switch and a speed button are the user's clicks.
    press(Qt::Key_3, Qt::ControlModifier);
    ui.updateHint.onOff->setFocus(Qt::TabFocusReason);
    const bool hint = ui.updateHint.onOff->isChecked();
    press(Qt::Key_Space);
    QCOMPARE(ui.updateHint.status->isChecked(), !hint);
    press(Qt::Key_Return);
    QCOMPARE(ui.updateHint.status->isChecked(), hint);
    mWindow->setDeviceSettingsEnabled(true);
    press(Qt::Key_4, Qt::ControlModifier);
    ui.radioLevel[1]->setFocus(Qt::TabFocusReason);
    press(Qt::Key_Enter);
    QVERIFY(ui.radioLevel[1]->isChecked());
    QCOMPARE(p->lifecycle()->deviceStatus().targetDpi, 0);

    // Esc leaves a form as its back button does: the draft goes.
    press(Qt::Key_2, Qt::ControlModifier);
    ui.buttonAddCommand->click();
    QTest::keyClicks(ui.addForm.command, QStringLiteral("draft"));
    press(Qt::Key_Escape);
    QCOMPARE(mWindow->getCurrentStackedWidgetIndex(), int(Ui_MainWindow::CommandPage));
    QVERIFY(ui.addForm.command->text().isEmpty());
    ui.buttonPreference->click();
    press(Qt::Key_Escape);
    QCOMPARE(mWindow->getCurrentStackedWidgetIndex(), int(Ui_MainWindow::AppSettingsPage));
    // In the shortcut box Ctrl+1 and Esc are chords to capture, not the window's keys.
    press(Qt::Key_2, Qt::ControlModifier);
    ui.buttonAddCommand->click();
    ui.addForm.type->setCurrentIndex(3);
    ui.addForm.content->setFocus(Qt::TabFocusReason);
    press(Qt::Key_1, Qt::ControlModifier);
    QCOMPARE(mWindow->getCurrentStackedWidgetIndex(), int(Ui_MainWindow::AddCommandPage));
    QCOMPARE(ui.addForm.content->text(), QStringLiteral("Control+1"));
    ui.addForm.back->click();

    // On the word list Delete asks as the delete button does, and Enter edits.
    QVERIFY(ui.tableCustom->rowCount() > 0);
    const int words = p->getCommandWords().size();
    ui.tableCustom->setFocus(Qt::TabFocusReason);
    ui.tableCustom->selectRow(0);
    bool asked = false;
    onNextModal([&asked](QWidget* modal) {
        asked = true;
        qobject_cast<DeletePopupDialog*>(modal)->cancelButton()->click();
    });
    press(Qt::Key_Delete);
    QVERIFY(asked);
    QCOMPARE(p->getCommandWords().size(), words);
    activate();  // the question's window is gone; offscreen hands nothing back
    press(Qt::Key_Return);
    QCOMPARE(mWindow->getCurrentStackedWidgetIndex(), int(Ui_MainWindow::EditCommandPage));
    QCOMPARE(ui.editForm.command->text(), ui.tableCustom->item(0, 1)->text());
    press(Qt::Key_Escape);
    QCOMPARE(mWindow->getCurrentStackedWidgetIndex(), int(Ui_MainWindow::CommandPage));
}

void TestMainWindow::lowbatViewIsLeftAloneWhileShown()
{
    LowbatDialog* dialog = mWindow->lowbatDialog();
    mWindow->showLowbatView(1);
    QVERIFY(!dialog->isHidden());
    QCOMPARE(dialog->currentPage(), int(LowbatDialog::MinLowbatPage));
    mWindow->showLowbatView(3);
    QCOMPARE(dialog->currentPage(), int(LowbatDialog::MinLowbatPage));
    dialog->hide();
    mWindow->showLowbatView(3);
    QCOMPARE(dialog->currentPage(), int(LowbatDialog::ChargingPage));
    dialog->hide();

    // A check the user asks for that gets no answer (offline) never says all is up to date.
    int page = -1;
    onNextModal([&page](QWidget* modal) {
        auto* update = qobject_cast<UpdateDialog*>(modal);
        QVERIFY(update != nullptr);
        page = update->currentIndex();
        update->button(QStringLiteral("message-ok"))->click();
    });
    mWindow->onManualCheckAppVersion();
    QCOMPARE(page, 3);
}

void TestMainWindow::brokenHomePictureKeepsTheShownOne()
{
    Ui_MainWindow& ui = mWindow->widgets();
    // A picture that does not load leaves the one shown.
    const QPixmap before = ui.labelHomeImage->pixmap(Qt::ReturnByValue);
    mWindow->setHomeImage(QStringLiteral("/nonexistent/home.png"));
    QCOMPARE(ui.labelHomeImage->pixmap(Qt::ReturnByValue).cacheKey(), before.cacheKey());
}

// Without a tray (GNOME, openbox) the home page is the only place that says why the voice key
// does nothing.
void TestMainWindow::offlineIsSaidOnTheHomePage()
{
    QLabel* warning = mWindow->widgets().labelHomeWarning;
    mWindow->onShowMainView(0);
    QVERIFY(warning->isHidden());
    mWindow->presenter()->onInternetStateChange(false);
    QTRY_VERIFY(warning->isVisible());
    QVERIFY(warning->text().contains(QStringLiteral("网络未连接")));
    mWindow->presenter()->onInternetStateChange(true);
    QTRY_VERIFY(warning->isHidden());
}

void TestMainWindow::englishTextsFitTheirControls()
{
    // The console's widgets once more, in English, whose words are longer than the Chinese.
    const QList<QTranslator*> before = qApp->findChildren<QTranslator*>();
    Translations::install(Translations::English);
    QMainWindow window;
    Ui_MainWindow ui;
    ui.setupUi(&window);
    for (QTranslator* translator : qApp->findChildren<QTranslator*>()) {
        if (!before.contains(translator)) {
            QCoreApplication::removeTranslator(translator);
            delete translator;
        }
    }
    QCOMPARE(ui.navButtons[1]->text(), QStringLiteral("Commands"));
    window.show();
    for (int page = 0; page < ui.stackedWidget->count(); ++page) {
        ui.stackedWidget->setCurrentIndex(page);
        QCoreApplication::processEvents();
        for (QWidget* w : ui.central->findChildren<QWidget*>()) {
            auto* label = qobject_cast<QLabel*>(w);
            auto* button = qobject_cast<QPushButton*>(w);
            if (!w->isVisible() || (label != nullptr && (label->wordWrap() || label->text().isEmpty()))) {
                continue;
            }
            if (button != nullptr && !button->text().isEmpty()) {
                // Measured in the checked look, which the sheet may make bold and thicker-edged.
                QStyleOptionButton option;
                option.initFrom(button);
                option.text = button->text();
                option.icon = button->icon();
                option.iconSize = button->iconSize();
                QFont font = button->font();
                if (button->isCheckable()) {
                    option.state |= QStyle::State_On;
                    font.setBold(true);
                }
                const int room =
                    button->style()->subElementRect(QStyle::SE_PushButtonContents, &option, button).width();
                const int needed = QFontMetrics(font).horizontalAdvance(button->text()) +
                                   (button->icon().isNull() ? 0 : button->iconSize().width() + 4);
                QVERIFY2(needed <= room, qPrintable(button->text()));
            } else if (label != nullptr || qobject_cast<QAbstractButton*>(w) != nullptr) {
                QVERIFY2(w->sizeHint().width() <= w->width(), qPrintable(w->property("text").toString()));
            }
        }
    }
    const QHeaderView* header = ui.tableCustom->horizontalHeader();
    QVERIFY(header->sectionSizeHint(1) <= header->sectionSize(1));
}

void TestMainWindow::screenshots()
{
    SCREENSHOT_FOLDER_OR_SKIP(folder)
    mWindow->setDefaultHomeImage();
    mWindow->setDeviceTypeIcon(0);
    mWindow->setExplain(true);
    mWindow->setVipFunction(true);
    mWindow->setCpiValue(1440 / 1.2);
    mWindow->presenter()->lifecycle()->onDeviceDpi(0);
    mWindow->showLamplightModule(1);
    using Setter = void (MainWindow::*)(bool);
    for (Setter set : {&MainWindow::setCheckShakeOnOffChecked, &MainWindow::setCheckShakeStatusChecked,
                       &MainWindow::setCheckLowbatOnOffChecked, &MainWindow::setCheckLowbatStatusChecked,
                       &MainWindow::setCheckLightingEffectOnOffChecked}) {
        (mWindow->*set)(true);
    }
    const QList<QPair<QString, QString>> words = {
        {QStringLiteral("打开邮箱"), QStringLiteral("https://mail.example.org")},
        {QStringLiteral("周报"), QDir::homePath() + QStringLiteral("/文档/周报.odt")}};
    for (const auto& word : words) {
        if (mWindow->widgets().tableCustom->rowCount() < 2) {
            mWindow->widgets().buttonAddCommand->click();
            mWindow->widgets().addForm.type->setCurrentIndex(word.second.startsWith(QLatin1Char('/')) ? 1
                                                                                                      : 0);
            mWindow->widgets().addForm.command->setText(word.first);
            mWindow->widgets().addForm.content->setText(word.second);
            mWindow->widgets().addForm.submit->click();
        }
    }
    mWindow->show();
    // As a desktop shows it: the rounded window, transparent outside.
    auto shoot = [this, &folder](int page, const QString& name) {
        mWindow->recvMenuSiganl(page);
        QCoreApplication::processEvents();
        QVERIFY(saveRoundedScreenshot(mWindow, 12,
                                      folder + QStringLiteral("/console-") + name + QStringLiteral(".png")));
    };
    shoot(Ui_MainWindow::HomePage, QStringLiteral("home"));
    shoot(Ui_MainWindow::CommandPage, QStringLiteral("command-words"));
    shoot(Ui_MainWindow::AppSettingsPage, QStringLiteral("app-settings"));
    shoot(Ui_MainWindow::MouseSettingsPage, QStringLiteral("mouse-settings"));
    // The mouse gone, then back with only its module reported: nothing known yet.
    mWindow->showMouseSettingsUnknown();
    mWindow->setCheckShakeOnOffEnabled(true);
    mWindow->setDeviceSettingsEnabled(true);
    shoot(Ui_MainWindow::MouseSettingsPage, QStringLiteral("mouse-settings-unknown"));
    Ui_MainWindow::CommandForm& add = mWindow->widgets().addForm;
    add.type->setCurrentIndex(3);
    add.command->setText(QStringLiteral("全"));
    mWindow->setAddCommandWarningText(QStringLiteral("* 命令词长度必须要大于一个字！！！"));
    shoot(Ui_MainWindow::AddCommandPage, QStringLiteral("add-command"));
    mWindow->widgets().tableCustom->selectRow(0);
    mWindow->widgets().buttonEditCommand->click();
    shoot(Ui_MainWindow::EditCommandPage, QStringLiteral("edit-command"));
    shoot(Ui_MainWindow::PreferencePage, QStringLiteral("preferences"));
}

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
