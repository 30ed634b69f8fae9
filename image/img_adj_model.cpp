#include "image/img_adj_model.h"

#include "app/vesk_app.h"
#include "image/img_adj_util.h"

/** The table of an adjustment that nobody has touched: made once and shared, as a camera may have many takes.
 */
static const QList<quint16> &untouchedLut()
{
    static const QList<quint16> table = [] {
        const ImgAdjData untouched;
        QList<quint16> lut = untouched.lutG;
        VeskApp::instance()->imgAdjUtil()->updateLut(lut, untouched.offset.toDouble(),
                                                     untouched.gain.toDouble(), untouched.gamma.toDouble(),
                                                     untouched.contrast.toDouble());
        return lut;
    }();
    return table;
}

ImgAdjModel::ImgAdjModel(QObject *parent) : QObject(parent)
{
    m_data.lutR = m_data.lutG = m_data.lutB = untouchedLut();
}

const ImgAdjModel::ValueRows &ImgAdjModel::valueRows()
{
#define VESK_VALUE_ROW(property, key, type) ValueRow{key, type, &ImgAdjData::property},
    static constexpr ValueRows rows{{VESK_IMG_ADJ_VALUES(VESK_VALUE_ROW)}};
#undef VESK_VALUE_ROW
    return rows;
}

Util::Colors ImgAdjModel::lutColors(ValueIndex index)
{
    switch (index) {
    case ValueIndex::offset:
    case ValueIndex::gain:
    case ValueIndex::gamma:
    case ValueIndex::contrast:
        return Util::G;
    case ValueIndex::offsetR:
    case ValueIndex::gainR:
    case ValueIndex::gammaR:
    case ValueIndex::contrastR:
        return Util::R;
    case ValueIndex::offsetB:
    case ValueIndex::gainB:
    case ValueIndex::gammaB:
    case ValueIndex::contrastB:
        return Util::B;
    default:
        return {};
    }
}

void ImgAdjModel::updateLut(Util::Colors colors)
{
    const ImgAdjUtil *util = VeskApp::instance()->imgAdjUtil();
    if (colors & Util::R)
        util->updateLut(m_data.lutR, m_data.offsetR.toDouble(), m_data.gainR.toDouble(),
                        m_data.gammaR.toDouble(), m_data.contrastR.toDouble());
    if (colors & Util::G)
        util->updateLut(m_data.lutG, m_data.offset.toDouble(), m_data.gain.toDouble(),
                        m_data.gamma.toDouble(), m_data.contrast.toDouble());
    if (colors & Util::B)
        util->updateLut(m_data.lutB, m_data.offsetB.toDouble(), m_data.gainB.toDouble(),
                        m_data.gammaB.toDouble(), m_data.contrastB.toDouble());
    emit imgAdjUpdated();
}

void ImgAdjModel::reset(Util::Colors colors)
{
    // Silent: the tables are recomputed once at the end, not once a value.
    const auto resetChannel = [](VeskValue *offset, VeskValue *gain, VeskValue *gamma, VeskValue *contrast) {
        offset->setValue(0.0, true);
        gain->setValue(1.0, true);
        gamma->setValue(1.0, true);
        contrast->setValue(0.0, true);
    };
    if (colors & Util::R)
        resetChannel(offsetR(), gainR(), gammaR(), contrastR());
    if (colors & Util::G)
        resetChannel(offset(), gain(), gamma(), contrast());
    if (colors & Util::B)
        resetChannel(offsetB(), gainB(), gammaB(), contrastB());
    updateLut(colors);
}

void ImgAdjModel::setTransform(QVariant &field, const QVariant &value, void (ImgAdjModel::*changed)())
{
    if (field == value)
        return;
    field = value;
    emit(this->*changed)();
    emit imgAdjUpdated();
}

void ImgAdjModel::setRotate(const QVariant &rotate)
{
    setTransform(m_data.rotate, rotate, &ImgAdjModel::rotateChanged);
}

void ImgAdjModel::setFlipH(const QVariant &flipH)
{
    setTransform(m_data.flipH, flipH, &ImgAdjModel::flipHChanged);
}

void ImgAdjModel::setFlipV(const QVariant &flipV)
{
    setTransform(m_data.flipV, flipV, &ImgAdjModel::flipVChanged);
}

void ImgAdjModel::setExpAssist(ExpAssist expAssist)
{
    if (m_data.expAssist == expAssist)
        return;
    m_data.expAssist = expAssist;
    emit expAssistChanged();
    emit imgAdjUpdated();
    if (expAssist > 0)
        setFocusPeak(FocusPeakDisabled);
}

void ImgAdjModel::setFocusPeak(FocusPeak focusPeak)
{
    if (m_data.focusPeak == focusPeak)
        return;
    m_data.focusPeak = focusPeak;
    emit focusPeakChanged();
    emit imgAdjUpdated();
    if (focusPeak >= FocusPeakLow && m_data.expAssist != ExpAssistDisabled) {
        m_data.expAssist = ExpAssistDisabled;
        emit expAssistChanged();
        emit imgAdjUpdated();
    }
}
