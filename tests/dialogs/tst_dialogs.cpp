#include "Http/HttpManager.h"
#include "LocalHttpServer.h"
#include "Platform/AppAutoRunUtils.h"
#include "RecordingAppLauncher.h"
#include "Screenshot.h"
#include "Utils/AppVersion.h"
#include "Widget/Common/DeletePopupDialog.h"
#include "Widget/Common/MessageDialog.h"
#include "Widget/Common/WindowLook.h"
#include "Widget/Common/ZorvaneMessageDialog.h"
#include "Widget/Console/AboutUsDialog.h"
#include "Widget/Console/AppAutoRunDialog.h"
#include "Widget/Console/ExplainDialog.h"
#include "Widget/Console/FeedbackDialog.h"
#include "Widget/Console/UpdateDialog.h"
#include "WidgetPresenter/FeedbackPresenter.h"
#include "WidgetPresenter/UpdatePresenter.h"

#include <QCheckBox>
#include <QCryptographicHash>
#include <QFileInfo>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTextBrowser>
#include <QtTest>

namespace {

const QString kDownloadPath = QStringLiteral("/BelmorZorvaneV2Mac/version/appDownload");
const QString kFeedbackPath = QStringLiteral("/BelmorZorvaneV2Mac/feedback/upload");

VersionInfo version(const QString& text, const QString& notes = QString())
{
    VersionInfo vi;
    vi.version = text;
    vi.description = notes;
    return vi;
}

// Runs a modal dialog and presses one of its buttons once it is up.
int execAndClick(QDialog* dialog, QPushButton* button)
{
    QTimer::singleShot(0, button, [button] { QTest::mouseClick(button, Qt::LeftButton); });
    return dialog->exec();
}

}  // namespace

class TestDialogs : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void updateClosedOrDestroyedMidDownload();
    void updateOfferEndsTheAutoRunQuestion();
    void autoRunAnswer();
    void feedbackWarningsAndFarewell();
    void messageBoxesAnswer();
    void bubbleAndPicture();
    void cardShapeAndDrag();
    void screenshots();

private:
    LocalHttpServer mServer;
    std::unique_ptr<HttpManager> mHttp;
};

void TestDialogs::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(mServer.start());
    mHttp = std::make_unique<HttpManager>(HttpRequest::getInstance(), mServer.url(), mServer.url());
}

void TestDialogs::updateClosedOrDestroyedMidDownload()
{
    RecordingAppLauncher launcher;
    UpdateDialog dialog(nullptr, mHttp.get(), &launcher);
    int quits = 0;
    dialog.presenter()->setQuit([&quits] { ++quits; });
    QStringList handed;
    dialog.presenter()->setInstaller([&handed](const QString& path) {
        handed << path;
        return PackageInstaller::Command{{QStringLiteral("true")}, false};
    });
    // Any other version is new, an older one too; "#" separates the lines of the notes.
    dialog.onVersion(version(QStringLiteral("0.1")));
    QCOMPARE(dialog.currentIndex(), 1);
    dialog.onVersion(version(QStringLiteral("2.9.0.0"), QStringLiteral("更快#更稳")));
    QCOMPARE(dialog.findChild<QTextBrowser*>()->toPlainText(),
             QStringLiteral("发现新版本:2.9.0.0\n更快\n更稳"));

    // Closed by the window while the installer is on its way: the transfer stops, nothing is
    // handed over, and the offer waits for the next try.
    mServer.setAnswer(kDownloadPath, {200, QByteArray(4096, 'x'), 3000, "application/octet-stream"});
    dialog.show();
    QTest::mouseClick(dialog.button(QStringLiteral("update")), Qt::LeftButton);
    QCOMPARE(dialog.currentIndex(), 2);
    QCOMPARE(dialog.findChild<QProgressBar*>()->maximum(), 100);
    QTest::qWait(100);
    dialog.close();
    QVERIFY(dialog.isHidden());
    QTRY_COMPARE(dialog.currentIndex(), 1);
    QTest::qWait(200);
    QCOMPARE(quits, 0);
    QVERIFY(handed.isEmpty());

    // The retry after the cancel goes through to the hand-over.
    mServer.setAnswer(kDownloadPath, {200, QByteArray(50000, 'x'), 0, "application/octet-stream"});
    dialog.show();
    QTest::mouseClick(dialog.button(QStringLiteral("update")), Qt::LeftButton);
    QTRY_VERIFY(dialog.isHidden());
    QTRY_COMPARE(quits, 1);
    QCOMPARE(dialog.findChild<QProgressBar*>()->maximum(), 50000);

    // A dialog that goes away with the download running leaves no reply behind to call it.
    mServer.setAnswer(kDownloadPath, {200, QByteArray(4096, 'x'), 1000, "application/octet-stream"});
    auto* doomed = new UpdateDialog(nullptr, mHttp.get(), &launcher);
    doomed->onVersion(version(QStringLiteral("3.0")));
    doomed->presenter()->onButtonUpdate();
    QTest::qWait(100);
    delete doomed;
    QTest::qWait(1500);
    QCOMPARE(handed.size(), 1);
    QVERIFY(launcher.log.isEmpty());
}

