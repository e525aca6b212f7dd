#include "FakePlayback.h"
#include "Screenshot.h"
#include "SpeechRec/SpeechSynthesisUtils.h"
#include "TranslationService.h"
#include "Widget/Panels/FocusFollowDialog.h"
#include "Widget/Panels/NoFocusFollowDialog.h"

#include <QDir>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QSignalSpy>
#include <QStackedWidget>
#include <QTextEdit>

namespace {

using Panel = FocusFollowPanelPresenter;
const QString kTranslatePath = TranslationService::path();

void setPreferences(const std::function<void(UserPreferences&)>& change)
{
    TranslationService::setPreferences(change);
}

}  // namespace

// Stands for the translation picker: a window with the picker's two mouse signals.
class FakePicker : public QWidget {
    Q_OBJECT

public:
    FakePicker() : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint) { resize(360, 78); }

signals:
    void signalsMouseEnter();
    void signalsMouseLeave();
};

// The two voice panels as windows, on the offscreen platform: pages and sizes, the boxes that
// grow with the text, the hide rules run end to end, dragging and the picker's timer.
class TestFollowWindows : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void picturesExist();
    void dictationBadgeFollowsTheCaret();
    void translationBoxesGrowWithTheText();
    void autoSendWaitsForTheTranslation();
    void failedTranslationStillCloses();
    void readingHoldsThePanel();
    void editingTakesEnterAndEatsSpace();
    void fixedPanelPlaceShiftAndDrag();
    void fixedPanelPickerCountsCursorTime();
    void fixedPanelSendsByItsButton();
    void fixedPanelSingleClickAndForceFinish();
    void hiddenPanelsRest();
    void screenshots();

private:
    template <typename Dialog>
    std::unique_ptr<Dialog> make()
    {
        return std::make_unique<Dialog>(nullptr, Panel::Collaborators{mService.http.get(), nullptr, nullptr},
                                        mSynthesis.get());
    }
    // Opens the caret panel on its result page with a source and its translation.
    void openResult(FocusFollowDialog* dialog, const QString& source);

    TranslationService mService;
    LocalHttpServer& mServer = mService.server;
    RecordingInputBackend& mDesktop = mService.desktop;
    FakePlayback mPlayback;
    std::unique_ptr<SpeechSynthesisUtils> mSynthesis;
};

void TestFollowWindows::initTestCase()
{
    mService.start();
    const QUrl nowhere(QStringLiteral("http://127.0.0.1:1/"));
    mSynthesis = std::make_unique<SpeechSynthesisUtils>(
        SpeechSynthesisWorker::Service{nowhere, nowhere, QString(), QString(), QString()}, &mPlayback);
}

void TestFollowWindows::init()
{
    mService.reset();
    mDesktop.caret = QPoint(800, 300);
    QCursor::setPos(5, 5);
}

void TestFollowWindows::openResult(FocusFollowDialog* dialog, const QString& source)
{
    dialog->setInitTranslateView();
    QTRY_VERIFY(dialog->isVisible());
    dialog->startTranslateAnimation();
    dialog->setVoiceTranslateSourceText(source);
}

void TestFollowWindows::picturesExist()
{
    for (int level = 4; level <= 12; ++level) {
        const QString png =
            level < 10 ? QStringLiteral("000%1").arg(level) : QStringLiteral("00%1").arg(level);
        QVERIFY(!QPixmap(QStringLiteral(":/zh_res/res_1080/Input/voice_search_btn_mic_white%1.png").arg(png))
                     .isNull());
        QVERIFY(
            !QPixmap(QStringLiteral(":/panels/follow/voice_search_btn_mic_blue%1.svg").arg(level)).isNull());
    }
    for (int badge = 1; badge <= 6; ++badge) {
        QVERIFY(
            !QPixmap(QStringLiteral(":/zh_res/res_1080/Input/dictation_text000%1.png").arg(badge)).isNull());
    }
}

