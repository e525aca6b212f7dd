#include "InputPresenterRig.h"
#include "Platform/WinUtils.h"
#include "Utils/PreferencesUtils.h"
#include "WidgetPresenter/InputPresenter.h"
#include "WidgetPresenter/LocalCommandTable.h"

#include <QTemporaryDir>
#include <QUrlQuery>
#include <QtTest>

namespace {

CommandWord word(const QString& keyword, int type, const QString& target, const QString& pro = QString())
{
    CommandWord w;
    w.keyword = keyword;
    w.type = type;
    w.target = target;
    w.pro = pro;
    return w;
}

SemanticParsingResult intent(int category, int model, int isSearch, int enableUrl, const QString& website,
                             const QString& searchUrl, const QString& searchWord, int saveService = 0)
{
    SemanticParsingResult r;
    r.serviceCategory = category;
    r.serviceModel = model;
    r.isSearch = isSearch;
    r.enableUrl = enableUrl;
    r.website = website;
    r.searchUrl = searchUrl;
    r.searchWord = searchWord;
    r.saveService = saveService;
    return r;
}

}  // namespace

// What becomes of a voice command and of dictated text: built-in commands, command words,
// intents, and the rewrite of typed text.
class TestInputCommands : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void tableShape();
    void controlRowsAndShortTexts();
    void applicationRows();
    void commandWords();
    void chordReplay();
    void intentCategories();
    void intentModels_data();
    void intentModels();
    void habitSavedBeforeUse();
    void spokenWordsStayInTheirQueryItem();
    void backendOpensOnlyWebPagesAndInstalledApplications();
    void rewrite();

private:
    // A launchable desktop entry in the user's applications folder; its path.
    static QString installEntry(const QString& name);
    std::unique_ptr<InputPresenterRig> mRig;
};

void TestInputCommands::init()
{
    mRig = std::make_unique<InputPresenterRig>();
    mRig->launcher.installed =
        QStringList{QStringLiteral("gnome-calculator.desktop"), QStringLiteral("firefox-esr.desktop")};
}

void TestInputCommands::cleanup()
{
    mRig.reset();
}

void TestInputCommands::tableShape()
{
    const QList<LocalCommand>& rows = LocalCommandTable::rows();
    // No phrase in two rows: the order of the rows must not matter.
    QSet<QString> phrases;
    int count = 0;
    for (const LocalCommand& row : rows) {
        for (const QString& phrase : row.phrases) {
            phrases.insert(phrase);
            ++count;
        }
        for (const QString& entry : row.desktopEntries) {
            QVERIFY2(entry.endsWith(QLatin1String(".desktop")), qPrintable(entry));
        }
    }
    QCOMPARE(phrases.size(), count);
}

void TestInputCommands::controlRowsAndShortTexts()
{
    QVERIFY(mRig->presenter->handleCommand(QStringLiteral("全选")));
    QVERIFY(mRig->presenter->handleCommand(QStringLiteral("删除")));
    QVERIFY(mRig->presenter->handleCommand(QStringLiteral("删除文件")));
    QVERIFY(mRig->presenter->handleCommand(QStringLiteral("返回桌面")));
    QCOMPARE(
        mRig->view.callsOf(QStringLiteral("setContent")),
        QStringList({QStringLiteral("setContent(正在全选...)"), QStringLiteral("setContent(正在删除...)"),
                     QStringLiteral("setContent(正在删除文件...)"),
                     QStringLiteral("setContent(正在返回桌面...)")}));
    // "删除" is one backspace, not a deletion of the selection as such.
    QCOMPARE(mRig->desktop.log,
             QStringList({QStringLiteral("down Control_L"), QStringLiteral("down a"), QStringLiteral("up a"),
                          QStringLiteral("up Control_L"), QStringLiteral("down BackSpace"),
                          QStringLiteral("up BackSpace"), QStringLiteral("down Delete"),
                          QStringLiteral("up Delete"), QStringLiteral("desktop")}));

    mRig->view.calls.clear();
    QVERIFY(mRig->presenter->handleCommand(QStringLiteral("设置鼠标分辨率")));
    QVERIFY(mRig->presenter->handleCommand(QStringLiteral("设备说明书")));
    QCOMPARE(mRig->view.calls,
             QStringList({QStringLiteral("showMainView(3)"), QStringLiteral("showExplain()")}));

    // A text that stripping shortened to one character is consumed with a face and no text.
    mRig->view.calls.clear();
    QVERIFY(mRig->presenter->handleCommand(QStringLiteral("好")));
    QCOMPARE(mRig->view.calls,
             QStringList({QStringLiteral("setContent()"), QStringLiteral("setVoiceSearchViewStyle(1)"),
                          QStringLiteral("showFace(1)")}));
    // Exact, whole-text matches only.
    QVERIFY(!mRig->presenter->handleCommand(QStringLiteral("请全选")));
}

