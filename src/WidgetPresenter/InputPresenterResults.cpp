// What becomes of the recogniser's text: shown, typed, translated in the panel, obeyed,
// searched, or sent to the backend for its meaning.
#include "InputPresenter.h"

#include "Http/HttpManager.h"
#include "InputView.h"
#include "Platform/AppLauncher.h"
#include "Utils/AppConfig.h"
#include "Utils/AppVersion.h"
#include "Utils/LanguageTables.h"
#include "Utils/Logging.h"

#include <QPointer>
#include <QUrl>

namespace {

constexpr int kTraditionalChineseRow = 1;

void trace(int step)
{
    qCInfo(lcInput).noquote() << QStringLiteral("##################%1").arg(step);
}

QString quoted(const QString& text)
{
    return QLatin1Char('"') + text + QLatin1Char('"');
}

QString joined(const QList<QString>& segments)
{
    return QStringList(segments).join(QString());
}

}  // namespace

QString InputPresenter::stripped(QString text) const
{
    static const QString kPunctuation = QStringLiteral("。.!！？?,，");
    for (const QChar mark : kPunctuation) {
        text.remove(mark, Qt::CaseSensitive);
    }
    return text;
}

QString InputPresenter::targetName() const
{
    const int row = mUserPreferences.voiceTranslateTargetLanguage;
    return row >= 0 && row < kTranslateLanguageCount ? QString::fromUtf8(kTranslateLanguages[row].name)
                                                     : QString();
}

QString InputPresenter::toTraditional(const QString& text)
{
    const int source = mUserPreferences.voiceTranslateSourceLanguage;
    const QString from = source >= 0 && source < kSpeechLanguageRows
                             ? QString::fromUtf8(kIFlyLanguages[source].language)
                             : QString::fromUtf8(kIFlyLanguages[0].language);
    BaiduTranslateMessage message;
    const bool answered = mHttpManager->syncBaiduTranslate(
        mLocalIpId, from, LanguageTables::translateCode(kTraditionalChineseRow), text, &message);
    if (!answered || message.error || message.result.isEmpty()) {
        // The simplified words are better than none at all.
        qCWarning(lcInput) << "traditional conversion failed; keeping the text as recognised";
        return text;
    }
    QStringList lines;
    for (const BaiduTranslateResult& entry : qAsConst(message.result)) {
        lines << entry.dst;
    }
    return lines.join(QLatin1Char('\n'));
}

bool InputPresenter::setTranslateSource(QString source)
{
    if (isDelSign()) {
        source = stripped(source);
    }
    if (!mInputView->isFoOnEditing() && !mInputView->isNoFoOnEditing()) {
        mInputView->setVoiceTranslateSourceText(source);
        return false;
    }
    mInputView->insertVoiceTranslateOnEditingSourceText(restoreContent(source));
    return true;
}

void InputPresenter::onRecBegin()
{
    mLastOutput.clear();
}

void InputPresenter::onRecFlushResult(QString result)
{
    if (!mStatus.isRunning) {
        return;
    }
    mStatus.isGetResult = true;
    switch (mStatus.type) {
        case VoiceCommand:
            mInputView->setContent(joined(mResults) + result);
            break;
        case Dictation:
            if (isDelSign()) {
                result = stripped(result);
            }
            // Partial text of this target is not typed: each conversion is a request.
            if (targetName().contains(QStringLiteral("粤语繁体"))) {
                return;
            }
            sendOutput(result);
            break;
        case VoiceTranslate:
            setTranslateSource(joined(mResults) + result);
            break;
        default:
            break;
    }
}

void InputPresenter::onRecResult(QString result)
{
    if (!mStatus.isRunning) {
        return;
    }
    mStatus.isGetResult = true;
    switch (mStatus.type) {
        case VoiceCommand:
            mResults.append(result);
            mInputView->setContent(joined(mResults));
            break;
        case Dictation:
            // The raw segment is kept for the upload; only what is typed is changed.
            mResults.append(result);
            if (isDelSign()) {
                result = stripped(result);
            }
            if (targetName().contains(QStringLiteral("粤语繁体"))) {
                result = toTraditional(result);
            }
            sendOutput(result);
            mLastOutput.clear();  // the next segment is typed behind this one
            break;
        case VoiceTranslate:
            mResults.append(result);
            if (setTranslateSource(joined(mResults))) {
                // Inserted into the user's edit: the next segment starts afresh.
                mResults.clear();
                mLastOutput.clear();
            }
            break;
        default:
            break;
    }
}

