// The command-word pages of the console: the add, edit and delete flows as the view shows
// them, and the browse button's dialogs. The words themselves are CommandWords'.
#include "Platform/ApplicationCatalog.h"
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

// Where the file dialogs open.
QString desktopFolder()
{
    const QString desktop = QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
    return desktop.isEmpty() || !QDir(desktop).exists() ? QDir::homePath() : desktop;
}

}  // namespace

int MainWindowPresenter::commandSubmit(bool edit)
{
    MainWindowView* v = mView;
    const int type = edit ? v->getEditCommmandCurrentType() : v->getAddCommmandCurrentType();
    const QString keyword = edit ? v->getEditCommandCurrentCommand() : v->getAddCommandCurrentCommand();
    const QString target = edit ? v->getEditCommandCurrentContent() : v->getAddCommandCurrentContent();
    const QString warning = mCommands.submit(edit, type, keyword, target);
    if (warning.isEmpty()) {
        return 0;
    }
    if (edit) {
        mView->setEditCommandWarningText(warning);
    } else {
        mView->setAddCommandWarningText(warning);
    }
    mTimers[TimerWarningHint]->start();
    return -1;
}

void MainWindowPresenter::onButtonDeleteCommand()
{
    const QList<int> cells = mView->selectedCustomTableItems();
    if (cells.isEmpty() || mView->execDelPopupView() != 1 || !mCommands.remove(cells)) {
        return;
    }
    loadUserCommand();
}

void MainWindowPresenter::loadUserCommand()
{
    mView->clearCustomTableContents();
    const QList<CommandWord> words = mCommands.load();
    // Also an empty list: the voice presenter must forget a last word that was deleted.
    emit signalLoadUserCommandWord(words);
    // Exactly the words: a deleted word leaves no blank row to select.
    mView->setCustomTableRowCount(words.size());
    for (int row = 0; row < words.size(); ++row) {
        mView->setQTableWidgetItemIcon(row, words.at(row));
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
        setPickedContent(mPicker->pickFile(tr("选择文件"), desktopFolder(), QStringLiteral("*.*")));
    }
}

void MainWindowPresenter::showDesktopFolder()
{
    if (mPicker != nullptr) {
        setPickedContent(mPicker->pickFolder(tr("选择文件夹"), desktopFolder()));
    }
}

void MainWindowPresenter::showApplicationsFile()
{
    if (mPicker != nullptr) {
        setPickedContent(mPicker->pickApplication(ApplicationCatalog::applications()));
    }
}
