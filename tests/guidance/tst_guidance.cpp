#include "RecordingInputBackend.h"
#include "Utils/WinUtils.h"
#include "Widget/Notices/CalendarPhrasesDialog.h"
#include "Widget/Notices/RestDialog.h"
#include "WidgetPresenter/NoticeContent.h"

#include <QCursor>
#include <QDir>
#include <QDirIterator>
#include <QScreen>
#include <QTextBrowser>
#include <QTimer>
#include <QtTest>

class TestNoticePanels : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        mBackend.screen = QRect(0, 0, 1920, 1080);
        WinUtils::getInstance()->setBackend(&mBackend);
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

private:
    RecordingInputBackend mBackend;
};

QTEST_MAIN(TestNoticePanels)
#include "tst_guidance.moc"
