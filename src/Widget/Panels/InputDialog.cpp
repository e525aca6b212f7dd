#include "Widget/Panels/InputDialog.h"

#include "Utils/Logging.h"
#include "Widget/Common/Pictures.h"
#include "Widget/Common/WindowLook.h"
#include "Widget/Common/label.h"
#include "Widget/Panels/ChangeSearchLanguageDialog.h"
#include "Widget/Panels/LevelAnimation.h"

#include <QAction>
#include <QCoreApplication>
#include <QCursor>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QPainterPath>
#include <QPropertyAnimation>
#include <QThread>

#include <cmath>

namespace {

constexpr int kRadius = 12;
constexpr QRect kFrameRect(458, 0, 102, 54);
constexpr QRect kBoxRect(560, 0, 280, 54);

QString frameSheet(int style, bool hover)
{
    const char* colour = style == 1 ? (hover ? "#ffa033" : "#ff8a00") : (hover ? "#4a8ff8" : "#2f7cf6");
    return QStringLiteral(
               "QFrame#languageFrame { background: %1; border-top-left-radius: %2px;"
               " border-bottom-left-radius: %2px; }")
        .arg(QLatin1String(colour))
        .arg(kRadius);
}

QString boxSheet(int style)
{
    const QString border =
        style == 1 ? QStringLiteral("2px solid #ff8a00") : QStringLiteral("1px solid #d6d9de");
    return QStringLiteral(
               "QLineEdit { background: #ffffff; border: %1; border-left: none;"
               " border-top-right-radius: %2px; border-bottom-right-radius: %2px;"
               " padding: 0 10px; font-size: 16px; color: #20252d; }")
        .arg(border)
        .arg(kRadius);
}

QPixmap strip(const QString& name, const QWidget* on)
{
    return Pictures::load(QStringLiteral(":/strip/") + name, on);
}

}  // namespace

InputDialog::InputDialog(QWidget* parent, const InputPresenter::Collaborators* collaborators)
    : QDialog(parent)
{
    // The pictures live in a static library: nothing else would pull them into the program.
    Q_INIT_RESOURCE(strip);
    setWindowFlags(WindowLook::kFloatingFlags);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setFocusPolicy(Qt::NoFocus);
    setWindowTitle(QStringLiteral("Zorvane"));
    mTranslucent = WindowLook::compositing();
    setAttribute(Qt::WA_TranslucentBackground, mTranslucent);
    setFixedSize(kWidth, kHeight);
    setupUi();
    createMenu();

    mTimerPickerHide.setInterval(kPickerHideMs);
    mTimerPickerHide.setSingleShot(true);
    mTimerWidth.setInterval(kWidthTickMs);
    connect(&mTimerWidth, &QTimer::timeout, this, &InputDialog::onTimerWidth);
    connect(&mAnimationGroup, &QAbstractAnimation::finished, this, &InputDialog::reshape);

    mPresenter = collaborators != nullptr ? new InputPresenter(this, *collaborators, this)
                                          : new InputPresenter(this, this);
    connectPanels();
}

InputDialog::~InputDialog()
{
    delete mPresenter;
    mPresenter = nullptr;
}

void InputDialog::setupUi()
{
    mFrame = new QFrame(this);
    mFrame->setObjectName(QStringLiteral("languageFrame"));
    mFrame->setGeometry(kFrameRect);
    mBar.label = new QLabel(mFrame);
    mBar.label->setGeometry(8, 7, 36, 42);
    mBar.label->hide();
    mMicLabel = new QLabel(mFrame);
    mMicLabel->setGeometry(8, 7, 36, 42);
    mMicLabel->setPixmap(strip(QStringLiteral("mic_on.svg"), mMicLabel));
    mLabelChangeLanguage = new label(mFrame);
    mLabelChangeLanguage->setGeometry(60, 5, 36, 46);
    mLabelChangeLanguage->setCursor(Qt::PointingHandCursor);
    mLabelChangeLanguage->setToolTip(tr("选择语言"));
    mLabelChangeLanguage->setAccessibleName(mLabelChangeLanguage->toolTip());
    mLanguageImage = QStringLiteral("language_chinese.svg");
    mLabelChangeLanguage->setPixmap(strip(mLanguageImage, mLabelChangeLanguage));

    mTextInputOut = new QLineEdit(this);
    mTextInputOut->setReadOnly(true);
    mTextInputOut->setFocusPolicy(Qt::NoFocus);
    mTextInputOut->setAttribute(Qt::WA_InputMethodEnabled, false);
    mTextInputOut->setContextMenuPolicy(Qt::NoContextMenu);
    mTextInputOut->setGeometry(kBoxRect);
    mSpeak = new QLabel(this);
    mSpeak->setGeometry(650, 4, 108, 46);
    mSpeak->setPixmap(strip(QStringLiteral("speak.svg"), mSpeak));
    mFace = new QLabel(this);
    mFace->setGeometry(680, 2, 60, 51);
    mFace->setPixmap(strip(QStringLiteral("face_0.svg"), mFace));
    mFace->hide();
    setVoiceSearchViewStyle(0);
    reshape();

    // The strip's own menu, on a right click anywhere on it.
    setContextMenuPolicy(Qt::CustomContextMenu);
    connect(this, &QWidget::customContextMenuRequested, this,
            [this](const QPoint& at) { onShortMenu(mapToGlobal(at)); });
}

