#pragma once

#include <QJsonObject>

namespace q4sim
{

/// The lens and its mount. A mounted lens is found, then set up, then ready. Focus is counted in motor
/// steps, 0 nearest to maxStep at infinity. Times are ns.
class Lens
{
public:
    /// Numbers of lens/state.
    enum State { Removed = 0, Detect = 1, Enable = 2, Ready = 3, Fail = 4 };
    static constexpr qint64 detectNs = 500000000;
    static constexpr qint64 enableNs = 1000000000;
    static constexpr int maxStep = 2000;
    static constexpr qint64 stepNs = 1000000; ///< time of one step
    static constexpr int infinity = 65535;    ///< as focus_dist

    Lens(bool mounted, int afSwitch);

    void mount(qint64 nowNs);
    void remove() { m_state = Removed; }
    void fail() { m_state = Fail; } ///< until it is mounted anew
    void setAfSwitch(int position) { m_afSwitch = position; }

    int state(qint64 nowNs) const;
    bool canFocus(qint64 nowNs) const { return state(nowNs) == Ready && m_afSwitch == 0; }

    void move(int step, qint64 nowNs);   ///< 32767 to infinity, 0 to the minimum, others by so many steps
    double distance(qint64 nowNs) const; ///< metres, 0.38 and up, or infinity
    void setFstop(double wanted);        ///< goes to the nearest stop of the lens

    /// The status document's "lens": without data until the lens is found.
    QJsonObject object(qint64 nowNs) const;

private:
    int position(qint64 nowNs) const;

    State m_state;  ///< Detect from mounting on; state() tells how far it is
    int m_afSwitch; ///< 0: the camera may focus
    qint64 m_mountNs = 0;
    double m_fstop = 4.0;
    int m_from = 400;
    int m_to = 400;
    qint64 m_startNs = 0;
};

} // namespace q4sim