void TestInputCommands::applicationRows()
{
    QVERIFY(mRig->presenter->handleCommand(QStringLiteral("打开计算器")));
    QVERIFY(mRig->presenter->handleCommand(QStringLiteral("Safari")));
    // The first installed counterpart starts; none installed or none at all: only the message.
    QCOMPARE(mRig->launcher.log, QStringList({QStringLiteral("app gnome-calculator.desktop"),
                                              QStringLiteral("app firefox-esr.desktop")}));
    QVERIFY(mRig->presenter->handleCommand(QStringLiteral("终端")));
    QVERIFY(mRig->presenter->handleCommand(QStringLiteral("FaceTime")));
    QCOMPARE(mRig->launcher.log.size(), 2);
    QCOMPARE(
        mRig->view.callsOf(QStringLiteral("setContent")),
        QStringList({QStringLiteral("setContent(正在打开打开计算器)"),
                     QStringLiteral("setContent(正在打开Safari)"), QStringLiteral("setContent(正在打开终端)"),
                     QStringLiteral("setContent(正在打开FaceTime)")}));
    // The table is case sensitive: "safari" goes on to the command words.
    QVERIFY(!mRig->presenter->handleCommand(QStringLiteral("safari")));

    // Entries as Debian installs them; the reader's settings, not the reader; a screenshot
    // with no program for it is the Print key, which the desktop's shell takes.
    mRig->launcher.installed =
        QStringList{QStringLiteral("org.gnome.Gnote.desktop"), QStringLiteral("orca.desktop")};
    mRig->launcher.log.clear();
    mRig->desktop.takeLog();
    QVERIFY(mRig->presenter->handleCommand(QStringLiteral("备忘录")));
    QVERIFY(mRig->presenter->handleCommand(QStringLiteral("旁白实用工具")));
    QVERIFY(mRig->presenter->handleCommand(QStringLiteral("抓图")));
    QCOMPARE(mRig->launcher.log, QStringList({QStringLiteral("app org.gnome.Gnote.desktop"),
                                              QStringLiteral("app orca.desktop --setup")}));
    QCOMPARE(mRig->desktop.takeLog(),
             QStringList({QStringLiteral("down Print"), QStringLiteral("up Print")}));
}

