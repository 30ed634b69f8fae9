#pragma once

#include "app/qml_object_list_model_base.h"
#include "app/vesk_app.h"
#include "camera/camera.h"
#include "file/vesk_file.h"
#include "save/save_job.h"
#include "save/save_job_queue.h"
#include "save/save_manager.h"
#include "sim/camera_thread.h"
#include "sim/frame_run.h"
#include "take/take.h"
#include "tests/save/save_test_address.h"

#include <QDir>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

/** A simulated camera with one take, to which the program is connected, and a folder to save into. */
struct SimSaveFixture {
    static q4sim::Config config(const q4sim::TakeOrder &order, int cfa)
    {
        q4sim::Config config;
        config.address = QHostAddress(saveTestAddress());
        config.discovery = false;
        config.cfa = cfa;
        config.takes = {order};
        return config;
    }

    explicit SimSaveFixture(const q4sim::TakeOrder &order, int cfa = 1)
        : host(config(order, cfa)), camera(std::make_unique<Camera>(host.camera().config().address, nullptr))
    {
    }

    /** Connects and waits until the take is open. */
    bool open()
    {
        if (!host.listen().isEmpty())
            return false;
        camera->connectCamera();
        const auto isOpen = [this] {
            take = qobject_cast<Take *>(camera->takes()->get(0));
            return take && take->valuesInit();
        };
        return QTest::qWaitFor(isOpen);
    }

    SaveJob *save(Util::Format format, qlonglong startFr, qlonglong frCnt,
                  const QString &name = QStringLiteral("shot"))
    {
        return manager->createSaveJob(take, startFr, frCnt, SaveManager::FileDest, format, Util::CodecVesk,
                                      30.0, 15, name, folder);
    }

    /** What the camera sends for a run of frames, straight from it. */
    QByteArray sent(qlonglong startFr, qlonglong frCnt)
    {
        const QString body = QStringLiteral(R"({"type":3,"src":0,"take":1,"start":%1,"cnt":%2})");
        const q4sim::Answer answer =
            host.camera().answer("POST", QStringLiteral("/xfer"), body.arg(startFr).arg(frCnt).toUtf8());
        return answer.run ? answer.run->readAll() : QByteArray();
    }

    /** The picture that the view shows of a frame. */
    QImage shown(qlonglong fr)
    {
        take->setSelected(true);
        take->pause();
        if (!QTest::qWaitFor([this] { return !take->frameInFlight(); }))
            return {};
        QSignalSpy shows(take->imgFrame(), &ImgFrame::imageChanged);
        take->setFr(fr, true);
        if (!QTest::qWaitFor([&] { return !shows.isEmpty() && !take->frameInFlight(); }))
            return {};
        take->setSelected(false);
        return take->imgFrame()->image();
    }

    /** The first frames of the take in the native file "source.vesk", opened as a source. */
    VeskFile *openSaved(qlonglong frCnt)
    {
        SaveJob *native = save(Util::FormatVesk, 0, frCnt, QStringLiteral("source"));
        if (!QTest::qWaitFor([native] { return native->state() == SaveJob::Done; }))
            return nullptr;
        native->open();
        return qobject_cast<VeskFile *>(VeskApp::instance()->selectedVeskObject());
    }

    using Channel = int (*)(QRgb);
    /** Three of 8 bits for each pixel, row by row. */
    static QByteArray samples(const QImage &image, Channel first, Channel second, Channel third)
    {
        QByteArray bytes;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                for (const Channel channel : {first, second, third})
                    bytes += char(channel(image.pixel(x, y)));
            }
        }
        return bytes;
    }

    void fault(const q4sim::Fault &fault) { host.camera().setFault(q4sim::Route::Xfer, fault); }

    QString path(const QString &name) const { return folder + QLatin1Char('/') + name; }
    QByteArray content(const QString &name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    QStringList files() const { return QDir(folder).entryList(QDir::Files, QDir::Name); }

    QTemporaryDir temporary;
    QString folder = temporary.path();
    q4sim::CameraThread host;
    std::unique_ptr<Camera> camera;
    Take *take = nullptr;
    /** Goes first. */
    std::unique_ptr<SaveManager> manager = std::make_unique<SaveManager>(nullptr);
};
