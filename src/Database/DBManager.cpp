#include "Database/DBManager.h"

#include "Utils/AppPaths.h"
#include "Utils/FileAside.h"
#include "Utils/Logging.h"
#include "Utils/TextUtils.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

namespace {

const QString kCreateTable = QStringLiteral(
    "create table if not exists command_word(id integer primary key autoincrement, keyword varchar(200), "
    "target varchar(200), type int, pro varchar(200))");
const QString kSelectAll = QStringLiteral("select * from command_word order by id desc");
const QString kSelectOne = QStringLiteral("select * from command_word where id=%1");
const QString kInsert =
    QStringLiteral("insert into command_word(keyword, target, type, pro) values(?, ?, ?, ?)");
const QString kUpdate =
    QStringLiteral("update command_word set keyword=? , target=?, type=?, pro=? where id=?");
const QString kDelete = QStringLiteral("delete from command_word where id=%1");

// The migration reads the old file on a connection of its own, so that the default one
// stays on the current file.
const QString kOldConnection = QStringLiteral("zorvane_old_db");

// The file's user_version once the old folder's words are in it. Set in the transaction that
// writes them, so that no interruption can leave the words in without the mark.
constexpr int kMigratedVersion = 1;

// What SQLite says of a file it cannot use: SQLITE_CORRUPT, SQLITE_NOTADB, with or without
// an extended code. Anything else (a lock, a full disk, no memory) says nothing of the file.
bool isBrokenFile(const QSqlError& error)
{
    bool ok = false;
    const int primary = error.nativeErrorCode().toInt(&ok) & 0xff;
    return ok && (primary == 11 || primary == 26);
}

CommandWord readRow(const QSqlQuery& query)
{
    CommandWord word;
    word.id = query.value(QStringLiteral("id")).toInt();
    word.keyword = TextUtils::base64Decode(query.value(QStringLiteral("keyword")).toString());
    word.target = TextUtils::base64Decode(query.value(QStringLiteral("target")).toString());
    word.type = query.value(QStringLiteral("type")).toInt();
    word.pro = query.value(QStringLiteral("pro")).toString();
    return word;
}

bool readAll(QSqlDatabase db, QList<CommandWord>* words)
{
    QSqlQuery query(db);
    if (!query.exec(kSelectAll)) {
        qCWarning(lcDatabase) << "queryCommandWordList failed!" << query.lastError().text();
        return false;
    }
    while (query.next()) {
        words->append(readRow(query));
    }
    return true;
}

// The open default connection, or an invalid one after logging "db close".
bool openDatabase(QSqlDatabase* db)
{
    *db = QSqlDatabase::database(QLatin1String(QSqlDatabase::defaultConnection), false);
    if (!db->isOpen()) {
        qCWarning(lcDatabase) << "db close";
        return false;
    }
    return true;
}

bool writeWord(const QString& statement, const CommandWord& word, bool withId)
{
    QSqlDatabase db;
    if (!openDatabase(&db)) {
        return false;
    }
    QSqlQuery query(db);
    query.prepare(statement);
    query.addBindValue(TextUtils::base64Encode(word.keyword));
    query.addBindValue(TextUtils::base64Encode(word.target));
    query.addBindValue(word.type);
    query.addBindValue(word.pro);
    if (withId) {
        query.addBindValue(word.id);
    }
    if (!query.exec()) {
        qCWarning(lcDatabase) << "write failed:" << query.lastError().text();
        return false;
    }
    return !withId || query.numRowsAffected() > 0;
}

QString sibling(const QString& dataDir)
{
    QString old = dataDir;
    return old.replace(QStringLiteral("ZorvaneV2"), QStringLiteral("ZorvaneBT"));
}

}  // namespace

DBManager::DBManager() : DBManager(AppPaths::dataDir(), sibling(AppPaths::dataDir())) {}

DBManager::DBManager(const QString& dataDir, const QString& oldDataDir, QObject* parent) : QObject(parent)
{
    init(dataDir, oldDataDir);
}