void TestFollowWindows::dictationBadgeFollowsTheCaret()
{
    auto dialog = make<FocusFollowDialog>();
    QVERIFY(dialog->windowFlags() & Qt::WindowDoesNotAcceptFocus);
    dialog->setInitDictationView();
    QTRY_VERIFY(dialog->isVisible());
    QCOMPARE(dialog->getCurrentViewStatus(), int(Panel::DictationPage));
    QCOMPARE(dialog->pos(), QPoint(738, 300));
    QVERIFY(dialog->focusPresenter()->moveTimer().isActive());

    // The level: below 4 nothing shows, above it the bar's picture.
    dialog->startDictationAnimation();
    auto* bar = dialog->findChild<QLabel*>(QStringLiteral("levelBar0"));
    QVERIFY(bar != nullptr);
    dialog->onRecVolume(3);
    dialog->onUpdateVolume();
    QVERIFY(bar->isHidden());
    dialog->onRecVolume(9);
    dialog->onUpdateVolume();
    QVERIFY(bar->isVisible());
    QVERIFY(!bar->pixmap(Qt::ReturnByValue).isNull());

    // The caret's move reaches the panel; where it lands is the placement rule's own case.
    mDesktop.caret = QPoint(800, 1000);
    dialog->focusPresenter()->onMoveTimeout();
    QVERIFY(!dialog->arrow()->isVisible());

    dialog->toHide();
    QVERIFY(dialog->isHidden());
}

void TestFollowWindows::translationBoxesGrowWithTheText()
{
    setPreferences([](UserPreferences& p) { p.isAutoSendMode = 0; });
    auto dialog = make<FocusFollowDialog>();
    dialog->setInitTranslateView();
    QCOMPARE(dialog->size(), QSize(360, 215));
    QTRY_VERIFY(dialog->isVisible());
    QCOMPARE(dialog->getCurrentViewStatus(), int(Panel::WaitingPage));
    dialog->startTranslateAnimation();
    QCOMPARE(dialog->sourceBox()->height(), 28);

    // An enormous result neither freezes the panel nor lets it grow past two boxes of 134.
    dialog->setVoiceTranslateSourceText(QString(10000, QChar(0x4F60)));
    dialog->clearTranslateResult();  // no answer from the service in between
    QTRY_COMPARE(dialog->sourceBox()->height(), 134);
    // The empty target shrinks to its document; everything grows by what the boxes gained.
    QTRY_COMPARE(dialog->height(), 215 + 134 - 28 + dialog->targetBox()->height() - 28);
    QCOMPARE(dialog->targetBox()->y(), 38 + 134 - 28);
    dialog->setVoiceTranslateTargetText(QString(3000, QLatin1Char('x')));
    QTRY_COMPARE(dialog->targetBox()->height(), 134);
    QTRY_COMPARE(dialog->height(), 215 + 2 * (134 - 28));
    dialog->toHide();
    QVERIFY(dialog->isHidden());

    // Auto-send hides the send row and makes the page shorter.
    setPreferences([](UserPreferences& p) { p.isAutoSendMode = 1; });
    dialog->setInitTranslateView();
    QCOMPARE(dialog->size(), QSize(360, 179));
    QCOMPARE(dialog->sourceBox()->height(), 28);
    QVERIFY(!dialog->findChild<QPushButton*>(QStringLiteral("sendButton"))->isVisibleTo(dialog.get()));
}

void TestFollowWindows::autoSendWaitsForTheTranslation()
{
    auto dialog = make<FocusFollowDialog>();
    QSignalSpy stops(dialog.get(), &FocusFollowPanel::signalStopVoiceStatus);
    openResult(dialog.get(), QStringLiteral("你好"));
    // The voice key is released while the translation is still out: the panel stays.
    dialog->toHide();
    QVERIFY(dialog->isVisible());
    QCOMPARE(stops.count(), 1);
    dialog->focusPresenter()->onTranslateTimeout();
    QTRY_COMPARE(dialog->targetBox()->toPlainText(), QStringLiteral("Hello"));
    dialog->onWaitingHideTimeout();
    QVERIFY(dialog->isHidden());
    QCOMPARE(mDesktop.typedText(), QStringLiteral("Hello"));
    QVERIFY(dialog->sourceBox()->toPlainText().isEmpty());
}

