#include "sim/lens.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

namespace q4sim
{

namespace
{

// Thirds of a stop, as the lens's ring has them.
constexpr std::array stops = {2.8, 3.2,  3.5,  4.0,  4.5,  5.0,  5.6,  6.3,  7.1, 8.0,
                              9.0, 10.0, 11.0, 13.0, 14.0, 16.0, 18.0, 20.0, 22.0};

} // namespace

Lens::Lens(bool mounted, int afSwitch) : m_state(mounted ? Ready : Removed), m_afSwitch(afSwitch) {}

void Lens::mount(qint64 nowNs)
{
    m_state = Detect;
    m_mountNs = nowNs;
    m_fstop = 4.0;
    m_from = m_to = 400;
}

int Lens::state(qint64 nowNs) const
{
    if (m_state != Detect)
        return m_state;
    const qint64 since = nowNs - m_mountNs;
    if (since < detectNs)
        return Detect;
    return since < detectNs + enableNs ? Enable : Ready;
}

void Lens::move(int step, qint64 nowNs)
{
    m_from = position(nowNs);
    m_startNs = nowNs;
    if (step == 32767)
        m_to = maxStep;
    else if (step == 0)
        m_to = 0;
    else
        m_to = static_cast<int>(std::clamp<qint64>(qint64(m_from) + step, 0, maxStep));
}

int Lens::position(qint64 nowNs) const
{
    const qint64 moved = (nowNs - m_startNs) / stepNs;
    if (moved >= std::abs(m_to - m_from))
        return m_to;
    return m_from + static_cast<int>(m_to > m_from ? moved : -moved);
}

double Lens::distance(qint64 nowNs) const
{
    const int at = position(nowNs);
    if (at == maxStep)
        return infinity;
    return std::round(38.0 * maxStep / (maxStep - at)) / 100.0;
}

void Lens::setFstop(double wanted)
{
    // Light counts, so that the nearest stop is that of the smallest ratio. No lens is at 0.
    const double sought = std::log(std::max(wanted, 0.1));
    m_fstop = *std::min_element(stops.begin(), stops.end(), [sought](double a, double b) {
        return std::abs(std::log(a) - sought) < std::abs(std::log(b) - sought);
    });
}

QJsonObject Lens::object(qint64 nowNs) const
{
    const int now = state(nowNs);
    QJsonObject lens = {{"mount", "EF"}, {"state", now}, {"af_switch", m_afSwitch}};
    if (now != Enable && now != Ready) {
        for (const char *key : {"id", "focal_len_min", "focal_len_max", "focal_len", "fstop_min", "fstop_max",
                                "fstop", "focus_dist"})
            lens[QString::fromLatin1(key)] = 0;
        lens["name"] = QString();
        return lens;
    }
    lens["id"] = 61182;
    lens["name"] = QStringLiteral("24-70mm f/2.8");
    lens["focal_len_min"] = 24;
    lens["focal_len_max"] = 70;
    lens["focal_len"] = 50;
    // The "minimum" is that of the opening.
    lens["fstop_min"] = stops.back();
    lens["fstop_max"] = stops.front();
    lens["fstop"] = m_fstop;
    lens["focus_dist"] = distance(nowNs);
    return lens;
}

} // namespace q4sim
