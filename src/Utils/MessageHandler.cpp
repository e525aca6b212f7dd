#include "Utils/MessageHandler.h"

#include <QFile>
#include <QFileInfo>
#include <QTextStream>
#include <QTime>

#include <unistd.h>
#include <cstdio>
#include <mutex>

namespace {

// Written once by install() before the handler is active, then only read.
QString gLogFilePath;
qint64 gMaxFileBytes = MessageHandler::kMaxFileBytes;
bool gEchoToStderr = false;

void rotateIfFull()
{
    const QFileInfo info(gLogFilePath);
    if (!info.isFile() || info.size() < gMaxFileBytes) {
        return;
    }
    const QString older = gLogFilePath + QStringLiteral(".1");
    QFile::remove(older);
    QFile::rename(gLogFilePath, older);
}

QString levelText(QtMsgType type)
{
    switch (type) {
        case QtDebugMsg:
            return QStringLiteral("Debug:");
        case QtWarningMsg:
            return QStringLiteral("Warning:");
        case QtCriticalMsg:
            return QStringLiteral("Critical:");
        case QtFatalMsg:
            return QStringLiteral("Fatal:");
        default:
            return QString();
    }
}

}  // namespace

QString MessageHandler::formatLine(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    const QString where = QStringLiteral("File:(%1) Line:(%2)")
                              .arg(QString::fromUtf8(context.file ? context.file : ""))
                              .arg(context.line);
    return QStringLiteral("%1 %2 %3 %4")
               .arg(QTime::currentTime().toString(QStringLiteral("hh:mm:ss.zzz")), levelText(type), where,
                    message) +
           QLatin1String("\r\n");
}

void customMessageHandler(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    // Held for the whole call so that lines from different threads never interleave. A
    // standard mutex, so that ThreadSanitizer sees the lock (Qt's own is invisible to it).
    static std::mutex mutex;
    const std::lock_guard<std::mutex> lock(mutex);

    const QString line = MessageHandler::formatLine(type, context, message);
    rotateIfFull();
    QFile file(gLogFilePath);
    if (file.open(QIODevice::WriteOnly | QIODevice::Append)) {
        QTextStream stream(&file);
        stream.setCodec("UTF-8");
        stream << line;
        stream.flush();
        file.close();
    }
    // A failed open loses the line in the file; the terminal copy still shows it.
    if (gEchoToStderr) {
        const QByteArray bytes = line.toUtf8();
        std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stderr);
        std::fflush(stderr);
    }
}

void MessageHandler::setEchoToStderr(bool echo)
{
    gEchoToStderr = echo;
}

void MessageHandler::install(const QString& logFilePath, qint64 maxFileBytes)
{
    gLogFilePath = logFilePath;
    gMaxFileBytes = maxFileBytes;
    gEchoToStderr = isatty(STDERR_FILENO) != 0;
    qInstallMessageHandler(customMessageHandler);
}
