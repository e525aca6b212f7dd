#include "ConsoleRig.h"
#include "Database/DBManager.h"
#include "FakeHidBackend.h"
#include "InputPresenterRig.h"
#include "Platform/ApplicationCatalog.h"
#include "Screenshot.h"
#include "Widget/Common/FramelessDialog.h"
#include "Widget/Console/ApplicationPickerDialog.h"
#include "WidgetPresenter/PathPicker.h"

#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

namespace {

// Answers each pick with the next scripted path ("" is a cancel) and keeps what was asked.
class ScriptedPicker : public PathPicker {
public:
    QStringList answers;
    QStringList asked;
    QString pickFile(const QString& title, const QString& folder, const QString& filter) override
    {
        asked << QStringList{QStringLiteral("file"), title, folder, filter}.join(QLatin1Char('|'));
        return answers.takeFirst();
    }
    QString pickFolder(const QString& title, const QString& folder) override
    {
        asked << QStringList{QStringLiteral("folder"), title, folder}.join(QLatin1Char('|'));
        return answers.takeFirst();
    }
    QString pickApplication(const QList<InstalledApplication>&) override
    {
        asked << QStringLiteral("application");
        return answers.takeFirst();
    }
};

bool writeEntry(const QString& path, const QString& body)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) &&
           file.write("[Desktop Entry]\nType=Application\n" + body.toUtf8()) > 0;
}

CommandWord applicationWord(const QString& keyword, const QString& target)
{
    CommandWord w;
    w.keyword = keyword;
    w.target = target;
    w.type = 4;
    return w;
}

}  // namespace

class TestPickers : public QObject {
    Q_OBJECT

private slots:
    void pickedPathGoesToTheShownPage();
    void applicationWordIsStoredAsType4();
    void applicationWordStartsItsEntry();
    void catalogueOfInstalledApplications();
    void pickerDialog();
    void screenshots();
};

void TestPickers::pickedPathGoesToTheShownPage()
{
    FakeHidBackend backend;
    ConsoleRig rig(&backend);
    MainWindowPresenter* noPicker = rig.start();
    rig.view.calls.clear();
    noPicker->showDesktopFile();
    noPicker->showApplicationsFile();
    QVERIFY(rig.view.calls.isEmpty());

    ScriptedPicker picker;
    MainWindowPresenter::Collaborators c;
    c.device = &rig.device;
    c.picker = &picker;
    MainWindowPresenter p(&rig.view, c);
    rig.view.calls.clear();
    picker.answers = QStringList{QStringLiteral("/home/u/a.odt"), QStringLiteral("/home/u/Music"),
                                 QStringLiteral("/usr/share/applications/x.desktop"), QString(),
                                 QStringLiteral("/home/u/b.odt")};
    rig.view.answers[QStringLiteral("getCurrentStackedWidgetIndex")] = 4;
    p.showDesktopFile();
    rig.view.answers[QStringLiteral("getCurrentStackedWidgetIndex")] = 5;
    p.showDesktopFolder();
    p.showApplicationsFile();
    p.showDesktopFile();  // cancelled
    rig.view.answers[QStringLiteral("getCurrentStackedWidgetIndex")] = 1;
    p.showDesktopFile();  // no command page shown
    QCOMPARE(rig.view.calls.filter(QStringLiteral("Content(")),
             QStringList({QStringLiteral("setAddCommandContent(/home/u/a.odt)"),
                          QStringLiteral("setEditCommandContent(/home/u/Music)"),
                          QStringLiteral("setEditCommandContent(/usr/share/applications/x.desktop)")}));

    // The dialogs open on the desktop folder, or the home folder while there is none.
    const QString home = QDir::homePath();
    QCOMPARE(picker.asked.at(0), QStringLiteral("file|选择文件|") + home + QStringLiteral("|*.*"));
    QCOMPARE(picker.asked.at(1), QStringLiteral("folder|选择文件夹|") + home);
    QCOMPARE(picker.asked.at(2), QStringLiteral("application"));
    const QString desktop = QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
    QVERIFY(QDir().mkpath(desktop));
    picker.answers = QStringList{QString()};
    p.showDesktopFolder();
    QCOMPARE(picker.asked.last(), QStringLiteral("folder|选择文件夹|") + desktop);
}

