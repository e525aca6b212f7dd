#include "Utils/LanguageTables.h"

#include <QCoreApplication>

// The names and glyphs are stored and compared as they are; they are marked for translation
// where they are shown (LanguageTables::shown).

const RecognitionLanguage kRecognitionLanguages[kSpeechLanguageRows] = {
    {15362, QT_TRANSLATE_NOOP("LanguageTables", "普通话"), QT_TRANSLATE_NOOP("LanguageTables", "中"),
     QT_TRANSLATE_NOOP("LanguageTables", "中")},
    {16372, QT_TRANSLATE_NOOP("LanguageTables", "粤语"), QT_TRANSLATE_NOOP("LanguageTables", "粤"),
     QT_TRANSLATE_NOOP("LanguageTables", "粤")},
    {18372, QT_TRANSLATE_NOOP("LanguageTables", "四川话"), QT_TRANSLATE_NOOP("LanguageTables", "川"),
     QT_TRANSLATE_NOOP("LanguageTables", "中")},
    {17372, QT_TRANSLATE_NOOP("LanguageTables", "英语"), QT_TRANSLATE_NOOP("LanguageTables", "英"),
     QT_TRANSLATE_NOOP("LanguageTables", "英")},
    {0, "", "", ""},
    {0, "", "", ""},
};

const IFlyLanguage kIFlyLanguages[kSpeechLanguageRows] = {
    {"zh_cn", "mandarin", QT_TRANSLATE_NOOP("LanguageTables", "普通话"),
     QT_TRANSLATE_NOOP("LanguageTables", "中")},
    {"zh_cn", "cantonese", QT_TRANSLATE_NOOP("LanguageTables", "粤语"),
     QT_TRANSLATE_NOOP("LanguageTables", "粤")},
    {"zh_cn", "mandarin", QT_TRANSLATE_NOOP("LanguageTables", "四川话"),
     QT_TRANSLATE_NOOP("LanguageTables", "川")},
    {"en_us", "mandarin", QT_TRANSLATE_NOOP("LanguageTables", "英语"),
     QT_TRANSLATE_NOOP("LanguageTables", "英")},
    {"", "", "", ""},
    {"", "", "", ""},
};

