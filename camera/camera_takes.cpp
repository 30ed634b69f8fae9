#include "camera/camera.h"

#include "app/qml_object_list_model.h"
#include "take/saved_take_model.h"
#include "take/take.h"

#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>

/** No camera divides its memory further; a status that says so is not worth the objects. */
static constexpr int MaxPartitions = 1024;

void Camera::createTakes()
{
    m_takes = new QQmlObjectListModel<Take>(this);
    m_savedTakes = new SavedTakeModel(m_takes, this);
}

/** As many as a camera can have, whatever it tells. */
int Camera::partitions() const
{
    return std::clamp(prtnCntValue()->variant().toInt(), 0, MaxPartitions);
}

int Camera::takesAvailable() const
{
    return partitions() - m_savedTakes->rowCount();
}

void Camera::updateTakes(const QJsonObject &document, bool init)
{
    const QJsonObject acq = document.value(QLatin1StringView("acq")).toObject();
    const QVariantList saved = acq.value(QLatin1StringView("saved_takes")).toArray().toVariantList();
    const QVariantList locked = acq.value(QLatin1StringView("locked_takes")).toArray().toVariantList();
    const int activeTakeId = activeTakeIdValue()->variant().toInt();

    if (m_takes->size() != partitions())
        replaceTakes(partitions());
    Take *activeTake = nullptr;
    for (int i = 0; i < m_takes->size(); ++i) {
        auto *take = qobject_cast<Take *>(m_takes->get(i));
        take->setSavedOpened(saved.contains(take->takeId()), false, init);
        take->setActive(take->takeId() == activeTakeId);
        take->setLocked(locked.contains(take->takeId()));
        if (take->active())
            activeTake = take;
    }
    if (std::exchange(m_activeTake, activeTake) != activeTake)
        emit activeTakeChanged();
}

void Camera::replaceTakes(int count)
{
    unselectTakes(*m_takes);
    for (int i = 0; i < m_takes->size(); ++i)
        m_takes->get(i)->deleteLater();
    m_takes->clear();
    for (int takeId = 1; takeId <= count; ++takeId) {
        auto *take = new Take(takeId, this);
        connect(take, &AbstractTake::savedOpenedChanged, this, &Camera::resetSavedTakeFilter);
        m_takes->append(take);
    }
}

/** Before they go, so that the view of the one that is shown goes before its take. */
void Camera::unselectTakes(const QQmlObjectListModelBase &takes)
{
    for (int i = 0; i < takes.size(); ++i)
        emit qobject_cast<AbstractTake *>(takes.get(i))->shouldBeUnselected();
}

void Camera::resetSavedTakeFilter()
{
    m_savedTakes->invalidate();
}
