#include "Utils/LanguageRules.h"
#include "Utils/LanguageTables.h"

#include <QtTest>

class TestLanguages : public QObject {
    Q_OBJECT

private slots:
    void modeFollowsWrittenForms();
    void dictationLanguageChanges();
    void targetAndSourceBoxes();
};

void TestLanguages::modeFollowsWrittenForms()
{
    UserPreferences p;
    p.voiceTranslateTargetLanguage = 2;
    p.recognitionLanguage = 1;
    QVERIFY(!isVoiceTranslateMode(p));
    p.recognitionLanguage = 0;
    QVERIFY(isVoiceTranslateMode(p));
    // Sichuanese comes out as Chinese, simplified or traditional.
    p.recognitionLanguage = 2;
    p.voiceTranslateTargetLanguage = 1;
    QVERIFY(!isVoiceTranslateMode(p));
    // Every fixed pair of the picker but the last is a dictation.
    for (const TranslatePair& pair : kTranslatePairs) {
        p.recognitionLanguage = pair.source;
        p.voiceTranslateTargetLanguage = pair.target;
        QCOMPARE(isVoiceTranslateMode(p), QString::fromUtf8(pair.label) == QStringLiteral("中-英"));
    }
}

void TestLanguages::dictationLanguageChanges()
{
    // Mandarin into traditional, then Cantonese: the target stays, a translation is remembered.
    UserPreferences p;
    p.recognitionLanguage = 0;
    p.voiceTranslateTargetLanguage = 1;
    p = LanguageRules::changeDictationLanguage(p, 1);
    QCOMPARE(p.voiceTranslateSourceLanguage, 1);
    QCOMPARE(p.voiceTranslateTargetLanguage, 1);
    QVERIFY(isVoiceTranslateMode(p));
    QCOMPARE(p.lastVoiceTranslateSourceLanguage, 1);
    QCOMPARE(p.lastVoiceTranslateTargetLanguage, 1);

    // Cantonese with target 2, then Mandarin: target stays 2.
    UserPreferences q;
    q.recognitionLanguage = 1;
    q.voiceTranslateTargetLanguage = 2;
    q = LanguageRules::changeDictationLanguage(q, 0);
    QCOMPARE(q.voiceTranslateTargetLanguage, 2);
    QCOMPARE(q.lastVoiceTranslateSourceLanguage, 0);
    QCOMPARE(q.lastVoiceTranslateTargetLanguage, 2);

    // A dictation follows the row: English dictation writes English.
    UserPreferences r;
    r.voiceTranslateTargetLanguage = 4;
    r = LanguageRules::changeDictationLanguage(r, 3);
    QCOMPARE(r.voiceTranslateTargetLanguage, 4);
    r = LanguageRules::changeDictationLanguage(r, 2);  // English into English was dictation; now 川 → 英
    QCOMPARE(r.voiceTranslateTargetLanguage, 4);
    // Chinese into English is not remembered.
    QCOMPARE(r.lastVoiceTranslateSourceLanguage, 0);
    QCOMPARE(r.lastVoiceTranslateTargetLanguage, 7);
}

void TestLanguages::targetAndSourceBoxes()
{
    UserPreferences p;
    p = LanguageRules::changeTranslateSource(p, 3);
    QCOMPARE(p.recognitionLanguage, 3);
    QCOMPARE(p.voiceTranslateSourceLanguage, 3);
    QCOMPARE(p.voiceTranslateTargetLanguage, 0);  // nothing else
    p = LanguageRules::changeTranslateTarget(p, 8);
    QCOMPARE(p.voiceTranslateTargetLanguage, 8);
    QCOMPARE(p.lastVoiceTranslateSourceLanguage, 3);
    QCOMPARE(p.lastVoiceTranslateTargetLanguage, 8);
    // Picking the spoken language's own written form is a dictation: nothing remembered.
    p = LanguageRules::changeTranslateTarget(p, 4);
    QCOMPARE(p.lastVoiceTranslateTargetLanguage, 8);
}

QTEST_GUILESS_MAIN(TestLanguages)
#include "tst_languages.moc"