void TestPickers::applicationWordIsStoredAsType4()
{
    QTemporaryDir dir;
    DBManager db(dir.path(), dir.path() + QStringLiteral("/old"));
    FakeHidBackend backend;
    ConsoleRig rig(&backend);
    MainWindowPresenter* p = rig.start(nullptr, &db);
    const QString entry = QStringLiteral("/usr/share/applications/org.gnome.TextEditor.desktop");
    // Row 4 is the application; 3 and anything past 4 stay the shortcut. A chord is captured
    // for each word: a saved word uses up its capture.
    for (int type : {4, 3, 9}) {
        p->setShortcutList({Qt::Key_Control, Qt::Key_A});
        rig.view.answers[QStringLiteral("getAddCommmandCurrentType")] = type;
        rig.view.answers[QStringLiteral("getAddCommandCurrentCommand")] =
            QStringLiteral("记事本%1").arg(type);
        rig.view.answers[QStringLiteral("getAddCommandCurrentContent")] = entry;
        QCOMPARE(p->onAddCommandButtonSumbit(), 0);
    }
    const QList<CommandWord> words = p->getCommandWords();
    QCOMPARE(words.size(), 3);
    QCOMPARE(words.at(2).type, 4);
    QCOMPARE(words.at(2).target, entry);
    QVERIFY(words.at(2).pro.isEmpty());
    QCOMPARE(words.at(1).type, 3);
    QCOMPARE(words.at(0).type, 3);
    QVERIFY(!words.at(0).pro.isEmpty());
}

void TestPickers::applicationWordStartsItsEntry()
{
    QTemporaryDir dir;
    const QString here = dir.filePath(QStringLiteral("share/applications/org.gnome.TextEditor.desktop"));
    QVERIFY(writeEntry(here, QStringLiteral("Name=Text Editor\nExec=true\n")));
    // Left behind by an uninstall: the file is there, its program is not.
    const QString stale = dir.filePath(QStringLiteral("share/applications/kde4/kolourpaint.desktop"));
    QVERIFY(
        writeEntry(stale, QStringLiteral("Name=Paint\nExec=kolourpaint\nTryExec=/nowhere/kolourpaint\n")));

    InputPresenterRig rig(false);
    rig.launcher.installed =
        QStringList{QStringLiteral("kde4-kolourpaint.desktop"), QStringLiteral("org.gnome.Maps.desktop")};
    rig.presenter->onGetUserCommandWord(
        {applicationWord(QStringLiteral("记事本"), here), applicationWord(QStringLiteral("画图"), stale),
         // Moved from the user's folder to the system's since it was picked.
         applicationWord(QStringLiteral("Maps"),
                         QStringLiteral("/home/u/.local/share/applications/org.gnome.Maps.desktop")),
         applicationWord(QStringLiteral("没装"), QStringLiteral("/usr/share/applications/none.desktop"))});
    for (const char* spoken : {"记事本", "画图", "maps", "没装"}) {
        QVERIFY(rig.presenter->handleCommand(QString::fromUtf8(spoken)));
    }
    QCOMPARE(rig.launcher.log,
             QStringList({QStringLiteral("path ") + here, QStringLiteral("app kde4-kolourpaint.desktop"),
                          QStringLiteral("app org.gnome.Maps.desktop")}));
    // The stored word is shown, as the user typed it.
    QCOMPARE(rig.view.callsOf(QStringLiteral("setContent")),
             QStringList(
                 {QStringLiteral("setContent(正在打开记事本)"), QStringLiteral("setContent(正在打开画图)"),
                  QStringLiteral("setContent(正在打开Maps)"), QStringLiteral("setContent(正在打开没装)")}));
}

