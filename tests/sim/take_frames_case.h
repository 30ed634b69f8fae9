#pragma once

#include "camera_fixture.h"
#include "take_frames.h"

/// A camera that takes are made for, of 1000 frames a second of 320x120 from 2025-03-14 09:26:53 on.
class TakeFramesCase
{
protected:
    static constexpr qint64 nsPerSecond = 1000000000;
    static constexpr int width = 320;
    static constexpr int height = 120;
    static constexpr int recordSize = 32 + width * height;

    explicit TakeFramesCase(const QString &address) : m_fix(address) {}

    void start()
    {
        q4sim::Config config = m_fix.config();
        config.resolutions = QStringList{"320x120", "320x240"};
        m_fix.start(config);
    }
    void make(const q4sim::TakeOrder &order)
    {
        QString error;
        QVERIFY2(m_fix.camera().makeTake(order, &error) > 0, qPrintable(error));
    }
    QByteArray transfer(int take, qint64 start, qint64 cnt = 1)
    {
        return m_fix.client().send("POST", "/xfer", transferOf(take, start, cnt)).body;
    }

    CameraFixture m_fix;
};
