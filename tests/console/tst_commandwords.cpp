#include "ConsoleRig.h"
#include "Database/DBManager.h"
#include "FakeHidBackend.h"
#include "Utils/KeyTable.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

// The command words: the database with its migration, and the add, edit and delete flows of
// the console's pages.
class TestCommandWords : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void addRefusalsAndSuccess();
    void editAndDelete();
    void databaseThatCannotOpen();
    void fullOrFailingDiskKeepsTheWords();
    void migrationReversesAndRemovesTheOldFile();
    void emptyOldDatabaseStays();
    void migrationIsAllOrNothingAndOnce();
    void brokenFilesAreSetAsideWithTheirWords();
    void fileThatCannotBeCheckedStays();

private:
    void fillAddPage(RecordingMainWindowView& view, int type, const QString& command, const QString& content)
    {
        view.answers[QStringLiteral("getAddCommmandCurrentType")] = type;
        view.answers[QStringLiteral("getAddCommandCurrentCommand")] = command;
        view.answers[QStringLiteral("getAddCommandCurrentContent")] = content;
    }
    static CommandWord word(const QString& keyword, const QString& target)
    {
        CommandWord w;
        w.keyword = keyword;
        w.target = target;
        return w;
    }
    static QStringList keywords(DBManager& db)
    {
        QList<CommandWord> words;
        db.open();
        db.queryCommandWordList(&words);
        db.close();
        QStringList out;
        for (const CommandWord& w : words) {
            out << w.keyword;
        }
        return out;
    }
};

void TestCommandWords::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QCoreApplication::setApplicationName(QStringLiteral("ZorvaneV2"));
}

void TestCommandWords::addRefusalsAndSuccess()
{
    QTemporaryDir dir;
    DBManager db(dir.path(), dir.path() + QStringLiteral("/old"));
    FakeHidBackend backend;
    ConsoleRig rig(&backend);
    MainWindowPresenter* p = rig.start(nullptr, &db);
    QSignalSpy loaded(p, &MainWindowPresenter::signalLoadUserCommandWord);

    // A word too short is the console window's suite's; empty content is refused as well.
    fillAddPage(rig.view, 0, QStringLiteral("搜索"), QString());
    QCOMPARE(p->onAddCommandButtonSumbit(), -1);
    QCOMPARE(rig.view.callsOf(QStringLiteral("setAddCommandWarningText")).last(),
             QStringLiteral("setAddCommandWarningText(* 内容不能为空！！！)"));
    QCOMPARE(loaded.size(), 0);

    fillAddPage(rig.view, 0, QStringLiteral("打开,网页！"), QStringLiteral("https://example.org/?q=a&b=c"));
    QCOMPARE(p->onAddCommandButtonSumbit(), 0);
    p->setShortcutList({Qt::Key_Control, Qt::Key_A});
    fillAddPage(rig.view, 3, QStringLiteral("全选"), QStringLiteral("Contrl + A"));
    QCOMPARE(p->onAddCommandButtonSumbit(), 0);

    // Each add reloaded the list, newest first, into the table and the voice presenter.
    QCOMPARE(loaded.size(), 2);
    const QList<CommandWord> words = p->getCommandWords();
    QCOMPARE(words.size(), 2);
    QCOMPARE(words.at(0).keyword, QStringLiteral("全选"));
    QCOMPARE(words.at(0).type, 3);
    QCOMPARE(words.at(0).pro, KeyTable::buildShortcut({Qt::Key_Control, Qt::Key_A}));
    QCOMPARE(words.at(1).keyword, QStringLiteral("打开网页"));
    QCOMPARE(words.at(1).target, QStringLiteral("https://example.org/?q=a&b=c"));
    QCOMPARE(rig.view.callsOf(QStringLiteral("setQTableWidgetItemIcon")).last(),
             QStringLiteral("setQTableWidgetItemIcon(1,打开网页|https://example.org/?q=a&b=c)"));
}

