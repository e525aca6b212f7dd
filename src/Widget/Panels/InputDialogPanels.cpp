// The strip as the voice session's view of the other panels: the caret panel (Fo), the fixed
// panel (NoFo), the selection toolbar, the text translation window and the language pickers.
#include "Widget/Common/Pictures.h"
#include "Widget/Common/ZorvaneMessageDialog.h"
#include "Widget/Common/label.h"
#include "Widget/Console/ExplainDialog.h"
#include "Widget/Console/MainWindow.h"
#include "Widget/Panels/ChangeSearchLanguageDialog.h"
#include "Widget/Panels/ChangeTranLanguageDialog.h"
#include "Widget/Panels/ChangeTranMoreLanguageDialog.h"
#include "Widget/Panels/FocusFollowDialog.h"
#include "Widget/Panels/InputDialog.h"
#include "Widget/Panels/NoFocusFollowDialog.h"
#include "Widget/Panels/PaddleWordsDialog.h"
#include "Widget/Panels/TextTranslateDialog.h"

#include <QCursor>
#include <QFrame>
#include <QLabel>
#include <QMenu>

namespace {

bool under(const QWidget* widget, const QPoint& at)
{
    return widget != nullptr && widget->isVisible() && widget->geometry().contains(at);
}

}  // namespace

void InputDialog::connectPanels()
{
    mFo = FocusFollowDialog::getInstance(nullptr);
    mNoFo = NoFocusFollowDialog::getInstance(nullptr);
    mPaddleWords = PaddleWordsDialog::getInstance(nullptr);
    mTextTranslate = TextTranslateDialog::getInstance(nullptr);
    mSearchLanguage = ChangeSearchLanguageDialog::getInstance(nullptr);
    mTranLanguage = ChangeTranLanguageDialog::getInstance(nullptr);
    mTranMoreLanguage = ChangeTranMoreLanguageDialog::getInstance(nullptr);
    mFo->setLanguagePickers(mTranLanguage, mTranMoreLanguage);
    mNoFo->setLanguagePickers(mTranLanguage, mTranMoreLanguage);

    connect(mPaddleWords, &PaddleWordsDialog::signalTranslateButtonPress, mPresenter,
            &InputPresenter::onToShowTextTranslate);
    connect(mPaddleWords, &PaddleWordsDialog::signalReadingButtonPress, mPresenter,
            &InputPresenter::onToStartTextReading);
    connect(mTranLanguage, &ChangeTranLanguageDialog::signalChangeLanguage, this,
            &InputDialog::onChangeTranLanguage);
    connect(mTranMoreLanguage, &ChangeTranMoreLanguageDialog::signalsChangeTranslateMoreLanguage, this,
            &InputDialog::onChangeTranLanguage);
    for (FocusFollowPanel* panel :
         {static_cast<FocusFollowPanel*>(mFo), static_cast<FocusFollowPanel*>(mNoFo)}) {
        connect(panel, &FocusFollowPanel::signalStopVoiceStatus, this, &InputDialog::stopVoiceStatus);
    }
    connect(mNoFo, &NoFocusFollowDialog::signalHideMainWindows, this, &InputDialog::hideMainWindows);
    connect(mNoFo, &NoFocusFollowDialog::signalCheckVoiceViewStatus, this,
            &InputDialog::checkVoiceViewStatus);

    // The search language picker above the strip's language label.
    connect(mLabelChangeLanguage, &label::signalsMousePress, this, &InputDialog::onLanguagePress);
    connect(mLabelChangeLanguage, &label::signalsMouseRelease, this, [this] { setFrameHover(false); });
    connect(mLabelChangeLanguage, &label::signalsMouseEnter, this, [this] {
        setFrameHover(true);
        if (!mSearchLanguage->isHidden()) {
            mTimerPickerHide.stop();
        }
    });
    connect(mLabelChangeLanguage, &label::signalsMouseLeave, this, [this] {
        setFrameHover(false);
        if (!mSearchLanguage->isHidden()) {
            mTimerPickerHide.start();
        }
    });
    connect(mSearchLanguage, &FloatingCardDialog::signalsMouseEnter, this, [this] {
        if (mTimerPickerHide.isActive()) {
            mTimerPickerHide.stop();
        }
    });
    connect(mSearchLanguage, &FloatingCardDialog::signalsMouseLeave, this,
            [this] { mTimerPickerHide.start(); });
    connect(&mTimerPickerHide, &QTimer::timeout, this, [this] {
        if (isVisible()) {
            mSearchLanguage->hide();
            mPresenter->startCloseViewTimer();
        }
    });
    connect(mSearchLanguage, &ChangeSearchLanguageDialog::signalChangeLanguage, this, [this](int language) {
        MainWindow::getInstance(nullptr)->setComboDictationLanguageCurrentIndex(language);
        if (isVisible()) {
            hide();
        }
        mPresenter->startCloseViewTimer();
    });
}

