#include "Widget/Panels/FocusFollowPanel.h"

#include "Utils/LanguageTables.h"
#include "Widget/Common/Pictures.h"
#include "Widget/Common/WindowLook.h"
#include "Widget/Panels/LevelAnimation.h"
#include "WidgetPresenter/ReadAloud.h"

#include <QAbstractTextDocumentLayout>
#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QCursor>
#include <QElapsedTimer>
#include <QFrame>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QPainterPath>
#include <QParallelAnimationGroup>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QStackedWidget>
#include <QTextEdit>
#include <QThread>

#include <cmath>

namespace {

constexpr int kRadius = 8;
constexpr int kLevelVisibleFrom = 4;
constexpr int kSourceLabelX = 14;
constexpr int kTargetLabelX = 68;

const QString kSelectedIcon = QStringLiteral(":/panels/follow/selected_frame.svg");

QString badgeSheet(bool hover)
{
    return QStringLiteral(
               "QLabel { border-radius: 6px; color: #2f7cf6; font-size: 15px; font-weight: bold;"
               " background: %1; }")
        .arg(hover ? QStringLiteral("#d6e4fd") : QStringLiteral("#eef3fd"));
}

QLabel* imageLabel(QWidget* parent, const QString& image, const QRect& geometry)
{
    auto* label = new QLabel(parent);
    label->setGeometry(geometry);
    label->setScaledContents(true);
    if (!image.isEmpty()) {
        label->setPixmap(Pictures::load(image, label, geometry.size()));
    }
    return label;
}

QPushButton* iconButton(QWidget* parent, const QString& icon, const QString& tip, const QRect& geometry)
{
    auto* button = new QPushButton(parent);
    button->setGeometry(geometry);
    button->setIcon(QIcon(icon));
    button->setIconSize(geometry.size() - QSize(4, 4));
    button->setToolTip(tip);
    button->setAccessibleName(tip);
    button->setFocusPolicy(Qt::NoFocus);
    button->setFlat(true);
    button->setCursor(Qt::PointingHandCursor);
    return button;
}

QTextEdit* textBox(QWidget* parent, const QRect& geometry, const QString& color)
{
    auto* box = new QTextEdit(parent);
    box->setGeometry(geometry);
    box->setReadOnly(true);
    box->setFocusPolicy(Qt::NoFocus);
    box->setFrameShape(QFrame::NoFrame);
    box->setAcceptRichText(false);
    box->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    box->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    box->setStyleSheet(
        QStringLiteral("QTextEdit { background: transparent; color: %1; font-size: 14px; }"
                       "QScrollBar:vertical { width: 6px; background: transparent; }"
                       "QScrollBar::handle:vertical { background: #c8ccd4; border-radius: 3px; }")
            .arg(color));
    return box;
}

}  // namespace

FocusFollowPanel::FocusFollowPanel(QWidget* parent) : QDialog(parent), mTranslucent(WindowLook::compositing())
{
    // The pictures live in the static widget library; nothing else would pull them in.
    Q_INIT_RESOURCE(follow);
    setWindowTitle(QStringLiteral("Zorvane"));
    setWindowFlags(WindowLook::kFloatingFlags);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_TranslucentBackground, mTranslucent);
    setFocusPolicy(Qt::NoFocus);
    mHoverTimer.setInterval(100);
    connect(&mHoverTimer, &QTimer::timeout, this, &FocusFollowPanel::onHoverTick);
    connect(&mPickerTimer, &QTimer::timeout, this, &FocusFollowPanel::onPickerTimeout);
    mWaitingHideTimer.setSingleShot(true);
    mWaitingHideTimer.setInterval(kWaitingHideMs);
    connect(&mWaitingHideTimer, &QTimer::timeout, this, &FocusFollowPanel::onWaitingHideTimeout);
    mEditTimer.setSingleShot(true);
    mEditTimer.setInterval(kEditDelayMs);
    connect(&mEditTimer, &QTimer::timeout, this, &FocusFollowPanel::onEditTimeout);
}

FocusFollowPanel::~FocusFollowPanel() = default;

