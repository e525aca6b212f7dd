#include "RecordingInputView.h"

void RecordingInputView::record(const QString& name, const QString& arguments)
{
    calls << name + QLatin1Char('(') + arguments + QLatin1Char(')');
}

QStringList RecordingInputView::callsOf(const QString& name) const
{
    QStringList matching;
    for (const QString& call : calls) {
        if (call.startsWith(name + QLatin1Char('('))) {
            matching << call;
        }
    }
    return matching;
}

QStringList RecordingInputView::takeCalls()
{
    QStringList taken;
    taken.swap(calls);
    return taken;
}

void RecordingInputView::toHide()
{
    record(QStringLiteral("toHide"));
}

void RecordingInputView::toShow()
{
    record(QStringLiteral("toShow"));
}

bool RecordingInputView::isViewHidden()
{
    record(QStringLiteral("isViewHidden"));
    return answers.value(QStringLiteral("isViewHidden"), true).toBool();
}

void RecordingInputView::forceFinish()
{
    record(QStringLiteral("forceFinish"));
}

void RecordingInputView::changeVolume(int volume)
{
    record(QStringLiteral("changeVolume"), arg(volume));
}

void RecordingInputView::setContent(QString text)
{
    record(QStringLiteral("setContent"), arg(text));
}

void RecordingInputView::setVoiceSearchViewStyle(int style)
{
    record(QStringLiteral("setVoiceSearchViewStyle"), arg(style));
}

void RecordingInputView::setTRContent(bool show, QString source, QString target)
{
    record(QStringLiteral("setTRContent"),
           arg(show) + QLatin1Char(',') + arg(source) + QLatin1Char(',') + arg(target));
}

void RecordingInputView::clearContent()
{
    record(QStringLiteral("clearContent"));
}

int RecordingInputView::getVolumeSample()
{
    record(QStringLiteral("getVolumeSample"));
    return answers.value(QStringLiteral("getVolumeSample"), 40).toInt();
}

void RecordingInputView::setTextLanguageText(QString name)
{
    record(QStringLiteral("setTextLanguageText"), arg(name));
}

void RecordingInputView::setInitVoiceSearchView()
{
    record(QStringLiteral("setInitVoiceSearchView"));
}

void RecordingInputView::startVoiceSearchAnimation()
{
    record(QStringLiteral("startVoiceSearchAnimation"));
}

void RecordingInputView::toHideImageSpeak()
{
    record(QStringLiteral("toHideImageSpeak"));
}

void RecordingInputView::setMuteVolume()
{
    record(QStringLiteral("setMuteVolume"));
}

void RecordingInputView::showFace(int face)
{
    record(QStringLiteral("showFace"), arg(face));
}

bool RecordingInputView::isOnMouseEnter()
{
    record(QStringLiteral("isOnMouseEnter"));
    return answers.value(QStringLiteral("isOnMouseEnter"), false).toBool();
}

int RecordingInputView::getCurrentFocusViewStatus()
{
    record(QStringLiteral("getCurrentFocusViewStatus"));
    return answers.value(QStringLiteral("getCurrentFocusViewStatus"), 0).toInt();
}

bool RecordingInputView::isHiddenFocusView()
{
    record(QStringLiteral("isHiddenFocusView"));
    return answers.value(QStringLiteral("isHiddenFocusView"), true).toBool();
}

void RecordingInputView::toHideFocusView()
{
    record(QStringLiteral("toHideFocusView"));
}

void RecordingInputView::initFoDictationView()
{
    record(QStringLiteral("initFoDictationView"));
}

void RecordingInputView::startFoDictationAnimation()
{
    record(QStringLiteral("startFoDictationAnimation"));
}

void RecordingInputView::initFoTranslateView()
{
    record(QStringLiteral("initFoTranslateView"));
}

void RecordingInputView::startFoTranslateAnimation()
{
    record(QStringLiteral("startFoTranslateAnimation"));
}

int RecordingInputView::getCurrentFoViewHeight()
{
    record(QStringLiteral("getCurrentFoViewHeight"));
    return answers.value(QStringLiteral("getCurrentFoViewHeight"), 0).toInt();
}

