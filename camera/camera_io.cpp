#include "camera/camera_io.h"

#include "camera/camera.h"
#include "camera/io_tables.h"

using namespace Qt::StringLiterals;

CameraIO::CameraIO(const QString &name, const QString &token, Camera *camera, Type type)
    : QObject(camera), m_camera(camera), m_name(name), m_token(token), m_type(type),
      m_signal(createValue(u"signal"_s, QMetaType::QString)), m_mode(createValue(u"mode"_s, QMetaType::Int)),
      m_polarity(createValue(u"polarity"_s, QMetaType::Int)),
      m_filter(createValue(u"filter"_s, QMetaType::Int)), m_delay(createValue(u"delay"_s, QMetaType::Int)),
      m_min(createValue(u"min"_s, QMetaType::Int)), m_max(createValue(u"max"_s, QMetaType::Int))
{
    connect(m_signal, &VeskValue::valueChanged, this, &CameraIO::updateSignalIndex);
    connect(m_mode, &VeskValue::valueChanged, this, &CameraIO::updateModeIndex);
    connect(m_polarity, &VeskValue::valueChanged, this, &CameraIO::updatePolarityIndex);
}

CameraValue *CameraIO::createValue(const QString &key, int type)
{
    auto *value = new CameraValue({u"io"_s, m_token, key}, type, m_camera);
    m_camera->appendValue(value);
    return value;
}

static std::span<const SignalRow> signalRows(CameraIO::Type type)
{
    return type == CameraIO::Trig ? triggerSignalRows() : userSignalRows();
}

const SignalRow &CameraIO::signalRow() const
{
    return findSignal(signalRows(m_type), m_signal->text());
}

void CameraIO::update()
{
    QStringList labels;
    for (const SignalRow &row : signalRows(m_type))
        labels << row.label;
    m_signalList.setStringList(labels);
    updateSignalIndex();
    updateModeList();
    updatePolarityList();
}

void CameraIO::updateSignalIndex()
{
    m_signalIndex = int(m_signalList.stringList().indexOf(signalRow().label));
    emit signalIndexChanged();
    updateModeList();
    updatePolarityList();
    // The camera's clock is read here only: a later change of it shows at the next change of the signal.
    const uint clkFreq =
        signalRow().clock == IoClock::Camera ? m_camera->clkFreqValue()->variant().toUInt() : IoFixedClkFreq;
    if (clkFreq == m_clkFreq)
        return;
    m_clkFreq = clkFreq;
    emit clkFreqChanged();
}

void CameraIO::updateModeList()
{
    QStringList labels;
    for (const ModeRow &row : modeRows()) {
        if (row.key == 0 || (row.key & signalRow().modes))
            labels << row.label;
    }
    m_modeList.setStringList(labels);
    updateModeIndex();
}

void CameraIO::updateModeIndex()
{
    m_modeIndex = int(m_modeList.stringList().indexOf(findMode(m_mode->variant().toInt()).label));
    emit modeIndexChanged();
    updateManipEns();
    updatePolarityList();
}

void CameraIO::updateManipEns()
{
    m_manipEns = signalRow().timingFields & findMode(m_mode->variant().toInt()).timingFields;
    emit manipEnsChanged();
}

void CameraIO::updatePolarityList()
{
    const SignalRow &signal = signalRow();
    const bool level = signal.polarityStyle == PolarityStyle::Level;
    // The trailing edges exist only on a plain input.
    const bool plainInput = m_mode->variant().toInt() == 1;
    QStringList labels;
    for (const PolarityRow &row : polarityRows()) {
        const bool offered = row.key == 0   ? true
                             : row.key == 1 ? bool(signal.polarities & 1)
                             : row.key == 2 ? !level && plainInput && (signal.polarities & 2)
                                            : !level && plainInput && signal.polarities == 3;
        if (offered && signal.polarityStyle != PolarityStyle::None)
            labels << (level ? row.levelLabel : row.edgeLabel);
    }
    m_polarityList.setStringList(labels);
    updatePolarityIndex();
}

void CameraIO::updatePolarityIndex()
{
    const PolarityRow &row = findPolarity(m_polarity->variant().toInt());
    const QStringList labels = m_polarityList.stringList();
    switch (signalRow().polarityStyle) {
    case PolarityStyle::Level:
        m_polarityIndex = int(labels.indexOf(row.levelLabel));
        break;
    case PolarityStyle::Edge:
        m_polarityIndex = int(labels.indexOf(row.edgeLabel));
        break;
    case PolarityStyle::None:
        m_polarityIndex = 0;
        break;
    }
    emit polarityIndexChanged();
}

void CameraIO::setSignalByIndex(int index)
{
    const QString label = m_signalList.stringList().value(index);
    for (const SignalRow &row : signalRows(m_type)) {
        if (row.label == label)
            m_signal->setValue(QString(row.token), false);
    }
}

void CameraIO::setModeByIndex(int index)
{
    const QString label = m_modeList.stringList().value(index);
    for (const ModeRow &row : modeRows()) {
        if (row.label == label)
            m_mode->setValue(row.key, false);
    }
}

void CameraIO::setPolarityByIndex(int index)
{
    const QString label = m_polarityList.stringList().value(index);
    if (label.isEmpty()) {
        m_polarity->setValue(0, false);
        return;
    }
    for (const PolarityRow &row : polarityRows()) {
        if (row.levelLabel == label || row.edgeLabel == label)
            m_polarity->setValue(row.key, false);
    }
}