void TestCommandWords::editAndDelete()
{
    QTemporaryDir dir;
    DBManager db(dir.path(), dir.path() + QStringLiteral("/old"));
    CommandWord selectAll = word(QStringLiteral("全选"), QStringLiteral("Ctrl + A"));
    selectAll.type = 3;
    selectAll.pro = KeyTable::buildShortcut({Qt::Key_Control, Qt::Key_A});
    db.open();
    db.addCommandWord(word(QStringLiteral("第一"), QStringLiteral("/tmp/a")));
    db.addCommandWord(selectAll);
    db.addCommandWord(word(QStringLiteral("第三"), QStringLiteral("/tmp/c")));
    db.close();
    FakeHidBackend backend;
    ConsoleRig rig(&backend);
    MainWindowPresenter* p = rig.start(nullptr, &db);
    p->loadUserCommand();
    QCOMPARE(rig.view.callsOf(QStringLiteral("setCustomTableRowCount")).last(),
             QStringLiteral("setCustomTableRowCount(3)"));

    // A chord captured on the add page is no part of an edit, and an edit of the spoken word
    // alone keeps the word's own chord.
    QVERIFY(!p->getCurrentEditCommandId(3));
    p->setShortcutList({Qt::Key_Control, Qt::Key_C});
    QVERIFY(p->getCurrentEditCommandId(1));
    QCOMPARE(p->currentEditCommand().keyword, QStringLiteral("全选"));
    rig.view.answers[QStringLiteral("getEditCommmandCurrentType")] = 3;
    rig.view.answers[QStringLiteral("getEditCommandCurrentCommand")] = QStringLiteral("选中全部");
    rig.view.answers[QStringLiteral("getEditCommandCurrentContent")] = QStringLiteral("Ctrl + A");
    QCOMPARE(p->onEditCommandButtonSumbit(), 0);
    QCOMPARE(p->getCommandWords().at(1).keyword, QStringLiteral("选中全部"));
    QCOMPARE(p->getCommandWords().at(1).pro, selectAll.pro);
    // A chord captured in the edit form replaces it; a word made a shortcut needs one.
    QVERIFY(p->getCurrentEditCommandId(1));
    p->setEditShortcutList({Qt::Key_Control, Qt::Key_C});
    rig.view.answers[QStringLiteral("getEditCommandCurrentCommand")] = QStringLiteral("复制");
    QCOMPARE(p->onEditCommandButtonSumbit(), 0);
    QCOMPARE(p->getCommandWords().at(1).pro, KeyTable::buildShortcut({Qt::Key_Control, Qt::Key_C}));
    QVERIFY(p->getCurrentEditCommandId(0));
    QCOMPARE(p->onEditCommandButtonSumbit(), -1);
    QCOMPARE(rig.view.callsOf(QStringLiteral("setEditCommandWarningText")).last(),
             QStringLiteral("setEditCommandWarningText(* 内容不能为空！！！)"));
    rig.view.answers[QStringLiteral("getEditCommandCurrentCommand")] = QStringLiteral("复");
    QCOMPARE(p->onEditCommandButtonSumbit(), -1);
    QCOMPARE(rig.view.callsOf(QStringLiteral("setEditCommandWarningText")).size(), 2);

    // Two selected rows give six cells: the walk takes the first cell of each row, and the
    // table shrinks to the words left.
    rig.view.answers[QStringLiteral("selectedCustomTableItems")] =
        QVariant::fromValue(QList<int>{0, 0, 0, 2, 2, 2});
    rig.view.answers[QStringLiteral("getCustomTableRowCounts")] = 3;
    rig.view.answers[QStringLiteral("execDelPopupView")] = 0;
    p->onButtonDeleteCommand();
    QCOMPARE(keywords(db).size(), 3);
    rig.view.answers[QStringLiteral("execDelPopupView")] = 1;
    p->onButtonDeleteCommand();
    QCOMPARE(keywords(db), QStringList{QStringLiteral("复制")});
    QCOMPARE(rig.view.callsOf(QStringLiteral("setCustomTableRowCount")).last(),
             QStringLiteral("setCustomTableRowCount(1)"));

    // Deleting the last word tells the voice presenter of the empty list.
    QSignalSpy loaded(p, &MainWindowPresenter::signalLoadUserCommandWord);
    rig.view.answers[QStringLiteral("selectedCustomTableItems")] = QVariant::fromValue(QList<int>{0, 0, 0});
    p->onButtonDeleteCommand();
    QCOMPARE(loaded.size(), 1);
    QVERIFY(loaded.at(0).at(0).value<QList<CommandWord>>().isEmpty());
    QCOMPARE(rig.view.callsOf(QStringLiteral("setCustomTableRowCount")).last(),
             QStringLiteral("setCustomTableRowCount(0)"));
}

