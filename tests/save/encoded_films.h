#pragma once

#include "save/video_encoder.h"
#include "tests/save/test_images.h"

#include <QTemporaryDir>
#include <QTest>

#include <memory>

using Images = QList<QList<ushort>>;

/** Makes films of images that a test makes itself, in a folder of its own. */
class EncodedFilms
{
protected:
    struct Order {
        int width;
        int height;
        Util::Codec codec;
        double frameRate = 30.0;
        int quality = 15;
        QString name = QStringLiteral("film");

        Util::Format format() const
        {
            return codec == Util::CodecRaw_BGR24 || codec == Util::CodecRaw_Gray8 ? Util::FormatAvi
                                                                                  : Util::FormatMp4;
        }
    };

    std::unique_ptr<QTemporaryDir> m_folder;

    QString path(const Order &order) const
    {
        return m_folder->filePath(order.name + (order.format() == Util::FormatAvi ? QStringLiteral(".avi")
                                                                                  : QStringLiteral(".mp4")));
    }

    std::unique_ptr<VideoEncoder> encoder(const Order &order) const
    {
        return std::make_unique<VideoEncoder>(path(order), order.width, order.height, 32, order.format(),
                                              order.codec, order.frameRate, order.quality, nullptr);
    }

    /** Whether all went well. */
    bool encode(const Order &order, const Images &images) const
    {
        const auto film = encoder(order);
        if (!film->open())
            return false;
        for (const QList<ushort> &image : images) {
            if (film->write(image) < 0)
                return false;
        }
        return film->close();
    }

    static Images movingImages(int width, int height, int count)
    {
        Images images;
        for (int i = 0; i < count; ++i)
            images.append(TestImages::moving(width, height, i));
        return images;
    }

    static QByteArray bgr24(const Images &images)
    {
        QByteArray bytes;
        for (const QList<ushort> &image : images)
            bytes += TestImages::bgr24(image);
        return bytes;
    }

    static void addCodecs()
    {
        QTest::addColumn<int>("codec");
        QTest::newRow("BGR24") << int(Util::CodecRaw_BGR24);
        QTest::newRow("Gray8") << int(Util::CodecRaw_Gray8);
        QTest::newRow("AV1") << int(Util::CodecAV1_YUV420P);
        QTest::newRow("AV1 of 10 bits") << int(Util::CodecAV1_YUV420P10);
        QTest::newRow("H.264") << int(Util::CodecH264);
    }
};
