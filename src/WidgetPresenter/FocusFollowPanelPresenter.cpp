#include "WidgetPresenter/FocusFollowPanelPresenter.h"

#include "WidgetPresenter/ReadAloud.h"

#include "BaiduSpeech/BaiduSpeech.h"
#include "Http/HttpManager.h"
#include "IFlySpeech/IFlyWebSpeech.h"
#include "Platform/WinUtils.h"
#include "Utils/LanguageTables.h"
#include "Utils/Logging.h"
#include "Utils/PreferencesUtils.h"

#include <QPointer>

#include <algorithm>

namespace {

constexpr int kBoxLimit = 140;

int speechRow(int row)
{
    return row >= 0 && row < kSpeechLanguageRows ? row : 0;
}

int targetRow(int row)
{
    return row >= 0 && row < kTranslateLanguageCount ? row : 0;
}

QString joined(const BaiduTranslateMessage& message)
{
    QStringList lines;
    for (const BaiduTranslateResult& row : message.result) {
        lines << row.dst;
    }
    return lines.join(QLatin1Char('\n'));
}

QString removeAll(QString text, const QStringList& signs)
{
    for (const QString& sign : signs) {
        text.remove(sign);
    }
    return text;
}

}  // namespace

FocusFollowPanelPresenter::FocusFollowPanelPresenter(FocusFollowPanelView* view,
                                                     const Collaborators& collaborators, QObject* parent)
    : QObject(parent),
      mPanelView(view),
      mHttp(collaborators.http),
      mReading(new ReadAloud(collaborators.synthesis, ReadAloud::ReachWhenUsed, this))
{
    PreferencesUtils* store = PreferencesUtils::getInstance();
    mPreferences = store->getUserPreferences();
    connect(store, &PreferencesUtils::signalPreferencesChange, this,
            &FocusFollowPanelPresenter::onChangePreferences);
    if (collaborators.baidu != nullptr) {
        connect(collaborators.baidu, &BaiduSpeech::signalVolume, this,
                &FocusFollowPanelPresenter::onRecVolume);
    }
    if (collaborators.ifly != nullptr) {
        connect(collaborators.ifly, &IFlyWebSpeech::signalVolume, this,
                &FocusFollowPanelPresenter::onRecVolume);
    }
    mTranslateTimer.setSingleShot(true);
    mTranslateTimer.setInterval(kTranslateDelayMs);
    connect(&mTranslateTimer, &QTimer::timeout, this, &FocusFollowPanelPresenter::onTranslateTimeout);
    // The level display is driven at the rate the panel samples. A hidden panel skips the tick,
    // so the timer rests while the panel is hidden and the showing panel starts it again.
    mLevelTimer.setInterval(view->getVolumeSample());
    connect(&mLevelTimer, &QTimer::timeout, this, &FocusFollowPanelPresenter::onUpdateVolume);
    mLevelTimer.start();
}

void FocusFollowPanelPresenter::onViewShown()
{
    if (!mLevelTimer.isActive()) {
        mLevelTimer.start();
    }
}

bool FocusFollowPanelPresenter::isSupportFollowSpeak() const
{
    return mPreferences.voiceTranslateTargetLanguage >= 0 && mPreferences.voiceTranslateTargetLanguage <= 4;
}

bool FocusFollowPanelPresenter::isVoiceTranslateMode() const
{
    return ::isVoiceTranslateMode(mPreferences);
}

void FocusFollowPanelPresenter::setEnterMode(int mode)
{
    mPreferences.isEnterSend = mode;
    PreferencesUtils::getInstance()->setUserPreferences(mPreferences);
}

void FocusFollowPanelPresenter::setSpaceMode(int mode)
{
    mPreferences.isSpaceSend = mode;
    PreferencesUtils::getInstance()->setUserPreferences(mPreferences);
}

void FocusFollowPanelPresenter::setAutoSendMode(int mode)
{
    mPreferences.isAutoSendMode = mode;
    PreferencesUtils::getInstance()->setUserPreferences(mPreferences);
}

void FocusFollowPanelPresenter::setDelSign(int sign)
{
    mPreferences.isDelAllSign = sign;
    PreferencesUtils::getInstance()->setUserPreferences(mPreferences);
}

void FocusFollowPanelPresenter::setSupSingleClick(int click)
{
    mPreferences.isClickMode = click;
    PreferencesUtils::getInstance()->setUserPreferences(mPreferences);
}