void FocusFollowPanel::setupUi(FocusFollowPanelPresenter* presenter)
{
    mPanelPresenter = presenter;
    connect(presenter->reading(), &ReadAloud::over, this, &FocusFollowPanel::onReadingOver);
    setStyleSheet(
        QStringLiteral("QPushButton { border: none; background: transparent; border-radius: 4px; }"
                       "QPushButton:hover { background: #eef0f3; }"
                       "QPushButton#sendButton { background: #2f7cf6; color: white; font-size: 13px;"
                       " border-radius: 14px; }"
                       "QPushButton#sendButton:hover { background: #4a8ff8; }"));
    mStack = new QStackedWidget(this);
    mStack->setGeometry(0, 0, kDictationWidth, kDictationHeight);
    for (QWidget*& page : mPages) {
        page = new QWidget;
        mStack->addWidget(page);
    }
    buildDictationPage();
    buildTranslatePages();
    buildMicPage();
    buildMenus();
    for (int i = 0; i < 3; ++i) {
        mBars[i].label->setObjectName(QStringLiteral("levelBar%1").arg(i));
    }
    mReadButton->setObjectName(QStringLiteral("readButton"));
    mEditButton->setObjectName(QStringLiteral("editButton"));
    mStack->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(mStack, &QWidget::customContextMenuRequested, this, &FocusFollowPanel::onShortMenu);
    resize(kDictationWidth, kDictationHeight);
    mGrowth = new QParallelAnimationGroup(this);
    setMicStatus(true);
    mPanelPresenter->onChangePreferences(mPanelPresenter->preferences());
}

void FocusFollowPanel::buildDictationPage()
{
    QWidget* page = mPages[FocusFollowPanelPresenter::DictationPage];
    mDictationLanguage = imageLabel(page, QStringLiteral(":/zh_res/res_1080/Input/dictation_text0001.png"),
                                    QRect(22, 24, 80, 26));
    mDictationLanguage->setObjectName(QStringLiteral("dictationLanguage"));
    mDictationLanguage->installEventFilter(this);
    mDictationMic = imageLabel(page, QString(), QRect(38, 60, 48, 48));
    mBars[0].label = imageLabel(page, QString(), QRect(38, 60, 48, 48));
    mBars[0].label->hide();
    mWaitingImage = imageLabel(page, QStringLiteral(":/panels/follow/waiting.svg"), QRect(38, 60, 48, 48));
}

void FocusFollowPanel::buildTranslatePages()
{
    const int header = frameTop() - 47;
    for (int i = 0; i < 2; ++i) {
        QWidget* page =
            mPages[i == 0 ? FocusFollowPanelPresenter::ResultPage : FocusFollowPanelPresenter::WaitingPage];
        mSourceLanguage[i] = new QLabel(tr("中"), page);
        mSourceLanguage[i]->setGeometry(kSourceLabelX, header, 30, 30);
        mTargetLanguage[i] = new QLabel(tr("英"), page);
        mTargetLanguage[i]->setGeometry(kTargetLabelX, header, 30, 30);
        mSourceLanguage[i]->setObjectName(QStringLiteral("sourceLanguage%1").arg(i));
        mTargetLanguage[i]->setObjectName(QStringLiteral("targetLanguage%1").arg(i));
        for (QLabel* label : {mSourceLanguage[i], mTargetLanguage[i]}) {
            label->setAlignment(Qt::AlignCenter);
            label->setStyleSheet(badgeSheet(false));
            label->setCursor(Qt::PointingHandCursor);
            label->installEventFilter(this);
        }
        imageLabel(page, QStringLiteral(":/panels/follow/arrow_right.svg"), QRect(47, header + 8, 18, 14));
        mTranslateMic[i] = imageLabel(
            page, QString(), i == 0 ? QRect(162, header - 3, 40, 40) : QRect(159, frameTop() - 48, 42, 42));
        mBars[i + 1].label = imageLabel(page, QString(), mTranslateMic[i]->geometry());
        mBars[i + 1].label->hide();
    }
    QWidget* result = mPages[FocusFollowPanelPresenter::ResultPage];
    mHint = new QLabel(result);
    mHint->setGeometry(206, header + 5, 88, 22);
    mReadButton = iconButton(result, QStringLiteral(":/panels/follow/read.svg"), QString(),
                             QRect(296, header + 2, 24, 24));
    connect(mReadButton, &QPushButton::clicked, this, &FocusFollowPanel::toggleReading);
    mEditButton = iconButton(result, QStringLiteral(":/panels/follow/edit.svg"), tr("编辑"),
                             QRect(324, header + 2, 24, 24));

    mTextFrame = new QFrame(result);
    mTextFrame->setObjectName(QStringLiteral("textFrame"));
    mTextFrame->setGeometry(0, frameTop(), kTranslateWidth, 138);
    mSourceBox = textBox(mTextFrame, QRect(12, 4, 336, kBoxStartHeight), QStringLiteral("#333333"));
    mBoxLine = new QFrame(mTextFrame);
    mBoxLine->setGeometry(12, 34, 336, 1);
    mBoxLine->setStyleSheet(QStringLiteral("background: #e6e9ee;"));
    mTargetBox = textBox(mTextFrame, QRect(12, 38, 336, kBoxStartHeight), QStringLiteral("#2f7cf6"));
    mTargetBox->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(mTargetBox, &QWidget::customContextMenuRequested, this, &FocusFollowPanel::onTargetMenu);
    for (QTextEdit* box : {mSourceBox, mTargetBox}) {
        box->installEventFilter(this);
        box->viewport()->installEventFilter(this);
        // Queued: the document has laid itself out by then.
        connect(box, &QTextEdit::textChanged, this, &FocusFollowPanel::textChange, Qt::QueuedConnection);
    }
    // An edit is translated anew after half a second of quiet.
    connect(mSourceBox, &QTextEdit::textChanged, this, [this] {
        mEditTimer.stop();
        if (!mSourceBox->isReadOnly()) {
            mEditTimer.start();
        }
    });

    mSendButton = new QPushButton(tr("发送"), result);
    mSendButton->setObjectName(QStringLiteral("sendButton"));
    mSendButton->setGeometry(262, frameTop() + kSendButtonDy, 64, 28);
    mSendButton->setFocusPolicy(Qt::NoFocus);
    connect(mSendButton, &QPushButton::clicked, this, &FocusFollowPanel::sendNow);
    mSendSeparator = new QFrame(result);
    mSendSeparator->setGeometry(333, frameTop() + kSendModeDy, 1, 14);
    mSendSeparator->setStyleSheet(QStringLiteral("background: #c8ccd4;"));
    mSendModeButton = iconButton(result, QStringLiteral(":/panels/follow/send_mode.svg"), tr("选择发送方式"),
                                 QRect(338, frameTop() + kSendModeDy - 3, 20, 20));

    QWidget* waiting = mPages[FocusFollowPanelPresenter::WaitingPage];
    mWaitingFrame = new QFrame(waiting);
    mWaitingFrame->setObjectName(QStringLiteral("textFrame"));
    mWaitingFrame->setGeometry(0, frameTop(), kTranslateWidth, 102);
    imageLabel(mWaitingFrame, QStringLiteral(":/panels/follow/waiting.svg"), QRect(156, 27, 48, 48));
}

