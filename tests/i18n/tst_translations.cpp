#include "Widget/Console/Ui_MainWindow.h"
#include "Widget/Translations.h"

#include <QApplication>
#include <QFile>
#include <QMainWindow>
#include <QProcess>
#include <QPushButton>
#include <QtTest>

namespace {

// The child: the console's widgets built after the program's translation step, as main() does;
// prints the texts of two navigation buttons and the words drawn in the dictation panel's badge.
int printConsoleTexts(int argc, char** argv)
{
    QApplication app(argc, argv);
    Translations::install(QString::fromLatin1(argv[2]).toInt());
    QMainWindow window;
    Ui_MainWindow ui;
    ui.setupUi(&window);
    QFile badge(QStringLiteral(":/zh_res/res_1080/Input/dictation_text0001.png"));
    badge.open(QIODevice::ReadOnly);
    const QString drawn =
        QString::fromUtf8(badge.readAll()).section(QLatin1Char('>'), -3, -3).section(QLatin1Char('<'), 0, 0);
    QTextStream(stdout) << ui.navButtons[0]->text() << '|' << ui.navButtons[2]->text() << '|' << drawn
                        << Qt::endl;
    return 0;
}

}  // namespace

class TstTranslations : public QObject {
    Q_OBJECT

private slots:
    void languageFollowsPreferenceThenSystem_data()
    {
        QTest::addColumn<int>("choice");
        QTest::addColumn<QStringList>("uiLanguages");
        QTest::addColumn<QString>("language");
        using T = Translations::Choice;
        QTest::newRow("en_US") << int(T::FollowSystem)
                               << QStringList{QStringLiteral("en-US"), QStringLiteral("en")}
                               << QStringLiteral("en");
        QTest::newRow("zh_TW") << int(T::FollowSystem)
                               << QStringList{QStringLiteral("zh-TW"), QStringLiteral("zh")}
                               << QStringLiteral("zh");
        QTest::newRow("other language")
            << int(T::FollowSystem) << QStringList{QStringLiteral("de-DE"), QStringLiteral("zh-CN")}
            << QStringLiteral("en");
        QTest::newRow("C says none") << int(T::FollowSystem)
                                     << QStringList{QStringLiteral("C"), QStringLiteral("zh-CN")}
                                     << QStringLiteral("zh");
        QTest::newRow("no language at all")
            << int(T::FollowSystem) << QStringList{QStringLiteral("C")} << QStringLiteral("zh");
        QTest::newRow("Chinese over en_US")
            << int(T::Chinese) << QStringList{QStringLiteral("en-US")} << QStringLiteral("zh");
        QTest::newRow("English over zh_CN")
            << int(T::English) << QStringList{QStringLiteral("zh-CN")} << QStringLiteral("en");
        QTest::newRow("unknown choice follows")
            << 9 << QStringList{QStringLiteral("fr-FR")} << QStringLiteral("en");
    }
    void languageFollowsPreferenceThenSystem()
    {
        QFETCH(int, choice);
        QFETCH(QStringList, uiLanguages);
        QFETCH(QString, language);
        QCOMPARE(Translations::languageFor(choice, uiLanguages), language);
    }

    // The whole path, from the locale variables to the texts on screen, in a process of its own
    // (the system locale is read once per process).
    void consoleComesUpInTheLocalesLanguage_data()
    {
        QTest::addColumn<QString>("lang");
        QTest::addColumn<int>("choice");
        QTest::addColumn<QString>("texts");
        const QString english = QStringLiteral("Home|Settings|Mandarin · S");
        const QString chinese = QStringLiteral("首页|应用设置|普通话·简");
        QTest::newRow("en_US") << QStringLiteral("en_US.UTF-8") << 0 << english;
        QTest::newRow("zh_CN") << QStringLiteral("zh_CN.UTF-8") << 0 << chinese;
        QTest::newRow("C") << QStringLiteral("C.UTF-8") << 0 << chinese;
        QTest::newRow("zh_CN, English chosen") << QStringLiteral("zh_CN.UTF-8") << 2 << english;
        QTest::newRow("en_US, Chinese chosen") << QStringLiteral("en_US.UTF-8") << 1 << chinese;
    }
    void consoleComesUpInTheLocalesLanguage()
    {
        QFETCH(QString, lang);
        QFETCH(int, choice);
        QFETCH(QString, texts);
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANGUAGE"}) {
            env.remove(QLatin1String(name));
        }
        env.insert(QStringLiteral("LANG"), lang);
        QProcess child;
        child.setProcessEnvironment(env);
        child.start(QCoreApplication::applicationFilePath(),
                    {QStringLiteral("--child"), QString::number(choice)});
        QVERIFY(child.waitForFinished(60000));
        QCOMPARE(child.exitCode(), 0);
        QCOMPARE(QString::fromUtf8(child.readAllStandardOutput()).trimmed(), texts);
    }
};

int main(int argc, char** argv)
{
    if (argc == 3 && qstrcmp(argv[1], "--child") == 0) {
        return printConsoleTexts(argc, argv);
    }
    QApplication app(argc, argv);
    TstTranslations test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_translations.moc"
