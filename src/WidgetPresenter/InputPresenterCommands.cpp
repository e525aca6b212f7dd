// Built-in commands, the user's command words, the backend's intents and the typed-text
// rewrite.
#include "InputPresenter.h"

#include "InputView.h"
#include "LocalCommandTable.h"
#include "Platform/AppLauncher.h"
#include "Platform/ApplicationCatalog.h"
#include "Platform/DesktopEntry.h"
#include "Platform/InputBackend.h"
#include "Platform/WinUtils.h"
#include "Utils/Logging.h"
#include "Utils/PreferencesUtils.h"
#include "Utils/UrlRules.h"

#include <QFileInfo>
#include <QUrl>

#include <X11/keysym.h>

namespace {

const char* const kOpening = QT_TRANSLATE_NOOP("InputPresenter", "正在打开...");

// What the user said, put into the backend's address: an '&', '#', '+' or '%' in it would
// otherwise cut the query or change what the site reads.
QString queryText(const QString& text)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(text));
}

}  // namespace

void InputPresenter::onGetUserCommandWord(QList<CommandWord> words)
{
    mCommandWords = words;
}

bool InputPresenter::handleCommand(QString text)
{
    if (text.size() < 2) {
        mInputView->setContent(QString());
        mInputView->setVoiceSearchViewStyle(1);
        mInputView->showFace(1);
        return true;
    }
    const LocalCommand* row = LocalCommandTable::match(text);
    if (row == nullptr) {
        return checkLocalCommand(text);
    }
    WinUtils* win = WinUtils::getInstance();
    switch (row->action) {
        case LocalCommand::BackDesktop:
            mInputView->setContent(tr(row->message.toUtf8().constData()));
            win->backDesktop();
            break;
        case LocalCommand::SelectAll:
            mInputView->setContent(tr(row->message.toUtf8().constData()));
            win->selectAll();
            break;
        case LocalCommand::Backspace:
            mInputView->setContent(tr(row->message.toUtf8().constData()));
            win->backspace();
            break;
        case LocalCommand::DeleteFile:
            mInputView->setContent(tr(row->message.toUtf8().constData()));
            win->deleteFile();
            break;
        case LocalCommand::ShowMainView:
            mInputView->showMainView(3);
            break;
        case LocalCommand::ShowExplain:
            mInputView->showExplain();
            break;
        case LocalCommand::OpenApplication:
            // Nothing installed (or no counterpart here): the message stands all the same.
            if (!row->opensSomething()) {
                qCInfo(lcInput) << "no counterpart here for" << row->application;
            } else if (!launcher()->launchApplication(row->choice()) && row->printKeyWhenNone) {
                // Print has no code in the stored key table; it goes to the desktop as it is.
                win->backend()->sendKey(XK_Print, true);
                win->backend()->sendKey(XK_Print, false);
            }
            mInputView->setContent(tr("正在打开") + text);
            break;
    }
    return true;
}

bool InputPresenter::checkLocalCommand(QString text)
{
    for (const CommandWord& word : qAsConst(mCommandWords)) {
        if (word.keyword.compare(text, Qt::CaseInsensitive) != 0) {
            continue;
        }
        // A stored path is absolute with or without its leading slash. Made into a URL as a
        // path, so that '#', '?' and '%' in a name stay part of it.
        QString path = word.target;
        while (path.startsWith(QLatin1Char('/'))) {
            path.remove(0, 1);
        }
        const QUrl file = QUrl::fromLocalFile(QLatin1Char('/') + path);
        switch (word.type) {
            case 0:
                mInputView->setContent(tr("正在打开网站"));
                launcher()->openUrl(QUrl(word.target));
                return true;
            case 1:
                mInputView->setContent(tr("正在打开文件..."));
                launcher()->openUrl(file);
                return true;
            case 2:
                mInputView->setContent(tr("正在打开文件夹..."));
                launcher()->openUrl(file);
                return true;
            case 3:
                replayChord(word.pro);
                return true;
            case 4:
                mInputView->setContent(tr("正在打开") + word.keyword);
                startApplication(word.target);
                return true;
            default:
                break;
        }
    }
    return false;
}

void InputPresenter::startApplication(const QString& path)
{
    const QFileInfo file(path);
    const bool isEntry = path.endsWith(QLatin1String(".desktop"));
    DesktopEntry entry;
    // A program path typed by hand starts as well.
    if (file.isFile() && (isEntry ? entry.load(path) && entry.isLaunchable() : file.isExecutable())) {
        launcher()->openLocalPath(path);
        return;
    }
    // Gone or no longer startable there: a package update or the user may have moved the entry
    // between the user's and the system's folders, and its id still finds it.
    AppChoice choice;
    if (isEntry) {
        choice.desktopIds << ApplicationCatalog::entryId(path);
    }
    if (choice.desktopIds.isEmpty() || !launcher()->launchApplication(choice)) {
        qCInfo(lcInput) << "no application to start for" << path;
    }
}

void InputPresenter::replayChord(const QString& pro)
{
    // Pressed in the stored order, released in the reverse one.
    const QStringList parts = pro.split(QStringLiteral("#,#"));
    QList<int> codes;
    for (const QString& part : parts) {
        codes << part.toInt();
    }
    WinUtils* win = WinUtils::getInstance();
    for (int code : qAsConst(codes)) {
        qCInfo(lcInput).noquote() << "USER_KEYWORD_KEY::::::::::::::::" << code;
        win->sendKeyboard(static_cast<unsigned short>(code & 0xffff), true);
    }
    for (int i = codes.size() - 1; i >= 0; --i) {
        win->sendKeyboard(static_cast<unsigned short>(codes.at(i) & 0xffff), false);
    }
}

