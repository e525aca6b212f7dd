#include "Widget/Panels/TextTranslateDialog.h"

#include "Utils/LanguageTables.h"
#include "Widget/Common/ComboBox.h"
#include "Widget/Common/TextEdit.h"
#include "Widget/Common/WindowLook.h"
#include "Widget/Panels/FloatingCardDialog.h"
#include "Widget/Panels/PaddleWordsDialog.h"
#include "WidgetPresenter/ReadAloud.h"
#include "WidgetPresenter/TextTranslatePresenter.h"

#include <QApplication>
#include <QClipboard>
#include <QFrame>
#include <QGuiApplication>
#include <QLabel>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QParallelAnimationGroup>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QTextDocument>

namespace {

// Inside the frame, which starts below the hint band.
constexpr int kFrameTop = 46;
constexpr int kSourceTop = 40;
constexpr int kDividerY = 165;
constexpr int kLanguageY = 170;
constexpr int kTargetTop = 190;
constexpr int kBoxWidth = 435;
constexpr int kScrollFrom = 138;
constexpr int kMsPerPixel = 5;

const QRect kHintRect(138, 8, 180, 30);

}  // namespace

TextTranslateDialog::TextTranslateDialog(QWidget* parent, PaddleWordsDialog* paddle,
                                         SpeechSynthesisUtils* synthesis, HttpManager* http)
    : QDialog(parent),
      mPaddle(paddle != nullptr ? paddle : PaddleWordsDialog::getInstance(parent)),
      mAnimation(new QParallelAnimationGroup(this))
{
    // An ordinary window, so that the window manager gives it the keyboard when the user
    // clicks into it; it stays over the application it translates from.
    setWindowFlags(Qt::FramelessWindowHint | Qt::WindowSystemMenuHint | Qt::WindowStaysOnTopHint);
    setWindowTitle(QStringLiteral("Zorvane"));
    setAttribute(Qt::WA_TranslucentBackground, WindowLook::compositing());
    // Shown beside the selection without taking the keyboard from the application.
    setAttribute(Qt::WA_ShowWithoutActivating);
    setupUi();
    mPresenter = new TextTranslatePresenter(this, http, synthesis, this);
    mLanguage->setCurrentIndex(mPresenter->preferences().textTranslateLanguage);

    mTimerHint.setInterval(1000);
    connect(&mTimerHint, &QTimer::timeout, this, &TextTranslateDialog::onCloseLabel);
    connect(mPresenter->reading(), &ReadAloud::over, this, &TextTranslateDialog::onSpeechSynthesisOver);
    connect(mSource->document(), &QTextDocument::contentsChanged, this, &TextTranslateDialog::onTextChange,
            Qt::QueuedConnection);
    connect(mTarget->document(), &QTextDocument::contentsChanged, this, &TextTranslateDialog::onTextChange,
            Qt::QueuedConnection);
    connect(mSource, &QTextEdit::textChanged, this, [this] {
        if (!mSource->isReadOnly()) {
            mPresenter->toTranslate();
            setTranslateStatus(1);
        }
    });
    connect(mSource, &TextEdit::signalEditMouseButtonRelease, this, &TextTranslateDialog::onButtonEdit);
    connect(mSource, &TextEdit::signalEditFinish, this, [this] { setSourceTextIsOnlyRead(true); });
    connect(mEdit, &QPushButton::clicked, this, [this] {
        mEditByButton = true;
        onButtonEdit();
    });
    connect(mCopy, &QPushButton::clicked, this, &TextTranslateDialog::onButtonCopy);
    connect(mRead, &QPushButton::clicked, this, &TextTranslateDialog::onReadButton);
    connect(mClose, &QPushButton::clicked, this, [this] {
        mSource->clear();
        mTarget->clear();
        stopReading();
        close();
    });
    connect(mTarget, &QWidget::customContextMenuRequested, this, &TextTranslateDialog::onRightMenu);
    connect(mLanguage, QOverload<int>::of(&QComboBox::activated), this,
            &TextTranslateDialog::onChangeLanguage);
}