void InputDialog::onLanguagePress()
{
    mTimerPickerHide.stop();
    setFrameHover(true);
    setContent(tr("请选择语言!"));
    if (mSearchLanguage->isHidden()) {
        const QPoint corner = mFrame->mapToGlobal(QPoint(0, 0));
        mSearchLanguage->move(corner.x(), corner.y() - mSearchLanguage->height() - 2);
        mSearchLanguage->show();
        mPresenter->restartHook();
    }
    mPresenter->stopStatus();
    setMicStatus(false);
}

// ---- the strip's own operations that reach the panels

void InputDialog::stopVoiceStatus()
{
    mPresenter->stopStatus();
    mNoFo->setMicStatus(false);
    mFo->setMicStatus(false);
}

int InputDialog::getCurVolume()
{
    return mPresenter->getCurVolume();
}

void InputDialog::checkVoiceViewStatus()
{
    mPresenter->startCloseViewTimer();
}

void InputDialog::onLocalIpId(int id)
{
    mPresenter->onLocalIpId(id);
    mNoFo->setCurrentIpId(id);
    mFo->setCurrentIpId(id);
    mTextTranslate->setCurrentIpId(id);
}

void InputDialog::onGetUserCommandWord(QList<CommandWord> words)
{
    mPresenter->onGetUserCommandWord(words);
}

void InputDialog::onGetDirectUIs(QList<DirectUI> directUIs)
{
    mPresenter->onGetDirectUIs(directUIs);
}

void InputDialog::onMouseEnterMainwindow()
{
    mMouseOnMainWindow = true;
}

void InputDialog::onMouseLeaveMainwindow()
{
    mMouseOnMainWindow = false;
}

void InputDialog::onChangeTranLanguage(int src, int dst)
{
    MainWindow* console = MainWindow::getInstance(nullptr);
    console->setComboDictationLanguageCurrentIndex(src);
    console->setComboVoiceTranslateTarLanguageCurrentIndex(dst);
    if (!mTranMoreLanguage->isHidden()) {
        mTranMoreLanguage->hide();
    }
    if (!mFo->isHidden()) {
        const int status = mFo->getCurrentViewStatus();
        if (status == 0 || status == 2) {
            mFo->toHide();
        } else {
            mFo->changeVoiceTranslateLang();
            mPresenter->startCloseViewTimer();
        }
    }
    if (!mNoFo->isHidden()) {
        const int status = mNoFo->getCurrentViewStatus();
        if (status == 0 || status == 2) {
            mNoFo->toHide();
        } else {
            mNoFo->changeVoiceTranslateLang();
            mPresenter->startCloseViewTimer();
        }
    }
}

// ---- ending a session from outside

bool InputDialog::isCursorOnAnyView() const
{
    const QPoint at = QCursor::pos();
    return (isVisible() && geometry().contains(at)) || under(mFo, at) || under(mNoFo, at) ||
           under(mSearchLanguage, at) || under(mTranLanguage, at) || under(mTranMoreLanguage, at) ||
           mFo->isMouseOnSetSendModeMenuView() || mFo->isMouseOnClickRightMenuView() ||
           mFo->isMouseOnTargetMenuView() || mNoFo->isMouseOnRightClickMenuView() ||
           mNoFo->isMouseOnSetSendModeMenuView() || mNoFo->isMouseOnTargetMenuView() ||
           under(mTextTranslate, at) || (mMenu->isVisible() && mMenu->geometry().contains(at));
}

