#pragma once

#include <QDebug>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantMap>

// Stands in for the desktop's notification server on a private bus; records every Notify.
class FakeNotifications : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    struct Call {
        QString app;
        uint replaces = 0;
        QString icon;
        QString summary;
        QString body;
        QStringList actions;
        QVariantMap hints;
        int expire = 0;
    };
    QList<Call> calls;
    uint lastGiven = 40;

public slots:
    uint Notify(const QString& app, uint replaces, const QString& icon, const QString& summary,
                const QString& body, const QStringList& actions, const QVariantMap& hints, int expire)
    {
        calls << Call{app, replaces, icon, summary, body, actions, hints, expire};
        qInfo().noquote() << "Notify" << app << replaces << icon << summary << body << actions << hints
                          << expire;
        // As servers do: a replaced notification keeps its id.
        return replaces != 0 ? replaces : ++lastGiven;
    }
};