void TextTranslateDialog::setupUi()
{
    setStyleSheet(QStringLiteral(
        "QFrame#frame { background: transparent; }"
        "QLabel#title { color: #2b2f36; font-size: 14px; font-weight: bold; }"
        "QLabel#hint { background: #2b2f36; color: white; border-radius: 15px; font-size: 13px; }"
        "QLabel#caption { color: #6b7280; font-size: 13px; }"
        "QFrame#divider { background: #e6e9ee; }"
        "QTextEdit { border: none; background: transparent; color: #2b2f36; font-size: 15px; }"
        "QTextEdit[readOnly=\"false\"] { background: #f5f8ff; border-radius: 6px; }"
        "QScrollBar:vertical { width: 6px; background: transparent; margin: 0; }"
        "QScrollBar::handle:vertical { background: #c8ccd4; border-radius: 3px; min-height: 20px; }"
        "QScrollBar::add-line:vertical, QScrollBar::sub-line:vertical { height: 0; }"
        "QPushButton { border: none; border-radius: 6px; background: transparent; }"
        "QPushButton:hover { background: #eef0f3; }"
        "ComboBox { border: 1px solid #d6d9de; border-radius: 4px; padding: 0 6px; font-size: 13px;"
        " color: #2f7cf6; background: white; }"
        "ComboBox::drop-down { border: none; width: 16px; }"
        "ComboBox::down-arrow { image: url(:/panels/selection/arrow_down.svg); }"));
    setFixedSize(kWidth, kHeight);

    mHint = new QLabel(this);
    mHint->setObjectName(QStringLiteral("hint"));
    mHint->setAlignment(Qt::AlignCenter);
    mHint->setGeometry(kHintRect);
    mHint->hide();

    mFrame = new QFrame(this);
    mFrame->setObjectName(QStringLiteral("frame"));
    mTitle = new QLabel(tr("文字翻译"), mFrame);
    mTitle->setObjectName(QStringLiteral("title"));
    mTitle->setGeometry(14, 8, 200, 26);
    mClose = FloatingCardDialog::addIconButton(mFrame, QStringLiteral(":/panels/selection/text_close.svg"),
                                               tr("关闭"), QRect(422, 8, 26, 26), 18);

    mSource = new TextEdit(mFrame);
    mEdit = FloatingCardDialog::addIconButton(mFrame, QStringLiteral(":/panels/selection/text_edit.svg"),
                                              tr("编辑原文"), QRect(0, 0, 26, 26), 18);
    mDivider = new QFrame(mFrame);
    mDivider->setObjectName(QStringLiteral("divider"));
    mLanguageRow = new QWidget(mFrame);
    auto* caption = new QLabel(tr("自动检测  →"), mLanguageRow);
    caption->setObjectName(QStringLiteral("caption"));
    caption->setGeometry(0, 0, 80, 20);
    mLanguage = new ComboBox(mLanguageRow);
    mLanguage->setGeometry(84, 0, 180, 20);
    mLanguage->setFocusPolicy(Qt::NoFocus);
    for (const char* name : kConsoleTargetLabels) {
        mLanguage->addItem(LanguageTables::shown(name));
    }
    mRead = FloatingCardDialog::addIconButton(mFrame, QStringLiteral(":/panels/selection/paddle_read.svg"),
                                              tr("朗读译文"), QRect(0, 0, 26, 20), 18);
    mTarget = new TextEdit(mFrame);
    mTarget->setContextMenuPolicy(Qt::CustomContextMenu);
    mCopy = FloatingCardDialog::addIconButton(mFrame, QStringLiteral(":/panels/selection/text_copy.svg"),
                                              tr("复制译文"), QRect(0, 0, 26, 26), 18);
    for (TextEdit* box : {mSource, mTarget}) {
        box->setReadOnly(true);
        box->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        box->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        box->setFrameShape(QFrame::NoFrame);
        box->document()->setDocumentMargin(4);
    }
    initView();
}

