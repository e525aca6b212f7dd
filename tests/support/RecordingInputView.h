#pragma once

#include "WidgetPresenter/InputView.h"

#include <QHash>
#include <QStringList>
#include <QVariant>

// Records every call of the presenter in order ("setContent(正在全选...)", "toHide()") and
// answers the questions with what the test set in answers, keyed by operation name. Unset:
// panels and pickers hidden, everything else false, 0 or empty, and a volume sample of 40.
// Queries are recorded too, so a test can see what was asked.
class RecordingInputView : public InputView {
public:
    QStringList calls;
    QHash<QString, QVariant> answers;

    // The calls of one operation, in order, with their arguments.
    QStringList callsOf(const QString& name) const;
    // The recorded calls so far, leaving the record empty.
    QStringList takeCalls();

    void toHide() override;
    void toShow() override;
    bool isViewHidden() override;
    void forceFinish() override;
    void changeVolume(int volume) override;
    void setContent(QString text) override;
    void setVoiceSearchViewStyle(int style) override;
    void setTRContent(bool show, QString source, QString target) override;
    void clearContent() override;
    int getVolumeSample() override;
    void setTextLanguageText(QString name) override;
    void setInitVoiceSearchView() override;
    void startVoiceSearchAnimation() override;
    void toHideImageSpeak() override;
    void setMuteVolume() override;
    void showFace(int face) override;
    bool isOnMouseEnter() override;
    int getCurrentFocusViewStatus() override;
    bool isHiddenFocusView() override;
    void toHideFocusView() override;
    void initFoDictationView() override;
    void startFoDictationAnimation() override;
    void initFoTranslateView() override;
    void startFoTranslateAnimation() override;
    int getCurrentFoViewHeight() override;
    bool isFoOnEditing() override;
    bool isFoMouseEnter() override;
    bool isFoPlaying() override;
    void clearFoTranslateResult() override;
    void setFoMicView(bool translate) override;
    void forceFinishFoView() override;
    int getCurrentNoFocusViewStatus() override;
    bool isHiddenNoFocusView() override;
    void toHideNoFocusView() override;
    void initNoFoDictationView() override;
    void startNoFoDictationAnimation() override;
    void initNoFoTranslateView(bool keepText) override;
    void startNoFoTranslateAnimation() override;
    void changNoFoView(int page) override;
    bool isNoFoOnEditing() override;
    bool isNoFoMouseEnter() override;
    bool isNoFoPlaying() override;
    void clearNoFoTranslateResult() override;
    void setNoFoMicView(bool translate) override;
    void forceFinishNoFoView() override;
    void toShowTextTranslateView() override;
    bool isHiddenTextTranslateView() override;
    QString getTextTranslateSourceText() override;
    void setTextTranslateSourceText(QString text) override;
    void setTextTranslateTargetText(QString text) override;
    void setVoiceTranslateSourceText(QString text) override;
    void setVoiceTranslateTargetText(QString text) override;
    void insertVoiceTranslateOnEditingSourceText(QString text) override;
    bool isVoiceTranslateTextNull() override;
    void clearTranslateContent() override;
    void setDeviceEnable(bool enable) override;
    void toShowPaddleWordsView() override;
    bool isHiddenPaddleWordsView() override;
    void toHiddenPaddleWordsView() override;
    bool isShowPaddlewordsView() override;
    bool isPaddleWords() override;
    void clearPaddleWordsStatus() override;
    void setReviseSignViewText(int x, int y, QString text) override;
    bool isHiddenChangeSearchLanguageView() override;
    bool isHiddenChangeTranLanguageView() override;
    bool isHiddenChangeTranMoreLanguageView() override;
    bool isFocusOnMouseEnter() override;
    bool isNoFocusOnMouseEnter() override;
    void setMicStatus(bool on) override;
    void hideCommandWidget() override;
    void showMainView(int page) override;
    void showExplain() override;
    void hideMainWindows() override;

private:
    void record(const QString& name, const QString& arguments = QString());
    static QString arg(const QString& value) { return value; }
    static QString arg(bool value) { return value ? QStringLiteral("true") : QStringLiteral("false"); }
    static QString arg(int value) { return QString::number(value); }
};
