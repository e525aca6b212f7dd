#include "FakeBleTransport.h"
#include "FakeHidBackend.h"
#include "Hid/BLEManager.h"
#include "Hid/DeviceManager.h"
#include "Hid/HidManager.h"
#include "Hid/HookManager.h"
#include "Platform/WinUtils.h"
#include "RecordingInputBackend.h"
#include "Screenshot.h"
#include "Widget/Panels/FocusFollowDialog.h"
#include "Widget/Panels/InputDialog.h"
#include "Widget/Panels/NoFocusFollowDialog.h"
#include "Widget/Panels/PaddleWordsDialog.h"

#include <QCursor>
#include <QDir>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QtTest>

// The voice strip over the real voice presenter and the real panels, offscreen.
class TestInputDialog : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void hideKeepsTheStripUnderTheCursor();
    void levelSteps();
    void boxFollowsTheTextWidth();
    void languageAndFaces();
    void forceFinishLeavesWhatIsNotOpen();
    void toolbarRules();
    void menuFollowsTheMouseKind();
    void screenshots();

private:
    void showStrip()
    {
        mStrip->toShow();
        QTRY_VERIFY(mStrip->isVisible());
    }

    RecordingInputBackend mBackend;
    FakeHidBackend mHidBackend;
    HidManager mHid{&mHidBackend};
    FakeBleTransport mBleTransport;
    BLEManager mBle{&mBleTransport, nullptr};
    DeviceManager mDevice{&mHid, &mBle};
    InputDialog* mStrip = nullptr;
};

void TestInputDialog::initTestCase()
{
    mBackend.screen = QRect(0, 0, 1280, 800);
    WinUtils::getInstance()->setBackend(&mBackend);
    InputPresenter::Collaborators voice;
    voice.device = &mDevice;
    voice.hook = HookManager::getInstance();
    mStrip = InputDialog::getInstance(nullptr, &voice);
    QVERIFY(mStrip->isHidden());
    QCOMPARE(mStrip->size(), QSize(840, 54));
    QVERIFY(mStrip->windowFlags() & Qt::WindowDoesNotAcceptFocus);
}

void TestInputDialog::hideKeepsTheStripUnderTheCursor()
{
    showStrip();
    // Two pixels inside the bottom right corner of the screen.
    QCOMPARE(mStrip->geometry().bottomRight(), QPoint(1277, 797));
    mStrip->setContent(QStringLiteral("打开计算器"));
    QCOMPARE(mStrip->shownText(), QStringLiteral("打开计算器"));
    QVERIFY(mStrip->widthTimer()->isActive());

    QCursor::setPos(mStrip->textBox()->mapToGlobal(QPoint(20, 20)));
    QVERIFY(mStrip->isOnMouseEnter());
    mStrip->toHide();
    QVERIFY(mStrip->isVisible());
    QVERIFY(mStrip->shownText().isEmpty());
    QVERIFY(!mStrip->widthTimer()->isActive());

    QCursor::setPos(QPoint(10, 10));
    QVERIFY(!mStrip->isOnMouseEnter());
    mStrip->toHide();
    QVERIFY(mStrip->isHidden());
}

void TestInputDialog::levelSteps()
{
    showStrip();
    mStrip->changeVolume(12);
    QCOMPARE(mStrip->barValue(), 12);
    QVERIFY(mStrip->barLabel()->isVisible());
    mStrip->changeVolume(4);
    QVERIFY(mStrip->barLabel()->isVisible());
    QVERIFY(!mStrip->barLabel()->pixmap(Qt::ReturnByValue).isNull());
    QCOMPARE(mStrip->barLabel()->pixmap(Qt::ReturnByValue).toImage(),
             QPixmap(QStringLiteral(":/strip/voice_search_btn_mic_white4.svg")).toImage());
    mStrip->changeVolume(3);
    QVERIFY(mStrip->barLabel()->isHidden());
    mStrip->changeVolume(0);
    QCOMPARE(mStrip->barValue(), 0);
    mStrip->toHide();
}

void TestInputDialog::boxFollowsTheTextWidth()
{
    showStrip();
    const QFontMetrics metrics(mStrip->textBox()->font());
    auto textOfWidth = [&metrics](int width) {
        QString text;
        while (metrics.horizontalAdvance(text + QLatin1Char('m')) + 20 <= width) {
            text += QLatin1Char('m');
        }
        return text;
    };
    // Short text: the box keeps its 280.
    mStrip->setContent(textOfWidth(260));
    mStrip->onTimerWidth();
    QCOMPARE(mStrip->textBox()->width(), 280);

    // Longer: the box grows to the left, the frame moves with it, the right edge stays.
    mStrip->setContent(textOfWidth(400));
    const int right = mStrip->textBox()->geometry().right();
    mStrip->onTimerWidth();
    QTRY_VERIFY(mStrip->textBox()->width() > 380);
    QCOMPARE(mStrip->textBox()->geometry().right(), right);
    QCOMPARE(mStrip->frame()->geometry().right() + 1, mStrip->textBox()->geometry().left());

    // Beyond the widest box nothing moves.
    const int before = mStrip->textBox()->width();
    mStrip->setContent(textOfWidth(900) + QStringLiteral("mmmmmmmm"));
    mStrip->onTimerWidth();
    QTest::qWait(20);
    QCOMPARE(mStrip->textBox()->width(), before);
    mStrip->toHide();
    QCOMPARE(mStrip->textBox()->width(), 280);
}