const TranslateLanguage kTranslateLanguages[kTranslateLanguageCount] = {
    {"zh", QT_TRANSLATE_NOOP("LanguageTables", "普通话简体"), QT_TRANSLATE_NOOP("LanguageTables", "中")},
    {"cht", QT_TRANSLATE_NOOP("LanguageTables", "普通话繁体"), QT_TRANSLATE_NOOP("LanguageTables", "中")},
    {"yue", QT_TRANSLATE_NOOP("LanguageTables", "粤语简体"), QT_TRANSLATE_NOOP("LanguageTables", "粤")},
    {"yue", QT_TRANSLATE_NOOP("LanguageTables", "粤语繁体"), QT_TRANSLATE_NOOP("LanguageTables", "粤")},
    {"en", QT_TRANSLATE_NOOP("LanguageTables", "英语"), QT_TRANSLATE_NOOP("LanguageTables", "英")},
    {"wyw", QT_TRANSLATE_NOOP("LanguageTables", "文言文"), QT_TRANSLATE_NOOP("LanguageTables", "文")},
    {"jp", QT_TRANSLATE_NOOP("LanguageTables", "日语"), QT_TRANSLATE_NOOP("LanguageTables", "日")},
    {"kor", QT_TRANSLATE_NOOP("LanguageTables", "韩语"), QT_TRANSLATE_NOOP("LanguageTables", "韩")},
    {"fra", QT_TRANSLATE_NOOP("LanguageTables", "法语"), QT_TRANSLATE_NOOP("LanguageTables", "法")},
    {"spa", QT_TRANSLATE_NOOP("LanguageTables", "西班牙语"), QT_TRANSLATE_NOOP("LanguageTables", "西")},
    {"th", QT_TRANSLATE_NOOP("LanguageTables", "泰语"), QT_TRANSLATE_NOOP("LanguageTables", "泰")},
    {"ara", QT_TRANSLATE_NOOP("LanguageTables", "阿拉伯语"), QT_TRANSLATE_NOOP("LanguageTables", "阿")},
    {"ru", QT_TRANSLATE_NOOP("LanguageTables", "俄语"), QT_TRANSLATE_NOOP("LanguageTables", "俄")},
    {"pt", QT_TRANSLATE_NOOP("LanguageTables", "葡萄牙语"), QT_TRANSLATE_NOOP("LanguageTables", "葡")},
    {"de", QT_TRANSLATE_NOOP("LanguageTables", "德语"), QT_TRANSLATE_NOOP("LanguageTables", "德")},
    {"it", QT_TRANSLATE_NOOP("LanguageTables", "意大利语"), QT_TRANSLATE_NOOP("LanguageTables", "意")},
    {"el", QT_TRANSLATE_NOOP("LanguageTables", "希腊语"), QT_TRANSLATE_NOOP("LanguageTables", "希")},
    {"nl", QT_TRANSLATE_NOOP("LanguageTables", "荷兰语"), QT_TRANSLATE_NOOP("LanguageTables", "荷")},
    {"pl", QT_TRANSLATE_NOOP("LanguageTables", "波兰语"), QT_TRANSLATE_NOOP("LanguageTables", "波")},
    {"bul", QT_TRANSLATE_NOOP("LanguageTables", "保加利亚语"), QT_TRANSLATE_NOOP("LanguageTables", "保")},
    {"est", QT_TRANSLATE_NOOP("LanguageTables", "爱沙尼亚语"), QT_TRANSLATE_NOOP("LanguageTables", "爱")},
    {"dan", QT_TRANSLATE_NOOP("LanguageTables", "丹麦语"), QT_TRANSLATE_NOOP("LanguageTables", "丹")},
    {"fin", QT_TRANSLATE_NOOP("LanguageTables", "芬兰语"), QT_TRANSLATE_NOOP("LanguageTables", "芬")},
    {"cs", QT_TRANSLATE_NOOP("LanguageTables", "捷克语"), QT_TRANSLATE_NOOP("LanguageTables", "捷")},
    {"rom", QT_TRANSLATE_NOOP("LanguageTables", "罗马尼亚语"), QT_TRANSLATE_NOOP("LanguageTables", "罗")},
    {"slo", QT_TRANSLATE_NOOP("LanguageTables", "斯洛文尼亚语"), QT_TRANSLATE_NOOP("LanguageTables", "斯")},
    {"swe", QT_TRANSLATE_NOOP("LanguageTables", "瑞典语"), QT_TRANSLATE_NOOP("LanguageTables", "瑞")},
    {"hu", QT_TRANSLATE_NOOP("LanguageTables", "匈牙利语"), QT_TRANSLATE_NOOP("LanguageTables", "匈")},
    {"vie", QT_TRANSLATE_NOOP("LanguageTables", "越南语"), QT_TRANSLATE_NOOP("LanguageTables", "越")},
};

const TranslatePair kTranslatePairs[kTranslatePairCount] = {
    {QT_TRANSLATE_NOOP("LanguageTables", "中(简)"), 0, 0},
    {QT_TRANSLATE_NOOP("LanguageTables", "中(繁)"), 0, 1},
    {QT_TRANSLATE_NOOP("LanguageTables", "粤(简)"), 1, 2},
    {QT_TRANSLATE_NOOP("LanguageTables", "粤(繁)"), 1, 3},
    {QT_TRANSLATE_NOOP("LanguageTables", "川"), 2, 0},
    {QT_TRANSLATE_NOOP("LanguageTables", "英"), 3, 4},
    {QT_TRANSLATE_NOOP("LanguageTables", "中-英"), 0, 4},
};

