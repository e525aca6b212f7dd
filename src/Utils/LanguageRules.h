#pragma once

#include "Utils/UserPreferences.h"

// What the console's language boxes do to the preferences. Each takes the holder's record
// and returns the record to save; saving it is the caller's.
namespace LanguageRules {

// The dictation language box: the target follows a dictation, a translation pair is
// remembered (unless it is Chinese into English).
UserPreferences changeDictationLanguage(UserPreferences preferences, int row);
// The translation source box: recognition and source become the row, nothing else.
UserPreferences changeTranslateSource(UserPreferences preferences, int row);
// The translation target box: the target, and the pair remembered when it is a translation.
UserPreferences changeTranslateTarget(UserPreferences preferences, int row);
// The text translation box.
UserPreferences changeTextTranslateLanguage(UserPreferences preferences, int row);

// The target a spoken row is written in when dictating: 0 for Mandarin and Sichuanese,
// 2 for Cantonese, 4 for English.
int dictationTarget(int recognitionRow);

}  // namespace LanguageRules
