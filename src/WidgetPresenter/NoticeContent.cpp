#include "NoticeContent.h"

#include "Utils/Logging.h"
#include "Utils/UrlRules.h"

namespace NoticeContent {

QString restPicture(int index)
{
    const int wrapped = ((index % kRestPictureCount) + kRestPictureCount) % kRestPictureCount;
    return QStringLiteral(":/zh_res/res_1080/Rest/bg%1.png").arg(wrapped + 1, 4, 10, QLatin1Char('0'));
}

int calendarPageForHour(int hour)
{
    if (hour >= 6 && hour <= 10) {
        return 0;
    }
    if (hour == 11 || hour == 12) {
        return 1;
    }
    if (hour >= 13 && hour <= 17) {
        return 2;
    }
    if (hour >= 18 && hour <= 21) {
        return 3;
    }
    return 4;
}

QString calendarPicture(int page)
{
    return QStringLiteral(":/zh_res/res_1080/CalendarPhrases/CalendarPhrases%1.png")
        .arg(page + 1, 2, 10, QLatin1Char('0'));
}

QString calendarLinkHtml(const CalendarPhrases& phrases)
{
    if (!UrlRules::isWebPage(QUrl(phrases.link))) {
        if (!phrases.link.isEmpty()) {
            qCWarning(lcConsole).noquote()
                << "the calendar phrase's link is no web page, left out:" << UrlRules::forLog(phrases.link);
        }
        return QStringLiteral("<span style='color: #FFFFFF;'>%1</span>").arg(phrases.content.toHtmlEscaped());
    }
    return QStringLiteral("<a style='color: #FFFFFF;' href = \"%1\">%2</a>")
        .arg(phrases.link.toHtmlEscaped(), phrases.content.toHtmlEscaped());
}

}  // namespace NoticeContent
