#include "Utils/LanguageRules.h"

#include "Utils/LanguageTables.h"

namespace LanguageRules {

namespace {

// Chinese speech into English is one of the fixed pairs, not a custom one to remember.
bool isChineseToEnglish(int recognitionRow, int targetRow)
{
    return LanguageTables::recognitionBaseGlyph(recognitionRow) == QStringLiteral("中") &&
           LanguageTables::translateGlyph(targetRow) == QStringLiteral("英");
}

void rememberPair(UserPreferences& p, int source, int target)
{
    if (!isChineseToEnglish(source, target)) {
        p.lastVoiceTranslateSourceLanguage = source;
        p.lastVoiceTranslateTargetLanguage = target;
    }
}

}  // namespace

int dictationTarget(int recognitionRow)
{
    switch (recognitionRow) {
        case 1:
            return 2;
        case 3:
            return 4;
        default:
            return 0;
    }
}

UserPreferences changeDictationLanguage(UserPreferences p, int row)
{
    p.recognitionLanguage = row;
    if (LanguageTables::recognitionBaseGlyph(row) ==
        LanguageTables::translateGlyph(p.voiceTranslateTargetLanguage)) {
        p.voiceTranslateTargetLanguage = dictationTarget(row);
    } else {
        rememberPair(p, row, p.voiceTranslateTargetLanguage);
    }
    p.voiceTranslateSourceLanguage = row;
    return p;
}

UserPreferences changeTranslateSource(UserPreferences p, int row)
{
    p.recognitionLanguage = row;
    p.voiceTranslateSourceLanguage = row;
    return p;
}

UserPreferences changeTranslateTarget(UserPreferences p, int row)
{
    p.voiceTranslateTargetLanguage = row;
    if (LanguageTables::recognitionBaseGlyph(p.recognitionLanguage) != LanguageTables::translateGlyph(row)) {
        rememberPair(p, p.recognitionLanguage, row);
    }
    return p;
}

UserPreferences changeTextTranslateLanguage(UserPreferences p, int row)
{
    p.textTranslateLanguage = row;
    return p;
}

}  // namespace LanguageRules
