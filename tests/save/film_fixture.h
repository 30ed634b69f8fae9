#pragma once

#include "tests/save/foreign_film.h"
#include "tests/save/sim_save_fixture.h"

/** A simulated camera with one take of 160 x 96 pixels, and what films of it are compared with. */
struct FilmFixture : SimSaveFixture {
    static constexpr int RecordSize = 160 * 96 + 32;

    explicit FilmFixture(int cfa, qint64 lastFr = 99, const QString &res = QStringLiteral("160x96"))
        : SimSaveFixture(q4sim::TakeOrder{.first = -20, .last = lastFr, .frameRate = 500.0, .res = res}, cfa)
    {
    }

    static Util::Format format(Util::Codec codec)
    {
        return codec == Util::CodecRaw_BGR24 || codec == Util::CodecRaw_Gray8 ? Util::FormatAvi
                                                                              : Util::FormatMp4;
    }
    static QString extension(Util::Codec codec)
    {
        return format(codec) == Util::FormatAvi ? QStringLiteral(".avi") : QStringLiteral(".mp4");
    }

    SaveJob *film(Util::Codec codec, qlonglong startFr, qlonglong frCnt,
                  const QString &name = QStringLiteral("shot"), PlaybackVeskObject *source = nullptr)
    {
        return manager->createSaveJob(source ? source : take, startFr, frCnt, SaveManager::FileDest,
                                      format(codec), codec, 29.97, 15, name, folder);
    }

    static void addCodecs()
    {
        QTest::addColumn<Util::Codec>("codec");
        QTest::newRow("BGR24") << Util::CodecRaw_BGR24;
        QTest::newRow("Gray8") << Util::CodecRaw_Gray8;
        QTest::newRow("AV1") << Util::CodecAV1_YUV420P;
        QTest::newRow("AV1 of 10 bits") << Util::CodecAV1_YUV420P10;
        QTest::newRow("H.264") << Util::CodecH264;
    }

    static QByteArray bgr(const QImage &image) { return samples(image, &qBlue, &qGreen, &qRed); }
};