void TestInputCommands::commandWords()
{
    mRig->presenter->onGetUserCommandWord(
        {word(QStringLiteral("Safari"), 0, QStringLiteral("https://shadowed.example")),
         word(QStringLiteral("我的网站"), 0, QStringLiteral("https://first.example")),
         word(QStringLiteral("我的网站"), 0, QStringLiteral("https://second.example")),
         word(QStringLiteral("Report"), 1, QStringLiteral("/home/u/report #2?.odt")),
         word(QStringLiteral("report"), 1, QStringLiteral("/home/u/other.odt")),
         word(QStringLiteral("下载"), 2, QStringLiteral("/home/u/100%41 done")),
         word(QStringLiteral("未知"), 7, QStringLiteral("x")),
         word(QStringLiteral("未知"), 0, QStringLiteral("https://after.example"))});
    // A word equal to a table phrase never fires.
    QVERIFY(mRig->presenter->handleCommand(QStringLiteral("Safari")));
    QCOMPARE(mRig->launcher.log.takeLast(), QStringLiteral("app firefox-esr.desktop"));
    // Case is ignored, and the first of the list wins.
    QVERIFY(mRig->presenter->handleCommand(QStringLiteral("我的网站")));
    QVERIFY(mRig->presenter->handleCommand(QStringLiteral("REPORT")));
    QVERIFY(mRig->presenter->handleCommand(QStringLiteral("下载")));
    // An unknown kind is passed over and the walk goes on.
    QVERIFY(mRig->presenter->handleCommand(QStringLiteral("未知")));
    QVERIFY(!mRig->presenter->handleCommand(QStringLiteral("没有这个词")));
    QCOMPARE(mRig->launcher.urls.size(), 4);
    QCOMPARE(mRig->launcher.urls.at(0), QUrl(QStringLiteral("https://first.example")));
    // '#', '?' and '%' are part of a file's name, not a fragment, a query or an escape.
    QCOMPARE(mRig->launcher.urls.at(1).toLocalFile(), QStringLiteral("/home/u/report #2?.odt"));
    QCOMPARE(mRig->launcher.urls.at(2).toLocalFile(), QStringLiteral("/home/u/100%41 done"));
    QCOMPARE(mRig->launcher.urls.at(3), QUrl(QStringLiteral("https://after.example")));
    QCOMPARE(
        mRig->view.callsOf(QStringLiteral("setContent")).mid(1),
        QStringList(
            {QStringLiteral("setContent(正在打开网站)"), QStringLiteral("setContent(正在打开文件...)"),
             QStringLiteral("setContent(正在打开文件夹...)"), QStringLiteral("setContent(正在打开网站)")}));
}

void TestInputCommands::chordReplay()
{
    // Command-Shift-4 as stored (55, 56, 21), and a chord with an element that is no number.
    mRig->presenter->onGetUserCommandWord(
        {word(QStringLiteral("截图"), 3, QString(), QStringLiteral("55#,#56#,#21")),
         word(QStringLiteral("坏键"), 3, QString(), QStringLiteral("55#,#abc"))});
    QVERIFY(mRig->presenter->handleCommand(QStringLiteral("截图")));
    QCOMPARE(mRig->desktop.takeLog(),
             QStringList({QStringLiteral("down Control_L"), QStringLiteral("down Shift_L"),
                          QStringLiteral("down 4"), QStringLiteral("up 4"), QStringLiteral("up Shift_L"),
                          QStringLiteral("up Control_L")}));
    QVERIFY(mRig->view.callsOf(QStringLiteral("setContent")).isEmpty());  // a shortcut shows nothing
    QVERIFY(mRig->presenter->handleCommand(QStringLiteral("坏键")));
    QCOMPARE(mRig->desktop.takeLog(), QStringList({QStringLiteral("down Control_L"), QStringLiteral("down a"),
                                                   QStringLiteral("up a"), QStringLiteral("up Control_L")}));
}

void TestInputCommands::intentCategories()
{
    const QString entry = installEntry(QStringLiteral("zorvane-calc.desktop"));
    mRig->presenter->handleIntent(intent(19, 0, 0, 0, entry, QString(), QString()));
    mRig->presenter->handleIntent(intent(21, 0, 0, 0, QString(), QString(), QString()));
    mRig->presenter->handleIntent(intent(23, 0, 1, 1, QString(),
                                         QStringLiteral("https://t.example/?f=*from*&t=*to*&d=*date*"),
                                         QStringLiteral("北京#,#上海#,#明天")));
    // Four parts: nothing opens, the message still names the first two.
    mRig->presenter->handleIntent(intent(23, 0, 1, 1, QString(), QStringLiteral("https://t.example/*from*"),
                                         QStringLiteral("北京#,#上海#,#明天#,#多余")));
    // Category 0 never looks at the model.
    mRig->presenter->handleIntent(
        intent(0, 2, 1, 1, QString(), QStringLiteral("https://s.example/*"), QStringLiteral("x")));
    QCOMPARE(mRig->launcher.log,
             QStringList({QStringLiteral("path ") + entry,
                          QStringLiteral("url https://t.example/?f=北京&t=上海&d=明天")}));
    QCOMPARE(
        mRig->view.calls,
        QStringList({QStringLiteral("setContent(正在打开...)"), QStringLiteral("setContent(正在打开...)"),
                     QStringLiteral("setContent(正在查询：从北京到上海的票)"),
                     QStringLiteral("setContent(正在查询：从北京到上海的票)"), QStringLiteral("setContent()"),
                     QStringLiteral("setVoiceSearchViewStyle(1)"), QStringLiteral("showFace(0)")}));
    QCOMPARE(mRig->presenter->serviceCategory(), 18);
}

