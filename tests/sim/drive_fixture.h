#pragma once

#include "camera_fixture.h"

#include <QJsonArray>

/// A camera of two takes whose slow drive holds two recordings, one of them with a name full of traps.
struct DriveFixture : CameraFixture {
    using CameraFixture::CameraFixture;

    void startWithRecordings()
    {
        q4sim::Config order = config();
        order.resolutions = QStringList{"16x16"};
        order.driveBytesPerSecond = 1000000;
        order.recordings = {
            {QStringLiteral("b \"c\"/d.vesk"), 1700000000, {.first = -3, .last = 4, .res = "16x16"}},
            {QStringLiteral("plain.vesk"), 1700000060, {.first = 5, .last = 5, .res = "32x16"}}};
        order.takes = {{.first = -10, .last = 89}, {.first = 0, .last = 9}};
        start(order);
    }

    /// What the drive lists, by either form of the answer.
    QStringList names(const QByteArray &body = "{\"long\": 1}")
    {
        QStringList names;
        const QJsonArray list = client().send("POST", "/ssd-ls", body).json()["ssd-ls"].toArray();
        for (const QJsonValue &entry : list)
            names.append(entry.isString() ? entry.toString() : entry["name"].toString());
        return names;
    }

    /// The number that the recording gets.
    int open(const QString &name)
    {
        const QByteArray body = QJsonDocument(QJsonObject{{"name", name}}).toJson();
        return client().send("POST", "/ssd-fopen", body).json()["take"].toInt();
    }
};
