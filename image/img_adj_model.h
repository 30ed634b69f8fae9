#pragma once

#include "app/util.h"
#include "camera/vesk_value.h"
#include "image/img_adj_data.h"

#include <QObject>
#include <QtQmlIntegration>

#include <array>

/** The values of an adjustment in order of creation: ROW(property, key below "adjust", type). */
// clang-format off
#define VESK_IMG_ADJ_VALUES(ROW) \
    ROW(offset,    "offset",     QMetaType::Double) \
    ROW(offsetR,   "offset_r",   QMetaType::Double) \
    ROW(offsetB,   "offset_b",   QMetaType::Double) \
    ROW(gain,      "gain",       QMetaType::Double) \
    ROW(gainR,     "gain_r",     QMetaType::Double) \
    ROW(gainB,     "gain_b",     QMetaType::Double) \
    ROW(gamma,     "gamma",      QMetaType::Double) \
    ROW(gammaR,    "gamma_r",    QMetaType::Double) \
    ROW(gammaB,    "gamma_b",    QMetaType::Double) \
    ROW(contrast,  "contrast",   QMetaType::Double) \
    ROW(contrastR, "contrast_r", QMetaType::Double) \
    ROW(contrastB, "contrast_b", QMetaType::Double) \
    ROW(cfa,       "cfa",        QMetaType::Int) \
    ROW(wbR,       "wb_r",       QMetaType::Double) \
    ROW(wbG,       "wb_g",       QMetaType::Double) \
    ROW(wbB,       "wb_b",       QMetaType::Double) \
    ROW(wbCalR,    "wb_cal_r",   QMetaType::Double) \
    ROW(wbCalG,    "wb_cal_g",   QMetaType::Double) \
    ROW(wbCalB,    "wb_cal_b",   QMetaType::Double)
// clang-format on

/**
 * Every value that decides how one source's frames look. A subclass makes the persistent values where its
 * source keeps them; transform and overlays live in the model alone and are forgotten with it. GUI thread.
 */
class ImgAdjModel : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("")
#define VESK_VALUE_PROPERTY(property, key, type) Q_PROPERTY(VeskValue *property READ property CONSTANT)
    VESK_IMG_ADJ_VALUES(VESK_VALUE_PROPERTY)
#undef VESK_VALUE_PROPERTY
    Q_PROPERTY(QVariant rotate READ rotate WRITE setRotate NOTIFY rotateChanged)
    Q_PROPERTY(QVariant flipH READ flipH WRITE setFlipH NOTIFY flipHChanged)
    Q_PROPERTY(QVariant flipV READ flipV WRITE setFlipV NOTIFY flipVChanged)
    Q_PROPERTY(ExpAssist expAssist READ expAssist WRITE setExpAssist NOTIFY expAssistChanged)
    Q_PROPERTY(FocusPeak focusPeak READ focusPeak WRITE setFocusPeak NOTIFY focusPeakChanged)

public:
    enum ExpAssist { ExpAssistDisabled = 0, ExpAssistEnabled = 1 };
    Q_ENUM(ExpAssist)
    enum FocusPeak { FocusPeakDisabled = 0, FocusPeakLow = 1, FocusPeakMed = 2, FocusPeakHigh = 3 };
    Q_ENUM(FocusPeak)

    explicit ImgAdjModel(QObject *parent);

#define VESK_VALUE_ACCESSOR(property, key, type)                                                             \
    VeskValue *property() const { return m_values[std::size_t(ValueIndex::property)]; }
    VESK_IMG_ADJ_VALUES(VESK_VALUE_ACCESSOR)
#undef VESK_VALUE_ACCESSOR

    /** What the engine reads. Lives as long as the model; a copy keeps the look of its moment. */
    const ImgAdjData &data() const { return m_data; }

    /** Degrees clockwise. */
    const QVariant &rotate() const { return m_data.rotate; }
    const QVariant &flipH() const { return m_data.flipH; }
    const QVariant &flipV() const { return m_data.flipV; }
    void setRotate(const QVariant &rotate);
    void setFlipH(const QVariant &flipH);
    void setFlipV(const QVariant &flipV);

    /** The two overlays exclude each other: to enable one disables the other. */
    ExpAssist expAssist() const { return ExpAssist(m_data.expAssist); }
    FocusPeak focusPeak() const { return FocusPeak(m_data.focusPeak); }
    void setExpAssist(ExpAssist expAssist);
    void setFocusPeak(FocusPeak focusPeak);

    /** Puts offset, gain, gamma and contrast of some channels back to their defaults. */
    Q_INVOKABLE void reset(Util::Colors colors = Util::AllColors);

public slots:
    /** Recomputes the tables of some channels. */
    void updateLut(Util::Colors colors = Util::AllColors);

signals:
    /** The look has changed: a picture at rest should be made anew. */
    void imgAdjUpdated();
    void rotateChanged();
    void flipHChanged();
    void flipVChanged();
    void expAssistChanged();
    void focusPeakChanged();

protected:
    enum class ValueIndex : std::size_t {
#define VESK_VALUE_INDEX(property, key, type) property,
        VESK_IMG_ADJ_VALUES(VESK_VALUE_INDEX)
#undef VESK_VALUE_INDEX
            count
    };
    struct ValueRow {
        const char *key;
        int type;
        QVariant ImgAdjData::*field;
    };
    static constexpr std::size_t ValueCount = std::size_t(ValueIndex::count);
    using ValueRows = std::array<ValueRow, ValueCount>;

    static const ValueRows &valueRows();
    /** Channel whose table depends on a value; none for those that need no table. */
    static Util::Colors lutColors(ValueIndex index);

    /** Makes the values of a source's own class, as children of the source, and makes them tell changes. */
    template <class Value, class Source> void createValues(Source *source);

private:
    void setTransform(QVariant &field, const QVariant &value, void (ImgAdjModel::*changed)());

    ImgAdjData m_data;
    std::array<VeskValue *, ValueCount> m_values{};
};

template <class Value, class Source> void ImgAdjModel::createValues(Source *source)
{
    for (std::size_t i = 0; i < ValueCount; ++i) {
        const ValueRow &row = valueRows()[i];
        auto *value = new Value({QStringLiteral("adjust"), QString::fromLatin1(row.key)}, row.type, source,
                                &(m_data.*row.field), {QString()});
        source->appendValue(value);
        m_values[i] = value;

        const Util::Colors colors = lutColors(ValueIndex(i));
        if (!colors) {
            connect(value, &VeskValue::valueChanged, this, &ImgAdjModel::imgAdjUpdated);
            continue;
        }
        connect(value, &VeskValue::valueChangedLocal, this, [this, colors] { updateLut(colors); });
        connect(value, &Value::valueChangedRemote, this, [this, colors] { updateLut(colors); });
    }
}