void TestInputCommands::intentModels_data()
{
    QTest::addColumn<bool>("habit");  // a habit for category 5: site h.example, search h.example/q=*
    QTest::addColumn<int>("model");
    QTest::addColumn<int>("isSearch");
    QTest::addColumn<int>("enableUrl");
    QTest::addColumn<QString>("searchWord");
    QTest::addColumn<QString>("opened");  // empty: nothing opened
    QTest::addColumn<int>("categoryAfter");
    const QString recSearch = QStringLiteral("url https://r.example/s?q=猫&again=猫");
    const QString habitSearch = QStringLiteral("url https://h.example/q=猫");
    QTest::newRow("1 search habit") << true << 1 << 1 << 1 << QStringLiteral("猫") << habitSearch << 18;
    QTest::newRow("1 search no habit") << false << 1 << 1 << 0 << QStringLiteral("猫") << recSearch << 18;
    QTest::newRow("1 site habit") << true << 1 << 0 << 1 << QString()
                                  << QStringLiteral("url https://h.example") << 18;
    QTest::newRow("1 site no habit") << false << 1 << 0 << 0 << QString()
                                     << QStringLiteral("url https://r.example") << 18;
    QTest::newRow("2 search enableUrl") << true << 2 << 1 << 1 << QStringLiteral("猫") << recSearch << 5;
    QTest::newRow("2 search habit") << true << 2 << 1 << 0 << QStringLiteral("猫") << habitSearch << 5;
    QTest::newRow("2 search no habit") << false << 2 << 1 << 0 << QStringLiteral("猫") << recSearch << 5;
    QTest::newRow("2 site enableUrl")
        << true << 2 << 0 << 1 << QString() << QStringLiteral("url https://r.example") << 5;
    QTest::newRow("2 site habit") << true << 2 << 0 << 0 << QString()
                                  << QStringLiteral("url https://h.example") << 5;
    QTest::newRow("3 search empty word")
        << true << 3 << 1 << 0 << QString() << QStringLiteral("url https://r.example") << 18;
    QTest::newRow("3 search habit") << true << 3 << 1 << 1 << QStringLiteral("猫") << habitSearch << 18;
    QTest::newRow("3 search no habit") << false << 3 << 1 << 0 << QStringLiteral("猫") << recSearch << 18;
    QTest::newRow("3 site habit") << true << 3 << 0 << 0 << QString()
                                  << QStringLiteral("url https://h.example") << 18;
    QTest::newRow("other model") << true << 4 << 1 << 0 << "猫" << QString() << 18;
}

void TestInputCommands::intentModels()
{
    QFETCH(bool, habit);
    QFETCH(int, model);
    QFETCH(int, isSearch);
    QFETCH(int, enableUrl);
    QFETCH(QString, searchWord);
    QFETCH(QString, opened);
    QFETCH(int, categoryAfter);
    if (habit) {
        PreferencesUtils::getInstance()->updateUserHabit(5, QStringLiteral("https://h.example"),
                                                         QStringLiteral("https://h.example/q=*"));
        // The presenter reads the habits at its start.
        mRig->restartPresenter();
    }
    mRig->presenter->handleIntent(intent(5, model, isSearch, enableUrl, QStringLiteral("https://r.example"),
                                         QStringLiteral("https://r.example/s?q=*&again=*"), searchWord));
    QCOMPARE(mRig->launcher.log, opened.isEmpty() ? QStringList() : QStringList{opened});
    if (model <= 3) {
        QCOMPARE(mRig->view.calls.last(), isSearch ? QStringLiteral("setContent(正在搜索:%1)").arg(searchWord)
                                                   : QStringLiteral("setContent(正在打开网站...)"));
    } else {
        QVERIFY(mRig->view.calls.isEmpty());
    }
    QCOMPARE(mRig->presenter->serviceCategory(), categoryAfter);
}

