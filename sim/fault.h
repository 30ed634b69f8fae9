#pragma once

#include "sim/request.h"

#include <QJsonObject>
#include <QStringList>

#include <optional>

namespace q4sim
{

/// Kinds of requests that faults are set for.
enum class Route {
    Status,
    Xfer,
    Takes,    ///< descriptions of partitions
    SsdTakes, ///< descriptions of opened recordings
    Bref,
    Put,
    SsdLs,
    SsdFopen,
    SsdFclose,
    SsdSave,
    Command, ///< all others
    Q4fw
};

enum class FaultKind {
    None,
    Delay,         ///< answers after `ms`
    Drip,          ///< sends `bytes` bytes (0: 1000) every `ms`
    CloseMidBody,  ///< closes the connection after `bytes` bytes of the body (0: half of it)
    ShortBody,     ///< cuts the last `bytes` bytes (0: half) off; Content-Length tells the truth
    LyingSizes,    ///< `headers` in place of the true ones (empty: all sizes doubled)
    Http500,       ///< refuses with 500 and the request has no effect
    InvalidJson,   ///< a body that is no JSON
    TruncatedJson, ///< the body without its last `bytes` bytes (0: half)
    WrongTypes,  ///< numbers become texts, other values the number 1; at `keys` or everywhere, but see below
    MissingKeys, ///< without `keys` (empty: an empty object), but see below
    EmptyReply,  ///< 200 with an empty body
    NoAnswer,    ///< the connection stays open, nothing is sent and the request has no effect
    Vanish,      ///< the take asked for is gone, locked or not: 404 for its frames, or with `bytes` a
                 ///< connection that breaks after so many bytes of them; its description has become empty.
                 ///< A request to the drive finds it pulled out, or with `bytes` pulls it out behind itself
    CloseUpload, ///< breaks the connection when `bytes` bytes (0: `percent`) of a firmware upload are in
    SlowUpload   ///< reads `bytes` bytes (0: 64 KiB) of a firmware upload every `ms`
};

// Three values of the status outlive WrongTypes always, and MissingKeys until a status with them has been
// sent: acq/exp_clks_mult, acq/fr_clks and acq/fr_clks_min. Clients divide by them, and by contract a camera
// reports them from the first status on, as whole numbers above 0; their registers have hard-wired minima,
// so that no state of the firmware can show anything else. A client that breaks without them is not at fault.

struct Fault {
    FaultKind kind = FaultKind::None;
    int ms = 0;
    qint64 bytes = 0;
    int percent = 50;      ///< of the body; 0 to 100
    int count = -1;        ///< requests that are spoilt before the fault ends; -1: until it is cleared
    QStringList keys = {}; ///< paths such as "acq/exp_clks"
    QList<QPair<QByteArray, QByteArray>> headers = {};
    int take = 0;              ///< spares the frames and descriptions of all other takes; 0: none
    QList<qint64> frames = {}; ///< spares all transfers that hold none of these frames of a take
};

Route routeOf(const Request &request);

/// True for a command to the drive, and for description and frames of a recording on it.
bool concernsDrive(const Request &request);

/// Take that a request asks for by its path or as a transfer; 0 when it asks for none.
int takeOf(const Request &request);

/// True when `take` and `frames` of a fault do not spare a request.
bool concerns(const Fault &fault, const Request &request);

/// Of a fault that closes or cuts at frames of its own: puts it into the middle of the first of them.
void aim(Fault *fault, const Request &request, const Answer &answer);

/// Bytes that an answer's body will have.
qint64 bodySize(const Answer &answer);

/// Applies a fault that lies in status, headers or body; the others leave the answer alone. `knownDivisors`
/// tells that a status with the three values above has been sent before.
void spoil(const Fault &fault, Answer *answer, bool knownDivisors);

/// True for a status that shows the three values above.
bool showsDivisors(const Answer &answer);

/// True for the two kinds of an upload that comes in; all others spoil an answer.
bool spoilsArrival(FaultKind kind);

/// True when the camera does not carry out a request under this fault.
bool hasNoEffect(FaultKind kind);

/// Reads {"on":ROUTE,"kind":KIND} with the optional keys "ms", "bytes", "percent", "count", "take", "keys"
/// (array), "frames" (array) and "headers" (object). ROUTE and KIND are the enumeration's names in lower
/// case, words joined by "-". Sets `error` when it returns none.
struct FaultOrder {
    Route route;
    Fault fault;
};
std::optional<FaultOrder> readFault(const QJsonObject &order, QString *error);

} // namespace q4sim
