#pragma once

#include "app/vesk_app.h"
#include "camera/camera.h"
#include "save/save_job.h"
#include "save/save_job_queue.h"
#include "save/save_manager.h"
#include "take/take.h"
#include "tests/save/save_test_address.h"
#include "tests/support/http_recorder.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

/**
 * A camera of one take, whose requests a recorder answers, and a folder to save into. The take's frames -5 to
 * 9 have 4 x 2 pixels behind 8 bytes of metadata, which makes records of 16 bytes.
 */
struct SaveSourceFixture {
    static constexpr int RecordSize = 16;

    explicit SaveSourceFixture(const QString &address = saveTestAddress())
        : server(address), camera(std::make_unique<Camera>(QHostAddress(address), nullptr)),
          take(new Take(3, camera.get()))
    {
        camera->nameValue()->updateValue(QStringLiteral("Cam"));
        take->updateValues({{"first_fr", -5},
                            {"last_fr", 9},
                            {"fr_cnt", 15},
                            {"acq", QJsonObject{{"res", "4x2"}}},
                            {"meta", QJsonObject{{"size", 8}}}});
        take->setSavedOpened(true, false, true);
    }

    ~SaveSourceFixture()
    {
        delete manager;
        camera.reset();
    }

    static QHttpHeaders frameHeaders(const QByteArray &imgSize = "8", const QByteArray &metaSize = "8")
    {
        QHttpHeaders headers;
        headers.append("Img-Size", imgSize);
        headers.append("Meta-Size", metaSize);
        return headers;
    }

    /** Records that differ in every byte, back to back. */
    static QByteArray records(int count)
    {
        QByteArray bytes(count * RecordSize, '\0');
        for (qsizetype i = 0; i < bytes.size(); ++i)
            bytes[i] = char(i % 251);
        return bytes;
    }

    void answerFrames(const QByteArray &body, const QHttpHeaders &headers = frameHeaders(),
                      QHttpServerResponder::StatusCode status = QHttpServerResponder::StatusCode::Ok)
    {
        server.setAnswer([=](const HttpRecorder::Request &request) {
            return request.path == "/xfer" ? HttpRecorder::Reply{body, headers, status}
                                           : HttpRecorder::Reply{};
        });
    }

    /** Requests for frames wait for the test to answer them. */
    void holdFrames()
    {
        server.setHold([](const HttpRecorder::Request &request) { return request.path == "/xfer"; });
    }

    SaveJob *save(Util::Format format, qlonglong startFr, qlonglong frCnt,
                  const QString &name = QStringLiteral("shot"))
    {
        return manager->createSaveJob(take, startFr, frCnt, SaveManager::FileDest, format, Util::CodecVesk,
                                      30.0, 15, name, folder.path());
    }

    QString path(const QString &name) const { return folder.filePath(name); }
    QByteArray content(const QString &name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    QStringList files() const { return QDir(folder.path()).entryList(QDir::Files, QDir::Name); }

    HttpRecorder server;
    std::unique_ptr<Camera> camera;
    Take *take;
    QTemporaryDir folder;
    SaveManager *manager = new SaveManager(nullptr);
};
