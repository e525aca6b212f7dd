// The console's command word pages: the table, and the add and edit forms with their samples.
#include "Utils/AppConfig.h"
#include "Widget/Console/MainWindow.h"
#include "Widget/LineEdit.h"

#include <QComboBox>
#include <QDir>
#include <QIcon>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStackedWidget>
#include <QStandardPaths>
#include <QTableWidget>
#include <QTimer>

namespace {

constexpr int kCommandWarningMs = 2000;

QString standardFolder(QStandardPaths::StandardLocation location)
{
    const QString folder = QStandardPaths::writableLocation(location);
    return folder.isEmpty() ? QDir::homePath() : folder;
}

void forgetShortcut(MainWindowPresenter* presenter, bool edit)
{
    if (edit) {
        presenter->setEditShortcutList({});
    } else {
        presenter->setShortcutList({});
    }
}

}  // namespace

// ---- the table

void MainWindow::clearCustomTableContents()
{
    mUi.tableCustom->clearContents();
}

void MainWindow::setCustomTableRowCount(int count)
{
    mUi.tableCustom->setRowCount(count);
}

void MainWindow::scrollCustomTableToBottom()
{
    mUi.tableCustom->scrollToBottom();
}

QList<int> MainWindow::selectedCustomTableItems()
{
    // Row by row, three cells each, as a selection of whole rows gives them.
    QList<int> rows;
    const QModelIndexList selected = mUi.tableCustom->selectionModel()->selectedRows();
    for (const QModelIndex& index : selected) {
        rows << index.row() << index.row() << index.row();
    }
    std::sort(rows.begin(), rows.end());
    return rows;
}

int MainWindow::getCurrentCustomTableIndex()
{
    return mUi.tableCustom->currentRow();
}

int MainWindow::getCustomTableRowCounts()
{
    return mUi.tableCustom->rowCount();
}

void MainWindow::setQTableWidgetItemIcon(int row, CommandWord word)
{
    auto* keyword = new QTableWidgetItem(Ui_MainWindow::commandTypeIcon(word.type), word.keyword);
    auto* target = new QTableWidgetItem(word.target);
    target->setToolTip(word.target);
    mUi.tableCustom->setItem(row, 0, new QTableWidgetItem(QString::number(row + 1)));
    mUi.tableCustom->item(row, 0)->setTextAlignment(Qt::AlignCenter);
    mUi.tableCustom->item(row, 0)->setForeground(QColor(0x8a, 0x91, 0x9e));
    mUi.tableCustom->setItem(row, 1, keyword);
    mUi.tableCustom->setItem(row, 2, target);
}

void MainWindow::editSelectedCommand()
{
    const int row = mUi.tableCustom->currentRow();
    const bool selected = row >= 0 && mUi.tableCustom->selectionModel()->isRowSelected(row, QModelIndex());
    if (!selected || !mPresenter->getCurrentEditCommandId(row)) {
        mUi.labelCommandWarning->setText(tr("请选择要编辑的命令词！"));
        QTimer::singleShot(kCommandWarningMs, mUi.labelCommandWarning, &QLabel::clear);
        return;
    }
    const CommandWord word = mPresenter->currentEditCommand();
    Ui_MainWindow::CommandForm& form = mUi.editForm;
    // The type first: a change of type clears the boxes.
    form.type->setCurrentIndex(qBound(0, word.type, form.type->count() - 1));
    form.command->setText(word.keyword);
    form.content->setText(word.target);
    form.warning->clear();
    mUi.stackedWidget->setCurrentIndex(Ui_MainWindow::EditCommandPage);
    form.command->setFocus();
}

// ---- the forms

void MainWindow::onAddCommandChangeType(int index)
{
    changeCommandType(mUi.addForm, index);
}

void MainWindow::onEditCommandChangeType(int index)
{
    changeCommandType(mUi.editForm, index);
}