void InputPresenter::handleIntent(SemanticParsingResult result)
{
    qCInfo(lcInput) << "intent" << result.structure << result.serviceCategory << result.serviceModel;
    // The habit is stored before the action, so that the action already uses it.
    if (result.saveService != 0 && !result.searchUrl.isEmpty()) {
        mUserHabits.clear();
        mUserHabits = PreferencesUtils::getInstance()->updateUserHabit(result.serviceCategory, result.website,
                                                                       result.searchUrl);
    }
    // What the backend names is opened only as a web page: not a file, a script or a link into
    // some other installed handler.
    auto open = [this](const QUrl& url) {
        if (url.isEmpty()) {
            return;
        }
        if (!UrlRules::isWebPage(url)) {
            qCWarning(lcInput).noquote()
                << "the backend's address is no web page, not opened:" << UrlRules::forLog(url);
            return;
        }
        launcher()->openUrl(url);
    };

    switch (result.serviceCategory) {
        case 19:
        case 20:
            // A program to start: only the entry of an installed application, never any file.
            if (ApplicationCatalog::isInstalledEntry(result.website)) {
                launcher()->openLocalPath(result.website);
            } else if (!result.website.isEmpty()) {
                qCWarning(lcInput) << "the backend's program is no installed application, not started:"
                                   << result.website;
            }
            mInputView->setContent(tr(kOpening));
            return;
        case 21:
            mInputView->setContent(tr(kOpening));
            return;
        case 23: {
            const QStringList parts = result.searchWord.split(QStringLiteral("#,#"));
            if (parts.size() == 3) {
                QString url = result.searchUrl;
                url.replace(QLatin1String("*from*"), queryText(parts.at(0)))
                    .replace(QLatin1String("*to*"), queryText(parts.at(1)))
                    .replace(QLatin1String("*date*"), queryText(parts.at(2)));
                open(QUrl(url));
            }
            // Without a departure and an arrival there is nothing to tell.
            if (parts.size() >= 2) {
                mInputView->setContent(tr("正在查询：从%1到%2的票").arg(parts.at(0), parts.at(1)));
            }
            return;
        }
        case 0:
            mInputView->setContent(QString());
            mInputView->setVoiceSearchViewStyle(1);
            mInputView->showFace(0);
            return;
        default:
            break;
    }

    const bool hasHabit = mUserHabits.contains(result.serviceCategory);
    const UserHabit habit = mUserHabits.value(result.serviceCategory);
    const bool search = result.isSearch != 0;
    QString url;
    switch (result.serviceModel) {
        case 1:
            if (search) {
                url = hasHabit ? habit.searchUrl : result.searchUrl;
            } else {
                url = hasHabit ? habit.website : result.website;
            }
            qCInfo(lcInput).noquote() << "通用搜索主题url:" << UrlRules::forLog(url);
            break;
        case 2:
            mServiceCategory = result.serviceCategory;
            if (search) {
                url = (result.enableUrl == 0 && hasHabit) ? habit.searchUrl : result.searchUrl;
            } else {
                url = (result.enableUrl == 0 && hasHabit) ? habit.website : result.website;
            }
            qCInfo(lcInput).noquote() << "切换对应主题url:" << UrlRules::forLog(url);
            break;
        case 3:
            if (search) {
                if (result.searchWord.isEmpty()) {
                    url = result.website;
                } else {
                    url = (hasHabit && !habit.searchUrl.isEmpty()) ? habit.searchUrl : result.searchUrl;
                }
            } else {
                url = hasHabit ? habit.website : result.website;
            }
            qCInfo(lcInput).noquote() << "保留当前主题url:" << UrlRules::forLog(url);
            break;
        default:
            return;
    }
    if (search) {
        url.replace(QLatin1Char('*'), queryText(result.searchWord));
        mInputView->setContent(tr("正在搜索:") + result.searchWord);
    } else {
        mInputView->setContent(tr("正在打开网站..."));
    }
    open(QUrl(url));
}

int InputPresenter::eraseDifferingTail(const QString& content)
{
    int same = 0;
    while (same < mLastOutput.size() && same < content.size() && mLastOutput.at(same) == content.at(same)) {
        ++same;
    }
    // Two emoji can share their high surrogate: half a character is no common prefix.
    if (same > 0 && mLastOutput.at(same - 1).isHighSurrogate()) {
        --same;
    }
    // One BackSpace takes back one whole character, a surrogate pair included.
    WinUtils* win = WinUtils::getInstance();
    for (int i = same; i < mLastOutput.size(); ++i) {
        if (!(mLastOutput.at(i).isHighSurrogate() && i + 1 < mLastOutput.size() &&
              mLastOutput.at(i + 1).isLowSurrogate())) {
            win->backspace();
        }
    }
    return same;
}

void InputPresenter::sendOutput(QString word)
{
    WinUtils* win = WinUtils::getInstance();
    const unsigned long window = win->focusedWindow();
    if (!mLastOutput.isEmpty() &&
        (window != mOutputWindow || mPressedSinceOutput || win->foreignKeyPresses() != mKeysAtOutput)) {
        // The user went elsewhere (a click, another window, Enter, a key of their own) since the
        // segment was typed: its rewrite there would take back their own text instead of ours.
        qCInfo(lcInput) << "the focus moved since the last text: its rewrite is dropped";
        return;
    }
    const int same = eraseDifferingTail(word);
    win->sendInput(word.mid(same, word.size() - same));
    mLastOutput = word;
    mOutputWindow = window;
    mPressedSinceOutput = false;
    mKeysAtOutput = win->foreignKeyPresses();
}

QString InputPresenter::restoreContent(QString content)
{
    const int same = eraseDifferingTail(content);
    mLastOutput = content;
    return content.mid(same);
}