void TextTranslateDialog::initView()
{
    mAnimation->stop();
    mAnimation->clear();
    setFixedSize(kWidth, kHeight);
    mFrame->setGeometry(0, kFrameTop, kWidth, kHeight - kFrameTop);
    mSource->setGeometry(10, kSourceTop, kBoxWidth, kBoxHeight);
    mEdit->setGeometry(418, kSourceTop + kBoxHeight + 2, 26, 26);
    mDivider->setGeometry(0, kDividerY, kWidth, 1);
    mLanguageRow->setGeometry(10, kLanguageY, 280, 20);
    mRead->setGeometry(410, kLanguageY - 2, 26, 22);
    mTarget->setGeometry(10, kTargetTop, kBoxWidth, kBoxHeight);
    mCopy->setGeometry(418, kTargetTop + kBoxHeight + 2, 26, 26);
}

QString TextTranslateDialog::getSourceText()
{
    return mSource->toPlainText();
}

void TextTranslateDialog::setSourceTextIsOnlyRead(bool readOnly)
{
    mSource->setReadOnly(readOnly);
    // The style of an editable box differs; it is chosen by the property.
    mSource->style()->unpolish(mSource);
    mSource->style()->polish(mSource);
}

void TextTranslateDialog::setSourceText(QString text)
{
    mSource->setText(text);
    mPresenter->translate(text);
    toShow();
    mPresenter->showRecHint();
}

void TextTranslateDialog::setTargetText(QString text)
{
    setTranslateStatus(0);
    if (!mSource->toPlainText().isEmpty()) {
        mTarget->setText(text);
    }
}

void TextTranslateDialog::setComboTextTranslateLanguage(int index)
{
    mLanguage->setCurrentIndex(index);
}

int TextTranslateDialog::getComboTextTranslateLanguage()
{
    return mLanguage->currentIndex();
}

void TextTranslateDialog::setShowHint(QString hint)
{
    mHint->setText(hint);
    mHint->setVisible(!hint.isEmpty());
    updateShape();
}

void TextTranslateDialog::setTranslateStatus(int status)
{
    switch (status) {
        case 0:
            setShowHint(QString());
            break;
        case 1:
            setShowHint(tr("正在翻译中..."));
            break;
        case 2:
            setShowHint(tr("翻译错误!"));
            break;
        case 3:
            setShowHint(tr("复制成功!"));
            break;
        default:
            return;
    }
}

bool TextTranslateDialog::isHiddenView()
{
    return isHidden();
}

void TextTranslateDialog::toShow()
{
    mRead->setVisible(mPresenter->isSupportFollowSpeak());
    setTranslateStatus(0);
    initView();
    moveWindow();
    show();
    raise();
    setSourceTextIsOnlyRead(true);
}

void TextTranslateDialog::setCurrentIpId(int id)
{
    mPresenter->setCurrentIpId(id);
}

void TextTranslateDialog::toHide()
{
    mSource->clear();
    mTarget->clear();
    hide();
    setSourceTextIsOnlyRead(true);
}

void TextTranslateDialog::moveWindow()
{
    if (!isHidden()) {
        return;
    }
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (screen == nullptr) {
        return;
    }
    const QRect area = screen->availableGeometry();
    const QPoint point = mPaddle->getPaddleWordViewPoint();
    const int w = width();
    const int h = height();
    auto place = [](int at, int size, int room) {
        if (at < size) {
            return size;
        }
        if (at >= room - size) {
            return room - size;
        }
        return at;
    };
    move(place(point.x(), w, area.width()), place(point.y(), h, area.height()));
}

void TextTranslateDialog::startShowCopySuccess()
{
    mHintCount = 2;
    // Shown at once; the ticks keep it for two seconds.
    setTranslateStatus(3);
    mTimerHint.start();
}

