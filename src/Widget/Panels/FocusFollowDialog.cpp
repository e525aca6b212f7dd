#include "Widget/Panels/FocusFollowDialog.h"

#include "Widget/Common/Pictures.h"
#include "Widget/Common/WindowLook.h"

#include <QCursor>
#include <QGuiApplication>
#include <QLabel>
#include <QMenu>
#include <QPolygon>
#include <QPushButton>
#include <QScrollBar>
#include <QStackedWidget>
#include <QTextEdit>
#include <QWindow>
#include <QX11Info>

// Last: Xlib's macros (None, Bool, KeyPress) would clash with Qt's names.
#include <X11/Xlib.h>

FocusFollowDialog::FocusFollowDialog(QWidget* parent) : FocusFollowDialog(parent, {}, nullptr) {}

FocusFollowDialog::FocusFollowDialog(QWidget* parent,
                                     const FocusFollowPanelPresenter::Collaborators& collaborators,
                                     SpeechSynthesisUtils* synthesis)
    : FocusFollowPanel(parent)
{
    FocusFollowPanelPresenter::Collaborators parts = collaborators;
    parts.synthesis = synthesis;
    mPresenter = collaborators.http != nullptr ? new FocusFollowPresenter(this, parts, this)
                                               : new FocusFollowPresenter(this, this);
    setupUi(mPresenter);
    mArrow = new QLabel(this);
    mArrow->setScaledContents(true);
    mArrow->setGeometry((kDictationWidth - kBadgeArrowWidth) / 2, kArrowY, kBadgeArrowWidth, 10);
    mArrow->setPixmap(Pictures::load(QStringLiteral(":/panels/follow/arrow_up.svg"), mArrow, mArrow->size()));
    mArrow->raise();
    reshape();  // the cut made while building had no arrow yet
    connect(mEditButton, &QPushButton::clicked, this, [this] {
        mEditByButton = true;
        onEditView();
    });
    mPickerTimer.setSingleShot(true);
    mPickerTimer.setInterval(kPickerDelayMs);
}

FocusFollowDialog::~FocusFollowDialog() = default;

void FocusFollowDialog::stopMoveWindow()
{
    mPresenter->stopMoveWindow();
}

bool FocusFollowDialog::isMouseOnClickRightMenuView() const
{
    return mRightClickMenu->isVisible() && mRightClickMenu->geometry().contains(QCursor::pos());
}

void FocusFollowDialog::toShow()
{
    toShowPanel();
}

void FocusFollowDialog::toHide()
{
    mHoverTimer.stop();
    mPickerTimer.stop();
    mSourceBox->setReadOnly(true);
    mSourceBox->setFocusPolicy(Qt::NoFocus);
    giveFocusBack();
    setTranslateStatus(0);
    hidePickers();
    emit signalStopVoiceStatus();
    mPresenter->setAudioEnable(false);
    runHidePlan(mPresenter->planHide(isPlaying(), mStack->currentIndex(), isEditState, mIsButtonSendPress));
}

void FocusFollowDialog::setCurrentStackedWidgetIndex(int index)
{
    setCurrentIndex(index);
}

void FocusFollowDialog::moveWindow()
{
    const int page = mStack->currentIndex();
    const int arrowWidth = page == FocusFollowPanelPresenter::MicPage         ? 0
                           : page == FocusFollowPanelPresenter::DictationPage ? kBadgeArrowWidth
                                                                              : kWideArrowWidth;
    const FocusFollowPresenter::Placement placement =
        FocusFollowPresenter::placeAtCaret(size(), arrowWidth, page);
    if (!placement.move) {
        return;
    }
    mArrow->setGeometry(placement.arrowX, kArrowY, std::max(arrowWidth, 1), 10);
    mArrow->setVisible(placement.arrowVisible);
    mArrow->raise();
    move(placement.panel);
    reshape();
}

void FocusFollowDialog::hideEvent(QHideEvent* event)
{
    FocusFollowPanel::hideEvent(event);
    mPresenter->stopMoveWindow();
}

void FocusFollowDialog::reshape()
{
    FocusFollowPanel::reshape();
    if (mArrow != nullptr && mArrow->isVisibleTo(this)) {
        const QRect arrow = mArrow->geometry();
        const QPolygon triangle({arrow.bottomLeft() + QPoint(0, 1), QPoint(arrow.center().x(), arrow.top()),
                                 arrow.bottomRight() + QPoint(1, 1)});
        setMask(mask() + QRegion(triangle));
    }
}