DBManager::~DBManager()
{
    close();
    if (QSqlDatabase::contains(QLatin1String(QSqlDatabase::defaultConnection))) {
        QSqlDatabase::removeDatabase(QLatin1String(QSqlDatabase::defaultConnection));
    }
}

QString DBManager::fileName()
{
    return TextUtils::base64Encode(QStringLiteral("zorvane_db"));
}

void DBManager::init(const QString& dataDir, const QString& oldDataDir)
{
    QList<CommandWord> oldWords;
    const QString oldPath = oldDataDir + QLatin1Char('/') + fileName();
    const bool oldFileThere = oldDataDir != dataDir && QFile::exists(oldPath);
    if (oldFileThere) {
        {
            QSqlDatabase old = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), kOldConnection);
            old.setDatabaseName(oldPath);
            if (old.open()) {
                readAll(old, &oldWords);
                old.close();
            } else {
                qCWarning(lcDatabase) << "ZorvaneBT database open fialed!";
            }
        }
        QSqlDatabase::removeDatabase(kOldConnection);
    }

    QDir().mkpath(dataDir);
    mPath = dataDir + QLatin1Char('/') + fileName();
    QSqlDatabase db = QSqlDatabase::contains(QLatin1String(QSqlDatabase::defaultConnection))
                          ? QSqlDatabase::database(QLatin1String(QSqlDatabase::defaultConnection), false)
                          : QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"));
    db.setDatabaseName(mPath);
    checkFile();

    if (oldWords.isEmpty()) {
        return;
    }
    if (!open()) {
        qCWarning(lcDatabase) << "ZorvaneV2 database open fialed!";
        return;
    }
    if (migrate(oldWords)) {
        QFile::remove(oldPath);
    } else {
        qCWarning(lcDatabase) << "the" << oldWords.size() << "command words were not moved; kept" << oldPath;
    }
    close();
}

bool DBManager::migrate(const QList<CommandWord>& oldWords)
{
    QSqlDatabase db = QSqlDatabase::database(QLatin1String(QSqlDatabase::defaultConnection), false);
    QSqlQuery version(db);
    if (version.exec(QStringLiteral("pragma user_version")) && version.next() &&
        version.value(0).toInt() >= kMigratedVersion) {
        // Moved by a run that ended before it could remove the old file.
        qCInfo(lcDatabase) << "the old command words are here already";
        return true;
    }
    version.finish();
    // The migration writes into the current file: a copy of it comes first.
    const QString copy = FileAside::copyAside(mPath, QStringLiteral("before-migration"));
    if (!copy.isEmpty()) {
        qCInfo(lcDatabase) << "copied" << mPath << "to" << copy << "before the migration";
    }
    // All words or none: a run cut short leaves nothing that the next would add a second time.
    if (!db.transaction()) {
        qCWarning(lcDatabase) << "cannot begin the migration:" << db.lastError().text();
        return false;
    }
    bool written = true;
    for (const CommandWord& word : oldWords) {
        written = written && writeWord(kInsert, word, false);
    }
    QSqlQuery mark(db);
    if (written && mark.exec(QStringLiteral("pragma user_version = %1").arg(kMigratedVersion)) &&
        db.commit()) {
        return true;
    }
    qCWarning(lcDatabase) << "the migration failed:" << db.lastError().text();
    db.rollback();
    return false;
}

