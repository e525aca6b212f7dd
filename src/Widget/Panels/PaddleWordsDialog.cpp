#include "Widget/Panels/PaddleWordsDialog.h"

#include "SpeechRec/SpeechSynthesisUtils.h"
#include "Utils/PreferencesUtils.h"
#include "Widget/Common/WindowLook.h"
#include "WidgetPresenter/PaddleWordsPresenter.h"

#include <QCursor>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QPushButton>

// The pictures live in a static library: nothing would pull them into the program otherwise.
static void initSelectionResources()
{
    Q_INIT_RESOURCE(selection);
}

namespace {

constexpr int kRadius = 8;

// The readers of the synthesis service, as its "per" values; there is no 2.
const struct {
    const char* text;
    int value;
} kReaders[] = {{"女声", 0}, {"男声", 1}, {"洛比", 3}, {"胖谷", 4}};

QPushButton* iconButton(QWidget* parent, const QString& icon, const QString& tip, const QRect& geometry)
{
    auto* button = new QPushButton(parent);
    button->setGeometry(geometry);
    button->setIcon(QIcon(icon));
    button->setIconSize(QSize(20, 20));
    button->setToolTip(tip);
    button->setFocusPolicy(Qt::NoFocus);
    button->setCursor(Qt::PointingHandCursor);
    return button;
}

}  // namespace

PaddleWordsDialog::PaddleWordsDialog(QWidget* parent, SpeechSynthesisUtils* synthesis)
    : QDialog(parent),
      mPresenter(new PaddleWordsPresenter(this, this)),
      mSynthesis(synthesis != nullptr ? synthesis : SpeechSynthesisUtils::getInstance()),
      mMenu(new QMenu(this))
{
    static const bool resources = (initSelectionResources(), true);
    Q_UNUSED(resources);
    // It floats over the application whose text is selected and must not take its keyboard.
    setWindowFlags(WindowLook::kFloatingFlags);
    setWindowTitle(QStringLiteral("Zorvane"));
    setAttribute(Qt::WA_TranslucentBackground, WindowLook::compositing());
    setAttribute(Qt::WA_ShowWithoutActivating);
    setFocusPolicy(Qt::NoFocus);
    setFixedSize(144, 32);
    setStyleSheet(
        QStringLiteral("QPushButton { border: none; border-radius: 6px; background: transparent; }"
                       "QPushButton:hover { background: #e8f0fe; }"
                       "QPushButton:pressed { background: #d2e3fc; }"));

    auto* logo = new QLabel(this);
    logo->setGeometry(6, 6, 20, 20);
    logo->setPixmap(QIcon(QStringLiteral(":/panels/selection/paddle_logo.svg")).pixmap(20, 20));
    mTranslate = iconButton(this, QStringLiteral(":/panels/selection/paddle_translate.svg"),
                            QStringLiteral("文字翻译"), QRect(32, 2, 35, 29));
    mRead = iconButton(this, QStringLiteral(":/panels/selection/paddle_read.svg"),
                       QStringLiteral("中/英文朗读"), QRect(70, 2, 35, 29));
    mReader = iconButton(this, QStringLiteral(":/panels/selection/paddle_reader.svg"),
                         QStringLiteral("选择朗读者"), QRect(108, 2, 35, 28));

    mTimer.setInterval(kTickMs);
    connect(&mTimer, &QTimer::timeout, this, &PaddleWordsDialog::onTimeout);
    connect(mTranslate, &QPushButton::clicked, this, [this] {
        emit signalTranslateButtonPress();
        toHide();
    });
    connect(mRead, &QPushButton::clicked, this, &PaddleWordsDialog::onReadButton);
    connect(mReader, &QPushButton::clicked, this,
            [this] { mMenu->popup(mReader->mapToGlobal(QPoint(0, mReader->height()))); });
    connect(mSynthesis, &SpeechSynthesisUtils::speechSynthesisOver, this,
            &PaddleWordsDialog::onSpeechSynthesisOver);
    createPronPersonMenu();
}

void PaddleWordsDialog::createPronPersonMenu()
{
    mPronPerson = PreferencesUtils::getInstance()->getUserPreferences().pronPerson;
    for (const auto& reader : kReaders) {
        QAction* action = mMenu->addAction(QString::fromUtf8(reader.text));
        action->setData(reader.value);
        if (reader.value == mPronPerson) {
            action->setIcon(QIcon(QStringLiteral(":/panels/selection/selected.svg")));
        }
    }
    connect(mMenu, &QMenu::triggered, this, &PaddleWordsDialog::onReader);
}

void PaddleWordsDialog::startShow()
{
    setReadLook(false);
    mPoint = QCursor::pos();
    mOutsideCount = 0;
    mTimer.start();
    move(mPoint.x(), mPoint.y() - kAboveCursor);
    show();
    raise();
}

void PaddleWordsDialog::toHide()
{
    if (mTimer.isActive()) {
        mTimer.stop();
    }
    hide();
}

void PaddleWordsDialog::onTimeout()
{
    if (geometry().contains(QCursor::pos())) {
        mOutsideCount = 0;
        return;
    }
    if (++mOutsideCount >= kTicksOutside) {
        toHide();
    }
}

void PaddleWordsDialog::onReadButton()
{
    if (!mIsPlaying) {
        emit signalReadingButtonPress(mPronPerson);
        setReadLook(true);
        // A reading keeps the toolbar up, wherever the pointer goes.
        mTimer.stop();
        mOutsideCount = 0;
        mIsPlaying = true;
        return;
    }
    mIsPlaying = false;
    mOutsideCount = 0;
    mTimer.start();
    mSynthesis->stop();
    setReadLook(false);
}

void PaddleWordsDialog::onReader(QAction* chosen)
{
    for (QAction* action : mMenu->actions()) {
        action->setIcon(action == chosen ? QIcon(QStringLiteral(":/panels/selection/selected.svg"))
                                         : QIcon());
    }
    mPronPerson = chosen->data().toInt();
    // Kept at once: the toolbar lives as long as the program, so a save on destruction would
    // come too late or never.
    UserPreferences record = mPresenter->preferences();
    if (record.pronPerson != mPronPerson) {
        record.pronPerson = mPronPerson;
        PreferencesUtils::getInstance()->setUserPreferences(record);
    }
    if (mIsPlaying) {
        mSynthesis->stop();
        emit signalReadingButtonPress(mPronPerson);
        setReadLook(true);
        mTimer.stop();
        mIsPlaying = true;
    }
}

void PaddleWordsDialog::onSpeechSynthesisOver()
{
    mIsPlaying = false;
    mOutsideCount = 0;
    mTimer.start();
    setReadLook(false);
}

void PaddleWordsDialog::setReadLook(bool active)
{
    mRead->setIcon(QIcon(active ? QStringLiteral(":/panels/selection/paddle_read_active.svg")
                                : QStringLiteral(":/panels/selection/paddle_read.svg")));
}

void PaddleWordsDialog::closeEvent(QCloseEvent* event)
{
    if (mSynthesis->isPlaying()) {
        mSynthesis->stop();
    }
    QDialog::closeEvent(event);
}

void PaddleWordsDialog::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QColor(0, 0, 0, 50));
    painter.setBrush(Qt::white);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), kRadius, kRadius);
    painter.setPen(QColor(0xe1, 0xe4, 0xea));
    painter.drawLine(QPointF(29.5, 7), QPointF(29.5, 25));
}

void PaddleWordsDialog::resizeEvent(QResizeEvent* event)
{
    QDialog::resizeEvent(event);
    WindowLook::shape(this, rect(), kRadius);
}