void InputDialog::createMenu()
{
    mMenu = new QMenu(this);
    QAction* delSign = mMenu->addAction(tr("去除标点符号"));
    delSign->setCheckable(true);
    connect(delSign, &QAction::triggered, this,
            [this](bool checked) { mPresenter->setDelSign(checked ? 1 : 0); });
    QAction* singleClick = mMenu->addAction(tr("支持单击模式"));
    singleClick->setObjectName(QStringLiteral("singleClick"));
    singleClick->setCheckable(true);
    connect(singleClick, &QAction::triggered, this, [this](bool checked) {
        mPresenter->setSupSingleClick(checked ? 1 : 0);
        toHide();
    });
    connect(mMenu->addAction(tr("退出")), &QAction::triggered, this, &InputDialog::toHide);
    // The marks show the settings as they are when the menu opens.
    connect(mMenu, &QMenu::aboutToShow, this, [this, delSign, singleClick] {
        delSign->setChecked(mPresenter->isDelSign());
        singleClick->setChecked(mPresenter->isSupSingleClick());
        singleClick->setVisible(!mPresenter->isSingleKeyMouse());
    });
}

void InputDialog::onShortMenu(QPoint point)
{
    mMenu->adjustSize();
    const QSize size = mMenu->sizeHint();
    mMenu->popup(QPoint(point.x() - size.width(), point.y() - size.height() - 25));
}

bool InputDialog::isMouseOnRightClickMenuView()
{
    return mMenu->isVisible() && mMenu->geometry().contains(QCursor::pos());
}

// ---- look

void InputDialog::reshape()
{
    // Only the frame and the box are drawn: the rest of the strip lets clicks through, and
    // without a compositor would show black.
    const QRect body = mFrame->geometry().united(mTextInputOut->geometry()).intersected(rect());
    QPainterPath path;
    path.addRoundedRect(QRectF(body), kRadius, kRadius);
    setMask(QRegion(path.toFillPolygon().toPolygon()));
}

void InputDialog::paintEvent(QPaintEvent* event)
{
    Q_UNUSED(event);
    if (!mTranslucent) {
        QPainter painter(this);
        painter.fillRect(rect(), Qt::white);
    }
}

void InputDialog::setFrameHover(bool hover)
{
    mFrame->setStyleSheet(frameSheet(mStyle, hover));
}

void InputDialog::setVoiceSearchViewStyle(int style)
{
    if (style != 0 && style != 1) {
        return;
    }
    mStyle = style;
    setFrameHover(false);
    mTextInputOut->setStyleSheet(boxSheet(style));
}

void InputDialog::placeOnScreen()
{
    const QRect screen = WindowLook::workArea();
    if (screen.isValid()) {
        move(screen.x() + screen.width() - width() - 2, screen.y() + screen.height() - height() - 2);
    }
}

void InputDialog::resetBoxes()
{
    mFrame->move(kFrameRect.topLeft());
    mTextInputOut->resize(kBoxWidth, 56);
    mTextInputOut->move(kBoxRect.topLeft());
    reshape();
}

// ---- showing and hiding

void InputDialog::toShow()
{
    mTimerWidth.start();
    setVoiceSearchViewStyle(0);
    resetBoxes();
    mSpeak->show();
    QTimer::singleShot(kShowDelayMs, this, [this] {
        mMouseInside = isOnMouseEnter();
        placeOnScreen();
        show();
        raise();
    });
    mPresenter->restartHook();
    mPresenter->setAudioEnable(true);
}

void InputDialog::toHide()
{
    mFace->hide();
    mAnimationGroup.stop();
    mAnimationGroup.clear();
    mPresenter->clearAnimationStatus();
    mContent.clear();
    mTextInputOut->clear();
    resetBoxes();
    if (!isOnMouseEnter()) {
        if (!isHiddenChangeSearchLanguageView()) {
            mSearchLanguage->hide();
        }
        hide();
    }
    mTimerWidth.stop();
    mPresenter->setAudioEnable(false);
}