void TestInputCommands::spokenWordsStayInTheirQueryItem()
{
    // '&', '#', '+' and '%' in what was said neither end its item nor cut the query.
    const QString word = QStringLiteral("C++ & C# 100%");
    mRig->presenter->handleIntent(
        intent(9, 1, 1, 0, QString(), QStringLiteral("https://r.example/s?q=*&n=1"), word));
    mRig->presenter->handleIntent(intent(23, 0, 1, 1, QString(),
                                         QStringLiteral("https://t.example/?f=*from*&t=*to*&d=*date*"),
                                         word + QStringLiteral("#,#上海#,#明天")));
    QCOMPARE(mRig->launcher.urls.size(), 2);
    const QUrlQuery search(mRig->launcher.urls.at(0));
    QCOMPARE(search.queryItemValue(QStringLiteral("q"), QUrl::FullyDecoded), word);
    QCOMPARE(search.queryItemValue(QStringLiteral("n")), QStringLiteral("1"));
    const QUrlQuery ticket(mRig->launcher.urls.at(1));
    QCOMPARE(ticket.queryItemValue(QStringLiteral("f"), QUrl::FullyDecoded), word);
    QCOMPARE(ticket.queryItemValue(QStringLiteral("t"), QUrl::FullyDecoded), QStringLiteral("上海"));
}

void TestInputCommands::habitSavedBeforeUse()
{
    // The reply that saves a habit already searches with it, and the habit is kept.
    mRig->presenter->handleIntent(intent(6, 3, 1, 0, QStringLiteral("https://shop.example"),
                                         QStringLiteral("https://shop.example/k=*"), QStringLiteral("耳机"),
                                         1));
    QCOMPARE(mRig->launcher.log, QStringList({QStringLiteral("url https://shop.example/k=耳机")}));
    QCOMPARE(mRig->presenter->userHabits().value(6).searchUrl, QStringLiteral("https://shop.example/k=*"));
    QCOMPARE(PreferencesUtils::getInstance()->getUserHabitList().value(6).website,
             QStringLiteral("https://shop.example"));
}

QString TestInputCommands::installEntry(const QString& name)
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::ApplicationsLocation);
    QDir().mkpath(folder);
    QFile file(folder + QLatin1Char('/') + name);
    if (file.open(QIODevice::WriteOnly)) {
        file.write("[Desktop Entry]\nType=Application\nName=Calc\nExec=/bin/true\n");
    }
    return file.fileName();
}