bool RecordingInputView::isFoOnEditing()
{
    record(QStringLiteral("isFoOnEditing"));
    return answers.value(QStringLiteral("isFoOnEditing"), false).toBool();
}

bool RecordingInputView::isFoMouseEnter()
{
    record(QStringLiteral("isFoMouseEnter"));
    return answers.value(QStringLiteral("isFoMouseEnter"), false).toBool();
}

bool RecordingInputView::isFoPlaying()
{
    record(QStringLiteral("isFoPlaying"));
    return answers.value(QStringLiteral("isFoPlaying"), false).toBool();
}

void RecordingInputView::clearFoTranslateResult()
{
    record(QStringLiteral("clearFoTranslateResult"));
}

void RecordingInputView::setFoMicView(bool translate)
{
    record(QStringLiteral("setFoMicView"), arg(translate));
}

void RecordingInputView::forceFinishFoView()
{
    record(QStringLiteral("forceFinishFoView"));
}

int RecordingInputView::getCurrentNoFocusViewStatus()
{
    record(QStringLiteral("getCurrentNoFocusViewStatus"));
    return answers.value(QStringLiteral("getCurrentNoFocusViewStatus"), 0).toInt();
}

bool RecordingInputView::isHiddenNoFocusView()
{
    record(QStringLiteral("isHiddenNoFocusView"));
    return answers.value(QStringLiteral("isHiddenNoFocusView"), true).toBool();
}

void RecordingInputView::toHideNoFocusView()
{
    record(QStringLiteral("toHideNoFocusView"));
}

void RecordingInputView::initNoFoDictationView()
{
    record(QStringLiteral("initNoFoDictationView"));
}

void RecordingInputView::startNoFoDictationAnimation()
{
    record(QStringLiteral("startNoFoDictationAnimation"));
}

void RecordingInputView::initNoFoTranslateView(bool keepText)
{
    record(QStringLiteral("initNoFoTranslateView"), arg(keepText));
}

void RecordingInputView::startNoFoTranslateAnimation()
{
    record(QStringLiteral("startNoFoTranslateAnimation"));
}

void RecordingInputView::changNoFoView(int page)
{
    record(QStringLiteral("changNoFoView"), arg(page));
}

bool RecordingInputView::isNoFoOnEditing()
{
    record(QStringLiteral("isNoFoOnEditing"));
    return answers.value(QStringLiteral("isNoFoOnEditing"), false).toBool();
}

bool RecordingInputView::isNoFoMouseEnter()
{
    record(QStringLiteral("isNoFoMouseEnter"));
    return answers.value(QStringLiteral("isNoFoMouseEnter"), false).toBool();
}

bool RecordingInputView::isNoFoPlaying()
{
    record(QStringLiteral("isNoFoPlaying"));
    return answers.value(QStringLiteral("isNoFoPlaying"), false).toBool();
}

void RecordingInputView::clearNoFoTranslateResult()
{
    record(QStringLiteral("clearNoFoTranslateResult"));
}

void RecordingInputView::setNoFoMicView(bool translate)
{
    record(QStringLiteral("setNoFoMicView"), arg(translate));
}

void RecordingInputView::forceFinishNoFoView()
{
    record(QStringLiteral("forceFinishNoFoView"));
}

void RecordingInputView::toShowTextTranslateView()
{
    record(QStringLiteral("toShowTextTranslateView"));
}

bool RecordingInputView::isHiddenTextTranslateView()
{
    record(QStringLiteral("isHiddenTextTranslateView"));
    return answers.value(QStringLiteral("isHiddenTextTranslateView"), true).toBool();
}

QString RecordingInputView::getTextTranslateSourceText()
{
    record(QStringLiteral("getTextTranslateSourceText"));
    return answers.value(QStringLiteral("getTextTranslateSourceText")).toString();
}

void RecordingInputView::setTextTranslateSourceText(QString text)
{
    record(QStringLiteral("setTextTranslateSourceText"), arg(text));
}

void RecordingInputView::setTextTranslateTargetText(QString text)
{
    record(QStringLiteral("setTextTranslateTargetText"), arg(text));
}