const char* const kConsoleSourceLabels[kSpokenLanguageCount] = {
    QT_TRANSLATE_NOOP("LanguageTables", "中文"), QT_TRANSLATE_NOOP("LanguageTables", "粤语"),
    QT_TRANSLATE_NOOP("LanguageTables", "四川话"), QT_TRANSLATE_NOOP("LanguageTables", "英语")};

const char* const kConsoleTargetLabels[kTranslateLanguageCount] = {
    QT_TRANSLATE_NOOP("LanguageTables", "中文(简体)"), QT_TRANSLATE_NOOP("LanguageTables", "中文(繁体)"),
    QT_TRANSLATE_NOOP("LanguageTables", "粤语(简体)"), QT_TRANSLATE_NOOP("LanguageTables", "粤语(繁体)"),
    QT_TRANSLATE_NOOP("LanguageTables", "英语"),       QT_TRANSLATE_NOOP("LanguageTables", "文言文"),
    QT_TRANSLATE_NOOP("LanguageTables", "日语"),       QT_TRANSLATE_NOOP("LanguageTables", "韩语"),
    QT_TRANSLATE_NOOP("LanguageTables", "法语"),       QT_TRANSLATE_NOOP("LanguageTables", "西班牙语"),
    QT_TRANSLATE_NOOP("LanguageTables", "泰语"),       QT_TRANSLATE_NOOP("LanguageTables", "阿拉伯语"),
    QT_TRANSLATE_NOOP("LanguageTables", "俄语"),       QT_TRANSLATE_NOOP("LanguageTables", "葡萄牙语"),
    QT_TRANSLATE_NOOP("LanguageTables", "德语"),       QT_TRANSLATE_NOOP("LanguageTables", "意大利语"),
    QT_TRANSLATE_NOOP("LanguageTables", "希腊语"),     QT_TRANSLATE_NOOP("LanguageTables", "荷兰语"),
    QT_TRANSLATE_NOOP("LanguageTables", "波兰语"),     QT_TRANSLATE_NOOP("LanguageTables", "保加利亚语"),
    QT_TRANSLATE_NOOP("LanguageTables", "爱沙尼亚语"), QT_TRANSLATE_NOOP("LanguageTables", "丹麦语"),
    QT_TRANSLATE_NOOP("LanguageTables", "芬兰语"),     QT_TRANSLATE_NOOP("LanguageTables", "捷克语"),
    QT_TRANSLATE_NOOP("LanguageTables", "罗马利亚语"), QT_TRANSLATE_NOOP("LanguageTables", "斯洛文尼亚语"),
    QT_TRANSLATE_NOOP("LanguageTables", "瑞典语"),     QT_TRANSLATE_NOOP("LanguageTables", "匈牙利语"),
    QT_TRANSLATE_NOOP("LanguageTables", "越南语"),
};

namespace LanguageTables {

QString recognitionBaseGlyph(int row)
{
    return row >= 0 && row < kSpeechLanguageRows ? QString::fromUtf8(kRecognitionLanguages[row].baseGlyph)
                                                 : QString();
}

QString translateGlyph(int row)
{
    return row >= 0 && row < kTranslateLanguageCount ? QString::fromUtf8(kTranslateLanguages[row].glyph)
                                                     : QString();
}

QString shown(const char* text)
{
    return QCoreApplication::translate("LanguageTables", text);
}

QString translateCode(int row)
{
    return row >= 0 && row < kTranslateLanguageCount ? QString::fromUtf8(kTranslateLanguages[row].code)
                                                     : QString();
}

}  // namespace LanguageTables

bool isVoiceTranslateMode(const UserPreferences& preferences)
{
    return LanguageTables::recognitionBaseGlyph(preferences.recognitionLanguage) !=
           LanguageTables::translateGlyph(preferences.voiceTranslateTargetLanguage);
}
