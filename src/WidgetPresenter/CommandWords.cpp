#include "WidgetPresenter/CommandWords.h"

#include "Database/DBManager.h"
#include "Utils/KeyTable.h"
#include "Utils/TextUtils.h"

namespace {

// The marks recognition may end a word with; the stored keyword has none.
const QString kMarks[] = {QStringLiteral("。"), QStringLiteral("."), QStringLiteral("？"),
                          QStringLiteral("?"),  QStringLiteral(","), QStringLiteral("，"),
                          QStringLiteral("!"),  QStringLiteral("！")};

}  // namespace

QList<CommandWord> CommandWords::load()
{
    mWords.clear();
    if (mDb->open()) {
        mDb->queryCommandWordList(&mWords);
        mDb->close();
    }
    return mWords;
}

bool CommandWords::select(int row)
{
    if (row < 0 || row >= mWords.size()) {
        return false;
    }
    mEditing = mWords.at(row);
    mEditShortcut.clear();
    return true;
}

QString CommandWords::submit(bool edit, int typeIndex, QString keyword, const QString& target)
{
    for (const QString& mark : kMarks) {
        keyword.remove(mark);
    }
    if (keyword.size() < 2) {
        return tr("* 命令词长度必须要大于一个字！！！");
    }
    if (TextUtils::isEmpty(target)) {
        return tr("* 内容不能为空！！！");
    }
    CommandWord word = edit ? mEditing : CommandWord();
    word.keyword = keyword;
    word.target = target;
    if ((typeIndex >= 0 && typeIndex <= 2) || typeIndex == kTypeApplication) {
        // An application keeps the path of its desktop entry in target.
        word.type = typeIndex;
        word.pro.clear();
    } else {
        // Only a chord captured in this form replaces the word's own: a word whose spoken part
        // alone was edited keeps its keys.
        const QList<int>& captured = edit ? mEditShortcut : mShortcut;
        if (!captured.isEmpty()) {
            word.pro = KeyTable::buildShortcut(captured);
        } else if (word.type != kTypeShortcut || word.pro.isEmpty()) {
            return tr("* 内容不能为空！！！");
        }
        word.type = kTypeShortcut;
    }
    if (!mDb->open()) {
        return edit ? tr("* 编辑失败1！！！") : tr("* 打开数据失败！！！");
    }
    const bool written = edit ? mDb->updateCommandWord(word) : mDb->addCommandWord(word);
    mDb->close();
    if (!written) {
        return edit ? tr("* 编辑失败2！！！") : tr("* 添加数据失败！！！");
    }
    (edit ? mEditShortcut : mShortcut).clear();
    return QString();
}

bool CommandWords::remove(const QList<int>& cells)
{
    if (!mDb->open()) {
        return false;
    }
    // A table row gives three selected cells.
    for (int i = 0; i < cells.size(); i += 3) {
        const int row = cells.at(i);
        if (row >= 0 && row < mWords.size()) {
            mDb->deleteCommandWord(mWords.at(row).id);
        }
    }
    mDb->close();
    return true;
}
