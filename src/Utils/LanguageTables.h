#pragma once

#include "Utils/UserPreferences.h"

#include <QString>

// Every language number stored in the preferences is a row of one of these tables, so the
// row order is part of the stored format.

struct RecognitionLanguage {
    int id;
    const char* name;
    const char* glyph;
    const char* baseGlyph;  // the written language the speech comes out in
};

struct IFlyLanguage {
    const char* language;
    const char* accent;
    const char* name;
    const char* glyph;
};

struct TranslateLanguage {
    const char* code;
    const char* name;
    const char* glyph;
};

// Rows 4 and 5 of the two speech tables are empty; no picker reaches them.
inline constexpr int kSpeechLanguageRows = 6;
inline constexpr int kSpokenLanguageCount = 4;
inline constexpr int kTranslateLanguageCount = 29;

extern const RecognitionLanguage kRecognitionLanguages[kSpeechLanguageRows];
extern const IFlyLanguage kIFlyLanguages[kSpeechLanguageRows];
extern const TranslateLanguage kTranslateLanguages[kTranslateLanguageCount];

// A fixed pair of the translation picker.
struct TranslatePair {
    const char* label;
    int source;
    int target;
};
inline constexpr int kTranslatePairCount = 7;
extern const TranslatePair kTranslatePairs[kTranslatePairCount];

// The console's labels, in row order.
extern const char* const kConsoleSourceLabels[kSpokenLanguageCount];
extern const char* const kConsoleTargetLabels[kTranslateLanguageCount];

namespace LanguageTables {

// Rows out of range give empty text rather than reading past a table.
QString recognitionBaseGlyph(int row);
QString translateGlyph(int row);
QString translateCode(int row);
// A name, glyph or label of these tables as the user reads it, in the interface's language.
QString shown(const char* text);

}  // namespace LanguageTables

// A session is a voice translation exactly when the written form of the spoken language
// differs from the target's: Sichuanese into Chinese is dictation.
bool isVoiceTranslateMode(const UserPreferences& preferences);
