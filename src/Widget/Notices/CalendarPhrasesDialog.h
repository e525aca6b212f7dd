#pragma once

#include "Http/BackendRecords.h"
#include "Utils/Singleton.h"
#include "Widget/Notices/NoticePanel.h"

class QStackedWidget;
class QTextBrowser;

// The backend's phrase of the day, as a link, on a picture of the time of day.
class CalendarPhrasesDialog : public NoticePanel, public Singleton<CalendarPhrasesDialog> {
    Q_OBJECT

public:
    // An empty phrase changes nothing.
    void showContent(CalendarPhrases phrases);
    // As showContent, at the given hour of the day.
    void showContentAt(const CalendarPhrases& phrases, int hour);

    int currentPage() const;
    QTextBrowser* browser(int page) const;

private:
    friend class Singleton<CalendarPhrasesDialog>;
    explicit CalendarPhrasesDialog(QWidget* parent = nullptr);

    QStackedWidget* mStack;
    QList<QTextBrowser*> mBrowsers;
};
