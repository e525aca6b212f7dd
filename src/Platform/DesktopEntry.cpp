#include "DesktopEntry.h"

#include <QFile>
#include <QStandardPaths>
#include <QTextStream>

#include <algorithm>

bool DesktopEntry::load(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        return false;
    }
    mPath = path;
    QTextStream in(&file);
    in.setCodec("UTF-8");
    bool inGroup = false;
    bool seenGroup = false;
    while (!in.atEnd()) {
        const QString line = in.readLine().trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char('#'))) {
            continue;
        }
        if (line.startsWith(QLatin1Char('['))) {
            inGroup = line == QLatin1String("[Desktop Entry]");
            seenGroup = seenGroup || inGroup;
            continue;
        }
        const int equals = line.indexOf(QLatin1Char('='));
        if (!inGroup || equals < 1) {
            continue;
        }
        const QString key = line.left(equals).trimmed();
        const QString value = unescapeValue(line.mid(equals + 1).trimmed());
        if (key.startsWith(QLatin1String("Name[")) && key.endsWith(QLatin1Char(']'))) {
            mLocalizedNames.insert(key.mid(5, key.size() - 6), value);
        } else if (key == QLatin1String("Type")) {
            mType = value;
        } else if (key == QLatin1String("Name")) {
            mName = value;
        } else if (key == QLatin1String("Icon")) {
            mIcon = value;
        } else if (key == QLatin1String("Exec")) {
            mExec = value;
        } else if (key == QLatin1String("TryExec")) {
            mTryExec = value;
        } else if (key == QLatin1String("Hidden")) {
            mHidden = value == QLatin1String("true");
        } else if (key == QLatin1String("NoDisplay")) {
            mNoDisplay = value == QLatin1String("true");
        } else if (key == QLatin1String("Terminal")) {
            mTerminal = value == QLatin1String("true");
        } else if (key == QLatin1String("OnlyShowIn")) {
            mOnlyShowIn = value.split(QLatin1Char(';'), Qt::SkipEmptyParts);
        } else if (key == QLatin1String("NotShowIn")) {
            mNotShowIn = value.split(QLatin1Char(';'), Qt::SkipEmptyParts);
        }
    }
    return seenGroup;
}

bool DesktopEntry::isLaunchable() const
{
    if (mHidden || mType != QLatin1String("Application") || command().isEmpty()) {
        return false;
    }
    // An entry for other desktops only (their settings, their panels) does not work here.
    const QStringList desktops = currentDesktops();
    auto shownIn = [&desktops](const QStringList& list) {
        return std::any_of(desktops.begin(), desktops.end(),
                           [&list](const QString& desktop) { return list.contains(desktop); });
    };
    if ((!mOnlyShowIn.isEmpty() && !shownIn(mOnlyShowIn)) || shownIn(mNotShowIn)) {
        return false;
    }
    return mTryExec.isEmpty() || !QStandardPaths::findExecutable(mTryExec).isEmpty() ||
           (mTryExec.startsWith(QLatin1Char('/')) && QFile::exists(mTryExec));
}

QStringList DesktopEntry::command() const
{
    QStringList arguments;
    if (!splitExec(mExec, mName, mIcon, mPath, &arguments)) {
        return {};
    }
    return arguments;
}

QString DesktopEntry::name(const QString& locale) const
{
    // lang_COUNTRY.ENCODING@MODIFIER: the encoding plays no part; the more specific forms
    // come first (lang_COUNTRY@MODIFIER, lang_COUNTRY, lang@MODIFIER, lang).
    QString base = locale;
    QString modifier;
    const int at = base.indexOf(QLatin1Char('@'));
    if (at >= 0) {
        modifier = base.mid(at);
        base.truncate(at);
    }
    const int dot = base.indexOf(QLatin1Char('.'));
    if (dot >= 0) {
        base.truncate(dot);
    }
    const QString language = base.section(QLatin1Char('_'), 0, 0);
    QStringList keys;
    if (!modifier.isEmpty()) {
        keys << base + modifier;
    }
    keys << base;
    if (!modifier.isEmpty()) {
        keys << language + modifier;
    }
    keys << language;
    for (const QString& key : qAsConst(keys)) {
        const auto found = mLocalizedNames.constFind(key);
        if (!key.isEmpty() && found != mLocalizedNames.constEnd()) {
            return found.value();
        }
    }
    return mName;
}