void MainWindow::changeCommandType(Ui_MainWindow::CommandForm& form, int index)
{
    form.command->clear();
    form.content->clear();
    // The chord went with the box's text.
    forgetShortcut(mPresenter, &form == &mUi.editForm);
    form.command->setFocus();
    form.content->setShortcutMode(index == 3);
    form.browse->setVisible(index == 1 || index == 2 || index == 4);
    QString hint;
    QString command;
    QString content;
    switch (index) {
        case 0: {
            hint = tr("Tips:请添加(http://)或(https://)");
            command = tr("我想搜索");
            const QUrl search = AppConfig::getInstance()->searchUrl();
            content = search.isValid() ? search.adjusted(QUrl::RemovePath | QUrl::RemoveQuery).toString()
                                       : QStringLiteral("https://");
            break;
        }
        case 1:
            command = tr("待办事项");
            content = standardFolder(QStandardPaths::DocumentsLocation) + tr("/待办事项.docx");
            break;
        case 2:
            command = tr("下载");
            content = standardFolder(QStandardPaths::DownloadLocation);
            break;
        case 3:
            hint = tr("Tips:若快捷键不能设置，请先退出相关程序，再进行设置！");
            command = tr("全选");
            content = QStringLiteral("Contrl + A");
            break;
        default: {
            const ApplicationCatalog::Sample sample = MainWindowPresenter::applicationExample();
            command = sample.word;
            content = sample.path.isEmpty() ? tr("点击“浏览”选择已安装的应用程序") : sample.path;
            break;
        }
    }
    form.hint->setText(hint);
    form.hint->setVisible(!hint.isEmpty());
    form.command->setPlaceholderText(command);
    form.content->setPlaceholderText(content);
}

void MainWindow::clearCommandForm(Ui_MainWindow::CommandForm& form)
{
    form.type->setCurrentIndex(0);
    form.command->clear();
    form.content->clear();
    form.warning->clear();
    forgetShortcut(mPresenter, &form == &mUi.editForm);
}

void MainWindow::submitCommand(bool edit)
{
    const int result =
        edit ? mPresenter->onEditCommandButtonSumbit() : mPresenter->onAddCommandButtonSumbit();
    if (result != 0) {
        return;  // the warning stands on the page
    }
    clearCommandForm(edit ? mUi.editForm : mUi.addForm);
    recvMenuSiganl(Ui_MainWindow::CommandPage);
}

void MainWindow::browse(int type)
{
    switch (type) {
        case 1:
            mPresenter->showDesktopFile();
            break;
        case 2:
            mPresenter->showDesktopFolder();
            break;
        case 4:
            mPresenter->showApplicationsFile();
            break;
        default:
            break;
    }
}

void MainWindow::setAddCommandContent(QString text)
{
    mUi.addForm.content->setText(text);
}

void MainWindow::setEditCommandContent(QString text)
{
    mUi.editForm.content->setText(text);
}

int MainWindow::getAddCommmandCurrentType()
{
    return mUi.addForm.type->currentIndex();
}

int MainWindow::getEditCommmandCurrentType()
{
    return mUi.editForm.type->currentIndex();
}

QString MainWindow::getAddCommandCurrentCommand()
{
    return mUi.addForm.command->text();
}

QString MainWindow::getEditCommandCurrentCommand()
{
    return mUi.editForm.command->text();
}

QString MainWindow::getAddCommandCurrentContent()
{
    return mUi.addForm.content->text();
}

QString MainWindow::getEditCommandCurrentContent()
{
    return mUi.editForm.content->text();
}

void MainWindow::setAddCommandWarningText(QString text)
{
    mUi.addForm.warning->setText(text);
}

void MainWindow::setEditCommandWarningText(QString text)
{
    mUi.editForm.warning->setText(text);
}

void MainWindow::closeWarningHint()
{
    const int page = mUi.stackedWidget->currentIndex();
    if (page == Ui_MainWindow::AddCommandPage) {
        mUi.addForm.warning->clear();
    } else if (page == Ui_MainWindow::EditCommandPage) {
        mUi.editForm.warning->clear();
    }
}