void DBManager::checkFile()
{
    if (!QFileInfo::exists(mPath)) {
        return;
    }
    QList<CommandWord> rescued;
    QString problem;
    {
        QSqlDatabase db = QSqlDatabase::database(QLatin1String(QSqlDatabase::defaultConnection), false);
        if (!db.open()) {
            return;  // not a question of the file's content; open() will say why
        }
        {
            QSqlQuery check(db);
            if (!check.exec(QStringLiteral("pragma quick_check"))) {
                // A check that could not run (the file locked, the disk failing) is no verdict.
                if (isBrokenFile(check.lastError())) {
                    problem = check.lastError().text();
                } else {
                    qCWarning(lcDatabase)
                        << "cannot check the command word file:" << check.lastError().text();
                }
            } else if (!check.next() || check.value(0).toString() != QLatin1String("ok")) {
                problem = check.value(0).toString();
            }
        }
        if (!problem.isEmpty()) {
            // Whatever can still be read of the words.
            readAll(db, &rescued);
        }
        db.close();
    }
    if (!problem.isEmpty()) {
        setAside(problem, rescued);
    }
}

bool DBManager::setAside(const QString& why, const QList<CommandWord>& rescued)
{
    if (mSettingAside) {
        return false;
    }
    close();
    const QString aside = FileAside::moveAside(mPath, QStringLiteral("corrupt"));
    if (aside.isEmpty()) {
        qCWarning(lcDatabase) << "the command word file" << mPath << "is broken (" << why
                              << ") and cannot be moved aside";
        return false;
    }
    qCWarning(lcDatabase) << "the command word file was broken (" << why << "); kept as" << aside
                          << "- a fresh one takes its place," << rescued.size() << "words carried over";
    mSettingAside = true;
    if (!rescued.isEmpty() && open()) {
        // Oldest first, so that the words keep their order.
        for (int i = rescued.size() - 1; i >= 0; --i) {
            addCommandWord(rescued.at(i));
        }
        close();
    }
    mSettingAside = false;
    return true;
}

bool DBManager::open()
{
    QSqlDatabase db = QSqlDatabase::database(QLatin1String(QSqlDatabase::defaultConnection), false);
    db.setDatabaseName(mPath);
    if (!db.isOpen() && !db.open()) {
        qCWarning(lcDatabase) << "open failed:" << db.lastError().text();
        return false;
    }
    QSqlQuery query(db);
    if (!query.exec(kCreateTable)) {
        const QSqlError error = query.lastError();
        qCWarning(lcDatabase) << "create table failed:" << error.text();
        query.finish();
        db.close();
        // A file that broke while the program ran: aside with it, and once more on a fresh one.
        if (!isBrokenFile(error) || !setAside(error.text(), {})) {
            return false;
        }
        mSettingAside = true;
        const bool fresh = open();
        mSettingAside = false;
        return fresh;
    }
    return true;
}

void DBManager::close()
{
    if (!QSqlDatabase::contains(QLatin1String(QSqlDatabase::defaultConnection))) {
        return;
    }
    QSqlDatabase db = QSqlDatabase::database(QLatin1String(QSqlDatabase::defaultConnection), false);
    if (db.isOpen()) {
        db.close();
    }
}

bool DBManager::addCommandWord(CommandWord word)
{
    if (!writeWord(kInsert, word, false)) {
        return false;
    }
    emit signalChangeCommand();
    return true;
}

bool DBManager::updateCommandWord(CommandWord word)
{
    if (!writeWord(kUpdate, word, true)) {
        return false;
    }
    emit signalChangeCommand();
    return true;
}

bool DBManager::deleteCommandWord(int id)
{
    QSqlDatabase db;
    if (!openDatabase(&db)) {
        return false;
    }
    QSqlQuery query(db);
    if (!query.exec(kDelete.arg(id))) {
        qCWarning(lcDatabase) << "deleteCommandWord failed:" << query.lastError().text();
        return false;
    }
    return true;
}

bool DBManager::queryCommandWordList(QList<CommandWord>* words)
{
    QSqlDatabase db;
    return openDatabase(&db) && readAll(db, words);
}

bool DBManager::queryCommandWord(int id, CommandWord* word)
{
    QSqlDatabase db;
    if (!openDatabase(&db)) {
        return false;
    }
    QSqlQuery query(db);
    if (!query.exec(kSelectOne.arg(id)) || !query.next()) {
        return false;
    }
    *word = readRow(query);
    return true;
}
