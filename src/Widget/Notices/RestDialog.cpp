#include "RestDialog.h"

#include "Widget/Common/Pictures.h"
#include "WidgetPresenter/NoticeContent.h"

#include <QLabel>
#include <QPushButton>

namespace {

// One line for each picture, in the same order.
const char* const kTips[NoticeContent::kRestPictureCount] = {
    QT_TRANSLATE_NOOP("RestDialog", "站起来伸个懒腰吧"), QT_TRANSLATE_NOOP("RestDialog", "喝杯水，放松一下"),
    QT_TRANSLATE_NOOP("RestDialog", "看看远处，让眼睛歇一会儿"),
    QT_TRANSLATE_NOOP("RestDialog", "活动一下肩颈吧")};

}  // namespace

RestDialog::RestDialog(QWidget* parent)
    : NoticePanel(24, parent),
      mPicture(new QLabel(frame())),
      mTitle(new QLabel(tr("您已经连续工作很久了"), frame())),
      mTip(new QLabel(frame()))
{
    Q_INIT_RESOURCE(reminders);
    setWindowTitle(tr("Zorvane 休息提醒"));
    mPicture->setGeometry(0, 0, kSize, kSize);
    mPicture->setScaledContents(true);
    mTitle->setGeometry(24, 40, kSize - 48, 36);
    mTitle->setStyleSheet(QStringLiteral("color: #FFFFFF; font-size: 22px; font-weight: bold;"));
    mTip->setGeometry(24, 80, kSize - 48, 30);
    mTip->setStyleSheet(QStringLiteral("color: #FFFFFF; font-size: 17px;"));
    closeButton()->raise();
    // Placed only: the first reminder is the first picture.
    placeAtBottomRight();
}

void RestDialog::showContent()
{
    placeAtBottomRight();
    changeBackground();
    animationShow();
}

void RestDialog::changeBackground()
{
    mCurrentPicture = NoticeContent::restPicture(mBackgroundIndex);
    mPicture->setPixmap(Pictures::load(mCurrentPicture, mPicture));
    mTip->setText(tr(kTips[mBackgroundIndex]));
    mBackgroundIndex = (mBackgroundIndex + 1) % NoticeContent::kRestPictureCount;
}
