#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

// An SDK server of the speech gateway: the lower the count, the better.
struct SDKServer {
    int port = 0;
    int count = 0;
};

// One JSON line from an SDK socket.
struct SocketMessage {
    int type = 0;
    int code = 0;
    QString data;
    int ack = 0;
};

// The codec of the speech gateway. Client to gateway is a binary frame:
//
//  offset 0  4 bytes  type, big-endian (0x5A5B6C03 server list, ...10 parameters, ...11 audio,
//                     ...12 finish, ...13 end acknowledgement)
//  offset 4  4 bytes  payload length, big-endian, header not counted
//  offset 8  length   payload
//
// Gateway to client is JSON text: the server list on the control socket, one object per line
// on an SDK socket. Stateless.
class ElvUtil {
public:
    enum FrameType : quint32 {
        TypeServerList = 0x5A5B6C03,
        TypeParams = 0x5A5B6C10,
        TypeData = 0x5A5B6C11,
        TypeFinish = 0x5A5B6C12,
        TypeEndAck = 0x5A5B6C13,
    };
    enum Event {
        ON_START_WORKING = 48,
        ON_START = 49,
        ON_END = 50,
        ON_FLUSH = 51,
        ON_FINISH = 52,
        ON_LONG_SPEECH_END = 53,
        ON_ERROR = 54,
        ON_CANCEL = 55,
        ON_PARAMS_ACK = 56,
        ON_END_ACK = 57,
    };

    // What the gateway sends back is small: a list of a handful of servers, lines of a few
    // hundred bytes. Past these a reply is dropped with a log line.
    static constexpr int kMaxServerListBytes = 64 * 1024;
    static constexpr int kMaxServers = 256;
    static constexpr int kMaxLineBytes = 64 * 1024;

    // A frame of exactly length + 8 bytes; a negative length takes the data's size, a short
    // data is padded with zero bytes.
    static QByteArray encode(int type, QByteArray data, int length);
    static QByteArray encode(int type, const char* data, int size, int length);
    static QByteArray readServerList();
    static QByteArray paramUpload(QString params);
    static QByteArray dataUpload(QByteArray data, int length);
    // An audio frame of the first length bytes at data.
    static QByteArray dataUpload(const char* data, int length);
    static QByteArray dataFinish();
    static QByteArray endAck();
    static QByteArray intToByte(int value);

    // The parameter object in its indented form: language as a decimal string, then uid.
    static QString buildParams(int language, const QString& uid);

    // Where the reply's first JSON document ends (its closing bracket, strings skipped), -1 while
    // it is still open, 0 when the reply starts with something that is no document. Decided byte
    // by byte, so the same reply cut into other reads ends at the same place.
    static int serverListEnd(const QByteArray& text);
    // Whether the server list has come whole (its document closed) or is past kMaxServerListBytes.
    static bool isWholeServerList(const QByteArray& text);
    // The list in the reply's first document; what follows it is ignored. Empty for a list past
    // kMaxServerListBytes or kMaxServers.
    static QList<SDKServer> parseServerList(const QByteArray& text);
    // Every non-empty line that holds a JSON object and is no longer than kMaxLineBytes.
    static QList<SocketMessage> parseSocketMessages(const QByteArray& text);
    // The first element of results_recognition in a result document, or empty.
    static QString recognitionText(const QString& document);
};
