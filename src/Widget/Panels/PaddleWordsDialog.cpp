#include "Widget/Panels/PaddleWordsDialog.h"

#include "Utils/PreferencesUtils.h"
#include "WidgetPresenter/PaddleWordsPresenter.h"
#include "WidgetPresenter/ReadAloud.h"

#include <QCursor>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QPushButton>

namespace {

// The readers of the synthesis service, as its "per" values; there is no 2.
const struct {
    const char* text;
    int value;
} kReaders[] = {{QT_TRANSLATE_NOOP("PaddleWordsDialog", "女声"), 0},
                {QT_TRANSLATE_NOOP("PaddleWordsDialog", "男声"), 1},
                {QT_TRANSLATE_NOOP("PaddleWordsDialog", "洛比"), 3},
                {QT_TRANSLATE_NOOP("PaddleWordsDialog", "胖谷"), 4}};

}  // namespace

PaddleWordsDialog::PaddleWordsDialog(QWidget* parent, SpeechSynthesisUtils* synthesis)
    : FloatingCardDialog(parent),
      mPresenter(new PaddleWordsPresenter(this, synthesis, this)),
      mMenu(new QMenu(this))
{
    setFixedSize(144, 32);
    setStyleSheet(
        QStringLiteral("QPushButton { border: none; border-radius: 6px; background: transparent; }"
                       "QPushButton:hover { background: #e8f0fe; }"
                       "QPushButton:pressed { background: #d2e3fc; }"));

    auto* logo = new QLabel(this);
    logo->setGeometry(6, 6, 20, 20);
    logo->setPixmap(QIcon(QStringLiteral(":/panels/selection/paddle_logo.svg")).pixmap(20, 20));
    mTranslate = addIconButton(this, QStringLiteral(":/panels/selection/paddle_translate.svg"),
                               tr("文字翻译"), QRect(32, 2, 35, 29), 20);
    mRead = addIconButton(this, QStringLiteral(":/panels/selection/paddle_read.svg"), tr("中/英文朗读"),
                          QRect(70, 2, 35, 29), 20);
    mReader = addIconButton(this, QStringLiteral(":/panels/selection/paddle_reader.svg"), tr("选择朗读者"),
                            QRect(108, 2, 35, 28), 20);

    mTimer.setInterval(kTickMs);
    connect(&mTimer, &QTimer::timeout, this, &PaddleWordsDialog::onTimeout);
    connect(mTranslate, &QPushButton::clicked, this, [this] {
        emit signalTranslateButtonPress();
        toHide();
    });
    connect(mRead, &QPushButton::clicked, this, &PaddleWordsDialog::onReadButton);
    connect(mReader, &QPushButton::clicked, this,
            [this] { mMenu->popup(mReader->mapToGlobal(QPoint(0, mReader->height()))); });
    connect(mPresenter->reading(), &ReadAloud::over, this, &PaddleWordsDialog::onSpeechSynthesisOver);
    createPronPersonMenu();
}

void PaddleWordsDialog::createPronPersonMenu()
{
    mPronPerson = PreferencesUtils::getInstance()->getUserPreferences().pronPerson;
    for (const auto& reader : kReaders) {
        QAction* action = mMenu->addAction(tr(reader.text));
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
    ReadAloud* reading = mPresenter->reading();
    if (!reading->isReading()) {
        emit signalReadingButtonPress(mPronPerson);
        setReadLook(true);
        // A reading keeps the toolbar up, wherever the pointer goes.
        mTimer.stop();
        mOutsideCount = 0;
        reading->markReading();
        return;
    }
    mOutsideCount = 0;
    mTimer.start();
    reading->stop();
    setReadLook(false);
}

bool PaddleWordsDialog::isFollowSpeakPlaying() const
{
    return mPresenter->reading()->isReading();
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
    ReadAloud* reading = mPresenter->reading();
    if (reading->isReading()) {
        reading->stop();
        emit signalReadingButtonPress(mPronPerson);
        setReadLook(true);
        mTimer.stop();
        reading->markReading();
    }
}

void PaddleWordsDialog::onSpeechSynthesisOver()
{
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
    mPresenter->reading()->stopPlaying();
    QDialog::closeEvent(event);
}

void PaddleWordsDialog::paintEvent(QPaintEvent* event)
{
    FloatingCardDialog::paintEvent(event);
    QPainter painter(this);
    painter.setPen(QColor(0xe1, 0xe4, 0xea));
    painter.drawLine(QPointF(29.5, 7), QPointF(29.5, 25));
}
