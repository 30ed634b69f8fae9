#pragma once

#include <QByteArray>
#include <QJsonDocument>
#include <QJsonObject>

/** What every camera tells of its timing: periods and grids that the workstation divides by, and so never 0.
 */
inline QJsonObject acquisition(QJsonObject more = {})
{
    more.insert("exp_clks_mult", 1);
    more.insert("fr_clks", 50000);
    more.insert("fr_clks_min", 1000);
    return more;
}

/** The status document of a camera of that name, with nothing in it but what every camera tells. */
inline QJsonObject statusDocument(const QString &name)
{
    return {{"camera", QJsonObject{{"name", name}}}, {"acq", acquisition()}};
}

/** The same as the camera sends it. */
inline QByteArray statusBody(const QString &name)
{
    return QJsonDocument(statusDocument(name)).toJson(QJsonDocument::Compact);
}
