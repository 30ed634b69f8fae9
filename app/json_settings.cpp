#include "app/json_settings.h"

#include <QIODevice>
#include <QJsonDocument>
#include <QJsonObject>

namespace
{
// Registered before main(), so that every QSettings object of the process can use it.
const QSettings::Format s_format =
    QSettings::registerFormat(QStringLiteral("json"), readJsonSettings, writeJsonSettings, Qt::CaseSensitive);

void readObject(const QJsonObject &object, const QString &prefix, QSettings::SettingsMap &map)
{
    for (auto it = object.begin(); it != object.end(); ++it) {
        if (it.value().isObject())
            readObject(it.value().toObject(), prefix + it.key() + QLatin1Char('/'), map);
        else
            map.insert(prefix + it.key(), it.value().toVariant());
    }
}

QJsonObject toObject(const QSettings::SettingsMap &map)
{
    QJsonObject object;
    QMap<QString, QSettings::SettingsMap> groups;
    for (auto it = map.begin(); it != map.end(); ++it) {
        const qsizetype slash = it.key().indexOf(QLatin1Char('/'));
        if (slash < 0) {
            object.insert(it.key(), QJsonValue::fromVariant(it.value()));
            continue;
        }
        groups[it.key().left(slash)].insert(it.key().mid(slash + 1), it.value());
    }
    for (auto it = groups.cbegin(); it != groups.cend(); ++it)
        object.insert(it.key(), toObject(it.value()));
    return object;
}
} // namespace

QSettings::Format jsonSettingsFormat()
{
    return s_format;
}

bool readJsonSettings(QIODevice &device, QSettings::SettingsMap &map)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(device.readAll(), &error);
    if (error.error != QJsonParseError::NoError)
        return false;
    readObject(document.object(), QString(), map);
    return true;
}

bool writeJsonSettings(QIODevice &device, const QSettings::SettingsMap &map)
{
    const QByteArray json = QJsonDocument(toObject(map)).toJson(QJsonDocument::Indented);
    return device.write(json) == json.size();
}