void FocusFollowPanel::buildMicPage()
{
    QWidget* page = mPages[FocusFollowPanelPresenter::MicPage];
    mMicOnly = imageLabel(page, QString(), QRect(38, 60, 48, 48));
    mMicOnlyBar = imageLabel(page, QString(), QRect(38, 60, 48, 48));
    mMicOnlyBar->hide();
}

QAction* FocusFollowPanel::addCheckAction(QMenu* menu, const QString& text)
{
    QAction* action = menu->addAction(text);
    action->setIconVisibleInMenu(true);
    return action;
}

void FocusFollowPanel::markAction(QAction* action, bool on)
{
    // The selected frame marks a switch that is on; an empty icon keeps the texts aligned.
    if (on) {
        action->setIcon(QIcon(kSelectedIcon));
    } else {
        QPixmap blank(16, 16);
        blank.fill(Qt::transparent);
        action->setIcon(QIcon(blank));
    }
}

void FocusFollowPanel::fillContextMenu(QMenu* menu)
{
    QAction* delSign = addCheckAction(menu, tr("去除标点符号"));
    connect(delSign, &QAction::triggered, this, [this] {
        mPanelPresenter->setDelSign(mPanelPresenter->isDelSign() ? 0 : 1);
        mTargetBox->setFocus();
    });
    QAction* singleClick = addCheckAction(menu, tr("支持单击模式"));
    connect(singleClick, &QAction::triggered, this, [this] {
        mPanelPresenter->setSupSingleClick(mPanelPresenter->isSupSingleClick() ? 0 : 1);
        mTargetBox->setFocus();
        toHide();
    });
    QAction* quit = menu->addAction(tr("退出"));
    connect(quit, &QAction::triggered, this, [this] { toHide(); });
    connect(menu, &QMenu::aboutToShow, this, [this, delSign, singleClick] {
        markAction(delSign, mPanelPresenter->isDelSign());
        markAction(singleClick, mPanelPresenter->isSupSingleClick());
        singleClick->setVisible(!mPanelPresenter->isSingleKeyMouse());
    });
}