void TestCommandWords::databaseThatCannotOpen()
{
    QTemporaryDir dir;
    // A file where the data folder should be: the database cannot be made.
    const QString blocked = dir.path() + QStringLiteral("/blocked");
    QFile file(blocked);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();
    DBManager db(blocked, dir.path() + QStringLiteral("/old"));
    QVERIFY(!db.open());
    QVERIFY(!db.addCommandWord(word(QStringLiteral("测试"), QStringLiteral("x"))));
    FakeHidBackend backend;
    ConsoleRig rig(&backend);
    MainWindowPresenter* p = rig.start(nullptr, &db);
    fillAddPage(rig.view, 2, QStringLiteral("下载"), QStringLiteral("/tmp"));
    QCOMPARE(p->onAddCommandButtonSumbit(), -1);
    QCOMPARE(rig.view.callsOf(QStringLiteral("setAddCommandWarningText")).last(),
             QStringLiteral("setAddCommandWarningText(* 打开数据失败！！！)"));
}

namespace {

// An older version's database as it lies on disk, made without DBManager: its file name is
// the Base64 of "zorvane_db", keyword and target are Base64 text, pro and type are plain.
bool makeOldDatabase(const QString& dir, const QList<QVariantList>& rows)
{
    bool ok = QDir().mkpath(dir);
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("handmade"));
        db.setDatabaseName(dir + QStringLiteral("/em9ydmFuZV9kYg=="));
        ok = ok && db.open();
        QSqlQuery query(db);
        ok = ok && query.exec(QStringLiteral(
                       "create table if not exists command_word(id integer primary key autoincrement, "
                       "keyword varchar(200), target varchar(200), type int, pro varchar(200))"));
        for (const QVariantList& row : rows) {
            ok = ok && query.prepare(QStringLiteral(
                           "insert into command_word(keyword, target, type, pro) values(?, ?, ?, ?)"));
            for (const QVariant& value : row) {
                query.addBindValue(value);
            }
            ok = ok && query.exec();
        }
        db.close();
    }
    QSqlDatabase::removeDatabase(QStringLiteral("handmade"));
    return ok;
}

}  // namespace

// The disk under the words fills, then fails to sync, under the console (the calls fail as the
// kernel would fail them): the new word is refused with the user told and the file stays as it
// was, byte for byte; once the disk is well the word goes in.
void TestCommandWords::fullOrFailingDiskKeepsTheWords()
{
    QTemporaryDir dir;
    const QString folder = dir.filePath(QStringLiteral("words"));
    QVERIFY(QDir().mkpath(folder));
    const QString control = dir.filePath(QStringLiteral("faults"));
    qputenv("ZORVANE_FAULTS", QFile::encodeName(control));
    auto faults = [&](const QByteArray& rules) {
        QFile file(control);
        return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(rules) == rules.size();
    };
    auto fileBytes = [&] {
        QFile file(folder + QLatin1Char('/') + DBManager::fileName());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    DBManager db(folder, dir.filePath(QStringLiteral("old")));
    FakeHidBackend backend;
    ConsoleRig rig(&backend);
    MainWindowPresenter* p = rig.start(nullptr, &db);
    fillAddPage(rig.view, 0, QStringLiteral("打开网页"), QStringLiteral("https://example.org/"));
    QCOMPARE(p->onAddCommandButtonSumbit(), 0);
    const QByteArray before = fileBytes();
    QVERIFY(!before.isEmpty());

    const QByteArray full = "ENOSPC write " + QFile::encodeName(folder);
    const QByteArray failing = "EIO sync " + QFile::encodeName(folder);
    for (const QByteArray& rules : {full, failing}) {
        QVERIFY(faults(rules));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("write failed")));
        fillAddPage(rig.view, 0, QStringLiteral("搜索一下"), QStringLiteral("https://example.org/s"));
        QCOMPARE(p->onAddCommandButtonSumbit(), -1);
        QCOMPARE(rig.view.callsOf(QStringLiteral("setAddCommandWarningText")).last(),
                 QStringLiteral("setAddCommandWarningText(* 添加数据失败！！！)"));
        QCOMPARE(keywords(db), QStringList{QStringLiteral("打开网页")});
        QCOMPARE(fileBytes(), before);
    }
    QVERIFY(faults(QByteArray()));
    QCOMPARE(p->onAddCommandButtonSumbit(), 0);
    QCOMPARE(keywords(db), (QStringList{QStringLiteral("搜索一下"), QStringLiteral("打开网页")}));
    qunsetenv("ZORVANE_FAULTS");
}

