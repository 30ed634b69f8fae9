#include "tests/save/film_fixture.h"
#include "tests/save/test_images.h"
#include "tests/support/vesk_test_main.h"

#include <string>

using namespace Qt::StringLiterals;

/** Films of takes that the operator has turned. */
class TestVideoTurned : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<FilmFixture> m_fixture;

    bool openTake(int cfa, int rotate, const QString &res = u"160x96"_s)
    {
        m_fixture.reset(); // its address is needed
        m_fixture = std::make_unique<FilmFixture>(cfa, 9, res);
        const bool isOpen = m_fixture->open();
        if (isOpen)
            m_fixture->take->imgAdjModel()->setRotate(rotate);
        return isOpen;
    }

    ForeignFilm film(Util::Codec codec) const
    {
        return ForeignFilm(m_fixture->path(u"shot"_s + FilmFixture::extension(codec)));
    }

    /** The blue of blue, green and red, which of a monochrome picture is all of it. */
    static QByteArray gray(const QByteArray &bgr)
    {
        QByteArray bytes;
        for (qsizetype i = 0; i < bgr.size(); i += 3)
            bytes.append(bgr[i]);
        return bytes;
    }

private slots:
    void cleanup() { m_fixture.reset(); }

    void halfATurnWrapsTheRowsOfAFrameThatIsNotSquare_data()
    {
        QTest::addColumn<Util::Codec>("codec");
        QTest::addColumn<int>("cfa");
        QTest::newRow("BGR24") << Util::CodecRaw_BGR24 << 1;
        QTest::newRow("Gray8") << Util::CodecRaw_Gray8 << 0;
    }

    void halfATurnWrapsTheRowsOfAFrameThatIsNotSquare()
    {
        QFETCH(const Util::Codec, codec);
        QFETCH(const int, cfa);
        QVERIFY(openTake(cfa, 180));
        const QImage shown = m_fixture->shown(5);
        QCOMPARE(shown.size(), QSize(160, 96));
        SaveJob *job = m_fixture->film(codec, 5, 1);
        QTRY_COMPARE(job->state(), SaveJob::Done);
        QCOMPARE(film(codec).size(), u"96x160"_s);
        // The same pixels one after the other, in rows of 96.
        const QByteArray bgr = FilmFixture::bgr(shown);
        if (codec == Util::CodecRaw_BGR24)
            QVERIFY(film(codec).decoded(u"bgr24"_s) == bgr);
        else
            QVERIFY(film(codec).decoded(u"gray"_s) == gray(bgr));
    }

    void halfATurnOfAFrameThatIsNotSquareIsTakenByEveryCodec_data() { FilmFixture::addCodecs(); }

    void halfATurnOfAFrameThatIsNotSquareIsTakenByEveryCodec()
    {
        QFETCH(const Util::Codec, codec);
        QVERIFY(openTake(0, 180));
        const QByteArray wrapped = FilmFixture::bgr(m_fixture->shown(1));
        SaveJob *job = m_fixture->film(codec, 0, 3);
        QTRY_COMPARE_WITH_TIMEOUT(job->state(), SaveJob::Done, 30000);
        QCOMPARE(film(codec).size(), u"96x160"_s);
        QCOMPARE(film(codec).frames(), 3);
        const QByteArray second = film(codec).decoded(u"bgr24"_s).sliced(wrapped.size(), wrapped.size());
        const double like = TestImages::psnr(second, wrapped);
        QVERIFY2(like > 30.0, qPrintable(QString::number(like)));
        // Without the turn, it has the same pixels from the last to the first.
        const QByteArray unturned =
            QByteArray::fromStdString(std::string(wrapped.crbegin(), wrapped.crend()));
        QVERIFY(TestImages::psnr(second, unturned) < like - 6.0);
    }

    void largeMonochromeTakeIsTurnedPixelByPixel_data()
    {
        QTest::addColumn<Util::Codec>("codec");
        QTest::newRow("BGR24") << Util::CodecRaw_BGR24;
        QTest::newRow("Gray8") << Util::CodecRaw_Gray8;
    }

    void largeMonochromeTakeIsTurnedPixelByPixel()
    {
        QFETCH(const Util::Codec, codec);
        QVERIFY(openTake(0, 0, u"1280x720"_s));
        const QImage straight = m_fixture->shown(2);
        QCOMPARE(straight.size(), QSize(1280, 720));
        m_fixture->take->imgAdjModel()->setRotate(90);
        SaveJob *job = m_fixture->film(codec, 2, 1);
        QTRY_COMPARE_WITH_TIMEOUT(job->state(), SaveJob::Done, 30000);
        QCOMPARE(film(codec).size(), u"720x1280"_s);
        QImage turned(720, 1280, QImage::Format_RGB32);
        for (int y = 0; y < 1280; ++y) {
            for (int x = 0; x < 720; ++x)
                turned.setPixel(x, y, straight.pixel(y, 719 - x)); // clockwise
        }
        const QByteArray bgr = FilmFixture::bgr(turned);
        if (codec == Util::CodecRaw_BGR24)
            QVERIFY(film(codec).decoded(u"bgr24"_s) == bgr);
        else
            QVERIFY(film(codec).decoded(u"gray"_s) == gray(bgr));
    }
};

VESK_TEST_MAIN(TestVideoTurned)
#include "tst_video_turned.moc"