void FocusFollowPanel::buildMenus()
{
    const QString menuSheet = QStringLiteral(
        "QMenu { background: white; border: 1px solid #d6d9de; padding: 4px 0; font-size: 13px; }"
        "QMenu::item { padding: 5px 18px 5px 8px; color: #333333; }"
        "QMenu::item:selected { background: #eef3fd; }");
    mSendModeMenu = new QMenu(this);
    mSendModeMenu->setStyleSheet(menuSheet);
    mSendModeMenu->setTitle(tr("选择发送方式"));
    mEnterAction = addCheckAction(mSendModeMenu, tr("按Enter键发送"));
    mSpaceAction = addCheckAction(mSendModeMenu, tr("按空格键发送"));
    mAutoSendAction = addCheckAction(mSendModeMenu, tr("自动发送模式"));
    connect(mEnterAction, &QAction::triggered, this, [this] {
        mPanelPresenter->setEnterMode(mPanelPresenter->isEnterKeySend() ? 0 : 1);
        mSourceBox->setReadOnly(true);
        mTargetBox->setFocus();
    });
    connect(mSpaceAction, &QAction::triggered, this, [this] {
        mPanelPresenter->setSpaceMode(mPanelPresenter->isSpaceKeySend() ? 0 : 1);
        mSourceBox->setReadOnly(true);
        mTargetBox->setFocus();
    });
    connect(mAutoSendAction, &QAction::triggered, this, [this] {
        mPanelPresenter->setAutoSendMode(mPanelPresenter->isAutoSendMode() ? 0 : 1);
        mSourceBox->setReadOnly(true);
        toHide();
    });
    mSendModeButton->setMenu(mSendModeMenu);
    // The button's own menu arrow would crowd the 20-pixel button.
    mSendModeButton->setStyleSheet(QStringLiteral("QPushButton::menu-indicator { image: none; width: 0; }"));

    mRightClickMenu = new QMenu(this);
    mRightClickMenu->setStyleSheet(menuSheet);
    fillContextMenu(mRightClickMenu);
    mTargetMenu = new QMenu(this);
    mTargetMenu->setStyleSheet(menuSheet);
    fillContextMenu(mTargetMenu);
    QAction* selectAll = mTargetMenu->addAction(tr("全选并复制"));
    connect(selectAll, &QAction::triggered, this, [this] {
        // Copied here rather than by keystrokes: the panel does not hold the keyboard, and
        // Ctrl+A would select all in the user's application instead.
        mTargetBox->selectAll();
        mTargetBox->copy();
    });
    QAction* copy = mTargetMenu->addAction(tr("复制"));
    connect(copy, &QAction::triggered, this, [this] { mTargetBox->copy(); });
}

void FocusFollowPanel::setLanguagePickers(QWidget* picker, QWidget* morePicker)
{
    mPicker = picker;
    mMorePicker = morePicker;
    for (QWidget* window : {picker, morePicker}) {
        if (window == nullptr) {
            continue;
        }
        // By name: the pickers are built elsewhere and share these two signals.
        connect(window, SIGNAL(signalsMouseEnter()), this, SLOT(onPickerMouseEnter()));
        connect(window, SIGNAL(signalsMouseLeave()), this, SLOT(onPickerMouseLeave()));
    }
}

bool FocusFollowPanel::pickerVisible() const
{
    return (mPicker != nullptr && mPicker->isVisible()) ||
           (mMorePicker != nullptr && mMorePicker->isVisible());
}

bool FocusFollowPanel::cursorOnPickers() const
{
    const QPoint cursor = QCursor::pos();
    for (const QPointer<QWidget>& window : {mPicker, mMorePicker}) {
        if (window != nullptr && window->isVisible() && window->frameGeometry().contains(cursor)) {
            return true;
        }
    }
    return false;
}

void FocusFollowPanel::hidePickers()
{
    for (const QPointer<QWidget>& window : {mMorePicker, mPicker}) {
        if (window != nullptr && window->isVisible()) {
            window->hide();
        }
    }
}

void FocusFollowPanel::moveChangeTranLanguageDialog(int x, int y)
{
    if (mPicker == nullptr) {
        return;
    }
    const QRect area = WindowLook::workArea();
    const int overRight = x + mPicker->width() - area.right() - 1;
    if (overRight > 0) {
        x -= overRight;
    }
    const int overBottom = y + mPicker->height() - area.bottom() - 1;
    if (overBottom > 0) {
        y -= overBottom;
    }
    mPicker->move(std::max(x, 0), std::max(y, 0));
}

void FocusFollowPanel::showPicker(int x, int y)
{
    if (mPicker == nullptr || mPicker->isVisible()) {
        return;
    }
    moveChangeTranLanguageDialog(x, y);
    mPicker->show();
    emit signalStopVoiceStatus();
}

void FocusFollowPanel::onPickerMouseEnter()
{
    mPickerTimer.stop();
}

void FocusFollowPanel::onPickerMouseLeave()
{
    mPickerTimer.start();
}

bool FocusFollowPanel::isMouseOnSetSendModeMenuView() const
{
    return mSendModeMenu->isVisible() && mSendModeMenu->geometry().contains(QCursor::pos());
}

bool FocusFollowPanel::isMouseOnTargetMenuView() const
{
    return mTargetMenu->isVisible() && mTargetMenu->geometry().contains(QCursor::pos());
}

void FocusFollowPanel::changeVoiceTranslateLang()
{
    if (!mSourceBox->toPlainText().isEmpty()) {
        mPanelPresenter->translate(mSourceBox->toPlainText());
    }
}

