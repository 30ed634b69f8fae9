#pragma once

#include "app/qml_object_list_model.h"
#include "save/ssd_save_job.h"
#include "take/ssd_take.h"
#include "tests/save/save_source_fixture.h"

#include <QNetworkReply>

/** Saves onto the drive; the camera's values are given by hand, poll by poll. */
class SsdSaveCase
{
protected:
    using Status = QHttpServerResponder::StatusCode;
    static constexpr int OldFirmware = 1;
    static constexpr int NewFirmware = 2;

    std::unique_ptr<SaveSourceFixture> m_fixture;
    HttpRecorder::Reply m_reply;

    /** What the next poll shows. */
    void poll(const QJsonObject &ssd) { m_fixture->camera->updateValues({{"ssd", ssd}}); }

    void setFirmware(int ssdSave)
    {
        m_fixture->camera->updateValues(
            {{"features", QJsonObject{{"ssd-save", ssdSave}}},
             {"ssd", QJsonObject{{"state", 3}, {"wr_state", 0}, {"progress", 0}}}});
        if (ssdSave == NewFirmware)
            poll({{"wr_seq", 3}});
    }

    void answerWith(const QByteArray &body, Status status = Status::Ok) { m_reply = {body, {}, status}; }

    SaveJob *create(const QString &name = QStringLiteral("shot"), PlaybackVeskObject *source = nullptr)
    {
        return m_fixture->manager->createSaveJob(source ? source : m_fixture->take, -3, 8,
                                                 SaveManager::SsdDest, Util::FormatVesk, Util::CodecVesk, 0.0,
                                                 0, name, QString());
    }

    /** A job whose answer has been worked through. */
    SaveJob *answered(const QString &name = QStringLiteral("shot"))
    {
        SaveJob *job = create(name);
        return waitForAnswer() ? job : nullptr;
    }

    static bool waitForAnswer()
    {
        return QTest::qWaitFor([] {
            return VeskApp::instance()->networkAccessManager()->findChildren<QNetworkReply *>().isEmpty();
        });
    }

    QList<HttpRecorder::Request> sent() const { return m_fixture->server.requests("POST", "/ssd-save"); }
    SaveJobQueue *queue() const { return m_fixture->camera->ssdSaveJobQueue(); }

    /** A camera of newer firmware, with a take and a drive that is ready and has counted to 3. */
    void begin()
    {
        m_fixture = std::make_unique<SaveSourceFixture>();
        QVERIFY(m_fixture->server.isListening());
        answerWith(R"({"seq":5,"name":"shot.vesk"})");
        m_fixture->server.setAnswer([this](const HttpRecorder::Request &request) {
            return request.path == "/ssd-save" ? m_reply : HttpRecorder::Reply{};
        });
        setFirmware(NewFirmware);
        QVERIFY(waitForAnswer()); // of the take's description
    }
};
