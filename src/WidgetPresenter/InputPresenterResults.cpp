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
    qCDebug(lcInput).noquote() << QStringLiteral("##################%1").arg(step);
}

QString sourceLanguage(const UserPreferences& preferences)
{
    const int source = preferences.voiceTranslateSourceLanguage;
    return QString::fromUtf8(
        kIFlyLanguages[source >= 0 && source < kSpeechLanguageRows ? source : 0].language);
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

void InputPresenter::requestTraditional(const QString& text, std::function<void(const QString&)> done)
{
    const QString from = sourceLanguage(mUserPreferences);
    // Answered later, in the main loop: a reply of a session that is gone finds no taker.
    const quint64 session = mSession;
    const QPointer<InputPresenter> self(this);
    const auto answer = [self, session, text, done](const QString& converted) {
        if (!self || self->mSession != session) {
            return;
        }
        if (converted.isEmpty()) {
            // The simplified words are better than none at all.
            qCWarning(lcInput) << "traditional conversion failed; keeping the text as recognised";
        }
        done(converted.isEmpty() ? text : converted);
    };
    mHttpManager->baiduTranslate(
        mLocalIpId, from, LanguageTables::translateCode(kTraditionalChineseRow), text,
        [answer](bool ok, BaiduTranslateMessage message) {
            QStringList lines;
            for (const BaiduTranslateResult& entry : qAsConst(message.result)) {
                lines << entry.dst;
            }
            answer(ok && !message.error ? lines.join(QLatin1Char('\n')) : QString());
        },
        [answer](QString) { answer(QString()); },
        [answer](QString, QNetworkReply::NetworkError) { answer(QString()); });
}

void InputPresenter::typeSegment(const QString& text, bool convert)
{
    // Segments are typed in the order they were heard, whichever conversion comes back first.
    const quint64 id = ++mSegmentSerial;
    mSegments.append(Segment{id, text, !convert});
    if (convert) {
        requestTraditional(text, [this, id](const QString& converted) {
            for (Segment& segment : mSegments) {
                if (segment.id == id) {
                    segment.text = converted;
                    segment.ready = true;
                }
            }
            typeReadySegments(false);
        });
    }
    typeReadySegments(false);
}

void InputPresenter::typeReadySegments(bool all)
{
    while (!mSegments.isEmpty() && (all || mSegments.first().ready)) {
        sendOutput(mSegments.takeFirst().text);
        mLastOutput.clear();  // the next segment is typed behind this one
    }
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
            typeSegment(result, targetName().contains(QStringLiteral("粤语繁体")));
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
        mInputView->setContent(quoted(content) + tr(" : 内容太短啦！"));
        mStatus.isRunning = false;
        startDelayHide();  // long enough to be read
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
        if (targetName().contains(QStringLiteral("繁体"))) {
            requestTraditional(content, [this](const QString& query) { searchTheWeb(query); });
        } else {
            searchTheWeb(content);
        }
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
        mInputView->setContent(quoted(content) + tr(" : 没听懂您说的。"));
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
