#pragma once

#include <QByteArray>
#include <QHash>
#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

// The data the stand-in backend starts with: a customer row for the virtual mouse (and one
// more that uses the dictation web service), text-output hints, the version on offer, the
// open delay, a calendar phrase, and semantic parsing replies that cover every category and
// model the application acts on. URLs point at the stand-in search page.
class BackendSeed {
public:
    explicit BackendSeed(const QString& searchBase, const QString& appVersion = QStringLiteral("2.0.0"));

    QJsonArray deviceInfo() const;
    QJsonArray directUI() const;
    QJsonObject version() const;
    QJsonObject openTime() const;
    QJsonObject calendarPhrase() const;
    QStringList imageNames() const;
    // The parsing reply for an utterance; one of category 0 for anything not in the table.
    QJsonObject semanticParsing(const QString& content) const;
    QStringList semanticPhrases() const { return mSemantic.keys(); }

    // A small PNG, the same for the same name.
    static QByteArray image(const QString& name);
    static QByteArray installer(const QString& version, int kib);

    QString appVersion() const { return mAppVersion; }

private:
    QString mSearch;
    QString mAppVersion;
    QHash<QString, QJsonObject> mSemantic;
};
