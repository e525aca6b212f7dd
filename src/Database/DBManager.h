#pragma once

#include "Database/CommandWord.h"
#include "Utils/Singleton.h"

#include <QList>
#include <QObject>
#include <QString>

// The user's command words in a small SQLite file of the data folder, named by the Base64 of
// "zorvane_db". Keyword and target are stored as Base64. Open only for one operation at a
// time: every user brackets its work in open() and close(). Main thread only.
// The words are not lost to a broken file: one SQLite cannot read is moved aside (the words it
// still gives are carried into the fresh file), and the file is copied aside before a migration
// writes into it. The migration happens once: the file says whether the old words are in.
class DBManager : public QObject, public Singleton<DBManager> {
    Q_OBJECT

public:
    // Tests give the data folder and the older sibling whose words move over.
    DBManager(const QString& dataDir, const QString& oldDataDir, QObject* parent = nullptr);
    ~DBManager() override;

    static QString fileName();

    bool open();
    void close();
    bool addCommandWord(CommandWord word);
    bool updateCommandWord(CommandWord word);
    bool deleteCommandWord(int id);
    bool queryCommandWordList(QList<CommandWord>* words);
    bool queryCommandWord(int id, CommandWord* word);

signals:
    void signalChangeCommand();

private:
    friend class Singleton<DBManager>;
    DBManager();

    void init(const QString& dataDir, const QString& oldDataDir);
    // Into the open file, in one transaction that also marks the file; true once the words are
    // in, also when an earlier run put them there.
    bool migrate(const QList<CommandWord>& oldWords);
    // At start: a file that fails SQLite's quick check is set aside.
    void checkFile();
    // Moves the file aside; the words given are written into the fresh file.
    bool setAside(const QString& why, const QList<CommandWord>& rescued);

    QString mPath;
    bool mSettingAside = false;  // a fresh file that breaks too is not set aside again
};
