#include "image/row_steps.h"
#include "image/sample_depth.h"
#include "tests/support/vesk_test_main.h"

#include <QRandomGenerator>
#include <QTest>

#include <opencv2/core/utility.hpp>

#include <algorithm>
#include <vector>

using RowSteps::Vectors;

/** Steps of all vectors that this processor has do the same, and keep to their buffers. */
class TestRowSteps : public QObject
{
    Q_OBJECT

private slots:
    void everyVectorOfTheProcessorIsUsed();
    void fastestAreThoseOfTheWidestVectors();
    void noneButTheCommonAreLeftWhenOpenCvIsToldSo();
    void loadTakesEachCodeThroughTheTableOfItsColumn_data() { rows(); }
    void loadTakesEachCodeThroughTheTableOfItsColumn();
    void demosaicRoundsTheMeansOfItsNeighbours_data() { rows(); }
    void demosaicRoundsTheMeansOfItsNeighbours();
    void demosaicRoundsFourOfAllRestsOnce_data() { rows(); }
    void demosaicRoundsFourOfAllRestsOnce();
    void reduceMakesPixelsOfThreeRows_data() { rows(); }
    void reduceMakesPixelsOfThreeRows();
    void reduceRoundsEverySample_data() { rows(); }
    void reduceRoundsEverySample();

private:
    static void rows();
};

namespace
{
using Samples = std::vector<quint16>;

/** With as much room behind the count as the steps may use, and no more. */
Samples noise(std::size_t count, quint32 seed)
{
    QRandomGenerator random(seed);
    Samples samples(count + RowSteps::Spare);
    std::ranges::generate(samples, [&random] { return quint16(random.bounded(65536)); });
    return samples;
}

/** A buffer whose end nobody may write beyond. */
template <class Item> class Fenced
{
public:
    explicit Fenced(std::size_t count) : m_items(count + Guards, Item(Guard)), m_count(count) {}

    Item *data() { return m_items.data(); }
    const Item &operator[](std::size_t i) const { return m_items[i]; }
    bool isWhole() const
    {
        return std::all_of(m_items.begin() + qptrdiff(m_count), m_items.end(),
                           [](Item item) { return item == Item(Guard); });
    }

private:
    static constexpr std::size_t Guards = 128;
    static constexpr int Guard = 0xa7;

    std::vector<Item> m_items;
    std::size_t m_count;
};

struct Colors {
    explicit Colors(std::size_t width)
        : green(width + RowSteps::Spare), own(width + RowSteps::Spare), other(width + RowSteps::Spare)
    {
    }
    RowSteps::ColorRow row() { return {green.data(), own.data(), other.data()}; }
    bool areWhole() const { return green.isWhole() && own.isWhole() && other.isWhole(); }

    Fenced<quint16> green;
    Fenced<quint16> own;
    Fenced<quint16> other;
};

int roundedMean(const std::vector<int> &samples)
{
    int sum = 0;
    for (const int sample : samples)
        sum += sample;
    const int count = int(samples.size());
    return (2 * sum + count) / (2 * count);
}
} // namespace

void TestRowSteps::rows()
{
    QTest::addColumn<const RowSteps::Steps *>("steps");
    QTest::newRow("common") << RowSteps::with(Vectors::Common);
    if (const RowSteps::Steps *steps = RowSteps::with(Vectors::Avx2))
        QTest::newRow("AVX2") << steps;
    if (const RowSteps::Steps *steps = RowSteps::with(Vectors::Avx512))
        QTest::newRow("AVX-512") << steps;
}

void TestRowSteps::everyVectorOfTheProcessorIsUsed()
{
    QVERIFY(RowSteps::with(Vectors::Common));
#ifdef __x86_64__
    QCOMPARE(RowSteps::with(Vectors::Avx2) != nullptr, __builtin_cpu_supports("avx2") != 0);
    QCOMPARE(RowSteps::with(Vectors::Avx512) != nullptr, __builtin_cpu_supports("avx512bw") != 0);
#else
    QVERIFY(!RowSteps::with(Vectors::Avx2));
    QVERIFY(!RowSteps::with(Vectors::Avx512));
#endif
}

void TestRowSteps::fastestAreThoseOfTheWidestVectors()
{
    const RowSteps::Steps *widest = RowSteps::with(Vectors::Common);
    QVERIFY(widest);
    for (const Vectors vectors : {Vectors::Avx2, Vectors::Avx512}) {
        if (const RowSteps::Steps *steps = RowSteps::with(vectors))
            widest = steps;
    }
    QCOMPARE(&RowSteps::fastest(), widest);
}

void TestRowSteps::noneButTheCommonAreLeftWhenOpenCvIsToldSo()
{
    cv::setUseOptimized(false);
    const RowSteps::Steps *fastest = &RowSteps::fastest();
    const RowSteps::Steps *avx2 = RowSteps::with(Vectors::Avx2);
    const RowSteps::Steps *avx512 = RowSteps::with(Vectors::Avx512);
    cv::setUseOptimized(true);
    QCOMPARE(fastest, RowSteps::with(Vectors::Common));
    QVERIFY(!avx2);
    QVERIFY(!avx512);
}