void RecordingInputView::setVoiceTranslateSourceText(QString text)
{
    record(QStringLiteral("setVoiceTranslateSourceText"), arg(text));
}

void RecordingInputView::setVoiceTranslateTargetText(QString text)
{
    record(QStringLiteral("setVoiceTranslateTargetText"), arg(text));
}

void RecordingInputView::insertVoiceTranslateOnEditingSourceText(QString text)
{
    record(QStringLiteral("insertVoiceTranslateOnEditingSourceText"), arg(text));
}

bool RecordingInputView::isVoiceTranslateTextNull()
{
    record(QStringLiteral("isVoiceTranslateTextNull"));
    return answers.value(QStringLiteral("isVoiceTranslateTextNull"), false).toBool();
}

void RecordingInputView::clearTranslateContent()
{
    record(QStringLiteral("clearTranslateContent"));
}

void RecordingInputView::setDeviceEnable(bool enable)
{
    record(QStringLiteral("setDeviceEnable"), arg(enable));
}

void RecordingInputView::toShowPaddleWordsView()
{
    record(QStringLiteral("toShowPaddleWordsView"));
}

bool RecordingInputView::isHiddenPaddleWordsView()
{
    record(QStringLiteral("isHiddenPaddleWordsView"));
    return answers.value(QStringLiteral("isHiddenPaddleWordsView"), true).toBool();
}

void RecordingInputView::toHiddenPaddleWordsView()
{
    record(QStringLiteral("toHiddenPaddleWordsView"));
}

bool RecordingInputView::isShowPaddlewordsView()
{
    record(QStringLiteral("isShowPaddlewordsView"));
    return answers.value(QStringLiteral("isShowPaddlewordsView"), false).toBool();
}

bool RecordingInputView::isPaddleWords()
{
    record(QStringLiteral("isPaddleWords"));
    return answers.value(QStringLiteral("isPaddleWords"), false).toBool();
}

void RecordingInputView::clearPaddleWordsStatus()
{
    record(QStringLiteral("clearPaddleWordsStatus"));
}

void RecordingInputView::setReviseSignViewText(int x, int y, QString text)
{
    record(QStringLiteral("setReviseSignViewText"),
           arg(x) + QLatin1Char(',') + arg(y) + QLatin1Char(',') + arg(text));
}

bool RecordingInputView::isHiddenChangeSearchLanguageView()
{
    record(QStringLiteral("isHiddenChangeSearchLanguageView"));
    return answers.value(QStringLiteral("isHiddenChangeSearchLanguageView"), true).toBool();
}

bool RecordingInputView::isHiddenChangeTranLanguageView()
{
    record(QStringLiteral("isHiddenChangeTranLanguageView"));
    return answers.value(QStringLiteral("isHiddenChangeTranLanguageView"), true).toBool();
}

bool RecordingInputView::isHiddenChangeTranMoreLanguageView()
{
    record(QStringLiteral("isHiddenChangeTranMoreLanguageView"));
    return answers.value(QStringLiteral("isHiddenChangeTranMoreLanguageView"), true).toBool();
}

bool RecordingInputView::isFocusOnMouseEnter()
{
    record(QStringLiteral("isFocusOnMouseEnter"));
    return answers.value(QStringLiteral("isFocusOnMouseEnter"), false).toBool();
}

bool RecordingInputView::isNoFocusOnMouseEnter()
{
    record(QStringLiteral("isNoFocusOnMouseEnter"));
    return answers.value(QStringLiteral("isNoFocusOnMouseEnter"), false).toBool();
}

void RecordingInputView::setMicStatus(bool on)
{
    record(QStringLiteral("setMicStatus"), arg(on));
}

void RecordingInputView::hideCommandWidget()
{
    record(QStringLiteral("hideCommandWidget"));
}

void RecordingInputView::showMainView(int page)
{
    record(QStringLiteral("showMainView"), arg(page));
}

void RecordingInputView::showExplain()
{
    record(QStringLiteral("showExplain"));
}

void RecordingInputView::hideMainWindows()
{
    record(QStringLiteral("hideMainWindows"));
}