void InputDialog::forceFinish()
{
    if (isHidden() && mFo->isHidden() && mNoFo->isHidden() && mSearchLanguage->isHidden() &&
        mTranLanguage->isHidden() && mTranMoreLanguage->isHidden() && mTextTranslate->isHidden() &&
        mPaddleWords->isHidden()) {
        return;
    }
    if (isCursorOnAnyView() || mTextTranslate->isPlaying() || mPresenter->isVoiceKeyPressing() ||
        under(mPaddleWords, QCursor::pos()) || mPaddleWords->isFollowSpeakPlaying()) {
        return;
    }
    mPresenter->stopStatus();
    QTimer::singleShot(kShowDelayMs, this, [this] {
        if (!mPaddleWords->isHidden()) {
            mPaddleWords->toHide();
        }
        if (!mTextTranslate->isHidden()) {
            mTextTranslate->toHide();
        }
        if (!mFo->isHidden()) {
            mFo->stopMoveWindow();
            mFo->toHide();
        }
        if (!mNoFo->isHidden()) {
            mNoFo->toHide();
        }
        if (!isHidden()) {
            toHide();
        }
    });
}

bool InputDialog::isShowPaddlewordsView()
{
    return mPresenter->foregroundTakesToolbar() && !mMouseOnMainWindow &&
           !mPaddleWords->isFollowSpeakPlaying() && mFo->isHidden() && mNoFo->isHidden();
}

// ---- the caret panel

int InputDialog::getCurrentFocusViewStatus()
{
    return mFo->getCurrentViewStatus();
}

bool InputDialog::isHiddenFocusView()
{
    return mFo->isHidden();
}

void InputDialog::toHideFocusView()
{
    mPresenter->clearAnimationStatus();
    mFo->stopMoveWindow();
    mFo->toHide();
}

void InputDialog::initFoDictationView()
{
    if (!isHidden()) {
        toHide();
    }
    if (!isHiddenNoFocusView()) {
        toHideNoFocusView();
    }
    mFo->setInitDictationView();
    mPresenter->restartHook();
}

void InputDialog::startFoDictationAnimation()
{
    mFo->startDictationAnimation();
}

void InputDialog::initFoTranslateView()
{
    if (!isHidden()) {
        toHide();
    }
    if (!isHiddenNoFocusView()) {
        toHideNoFocusView();
    }
    mFo->setInitTranslateView();
    mPresenter->restartHook();
}

void InputDialog::startFoTranslateAnimation()
{
    mFo->startTranslateAnimation();
}

int InputDialog::getCurrentFoViewHeight()
{
    return mFo->height();
}

bool InputDialog::isFoOnEditing()
{
    return mFo->isOnEditing();
}

bool InputDialog::isFoMouseEnter()
{
    return mFo->isOnMouseEnter();
}

bool InputDialog::isFoPlaying()
{
    return mFo->isPlaying();
}

void InputDialog::clearFoTranslateResult()
{
    mFo->clearTranslateResult();
}

void InputDialog::setFoMicView(bool translate)
{
    mFo->showMicView(translate);
}

void InputDialog::forceFinishFoView()
{
    mFo->forceFinishView();
}

bool InputDialog::isFocusOnMouseEnter()
{
    return mFo->isOnMouseEnter();
}

// ---- the fixed panel

int InputDialog::getCurrentNoFocusViewStatus()
{
    return mNoFo->getCurrentViewStatus();
}

bool InputDialog::isHiddenNoFocusView()
{
    return mNoFo->isHidden();
}

void InputDialog::toHideNoFocusView()
{
    mPresenter->clearAnimationStatus();
    mNoFo->toHide();
}

void InputDialog::initNoFoDictationView()
{
    if (!isHidden()) {
        toHide();
    }
    if (!isHiddenFocusView()) {
        toHideFocusView();
    }
    mNoFo->setInitDictationView();
    mPresenter->restartHook();
}

void InputDialog::startNoFoDictationAnimation()
{
    mNoFo->startDictationAnimation();
}

void InputDialog::initNoFoTranslateView(bool keepText)
{
    if (!isHidden()) {
        toHide();
    }
    if (!isHiddenFocusView()) {
        toHideFocusView();
    }
    mNoFo->setInitTranslateView(keepText);
    mPresenter->restartHook();
}

void InputDialog::startNoFoTranslateAnimation()
{
    mNoFo->startTranslateAnimation();
}

void InputDialog::changNoFoView(int page)
{
    mNoFo->changeView(page);
}

bool InputDialog::isNoFoOnEditing()
{
    return mNoFo->isOnEditing();
}

bool InputDialog::isNoFoMouseEnter()
{
    return mNoFo->isOnMouseEnter();
}

bool InputDialog::isNoFoPlaying()
{
    return mNoFo->isPlaying();
}

void InputDialog::clearNoFoTranslateResult()
{
    mNoFo->clearTranslateResult();
}

