#pragma once

#include <QList>
#include <QObject>
#include <QtQmlIntegration>

/** The frame that a source's histogram is drawn from: its adjusted image without overlays. GUI thread. */
class Histogram : public QObject
{
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(QList<quint16> image READ image NOTIFY imageChanged)
    Q_PROPERTY(ushort width READ width NOTIFY widthChanged)
    Q_PROPERTY(ushort height READ height NOTIFY heightChanged)

public:
    explicit Histogram(QObject *parent = nullptr);

    /** Samples in blue, green, red order, three a pixel. */
    const QList<quint16> &image() const { return m_image; }
    ushort width() const { return m_width; }
    ushort height() const { return m_height; }

    /** Shares the list and tells all three changes. */
    void setImage(const QList<quint16> &image, ushort width, ushort height);

signals:
    void imageChanged();
    void widthChanged();
    void heightChanged();

private:
    QList<quint16> m_image;
    ushort m_width = 0;
    ushort m_height = 0;
};