void FocusFollowDialog::setVoiceTranslateSourceText(QString text)
{
    if (isHidden()) {
        mSourceBox->clear();
        return;
    }
    setTranslateStatus(0);
    mSourceBox->setPlainText(text);
    mPresenter->translate(mSourceBox->toPlainText());
    mSourceBox->setFocus();
    mSourceBox->moveCursor(QTextCursor::End);
}

void FocusFollowDialog::setVoiceTranslateTargetText(QString text)
{
    if (mSourceBox->toPlainText().isEmpty() || isHidden()) {
        mTargetBox->clear();
        return;
    }
    mTargetBox->document()->setTextWidth(mTargetBox->width() - 15);
    mTargetBox->setPlainText(text);
    // The window is not activated for the result: the keyboard stays with the application the
    // translation is going to be typed into.
    if (!mSourceBox->isReadOnly()) {
        mSourceBox->setFocus();
    }
}

void FocusFollowDialog::markMouse()
{
    mMouseOnPanel = cursorOnPanel();
}

void FocusFollowDialog::setInitDictationView()
{
    setMicStatus(true);
    resize(kDictationWidth, kDictationHeight);
    mStack->resize(kDictationWidth, kDictationHeight);
    mDictationMic->hide();
    mBars[0].label->hide();
    mWaitingImage->show();
    mStack->setCurrentIndex(FocusFollowPanelPresenter::DictationPage);
    moveWindow();
    mPresenter->startMoveWindow();
    QTimer::singleShot(30, this, [this] {
        toShow();
        markMouse();
    });
}

void FocusFollowDialog::startDictationAnimation()
{
    mWaitingImage->hide();
    mDictationMic->show();
    mStack->setCurrentIndex(FocusFollowPanelPresenter::DictationPage);
    show();
}

void FocusFollowDialog::setInitTranslateView()
{
    setMicStatus(true);
    resize(kTranslateWidth, 215);
    clearBoxes();
    if (mPresenter->isAutoSendMode()) {
        setInitAutoSendModeTranslateView();
    } else {
        setInitNoAutoSendModeTranslateView();
    }
    mStack->setCurrentIndex(FocusFollowPanelPresenter::WaitingPage);
    moveWindow();
    mPresenter->startMoveWindow();
    QTimer::singleShot(20, this, [this] {
        toShow();
        markMouse();
    });
}

void FocusFollowDialog::setInitAutoSendModeTranslateView()
{
    layoutTranslatePage(179, 102, false);
}

void FocusFollowDialog::setInitNoAutoSendModeTranslateView()
{
    layoutTranslatePage(215, 138, true);
}

void FocusFollowDialog::startTranslateAnimation()
{
    moveWindow();
    mSourceBox->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    mTargetBox->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    mStack->setCurrentIndex(FocusFollowPanelPresenter::ResultPage);
}

void FocusFollowDialog::showMicView(bool wide)
{
    layoutMicPage(wide, wide ? QPoint(156, 56) : QPoint(38, 60));
    setCurrentIndex(FocusFollowPanelPresenter::MicPage);
    mArrow->hide();
    show();
}

void FocusFollowDialog::onEditView()
{
    setMicStatus(false);
    isEditState = true;
    stopMoveWindow();
    emit signalStopVoiceStatus();
    mSourceBox->setReadOnly(false);
    mSourceBox->setFocusPolicy(Qt::ClickFocus);
    // The edit is the one moment the panel needs the keyboard; the click or the button says
    // that the user wants to type here.
    takeFocusForEdit();
    if (mEditByButton) {
        mEditByButton = false;
        mSourceBox->setFocus();
        mSourceBox->moveCursor(QTextCursor::End);
    }
    if (mSendButton->isHidden()) {
        // Auto-send hides the send row; an edit brings it back so that the user can send by hand.
        const int grow = 42;
        resize(kTranslateWidth, height() + grow);
        mStack->resize(kTranslateWidth, height());
        mTextFrame->resize(kTranslateWidth, mTextFrame->height() + grow);
        const int bottom = mTextFrame->geometry().bottom() + 1;
        mSendButton->move(mSendButton->x(), bottom - 40);
        mSendSeparator->move(mSendSeparator->x(), bottom - 37);
        mSendModeButton->move(mSendModeButton->x(), bottom - 37 - 3);
        mSendButton->show();
        mSendSeparator->show();
        mSendModeButton->show();
    }
}

