// The menus of settings that are derived from the camera's values, and their places on the camera.

#include "camera/camera.h"
#include "camera/setting_lists.h"

#include <QDebug>
#include <QStringListModel>

using namespace Qt::StringLiterals;

void Camera::createLists()
{
    for (SettingList *list :
         {&m_resList, &m_frRateList, &m_expList, &m_trigOffsetList, &m_vidFormatList, &m_fstopList})
        list->model = new QStringListModel(this);
}

void Camera::wireLists()
{
    // Limits that are missing here change nothing by themselves; a rebuild reads them all.
    for (const CameraValue *value : {expClksValue(), expClksMinValue(), expClksMaxValue()})
        connect(value, &VeskValue::valueChanged, this, &Camera::updateExpList);
    for (const CameraValue *value : {frRateValue(), frClksValue(), frClksMaxValue(), fsyncModeValue()})
        connect(value, &VeskValue::valueChanged, this, &Camera::updateFrRateList);
    for (const CameraValue *value : {trigOffsetValue(), take1PrtnFrCntValue()})
        connect(value, &VeskValue::valueChanged, this, &Camera::updateTrigOffsetList);
    connect(resValue(), &VeskValue::valueChanged, this, &Camera::updateResIndex);
    connect(lensFstopMinValue(), &VeskValue::valueChanged, this, &Camera::updateFstopList);
    connect(lensFstopValue(), &VeskValue::valueChanged, this, &Camera::updateFstopIndex);
    connect(vidFormatValue(), &VeskValue::valueChanged, this, &Camera::updateVidFormatIndex);
    // What is shown settles once the camera has the value.
    connect(expClksValue(), &CameraValue::valueSent, this, &Camera::updateExpList);
    connect(frClksValue(), &CameraValue::valueSent, this, &Camera::updateFrRateList);
    connect(trigOffsetValue(), &CameraValue::valueSent, this, &Camera::updateTrigOffsetList);
    connect(lensFstopValue(), &CameraValue::valueSent, this, &Camera::updateFstopIndex);
}

/** Puts entries into a list, tells its change, and tells the index whether it moved or not. */
void Camera::showEntries(SettingList &list, const SettingEntries &entries, void (Camera::*listChanged)(),
                         void (Camera::*indexChanged)())
{
    if (entries.texts != list.model->stringList()) {
        list.model->setStringList(entries.texts);
        emit(this->*listChanged)();
    }
    list.index = int(entries.texts.indexOf(entries.current));
    emit(this->*indexChanged)();
}

void Camera::moveIndex(SettingList &list, const QString &current, void (Camera::*indexChanged)())
{
    const int index = int(list.model->stringList().indexOf(current));
    if (index == list.index)
        return;
    list.index = index;
    emit(this->*indexChanged)();
}

void Camera::updateExpList()
{
    if (!m_connected)
        return;
    showEntries(m_expList,
                exposureEntries({.clkFreq = clkFreqValue()->variant().toInt(),
                                 .clks = expClksValue()->variant().toInt(),
                                 .clksMin = expClksMinValue()->variant().toInt(),
                                 .clksMax = expClksMaxValue()->variant().toInt(),
                                 .clksMult = expClksMultValue()->variant().toInt(),
                                 .clksOffset = expClksOfstValue()->variant().toInt()}),
                &Camera::expListChanged, &Camera::expListIndexChanged);
}

void Camera::updateFrRateList()
{
    if (!m_connected)
        return;
    if (fsyncModeValue()->variant().toInt() == FsyncModeExt) {
        setFrRateListExt();
        return;
    }
    showEntries(m_frRateList,
                frameRateEntries({.clkFreq = clkFreqValue()->variant().toUInt(),
                                  .clks = frClksValue()->variant().toUInt(),
                                  .clksMin = frClksMinValue()->variant().toUInt(),
                                  .clksMax = frClksMaxValue()->variant().toUInt()}),
                &Camera::frRateListChanged, &Camera::frRateListIndexChanged);
}

void Camera::setFrRateListExt()
{
    qDebug() << Q_FUNC_INFO;
    showEntries(m_frRateList, externalFrameRateEntries(frRateValue()->variant().toDouble()),
                &Camera::frRateListChanged, &Camera::frRateListIndexChanged);
}

void Camera::updateTrigOffsetList()
{
    showEntries(
        m_trigOffsetList,
        triggerOffsetEntries(trigOffsetValue()->variant().toInt(), take1PrtnFrCntValue()->variant().toInt()),
        &Camera::trigOffsetListChanged, &Camera::trigOffsetListIndexChanged);
}

void Camera::updateResList(const QJsonObject &document)
{
    const QStringList entries = resolutionEntries(jsonValue({u"acq"_s, u"valid_res"_s}, document));
    if (entries != m_resList.model->stringList())
        m_resList.model->setStringList(entries);
    updateResIndex();
}

void Camera::updateResIndex()
{
    moveIndex(m_resList, resValue()->text(), &Camera::resIndexChanged);
}

void Camera::updateVidFormatList(const QJsonObject &document)
{
    const QStringList entries = videoFormatEntries(jsonValue({u"video"_s, u"valid_format"_s}, document));
    if (entries != m_vidFormatList.model->stringList())
        m_vidFormatList.model->setStringList(entries);
    updateVidFormatIndex();
}

void Camera::updateVidFormatIndex()
{
    moveIndex(m_vidFormatList, vidFormatValue()->text(), &Camera::vidFormatIndexChanged);
}

void Camera::updateFstopList()
{
    const QStringList entries =
        fstopEntries(lensFstopMinValue()->variant().toDouble(), lensFstopMaxValue()->variant().toDouble());
    if (entries != m_fstopList.model->stringList()) {
        m_fstopList.model->setStringList(entries);
        emit fstopListChanged();
    }
    updateFstopIndex();
}

void Camera::updateFstopIndex()
{
    moveIndex(m_fstopList, fstopText(lensFstopValue()->variant().toDouble()), &Camera::fstopIndexChanged);
}