bool InputDialog::isViewHidden()
{
    return isHidden();
}

bool InputDialog::isOnMouseEnter()
{
    if (isHidden()) {
        return false;
    }
    return mask().contains(mapFromGlobal(QCursor::pos()));
}

void InputDialog::setInitVoiceSearchView()
{
    hideMainWindows();
    mSpeak->show();
    toShow();
}

void InputDialog::startVoiceSearchAnimation()
{
    mSpeak->hide();
}

void InputDialog::toHideImageSpeak()
{
    mSpeak->hide();
}

// ---- content

void InputDialog::setContent(QString text)
{
    mContent = text;
    mSpeak->hide();
    mFace->hide();
    if (text.isEmpty()) {
        mTextInputOut->clear();
        return;
    }
    mPresenter->stopRecogningAnimation();
    mTextInputOut->setText(text);
    // The newest words are the ones to see.
    mTextInputOut->setCursorPosition(text.size());
}

QString InputDialog::shownText() const
{
    return mTextInputOut->text();
}

void InputDialog::clearContent()
{
    mTextInputOut->clear();
}

void InputDialog::onTextChange() {}

void InputDialog::setTRContent(bool, QString, QString) {}

int InputDialog::getVolumeSample()
{
    return 40;
}

void InputDialog::onTimerWidth()
{
    const int w = QFontMetrics(mTextInputOut->font()).horizontalAdvance(mContent) + 20;
    if (w < kBoxMinWidth || w > kBoxMaxWidth) {
        return;
    }
    const int delta = w - mTextInputOut->width();
    if (delta == 0) {
        return;
    }
    mAnimationGroup.stop();
    mAnimationGroup.clear();
    const QRect box = mTextInputOut->geometry().adjusted(-delta, 0, 0, 0);
    const QRect frame = mFrame->geometry().translated(-delta, 0);
    // The box grows to the left: the strip's mask must already take it in.
    const QRect before = mFrame->geometry().united(mTextInputOut->geometry());
    if (!before.contains(box.united(frame))) {
        mFrame->setGeometry(frame);
        mTextInputOut->setGeometry(box);
        reshape();
        return;
    }
    animation({{mTextInputOut, box}, {mFrame, frame}}, 5 * std::abs(delta));
}

void InputDialog::animation(const QList<WidgetAnimation>& list, int duration)
{
    for (const WidgetAnimation& entry : list) {
        auto* move = new QPropertyAnimation(entry.widget, "geometry");
        move->setStartValue(entry.widget->geometry());
        move->setEndValue(entry.target);
        move->setDuration(duration);
        mAnimationGroup.addAnimation(move);
    }
    mAnimationGroup.start();
}

// ---- the level, the microphone, the language and the faces

void InputDialog::changeVolume(int volume)
{
    changeVolume(&mBar, volume);
}

void InputDialog::changeVolume(ProgressBar* bar, int level)
{
    const int delta = level - bar->value;
    if (delta == 0) {
        return;
    }
    const double pauseMs = LevelAnimation::stepPauseMs(delta);
    while (bar->value != level) {
        QCoreApplication::processEvents();
        bar->value += bar->value < level ? 1 : -1;
        if (bar->value < 4) {
            bar->label->hide();
        } else {
            bar->label->setPixmap(strip(
                QStringLiteral("voice_search_btn_mic_white%1.svg").arg(qMin(bar->value, 12)), bar->label));
            bar->label->show();
        }
        if (pauseMs > 0) {
            QThread::usleep(static_cast<unsigned long>(pauseMs * 1000));
        }
    }
}

void InputDialog::setMuteVolume()
{
    if (isVisible()) {
        mBar.label->setPixmap(strip(QStringLiteral("voice_search_btn_mic_mute.svg"), mBar.label));
        mBar.label->show();
    }
}

void InputDialog::setTextLanguageText(QString name)
{
    static const QPair<const char*, const char*> kImages[] = {{"普通话", "language_chinese.svg"},
                                                              {"英语", "language_english.svg"},
                                                              {"粤语", "language_cantonese.svg"},
                                                              {"四川话", "language_chuan.svg"}};
    for (const auto& image : kImages) {
        if (name == QString::fromUtf8(image.first)) {
            mLanguageImage = QLatin1String(image.second);
            mLabelChangeLanguage->setPixmap(strip(mLanguageImage, mLabelChangeLanguage));
            return;
        }
    }
}

QLabel* InputDialog::languageLabel() const
{
    return mLabelChangeLanguage;
}

void InputDialog::showFace(int face)
{
    if (face == 0 || face == 1) {
        mFace->setPixmap(strip(QStringLiteral("face_%1.svg").arg(face), mFace));
    }
    mFace->show();
}