void FocusFollowPanel::insertVoiceTranslateOnEditingSourceText(QString text)
{
    if (mSourceBox->isReadOnly()) {
        return;
    }
    setTranslateStatus(0);
    mSourceBox->insertPlainText(text);
    mPanelPresenter->translate(mSourceBox->toPlainText());
}

void FocusFollowPanel::clearTranslateResult()
{
    mPanelPresenter->clearTranslateResult();
}

void FocusFollowPanel::onRecVolume(int value)
{
    mPanelPresenter->onRecVolume(value);
}

void FocusFollowPanel::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    mPanelPresenter->onViewShown();
}

void FocusFollowPanel::onUpdateVolume()
{
    if (isHidden()) {
        return;
    }
    const int page = mStack->currentIndex();
    if (ProgressBar* bar = barOfPage(page)) {
        changeVolume(bar, mPanelPresenter->getVolume(), page);
    }
}

void FocusFollowPanel::changeVolume(ProgressBar* bar, int level, int page)
{
    const int delta = level - bar->value;
    if (delta == 0) {
        return;
    }
    const double pause = LevelAnimation::stepPauseMs(delta);
    while (bar->value != level) {
        QCoreApplication::processEvents();
        // A level update run from inside processEvents may already have got there.
        if (bar->value == level) {
            break;
        }
        bar->value += bar->value < level ? 1 : -1;
        if (bar->value < kLevelVisibleFrom) {
            bar->label->hide();
        } else {
            const QString image = levelImage(page, bar->value);
            if (!image.isEmpty()) {
                bar->label->setPixmap(Pictures::load(image, bar->label, bar->label->size()));
            }
            bar->label->show();
        }
        if (pause > 0) {
            QThread::usleep(static_cast<unsigned long>(pause * 1000));
        }
    }
}

void FocusFollowPanel::setDictationTextLanguageName(QString name)
{
    static const QStringList names{QStringLiteral("普通话简体"), QStringLiteral("普通话繁体"),
                                   QStringLiteral("粤语简体"),   QStringLiteral("粤语繁体"),
                                   QStringLiteral("四川话"),     QStringLiteral("英语")};
    const int index = names.indexOf(name);
    if (index < 0) {
        return;
    }
    mDictationLanguage->setPixmap(
        Pictures::load(QStringLiteral(":/zh_res/res_1080/Input/dictation_text000%1.png").arg(index + 1),
                       mDictationLanguage, mDictationLanguage->size()));
    mDictationLanguage->setProperty("badge", index + 1);
}

void FocusFollowPanel::setTranslateTextSourceLanguageName(QString name)
{
    mSourceLanguage[0]->setText(LanguageTables::shown(name.toUtf8().constData()));
}

void FocusFollowPanel::setTranslateTextTargetLanguageName(QString name)
{
    mTargetLanguage[0]->setText(LanguageTables::shown(name.toUtf8().constData()));
}

void FocusFollowPanel::setInitTranslateSrcLanguage(QString name)
{
    mSourceLanguage[1]->setText(LanguageTables::shown(name.toUtf8().constData()));
}

void FocusFollowPanel::setInitTranslateDstLanguage(QString name)
{
    mTargetLanguage[1]->setText(LanguageTables::shown(name.toUtf8().constData()));
}

bool FocusFollowPanel::isVoiceTranslateTextNull()
{
    return mSourceBox->toPlainText().isEmpty();
}

void FocusFollowPanel::clearBoxes()
{
    mSourceBox->clear();
    mTargetBox->clear();
}

void FocusFollowPanel::clearText()
{
    clearBoxes();
}

int FocusFollowPanel::getCurrentViewStatus()
{
    return mStack->currentIndex();
}

void FocusFollowPanel::setMicStatus(bool on)
{
    mMicOn = on;
    const QString mic(on ? QStringLiteral(":/panels/follow/mic_on.svg")
                         : QStringLiteral(":/panels/follow/mic_off.svg"));
    for (QLabel* label : {mDictationMic, mTranslateMic[0], mTranslateMic[1], mMicOnly}) {
        label->setPixmap(Pictures::load(mic, label, label->size()));
    }
    if (!on) {
        for (ProgressBar& bar : mBars) {
            bar.label->hide();
            bar.value = 0;
        }
        mMicOnlyBar->hide();
    }
}

void FocusFollowPanel::setTranslateStatus(int status)
{
    switch (status) {
        case 0:
            mHint->clear();
            mHint->setStyleSheet(QStringLiteral("color: #339933; font-size: 13px;"));
            break;
        case 1:
            mHint->setText(tr("翻译中..."));
            mHint->setStyleSheet(QStringLiteral("color: #339933; font-size: 13px;"));
            break;
        case 2:
            mHint->setText(tr("翻译错误!"));
            mHint->setStyleSheet(QStringLiteral("color: #D80000; font-size: 13px;"));
            break;
        default:
            break;
    }
}