void InputDialog::setNoFoMicView(bool translate)
{
    mNoFo->showMicView(translate);
}

void InputDialog::forceFinishNoFoView()
{
    mNoFo->forceFinishView();
}

bool InputDialog::isNoFocusOnMouseEnter()
{
    return mNoFo->isOnMouseEnter();
}

// ---- voice translation text, to whichever panel shows

void InputDialog::setVoiceTranslateSourceText(QString text)
{
    if (!mNoFo->isHidden()) {
        mNoFo->setVoiceTranslateSourceText(text);
    }
    if (!mFo->isHidden()) {
        mFo->setVoiceTranslateSourceText(text);
    }
}

void InputDialog::setVoiceTranslateTargetText(QString text)
{
    if (!mNoFo->isHidden()) {
        mNoFo->setVoiceTranslateTargetText(text);
    }
    if (!mFo->isHidden()) {
        mFo->setVoiceTranslateTargetText(text);
    }
}

void InputDialog::insertVoiceTranslateOnEditingSourceText(QString text)
{
    if (!mNoFo->isHidden()) {
        mNoFo->insertVoiceTranslateOnEditingSourceText(text);
    }
    if (!mFo->isHidden()) {
        mFo->insertVoiceTranslateOnEditingSourceText(text);
    }
}

bool InputDialog::isVoiceTranslateTextNull()
{
    if (!mNoFo->isHidden()) {
        return mNoFo->isVoiceTranslateTextNull();
    }
    if (!mFo->isHidden()) {
        return mFo->isVoiceTranslateTextNull();
    }
    return false;
}

void InputDialog::clearTranslateContent()
{
    if (!mNoFo->isHidden()) {
        mNoFo->clearText();
    }
    if (!mFo->isHidden()) {
        mFo->clearText();
    }
}

void InputDialog::setMicStatus(bool on)
{
    mNoFo->setMicStatus(on);
    mFo->setMicStatus(on);
    mMicLabel->setPixmap(Pictures::load(
        on ? QStringLiteral(":/strip/mic_on.svg") : QStringLiteral(":/strip/mic_off.svg"), mMicLabel));
    if (!on) {
        mBar.label->hide();
        mBar.value = 0;
    }
}

// ---- the text translation window and the selection toolbar

void InputDialog::toShowTextTranslateView()
{
    mTextTranslate->toShow();
}

bool InputDialog::isHiddenTextTranslateView()
{
    return mTextTranslate->isHidden();
}

QString InputDialog::getTextTranslateSourceText()
{
    return mTextTranslate->getSourceText();
}

void InputDialog::setTextTranslateSourceText(QString text)
{
    mTextTranslate->setSourceText(text);
}

void InputDialog::setTextTranslateTargetText(QString text)
{
    mTextTranslate->setTargetText(text);
}

void InputDialog::toShowPaddleWordsView()
{
    mPaddleWords->startShow();
}

bool InputDialog::isHiddenPaddleWordsView()
{
    return mPaddleWords->isHidden();
}

void InputDialog::toHiddenPaddleWordsView()
{
    mPaddleWords->toHide();
}

bool InputDialog::isPaddleWords()
{
    return false;
}

void InputDialog::clearPaddleWordsStatus() {}

void InputDialog::setReviseSignViewText(int, int, QString) {}

// ---- the pickers

bool InputDialog::isHiddenChangeSearchLanguageView()
{
    return mSearchLanguage == nullptr || mSearchLanguage->isHidden();
}

bool InputDialog::isHiddenChangeTranLanguageView()
{
    return mTranLanguage->isHidden();
}

bool InputDialog::isHiddenChangeTranMoreLanguageView()
{
    return mTranMoreLanguage->isHidden();
}

// ---- the console and the rest

void InputDialog::setDeviceEnable(bool enable)
{
    mPresenter->setDeviceEnable(enable);
}

void InputDialog::hideCommandWidget() {}

void InputDialog::showMainView(int page)
{
    MainWindow::getInstance(nullptr)->onShowMainView(page);
}

void InputDialog::showExplain()
{
    ExplainDialog* explain = ExplainDialog::getInstance(nullptr);
    if (explain->isHidden()) {
        explain->centreOver(nullptr);
        explain->show();
    }
}

void InputDialog::hideMainWindows()
{
    // Only a console on screen steps aside: a closed one stays closed.
    MainWindow* console = MainWindow::getInstance(nullptr);
    if (console->isShow()) {
        console->showMinimized();
    }
}