void TestPickers::catalogueOfInstalledApplications()
{
    QStandardPaths::setTestModeEnabled(false);
    QTemporaryDir dir;
    const QString user = dir.filePath(QStringLiteral("user/applications/"));
    const QString system = dir.filePath(QStringLiteral("system/applications/"));
    const QString later = dir.filePath(QStringLiteral("later/applications/"));
    qputenv("XDG_DATA_HOME", dir.filePath(QStringLiteral("user")).toUtf8());
    qputenv("XDG_DATA_DIRS", (dir.filePath(QStringLiteral("system")) + QLatin1Char(':') +
                              dir.filePath(QStringLiteral("later")))
                                 .toUtf8());
    qunsetenv("XDG_CURRENT_DESKTOP");
    // The user's copies win over the system's, also a hidden one, which removes the entry.
    QVERIFY(writeEntry(user + QStringLiteral("override.desktop"), QStringLiteral("Name=Mine\nExec=true\n")));
    QVERIFY(
        writeEntry(system + QStringLiteral("override.desktop"), QStringLiteral("Name=System\nExec=true\n")));
    QVERIFY(writeEntry(user + QStringLiteral("removed.desktop"),
                       QStringLiteral("Name=Removed\nExec=true\nHidden=true\n")));
    QVERIFY(
        writeEntry(system + QStringLiteral("removed.desktop"), QStringLiteral("Name=Removed\nExec=true\n")));
    QVERIFY(writeEntry(
        system + QStringLiteral("calc.desktop"),
        QStringLiteral("Name=Calculator\nName[zh_CN]=计算器\nName[zh]=计算\nIcon=accessories-calculator\n"
                       "Exec=true\n")));
    QVERIFY(writeEntry(later + QStringLiteral("calc.desktop"), QStringLiteral("Name=Shadowed\nExec=true\n")));
    QVERIFY(
        writeEntry(system + QStringLiteral("kde4/kate.desktop"), QStringLiteral("Name=kate\nExec=true\n")));
    QVERIFY(writeEntry(later + QStringLiteral("zed.desktop"), QStringLiteral("Name=Zed\nExec=true\n")));
    // Not offered: a handler kept out of menus, a program not installed, one for a terminal.
    QVERIFY(writeEntry(system + QStringLiteral("handler.desktop"),
                       QStringLiteral("Name=Handler\nExec=true\nNoDisplay=true\n")));
    QVERIFY(writeEntry(system + QStringLiteral("gone.desktop"),
                       QStringLiteral("Name=Gone\nExec=gone\nTryExec=gone-not-here\n")));
    QVERIFY(writeEntry(system + QStringLiteral("top.desktop"),
                       QStringLiteral("Name=Top\nExec=true\nTerminal=true\n")));

    auto describe = [](const QList<InstalledApplication>& list) {
        QStringList out;
        for (const InstalledApplication& a : list) {
            out << a.id + QLatin1Char('=') + a.name;
        }
        return out;
    };
    const QList<InstalledApplication> plain = ApplicationCatalog::applications(QStringLiteral("C"));
    QCOMPARE(describe(plain),
             QStringList({QStringLiteral("calc.desktop=Calculator"), QStringLiteral("kde4-kate.desktop=kate"),
                          QStringLiteral("override.desktop=Mine"), QStringLiteral("zed.desktop=Zed")}));
    QCOMPARE(plain.at(0).icon, QStringLiteral("accessories-calculator"));
    QCOMPARE(plain.at(0).path, system + QStringLiteral("calc.desktop"));
    // The most specific translation there is; without an argument, the locale of messages.
    QCOMPARE(ApplicationCatalog::applications(QStringLiteral("zh_TW.UTF-8")).at(0).name,
             QStringLiteral("计算"));
    qputenv("LC_ALL", "");
    qputenv("LC_MESSAGES", "zh_CN.UTF-8");
    QCOMPARE(describe(ApplicationCatalog::applications()).filter(QStringLiteral("calc")),
             QStringList{QStringLiteral("calc.desktop=计算器")});

    // Ids from subfolders, inside the searched folders or, once moved, from the layout.
    QCOMPARE(ApplicationCatalog::locate(QStringLiteral("kde4-kate.desktop")),
             system + QStringLiteral("kde4/kate.desktop"));
    QCOMPARE(ApplicationCatalog::locate(QStringLiteral("calc.desktop")),
             system + QStringLiteral("calc.desktop"));
    QCOMPARE(ApplicationCatalog::entryId(system + QStringLiteral("kde4/kate.desktop")),
             QStringLiteral("kde4-kate.desktop"));
    QCOMPARE(ApplicationCatalog::entryId(QStringLiteral("/old/share/applications/x/y.desktop")),
             QStringLiteral("x-y.desktop"));
    QCOMPARE(ApplicationCatalog::entryId(QStringLiteral("/tmp/y.desktop")), QStringLiteral("y.desktop"));

    // The sample of the add page names an installed editor, else nothing.
    QVERIFY(ApplicationCatalog::sampleApplication().path.isEmpty());
    QVERIFY(writeEntry(later + QStringLiteral("org.xfce.mousepad.desktop"),
                       QStringLiteral("Name=Mousepad\nExec=true\n")));
    QCOMPARE(ApplicationCatalog::sampleApplication().path,
             later + QStringLiteral("org.xfce.mousepad.desktop"));
}

