#include "SynthesisService.h"

#include "ServicesLog.h"

#include <httplib.h>

#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QtEndian>

#include <cmath>

SynthesisService::SynthesisService(const Fault* fault, const QString& token, const QString& cuid)
    : HttpService(QStringLiteral("synthesis"), fault), mToken(token), mCuid(cuid)
{
}

QByteArray SynthesisService::error(int number, const QString& message)
{
    return QJsonDocument(QJsonObject{{QStringLiteral("err_no"), number},
                                     {QStringLiteral("err_msg"), message},
                                     {QStringLiteral("idx"), 1}})
        .toJson(QJsonDocument::Compact);
}

QByteArray SynthesisService::errorBody(int code) const
{
    return error(code, QStringLiteral("stand-in error"));
}

QByteArray SynthesisService::tone(int milliseconds)
{
    const int samples = 16 * qBound(0, milliseconds, 60000);
    QByteArray wav;
    wav.reserve(44 + 2 * samples);
    auto put32 = [&wav](quint32 v) {
        char bytes[4];
        qToLittleEndian(v, bytes);
        wav.append(bytes, 4);
    };
    auto put16 = [&wav](quint16 v) {
        char bytes[2];
        qToLittleEndian(v, bytes);
        wav.append(bytes, 2);
    };
    wav.append("RIFF", 4);
    put32(static_cast<quint32>(36 + 2 * samples));
    wav.append("WAVEfmt ", 8);
    put32(16);
    put16(1);
    put16(1);
    put32(16000);
    put32(32000);
    put16(2);
    put16(16);
    wav.append("data", 4);
    put32(static_cast<quint32>(2 * samples));
    for (int i = 0; i < samples; ++i) {
        const double v = 8000.0 * std::sin(2.0 * M_PI * 440.0 * i / 16000.0);
        put16(static_cast<quint16>(static_cast<qint16>(v)));
    }
    return wav;
}

QByteArray SynthesisService::withSizes(QByteArray wav)
{
    // espeak-ng writes to a pipe, so its header carries "unknown length" sizes that some
    // decoders reject; the whole file is here now, so the sizes can be told.
    const int data = wav.indexOf("data", 12);
    if (data < 0 || wav.size() < data + 8) {
        return wav;
    }
    qToLittleEndian(static_cast<quint32>(wav.size() - 8), wav.data() + 4);
    qToLittleEndian(static_cast<quint32>(wav.size() - data - 8), wav.data() + data + 4);
    return wav;
}

QByteArray SynthesisService::speak(const QString& text, int spd, int pit, int vol)
{
    bool chinese = false;
    for (const QChar c : text) {
        chinese = chinese || (c.unicode() >= 0x4E00 && c.unicode() <= 0x9FFF);
    }
    const QStringList arguments{QStringLiteral("--stdout"),
                                QStringLiteral("-v"),
                                chinese ? QStringLiteral("cmn") : QStringLiteral("en"),
                                QStringLiteral("-s"),
                                QString::number(100 + qBound(0, spd, 15) * 15),
                                QStringLiteral("-p"),
                                QString::number(qBound(0, pit, 15) * 6),
                                QStringLiteral("-a"),
                                QString::number(qBound(0, vol, 15) * 13),
                                text};
    QProcess espeak;
    espeak.start(QStringLiteral("espeak-ng"), arguments);
    if (espeak.waitForFinished(10000) && espeak.exitCode() == 0) {
        const QByteArray audio = espeak.readAllStandardOutput();
        if (audio.startsWith("RIFF")) {
            return withSizes(audio);
        }
    }
    qCWarning(lcServices) << "synthesis: espeak-ng did not speak, answering with a tone";
    return tone(qMin(5000, 200 + 80 * static_cast<int>(text.size())));
}

int SynthesisService::checkQuery(const QHash<QString, QString>& query, const QString& token,
                                 const QString& cuid, QString* message)
{
    if (query.value(QStringLiteral("tok")) != token) {
        *message = QStringLiteral("Invalid token.");
        return 502;
    }
    if (query.value(QStringLiteral("cuid")) != cuid) {
        *message = QStringLiteral("Unsupported input: cuid");
        return 500;
    }
    const QString text = query.value(QStringLiteral("tex"));
    if (text.isEmpty() || text.size() > kMaxTextChars) {
        *message = text.isEmpty() ? QStringLiteral("Text is empty.") : QStringLiteral("Text too long.");
        return 501;
    }
    if (query.value(QStringLiteral("lan")) != QLatin1String("zh")) {
        *message = QStringLiteral("Invalid param: lan");
        return 501;
    }
    if (query.value(QStringLiteral("ctp")) != QLatin1String("1")) {
        *message = QStringLiteral("Invalid param: ctp");
        return 501;
    }
    // The voices on offer; 2 is none of them.
    static const QSet<int> voices{0, 1, 3, 4, 5, 103, 106, 110, 111, 5003, 5118};
    const QRegularExpression digits(QStringLiteral("^[0-9]{1,5}$"));
    for (const char* key : {"per", "spd", "pit", "vol"}) {
        const QString value = query.value(QLatin1String(key));
        const int number = value.toInt();
        const bool inRange =
            QLatin1String(key) == QLatin1String("per") ? voices.contains(number) : number <= 15;
        if (!digits.match(value).hasMatch() || !inRange) {
            *message = QStringLiteral("Invalid param: %1").arg(QLatin1String(key));
            return 501;
        }
    }
    return 0;
}

void SynthesisService::addRoutes(httplib::Server& server)
{
    server.Get("/text2audio", [this](const httplib::Request& req, httplib::Response& res) {
        QHash<QString, QString> query;
        for (const auto& item : req.params) {
            query.insert(QString::fromStdString(item.first), QString::fromStdString(item.second));
        }
        QString message;
        if (const int number = checkQuery(query, mToken, mCuid, &message); number != 0) {
            qCWarning(lcServices).noquote() << "synthesis: refused," << message;
            answer(res, error(number, message), "application/json");
            return;
        }
        answer(res,
               speak(query.value(QStringLiteral("tex")), query.value(QStringLiteral("spd")).toInt(),
                     query.value(QStringLiteral("pit")).toInt(), query.value(QStringLiteral("vol")).toInt()),
               "audio/wav");
    });
}