void TestDialogs::updateOfferEndsTheAutoRunQuestion()
{
    AppAutoRunDialog* question = AppAutoRunDialog::getInstance(nullptr);
    question->setCheckAppAutoRun(true);
    question->show();
    QSignalSpy finished(question, &QDialog::finished);
    mServer.setAnswer(kDownloadPath, {404, "", 0, "text/plain"});
    UpdateDialog dialog(nullptr, mHttp.get());
    dialog.onVersion(version(QLatin1String(kAppVersion) + QLatin1Char(' ')));
    QCOMPARE(dialog.currentIndex(), 1);
    dialog.show();
    QTest::mouseClick(dialog.button(QStringLiteral("update")), Qt::LeftButton);
    // The update wins over the question, and the checked box is not taken as a yes.
    QVERIFY(question->isHidden());
    QCOMPARE(finished.count(), 1);
    QCOMPARE(finished.first().first().toInt(), 0);
    QVERIFY(!AppAutoRunUtils::getInstance()->isAppAutoRun());
    QVERIFY(!AppAutoRunUtils::isQuestionDeclined());  // asked again next time
    QTRY_COMPARE(dialog.currentIndex(), 1);

    // Declining says so to the console and hides the dialog; the up-to-date page's button too.
    QSignalSpy declined(&dialog, &UpdateDialog::signalNoUpdate);
    QTest::mouseClick(dialog.button(QStringLiteral("decline")), Qt::LeftButton);
    QCOMPARE(declined.count(), 1);
    QVERIFY(dialog.isHidden());
    dialog.onVersion(version(QLatin1String(kAppVersion)));
    QCOMPARE(dialog.currentIndex(), 0);
    dialog.show();
    QTest::mouseClick(dialog.button(QStringLiteral("ok")), Qt::LeftButton);
    QVERIFY(dialog.isHidden());
    QCOMPARE(declined.count(), 1);
}

void TestDialogs::autoRunAnswer()
{
    AppAutoRunUtils* autoRun = AppAutoRunUtils::getInstance();
    AppAutoRunDialog dialog;
    dialog.setCheckAppAutoRun(false);
    QCOMPARE(execAndClick(&dialog, dialog.submitButton()), 0);
    QVERIFY(!autoRun->isAppAutoRun());
    QVERIFY(AppAutoRunUtils::isQuestionDeclined());
    dialog.setCheckAppAutoRun(true);
    QCOMPARE(execAndClick(&dialog, dialog.submitButton()), 1);
    QVERIFY(autoRun->isAppAutoRun());
    // Forcing the end unchecks the box even when it came checked.
    dialog.forceFinishView();
    QVERIFY(!dialog.checkBox()->isChecked());
    autoRun->setAppAutoRun(false);
}