void FocusFollowDialog::takeFocusForEdit()
{
    QWindow* window = windowHandle();
    if (window == nullptr || QGuiApplication::platformName() != QLatin1String("xcb")) {
        return;
    }
    if (mFocusBeforeEdit == 0) {
        Window focus = 0;
        int revert = 0;
        XGetInputFocus(QX11Info::display(), &focus, &revert);
        mFocusBeforeEdit = static_cast<quint32>(focus);
    }
    window->setFlag(Qt::WindowDoesNotAcceptFocus, false);
    window->requestActivate();
}

void FocusFollowDialog::giveFocusBack()
{
    QWindow* window = windowHandle();
    if (window == nullptr || (window->flags() & Qt::WindowDoesNotAcceptFocus)) {
        return;
    }
    window->setFlag(Qt::WindowDoesNotAcceptFocus, true);
    // PointerRoot (1) and nothing (0) are no window to give the keyboard back to.
    if (mFocusBeforeEdit > 1 && QGuiApplication::platformName() == QLatin1String("xcb")) {
        XSetInputFocus(QX11Info::display(), mFocusBeforeEdit, RevertToParent, CurrentTime);
        XFlush(QX11Info::display());
    }
    mFocusBeforeEdit = 0;
}

void FocusFollowDialog::onEditFinishReadOnly()
{
    mSourceBox->setReadOnly(true);
    mSourceBox->setFocusPolicy(Qt::NoFocus);
}

void FocusFollowDialog::onHoverTick()
{
    if (cursorOnPanel() || isMouseOnClickRightMenuView() || isMouseOnSetSendModeMenuView()) {
        mMouseOnPanel = true;
    } else if (mStack->currentIndex() != FocusFollowPanelPresenter::ResultPage) {
        mMouseOnPanel = false;
    } else if (!isEditState && mPresenter->isAutoSendMode()) {
        // Outside auto-send a touched translation keeps its flag until it hides.
        mMouseOnPanel = false;
    }
}

void FocusFollowDialog::onPickerTimeout()
{
    if (isVisible()) {
        hidePickers();
    }
}

void FocusFollowDialog::onLanguageLabelPress(QLabel* label)
{
    mPickerTimer.stop();
    label->setStyleSheet(
        QStringLiteral("QLabel { border-radius: 6px; background: #d6e4fd; color: #2f7cf6;"
                       " font-size: 15px; font-weight: bold; }"));
    if (mPicker == nullptr) {
        return;
    }
    if (label == mDictationLanguage) {
        showPicker(x() + width() - mPicker->width() - 8, y() - 60);
    } else {
        const QPoint at = label->mapToGlobal(QPoint(0, 0));
        showPicker(x() + width() - mPicker->width(), at.y() - mPicker->height() - 2);
    }
}

void FocusFollowDialog::onLanguageLabelRelease(QLabel* label)
{
    FocusFollowPanel::onLanguageLabelRelease(label);
    if (label == mDictationLanguage) {
        mPickerTimer.start();
    }
}

void FocusFollowDialog::onLanguageLabelLeave(QLabel* label)
{
    FocusFollowPanel::onLanguageLabelLeave(label);
    if (label != mDictationLanguage) {
        mPickerTimer.start();
    }
}

QString FocusFollowDialog::levelImage(int page, int value) const
{
    if (page != FocusFollowPanelPresenter::ResultPage &&
        !(page == FocusFollowPanelPresenter::DictationPage && mWaitingImage->isHidden())) {
        return QString();
    }
    return value < 10
               ? QStringLiteral(":/zh_res/res_1080/Input/voice_search_btn_mic_white000%1.png").arg(value)
               : QStringLiteral(":/zh_res/res_1080/Input/voice_search_btn_mic_white00%1.png").arg(value);
}

FocusFollowPanel::ProgressBar* FocusFollowDialog::barOfPage(int page)
{
    return page == FocusFollowPanelPresenter::DictationPage ? &mBars[0] : &mBars[1];
}