void TestInputCommands::backendOpensOnlyWebPagesAndInstalledApplications()
{
    // Addresses that are no web page, as a site, a search, a ticket query and a stored habit.
    const QStringList notWeb = {QStringLiteral("file:///etc/passwd"), QStringLiteral("javascript:alert(1)"),
                                QStringLiteral("x-zorvane-handler://run?a=1"),
                                QStringLiteral("relative/junk"), QStringLiteral("http:/no-host")};
    for (const QString& address : notWeb) {
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("no web page, not opened")));
        mRig->presenter->handleIntent(intent(5, 1, 0, 0, address, QString(), QString()));
    }
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("no web page, not opened")));
    mRig->presenter->handleIntent(
        intent(5, 2, 1, 1, QString(), QStringLiteral("file:///home/*"), QStringLiteral("u")));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("no web page, not opened")));
    mRig->presenter->handleIntent(intent(23, 0, 1, 1, QString(), QStringLiteral("smb://*from*/*to*/*date*"),
                                         QStringLiteral("a#,#b#,#c")));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("no web page, not opened")));
    mRig->presenter->handleIntent(intent(7, 3, 0, 0, QStringLiteral("file:///tmp/x.sh"),
                                         QStringLiteral("file:///tmp/*"), QString(), 1));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("no web page, not opened")));
    mRig->presenter->handleIntent(
        intent(7, 1, 0, 0, QStringLiteral("https://r.example"), QString(), QString()));

    // Programs: a bare executable, an entry outside the applications folders, and a link in
    // them that leads out.
    QTemporaryDir elsewhere;
    const QString outside = elsewhere.filePath(QStringLiteral("evil.desktop"));
    QVERIFY(QFile::copy(installEntry(QStringLiteral("zorvane-copy.desktop")), outside));
    const QString link = QFileInfo(installEntry(QStringLiteral("zorvane-x.desktop"))).path() +
                         QStringLiteral("/zorvane-link.desktop");
    QVERIFY(QFile::link(outside, link));
    for (const QString& program : {QStringLiteral("/bin/sh"), outside, link}) {
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("no installed application")));
        mRig->presenter->handleIntent(intent(20, 0, 0, 0, program, QString(), QString()));
    }
    QCOMPARE(mRig->launcher.log, QStringList());
    // Web pages still open, whatever the case of their scheme.
    mRig->presenter->handleIntent(
        intent(5, 1, 0, 0, QStringLiteral("HTTPS://ok.example/a"), QString(), QString()));
    QCOMPARE(mRig->launcher.log, QStringList{QStringLiteral("url https://ok.example/a")});
}

void TestInputCommands::rewrite()
{
    InputPresenter* presenter = mRig->presenter.get();
    RecordingInputBackend& desktop = mRig->desktop;
    const auto backspaces = [&desktop] {
        return desktop.takeLog().filter(QStringLiteral("down BackSpace")).size();
    };
    presenter->sendOutput(QStringLiteral("我想去南"));
    QCOMPARE(desktop.takeLog(), QStringList({QStringLiteral("text 我想去南")}));
    // Four characters then six sharing three: one backspace, three typed.
    presenter->sendOutput(QStringLiteral("我想去北京看"));
    QCOMPARE(desktop.log.last(), QStringLiteral("text 北京看"));
    QCOMPARE(backspaces(), 1);
    presenter->sendOutput(QStringLiteral("我想去北京看"));  // unchanged: nothing at all
    QCOMPARE(desktop.log, QStringList());
    presenter->sendOutput(QString());  // emptied: backspaces only
    QCOMPARE(desktop.log.filter(QStringLiteral("text")), QStringList());
    QCOMPARE(backspaces(), 6);

    // What the text box holds after a revision: emoji go whole, one backspace each.
    const QList<QStringList> revisions{
        {QStringLiteral("好😀"), QStringLiteral("好")},
        {QStringLiteral("😀"), QStringLiteral("😃")},  // same high surrogate, other character
        {QStringLiteral("a😀b"), QStringLiteral("a😃")},
        {QStringLiteral("👍🏽好"), QStringLiteral("👍")},  // emoji with a skin tone: two characters
    };
    for (const QStringList& revision : revisions) {
        presenter->sendOutput(revision.at(0));
        presenter->sendOutput(revision.at(1));
        QCOMPARE(desktop.typedText(), revision.at(1));
        presenter->sendOutput(QString());
        desktop.log.clear();
    }

    // restoreContent takes back the differing tail and hands the new one over for the panel.
    presenter->sendOutput(QStringLiteral("你好😀"));
    QCOMPARE(presenter->restoreContent(QStringLiteral("你好😃呀")), QStringLiteral("😃呀"));
    QCOMPARE(desktop.typedText(), QStringLiteral("你好"));
    QCOMPARE(presenter->lastOutput(), QStringLiteral("你好😃呀"));
}

QTEST_GUILESS_MAIN(TestInputCommands)
#include "tst_inputcommands.moc"