void TestDialogs::feedbackWarningsAndFarewell()
{
    mServer.setAnswer(kFeedbackPath, {200, "{\"code\":1,\"msg\":\"反馈成功\"}", 2000, "application/json"});
    FeedbackDialog dialog(nullptr, mHttp.get());
    dialog.show();
    const QString contentPrompt = dialog.contentEdit()->placeholderText();

    // Both empty: only the title is warned about.
    QTest::mouseClick(dialog.submitButton(), Qt::LeftButton);
    QCOMPARE(dialog.titleEdit()->placeholderText(), QStringLiteral("不能为空!"));
    QCOMPARE(dialog.contentEdit()->placeholderText(), contentPrompt);
    QVERIFY(dialog.farewell()->isHidden());

    // A blank is a title; the thanks come at once, without buttons, before the backend answers.
    QTest::keyClick(dialog.titleEdit(), Qt::Key_Space);
    dialog.contentEdit()->setPlainText(QStringLiteral("希望支持更多方言"));
    QTest::mouseClick(dialog.submitButton(), Qt::LeftButton);
    QVERIFY(dialog.farewell()->isVisible());
    QVERIFY(dialog.farewell()->submitButton()->isHidden());
    QVERIFY(dialog.farewell()->cancelButton()->isHidden());
    QCOMPARE(dialog.farewell()->title(), QStringLiteral("感谢您的建议, 我们将尽快处理, 此界面3秒后退出"));
    QVERIFY(dialog.isVisible());
    // A second submit meanwhile sends again and counts from the start.
    dialog.presenter()->onFeekbackResult();
    QTest::mouseClick(dialog.submitButton(), Qt::LeftButton);
    QCOMPARE(dialog.farewell()->title(), QStringLiteral("感谢您的建议, 我们将尽快处理, 此界面3秒后退出"));
    const auto sent = [this] {
        int count = 0;
        for (const LocalHttpServer::Request& r : mServer.requests()) {
            count += r.target.startsWith(kFeedbackPath.toUtf8()) ? 1 : 0;
        }
        return count;
    };
    QTRY_COMPARE(sent(), 2);

    for (int i = 0; i < FeedbackPresenter::kCountdown; ++i) {
        dialog.presenter()->onFeekbackResult();
    }
    QVERIFY(dialog.farewell()->isHidden());
    QVERIFY(dialog.isHidden());
    QVERIFY(dialog.titleEdit()->text().isEmpty());
    QVERIFY(dialog.contentEdit()->toPlainText().isEmpty());
    // The next feedback starts with the prompts again, not with the old warning.
    QVERIFY(dialog.titleEdit()->placeholderText() != QStringLiteral("不能为空!"));
}

void TestDialogs::messageBoxesAnswer()
{
    MessageDialog box;
    box.setTitle(QStringLiteral("确定吗？"));
    QCOMPARE(execAndClick(&box, box.submitButton()), 1);
    QCOMPARE(execAndClick(&box, box.cancelButton()), 0);

    DeletePopupDialog* popup = DeletePopupDialog::getInstance(nullptr);
    QVERIFY(popup->isModal());
    QCOMPARE(execAndClick(popup, popup->submitButton()), int(QDialog::Accepted));
    QCOMPARE(execAndClick(popup, popup->cancelButton()), int(QDialog::Rejected));
}

void TestDialogs::bubbleAndPicture()
{
    // The bubble floats at the bottom right without the keyboard, and a second text keeps
    // it up for the full time again.
    ZorvaneMessageDialog* bubble = ZorvaneMessageDialog::getInstance(nullptr);
    QVERIFY(bubble->windowFlags().testFlag(Qt::WindowDoesNotAcceptFocus));
    bubble->setMessageText(QStringLiteral("电量：80%"));
    const QRect area = QGuiApplication::primaryScreen()->availableGeometry();
    QCOMPARE(bubble->frameGeometry().bottomRight(), area.bottomRight());
    QTest::qWait(300);
    bubble->setMessageText(QStringLiteral("电量：79%，灵敏度：高，连接方式：蓝牙，固件版本：1.2.3"));
    QVERIFY(bubble->hideTimer()->remainingTime() > ZorvaneMessageDialog::kShowMs - 100);
    QCOMPARE(bubble->frameGeometry().bottomRight(), area.bottomRight());
    QTRY_VERIFY_WITH_TIMEOUT(bubble->isHidden(), 3000);

    // A picture that does not load keeps the one shown; a large one is fitted.
    ExplainDialog* explain = ExplainDialog::getInstance(nullptr);
    const qint64 before = explain->image().cacheKey();
    QVERIFY(!explain->setImage(QStringLiteral("/nonexistent/explain.png")));
    QCOMPARE(explain->image().cacheKey(), before);
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("big.png"));
    QImage big(1600, 900, QImage::Format_RGB32);
    big.fill(Qt::darkCyan);
    QVERIFY(big.save(path));
    QVERIFY(explain->setImage(path));
    QVERIFY(explain->image().width() <= ExplainDialog::kMaxWidth);
    QVERIFY(explain->image().height() <= ExplainDialog::kMaxHeight);
}

