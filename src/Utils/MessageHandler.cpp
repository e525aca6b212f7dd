#include "Utils/MessageHandler.h"

#include <QFile>
#include <QFileInfo>
#include <QTime>

#include <unistd.h>
#include <cstdio>
#include <mutex>

namespace {

// Written once by install() before the handler is active, then only read.
QString gLogFilePath;
qint64 gMaxFileBytes = MessageHandler::kMaxFileBytes;
bool gEchoToStderr = false;
// Lines that did not reach the file (a full or failing disk) since the last that did; under
// the handler's mutex.
int gLostLines = 0;

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

    const QByteArray bytes = MessageHandler::formatLine(type, context, message).toUtf8();
    rotateIfFull();
    QFile file(gLogFilePath);
    bool written = false;
    // Unbuffered: a write the disk refuses fails here, not later in close().
    if (file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered)) {
        // The first line after a loss says how many went missing.
        const QByteArray lost =
            gLostLines == 0
                ? QByteArray()
                : MessageHandler::formatLine(
                      QtWarningMsg, QMessageLogContext(),
                      QStringLiteral("%1 log lines were lost: the disk failed or was full").arg(gLostLines))
                      .toUtf8();
        const qint64 size = file.size();
        written = file.write(lost + bytes) == lost.size() + bytes.size() && file.flush();
        if (!written) {
            // A line cut short would run into the next: the file is cut back to its last whole line.
            file.resize(size);
        }
        file.close();
    }
    gLostLines = written ? 0 : gLostLines + 1;
    // A line lost in the file still shows in the terminal copy.
    if (gEchoToStderr) {
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
