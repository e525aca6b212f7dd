#pragma once

#include "Utils/UserPreferences.h"

#include <QObject>
#include <QStringList>
#include <QTimer>

class HttpManager;
class ReadAloud;
class SpeechSynthesisUtils;
class TextTranslateView;

// The rules of the text translation window: when a request goes out (1 s after the text
// settles, 1 s more while the user edits), what the window shows of the answer, and which
// target languages can be read aloud.
class TextTranslatePresenter : public QObject {
    Q_OBJECT

public:
    enum TimerId { TimerRequest, TimerRetry, TimerHint };
    static constexpr int kTimerMs = 1000;
    // The last target row that the voice can read ("文言文").
    static constexpr int kLastReadableLanguage = 5;
    static constexpr int kReadingPieceChars = 1024;

    // http, synthesis null: the process-wide ones.
    explicit TextTranslatePresenter(TextTranslateView* view, HttpManager* http = nullptr,
                                    SpeechSynthesisUtils* synthesis = nullptr, QObject* parent = nullptr);

    void selectAll();
    void copy();
    void translate(QString text);
    bool isTranslateFinish() const { return mTranslateFinish; }
    void toTranslate();
    void showRecHint();
    void setCurrentIpId(int id) { mCurrentIpId = id; }
    bool isSupportFollowSpeak() const;
    UserPreferences preferences() const { return mPreferences; }
    // The reading of the translation.
    ReadAloud* reading() const { return mReading; }

    // The box heights for documents of heights s and t: a box grows with its text from 51 to
    // 137 and stops at 134 above 138, where it scrolls. False: the sizes stay.
    static bool grownBoxHeights(int s, int t, int* source, int* target);
    // The text of a translation as the voice gets it: marks it would spell out removed, cut
    // into the pieces the synthesis service takes.
    static QStringList readingPieces(QString text);

    const QTimer& timer(TimerId id) const;
    // Tests: the expiry of a timer, now.
    void expireTimer(TimerId id);

public slots:
    void onTextTranslateLanguageChange(int index);
    void onPreferencesChange(UserPreferences references);

private:
    void onRequestTimeout();
    void toTraditional(int serial, const QString& source, const QString& simplified);
    // Shows an answer and reports it to the backend.
    void showTranslation(const QString& source, int row, const QString& result);
    void onRetryTimeout();
    void onHintTimeout();
    QTimer* timerOf(TimerId id) const;

    TextTranslateView* mView;
    HttpManager* mHttp;
    ReadAloud* mReading;
    UserPreferences mPreferences;
    bool mTranslateFinish = true;
    QString mSourceText;
    int mCurrentIpId = 0;
    int mRequestSerial = 0;  // the request whose answer is awaited
    QTimer* mTimerRequest;
    QTimer* mTimerRetry;
    QTimer* mTimerHint;
};