void FocusFollowPanel::changeMenuEnterStatus(int status)
{
    markAction(mEnterAction, status != 0);
}

void FocusFollowPanel::changeMenuSpaceStatus(int status)
{
    markAction(mSpaceAction, status != 0);
}

void FocusFollowPanel::changeMenuAutoSendStatus(int status)
{
    markAction(mAutoSendAction, status != 0);
}

void FocusFollowPanel::setCurrentIpId(int id)
{
    mPanelPresenter->setCurrentIpId(id);
}

void FocusFollowPanel::toShowPanel()
{
    setMicStatus(true);
    isEditState = false;
    mIsButtonSendPress = false;
    mReadButton->setVisible(mPanelPresenter->isSupportFollowSpeak());
    setTranslateStatus(0);
    clearBoxes();
    show();
    raise();
    mHoverTimer.start();
    mPanelPresenter->setWaitingToHideStatus(false);
    mPanelPresenter->setAudioEnable(true);
}

void FocusFollowPanel::runHidePlan(const FocusFollowPanelPresenter::HidePlan& plan)
{
    if (plan.clearEdit) {
        isEditState = false;
    }
    if (plan.hideWindow) {
        hide();
    }
    if (plan.stay) {
        return;
    }
    if (plan.waitingHide) {
        toWaitingHide();
        return;
    }
    if (plan.deliver) {
        mPanelPresenter->outputResult();
    }
    if (plan.clear) {
        clearBoxes();
        mPanelPresenter->clearTranslateResult();
    }
}

void FocusFollowPanel::toWaitingHide()
{
    if (mIsButtonSendPress) {
        mPanelPresenter->outputResult();
        isEditState = false;
        clearBoxes();
        mPanelPresenter->clearTranslateResult();
        return;
    }
    mWaitingHideTimer.start();
}

void FocusFollowPanel::onWaitingHideTimeout()
{
    if (mMouseOnPanel || isEditState || !mPanelPresenter->isAutoSendMode()) {
        return;
    }
    hide();
    if (mStack->currentIndex() == FocusFollowPanelPresenter::ResultPage) {
        mPanelPresenter->outputResult();
    }
    isEditState = false;
    clearBoxes();
    mPanelPresenter->clearTranslateResult();
}

void FocusFollowPanel::translateEditNow()
{
    // An edit still within its quiet time is what the user sends: its translation goes out now,
    // and the send waits for it.
    if (mEditTimer.isActive()) {
        mEditTimer.stop();
        if (!mSourceBox->toPlainText().isEmpty()) {
            mPanelPresenter->translateNow(mSourceBox->toPlainText());
        }
    }
}

void FocusFollowPanel::sendNow()
{
    stopReading();
    mIsButtonSendPress = true;
    translateEditNow();
    toHide();
}

void FocusFollowPanel::onEditFinish(bool send)
{
    onEditFinishReadOnly();
    stopReading();
    mIsButtonSendPress = true;
    translateEditNow();
    mTargetBox->setFocus();
    if (send) {
        toHide();
    }
}

bool FocusFollowPanel::isPlaying() const
{
    return mPanelPresenter->reading()->isReading();
}

void FocusFollowPanel::stopReading()
{
    mPanelPresenter->reading()->stopPlaying();
}

void FocusFollowPanel::toggleReading()
{
    ReadAloud* reading = mPanelPresenter->reading();
    if (reading->isReading()) {
        reading->stop();
        mReadButton->setIcon(QIcon(QStringLiteral(":/panels/follow/read.svg")));
        return;
    }
    const QString text = FocusFollowPanelPresenter::readableText(mTargetBox->toPlainText());
    if (text.isEmpty() || !reading->read(FocusFollowPanelPresenter::readingPieces(text))) {
        return;
    }
    mReadButton->setIcon(QIcon(QStringLiteral(":/panels/follow/read_active.svg")));
}

void FocusFollowPanel::onReadingOver(bool own)
{
    // The end of somebody else's reading (the selection toolbar's) is none of this panel's.
    if (!own) {
        return;
    }
    toWaitingHide();
    mReadButton->setIcon(QIcon(QStringLiteral(":/panels/follow/read.svg")));
}

void FocusFollowPanel::setCurrentIndex(int page)
{
    // Hidden while it changes, so that the old page never flashes at the new size.
    mStack->hide();
    mStack->setCurrentIndex(page);
    QElapsedTimer spin;
    spin.start();
    while (spin.elapsed() < 20) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    mStack->show();
}