void FocusFollowPanelPresenter::setAudioEnable(bool enable)
{
    // The audio path itself is switched by the device layer.
    qCDebug(lcInput) << "panel audio enable" << enable;
}

void FocusFollowPanelPresenter::selectAllAndCopy()
{
    WinUtils::getInstance()->selectAll();
    WinUtils::getInstance()->copyContent();
}

void FocusFollowPanelPresenter::copyContent()
{
    WinUtils::getInstance()->copyContent();
}

void FocusFollowPanelPresenter::clearTranslateResult()
{
    mTranslateFinish = true;
    mSourceText.clear();
    mTranslateResult.clear();
    mTranslateTimer.stop();
}

void FocusFollowPanelPresenter::storeSource(const QString& text)
{
    mTranslateFinish = false;
    mSourceText = text;
}

bool FocusFollowPanelPresenter::holdForHide(bool playing, int page, bool sendPressed, HidePlan* plan)
{
    if (playing) {
        plan->stay = true;
        return true;
    }
    if (page == ResultPage && !mTranslateFinish) {
        mWaitingToHide = true;
        plan->stay = true;
        plan->hideWindow = sendPressed;
        plan->clearEdit = sendPressed;
        return true;
    }
    return false;
}

void FocusFollowPanelPresenter::translate(QString text)
{
    if (text.isEmpty()) {
        return;
    }
    mPanelView->setTranslateStatus(1);
    storeSource(text);
    // Only the last text of a burst of partial results goes out.
    startTranslateTimer();
}

void FocusFollowPanelPresenter::translateNow(const QString& text)
{
    storeSource(text);
    mTranslateTimer.stop();
    onTranslateTimeout();
}

QString FocusFollowPanelPresenter::sourceLanguage() const
{
    return QString::fromUtf8(kIFlyLanguages[speechRow(mPreferences.voiceTranslateSourceLanguage)].language);
}

void FocusFollowPanelPresenter::onTranslateTimeout()
{
    if (mHttp == nullptr) {
        return;
    }
    QPointer<FocusFollowPanelPresenter> self(this);
    // A reply for a source that has changed since is no answer: the newer source has its own
    // request coming, and typing the old translation would send what the user did not say last.
    const QString source = mSourceText;
    auto current = [self, source] { return self && self->mSourceText == source; };
    mHttp->baiduTranslate(
        mCurrentIpId, sourceLanguage(),
        LanguageTables::translateCode(mPreferences.voiceTranslateTargetLanguage), mSourceText,
        [self, current](bool ok, BaiduTranslateMessage message) {
            if (current()) {
                self->onTranslateResult(ok, message);
            }
        },
        [self, current](QString message) {
            qCWarning(lcInput).noquote() << "百度翻译请求超时!" << message;
            if (current()) {
                self->translateFailed();
            }
        },
        [self, current](QString message, QNetworkReply::NetworkError code) {
            qCWarning(lcInput).noquote() << "百度翻译请求错误:" << message << code;
            if (current()) {
                self->translateFailed();
            }
        });
}

void FocusFollowPanelPresenter::onTranslateResult(bool ok, const BaiduTranslateMessage& message)
{
    if (ok) {
        QString result = joined(message);
        // A panel sent while its translation was out is hidden, and still delivers the answer.
        if ((!mPanelView->IsHidden() || mWaitingToHide) && !mSourceText.isEmpty()) {
            if (result.isEmpty()) {
                mPanelView->setTranslateStatus(2);
            } else {
                mPanelView->setTranslateStatus(0);
                if (isDelSign()) {
                    result =
                        removeAll(result, {QStringLiteral("。"), QStringLiteral("."), QStringLiteral("!"),
                                           QStringLiteral("！"), QStringLiteral("？"), QStringLiteral("?"),
                                           QStringLiteral(","), QStringLiteral("，")});
                }
                const int row = targetRow(mPreferences.voiceTranslateTargetLanguage);
                if (needsTraditional(row) && mHttp != nullptr) {
                    // The service's Cantonese comes in the simplified script; a second request
                    // turns it into the traditional one, which is what is shown and typed. The
                    // translation is finished only with its answer.
                    requestTraditional(result);
                    return;
                }
                mTranslateResult = result;
                mPanelView->setVoiceTranslateTargetText(result);
            }
        }
    }
    settleTranslation();
}

