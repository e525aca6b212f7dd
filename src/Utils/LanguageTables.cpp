#include "Utils/LanguageTables.h"

const RecognitionLanguage kRecognitionLanguages[kSpeechLanguageRows] = {
    {15362, "普通话", "中", "中"},
    {16372, "粤语", "粤", "粤"},
    {18372, "四川话", "川", "中"},
    {17372, "英语", "英", "英"},
    {0, "", "", ""},
    {0, "", "", ""},
};

const IFlyLanguage kIFlyLanguages[kSpeechLanguageRows] = {
    {"zh_cn", "mandarin", "普通话", "中"},
    {"zh_cn", "cantonese", "粤语", "粤"},
    {"zh_cn", "mandarin", "四川话", "川"},
    {"en_us", "mandarin", "英语", "英"},
    {"", "", "", ""},
    {"", "", "", ""},
};

const TranslateLanguage kTranslateLanguages[kTranslateLanguageCount] = {
    {"zh", "普通话简体", "中"},  {"cht", "普通话繁体", "中"},   {"yue", "粤语简体", "粤"},
    {"yue", "粤语繁体", "粤"},   {"en", "英语", "英"},          {"wyw", "文言文", "文"},
    {"jp", "日语", "日"},        {"kor", "韩语", "韩"},         {"fra", "法语", "法"},
    {"spa", "西班牙语", "西"},   {"th", "泰语", "泰"},          {"ara", "阿拉伯语", "阿"},
    {"ru", "俄语", "俄"},        {"pt", "葡萄牙语", "葡"},      {"de", "德语", "德"},
    {"it", "意大利语", "意"},    {"el", "希腊语", "希"},        {"nl", "荷兰语", "荷"},
    {"pl", "波兰语", "波"},      {"bul", "保加利亚语", "保"},   {"est", "爱沙尼亚语", "爱"},
    {"dan", "丹麦语", "丹"},     {"fin", "芬兰语", "芬"},       {"cs", "捷克语", "捷"},
    {"rom", "罗马尼亚语", "罗"}, {"slo", "斯洛文尼亚语", "斯"}, {"swe", "瑞典语", "瑞"},
    {"hu", "匈牙利语", "匈"},    {"vie", "越南语", "越"},
};

const TranslatePair kTranslatePairs[kTranslatePairCount] = {
    {"中(简)", 0, 0}, {"中(繁)", 0, 1}, {"粤(简)", 1, 2}, {"粤(繁)", 1, 3},
    {"川", 2, 0},     {"英", 3, 4},     {"中-英", 0, 4},
};

const char* const kConsoleSourceLabels[kSpokenLanguageCount] = {"中文", "粤语", "四川话", "英语"};

const char* const kConsoleTargetLabels[kTranslateLanguageCount] = {
    "中文(简体)", "中文(繁体)",   "粤语(简体)", "粤语(繁体)", "英语",       "文言文",   "日语",   "韩语",
    "法语",       "西班牙语",     "泰语",       "阿拉伯语",   "俄语",       "葡萄牙语", "德语",   "意大利语",
    "希腊语",     "荷兰语",       "波兰语",     "保加利亚语", "爱沙尼亚语", "丹麦语",   "芬兰语", "捷克语",
    "罗马利亚语", "斯洛文尼亚语", "瑞典语",     "匈牙利语",   "越南语",
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
