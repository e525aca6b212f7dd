#include "Platform/WinUtils.h"
#include "RecordingAppLauncher.h"
#include "RecordingInputBackend.h"
#include "Screenshot.h"
#include "Widget/Notices/BLEConnentionGuidanceDialog.h"
#include "Widget/Notices/CalendarPhrasesDialog.h"
#include "Widget/Notices/RestDialog.h"
#include "WidgetPresenter/BleGuidancePresenter.h"
#include "WidgetPresenter/NoticeContent.h"

#include <QCursor>
#include <QDirIterator>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QTextBrowser>
#include <QTimer>
#include <QtTest>

namespace {

class FakeGuidanceView : public BleGuidanceView {
public:
    QList<int> pages;
    bool hidden = true;
    bool failed = false;
    QString background;
    int closes = 0;
    int settingsMissing = 0;

    void setPage(int page) override { pages << page; }
    int currentPage() override { return pages.value(pages.size() - 1, -1); }
    bool isHidden() override { return hidden; }
    void toShow() override { hidden = false; }
    void toClose() override
    {
        hidden = true;
        ++closes;
    }
    void setRegisterFailed(bool value) override { failed = value; }
    void setModelBackground(QString picture) override { background = picture; }
    void showSettingsMissing() override { ++settingsMissing; }
};

class FakeGuidanceDevice : public BleGuidanceDevice {
public:
    bool connected = false;
    int scans = 0;
    int cancels = 0;

    bool isConnected() override { return connected; }
    void scanBleDevice() override { ++scans; }
    void cancelScan() override { ++cancels; }
};

struct Wizard {
    FakeGuidanceView view;
    FakeGuidanceDevice device;
    RecordingAppLauncher launcher;
    BleGuidancePresenter presenter{&view, &device, &launcher};
};

}  // namespace