void TestFollowWindows::failedTranslationStillCloses()
{
    mServer.setAnswer(TranslationService::path(), {500, QByteArray()});
    auto dialog = make<FocusFollowDialog>();
    // Released while the request is out; the failure then lets the waiting panel go.
    openResult(dialog.get(), QStringLiteral("你好"));
    dialog->toHide();
    dialog->focusPresenter()->onTranslateTimeout();
    QTRY_VERIFY(dialog->focusPresenter()->isTranslateFinish());
    dialog->onWaitingHideTimeout();
    QVERIFY(dialog->isHidden());
    // Failed before any request to hide: the next one (退出, a click outside, a press) closes it.
    openResult(dialog.get(), QStringLiteral("再见"));
    dialog->focusPresenter()->onTranslateTimeout();
    QTRY_VERIFY(dialog->focusPresenter()->isTranslateFinish());
    dialog->toHide();
    QVERIFY(dialog->isHidden());
    QVERIFY(mDesktop.typedText().isEmpty());
}

void TestFollowWindows::readingHoldsThePanel()
{
    auto dialog = make<FocusFollowDialog>();
    openResult(dialog.get(), QStringLiteral("你好"));
    dialog->focusPresenter()->onTranslateTimeout();
    QTRY_COMPARE(dialog->targetBox()->toPlainText(), QStringLiteral("Hello"));
    auto* read = dialog->findChild<QPushButton*>(QStringLiteral("readButton"));
    QVERIFY(read->isVisible());
    read->click();
    QVERIFY(dialog->isPlaying());
    dialog->toHide();
    QVERIFY(dialog->isVisible());
    // The end of the reading hides it, and delivers, after the pause.
    emit mSynthesis->speechSynthesisOver();
    QVERIFY(!dialog->isPlaying());
    dialog->onWaitingHideTimeout();
    QVERIFY(dialog->isHidden());
    QCOMPARE(mDesktop.typedText(), QStringLiteral("Hello"));

    // A target that cannot be read aloud hides the button.
    setPreferences([](UserPreferences& p) { p.voiceTranslateTargetLanguage = 5; });
    dialog->toShow();
    QVERIFY(read->isHidden());
    dialog->toHide();
}

void TestFollowWindows::editingTakesEnterAndEatsSpace()
{
    setPreferences([](UserPreferences& p) {
        p.isAutoSendMode = 1;
        p.isEnterSend = 0;
        p.isSpaceSend = 0;
    });
    auto dialog = make<FocusFollowDialog>();
    auto* send = dialog->findChild<QPushButton*>(QStringLiteral("sendButton"));
    const auto editResult = [&] {
        openResult(dialog.get(), QStringLiteral("你好"));
        dialog->focusPresenter()->onTranslateTimeout();
        QTRY_COMPARE(dialog->targetBox()->toPlainText(), QStringLiteral("Hello"));
        dialog->findChild<QPushButton*>(QStringLiteral("editButton"))->click();
    };
    editResult();
    QVERIFY(dialog->isOnEditing());
    QVERIFY(!dialog->sourceBox()->isReadOnly());
    QVERIFY(!dialog->focusPresenter()->moveTimer().isActive());
    // The send row comes back for an edit in auto-send mode.
    QVERIFY(send->isVisible());

    // With both keys off, space is eaten and Enter only ends the edit; the button sends.
    QTest::keyClick(dialog->sourceBox(), Qt::Key_Space);
    QCOMPARE(dialog->sourceBox()->toPlainText(), QStringLiteral("你好"));
    QTest::keyClick(dialog->sourceBox(), Qt::Key_Return);
    QVERIFY(dialog->sourceBox()->isReadOnly());
    QTest::keyClick(dialog->targetBox(), Qt::Key_Space);
    QVERIFY(dialog->isVisible());
    QVERIFY(mDesktop.typedText().isEmpty());
    send->click();
    QVERIFY(dialog->isHidden());
    QCOMPARE(mDesktop.typedText(), QStringLiteral("Hello"));

    // Each key sends once its setting is on: space in the middle of the edit, Enter at its end.
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return}) {
        setPreferences([key](UserPreferences& p) {
            p.isEnterSend = key == Qt::Key_Return;
            p.isSpaceSend = key == Qt::Key_Space;
        });
        mDesktop.takeLog();
        editResult();
        QTest::keyClick(dialog->sourceBox(), key);
        QVERIFY(dialog->isHidden());
        QCOMPARE(mDesktop.typedText(), QStringLiteral("Hello"));
    }

    // Sent within the edit's quiet time: the edited text's translation is what is typed.
    openResult(dialog.get(), QStringLiteral("你好"));
    dialog->focusPresenter()->onTranslateTimeout();
    QTRY_COMPARE(dialog->targetBox()->toPlainText(), QStringLiteral("Hello"));
    dialog->findChild<QPushButton*>(QStringLiteral("editButton"))->click();
    mService.answer(QStringLiteral("Goodbye"));
    dialog->sourceBox()->setPlainText(QStringLiteral("再见"));
    mDesktop.takeLog();
    send->click();
    QVERIFY(dialog->isHidden());
    QTRY_COMPARE(mDesktop.typedText(), QStringLiteral("Goodbye"));
}

