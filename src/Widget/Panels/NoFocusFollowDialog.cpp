#include "Widget/Panels/NoFocusFollowDialog.h"

#include "Widget/Common/Pictures.h"
#include "Widget/Common/WindowLook.h"

#include <QCursor>
#include <QLabel>
#include <QMenu>
#include <QMouseEvent>
#include <QPushButton>
#include <QStackedWidget>
#include <QTextEdit>

NoFocusFollowDialog::NoFocusFollowDialog(QWidget* parent) : NoFocusFollowDialog(parent, {}, nullptr) {}

NoFocusFollowDialog::NoFocusFollowDialog(QWidget* parent,
                                         const FocusFollowPanelPresenter::Collaborators& collaborators,
                                         SpeechSynthesisUtils* synthesis)
    : FocusFollowPanel(parent)
{
    FocusFollowPanelPresenter::Collaborators parts = collaborators;
    parts.synthesis = synthesis;
    mPresenter = collaborators.http != nullptr ? new NoFocusFollowPresenter(this, parts, this)
                                               : new NoFocusFollowPresenter(this, this);
    setupUi(mPresenter);
    // Nothing here is edited: the source is only what was heard.
    mEditButton->hide();
    mPickerTimer.setInterval(kPickerTickMs);
    connect(mStack, &QStackedWidget::currentChanged, this, &NoFocusFollowDialog::onPageChanged);
    move(WindowLook::bottomRight(QSize(365, height() + 50)));
}

NoFocusFollowDialog::~NoFocusFollowDialog() = default;

void NoFocusFollowDialog::onPageChanged(int page)
{
    // The badge is narrower than the translation pages; the shift keeps the mic in one place.
    if (mLastPage == FocusFollowPanelPresenter::DictationPage && page != FocusFollowPanelPresenter::MicPage &&
        page != FocusFollowPanelPresenter::DictationPage) {
        move(x() + kPageShift, y());
    } else if (page == FocusFollowPanelPresenter::DictationPage &&
               mLastPage != FocusFollowPanelPresenter::DictationPage &&
               mLastPage != FocusFollowPanelPresenter::MicPage) {
        move(x() - kPageShift, y());
    }
    mLastPage = page;
}

void NoFocusFollowDialog::toShow()
{
    toShowPanel();
}

bool NoFocusFollowDialog::isOnMouseEnter() const
{
    return cursorOnPanel();
}

bool NoFocusFollowDialog::isMouseOnRightClickMenuView() const
{
    return mRightClickMenu->isVisible() && mRightClickMenu->geometry().contains(QCursor::pos());
}

bool NoFocusFollowDialog::isMouseOnView() const
{
    if (!isVisible()) {
        return false;
    }
    auto holds = [](const QWidget* widget) {
        return widget->isVisible() &&
               QRect(widget->mapToGlobal(QPoint(0, 0)), widget->size()).contains(QCursor::pos());
    };
    switch (mStack->currentIndex()) {
        case FocusFollowPanelPresenter::DictationPage:
            return holds(mDictationLanguage);
        case FocusFollowPanelPresenter::ResultPage:
            return holds(mSourceBox) || holds(mTargetBox);
        default:
            return holds(mWaitingFrame) || holds(mTranslateMic[1]);
    }
}

void NoFocusFollowDialog::forceFinishView()
{
    if (mStack->currentIndex() != FocusFollowPanelPresenter::ResultPage) {
        return;
    }
    mPresenter->setTranslateFinish(true);
    mIsButtonSendPress = true;
}

void NoFocusFollowDialog::toHide()
{
    mHoverTimer.stop();
    mPickerTimer.stop();
    setTranslateStatus(0);
    hidePickers();
    emit signalStopVoiceStatus();
    mPresenter->setAudioEnable(false);
    runHidePlan(mPresenter->planHide(isPlaying(), mStack->currentIndex(), isEditState, mIsButtonSendPress));
}

void NoFocusFollowDialog::setVoiceTranslateSourceText(QString text)
{
    if (isHidden()) {
        mSourceBox->clear();
        return;
    }
    setTranslateStatus(0);
    mLastSourceText = text;
    mSourceBox->setPlainText(text);
    mPresenter->translate(mSourceBox->toPlainText());
    mSourceBox->moveCursor(QTextCursor::End);
}

void NoFocusFollowDialog::setVoiceTranslateTargetText(QString text)
{
    if (mSourceBox->toPlainText().isEmpty() || isHidden()) {
        mTargetBox->clear();
        return;
    }
    mTargetBox->document()->setTextWidth(mTargetBox->width() - 15);
    mTargetBox->setPlainText(text);
}

void NoFocusFollowDialog::setInitDictationView()
{
    setMicStatus(true);
    mDictationMic->hide();
    mBars[0].label->hide();
    mWaitingImage->show();
    resize(kDictationWidth, kDictationHeight);
    mStack->resize(kDictationWidth, kDictationHeight);
    mStack->setCurrentIndex(FocusFollowPanelPresenter::DictationPage);
    QTimer::singleShot(30, this, [this] {
        mMouseOnPanel = frameGeometry().contains(QCursor::pos());
        toShow();
    });
}

void NoFocusFollowDialog::startDictationAnimation()
{
    mWaitingImage->hide();
    mDictationMic->show();
    resize(kDictationWidth, kDictationHeight);
    mStack->resize(kDictationWidth, kDictationHeight);
    mStack->setCurrentIndex(FocusFollowPanelPresenter::DictationPage);
    QTimer::singleShot(30, this, [this] { show(); });
}

