// The user's command words: the add, edit and delete flows of the console's pages, and the
// list that goes to the voice presenter.
#include "Database/DBManager.h"
#include "Utils/KeyTable.h"
#include "Utils/TextUtils.h"
#include "WidgetPresenter/MainWindowPresenter.h"
#include "WidgetPresenter/MainWindowView.h"
#include "WidgetPresenter/PathPicker.h"

#include <QDir>
#include <QStandardPaths>
#include <QTimer>

namespace {

// Page numbers of the console's stacked pages.
constexpr int kAddPage = 4;
constexpr int kEditPage = 5;
// The type selector's rows that are stored as they are; past them comes the shortcut.
constexpr int kTypeApplication = 4;
constexpr int kTypeShortcut = 3;

// Where the file dialogs open.
QString desktopFolder()
{
    const QString desktop = QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
    return desktop.isEmpty() || !QDir(desktop).exists() ? QDir::homePath() : desktop;
}

// The marks recognition may end a word with; the stored keyword has none.
const QString kMarks[] = {QStringLiteral("。"), QStringLiteral("."), QStringLiteral("？"),
                          QStringLiteral("?"),  QStringLiteral(","), QStringLiteral("，"),
                          QStringLiteral("!"),  QStringLiteral("！")};

}  // namespace

void MainWindowPresenter::showCommandWarning(bool edit, const QString& text)
{
    if (edit) {
        mView->setEditCommandWarningText(text);
    } else {
        mView->setAddCommandWarningText(text);
    }
    mTimers[TimerWarningHint]->start();
}

int MainWindowPresenter::commandSubmit(bool edit)
{
    const int typeIndex = edit ? mView->getEditCommmandCurrentType() : mView->getAddCommmandCurrentType();
    QString keyword = edit ? mView->getEditCommandCurrentCommand() : mView->getAddCommandCurrentCommand();
    for (const QString& mark : kMarks) {
        keyword.remove(mark);
    }
    if (keyword.size() < 2) {
        showCommandWarning(edit, QStringLiteral("* 命令词长度必须要大于一个字！！！"));
        return -1;
    }
    const QString target =
        edit ? mView->getEditCommandCurrentContent() : mView->getAddCommandCurrentContent();
    if (TextUtils::isEmpty(target)) {
        showCommandWarning(edit, QStringLiteral("* 内容不能为空！！！"));
        return -1;
    }
    CommandWord word = edit ? mEditCommand : CommandWord();
    word.keyword = keyword;
    word.target = target;
    if ((typeIndex >= 0 && typeIndex <= 2) || typeIndex == kTypeApplication) {
        // An application keeps the path of its desktop entry in target.
        word.type = typeIndex;
        word.pro.clear();
    } else {
        // Only a chord captured in this form replaces the word's own: a word whose spoken part
        // alone was edited keeps its keys.
        const QList<int>& captured = edit ? mEditShortcutList : mShortcutList;
        if (!captured.isEmpty()) {
            word.pro = KeyTable::buildShortcut(captured);
        } else if (word.type != kTypeShortcut || word.pro.isEmpty()) {
            showCommandWarning(edit, QStringLiteral("* 内容不能为空！！！"));
            return -1;
        }
        word.type = kTypeShortcut;
    }
    if (!mDBManager->open()) {
        showCommandWarning(
            edit, edit ? QStringLiteral("* 编辑失败1！！！") : QStringLiteral("* 打开数据失败！！！"));
        return -1;
    }
    const bool written = edit ? mDBManager->updateCommandWord(word) : mDBManager->addCommandWord(word);
    if (!written) {
        showCommandWarning(
            edit, edit ? QStringLiteral("* 编辑失败2！！！") : QStringLiteral("* 添加数据失败！！！"));
        mDBManager->close();
        return -1;
    }
    mDBManager->close();
    (edit ? mEditShortcutList : mShortcutList).clear();
    return 0;
}

int MainWindowPresenter::onAddCommandButtonSumbit()
{
    return commandSubmit(false);
}

int MainWindowPresenter::onEditCommandButtonSumbit()
{
    return commandSubmit(true);
}

bool MainWindowPresenter::getCurrentEditCommandId(int row)
{
    if (row < 0 || row >= mCommandWords.size()) {
        return false;
    }
    mEditCommand = mCommandWords.at(row);
    mEditShortcutList.clear();
    return true;
}

void MainWindowPresenter::onButtonDeleteCommand()
{
    const QList<int> rows = mView->selectedCustomTableItems();
    if (rows.isEmpty() || mView->execDelPopupView() != 1 || !mDBManager->open()) {
        return;
    }
    // A table row gives three selected cells.
    for (int i = 0; i < rows.size(); i += 3) {
        const int row = rows.at(i);
        if (row >= 0 && row < mCommandWords.size()) {
            mDBManager->deleteCommandWord(mCommandWords.at(row).id);
        }
    }
    mDBManager->close();
    loadUserCommand();
}

void MainWindowPresenter::loadUserCommand()
{
    mCommandWords.clear();
    mView->clearCustomTableContents();
    if (mDBManager->open()) {
        mDBManager->queryCommandWordList(&mCommandWords);
        mDBManager->close();
    }
    // Also an empty list: the voice presenter must forget a last word that was deleted.
    emit signalLoadUserCommandWord(mCommandWords);
    // Exactly the words: a deleted word leaves no blank row to select.
    mView->setCustomTableRowCount(mCommandWords.size());
    for (int row = 0; row < mCommandWords.size(); ++row) {
        mView->setQTableWidgetItemIcon(row, mCommandWords.at(row));
    }
}

void MainWindowPresenter::setPickedContent(const QString& path)
{
    if (path.isEmpty()) {
        return;
    }
    // The dialog was modal: the page is still the one that opened it.
    const int page = mView->getCurrentStackedWidgetIndex();
    if (page == kAddPage) {
        mView->setAddCommandContent(path);
    } else if (page == kEditPage) {
        mView->setEditCommandContent(path);
    }
}

void MainWindowPresenter::showDesktopFile()
{
    if (mPicker != nullptr) {
        setPickedContent(
            mPicker->pickFile(QStringLiteral("选择文件"), desktopFolder(), QStringLiteral("*.*")));
    }
}

void MainWindowPresenter::showDesktopFolder()
{
    if (mPicker != nullptr) {
        setPickedContent(mPicker->pickFolder(QStringLiteral("选择文件夹"), desktopFolder()));
    }
}

void MainWindowPresenter::showApplicationsFile()
{
    if (mPicker != nullptr) {
        setPickedContent(mPicker->pickApplication());
    }
}
