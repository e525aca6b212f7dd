#pragma once

// The text the typing suites and the typing bench dictate.
#include <QString>
#include <QStringList>
#include <QVector>

// Dictation as it arrives: mostly Chinese from a few hundred characters, with English words,
// numbers, accented Latin and emoji between. The same text every run.
inline QString mixedText(int length, quint32 seed)
{
    const QString chinese = QStringLiteral(
        "的一是不了人我在有他这中大来上国个到说们为子和你地出道也时年得就那要下以生会自着去之过家学对"
        "可她里后小么心多天而能好都然没日于起还发成事只作当想看文无开手十用主行方又如前所本见经头面公同"
        "三已老从动两长知民样现分将外但身些与高意进把法此实回二理美点月明其种声全工己话儿者向情部正名定"
        "女问力机给等几很业最间新什打便位因重被走电四第门相次东政海口使教西再平真听世气信北少关并内加化"
        "由却代军产入先山五太水万市眼体别处总才场师书比住员九笑性通目华报立马命张活难神数件安表原车白应"
        "路期叫死常提感金何更反合放做系计或司利受光王果亲界及今京务制解各任至清物台象记边共风战干接它许");
    const QString latin = QStringLiteral("éèüöäñçàâÉÜß");
    const QStringList emoji = {QStringLiteral("😀"), QStringLiteral("👋"), QStringLiteral("🎉")};
    const QStringList words = {QStringLiteral("voice"), QStringLiteral("mouse"), QStringLiteral("Hello"),
                               QStringLiteral("OK"), QStringLiteral("typing")};
    QString text;
    auto next = [&seed](int range) {
        seed = seed * 1103515245u + 12345u;
        return static_cast<int>((seed >> 16) % static_cast<quint32>(range));
    };
    auto any = [&next](const auto& list) { return list.at(next(list.size())); };
    while (text.toUcs4().size() < length) {
        const quint32 pick = next(100);
        if (pick < 60) {
            text += any(chinese);
        } else if (pick < 72) {
            text += any(words) + QLatin1Char(' ');
        } else if (pick < 82) {
            text += QString::number(next(1000));
        } else if (pick < 92) {
            text += any(latin);
        } else if (pick < 95) {
            text += any(emoji);
        } else {
            text += QStringLiteral("，。, ");
        }
    }
    const QVector<uint> ucs4 = text.toUcs4();
    return QString::fromUcs4(ucs4.constData(), length);
}

// Pieces of whole characters, as a recogniser delivers them.
inline QStringList pieces(const QString& text, int size)
{
    const QVector<uint> ucs4 = text.toUcs4();
    QStringList result;
    for (int i = 0; i < ucs4.size(); i += size) {
        result << QString::fromUcs4(ucs4.constData() + i, qMin(size, ucs4.size() - i));
    }
    return result;
}