void NoFocusFollowDialog::setInitTranslateView(bool direct)
{
    setMicStatus(true);
    clearBoxes();
    // Without auto-send the translation waits for the send button: the panel never has the
    // keyboard, so no key of the user's could send it.
    if (mPresenter->isAutoSendMode()) {
        setInitAutoSendModeTranslateView();
    } else {
        setInitNoAutoSendModeTranslateView();
    }
    mStack->setCurrentIndex(direct ? FocusFollowPanelPresenter::ResultPage
                                   : FocusFollowPanelPresenter::WaitingPage);
    QTimer::singleShot(30, this, [this] {
        mMouseOnPanel = frameGeometry().contains(QCursor::pos());
        toShow();
    });
}

void NoFocusFollowDialog::setInitAutoSendModeTranslateView()
{
    layoutTranslatePage(160, 100, false);
}

void NoFocusFollowDialog::setInitNoAutoSendModeTranslateView()
{
    layoutTranslatePage(198, 138, true);
}

void NoFocusFollowDialog::startTranslateAnimation()
{
    mSourceBox->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    mTargetBox->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    mStack->setCurrentIndex(FocusFollowPanelPresenter::ResultPage);
}

void NoFocusFollowDialog::changeView(int page)
{
    mStack->setCurrentIndex(page);
    toShow();
}

void NoFocusFollowDialog::hideMainWindows()
{
    emit signalHideMainWindows();
}

void NoFocusFollowDialog::showMicView(bool wide)
{
    layoutMicPage(wide, wide ? QPoint(159, 12) : mDictationLanguage->geometry().bottomLeft() + QPoint(8, 16));
    mStack->setCurrentIndex(FocusFollowPanelPresenter::MicPage);
    toShow();
}

void NoFocusFollowDialog::onSetSendModeMenu(QPoint point)
{
    Q_UNUSED(point)
    mSendModeMenu->popup(QCursor::pos());
}

void NoFocusFollowDialog::onShowMenu()
{
    mSendModeMenu->popup(mSendModeButton->mapToGlobal(QPoint(0, mSendModeButton->height())));
}

void NoFocusFollowDialog::onHoverTick()
{
    mMouseOnPanel = cursorOnPanel();
}

void NoFocusFollowDialog::onPickerTimeout()
{
    const bool pickerHolds = cursorOnPickers();
    if (pickerHolds || cursorOnPanel()) {
        mPickerCounter = 0;
        return;
    }
    mPickerCounter += kPickerTickMs;
    if (mPickerCounter < kPickerHideMs) {
        return;
    }
    mPickerCounter = 0;
    if (isVisible()) {
        hidePickers();
        emit signalCheckVoiceViewStatus();
    }
}

void NoFocusFollowDialog::showTranslatePicker(int x, int y)
{
    if (mPicker == nullptr || mPicker->isVisible()) {
        return;
    }
    moveChangeTranLanguageDialog(x, y);
    mPicker->show();
    emit signalsShowChangeTranLanguageView();
}

void NoFocusFollowDialog::onLanguageLabelPress(QLabel* label)
{
    onLanguageLabelEnter(label);
    if (!mPickerTimer.isActive()) {
        mPickerCounter = 0;
        mPickerTimer.start();
    }
    if (mPicker == nullptr) {
        emit signalStopVoiceStatus();
        return;
    }
    if (label == mDictationLanguage) {
        if (!mPicker->isVisible()) {
            QTimer::singleShot(30, this, [this] {
                if (mPicker != nullptr) {
                    showTranslatePicker(x() + width() - mPicker->width(), y() - mPicker->height() + 15);
                }
            });
        }
    } else {
        if (label == mSourceLanguage[1] || label == mTargetLanguage[1]) {
            // Choosing a language is no time to listen: the waiting page's mics go silent.
            mTranslateMic[1]->setPixmap(Pictures::load(QStringLiteral(":/panels/follow/mic_off.svg"),
                                                       mTranslateMic[1], mTranslateMic[1]->size()));
            mBars[2].label->hide();
        }
        showTranslatePicker(x() + width() - mPicker->width(), y() - mPicker->height());
    }
    emit signalStopVoiceStatus();
}

QString NoFocusFollowDialog::levelImage(int page, int value) const
{
    const bool blue = page == FocusFollowPanelPresenter::DictationPage && mWaitingImage->isHidden();
    return QStringLiteral(":/panels/follow/voice_search_btn_mic_%1%2.svg")
        .arg(blue ? QStringLiteral("blue") : QStringLiteral("white"))
        .arg(value);
}

FocusFollowPanel::ProgressBar* NoFocusFollowDialog::barOfPage(int page)
{
    return page >= 0 && page < 3 ? &mBars[page] : nullptr;
}

void NoFocusFollowDialog::keyPressEvent(QKeyEvent* event)
{
    // Escape must not close the panel in the middle of a session.
    Q_UNUSED(event)
}

void NoFocusFollowDialog::mousePressEvent(QMouseEvent* event)
{
    mDragFrom = event->globalPos();
    mDragging = true;
}

void NoFocusFollowDialog::mouseMoveEvent(QMouseEvent* event)
{
    if (!mDragging) {
        return;
    }
    move(pos() + event->globalPos() - mDragFrom);
    mDragFrom = event->globalPos();
}

void NoFocusFollowDialog::mouseReleaseEvent(QMouseEvent* event)
{
    if (!mDragging) {
        return;
    }
    move(pos() + event->globalPos() - mDragFrom);
    mDragging = false;
}
