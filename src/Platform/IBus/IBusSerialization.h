#pragma once

#include <QDBusVariant>
#include <QString>

// ibus-daemon's objects as they travel on its bus: each is a structure that starts with its type
// name and a dictionary of attachments, followed by its own fields in a fixed order. The daemon
// reads every field it expects, so a structure must have exactly the fields of the daemon's
// version (Debian 12: 1.5.27; the layout has held since 1.5.0).
namespace IBusSerialization {

// An engine's description, with the keyboard layout left to the user ("default").
struct EngineDescription {
    QString name;
    QString longName;
    QString description;
    QString language;
};

// IBusComponent: name, description, version, licence, author, homepage, command, text domain,
// then its observed paths (none) and its engines (one).
QDBusVariant component(const QString& name, const QString& description, const EngineDescription& engine);
// IBusText: the text and an empty IBusAttrList.
QDBusVariant text(const QString& text);
// The text of an IBusText as the daemon sends it (a variant); empty if it is none.
QString textOf(const QVariant& ibusText);

}  // namespace IBusSerialization