void TestInputDialog::languageAndFaces()
{
    mStrip->setTextLanguageText(QStringLiteral("粤语"));
    QCOMPARE(mStrip->languageImage(), QStringLiteral("language_cantonese.svg"));
    mStrip->setTextLanguageText(QStringLiteral("日语"));
    QCOMPARE(mStrip->languageImage(), QStringLiteral("language_cantonese.svg"));
    mStrip->setTextLanguageText(QStringLiteral("普通话"));
    QCOMPARE(mStrip->languageImage(), QStringLiteral("language_chinese.svg"));
    QCOMPARE(mStrip->getVolumeSample(), 40);
}

void TestInputDialog::forceFinishLeavesWhatIsNotOpen()
{
    // Nothing open: nothing to do, and nothing scheduled.
    mStrip->forceFinish();
    QTest::qWait(60);
    QVERIFY(mStrip->isHidden());

    // The strip open, the cursor elsewhere: everything closes.
    showStrip();
    QCursor::setPos(QPoint(5, 5));
    mStrip->forceFinish();
    QTRY_VERIFY(mStrip->isHidden());

    // The cursor on the strip: a click there is no click outside.
    showStrip();
    QCursor::setPos(mStrip->textBox()->mapToGlobal(QPoint(10, 10)));
    mStrip->forceFinish();
    QTest::qWait(60);
    QVERIFY(mStrip->isVisible());
    QCursor::setPos(QPoint(5, 5));
    mStrip->toHide();
}

void TestInputDialog::toolbarRules()
{
    mBackend.windowClass = QStringLiteral("gedit");
    QVERIFY(mStrip->isShowPaddlewordsView());
    mBackend.windowClass = QStringLiteral("XLMAIN");
    QVERIFY(!mStrip->isShowPaddlewordsView());
    mBackend.windowClass = QStringLiteral("gedit");
    mStrip->onMouseEnterMainwindow();
    QVERIFY(!mStrip->isShowPaddlewordsView());
    mStrip->onMouseLeaveMainwindow();
    QVERIFY(mStrip->isShowPaddlewordsView());
    QVERIFY(!mStrip->isPaddleWords());
}

void TestInputDialog::menuFollowsTheMouseKind()
{
    QMenu* menu = mStrip->contextMenu();
    QCOMPARE(menu->actions().size(), 3);
    emit menu->aboutToShow();
    QAction* singleClick = menu->findChild<QAction*>(QStringLiteral("singleClick"));
    QVERIFY(singleClick != nullptr && singleClick->isVisible());
    // Removing the punctuation reaches the preferences through the presenter.
    menu->actions().first()->trigger();
    QVERIFY(mStrip->presenter()->isDelSign());
    menu->actions().first()->trigger();
    QVERIFY(!mStrip->presenter()->isDelSign());
}

void TestInputDialog::screenshots()
{
    SCREENSHOT_FOLDER_OR_SKIP(folder)
    auto shoot = [this, &folder](const QString& name) {
        QCoreApplication::processEvents();
        const QRect body = mStrip->mask().boundingRect();
        QImage image = screenshotCanvas(mStrip, body.size());
        QPainter painter(&image);
        painter.setClipRegion(mStrip->mask().translated(-body.topLeft()));
        mStrip->render(&painter, QPoint(), QRegion(body));
        painter.end();
        QVERIFY(image.save(folder + QStringLiteral("/strip-") + name + QStringLiteral(".png")));
    };
    QCursor::setPos(QPoint(5, 5));
    showStrip();
    shoot(QStringLiteral("listening"));
    mStrip->changeVolume(9);
    mStrip->setContent(QStringLiteral("打开浏览器搜索今天的天气"));
    mStrip->onTimerWidth();
    QTest::qWait(400);
    shoot(QStringLiteral("text"));
    // A search the backend could not read: the text goes, the face stays.
    mStrip->setVoiceSearchViewStyle(1);
    mStrip->setContent(QString());
    mStrip->showFace(1);
    shoot(QStringLiteral("face"));
    mStrip->toHide();
}

QTEST_MAIN(TestInputDialog)
#include "tst_inputdialog.moc"
