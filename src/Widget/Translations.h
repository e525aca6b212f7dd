#pragma once

#include <QCoreApplication>
#include <QStringList>

class QComboBox;

// The language the windows speak. The texts in the code are Chinese; English comes from the
// translation compiled into the resources.
namespace Translations {

// The preference's values (UserPreferences::interfaceLanguage).
enum Choice { FollowSystem = 0, Chinese = 1, English = 2 };

// "zh" or "en": the preference, or, following the system, the first of the user's languages
// that says one (C and POSIX say none): Chinese for any zh, English for any other, Chinese
// when none does.
QString languageFor(int choice, const QStringList& uiLanguages);

// Shows the stored choice in the box (rows in Choice order) and stores the user's choice; it
// takes effect at the next start.
void bindChoice(QComboBox* box);

// Installs the translation for the choice on the application, before any window is made;
// returns the language installed.
QString install(int choice);

}  // namespace Translations