void TestFollowWindows::fixedPanelPlaceShiftAndDrag()
{
    auto dialog = make<NoFocusFollowDialog>();
    QCOMPARE(dialog->pos(), QPoint(1920 - 365, 1080 - 131 - 50));
    const QPoint start = dialog->pos();
    dialog->changeView(Panel::ResultPage);
    QCOMPARE(dialog->pos(), start + QPoint(7, 0));
    dialog->changeView(Panel::DictationPage);
    QCOMPARE(dialog->pos(), start);
    dialog->changeView(Panel::MicPage);
    dialog->changeView(Panel::DictationPage);
    QCOMPARE(dialog->pos(), start);

    QTest::mousePress(dialog.get(), Qt::LeftButton, Qt::NoModifier, QPoint(100, 120));
    QMouseEvent move(QEvent::MouseMove, QPoint(60, 100), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(dialog.get(), &move);
    QTest::mouseRelease(dialog.get(), Qt::LeftButton, Qt::NoModifier, QPoint(60, 100));
    const QPoint dragged = dialog->pos();
    QVERIFY(dragged != start);
    dialog->toHide();
    // The next session opens where the user left it.
    dialog->setInitDictationView();
    QTRY_VERIFY(dialog->isVisible());
    QCOMPARE(dialog->pos(), dragged);
    QTest::keyClick(dialog.get(), Qt::Key_Escape);
    QVERIFY(dialog->isVisible());
    dialog->toHide();
}

void TestFollowWindows::fixedPanelPickerCountsCursorTime()
{
    auto dialog = make<NoFocusFollowDialog>();
    FakePicker picker;
    dialog->setLanguagePickers(&picker, nullptr);
    QSignalSpy shown(dialog.get(), &NoFocusFollowDialog::signalsShowChangeTranLanguageView);
    QSignalSpy checks(dialog.get(), &NoFocusFollowDialog::signalCheckVoiceViewStatus);
    dialog->changeView(Panel::ResultPage);
    auto* source = dialog->findChild<QLabel*>(QStringLiteral("sourceLanguage0"));
    QCOMPARE(source->text(), QStringLiteral("中"));
    QTest::mousePress(source, Qt::LeftButton);
    QVERIFY(picker.isVisible());
    QCOMPARE(shown.count(), 1);
    QCOMPARE(picker.pos(),
             QPoint(dialog->x() + dialog->width() - picker.width(), dialog->y() - picker.height()));

    for (int tick = 0; tick < 19; ++tick) {
        dialog->onPickerTimeout();
    }
    QVERIFY(picker.isVisible());
    // Back on the picker: the count starts again.
    QCursor::setPos(picker.geometry().center());
    dialog->onPickerTimeout();
    QCOMPARE(dialog->pickerCounter(), 0);
    QCursor::setPos(5, 5);
    for (int tick = 0; tick < 19; ++tick) {
        dialog->onPickerTimeout();
    }
    QVERIFY(picker.isVisible());
    dialog->onPickerTimeout();
    QVERIFY(picker.isHidden());
    QCOMPARE(checks.count(), 1);
    dialog->toHide();
}

void TestFollowWindows::fixedPanelSendsByItsButton()
{
    // Without auto-send the translation waits for the send button: no key could send it.
    setPreferences([](UserPreferences& p) { p.isAutoSendMode = 0; });
    auto dialog = make<NoFocusFollowDialog>();
    dialog->setInitTranslateView(true);
    QTRY_VERIFY(dialog->isVisible());
    dialog->setVoiceTranslateSourceText(QStringLiteral("你好"));
    dialog->noFocusPresenter()->onTranslateTimeout();
    QTRY_COMPARE(dialog->targetBox()->toPlainText(), QStringLiteral("Hello"));
    auto* send = dialog->findChild<QPushButton*>(QStringLiteral("sendButton"));
    QVERIFY(send->isVisible());
    QVERIFY(dialog->rect().contains(send->geometry()));
    QVERIFY(mDesktop.typedText().isEmpty());
    send->click();
    QVERIFY(dialog->isHidden());
    QCOMPARE(mDesktop.typedText(), QStringLiteral("Hello"));
}

void TestFollowWindows::fixedPanelSingleClickAndForceFinish()
{
    setPreferences([](UserPreferences& p) { p.isClickMode = 1; });
    auto dialog = make<NoFocusFollowDialog>();
    dialog->setInitTranslateView(true);
    QTRY_VERIFY(dialog->isVisible());
    QCOMPARE(dialog->getCurrentViewStatus(), int(Panel::ResultPage));
    dialog->setVoiceTranslateSourceText(QStringLiteral("你好"));
    dialog->noFocusPresenter()->onTranslateTimeout();
    QTRY_COMPARE(dialog->targetBox()->toPlainText(), QStringLiteral("Hello"));
    // Finished, not sent: in single-click mode the panel stays and waits.
    dialog->toHide();
    QVERIFY(dialog->isVisible());
    QVERIFY(mDesktop.typedText().isEmpty());
    dialog->onWaitingHideTimeout();
    QVERIFY(dialog->isHidden());
    QCOMPARE(mDesktop.typedText(), QStringLiteral("Hello"));

    // Forcing the end counts on the result page only.
    dialog->changeView(Panel::DictationPage);
    dialog->noFocusPresenter()->translate(QStringLiteral("再见"));
    dialog->forceFinishView();
    QVERIFY(!dialog->noFocusPresenter()->isTranslateFinish());
    dialog->changeView(Panel::ResultPage);
    dialog->forceFinishView();
    QVERIFY(dialog->noFocusPresenter()->isTranslateFinish());
    dialog->toHide();
    QVERIFY(dialog->isHidden());
}

void TestFollowWindows::hiddenPanelsRest()
{
    // Hidden by whatever way (here by the session's owner), a panel follows and watches nothing.
    auto caret = make<FocusFollowDialog>();
    caret->setInitDictationView();
    QTRY_VERIFY(caret->isVisible());
    QVERIFY(caret->focusPresenter()->moveTimer().isActive());
    QVERIFY(caret->hoverTimer().isActive());
    caret->hide();
    QVERIFY(!caret->focusPresenter()->moveTimer().isActive());
    QVERIFY(!caret->hoverTimer().isActive());

    auto fixed = make<NoFocusFollowDialog>();
    FakePicker picker;
    fixed->setLanguagePickers(&picker, nullptr);
    fixed->changeView(Panel::ResultPage);
    QTest::mousePress(fixed->findChild<QLabel*>(QStringLiteral("sourceLanguage0")), Qt::LeftButton);
    QVERIFY(fixed->pickerTimer().isActive());
    fixed->hide();
    QVERIFY(!fixed->pickerTimer().isActive());
    QVERIFY(!fixed->hoverTimer().isActive());
}

void TestFollowWindows::screenshots()
{
    SCREENSHOT_FOLDER_OR_SKIP(folder)
    // As a desktop without a compositor shows them: cut to the window's shape.
    auto shoot = [&folder](QWidget* window, const QString& name) {
        QTest::qWait(120);
        QImage image = screenshotCanvas(window, window->size());
        QPainter painter(&image);
        if (!window->mask().isEmpty()) {
            painter.setClipRegion(window->mask());
        }
        window->render(&painter);
        painter.end();
        QVERIFY(image.save(folder + QStringLiteral("/panel-") + name + QStringLiteral(".png")));
    };
    setPreferences([](UserPreferences& p) {
        p.isAutoSendMode = 0;
        p.voiceTranslateTargetLanguage = 4;
    });
    auto focus = make<FocusFollowDialog>();
    focus->setInitDictationView();
    QTRY_VERIFY(focus->isVisible());
    shoot(focus.get(), QStringLiteral("follow-dictation-waiting"));
    focus->startDictationAnimation();
    focus->onRecVolume(9);
    focus->onUpdateVolume();
    shoot(focus.get(), QStringLiteral("follow-dictation"));
    focus->toHide();
    focus->setInitTranslateView();
    QTRY_VERIFY(focus->isVisible());
    shoot(focus.get(), QStringLiteral("follow-translate-waiting"));
    focus->startTranslateAnimation();
    focus->setVoiceTranslateSourceText(QStringLiteral("今天下午三点在会议室开会"));
    focus->focusPresenter()->onTranslateTimeout();
    QTRY_VERIFY(!focus->targetBox()->toPlainText().isEmpty());
    mServer.setAnswer(
        kTranslatePath,
        {200, QByteArrayLiteral("{\"trans_result\":[{\"src\":\"x\",\"dst\":\"The meeting is at three "
                                "this afternoon in the meeting room.\"}]}")});
    focus->focusPresenter()->onTranslateTimeout();
    QTRY_VERIFY(focus->targetBox()->toPlainText().startsWith(QStringLiteral("The")));
    focus->onRecVolume(7);
    focus->onUpdateVolume();
    shoot(focus.get(), QStringLiteral("follow-translate-result"));
    focus->setVoiceTranslateSourceText(QStringLiteral("请把这段很长的话翻译成英文，").repeated(12));
    QTest::qWait(1200);
    shoot(focus.get(), QStringLiteral("follow-translate-grown"));
    focus->setTranslateStatus(2);
    shoot(focus.get(), QStringLiteral("follow-translate-error"));
    focus->clearTranslateResult();
    focus->toHide();
    focus->showMicView(false);
    shoot(focus.get(), QStringLiteral("follow-mic"));
    focus->toHide();

    auto fixed = make<NoFocusFollowDialog>();
    fixed->setInitDictationView();
    QTRY_VERIFY(fixed->isVisible());
    fixed->startDictationAnimation();
    fixed->onRecVolume(10);
    fixed->onUpdateVolume();
    shoot(fixed.get(), QStringLiteral("fixed-dictation"));
    fixed->toHide();
    setPreferences([](UserPreferences& p) { p.voiceTranslateTargetLanguage = 6; });
    fixed->setInitTranslateView(false);
    QTRY_VERIFY(fixed->isVisible());
    fixed->onRecVolume(6);
    fixed->onUpdateVolume();
    shoot(fixed.get(), QStringLiteral("fixed-translate-waiting"));
    fixed->startTranslateAnimation();
    mServer.setAnswer(
        kTranslatePath,
        {200, QByteArrayLiteral("{\"trans_result\":[{\"src\":\"x\",\"dst\":\"こんにちは\"}]}")});
    fixed->setVoiceTranslateSourceText(QStringLiteral("你好"));
    fixed->noFocusPresenter()->onTranslateTimeout();
    QTRY_VERIFY(!fixed->targetBox()->toPlainText().isEmpty());
    shoot(fixed.get(), QStringLiteral("fixed-translate-result"));
    fixed->clearTranslateResult();
    fixed->toHide();
    fixed->showMicView(true);
    shoot(fixed.get(), QStringLiteral("fixed-mic-wide"));
    fixed->toHide();
    fixed->showMicView(false);
    shoot(fixed.get(), QStringLiteral("fixed-mic"));
    fixed->toHide();
}

QTEST_MAIN(TestFollowWindows)
#include "tst_followwindows.moc"