void TextTranslateDialog::onCloseLabel()
{
    setTranslateStatus(3);
    --mHintCount;
    if (mHintCount < 1) {
        mTimerHint.stop();
        setTranslateStatus(0);
    }
}

void TextTranslateDialog::onSelectAll()
{
    if (mTarget->toPlainText().isEmpty()) {
        return;
    }
    startShowCopySuccess();
    // On the box itself: a synthetic Ctrl+A, Ctrl+C would go to whichever window has the
    // keyboard, the user's application when this window was shown without it.
    mTarget->selectAll();
    mTarget->copy();
    mTarget->setFocusPolicy(Qt::NoFocus);
}

void TextTranslateDialog::onCopy()
{
    startShowCopySuccess();
    mTarget->copy();
}

void TextTranslateDialog::onButtonEdit()
{
    if (!mSource->isReadOnly()) {
        return;
    }
    setSourceTextIsOnlyRead(false);
    if (mEditByButton) {
        mEditByButton = false;
        // Shown without the keyboard: ask for it now that the user wants to type here.
        activateWindow();
        mSource->setFocus();
        mSource->moveCursor(QTextCursor::End);
    }
}

void TextTranslateDialog::onButtonCopy()
{
    if (mTarget->toPlainText().isEmpty()) {
        return;
    }
    startShowCopySuccess();
    QClipboard* clipboard = QGuiApplication::clipboard();
    clipboard->clear();
    clipboard->setText(mTarget->toPlainText());
    setSourceTextIsOnlyRead(true);
}

void TextTranslateDialog::onRightMenu(QPoint)
{
    QMenu menu(this);
    menu.addAction(tr("全选并复制"), this, &TextTranslateDialog::onSelectAll);
    menu.addAction(tr("复制"), this, &TextTranslateDialog::onCopy);
    menu.exec(QCursor::pos());
    mTarget->setFocus();
}

void TextTranslateDialog::onTextChange()
{
    for (TextEdit* box : {mSource, mTarget}) {
        box->document()->adjustSize();
        box->document()->setTextWidth(box->width() - 20);
    }
    if (mSource->toPlainText().isEmpty()) {
        return;
    }
    const int s = static_cast<int>(mSource->document()->size().height());
    const int t = static_cast<int>(mTarget->document()->size().height());
    mSource->setVerticalScrollBarPolicy(s < kScrollFrom ? Qt::ScrollBarAlwaysOff : Qt::ScrollBarAsNeeded);
    mTarget->setVerticalScrollBarPolicy(t < kScrollFrom ? Qt::ScrollBarAlwaysOff : Qt::ScrollBarAsNeeded);
    int source = 0;
    int target = 0;
    if ((s != mSource->height() || t != mTarget->height()) &&
        TextTranslatePresenter::grownBoxHeights(s, t, &source, &target)) {
        setNewTextTranslateView(source, target);
        moveWindow();
    }
    for (TextEdit* box : {mSource, mTarget}) {
        box->verticalScrollBar()->setValue(box->verticalScrollBar()->maximum());
    }
}

void TextTranslateDialog::setNewTextTranslateView(int s, int t)
{
    const int ds = s - mSource->height();
    const int dt = t - mTarget->height();
    if (ds == 0 && dt == 0) {
        return;
    }
    mAnimation->stop();
    mAnimation->clear();
    const int duration = kMsPerPixel * (qAbs(ds) + qAbs(dt));
    auto animate = [this, duration](QWidget* widget, const QRect& target) {
        auto* step = new QPropertyAnimation(widget, "geometry");
        step->setDuration(duration);
        step->setStartValue(widget->geometry());
        step->setEndValue(target);
        mAnimation->addAnimation(step);
    };
    // The window itself may only grow while it is free of the fixed size.
    setMinimumSize(0, 0);
    setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    animate(this, geometry().adjusted(0, 0, 0, ds + dt));
    animate(mFrame, mFrame->geometry().adjusted(0, 0, 0, ds + dt));
    animate(mSource, mSource->geometry().adjusted(0, 0, 0, ds));
    for (QWidget* below : {static_cast<QWidget*>(mEdit), static_cast<QWidget*>(mDivider), mLanguageRow,
                           static_cast<QWidget*>(mRead)}) {
        animate(below, below->geometry().translated(0, ds));
    }
    animate(mTarget, mTarget->geometry().translated(0, ds).adjusted(0, 0, 0, dt));
    animate(mCopy, mCopy->geometry().translated(0, ds + dt));
    mAnimation->start();
}