void TestRowSteps::loadTakesEachCodeThroughTheTableOfItsColumn()
{
    QFETCH(const RowSteps::Steps *, steps);
    QRandomGenerator random(1);
    FrameKernel::CodeTable even;
    FrameKernel::CodeTable odd;
    for (FrameKernel::CodeTable *table : {&even, &odd})
        std::ranges::generate(*table, [&random] { return quint16(random.bounded(65536)); });
    for (std::size_t count = 1; count < 600; ++count) {
        std::vector<uchar> codes(count);
        for (std::size_t x = 0; x < count; ++x)
            codes[x] = uchar(x * 7 + count);
        Fenced<quint16> samples(count + RowSteps::Spare);
        steps->load(codes.data(), even, odd, count, samples.data());
        QVERIFY(samples.isWhole());
        for (std::size_t x = 0; x < count; ++x)
            QCOMPARE(samples[x], (x % 2 == 0 ? even : odd)[codes[x]]);
    }
}

void TestRowSteps::demosaicRoundsTheMeansOfItsNeighbours()
{
    QFETCH(const RowSteps::Steps *, steps);
    for (std::size_t width = 3; width < 140; ++width) {
        const Samples a = noise(width, 1);
        const Samples c = noise(width, 2);
        const Samples b = noise(width, 3);
        for (const bool startsWithGreen : {false, true}) {
            Colors colors(width);
            steps->demosaic({a.data(), c.data(), b.data()}, width - 1, startsWithGreen, colors.row());
            QVERIFY(colors.areWhole());
            for (std::size_t x = 1; x + 1 < width; ++x) {
                const int beside = roundedMean({c[x - 1], c[x + 1]});
                const int over = roundedMean({a[x], b[x]});
                const int cross = roundedMean({c[x - 1], c[x + 1], a[x], b[x]});
                const int corners = roundedMean({a[x - 1], a[x + 1], b[x - 1], b[x + 1]});
                const bool onGreen = (x % 2 == 0) == startsWithGreen;
                QCOMPARE(int(colors.green[x]), onGreen ? int(c[x]) : cross);
                QCOMPARE(int(colors.own[x]), onGreen ? beside : int(c[x]));
                QCOMPARE(int(colors.other[x]), onGreen ? over : corners);
            }
        }
    }
}

/** All that the two lower bits of four samples can be, low down, in the middle and at the very top. */
void TestRowSteps::demosaicRoundsFourOfAllRestsOnce()
{
    QFETCH(const RowSteps::Steps *, steps);
    for (const int base : {0, 32766, 65532}) {
        for (int rests = 0; rests < 256; ++rests) {
            const auto rest = [&](int place) { return quint16(base + (rests >> 2 * place & 3)); };
            Samples a(3 + RowSteps::Spare);
            Samples c(a.size());
            Samples b(a.size());
            a[0] = a[1] = rest(0);
            a[2] = c[0] = rest(1);
            b[0] = c[2] = rest(2);
            b[2] = b[1] = rest(3);
            Colors colors(3);
            steps->demosaic({a.data(), c.data(), b.data()}, 2, true, colors.row());
            const int expected = roundedMean({rest(0), rest(1), rest(2), rest(3)});
            QCOMPARE(int(colors.green[1]), expected);
            QCOMPARE(int(colors.other[1]), expected);
        }
    }
}

void TestRowSteps::reduceMakesPixelsOfThreeRows()
{
    QFETCH(const RowSteps::Steps *, steps);
    if (!steps->reduce) {
        QCOMPARE(steps, RowSteps::with(Vectors::Common));
        return;
    }
    for (std::size_t count = 1; count < 200; ++count) {
        const Samples all = noise(3 * count, 1);
        const Samples first(all.begin(), all.begin() + qptrdiff(count)); // no room behind
        const Samples second(all.begin() + qptrdiff(count), all.begin() + qptrdiff(2 * count));
        const Samples third(all.begin() + qptrdiff(2 * count), all.begin() + qptrdiff(3 * count));
        Fenced<uchar> pixels(3 * count);
        steps->reduce(first.data(), second.data(), third.data(), count, pixels.data());
        QVERIFY(pixels.isWhole());
        for (std::size_t x = 0; x < count; ++x) {
            QCOMPARE(pixels[3 * x], to8Bits(first[x]));
            QCOMPARE(pixels[3 * x + 1], to8Bits(second[x]));
            QCOMPARE(pixels[3 * x + 2], to8Bits(third[x]));
        }
    }
}

void TestRowSteps::reduceRoundsEverySample()
{
    QFETCH(const RowSteps::Steps *, steps);
    if (!steps->reduce) {
        QCOMPARE(steps, RowSteps::with(Vectors::Common));
        return;
    }
    Samples all(65536);
    for (std::size_t i = 0; i < all.size(); ++i)
        all[i] = quint16(i);
    std::vector<uchar> pixels(3 * all.size());
    steps->reduce(all.data(), all.data(), all.data(), all.size(), pixels.data());
    // Nearest to v * 255 / 65535 = v / 257.
    for (std::size_t i = 0; i < pixels.size(); ++i)
        QCOMPARE(int(pixels[i]), int(2 * (i / 3) + 257) / 514);
}

VESK_TEST_MAIN(TestRowSteps)
#include "tst_row_steps.moc"