void FocusFollowPanel::layoutTranslatePage(int height, int frameHeight, bool sendRow)
{
    mGrowth->stop();
    mGrowth->clear();
    resize(kTranslateWidth, height);
    mStack->setGeometry(0, 0, kTranslateWidth, height);
    mTextFrame->setGeometry(0, frameTop(), kTranslateWidth, frameHeight);
    mWaitingFrame->setGeometry(0, frameTop(), kTranslateWidth, frameHeight);
    mSourceBox->setGeometry(12, 4, 336, kBoxStartHeight);
    mBoxLine->setGeometry(12, 34, 336, 1);
    mTargetBox->setGeometry(12, 38, 336, kBoxStartHeight);
    mSendButton->move(262, frameTop() + kSendButtonDy);
    mSendSeparator->move(333, frameTop() + kSendModeDy);
    mSendModeButton->move(338, frameTop() + kSendModeDy - 3);
    for (QWidget* widget : {static_cast<QWidget*>(mSendButton), static_cast<QWidget*>(mSendSeparator),
                            static_cast<QWidget*>(mSendModeButton)}) {
        widget->setVisible(sendRow);
    }
}

void FocusFollowPanel::textChange()
{
    for (QTextEdit* box : {mSourceBox, mTargetBox}) {
        box->document()->adjustSize();
        box->document()->setTextWidth(box->width() - 8);
    }
    if (mSourceBox->toPlainText().isEmpty() && mTargetBox->toPlainText().isEmpty()) {
        return;
    }
    const int s = static_cast<int>(mSourceBox->document()->size().height());
    const int t = static_cast<int>(mTargetBox->document()->size().height());
    mSourceBox->setVerticalScrollBarPolicy(s < 140 ? Qt::ScrollBarAlwaysOff : Qt::ScrollBarAsNeeded);
    mTargetBox->setVerticalScrollBarPolicy(t < 140 ? Qt::ScrollBarAlwaysOff : Qt::ScrollBarAsNeeded);
    int newS = 0;
    int newT = 0;
    if (FocusFollowPanelPresenter::boxHeights(s, t, mSourceBox->height(), mTargetBox->height(), &newS,
                                              &newT)) {
        setChangeTranslateView(newS, newT, 8);
    }
    for (QTextEdit* box : {mSourceBox, mTargetBox}) {
        box->verticalScrollBar()->setValue(box->verticalScrollBar()->maximum());
    }
}

QRect FocusFollowPanel::targetGeometry(QWidget* widget) const
{
    // Where a widget will end once the running growth is over.
    for (int i = 0; i < mGrowth->animationCount(); ++i) {
        auto* animation = static_cast<QPropertyAnimation*>(mGrowth->animationAt(i));
        if (animation->targetObject() == widget && mGrowth->state() == QAbstractAnimation::Running) {
            return animation->endValue().toRect();
        }
    }
    return widget->geometry();
}

void FocusFollowPanel::setChangeTranslateView(int s, int t, int msPerPixel)
{
    // Measured from where the boxes are going, so that a change during a running growth
    // continues from there rather than from a half-way frame.
    const int ds = s - targetGeometry(mSourceBox).height();
    const int dt = t - targetGeometry(mTargetBox).height();
    const int grow = ds + dt;
    QList<QPair<QWidget*, QRect>> moves;
    moves << qMakePair(static_cast<QWidget*>(this), targetGeometry(this).adjusted(0, 0, 0, grow));
    moves << qMakePair(static_cast<QWidget*>(mStack), targetGeometry(mStack).adjusted(0, 0, 0, grow));
    moves << qMakePair(static_cast<QWidget*>(mTextFrame), targetGeometry(mTextFrame).adjusted(0, 0, 0, grow));
    moves << qMakePair(static_cast<QWidget*>(mSourceBox), targetGeometry(mSourceBox).adjusted(0, 0, 0, ds));
    moves << qMakePair(static_cast<QWidget*>(mBoxLine), targetGeometry(mBoxLine).translated(0, ds));
    moves << qMakePair(static_cast<QWidget*>(mTargetBox),
                       targetGeometry(mTargetBox).translated(0, ds).adjusted(0, 0, 0, dt));
    for (QWidget* below : {static_cast<QWidget*>(mSendButton), static_cast<QWidget*>(mSendSeparator),
                           static_cast<QWidget*>(mSendModeButton)}) {
        moves << qMakePair(below, targetGeometry(below).translated(0, grow));
    }
    mGrowth->stop();
    mGrowth->clear();
    const int duration = msPerPixel * (std::abs(ds) + std::abs(dt));
    for (const auto& move : moves) {
        auto* animation = new QPropertyAnimation(move.first, "geometry");
        animation->setStartValue(move.first->geometry());
        animation->setEndValue(move.second);
        animation->setDuration(duration);
        mGrowth->addAnimation(animation);
    }
    mGrowth->start();
}

