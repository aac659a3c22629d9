// The slave chip on the link: its reaction to each command of the host.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "rlink.h"
#include "rlink/Ring.h"

namespace sim {

/// What the slave reaches while it serves a command.
struct SlaveView {
  std::function<std::shared_ptr<Ring>(uint32_t handle)> ring;  // null: no such buffer
  std::function<void(const RLNK_CMD_PARAMS&)> invoke;          // a command on the host
  bool wrong;                                                  // all its data are wrong in one bit
};

/// Serves a command and fills the parameters that go out. Returns 0; K2V_RHAL_ERR_NOT_SUPPORTED for
/// an unknown command, K2V_RHAL_ERR_PARAM for parameters of other types, sizes or buffers than
/// those of the command, K2V_RHAL_ERR_FAIL where the data are not as they should be.
int ServeCommand(const SlaveView& view, RLNK_CMD_PARAMS& params);

}  // namespace sim