void TextTranslateDialog::onChangeLanguage(int index)
{
    mPresenter->onTextTranslateLanguageChange(index);
    mRead->setVisible(index >= 0 && index <= TextTranslatePresenter::kLastReadableLanguage);
    if (mPresenter->reading()->isReading()) {
        mPresenter->reading()->stop();
        setReadLook(false);
    }
}

void TextTranslateDialog::onReadButton()
{
    ReadAloud* reading = mPresenter->reading();
    if (reading->isReading()) {
        reading->stop();
        setReadLook(false);
        return;
    }
    if (reading->read(TextTranslatePresenter::readingPieces(mTarget->toPlainText()))) {
        setReadLook(true);
    }
}

bool TextTranslateDialog::isPlaying() const
{
    return mPresenter->reading()->isReading();
}

void TextTranslateDialog::onSpeechSynthesisOver()
{
    setReadLook(false);
}

void TextTranslateDialog::setReadLook(bool active)
{
    mRead->setIcon(QIcon(active ? QStringLiteral(":/panels/selection/paddle_read_active.svg")
                                : QStringLiteral(":/panels/selection/paddle_read.svg")));
}

void TextTranslateDialog::stopReading()
{
    mPresenter->reading()->stopPlaying();
    mPresenter->reading()->forget();
    setReadLook(false);
}

void TextTranslateDialog::closeEvent(QCloseEvent* event)
{
    stopReading();
    QDialog::closeEvent(event);
}

void TextTranslateDialog::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    FloatingCardDialog::paintCard(&painter, cardRect(), kRadius);
}

void TextTranslateDialog::resizeEvent(QResizeEvent* event)
{
    QDialog::resizeEvent(event);
    updateShape();
}

QRect TextTranslateDialog::cardRect() const
{
    // The frame fills the window below the hint band; while the window grows the frame may
    // still be a step behind, so the card is taken from the window.
    return rect().adjusted(0, kFrameTop, 0, 0);
}

void TextTranslateDialog::updateShape()
{
    if (mHint == nullptr) {
        return;
    }
    WindowLook::shape(this, cardRect(), kRadius);
    if (!WindowLook::compositing() && mHint->isVisible()) {
        // The hint floats above the card: the cut keeps its pill too.
        QPainterPath pill;
        pill.addRoundedRect(QRectF(mHint->geometry()), 15, 15);
        setMask(mask().united(QRegion(pill.toFillPolygon().toPolygon())));
    }
}

void TextTranslateDialog::mousePressEvent(QMouseEvent* event)
{
    // The boxes take their own presses; anywhere else the body drags the window.
    mDragging = true;
    mDragPoint = event->globalPos();
    QDialog::mousePressEvent(event);
}

void TextTranslateDialog::mouseMoveEvent(QMouseEvent* event)
{
    if (mDragging) {
        move(pos() + event->globalPos() - mDragPoint);
        mDragPoint = event->globalPos();
    }
    QDialog::mouseMoveEvent(event);
}

void TextTranslateDialog::mouseReleaseEvent(QMouseEvent* event)
{
    if (mDragging) {
        move(pos() + event->globalPos() - mDragPoint);
        mDragging = false;
    }
    QDialog::mouseReleaseEvent(event);
}