void TestCommandWords::migrationReversesAndRemovesTheOldFile()
{
    QTemporaryDir dir;
    const QString oldDir = dir.path() + QStringLiteral("/ZorvaneBT");
    const QString newDir = dir.path() + QStringLiteral("/ZorvaneV2");
    // A file here already: the migration writes into it only after a copy.
    QVERIFY(makeOldDatabase(newDir, {}));
    QVERIFY(makeOldDatabase(
        oldDir,
        {{QStringLiteral("5YWI"), QStringLiteral("aHR0cHM6Ly9leGFtcGxlLm9yZy8/cT0x"), 0, QString()},
         {QStringLiteral("5ZCO"), QStringLiteral("Yg=="), 2, QString()},
         {QStringLiteral("5YWo6YCJ"), QStringLiteral("Q29udHJsICsgQQ=="), 3, QStringLiteral("55,0")}}));

    // Read newest first and added in that order: the order turns around, with new ids.
    DBManager db(newDir, oldDir);
    QList<CommandWord> words;
    QVERIFY(db.open());
    QVERIFY(db.queryCommandWordList(&words));
    db.close();
    QCOMPARE(words.size(), 3);
    QCOMPARE(words.at(0).keyword, QStringLiteral("先"));
    QCOMPARE(words.at(0).target, QStringLiteral("https://example.org/?q=1"));
    QCOMPARE(words.at(0).type, 0);
    QCOMPARE(words.at(1).keyword, QStringLiteral("后"));
    QCOMPARE(words.at(1).type, 2);
    QCOMPARE(words.at(2).keyword, QStringLiteral("全选"));
    QCOMPARE(words.at(2).target, QStringLiteral("Contrl + A"));
    QCOMPARE(words.at(2).type, 3);
    QCOMPARE(words.at(2).pro, QStringLiteral("55,0"));
    QCOMPARE(words.at(0).id, 3);
    QVERIFY(!QFile::exists(oldDir + QStringLiteral("/em9ydmFuZV9kYg==")));
    QVERIFY(QFile::exists(newDir + QStringLiteral("/em9ydmFuZV9kYg==")));
    QCOMPARE(QDir(newDir).entryList({QStringLiteral("em9ydmFuZV9kYg==.before-migration-*")}).size(), 1);
}

void TestCommandWords::emptyOldDatabaseStays()
{
    QTemporaryDir dir;
    const QString oldDir = dir.path() + QStringLiteral("/ZorvaneBT");
    QVERIFY(makeOldDatabase(oldDir, {}));
    DBManager db(dir.path() + QStringLiteral("/ZorvaneV2"), oldDir);
    QVERIFY(keywords(db).isEmpty());
    QVERIFY(QFile::exists(oldDir + QStringLiteral("/em9ydmFuZV9kYg==")));
}

void TestCommandWords::migrationIsAllOrNothingAndOnce()
{
    QTemporaryDir dir;
    const QString oldDir = dir.path() + QStringLiteral("/ZorvaneBT");
    const QString newDir = dir.path() + QStringLiteral("/ZorvaneV2");
    const QString oldFile = oldDir + QStringLiteral("/em9ydmFuZV9kYg==");
    const QList<QVariantList> rows = {{QStringLiteral("5YWI"), QStringLiteral("Yg=="), 2, QString()},
                                      {QStringLiteral("5ZCO"), QStringLiteral("Yg=="), 2, QString()},
                                      {QStringLiteral("5YWo6YCJ"), QStringLiteral("Yg=="), 2, QString()}};
    QVERIFY(makeOldDatabase(oldDir, rows));
    // The disk fills up at the third word: none of them stays, and the old file neither goes.
    QVERIFY(makeOldDatabase(newDir, {}));
    auto onNewFile = [&](const QString& statement) {
        bool ok = false;
        {
            QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("side"));
            db.setDatabaseName(newDir + QStringLiteral("/em9ydmFuZV9kYg=="));
            ok = db.open() && QSqlQuery(db).exec(statement);
            db.close();
        }
        QSqlDatabase::removeDatabase(QStringLiteral("side"));
        return ok;
    };
    QVERIFY(
        onNewFile(QStringLiteral("create trigger full before insert on command_word when "
                                 "(select count(*) from command_word) >= 2 begin "
                                 "select raise(abort, 'database or disk is full'); end")));
    {
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("disk is full")));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("migration failed")));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("not moved")));
        DBManager db(newDir, oldDir);
        QVERIFY(keywords(db).isEmpty());
    }
    QVERIFY(QFile::exists(oldFile));
    // Room again: each word comes over once. A run that ended before it removed the old file
    // (the file back in place here) adds nothing at the next start.
    QVERIFY(onNewFile(QStringLiteral("drop trigger full")));
    const QStringList moved{QStringLiteral("先"), QStringLiteral("后"), QStringLiteral("全选")};
    for (int run = 0; run < 2; ++run) {
        DBManager db(newDir, oldDir);
        QCOMPARE(keywords(db), moved);
        QVERIFY(!QFile::exists(oldFile));
        QVERIFY(makeOldDatabase(oldDir, rows));
    }
}