class TestGuidance : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        mBackend.screen = QRect(0, 0, 1920, 1080);
        WinUtils::getInstance()->setBackend(&mBackend);
    }

    void opensOnThePromptForTheSavedState()
    {
        Wizard first;
        first.presenter.showGuidance(QString());
        QCOMPARE(first.view.pages, QList<int>{4});
        QVERIFY(!first.view.hidden);

        Wizard saved;
        saved.presenter.showGuidance(QStringLiteral("C8:47:8C:00:00:01"));
        QCOMPARE(saved.view.pages, QList<int>{5});
        // Asked again while the user is on a later page: the page stays.
        saved.presenter.onDeviceRegister();
        saved.presenter.showGuidance(QStringLiteral("C8:47:8C:00:00:01"));
        QCOMPARE(saved.view.pages, (QList<int>{5, 1}));
    }

    // Prompt, model choice, instructions, search, then no mouse within the timeout.
    void searchRouteEndsInTheFailureText()
    {
        Wizard w;
        w.presenter.showGuidance(QString());
        w.presenter.onDeviceRegister();
        w.presenter.onChooseModel(1);
        QCOMPARE(w.view.background, QStringLiteral(":/zh_res/res_1080/BLEGuidance/ble_btn_bg3.png"));
        w.view.failed = true;  // left over from an earlier search
        w.presenter.onStartRegister();
        QCOMPARE(w.view.pages, (QList<int>{4, 1, 2, 0}));
        QVERIFY(!w.view.failed);
        QVERIFY(w.presenter.scanDelayTimer()->isActive());
        QCOMPARE(w.presenter.scanDelayTimer()->interval(), 6000);
        QCOMPARE(w.device.scans, 0);

        w.presenter.onDelayDeviceScan();
        QCOMPARE(w.device.scans, 1);
        QVERIFY(w.presenter.connectTimeoutTimer()->isActive());
        QCOMPARE(w.presenter.connectTimeoutTimer()->interval(), 30000);

        // Closing mid-search cancels the scan and its timeout; one that came anyway only flips
        // labels. Closed before the delay ran out, no search starts afterwards.
        w.presenter.onClose();
        QCOMPARE(w.device.cancels, 1);
        QVERIFY(!w.presenter.connectTimeoutTimer()->isActive());
        w.presenter.onStartRegister();
        w.presenter.onClose();
        QVERIFY(!w.presenter.scanDelayTimer()->isActive());
        w.presenter.onConnectTimeout();
        QVERIFY(w.view.failed);

        // Retry leads back to the model choice.
        w.presenter.onDeviceRegister();
        QCOMPARE(w.view.currentPage(), 1);
    }

    void aMouseTheSystemAlreadyHoldsSkipsTheSearch()
    {
        Wizard w;
        w.device.connected = true;
        w.presenter.showGuidance(QString());
        w.presenter.onDeviceRegister();
        QCOMPARE(w.view.currentPage(), 3);
        w.presenter.onNext();  // the model choice whatever the link says
        QCOMPARE(w.view.currentPage(), 1);
        w.presenter.onChooseModel(0);
        w.presenter.onStartRegister();
        QCOMPARE(w.view.pages, (QList<int>{4, 3, 1, 2, 3}));
        QVERIFY(!w.presenter.scanDelayTimer()->isActive());

        w.presenter.onChooseModel(3);  // no such button
        QCOMPARE(w.view.currentPage(), 3);
    }

    void ownMouseConnectingOnTheInstructionsMovesOn()
    {
        Wizard w;
        w.presenter.changePage(1);
        w.presenter.onSystemDeviceConnected(QStringLiteral("C8:47:8C:12:34:56"));
        QCOMPARE(w.view.currentPage(), 1);  // only from the instructions page
        w.presenter.changePage(2);
        w.presenter.onSystemDeviceConnected(QStringLiteral("AA:BB:CC:12:34:56"));
        QCOMPARE(w.view.currentPage(), 2);
        w.presenter.onSystemDeviceConnected(QStringLiteral("22:18:3A:12:34:56"));
        QCOMPARE(w.view.currentPage(), 3);
    }

    void scanRestartsOnlyWhileTheInstructionsShow()
    {
        Wizard w;
        w.presenter.changePage(2);
        w.presenter.onDeviceScanFinished();  // hidden
        w.view.hidden = false;
        w.presenter.onDeviceScanFinished();
        w.presenter.changePage(0);
        w.presenter.onDeviceScanFinished();
        QCOMPARE(w.device.scans, 1);
    }

    void bluetoothSettingsOfWhicheverDesktopIsInstalled()
    {
        Wizard w;
        w.launcher.installed =
            QStringList{QStringLiteral("blueman-manager.desktop"), QStringLiteral("kcm_bluetooth.desktop")};
        w.presenter.onOpenBluetoothSettings();
        w.launcher.installed << QStringLiteral("gnome-bluetooth-panel.desktop");
        w.presenter.onOpenBluetoothSettings();
        QCOMPARE(w.launcher.log, (QStringList{QStringLiteral("app kcm_bluetooth.desktop"),
                                              QStringLiteral("app gnome-bluetooth-panel.desktop")}));
        QCOMPARE(w.view.settingsMissing, 0);
        w.launcher.installed.clear();
        w.presenter.onOpenBluetoothSettings();
        QCOMPARE(w.view.settingsMissing, 1);
    }

    void wizardSizesAndPlacesEachPage()
    {
        FakeGuidanceDevice device;
        RecordingAppLauncher launcher;
        auto* dialog = BLEConnentionGuidanceDialog::getInstance(nullptr, &device, &launcher);
        const QRect available = QGuiApplication::primaryScreen()->availableGeometry();
        dialog->changePage(BleGuidancePresenter::PageSavedLost);
        QCOMPARE(dialog->size(), QSize(300, 168));
        QCOMPARE(dialog->geometry().center(), available.center());
        dialog->changePage(BleGuidancePresenter::PageRegistering);
        QCOMPARE(dialog->size(), QSize(1156, 405));
        QCOMPARE(dialog->geometry().bottom(), available.bottom() - 30);
        QCOMPARE(dialog->currentPage(), 0);

        // The failure text replaces the progress text, and a new search brings it back.
        dialog->show();
        const auto shown = [dialog](const QString& text) {
            for (QLabel* label : dialog->findChildren<QLabel*>()) {
                if (label->text() == text) {
                    return label->isVisibleTo(dialog);
                }
            }
            return false;
        };
        dialog->onConnectTimeout();
        QVERIFY(shown(QStringLiteral("设备注册失败, 请尝试重新注册")) &&
                !shown(QStringLiteral("正在注册...")));
        dialog->changePage(BleGuidancePresenter::PageRegistering);
        QVERIFY(!shown(QStringLiteral("设备注册失败, 请尝试重新注册")) &&
                shown(QStringLiteral("正在注册...")));

        // The cross closes and stops the search; so do Escape and the window manager's close.
        auto* cross = dialog->findChild<QPushButton*>(QStringLiteral("cross"));
        QTest::mouseClick(cross, Qt::LeftButton);
        QVERIFY(dialog->isHidden());
        QCOMPARE(device.cancels, 1);
        dialog->show();
        QTest::keyClick(dialog, Qt::Key_Escape);
        QVERIFY(dialog->isHidden());
        QCOMPARE(device.cancels, 2);
        dialog->show();
        QVERIFY(dialog->close());
        QCOMPARE(device.cancels, 3);
        BLEConnentionGuidanceDialog::resetInstanceForTest();
    }

    // Every picture the windows name is in the resources.
    void picturesAreBuiltIn()
    {
        RestDialog::getInstance();
        QStringList pictures;
        for (int page = 0; page < NoticeContent::kCalendarPageCount; ++page) {
            pictures << NoticeContent::calendarPicture(page);
        }
        for (const char* name :
             {"ble_guidance_1", "ble_guidance_2", "ble_guidance_3", "ble_guidance_4", "ble_guidance_5",
              "ble_btn_bg2", "ble_btn_bg3", "ble_btn_bg4", "rk02", "rk06", "rk08"}) {
            pictures << QStringLiteral(":/zh_res/res_1080/BLEGuidance/%1.png").arg(QLatin1String(name));
        }
        for (const QString& path : pictures) {
            QVERIFY2(!QPixmap(path).isNull(), qPrintable(path));
        }
    }

    void restPicturesGoRoundInTurn()
    {
        RestDialog* rest = RestDialog::getInstance();
        QStringList shown;
        for (int i = 0; i < 5; ++i) {
            rest->showContent();
            shown << rest->currentPicture().section(QLatin1Char('/'), -1);
            QVERIFY(!QPixmap(rest->currentPicture()).isNull());
        }
        QCOMPARE(shown, (QStringList{QStringLiteral("bg0001.png"), QStringLiteral("bg0002.png"),
                                     QStringLiteral("bg0003.png"), QStringLiteral("bg0004.png"),
                                     QStringLiteral("bg0001.png")}));
        // Placed at the bottom right, below the screen edge, ready to rise.
        QCOMPARE(rest->x(), 1920 - 384 - 2);
    }

    void calendarPageFollowsTheHour()
    {
        const QList<QPair<int, int>> hourPage = {{5, 4},  {6, 0},  {10, 0}, {11, 1}, {12, 1}, {13, 2},
                                                 {17, 2}, {18, 3}, {21, 3}, {22, 4}, {23, 4}, {0, 4}};
        for (const auto& pair : hourPage) {
            QCOMPARE(NoticeContent::calendarPageForHour(pair.first), pair.second);
        }
    }

    void calendarPhrasesAddUpOnTheirPage()
    {
        CalendarPhrasesDialog* calendar = CalendarPhrasesDialog::getInstance();
        CalendarPhrases empty;
        empty.link = QStringLiteral("https://example.test/none");
        calendar->showContentAt(empty, 11);
        QVERIFY(calendar->isHidden());
        QVERIFY(calendar->browser(1)->toPlainText().isEmpty());

        CalendarPhrases first;
        first.content = QStringLiteral("早安 <每一天>");
        first.link = QStringLiteral("https://example.test/a?x=1&y=2");
        calendar->showContentAt(first, 10);
        CalendarPhrases second = first;
        second.content = QStringLiteral("第二句");
        calendar->showContentAt(second, 10);
        QCOMPARE(calendar->currentPage(), 0);
        QTextBrowser* browser = calendar->browser(0);
        QCOMPARE(browser->document()->blockCount(), 2);
        QCOMPARE(browser->toPlainText(), QStringLiteral("早安 <每一天>\n第二句"));
        QVERIFY(browser->openExternalLinks());
        QVERIFY(browser->toHtml().contains(QStringLiteral("href=\"https://example.test/a?x=1&amp;y=2\"")));

        // A link that is no web page leaves the phrase as text: nothing to click.
        CalendarPhrases local = first;
        local.content = QStringLiteral("第三句");
        for (const QString& link : {QStringLiteral("file:///etc/passwd"), QStringLiteral("javascript:x()"),
                                    QStringLiteral("notes.html")}) {
            local.link = link;
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("no web page, left out")));
            calendar->showContentAt(local, 10);
            QVERIFY(!browser->toHtml().contains(link));
        }
        QCOMPARE(browser->toHtml().count(QStringLiteral("href=")), 2);
        QVERIFY(browser->toPlainText().endsWith(QStringLiteral("第三句")));

        // A phrase arriving while the panel is up leaves it where it is.
        calendar->setGeometry(1920 - 386, 1080 - 386, 384, 384);
        calendar->showContentAt(second, 15);
        QCOMPARE(calendar->geometry(), QRect(1920 - 386, 1080 - 386, 384, 384));
        QCOMPARE(calendar->currentPage(), 2);
    }

    // Five seconds of ticks with the pointer away sink the panel; the pointer on it restarts the count.
    void panelSinksAfterFiveSecondsAway()
    {
        RestDialog* rest = RestDialog::getInstance();
        rest->setGeometry(1920 - 386, 1080 - 386, 384, 384);
        QTimer* timer = rest->autoHideTimer();
        timer->start();
        const QPoint away(5, 5);
        QCursor::setPos(away);
        if (QCursor::pos() != away) {
            QSKIP("the platform does not move the pointer");
        }
        for (int i = 0; i < 49; ++i) {
            rest->onAutoHideTick();
        }
        QCursor::setPos(rest->geometry().center());
        rest->onAutoHideTick();
        QCursor::setPos(away);
        for (int i = 0; i < 49; ++i) {
            rest->onAutoHideTick();
        }
        QVERIFY(timer->isActive());
        rest->onAutoHideTick();
        QVERIFY(!timer->isActive());
    }

    // With ZORVANE_SCREENSHOTS set to a folder, each window and page is written there as PNG.
    void screenshots()
    {
        SCREENSHOT_FOLDER_OR_SKIP(folder)
        const auto shoot = [&folder](QWidget* window, const QString& name) {
            window->show();
            QCoreApplication::processEvents();
            QVERIFY(window->grab().save(folder + QStringLiteral("/%1.png").arg(name)));
        };
        FakeGuidanceDevice device;
        RecordingAppLauncher launcher;
        auto* wizard = BLEConnentionGuidanceDialog::getInstance(nullptr, &device, &launcher);
        const QStringList names = {QStringLiteral("registering"), QStringLiteral("models"),
                                   QStringLiteral("steps"),       QStringLiteral("connected"),
                                   QStringLiteral("first"),       QStringLiteral("saved-lost")};
        wizard->presenter()->onChooseModel(0);
        for (int page = 0; page < names.size(); ++page) {
            wizard->changePage(static_cast<BleGuidancePresenter::Page>(page));
            shoot(wizard, QStringLiteral("ble-guidance-") + names[page]);
        }
        wizard->changePage(BleGuidancePresenter::PageRegistering);
        wizard->presenter()->onConnectTimeout();
        shoot(wizard, QStringLiteral("ble-guidance-failed"));
        wizard->presenter()->onOpenBluetoothSettings();
        shoot(wizard, QStringLiteral("ble-guidance-no-settings"));
        wizard->hide();

        RestDialog* rest = RestDialog::getInstance();
        for (int i = 1; i <= 4; ++i) {
            rest->showContent();
            QTest::qWait(NoticePanel::kAnimationMs + 200);  // risen
            shoot(rest, QStringLiteral("rest-%1").arg(i));
        }
        CalendarPhrases phrase;
        phrase.content = QStringLiteral("每一个不曾起舞的日子，都是对生命的辜负。");
        phrase.link = QStringLiteral("https://example.test/phrase");
        const int hours[] = {8, 12, 15, 19, 23};
        for (int hour : hours) {
            CalendarPhrasesDialog* calendar = CalendarPhrasesDialog::getInstance();
            calendar->showContentAt(phrase, hour);
            QTest::qWait(NoticePanel::kAnimationMs + 200);
            shoot(calendar, QStringLiteral("calendar-phrases-%1").arg(calendar->currentPage() + 1));
        }
    }

private:
    RecordingInputBackend mBackend;
};

QTEST_MAIN(TestGuidance)
#include "tst_guidance.moc"
