#pragma once

#include "app/qml_object_list_model.h"
#include "app/vesk_app.h"
#include "camera/camera.h"
#include "save/save_job.h"
#include "save/save_manager.h"
#include "sim/camera_thread.h"
#include "take/ssd_ls_list_model.h"
#include "take/ssd_ls_sort_proxy_model.h"
#include "take/ssd_take.h"
#include "take/take.h"
#include "tests/support/end_requests.h"

#include <QSignalSpy>
#include <QTest>

#include <memory>

/** A simulated camera with a take and two recordings on its drive, to which the program is connected. */
class DriveCase
{
protected:
    static constexpr int RecordSize = 32 + 16 * 16;

    std::unique_ptr<q4sim::CameraThread> m_host;
    std::unique_ptr<Camera> m_camera;
    std::unique_ptr<SaveManager> m_manager;

    static q4sim::Config config()
    {
        q4sim::Config config;
        config.address = QHostAddress(QStringLiteral("127.0.2.28"));
        config.discovery = false;
        config.recordings = {
            {QStringLiteral("衝突 (2).vesk"),
             1700000000,
             {.first = -3, .last = 4, .res = QStringLiteral("16x16")}},
            {QStringLiteral("b.vesk"), 1700000060, {.first = 0, .last = 99, .res = QStringLiteral("16x16")}}};
        config.takes = {{.first = -10, .last = 89, .res = QStringLiteral("16x16")}};
        return config;
    }

    /** A drive that is written for 1.5 s by the whole take. */
    static q4sim::Config slowConfig()
    {
        q4sim::Config slow = config();
        slow.driveBytesPerSecond = 1000000;
        slow.takes = {{.first = 0, .last = 19, .res = QStringLiteral("320x240")}};
        return slow;
    }

    void start(const q4sim::Config &config)
    {
        m_host = std::make_unique<q4sim::CameraThread>(config);
        QCOMPARE(m_host->listen(), QString());
        m_camera = std::make_unique<Camera>(config.address, nullptr);
        m_manager = std::make_unique<SaveManager>(nullptr);
        QSignalSpy connected(m_camera.get(), &Camera::cameraConnected);
        m_camera->connectCamera();
        QTRY_COMPARE(connected.count(), 1);
        QTRY_VERIFY(take()->valuesInit());
    }

    q4sim::Camera &sim() const { return m_host->camera(); }
    Take *take() const { return qobject_cast<Take *>(m_camera->takes()->get(0)); }
    SsdTake *recording() const { return qobject_cast<SsdTake *>(m_camera->ssdTakes()->get(0)); }
    SsdLsListModel *list() const
    {
        return qobject_cast<SsdLsListModel *>(m_camera->ssdLsEntries()->sourceModel());
    }
    SaveJob *save(const QString &name, qlonglong start = -10, qlonglong count = 100)
    {
        return m_manager->createSaveJob(take(), start, count, SaveManager::SsdDest, Util::FormatVesk,
                                        Util::CodecVesk, 0.0, 0, name, QString());
    }
    void open(const QString &name)
    {
        m_camera->ssdFOpen(name);
        QTRY_COMPARE(m_camera->ssdTakes()->size(), 1);
        QTRY_VERIFY(recording()->valuesInit());
    }
    void poll()
    {
        QSignalSpy polled(m_camera.get(), &Camera::valuesPolled);
        QTRY_VERIFY(polled.count() >= 2);
    }
    QStringList listed()
    {
        QSignalSpy counted(list(), &SsdLsListModel::selectedCountChanged);
        m_camera->ssdLs();
        QStringList names;
        if (!QTest::qWaitFor([&] { return counted.count() > 0; }))
            return {QStringLiteral("no answer")};
        for (const SsdLsEntry *entry : list()->items())
            names.append(entry->name());
        return names;
    }

    void end()
    {
        m_manager.reset();
        m_camera.reset();
        m_host.reset();
        endRequests();
    }
};