QStringList DesktopEntry::currentDesktops()
{
    return qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(QLatin1Char(':'), Qt::SkipEmptyParts);
}

QStringList DesktopEntry::readList(const QString& path, const QString& group, const QString& key)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        return {};
    }
    QTextStream in(&file);
    in.setCodec("UTF-8");
    const QString header = QLatin1Char('[') + group + QLatin1Char(']');
    bool inGroup = false;
    while (!in.atEnd()) {
        const QString line = in.readLine().trimmed();
        if (line.startsWith(QLatin1Char('['))) {
            inGroup = line == header;
            continue;
        }
        const int equals = line.indexOf(QLatin1Char('='));
        if (inGroup && equals > 0 && line.left(equals).trimmed() == key) {
            return unescapeValue(line.mid(equals + 1).trimmed()).split(QLatin1Char(';'), Qt::SkipEmptyParts);
        }
    }
    return {};
}

QString DesktopEntry::unescapeValue(const QString& value)
{
    QString out;
    out.reserve(value.size());
    for (int i = 0; i < value.size(); ++i) {
        const QChar c = value.at(i);
        if (c != QLatin1Char('\\') || i + 1 == value.size()) {
            out += c;
            continue;
        }
        const QChar next = value.at(++i);
        switch (next.unicode()) {
            case 's':
                out += QLatin1Char(' ');
                break;
            case 'n':
                out += QLatin1Char('\n');
                break;
            case 't':
                out += QLatin1Char('\t');
                break;
            case 'r':
                out += QLatin1Char('\r');
                break;
            case '\\':
                out += QLatin1Char('\\');
                break;
            default:
                // Not a value escape: it belongs to the Exec quoting, kept for splitExec.
                out += c;
                out += next;
                break;
        }
    }
    return out;
}

bool DesktopEntry::splitExec(const QString& exec, const QString& name, const QString& icon,
                             const QString& path, QStringList* arguments)
{
    arguments->clear();
    QString current;
    bool inArgument = false;
    bool quoted = false;
    for (int i = 0; i < exec.size(); ++i) {
        const QChar c = exec.at(i);
        if (quoted) {
            if (c == QLatin1Char('"')) {
                quoted = false;
            } else if (c == QLatin1Char('\\')) {
                if (i + 1 == exec.size()) {
                    return false;
                }
                current += exec.at(++i);
            } else {
                current += c;
            }
            continue;
        }
        if (c == QLatin1Char(' ') || c == QLatin1Char('\t')) {
            if (inArgument) {
                *arguments << current;
                current.clear();
                inArgument = false;
            }
            continue;
        }
        inArgument = true;
        if (c == QLatin1Char('"')) {
            quoted = true;
        } else if (c == QLatin1Char('%')) {
            if (i + 1 == exec.size()) {
                return false;
            }
            const QChar code = exec.at(++i);
            switch (code.unicode()) {
                case '%':
                    current += QLatin1Char('%');
                    break;
                case 'c':
                    current += name;
                    break;
                case 'k':
                    current += path;
                    break;
                case 'i':
                    // "--icon NAME" as two arguments, or nothing without an icon.
                    if (!icon.isEmpty()) {
                        *arguments << QStringLiteral("--icon");
                        current += icon;
                    } else {
                        inArgument = !current.isEmpty();
                    }
                    break;
                default:
                    // File and URL codes: started with no files, they stand for nothing.
                    inArgument = !current.isEmpty();
                    break;
            }
        } else {
            current += c;
        }
    }
    if (quoted) {
        return false;
    }
    if (inArgument) {
        *arguments << current;
    }
    return !arguments->isEmpty();
}
