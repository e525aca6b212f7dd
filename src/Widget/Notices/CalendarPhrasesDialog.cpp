#include "CalendarPhrasesDialog.h"

#include "Widget/Common/Pictures.h"
#include "WidgetPresenter/NoticeContent.h"

#include <QLabel>
#include <QPushButton>
#include <QStackedWidget>
#include <QTextBrowser>
#include <QTime>

namespace {

// Each picture leaves its own free band for the text.
const QRect kBrowserGeometry[NoticeContent::kCalendarPageCount] = {
    {18, 180, 351, 171}, {18, 150, 351, 190}, {18, 175, 351, 145}, {18, 159, 351, 161}, {18, 180, 351, 171}};

}  // namespace

CalendarPhrasesDialog::CalendarPhrasesDialog(QWidget* parent)
    : NoticePanel(20, parent), mStack(new QStackedWidget(frame()))
{
    Q_INIT_RESOURCE(reminders);
    setWindowTitle(tr("Zorvane 日历提醒"));
    mStack->setGeometry(0, 0, kSize, kSize);
    for (int page = 0; page < NoticeContent::kCalendarPageCount; ++page) {
        auto* widget = new QWidget(mStack);
        auto* picture = new QLabel(widget);
        picture->setGeometry(0, 0, kSize, kSize);
        picture->setScaledContents(true);
        picture->setPixmap(Pictures::load(NoticeContent::calendarPicture(page), picture, picture->size()));
        auto* browser = new QTextBrowser(widget);
        browser->setGeometry(kBrowserGeometry[page]);
        browser->setOpenExternalLinks(true);
        browser->setFrameShape(QFrame::NoFrame);
        browser->setFocusPolicy(Qt::NoFocus);
        browser->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
        browser->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        browser->setStyleSheet(
            QStringLiteral("QTextBrowser { background: transparent; color: #FFFFFF; font-size: 20px; }"));
        browser->viewport()->setAutoFillBackground(false);
        mBrowsers << browser;
        mStack->addWidget(widget);
    }
    closeButton()->raise();
    placeAtBottomRight();
}

void CalendarPhrasesDialog::showContent(CalendarPhrases phrases)
{
    showContentAt(phrases, QTime::currentTime().hour());
}

void CalendarPhrasesDialog::showContentAt(const CalendarPhrases& phrases, int hour)
{
    if (phrases.content.isEmpty()) {
        return;
    }
    const int page = NoticeContent::calendarPageForHour(hour);
    mStack->setCurrentIndex(page);
    mBrowsers[page]->append(NoticeContent::calendarLinkHtml(phrases));
    animationShow();
}

int CalendarPhrasesDialog::currentPage() const
{
    return mStack->currentIndex();
}

QTextBrowser* CalendarPhrasesDialog::browser(int page) const
{
    return mBrowsers.value(page);
}
