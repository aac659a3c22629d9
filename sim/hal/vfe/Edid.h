// What a source reads in the EDID of a port.
#pragma once

#include <cstdint>

#include "k2v/vfe_hdmi.h"

namespace sim {

/// Whether the CEA-861 extension lists the video identification code for 4:2:0: in a YCbCr 4:2:0
/// video data block, or among the video data with its bit set in the capability map. `edid` has
/// K2V_HDMI_EDID_BYTES.
bool Lists420(const uint8_t* edid, uint32_t code);

}  // namespace sim
