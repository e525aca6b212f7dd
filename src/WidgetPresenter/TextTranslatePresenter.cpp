#include "WidgetPresenter/TextTranslatePresenter.h"

#include "Http/HttpManager.h"
#include "Platform/WinUtils.h"
#include "Utils/LanguageTables.h"
#include "Utils/Logging.h"
#include "Utils/PreferencesUtils.h"
#include "WidgetPresenter/ReadAloud.h"
#include "WidgetPresenter/TextTranslateView.h"

#include <QPointer>

namespace {

// Rows of the target list: Cantonese in the traditional script, and traditional Mandarin,
// whose code asks the service for that script.
constexpr int kCantoneseTraditionalRow = 3;
constexpr int kTraditionalChineseRow = 1;

QString joined(const BaiduTranslateMessage& message)
{
    QStringList lines;
    for (const BaiduTranslateResult& row : message.result) {
        lines << row.dst;
    }
    return lines.join(QLatin1Char('\n'));
}

QTimer* singleShotTimer(QObject* parent)
{
    auto* timer = new QTimer(parent);
    timer->setSingleShot(true);
    timer->setInterval(TextTranslatePresenter::kTimerMs);
    return timer;
}
}  // namespace

TextTranslatePresenter::TextTranslatePresenter(TextTranslateView* view, HttpManager* http,
                                               SpeechSynthesisUtils* synthesis, QObject* parent)
    : QObject(parent),
      mView(view),
      mHttp(http != nullptr ? http : HttpManager::getInstance()),
      mReading(new ReadAloud(synthesis, ReadAloud::ReachNow, this)),
      mPreferences(PreferencesUtils::getInstance()->getUserPreferences()),
      mTimerRequest(singleShotTimer(this)),
      mTimerRetry(singleShotTimer(this)),
      mTimerHint(singleShotTimer(this))
{
    connect(mTimerRequest, &QTimer::timeout, this, &TextTranslatePresenter::onRequestTimeout);
    connect(mTimerRetry, &QTimer::timeout, this, &TextTranslatePresenter::onRetryTimeout);
    connect(mTimerHint, &QTimer::timeout, this, &TextTranslatePresenter::onHintTimeout);
    connect(PreferencesUtils::getInstance(), &PreferencesUtils::signalPreferencesChange, this,
            &TextTranslatePresenter::onPreferencesChange);
}

void TextTranslatePresenter::selectAll()
{
    WinUtils::getInstance()->selectAll();
}

void TextTranslatePresenter::copy()
{
    WinUtils::getInstance()->copyContent();
}

void TextTranslatePresenter::translate(QString text)
{
    if (text.isEmpty()) {
        return;
    }
    mTranslateFinish = false;
    mSourceText = text;
    mTimerRequest->start();
}

void TextTranslatePresenter::onRequestTimeout()
{
    // The window may be gone before the answer: only a living presenter touches it, and only
    // the answer to its latest request.
    QPointer<TextTranslatePresenter> self(this);
    const int serial = ++mRequestSerial;
    const QString source = mSourceText;
    const int row = mPreferences.textTranslateLanguage;
    auto failed = [self, serial] {
        if (self && serial == self->mRequestSerial) {
            self->mTranslateFinish = true;
            self->mView->setTranslateStatus(2);
        }
    };
    mHttp->baiduTranslate(
        mCurrentIpId, QStringLiteral("auto"), LanguageTables::translateCode(row), source,
        [self, serial, source, row](bool ok, BaiduTranslateMessage message) {
            if (!self || serial != self->mRequestSerial) {
                return;
            }
            const QString result = joined(message);
            if (!ok || message.error || result.isEmpty()) {
                qCWarning(lcInput) << "text translation failed" << message.errorCode << message.errorMsg;
                self->mTranslateFinish = true;
                self->mView->setTranslateStatus(2);
                return;
            }
            if (row == kCantoneseTraditionalRow) {
                self->toTraditional(serial, source, result);
            } else {
                self->showTranslation(source, row, result);
            }
        },
        [failed](QString) { failed(); }, [failed](QString, QNetworkReply::NetworkError) { failed(); });
}

