#pragma once

#include "http_client.h"

#include "sim/camera.h"

#include <QTest>

/// A camera on a loopback address, whose time stands still until it is moved, and a client for it.
class CameraFixture
{
public:
    explicit CameraFixture(const QString &address) : m_address(address)
    {
        m_config.address = QHostAddress(address);
        m_config.discovery = false;
    }

    /// Switches a camera on, in place of the last one.
    void start(const q4sim::Config &config)
    {
        m_client.reset();
        m_camera.reset();
        m_clock = std::make_shared<q4sim::ManualClock>(1741944413LL * 1000000000);
        q4sim::Config started = config;
        started.clock = m_clock;
        m_camera = std::make_unique<q4sim::Camera>(started);
        const QString error = m_camera->listen();
        QVERIFY2(error.isEmpty(), qPrintable(error));
        m_client = std::make_unique<HttpClient>(m_address);
    }

    /// What the camera can be started with, its address filled in.
    q4sim::Config config() const { return m_config; }
    q4sim::Camera &camera() { return *m_camera; }
    HttpClient &client() { return *m_client; }
    void wait(std::chrono::nanoseconds time) { m_clock->advance(time); }

    QJsonValue value(const char *path) const { return m_camera->value(QString::fromLatin1(path)); }
    int number(const char *path) const { return value(path).toInt(-100); }
    QString text(const char *path) const { return value(path).toString(); }
    int put(const char *path, const QByteArray &body)
    {
        return m_client->put(QString::fromLatin1(path), body);
    }
    int post(const char *path, const QByteArray &body = {})
    {
        return m_client->post(QString::fromLatin1(path), body);
    }

private:
    QString m_address;
    q4sim::Config m_config;
    std::shared_ptr<q4sim::ManualClock> m_clock;
    std::unique_ptr<q4sim::Camera> m_camera;
    std::unique_ptr<HttpClient> m_client;
};
