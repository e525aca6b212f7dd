#pragma once

#include "Database/CommandWord.h"
#include "Http/BackendRecords.h"
#include "Utils/UserHabit.h"

#include <QList>
#include <QMap>
#include <QObject>
#include <QString>

#include <memory>

class AppLauncher;
class InputView;

// The voice session logic behind the floating panels. This part holds what becomes of a
// recognised voice command and of dictated text: the built-in commands and the user's command
// words, the backend's intents, and the rewrite of the text typed into the focused window.
class InputPresenter : public QObject {
    Q_OBJECT

public:
    static constexpr int kInitialServiceCategory = 18;

    explicit InputPresenter(InputView* view, QObject* parent = nullptr);
    ~InputPresenter() override;

    // Tests put a recording launcher in; not owned. Null goes back to the desktop's.
    void setLauncher(AppLauncher* launcher);

    // True when the text was a built-in command or one of the user's command words.
    bool handleCommand(QString text);
    bool checkLocalCommand(QString text);
    // Acts on the backend's reading of a voice command: opens a page or a program, or shows
    // a message.
    void handleIntent(SemanticParsingResult result);
    // Types word over the text of the segment already typed, with as few keys as possible.
    void sendOutput(QString word);
    // Takes back the differing tail of the typed text and returns the new tail for the caller
    // to insert.
    QString restoreContent(QString content);

    int serviceCategory() const { return mServiceCategory; }
    QString lastOutput() const { return mLastOutput; }
    QMap<int, UserHabit> userHabits() const { return mUserHabits; }

public slots:
    void onGetUserCommandWord(QList<CommandWord> words);

private:
    AppLauncher* launcher() const;
    // Backspaces over what differs from content; the length of the common prefix.
    int eraseDifferingTail(const QString& content);
    void replayChord(const QString& pro);

    InputView* mInputView;
    std::unique_ptr<AppLauncher> mDesktopLauncher;
    AppLauncher* mLauncher = nullptr;
    QList<CommandWord> mCommandWords;
    QMap<int, UserHabit> mUserHabits;
    int mServiceCategory = kInitialServiceCategory;
    QString mLastOutput;
};
