#pragma once

#include "Http/BackendRecords.h"

#include <QString>

// What the rest and calendar panels show; the windows only lay it out.
namespace NoticeContent {

constexpr int kRestPictureCount = 4;
constexpr int kCalendarPageCount = 5;

// ":/zh_res/res_1080/Rest/bg0001.png" for 0, and so on round the four.
QString restPicture(int index);

// The calendar page of an hour of the day: morning (6-10), noon (11-12), afternoon (13-17),
// evening (18-21), night (22-5).
int calendarPageForHour(int hour);
QString calendarPicture(int page);

// The phrase as a white link; the backend's text is escaped so that it shows as written. A link
// that is no web page (a file, a script, a relative path the panel would load itself) leaves
// the phrase as plain text.
QString calendarLinkHtml(const CalendarPhrases& phrases);

}  // namespace NoticeContent
