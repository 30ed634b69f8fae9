#include "camera/camera.h"

#include "app/arithmetic.h"
#include "app/qml_object_list_model.h"
#include "app/vesk_app.h"
#include "take/ssd_ls_list_model.h"
#include "take/ssd_ls_sort_proxy_model.h"
#include "take/ssd_take.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QNetworkReply>

void Camera::createDrive()
{
    m_ssdTakes = new QQmlObjectListModel<SsdTake>(this);
    m_ssdLsList = new SsdLsListModel(this);
    m_ssdLsEntries = new SsdLsSortProxyModel(m_ssdLsList, this);
}

void Camera::ssdLs()
{
    QNetworkReply *reply = postCommand(QStringLiteral("/ssd-ls"), "{\"long\": 1}");
    connect(reply, &QNetworkReply::finished, this, &Camera::ssdLsFinished);
    connect(this, &QObject::destroyed, reply, &QObject::deleteLater);
}

void Camera::ssdUmount()
{
    sendCommand(QStringLiteral("/ssd-umount"));
}

void Camera::ssdFormat(const QString &name)
{
    sendCommand(QStringLiteral("/ssd-format"), QStringLiteral("{\"name\":\"%1\"}").arg(name).toUtf8());
}

/** Null for an element that is no entry. */
static SsdLsEntry *newEntry(int entryId, const QJsonValue &element, QObject *parent)
{
    if (element.isString())
        return new SsdLsEntry(entryId, element.toString(), 0, 0, true, parent);
    if (!element.isObject())
        return nullptr;
    const QJsonObject object = element.toObject();
    return new SsdLsEntry(entryId, object.value(QLatin1StringView("name")).toString(),
                          wholePart(object.value(QLatin1StringView("size")).toDouble()),
                          wholePart(object.value(QLatin1StringView("time")).toDouble()), false, parent);
}

QList<SsdLsEntry *> Camera::ssdLsEntries(const QJsonArray &elements, QObject *parent)
{
    QList<SsdLsEntry *> entries;
    for (const QJsonValue &element : elements) {
        if (SsdLsEntry *entry = newEntry(int(entries.size()), element, parent))
            entries.append(entry);
    }
    return entries;
}

void Camera::ssdLsFinished()
{
    auto *reply = qobject_cast<QNetworkReply *>(sender());
    QJsonDocument document;
    const bool usable = readReply(reply, &document);
    reply->deleteLater();
    if (document.isNull())
        return;
    if (!usable)
        qDebug() << "ssdLsFinished error";
    const QJsonArray elements =
        usable ? document.object().value(QLatin1StringView("ssd-ls")).toArray() : QJsonArray();
    // They stay children of the camera when the list is filled anew, and go with it.
    m_ssdLsList->fill(ssdLsEntries(elements, this));
}

void Camera::ssdFOpen()
{
    if (const SsdLsEntry *entry = m_ssdLsList->firstSelected())
        ssdFOpen(entry->name());
}

void Camera::ssdFOpen(const QString &name)
{
    auto *take = new SsdTake(name, this);
    qDebug().noquote() << Q_FUNC_INFO << name;
    take->fopen();
    connect(take, &SsdTake::fopenFinished, this, &Camera::ssdFOpenFinished);
}

void Camera::ssdFOpenFinished()
{
    auto *take = qobject_cast<SsdTake *>(sender());
    qDebug() << Q_FUNC_INFO;
    if (!take->savedOpened()) {
        take->deleteLater();
        return;
    }
    m_ssdTakes->append(take);
    VeskApp::instance()->setSelectedVeskObject(take);
}

void Camera::updateSsdTakes(const QJsonObject &document, bool init)
{
    const QJsonValue open =
        document.value(QLatin1StringView("ssd")).toObject().value(QLatin1StringView("open_takes"));
    if (!open.isArray())
        return;
    const QVariantList numbers = open.toArray().toVariantList();
    for (int i = m_ssdTakes->size() - 1; i >= 0; --i) {
        auto *take = qobject_cast<SsdTake *>(m_ssdTakes->get(i));
        if (!take->knownToStatus() || numbers.contains(take->takeId()))
            continue;
        take->setSavedOpened(false, false, init);
        emit take->shouldBeUnselected();
        m_ssdTakes->remove(take);
        take->deleteLater();
    }
}

void Camera::expectSsdTakes()
{
    for (int i = 0; i < m_ssdTakes->size(); ++i)
        qobject_cast<SsdTake *>(m_ssdTakes->get(i))->setKnownToStatus();
}