void TextTranslatePresenter::toTraditional(int serial, const QString& source, const QString& simplified)
{
    // The service writes Cantonese in the simplified script: a second request turns it into
    // the traditional one, and the local conversion stands in when that request fails.
    QPointer<TextTranslatePresenter> self(this);
    auto local = [self, serial, source, simplified] {
        if (self && serial == self->mRequestSerial) {
            qCWarning(lcInput) << "traditional script from the service failed; converting locally";
            self->showTranslation(source, kCantoneseTraditionalRow,
                                  WinUtils::getInstance()->SimplifiedToTraditional(simplified));
        }
    };
    mHttp->baiduTranslate(
        mCurrentIpId, LanguageTables::translateCode(kCantoneseTraditionalRow),
        LanguageTables::translateCode(kTraditionalChineseRow), simplified,
        [self, serial, source, local](bool ok, BaiduTranslateMessage message) {
            if (!self || serial != self->mRequestSerial) {
                return;
            }
            const QString traditional = joined(message);
            if (!ok || message.error || traditional.isEmpty()) {
                local();
                return;
            }
            self->showTranslation(source, kCantoneseTraditionalRow, traditional);
        },
        [local](QString) { local(); }, [local](QString, QNetworkReply::NetworkError) { local(); });
}

void TextTranslatePresenter::showTranslation(const QString& source, int row, const QString& result)
{
    mTranslateFinish = true;
    mView->setTargetText(result);
    // The backend keeps text translations apart from the voice ones as records of type 2.
    TextRecord record;
    record.ip = mCurrentIpId;
    record.from = QStringLiteral("auto");
    record.to = LanguageTables::translateCode(row);
    record.src = source;
    record.dst = result;
    record.type = 2;
    mHttp->uploadRecoed(record, nullptr, nullptr, nullptr);
}

void TextTranslatePresenter::toTranslate()
{
    mTimerRetry->start();
}

void TextTranslatePresenter::onRetryTimeout()
{
    const QString source = mView->getSourceText();
    if (!source.isEmpty()) {
        translate(source);
    }
}

void TextTranslatePresenter::showRecHint()
{
    if (!mTimerHint->isActive()) {
        mTimerHint->start();
    }
}

void TextTranslatePresenter::onHintTimeout()
{
    if (!mTranslateFinish) {
        mView->setTranslateStatus(1);
    }
}

bool TextTranslatePresenter::isSupportFollowSpeak() const
{
    return mPreferences.textTranslateLanguage >= 0 &&
           mPreferences.textTranslateLanguage <= kLastReadableLanguage;
}

bool TextTranslatePresenter::grownBoxHeights(int s, int t, int* source, int* target)
{
    constexpr int kFitLow = 51;
    constexpr int kFitHigh = 137;
    constexpr int kScrolled = 139;
    constexpr int kGrown = 134;
    auto fits = [](int height) { return height >= kFitLow && height <= kFitHigh; };
    // A document of 138 lies between the two rules and changes nothing.
    if (!(fits(s) || s >= kScrolled) || !(fits(t) || t >= kScrolled)) {
        return false;
    }
    *source = fits(s) ? s : kGrown;
    *target = fits(t) ? t : kGrown;
    return true;
}

QStringList TextTranslatePresenter::readingPieces(QString text)
{
    for (const QChar mark : QStringLiteral("\n/\\*<>,?")) {
        text.remove(mark);
    }
    QStringList pieces;
    for (int at = 0; at < text.size(); at += kReadingPieceChars) {
        pieces << text.mid(at, kReadingPieceChars);
    }
    return pieces;
}

void TextTranslatePresenter::onTextTranslateLanguageChange(int index)
{
    mPreferences.textTranslateLanguage = index;
    // The store announces the record back, and onPreferencesChange translates anew.
    PreferencesUtils::getInstance()->setUserPreferences(mPreferences);
}

void TextTranslatePresenter::onPreferencesChange(UserPreferences references)
{
    mPreferences = references;
    mView->setComboTextTranslateLanguage(mPreferences.textTranslateLanguage);
    if (!mView->isHiddenView()) {
        translate(mView->getSourceText());
        mView->setTranslateStatus(1);
    }
}

QTimer* TextTranslatePresenter::timerOf(TimerId id) const
{
    switch (id) {
        case TimerRequest:
            return mTimerRequest;
        case TimerRetry:
            return mTimerRetry;
        case TimerHint:
            break;
    }
    return mTimerHint;
}

const QTimer& TextTranslatePresenter::timer(TimerId id) const
{
    return *timerOf(id);
}

void TextTranslatePresenter::expireTimer(TimerId id)
{
    timerOf(id)->stop();
    switch (id) {
        case TimerRequest:
            onRequestTimeout();
            break;
        case TimerRetry:
            onRetryTimeout();
            break;
        case TimerHint:
            onHintTimeout();
            break;
    }
}