namespace {

QList<InstalledApplication> someApplications()
{
    return {{QStringLiteral("org.gnome.Calculator.desktop"), QStringLiteral("计算器"),
             QStringLiteral("accessories-calculator"),
             QStringLiteral("/usr/share/applications/org.gnome.Calculator.desktop")},
            {QStringLiteral("org.gnome.TextEditor.desktop"), QStringLiteral("文本编辑器"),
             QStringLiteral("accessories-text-editor"),
             QStringLiteral("/usr/share/applications/org.gnome.TextEditor.desktop")},
            {QStringLiteral("firefox-esr.desktop"), QStringLiteral("Firefox ESR"),
             QStringLiteral("firefox-esr"), QStringLiteral("/usr/share/applications/firefox-esr.desktop")},
            {QStringLiteral("org.gnome.Maps.desktop"), QStringLiteral("地图"), QString(),
             QStringLiteral("/usr/share/applications/org.gnome.Maps.desktop")},
            {QStringLiteral("vlc.desktop"), QStringLiteral("VLC media player"),
             QStringLiteral("/nowhere/vlc.png"), QStringLiteral("/usr/share/applications/vlc.desktop")}};
}

}  // namespace

void TestPickers::pickerDialog()
{
    ApplicationPickerDialog dialog(someApplications());
    dialog.show();
    QCOMPARE(dialog.selectedPath(), QStringLiteral("/usr/share/applications/org.gnome.Calculator.desktop"));

    // By name or by id, ignoring case; the choice moves to a row still shown.
    QTest::keyClicks(dialog.filterBox(), QStringLiteral("GNOME"));
    QCOMPARE(dialog.visibleNames(),
             QStringList({QStringLiteral("计算器"), QStringLiteral("文本编辑器"), QStringLiteral("地图")}));
    dialog.filterBox()->setText(QStringLiteral("编辑"));
    QCOMPARE(dialog.visibleNames(), QStringList{QStringLiteral("文本编辑器")});
    QCOMPARE(dialog.selectedPath(), QStringLiteral("/usr/share/applications/org.gnome.TextEditor.desktop"));
    dialog.filterBox()->setText(QStringLiteral("没有这个"));
    QVERIFY(dialog.selectedPath().isEmpty());
    QVERIFY(!dialog.okButton()->isEnabled());
    QVERIFY(dialog.findChild<QLabel*>(QStringLiteral("mutedLabel"))->isVisible());

    dialog.filterBox()->setText(QStringLiteral("vlc"));
    QVERIFY(dialog.okButton()->isEnabled());
    dialog.okButton()->click();
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QCOMPARE(dialog.selectedPath(), QStringLiteral("/usr/share/applications/vlc.desktop"));
}

void TestPickers::screenshots()
{
    SCREENSHOT_FOLDER_OR_SKIP(folder)
    ApplicationPickerDialog dialog(someApplications());
    dialog.show();
    QCoreApplication::processEvents();
    QVERIFY(saveRoundedScreenshot(&dialog, FramelessDialog::kRadius,
                                  folder + QStringLiteral("/application-picker.png")));
}

QTEST_MAIN(TestPickers)
#include "tst_pickers.moc"
