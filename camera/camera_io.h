#pragma once

#include "camera/camera_value.h"

#include <QObject>
#include <QStringListModel>
#include <QtQmlIntegration>

class Camera;

/**
 * One electrical line of a camera: the signal it carries, how, and the timing fields that go with it. The
 * camera stores the setting; which combinations are legal stands in tables here, and the lists of choices
 * follow the camera's values. They are empty until update(), which runs at the connection.
 */
class CameraIO : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("")
    Q_PROPERTY(QString name READ name CONSTANT)
    Q_PROPERTY(QString token READ token CONSTANT)
    Q_PROPERTY(CameraValue *signal READ signalValue CONSTANT)
    Q_PROPERTY(QStringListModel *signalList READ signalList CONSTANT)
    Q_PROPERTY(int signalIndex READ signalIndex NOTIFY signalIndexChanged)
    Q_PROPERTY(uint clkFreq READ clkFreq NOTIFY clkFreqChanged)
    Q_PROPERTY(CameraValue *mode READ modeValue CONSTANT)
    Q_PROPERTY(QStringListModel *modeList READ modeList CONSTANT)
    Q_PROPERTY(int modeIndex READ modeIndex NOTIFY modeIndexChanged)
    Q_PROPERTY(CameraValue *polarity READ polarityValue CONSTANT)
    Q_PROPERTY(QStringListModel *polarityList READ polarityList CONSTANT)
    Q_PROPERTY(int polarityIndex READ polarityIndex NOTIFY polarityIndexChanged)
    Q_PROPERTY(CameraValue *filter READ filterValue CONSTANT)
    Q_PROPERTY(bool filterEn READ filterEn NOTIFY manipEnsChanged)
    Q_PROPERTY(CameraValue *delay READ delayValue CONSTANT)
    Q_PROPERTY(bool delayEn READ delayEn NOTIFY manipEnsChanged)
    Q_PROPERTY(CameraValue *min READ minValue CONSTANT)
    Q_PROPERTY(bool minEn READ minEn NOTIFY manipEnsChanged)
    Q_PROPERTY(CameraValue *max READ maxValue CONSTANT)
    Q_PROPERTY(bool maxEn READ maxEn NOTIFY manipEnsChanged)

public:
    enum Type { User = 0, Trig = 1 };
    Q_ENUM(Type)

    /** The camera is the parent and polls the line's values, io / token / key. */
    CameraIO(const QString &name, const QString &token, Camera *camera, Type type);

    QString name() const { return m_name; }
    QString token() const { return m_token; }
    CameraValue *signalValue() const { return m_signal; }
    QStringListModel *signalList() { return &m_signalList; }
    int signalIndex() const { return m_signalIndex; }
    /** Clock in Hz that the timing fields count in. */
    uint clkFreq() const { return m_clkFreq; }
    CameraValue *modeValue() const { return m_mode; }
    QStringListModel *modeList() { return &m_modeList; }
    int modeIndex() const { return m_modeIndex; }
    CameraValue *polarityValue() const { return m_polarity; }
    QStringListModel *polarityList() { return &m_polarityList; }
    int polarityIndex() const { return m_polarityIndex; }
    CameraValue *filterValue() const { return m_filter; }
    bool filterEn() const { return m_manipEns & FilterField; }
    CameraValue *delayValue() const { return m_delay; }
    bool delayEn() const { return m_manipEns & DelayField; }
    CameraValue *minValue() const { return m_min; }
    bool minEn() const { return m_manipEns & MinField; }
    CameraValue *maxValue() const { return m_max; }
    bool maxEn() const { return m_manipEns & MaxField; }

public slots:
    void update();
    void setSignalByIndex(int index);
    void setModeByIndex(int index);
    void setPolarityByIndex(int index);

signals:
    void signalIndexChanged();
    void clkFreqChanged();
    void modeIndexChanged();
    void polarityIndexChanged();
    void manipEnsChanged();

private slots:
    void updateSignalIndex();
    void updateModeIndex();
    void updatePolarityIndex();
    void updateManipEns();

private:
    enum TimingField : unsigned { FilterField = 1, DelayField = 2, MinField = 4, MaxField = 8 };

    CameraValue *createValue(const QString &key, int type);
    const struct SignalRow &signalRow() const;
    void updateModeList();
    void updatePolarityList();

    Camera *m_camera;
    QString m_name;
    QString m_token;
    Type m_type;
    CameraValue *m_signal;
    CameraValue *m_mode;
    CameraValue *m_polarity;
    CameraValue *m_filter;
    CameraValue *m_delay;
    CameraValue *m_min;
    CameraValue *m_max;
    QStringListModel m_signalList;
    QStringListModel m_modeList;
    QStringListModel m_polarityList;
    int m_signalIndex = -1;
    int m_modeIndex = -1;
    int m_polarityIndex = -1;
    uint m_clkFreq = 0;
    unsigned m_manipEns = 0;
};
