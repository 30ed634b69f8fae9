#pragma once

#include "app/qml_object_list_model.h"
#include "app/vesk_app.h"
#include "camera/camera.h"
#include "save/save_job.h"
#include "save/save_manager.h"
#include "sim/camera_thread.h"
#include "take/take.h"
#include "tests/support/camera_polls.h"
#include "tests/support/end_requests.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPointer>
#include <QSignalSpy>
#include <QTest>

#include <memory>

/** A simulated camera that is told to record, and the settings by which the program saves what it records. */
class AutosaveCase
{
protected:
    static constexpr auto Address = "127.0.2.26";
    static constexpr int RecordSize = 32 + 16 * 16;

    std::unique_ptr<q4sim::CameraThread> m_host;
    std::unique_ptr<Camera> m_camera;

    static q4sim::Config config()
    {
        q4sim::Config config;
        config.address = QHostAddress(QString::fromLatin1(Address));
        config.discovery = false;
        config.resolutions = QStringList{QStringLiteral("16x16")};
        config.recordings = {};
        return config;
    }

    static void setSettings(bool autosave, bool restart, const QVariant &fileName = QVariant())
    {
        VeskApp::instance()->setSetting(QStringLiteral("vesk/x-autosave"), autosave);
        VeskApp::instance()->setSetting(QStringLiteral("vesk/x-autosave_restart"), restart);
        if (fileName.isValid())
            VeskApp::instance()->setSetting(QStringLiteral("vesk/x-autosave_filename"), fileName);
    }

    static QQmlObjectListModelBase *jobs() { return VeskApp::instance()->saveManager()->saveJobs(); }
    static SaveJob *job(int row) { return qobject_cast<SaveJob *>(jobs()->get(row)); }

    void start(const q4sim::Config &config)
    {
        m_host = std::make_unique<q4sim::CameraThread>(config);
        QCOMPARE(m_host->listen(), QString());
        // Short takes: ten frames behind the trigger.
        QCOMPARE(sim().answer("PUT", QStringLiteral("/acq/trig_offset"), "10").status, 200);
        m_camera = std::make_unique<Camera>(config.address, nullptr);
        QVERIFY(connects(*m_camera));
    }

    q4sim::Camera &sim() const { return m_host->camera(); }
    qsizetype sent(const char *path) const
    {
        return sim().requests("POST", QString::fromLatin1(path)).size();
    }
    int state() const { return sim().value(QStringLiteral("acq/state")).toInt(); }

    /** The trigger comes by a wire, not by the operator. */
    void triggerRecording()
    {
        QTRY_COMPARE(state(), 2);
        QCOMPARE(sim().answer("POST", QStringLiteral("/trig")).status, 200);
    }

    /** The camera has answered two polls, and what they started is under way. */
    void poll()
    {
        QVERIFY(polls(*m_camera));
    }

    QJsonArray recordings() const
    {
        const QByteArray list = sim().answer("POST", QStringLiteral("/ssd-ls"), "{\"long\": 1}").body;
        return QJsonDocument::fromJson(list).object()["ssd-ls"].toArray();
    }

    /** Forgets the saves, the settings and the requests. */
    void end()
    {
        m_camera.reset();
        m_host.reset();
        setSettings(false, false);
        VeskApp::instance()->settings()->remove(QStringLiteral("vesk/x-autosave_filename"));
        while (!jobs()->isEmpty()) {
            const QPointer<SaveJob> ended = job(0);
            ended->setState(SaveJob::Done);
            VeskApp::instance()->saveManager()->removeSaveJob(ended);
            QTRY_VERIFY(!ended);
        }
        endRequests();
    }
};
