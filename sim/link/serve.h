/// The controller behind a virtual machine's BMC socket.
#ifndef VEK_SIM_LINK_SERVE_H
#define VEK_SIM_LINK_SERVE_H

#include <string>

#include "sim/controller.h"

namespace Sim
{

/// Serves one connection at a time until SIGTERM or SIGINT.
///
/// @param where "HOST:PORT", or ":PORT" for the loopback address; port 0 takes
///     any that is free. "listening on ADDRESS:PORT" on standard output tells
///     that connections are taken.
/// @return 0, or 125 after a line on standard error.
int serve(const std::string& where, Controller& controller);

} // namespace Sim

#endif