void FocusFollowPanelPresenter::requestTraditional(const QString& simplified)
{
    QPointer<FocusFollowPanelPresenter> self(this);
    const QString source = mSourceText;
    auto settle = [self, source, simplified](const QString& traditional) {
        if (!self || self->mSourceText != source) {
            return;  // a newer source has its own request out
        }
        self->mTranslateResult = traditional.isEmpty() ? simplified : traditional;
        self->mPanelView->setVoiceTranslateTargetText(self->mTranslateResult);
        self->settleTranslation();
    };
    mHttp->baiduTranslate(
        mCurrentIpId, sourceLanguage(), LanguageTables::translateCode(1), simplified,
        [settle](bool ok, BaiduTranslateMessage message) { settle(ok ? joined(message) : QString()); },
        [settle](QString) { settle(QString()); },
        [settle](QString, QNetworkReply::NetworkError) { settle(QString()); });
}

void FocusFollowPanelPresenter::translateFailed()
{
    onTranslateFailure();
    // A failure is an answer too: whatever waits for the translation may close the panel.
    settleTranslation();
}

void FocusFollowPanelPresenter::settleTranslation()
{
    mTranslateFinish = true;
    if (mWaitingToHide) {
        mPanelView->toWaitingHide();
    }
}

void FocusFollowPanelPresenter::outputResult()
{
    QString result = mTranslateResult;
    if (isDelSign()) {
        result = removeAll(
            result, {QStringLiteral("。"), QStringLiteral("？"), QStringLiteral("?"), QStringLiteral(","),
                     QStringLiteral("，"), QStringLiteral("!"), QStringLiteral("！")});
    }
    if (!result.isEmpty()) {
        WinUtils::getInstance()->sendInput(result);
    }
    mTranslateResult.clear();
    mPanelView->clearText();
}

void FocusFollowPanelPresenter::onChangePreferences(UserPreferences preferences)
{
    mPreferences = preferences;
    if (isVoiceTranslateMode()) {
        const QString source =
            QString::fromUtf8(kIFlyLanguages[speechRow(mPreferences.voiceTranslateSourceLanguage)].glyph);
        const QString target =
            LanguageTables::translateGlyph(targetRow(mPreferences.voiceTranslateTargetLanguage));
        mPanelView->setTranslateTextSourceLanguageName(source);
        mPanelView->setInitTranslateSrcLanguage(source);
        mPanelView->setTranslateTextTargetLanguageName(target);
        mPanelView->setInitTranslateDstLanguage(target);
    } else if (mPreferences.voiceTranslateSourceLanguage == 2) {
        mPanelView->setDictationTextLanguageName(QStringLiteral("四川话"));
    } else {
        mPanelView->setDictationTextLanguageName(QString::fromUtf8(
            kTranslateLanguages[targetRow(mPreferences.voiceTranslateTargetLanguage)].name));
    }
    mPanelView->changeMenuEnterStatus(mPreferences.isEnterSend);
    mPanelView->changeMenuSpaceStatus(mPreferences.isSpaceSend);
    mPanelView->changeMenuAutoSendStatus(mPreferences.isAutoSendMode);
}

void FocusFollowPanelPresenter::onRecVolume(int value)
{
    mLevel = std::min(value, kMaxLevel);
}

void FocusFollowPanelPresenter::onUpdateVolume()
{
    if (mPanelView->IsHidden()) {
        mLevelTimer.stop();
        return;
    }
    mPanelView->onUpdateVolume();
}

bool FocusFollowPanelPresenter::boxHeights(int s, int t, int currentS, int currentT, int* newS, int* newT)
{
    if ((s == currentS && t == currentT) || s == kBoxLimit || t == kBoxLimit) {
        return false;
    }
    *newS = s < kBoxLimit ? s : kMaxBoxHeight;
    *newT = t < kBoxLimit ? t : kMaxBoxHeight;
    return *newS != currentS || *newT != currentT;
}

QString FocusFollowPanelPresenter::readableText(QString text)
{
    return removeAll(text,
                     {QStringLiteral("\n"), QStringLiteral("/"), QStringLiteral("\\"), QStringLiteral("*"),
                      QStringLiteral("<"), QStringLiteral(">"), QStringLiteral(","), QStringLiteral("?")});
}

QStringList FocusFollowPanelPresenter::readingPieces(const QString& text)
{
    QStringList pieces;
    for (int at = 0; at < text.size(); at += kReadingPieceChars) {
        pieces << text.mid(at, kReadingPieceChars);
    }
    return pieces;
}
