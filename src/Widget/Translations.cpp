#include "Widget/Translations.h"

#include "Utils/Logging.h"
#include "Utils/PreferencesUtils.h"

#include <QComboBox>

#include <QLocale>
#include <QTranslator>

// The .qm files live in a static library: nothing would pull them into the program otherwise.
static void initResources()
{
    Q_INIT_RESOURCE(translations);
}

QString Translations::languageFor(int choice, const QStringList& uiLanguages)
{
    if (choice == Chinese) {
        return QStringLiteral("zh");
    }
    if (choice == English) {
        return QStringLiteral("en");
    }
    for (const QString& language : uiLanguages) {
        if (language.isEmpty() || language == QLatin1String("C") || language == QLatin1String("POSIX")) {
            continue;
        }
        return language.startsWith(QLatin1String("zh")) ? QStringLiteral("zh") : QStringLiteral("en");
    }
    return QStringLiteral("zh");
}

void Translations::bindChoice(QComboBox* box)
{
    const int stored = PreferencesUtils::getInstance()->getUserPreferences().interfaceLanguage;
    box->setCurrentIndex(stored >= FollowSystem && stored <= English ? stored : FollowSystem);
    QObject::connect(box, qOverload<int>(&QComboBox::activated), box, [](int index) {
        UserPreferences preferences = PreferencesUtils::getInstance()->getUserPreferences();
        preferences.interfaceLanguage = index;
        PreferencesUtils::getInstance()->setUserPreferences(preferences);
    });
}

QString Translations::install(int choice)
{
    const QString language = languageFor(choice, QLocale::system().uiLanguages());
    // Pictures with words in them come in the interface's language too: resources are chosen by
    // the default locale, which would otherwise follow the system's, not the user's choice.
    QLocale::setDefault(language == QLatin1String("zh") ? QLocale(QLocale::Chinese, QLocale::China)
                                                        : QLocale(QLocale::English, QLocale::UnitedStates));
    if (language == QLatin1String("zh")) {
        return language;  // the source texts
    }
    initResources();
    auto* translator = new QTranslator(QCoreApplication::instance());
    if (!translator->load(QStringLiteral(":/translations/zorvane_") + language + QStringLiteral(".qm"))) {
        qCWarning(lcApp) << "no translation for" << language << "- the windows stay in Chinese";
        delete translator;
        QLocale::setDefault(QLocale(QLocale::Chinese, QLocale::China));
        return QStringLiteral("zh");
    }
    QCoreApplication::installTranslator(translator);
    return language;
}