void FocusFollowPanel::onShortMenu(QPoint point)
{
    Q_UNUSED(point)
    mRightClickMenu->popup(QCursor::pos());
}

void FocusFollowPanel::onTargetMenu(QPoint point)
{
    Q_UNUSED(point)
    mTargetMenu->exec(QCursor::pos());
    mTargetBox->setFocus();
}

void FocusFollowPanel::onLanguageLabelRelease(QLabel* label)
{
    label->setStyleSheet(badgeSheet(false));
}

void FocusFollowPanel::onLanguageLabelEnter(QLabel* label)
{
    label->setStyleSheet(badgeSheet(true));
    if (pickerVisible()) {
        mPickerTimer.stop();
    }
}

void FocusFollowPanel::onLanguageLabelLeave(QLabel* label)
{
    label->setStyleSheet(badgeSheet(false));
}

bool FocusFollowPanel::eventFilter(QObject* watched, QEvent* event)
{
    auto* label = qobject_cast<QLabel*>(watched);
    const bool languageLabel =
        label != nullptr &&
        (label == mDictationLanguage || label == mSourceLanguage[0] || label == mTargetLanguage[0] ||
         label == mSourceLanguage[1] || label == mTargetLanguage[1]);
    if (languageLabel) {
        switch (event->type()) {
            case QEvent::MouseButtonPress:
                if (static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton) {
                    onLanguageLabelPress(label);
                }
                return true;
            case QEvent::MouseButtonRelease:
                onLanguageLabelRelease(label);
                return true;
            case QEvent::Enter:
                onLanguageLabelEnter(label);
                return true;
            case QEvent::Leave:
                onLanguageLabelLeave(label);
                return true;
            default:
                return false;
        }
    }
    if (watched == mSourceBox || watched == mTargetBox) {
        if (event->type() != QEvent::KeyPress) {
            return false;
        }
        // Keys reach the panel only while the user edits in it (the edit takes the keyboard and
        // keeps it until the panel hides). Enter and space are commands then: an editable box
        // never takes a line break or a space. Enter ends the edit, and either key sends when
        // its setting is on.
        auto* box = static_cast<QTextEdit*>(watched);
        const int key = static_cast<QKeyEvent*>(event)->key();
        const bool enter = key == Qt::Key_Return || key == Qt::Key_Enter;
        if (!enter && key != Qt::Key_Space) {
            return false;
        }
        const bool send = enter ? mPanelPresenter->isEnterKeySend() : mPanelPresenter->isSpaceKeySend();
        if (!box->isReadOnly() && (enter || send)) {
            onEditFinish(send);
        } else if (box == mTargetBox && send) {
            sendNow();
        }
        return true;
    }
    if (watched == mSourceBox->viewport() && event->type() == QEvent::MouseButtonRelease &&
        static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton) {
        onSourceBoxRelease();
    }
    return QDialog::eventFilter(watched, event);
}

void FocusFollowPanel::paintEvent(QPaintEvent* event)
{
    Q_UNUSED(event)
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF card = QRectF(rect().adjusted(0, cardTop(), 0, 0)).adjusted(0.5, 0.5, -0.5, -0.5);
    painter.setPen(QPen(QColor(0xd6, 0xd9, 0xde), 1));
    painter.setBrush(Qt::white);
    painter.drawRoundedRect(card, kRadius, kRadius);
}

void FocusFollowPanel::hideEvent(QHideEvent* event)
{
    QDialog::hideEvent(event);
    // Whichever way it went (its own plan, the waiting hide, the session's owner), a hidden
    // panel has no pointer to watch and no picker to close.
    mHoverTimer.stop();
    mPickerTimer.stop();
}

void FocusFollowPanel::resizeEvent(QResizeEvent* event)
{
    QDialog::resizeEvent(event);
    mStack->resize(size());
    reshape();
}

void FocusFollowPanel::reshape()
{
    // Cut also where a compositor blends the window: the see-through band above the card
    // would otherwise take the clicks meant for the window below.
    WindowLook::cut(this, rect().adjusted(0, cardTop(), 0, 0), kRadius);
}

void FocusFollowPanel::layoutMicPage(bool wide, QPoint micAt)
{
    const QSize size = wide ? QSize(kTranslateWidth, 160) : QSize(kDictationWidth, kDictationHeight);
    resize(size);
    mStack->resize(size);
    mMicOnly->move(micAt);
    mMicOnlyBar->move(micAt);
}

bool FocusFollowPanel::cursorOnPanel() const
{
    return isVisible() && frameGeometry().contains(QCursor::pos());
}

void FocusFollowPanel::onEditTimeout()
{
    if (!mSourceBox->toPlainText().isEmpty()) {
        mPanelPresenter->translate(mSourceBox->toPlainText());
    }
}
