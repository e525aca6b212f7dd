#pragma once

#include "Database/CommandWord.h"

#include <QCoreApplication>
#include <QList>
#include <QString>

class DBManager;

// The user's command words: the list from the database, the word being edited, the chords
// captured in the two forms, and the checks a new or edited word must pass. Main thread only.
class CommandWords {
    Q_DECLARE_TR_FUNCTIONS(CommandWords)

public:
    // The type selector's rows that are stored as they are; past them comes the shortcut.
    static constexpr int kTypeShortcut = 3;
    static constexpr int kTypeApplication = 4;

    explicit CommandWords(DBManager* db) : mDb(db) {}

    QList<CommandWord> words() const { return mWords; }
    // Reads the list again.
    QList<CommandWord> load();
    // Copies the row's word into the word being edited; false for a row the list lacks.
    bool select(int row);
    CommandWord editing() const { return mEditing; }
    // The chord last captured in the add or edit form; empty when none was since the form
    // opened or changed type.
    void setShortcut(bool edit, const QList<int>& keys) { (edit ? mEditShortcut : mShortcut) = keys; }
    // Checks the form's word and stores it: the warning to show, or empty once stored.
    QString submit(bool edit, int typeIndex, QString keyword, const QString& target);
    // Deletes the words of the selected table cells (three a row); false when the database
    // could not be opened.
    bool remove(const QList<int>& cells);

private:
    DBManager* mDb;
    QList<CommandWord> mWords;
    CommandWord mEditing;
    QList<int> mShortcut;
    QList<int> mEditShortcut;
};
