#include "Platform/IBus/IBusSerialization.h"

#include <QDBusArgument>
#include <QVariantMap>

namespace IBusSerialization {
namespace {

// The type name and the (empty) attachments every serialised object starts with.
void beginObject(QDBusArgument& argument, const char* type)
{
    argument.beginStructure();
    argument << QString::fromLatin1(type) << QVariantMap();
}

void emptyVariantArray(QDBusArgument& argument)
{
    argument.beginArray(qMetaTypeId<QDBusVariant>());
    argument.endArray();
}

QDBusVariant wrap(const QDBusArgument& argument)
{
    return QDBusVariant(QVariant::fromValue(argument));
}

QDBusVariant engineDescription(const EngineDescription& engine)
{
    QDBusArgument argument;
    beginObject(argument, "IBusEngineDesc");
    // name, long name, description, language, licence, author, icon, layout
    argument << engine.name << engine.longName << engine.description << engine.language << QString()
             << QString() << QString() << QStringLiteral("default");
    argument << 0u;  // rank
    // hot keys, symbol, setup command, layout variant, layout option, version, text domain,
    // icon property key
    for (int i = 0; i < 8; ++i) {
        argument << QString();
    }
    argument.endStructure();
    return wrap(argument);
}

}  // namespace

QDBusVariant component(const QString& name, const QString& description, const EngineDescription& engine)
{
    QDBusArgument argument;
    beginObject(argument, "IBusComponent");
    argument << name << description;
    for (int i = 0; i < 6; ++i) {
        argument << QString();
    }
    emptyVariantArray(argument);
    argument.beginArray(qMetaTypeId<QDBusVariant>());
    argument << engineDescription(engine);
    argument.endArray();
    argument.endStructure();
    return wrap(argument);
}

QDBusVariant text(const QString& text)
{
    QDBusArgument attributes;
    beginObject(attributes, "IBusAttrList");
    emptyVariantArray(attributes);
    attributes.endStructure();

    QDBusArgument argument;
    beginObject(argument, "IBusText");
    argument << text << wrap(attributes);
    argument.endStructure();
    return wrap(argument);
}

QString textOf(const QVariant& ibusText)
{
    QVariant value = ibusText;
    while (value.userType() == qMetaTypeId<QDBusVariant>()) {
        value = value.value<QDBusVariant>().variant();
    }
    if (value.userType() != qMetaTypeId<QDBusArgument>()) {
        return QString();
    }
    const QDBusArgument argument = value.value<QDBusArgument>();
    QString type;
    QVariantMap attachments;
    QString text;
    argument.beginStructure();
    argument >> type >> attachments >> text;
    return type == QLatin1String("IBusText") ? text : QString();
}

}  // namespace IBusSerialization
