#include "image/img_adj_util.h"

#include "image/developed_frame.h"
#include "image/frame_kernel.h"
#include "image/img_adj_data.h"
#include "image/sample_depth.h"

#include <opencv2/core.hpp>

#include <algorithm>
#include <array>

namespace
{
/** Room for count samples that nobody else looks at; their content is undefined. */
quint16 *fresh(QList<quint16> &list, qsizetype count)
{
    if (!list.isDetached())
        list = {};
    list.resizeForOverwrite(count);
    return list.data();
}

uchar *fresh(QImage &picture, int width, int height, QImage::Format format)
{
    if (!picture.isDetached() || picture.size() != QSize(width, height) || picture.format() != format)
        picture = ImgAdjUtil::unpaddedImage(width, height, format);
    return picture.bits();
}

bool isUntouched(const QList<uchar> &bytes)
{
    if (bytes.size() != 65536)
        return false;
    for (qsizetype sample = 0; sample < bytes.size(); ++sample) {
        if (bytes[sample] != to8Bits(quint16(sample)))
            return false;
    }
    return true;
}

/** Channels with the same table share what is made of it: one fits into the cache much better than three. */
void makeByteTables(const ImgAdjData &adj, ByteTables &tables)
{
    const std::array luts{adj.lutR, adj.lutG, adj.lutB};
    bool changed = false;
    for (std::size_t i = 0; i < luts.size(); ++i) {
        // Lists share their content until one of them changes, so that the same place has the same content.
        const auto isSame = [lut = luts[i].constData()](const QList<quint16> &other) {
            return other.constData() == lut;
        };
        if (isSame(tables.luts[i]) && !tables.bytes[i].isEmpty())
            continue;
        tables.untouched = false;
        changed = true;
        const auto same = std::size_t(std::ranges::find_if(luts, isSame) - luts.begin());
        if (same < i) {
            tables.bytes[i] = tables.bytes[same];
        } else {
            tables.bytes[i] = QList<uchar>(luts[i].size());
            std::ranges::transform(luts[i], tables.bytes[i].begin(), to8Bits);
        }
        tables.luts[i] = luts[i];
    }
    if (changed)
        tables.untouched = std::ranges::all_of(tables.bytes, isUntouched);
}

/** Whether the adjusted image is the mosaic's pixels in their places, each through its table. */
bool staysInPlace(const ImgAdjData &adj)
{
    const bool turned = qint16(adj.rotate.toInt()) % 360 != 0 || adj.flipH.toBool() || adj.flipV.toBool();
    const bool overlaid = adj.focusPeak > 0 || adj.expAssist > 0;
    return !turned && !overlaid && adj.cropRect.isNull();
}

/**
 * A code table after white balance. The library's own scaling makes it, so that every gain rounds and
 * saturates as it does on a whole mosaic.
 */
FrameKernel::CodeTable balancedTable(const FrameKernel::CodeTable &widened, double gain)
{
    FrameKernel::CodeTable table = widened;
    cv::Mat row(1, int(table.size()), CV_16U, table.data());
    row.convertTo(row, -1, gain, 0.0);
    return table;
}

void developColor(const ImgAdjData &adj, const FrameKernel::CodeTable &widened, ByteTables &byteTables,
                  const FrameKernel::Buffers &buffers)
{
    const auto red = balancedTable(widened, adj.wbR.toDouble() * adj.wbCalR.toDouble());
    const auto green = balancedTable(widened, adj.wbG.toDouble() * adj.wbCalG.toDouble());
    const auto blue = balancedTable(widened, adj.wbB.toDouble() * adj.wbCalB.toDouble());
    const int cfa = adj.cfa.toInt();
    FrameKernel::ColorTables tables;
    tables.raw = &widened;
    // The white balance takes every mosaic but RGGB for GBRG, the demosaicing every one but GBRG for RGGB.
    if (cfa == ImgAdjUtil::CfaRGGB)
        tables.balanced = {{{&red, &green}, {&green, &blue}}};
    else
        tables.balanced = {{{&green, &blue}, {&red, &green}}};
    tables.startsWithGreen = cfa == ImgAdjUtil::CfaGBRG;
    tables.lutR = adj.lutR.constData();
    tables.lutG = adj.lutG.constData();
    tables.lutB = adj.lutB.constData();
    if (!buffers.image) {
        makeByteTables(adj, byteTables);
        tables.bytesR = byteTables.bytes[0].constData();
        tables.bytesG = byteTables.bytes[1].constData();
        tables.bytesB = byteTables.bytes[2].constData();
        tables.untouched = byteTables.untouched;
    }
    FrameKernel::developColor(tables, buffers);
}
} // namespace

void ImgAdjUtil::developFrame(const ImgAdjData &adj, QByteArrayView payload, quint32 imgSize,
                              DevelopedFrame &frame) const
{
    const qsizetype pixels = qsizetype(frame.width) * frame.height;
    QByteArray padded;
    if (payload.size() < pixels) {
        // Code 0 is sample 0.
        padded = payload.toByteArray().leftJustified(pixels, '\0');
        payload = padded;
    }
    fresh(frame.raw, std::max<qsizetype>(pixels, imgSize));

    const bool mono = adj.cfa.toInt() == CfaMono;
    const bool hasInnerPixels = frame.width > 2 && frame.height > 2;
    if (!staysInPlace(adj) || !(mono || hasInnerPixels)) {
        std::fill(frame.raw.begin(), frame.raw.end(), quint16(0));
        lut8To16Convert(payload, frame.raw);
        frame.picture = {};
        fresh(frame.marked, pixels * 3);
        fresh(frame.clean, pixels * 3);
        adjustImage(adj, frame.raw, frame.marked, frame.clean, frame.height, frame.width);
        return;
    }

    const qsizetype spare = std::min(payload.size(), frame.raw.size()) - pixels;
    const auto *codes = reinterpret_cast<const uchar *>(payload.data());
    const auto tail = std::transform(codes + pixels, codes + pixels + spare, frame.raw.begin() + pixels,
                                     [this](uchar code) { return m_lut8To16[code]; });
    std::fill(tail, frame.raw.end(), quint16(0));

    using Use = DevelopedFrame::Use;
    const bool saved = frame.use != Use::Shown;
    const bool withSamples = mono || frame.use != Use::SavedImage;
    const bool withPicture = mono || frame.use != Use::SavedVideo;
    const QImage::Format pictureFormat = withSamples ? QImage::Format_BGR888 : QImage::Format_RGB888;
    frame.marked = {};
    if (!withSamples)
        frame.clean = {};
    if (!withPicture)
        frame.picture = {};
    const FrameKernel::Buffers buffers{
        .codes = codes,
        .width = frame.width,
        .height = frame.height,
        .raw = saved && !mono ? nullptr : frame.raw.data(),
        .image = withSamples ? fresh(frame.clean, pixels * 3) : nullptr,
        .picture = withPicture ? fresh(frame.picture, frame.width, frame.height, pictureFormat) : nullptr,
        .cores = saved ? FrameKernel::Cores::One : FrameKernel::Cores::All};
    if (mono)
        FrameKernel::developMono({.raw = &m_lut8To16, .lut = adj.lutG.constData()}, buffers);
    else
        developColor(adj, m_lut8To16, frame.byteTables, buffers);
    frame.marked = frame.clean;
}
