// The slave chip on the link: its reaction to each command of the host.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "rlink.h"
#include "rlink/Ring.h"

namespace sim {

/// What the slave can use while it serves a command.
struct SlaveView {
  std::function<std::shared_ptr<Ring>(uint32_t handle)> ring;  // null: no such buffer
  std::function<void(const RLNK_CMD_PARAMS&)> invoke;          // a command on the host
  bool wrong;                                                  // all its data have one wrong bit
};

/// Serves a command and fills in the output parameters. Returns 0; K2V_RHAL_ERR_NOT_SUPPORTED for
/// an unknown command, K2V_RHAL_ERR_PARAM for parameters with types, sizes or buffers that do not
/// fit the command, K2V_RHAL_ERR_FAIL if the data are not as expected.
int ServeCommand(const SlaveView& view, RLNK_CMD_PARAMS& params);

}  // namespace sim