void TestDialogs::cardShapeAndDrag()
{
    // Without a compositor the corners are cut away rather than painted black.
    AboutUsDialog* about = AboutUsDialog::getInstance(nullptr);
    about->move(100, 100);
    about->show();
    QVERIFY(!WindowLook::compositing());
    QVERIFY(!about->mask().contains(QPoint(0, 0)));
    QVERIFY(!about->mask().contains(QPoint(about->width() - 1, about->height() - 1)));
    QVERIFY(about->mask().contains(about->rect().center()));
    QVERIFY(about->mask().contains(QPoint(about->width() / 2, 0)));

    // A click, a tremble under the drag distance, and the pointer going on with the button up
    // leave the window where it is.
    const QPoint start = about->pos();
    auto moveTo = [about](const QPoint& at, Qt::MouseButtons buttons) {
        QMouseEvent move(QEvent::MouseMove, at, about->mapToGlobal(at), Qt::NoButton, buttons,
                         Qt::NoModifier);
        QCoreApplication::sendEvent(about, &move);
    };
    QTest::mousePress(about, Qt::LeftButton, Qt::NoModifier, QPoint(150, 120));
    moveTo(QPoint(152, 121), Qt::LeftButton);
    QTest::mouseRelease(about, Qt::LeftButton, Qt::NoModifier, QPoint(152, 121));
    moveTo(QPoint(250, 200), Qt::NoButton);
    QCOMPARE(about->pos(), start);

    // Where the window manager cannot move it, the body drags the window itself.
    QTest::mousePress(about, Qt::LeftButton, Qt::NoModifier, QPoint(150, 120));
    moveTo(QPoint(180, 140), Qt::LeftButton);
    // The window has followed the pointer: the release lands on the same spot of it.
    QTest::mouseRelease(about, Qt::LeftButton, Qt::NoModifier, QPoint(150, 120));
    QCOMPARE(about->pos(), start + QPoint(30, 20));
    about->hide();
}

void TestDialogs::screenshots()
{
    SCREENSHOT_FOLDER_OR_SKIP(folder)
    // Rendered as a desktop shows them: the rounded card, transparent outside.
    auto shoot = [&folder](QWidget* window, const QString& name) {
        window->show();
        QCoreApplication::processEvents();
        QVERIFY(saveRoundedScreenshot(window, FramelessDialog::kRadius,
                                      folder + QLatin1Char('/') + name + QStringLiteral(".png")));
        window->hide();
    };
    mServer.setAnswer(kDownloadPath, {200, QByteArray(4096, 'x'), 60000, "application/octet-stream"});
    UpdateDialog update(nullptr, mHttp.get());
    update.onVersion(version(QLatin1String(kAppVersion)));
    shoot(&update, QStringLiteral("update-latest"));
    update.onVersion(
        version(QStringLiteral("2.9.0.0"), QStringLiteral("1. 识别更准确#2. 新增粤语翻译#3. 修复已知问题")));
    shoot(&update, QStringLiteral("update-offer"));
    update.presenter()->onUpdate();
    update.setProgressBarMaximum(100);
    update.setProgressBarValue(42);
    shoot(&update, QStringLiteral("update-downloading"));
    update.presenter()->onButtonCancel();

    FeedbackDialog feedback(nullptr, mHttp.get());
    shoot(&feedback, QStringLiteral("feedback"));
    feedback.setFeedbackEditTitlePlaceholderText(QStringLiteral("不能为空!"));
    shoot(&feedback, QStringLiteral("feedback-warning"));
    feedback.farewell()->setTitle(QStringLiteral("感谢您的建议, 我们将尽快处理, 此界面3秒后退出"));
    feedback.farewell()->setSubmitHidden(true);
    feedback.farewell()->setCancelHidden(true);
    shoot(feedback.farewell(), QStringLiteral("feedback-farewell"));

    MessageDialog box;
    box.setTitle(QStringLiteral("数据库无法写入，命令词未保存"));
    shoot(&box, QStringLiteral("message-dialog"));
    shoot(DeletePopupDialog::getInstance(nullptr), QStringLiteral("delete-popup"));
    ZorvaneMessageDialog::getInstance(nullptr)->setMessageText(
        QStringLiteral("电量：80%，连接方式：USB接收器"));
    shoot(ZorvaneMessageDialog::getInstance(nullptr), QStringLiteral("zorvane-message"));
    shoot(AboutUsDialog::getInstance(nullptr), QStringLiteral("about-us"));
    shoot(AppAutoRunDialog::getInstance(nullptr), QStringLiteral("app-auto-run"));
    ExplainDialog explain;
    shoot(&explain, QStringLiteral("explain"));
}

QTEST_MAIN(TestDialogs)
#include "tst_dialogs.moc"
