#include "BaiduSpeech/ElvUtil.h"

#include "Utils/Logging.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtEndian>

#include <algorithm>
#include <cstring>

QByteArray ElvUtil::intToByte(int value)
{
    const auto v = static_cast<quint32>(value);
    QByteArray bytes(4, '\0');
    bytes[0] = static_cast<char>((v >> 24) & 0xFF);
    bytes[1] = static_cast<char>((v >> 16) & 0xFF);
    bytes[2] = static_cast<char>((v >> 8) & 0xFF);
    bytes[3] = static_cast<char>(v & 0xFF);
    return bytes;
}

QByteArray ElvUtil::encode(int type, QByteArray data, int length)
{
    return encode(type, data.constData(), data.size(), length);
}

QByteArray ElvUtil::encode(int type, const char* data, int size, int length)
{
    if (length < 0) {
        length = size;
    }
    // One allocation, the frame itself: audio goes out this way every 128 ms.
    QByteArray frame(length + 8, Qt::Uninitialized);
    qToBigEndian(static_cast<quint32>(type), frame.data());
    qToBigEndian(static_cast<quint32>(length), frame.data() + 4);
    const int copied = std::min(size, length);
    if (copied > 0) {
        std::memcpy(frame.data() + 8, data, static_cast<size_t>(copied));
    }
    std::memset(frame.data() + 8 + copied, 0, static_cast<size_t>(length - copied));
    return frame;
}

QByteArray ElvUtil::readServerList()
{
    return encode(static_cast<int>(TypeServerList), QByteArray(), 0);
}

QByteArray ElvUtil::paramUpload(QString params)
{
    return encode(static_cast<int>(TypeParams), params.toLatin1(), -1);
}

QByteArray ElvUtil::dataUpload(QByteArray data, int length)
{
    return encode(static_cast<int>(TypeData), data, length);
}

QByteArray ElvUtil::dataUpload(const char* data, int length)
{
    return encode(static_cast<int>(TypeData), data, length, length);
}

QByteArray ElvUtil::dataFinish()
{
    return encode(static_cast<int>(TypeFinish), QByteArray(), 0);
}

QByteArray ElvUtil::endAck()
{
    return encode(static_cast<int>(TypeEndAck), QByteArray(), 0);
}

QString ElvUtil::buildParams(int language, const QString& uid)
{
    QJsonObject object;
    object.insert(QStringLiteral("language"), QString::number(language));
    object.insert(QStringLiteral("uid"), uid);
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Indented));
}

int ElvUtil::serverListEnd(const QByteArray& text)
{
    int depth = 0;
    bool inString = false;
    bool escaped = false;
    for (int i = 0; i < text.size(); ++i) {
        const char c = text.at(i);
        if (inString) {
            if (escaped) {
                escaped = false;
            } else if (c == '\\') {
                escaped = true;
            } else if (c == '"') {
                inString = false;
            }
        } else if (c == '[' || c == '{') {
            ++depth;
        } else if (c == ']' || c == '}') {
            if (--depth <= 0) {
                return depth == 0 ? i + 1 : 0;
            }
        } else if (depth == 0 && !QChar::isSpace(static_cast<uchar>(c))) {
            return 0;
        } else if (c == '"') {
            inString = true;
        }
    }
    return -1;
}

bool ElvUtil::isWholeServerList(const QByteArray& text)
{
    return serverListEnd(text) >= 0 || text.size() > kMaxServerListBytes;
}

QList<SDKServer> ElvUtil::parseServerList(const QByteArray& text)
{
    QList<SDKServer> servers;
    const int end = serverListEnd(text);
    if (end > kMaxServerListBytes || (end < 0 && text.size() > kMaxServerListBytes)) {
        qCWarning(lcSpeechGateway) << "server list of" << (end < 0 ? text.size() : end)
                                   << "bytes is over the limit of" << kMaxServerListBytes << "- dropped";
        return servers;
    }
    const QJsonArray array = QJsonDocument::fromJson(text.left(qMax(end, 0))).array();
    if (array.size() > kMaxServers) {
        qCWarning(lcSpeechGateway) << "server list of" << array.size() << "servers is over the limit of"
                                   << kMaxServers << "- dropped";
        return servers;
    }
    for (const QJsonValue& value : array) {
        const QJsonObject o = value.toObject();
        SDKServer server;
        server.port = o.value(QLatin1String("port")).toInt(0);
        server.count = o.value(QLatin1String("count")).toInt(0);
        servers.append(server);
    }
    return servers;
}

QList<SocketMessage> ElvUtil::parseSocketMessages(const QByteArray& text)
{
    QList<SocketMessage> messages;
    for (const QByteArray& line : text.split('\n')) {
        if (line.trimmed().isEmpty()) {
            continue;
        }
        if (line.size() > kMaxLineBytes) {
            qCWarning(lcSpeechGateway)
                << "line of" << line.size() << "bytes is over the limit of" << kMaxLineBytes << "- dropped";
            continue;
        }
        const QJsonDocument doc = QJsonDocument::fromJson(line);
        if (!doc.isObject()) {
            continue;
        }
        const QJsonObject o = doc.object();
        SocketMessage message;
        message.type = o.value(QLatin1String("type")).toInt(0);
        message.code = o.value(QLatin1String("code")).toInt(0);
        message.data = o.value(QLatin1String("data")).toString();
        message.ack = o.value(QLatin1String("ack")).toInt(0);
        messages.append(message);
    }
    return messages;
}

QString ElvUtil::recognitionText(const QString& document)
{
    const QJsonObject o = QJsonDocument::fromJson(document.toUtf8()).object();
    return o.value(QLatin1String("results_recognition")).toArray().at(0).toString();
}