void TestCommandWords::fileThatCannotBeCheckedStays()
{
    // Another program holds the file locked: the check cannot run, which says nothing of it.
    QTemporaryDir dir;
    {
        DBManager db(dir.path(), dir.path() + QStringLiteral("/old"));
        QVERIFY(db.open());
        QVERIFY(db.addCommandWord(word(QStringLiteral("保留"), QStringLiteral("/k"))));
        db.close();
    }
    {
        QSqlDatabase other = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("other"));
        other.setDatabaseName(dir.filePath(DBManager::fileName()));
        QVERIFY(other.open());
        QVERIFY(QSqlQuery(other).exec(QStringLiteral("begin exclusive")));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("cannot check .*locked")));
        DBManager db(dir.path(), dir.path() + QStringLiteral("/old"));
        other.close();
        QCOMPARE(keywords(db), QStringList{QStringLiteral("保留")});
    }
    QSqlDatabase::removeDatabase(QStringLiteral("other"));
    QVERIFY(QDir(dir.path()).entryList({DBManager::fileName() + QStringLiteral(".corrupt-*")}).isEmpty());
}

void TestCommandWords::brokenFilesAreSetAsideWithTheirWords()
{
    QTemporaryDir dir;
    const QString path = dir.filePath(DBManager::fileName());
    auto overwrite = [](const QString& file, qint64 at, const QByteArray& bytes) {
        QFile f(file);
        return f.open(QIODevice::ReadWrite) && f.seek(at) && f.write(bytes) == bytes.size();
    };
    auto aside = [&dir](const QString& pattern) {
        return QDir(dir.path()).entryList({pattern}, QDir::Files);
    };

    // No database at all: it goes aside, and a fresh file works.
    const QByteArray garbage = QByteArray("not a database ").repeated(300);
    QVERIFY(overwrite(path, 0, garbage));
    {
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("broken .* kept as .*0 words")));
        DBManager db(dir.path(), dir.path() + QStringLiteral("/old"));
        QVERIFY(db.open());
        QVERIFY(db.addCommandWord(word(QStringLiteral("第一"), QStringLiteral("/a"))));
        QVERIFY(db.addCommandWord(word(QStringLiteral("第二"), QStringLiteral("/b"))));
        db.close();
        QCOMPARE(keywords(db), (QStringList{QStringLiteral("第二"), QStringLiteral("第一")}));
    }
    const QStringList copies = aside(DBManager::fileName() + QStringLiteral(".corrupt-*"));
    QCOMPARE(copies.size(), 1);
    QFile copy(dir.filePath(copies.first()));
    QVERIFY(copy.open(QIODevice::ReadOnly));
    QCOMPARE(copy.readAll(), garbage);

    // A file with the words intact and another table's page broken: the words come along.
    {
        QSqlDatabase extra = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("extra"));
        extra.setDatabaseName(path);
        QVERIFY(extra.open());
        QSqlQuery query(extra);
        QVERIFY(query.exec(QStringLiteral("create table filler(x blob)")));
        for (int i = 0; i < 50; ++i) {
            QVERIFY(query.exec(QStringLiteral("insert into filler values(randomblob(1000))")));
        }
        QVERIFY(query.exec(QStringLiteral("select rootpage from sqlite_master where name='filler'")));
        QVERIFY(query.next());
        const int page = query.value(0).toInt();
        query.finish();
        extra.close();
        QVERIFY(overwrite(path, (page - 1) * 4096, QByteArray(4096, '\xff')));
    }
    QSqlDatabase::removeDatabase(QStringLiteral("extra"));
    {
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("broken .* kept as .*2 words")));
        DBManager db(dir.path(), dir.path() + QStringLiteral("/old"));
        QCOMPARE(keywords(db), (QStringList{QStringLiteral("第二"), QStringLiteral("第一")}));

        // A file that breaks while the program runs goes aside at the next opening.
        QVERIFY(overwrite(path, 0, garbage));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("create table failed")));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("broken .* kept as")));
        QVERIFY(db.open());
        QVERIFY(db.addCommandWord(word(QStringLiteral("第三"), QStringLiteral("/c"))));
        db.close();
    }
    QCOMPARE(aside(DBManager::fileName() + QStringLiteral(".corrupt-*")).size(), 3);
}

QTEST_GUILESS_MAIN(TestCommandWords)
#include "tst_commandwords.moc"
