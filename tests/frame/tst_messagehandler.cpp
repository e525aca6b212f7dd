#include "Utils/MessageHandler.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <thread>
#include <vector>

class TestMessageHandler : public QObject {
    Q_OBJECT

private slots:
    void lineFormat();
    void installedHandlerAppendsToTheFile();
    void linesFromManyThreadsStayWhole();
    void fullLogMovesAsideKeepingOneOlderFile();
    void unopenableFileLosesTheLineQuietly();

private:
    QStringList readLines(const QString& path);
    // Logs quietly into a file in dir that already holds `earlier`.
    QString installIn(const QTemporaryDir& dir, const QByteArray& earlier = QByteArray(),
                      qint64 limit = MessageHandler::kMaxFileBytes);
};

QString TestMessageHandler::installIn(const QTemporaryDir& dir, const QByteArray& earlier, qint64 limit)
{
    const QString path = dir.filePath(QStringLiteral("ZorvaneLog.txt"));
    QFile file(path);
    if (file.open(QIODevice::WriteOnly)) {
        file.write(earlier);
    }
    file.close();
    MessageHandler::install(path, limit);
    MessageHandler::setEchoToStderr(false);
    return path;
}

QStringList TestMessageHandler::readLines(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    const QString all = QString::fromUtf8(file.readAll());
    QStringList lines = all.split(QStringLiteral("\r\n"));
    if (!lines.isEmpty() && lines.last().isEmpty()) {
        lines.removeLast();
    }
    return lines;
}

void TestMessageHandler::lineFormat()
{
    const QMessageLogContext context("src/Hid/DeviceManager.cpp", 417, "f", "zorvane.device");
    const QRegularExpression shape(
        QStringLiteral("^\\d\\d:\\d\\d:\\d\\d\\.\\d\\d\\d (.*) "
                       "File:\\(src/Hid/DeviceManager\\.cpp\\) Line:\\(417\\) "
                       "设备 ready 100%\r\n$"));
    // Every level but information names itself.
    for (const auto& [type, level] :
         {std::make_pair(QtWarningMsg, "Warning:"), std::make_pair(QtInfoMsg, "")}) {
        const QString line = MessageHandler::formatLine(type, context, QStringLiteral("设备 ready 100%"));
        const QRegularExpressionMatch match = shape.match(line);
        QVERIFY2(match.hasMatch(), qPrintable(line));
        QCOMPARE(match.captured(1), QString::fromLatin1(level));
    }

    // No file in the context (a release build of a library) still gives the frame.
    const QMessageLogContext empty;
    QVERIFY(MessageHandler::formatLine(QtDebugMsg, empty, QStringLiteral("x"))
                .endsWith(QStringLiteral(" Debug: File:() Line:(0) x\r\n")));
}

void TestMessageHandler::installedHandlerAppendsToTheFile()
{
    QTemporaryDir dir;
    const QString path = installIn(dir, "earlier\r\n");
    qDebug() << "first";
    qWarning("second %d", 2);
    qInstallMessageHandler(nullptr);

    const QStringList lines = readLines(path);
    QCOMPARE(lines.size(), 3);
    QCOMPARE(lines.at(0), QStringLiteral("earlier"));
    QVERIFY2(lines.at(1).contains(QStringLiteral(" Debug: File:(")), qPrintable(lines.at(1)));
    QVERIFY(lines.at(1).contains(QStringLiteral("tst_messagehandler.cpp")));
    QVERIFY(lines.at(1).endsWith(QStringLiteral(" first")));
    QVERIFY(lines.at(2).endsWith(QStringLiteral(" second 2")));
}

void TestMessageHandler::linesFromManyThreadsStayWhole()
{
    QTemporaryDir dir;
    const QString path = installIn(dir);
    constexpr int kThreads = 4;
    constexpr int kLines = 150;
    // std::thread, not QThread: ThreadSanitizer sees its join, but not the one inside Qt.
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([t] {
            for (int i = 0; i < kLines; ++i) {
                qDebug("thread %d line %d %s", t, i, "padding padding padding padding padding");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    qInstallMessageHandler(nullptr);

    const QStringList lines = readLines(path);
    QCOMPARE(lines.size(), kThreads * kLines);
    const QRegularExpression whole(QStringLiteral(
        "^\\d\\d:\\d\\d:\\d\\d\\.\\d{3} Debug: File:\\([^)]*\\) Line:\\(\\d+\\) thread (\\d) line (\\d+) "
        "padding padding padding padding padding$"));
    QVector<int> next(kThreads, 0);
    for (const QString& line : lines) {
        const QRegularExpressionMatch m = whole.match(line);
        QVERIFY2(m.hasMatch(), qPrintable(line));
        const int t = m.captured(1).toInt();
        // Each thread's own lines keep their order.
        QCOMPARE(m.captured(2).toInt(), next[t]);
        ++next[t];
    }
}

void TestMessageHandler::fullLogMovesAsideKeepingOneOlderFile()
{
    QTemporaryDir dir;
    constexpr int kLimit = 1000;
    const QString path = installIn(dir, QByteArray(), kLimit);
    // Each line is a little over 100 bytes: three files' worth in all.
    for (int i = 0; i < 30; ++i) {
        qDebug("line %02d %s", i, "padding padding padding padding padding padding");
    }
    qInstallMessageHandler(nullptr);

    const QStringList current = readLines(path);
    const QStringList older = readLines(path + QStringLiteral(".1"));
    QVERIFY(!QFile::exists(path + QStringLiteral(".2")));
    QVERIFY(QFileInfo(path).size() < kLimit);
    QVERIFY(QFileInfo(path + QStringLiteral(".1")).size() < kLimit + 200);
    // Nothing between the two files was lost; the oldest lines went with the third file.
    QVERIFY(!older.isEmpty() && !current.isEmpty());
    const QStringList both = older + current;
    for (int i = 0; i < both.size(); ++i) {
        QCOMPARE(both.at(i).mid(both.at(i).indexOf(QStringLiteral("line ")), 7),
                 QStringLiteral("line %1").arg(30 - both.size() + i, 2, 10, QLatin1Char('0')));
    }
    QVERIFY(both.size() < 30);
}

void TestMessageHandler::unopenableFileLosesTheLineQuietly()
{
    QTemporaryDir dir;
    // A folder cannot be opened for appending.
    MessageHandler::install(dir.path());
    MessageHandler::setEchoToStderr(false);
    qWarning("lost");
    qInstallMessageHandler(nullptr);
    QVERIFY(QFileInfo(dir.path()).isDir());
}

QTEST_GUILESS_MAIN(TestMessageHandler)
#include "tst_messagehandler.moc"