void InputPresenter::onRecFinish()
{
    if (!mStatus.isRunning) {
        return;
    }
    mInputView->changeVolume(0);
    if (!mStatus.isGetResult) {
        if (mStatus.isListening) {
            return;  // the session goes on
        }
        mStatus.isRunning = false;
        startDelayHide();
        trace(1);
        return;
    }
    mStatus.isListening = false;
    mInputView->setMicStatus(false);
    const QString content = joined(mResults);
    switch (mStatus.type) {
        case VoiceTranslate:
            // The text stands in the panel, whose presenter translates it.
            trace(7);
            mStatus.isRunning = false;
            startDelayHide();
            break;
        case Dictation:
            trace(6);
            mTextRecord = TextRecord();
            mTextRecord.ip = mLocalIpId;
            mTextRecord.src = content;
            mTextRecord.type = 3;
            mHttpManager->uploadRecoed(
                mTextRecord, [](bool) {}, mHttpTimeoutLog, mHttpErrorLog);
            mStatus.isRunning = false;
            startDelayHide();
            break;
        case VoiceCommand:
            finishVoiceCommand(content);
            break;
        default:
            break;
    }
}

void InputPresenter::finishVoiceCommand(const QString& content)
{
    if (content.size() < 2) {
        mInputView->setContent(quoted(content) + QStringLiteral(" : 内容太短啦！"));
        mStatus.isRunning = false;
        mInputView->toHide();
        trace(2);
        return;
    }
    const QString command = stripped(content);
    qCDebug(lcInput) << "voice command" << command;
    if (handleCommand(command)) {
        mStatus.isRunning = false;
        startDelayHide();
        trace(3);
        return;
    }
    if (mUserPreferences.recognitionLanguage != 0) {
        // No semantic parsing beyond Mandarin: the words as heard, punctuation and all.
        QString query = content;
        if (targetName().contains(QStringLiteral("繁体"))) {
            query = toTraditional(query);
        }
        searchTheWeb(query);
        mStatus.isRunning = false;
        startDelayHide();
        trace(5);
        return;
    }
    mStatus.isAnalyzing = true;
    const quint64 session = mSession;
    const QPointer<InputPresenter> self(this);
    mHttpManager->analyzeWord(
        command, mServiceCategory, mLocalIpId, QString::fromLatin1(kAppVersion),
        [self, session, command](bool ok, SemanticParsingResult result) {
            if (self) {
                self->onSemanticReply(session, ok, command, result);
            }
        },
        [self, session](QString message) {
            qCWarning(lcInput).noquote() << "http timeout:" << message;
            if (self) {
                self->onSemanticFailure(session);
            }
        },
        [self, session](QString message, QNetworkReply::NetworkError code) {
            qCWarning(lcInput).noquote() << "http error:" << message << code;
            if (self) {
                self->onSemanticFailure(session);
            }
        });
}

void InputPresenter::searchTheWeb(QString query)
{
    QString base = AppConfig::getInstance()->searchUrl().toString(QUrl::StripTrailingSlash);
    const QString path = QStringLiteral("/s?wd=%1").arg(QString::fromLatin1(QUrl::toPercentEncoding(query)));
    launcher()->openUrl(QUrl(base + path, QUrl::StrictMode));
}

void InputPresenter::onSemanticReply(quint64 session, bool ok, const QString& content,
                                     const SemanticParsingResult& result)
{
    // A newer press has started another session: its panel is not this reply's.
    if (session != mSession) {
        return;
    }
    if (!ok) {
        mInputView->setContent(quoted(content) + QStringLiteral(" : 没听懂您说的。"));
        startDelayHide();
        return;
    }
    if (mStatus.isRunning && mStatus.isAnalyzing) {
        handleIntent(result);
        mStatus.isRunning = false;
        startDelayHide();
        trace(4);
    }
}

void InputPresenter::onSemanticFailure(quint64 session)
{
    if (session != mSession) {
        return;
    }
    mInputView->setContent(QString());
    mInputView->setVoiceSearchViewStyle(1);
    mInputView->showFace(1);
    startDelayHide();
}

void InputPresenter::onRecError(int code, QString msg)
{
    qCWarning(lcInput).noquote() << "onRecError:" << code << ", msg:" << msg;
    mInputView->setMicStatus(false);
    switch (mStatus.type) {
        case VoiceCommand:
            stopVoiceCommand();
            break;
        case Dictation:
            stopDictation();
            break;
        case VoiceTranslate:
            stopTranslate();
            break;
        default:
            break;
    }
    // The minimum listening time may hold the stop back; the session closes once it stops.
    mStatus.recogniserFailed = mStatus.isListening;
    startDelayHide();
}
