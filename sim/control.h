#pragma once

#include "sim/request.h"

namespace q4sim
{

class Camera;

/// The control path, by which tests outside of the process steer a camera and see what it received:
///   POST   /sim/fault  sets a fault, see readFault()
///   DELETE /sim/fault  clears all faults
///   GET    /sim/log    {"requests":[{"method","path","headers","body","time_ns"}, ...]}
///   DELETE /sim/log    forgets them
///   GET    /sim/state  {"status": the status document, "requests": count, "frame": live frame number,
///                      "upload": see Camera::upload()}
///   POST   /sim/force  {"path":PATH,"value":VALUE} shows VALUE at PATH from now on; without "value" no more
///   POST   /sim/take   makes a take, see readTakeOrder(); answers {"take": its number}, refuses with 400
///   POST   /sim/hardware  plugs, pulls, breaks, and locks and drops takes, see Camera::operate()
Answer control(Camera &camera, const Request &request);

} // namespace q4sim
