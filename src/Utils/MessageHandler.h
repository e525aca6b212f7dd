#pragma once

#include <QString>
#include <QtGlobal>

// The process log: every qDebug/qWarning/... line goes to "ZorvaneLog.txt" in the
// state folder as "hh:mm:ss.zzz Level: File:(f) Line:(n) message\r\n". One older
// file, "ZorvaneLog.txt.1", is kept.
void customMessageHandler(QtMsgType type, const QMessageLogContext& context, const QString& message);

namespace MessageHandler {

// The line the handler writes for one message, CR LF included.
QString formatLine(QtMsgType type, const QMessageLogContext& context, const QString& message);

// A log at this size is moved to "<name>.1" (replacing the one before) and begun afresh,
// so that a device or backend failing for days cannot fill the disk.
inline constexpr qint64 kMaxFileBytes = 4 * 1024 * 1024;

// Points the handler at logFilePath and installs it. The path is fixed here, before any
// line is written, so that writing a line never has to resolve folders (which may log).
void install(const QString& logFilePath, qint64 maxFileBytes = kMaxFileBytes);

// Whether lines are also copied to stderr (on when stderr is a terminal).
void setEchoToStderr(bool echo);

}  // namespace MessageHandler
