// EDIDs that the tests store in the HDMI ports.
#pragma once

#include <cstdint>

#include "k2v/vfe_hdmi.h"

/// The 256-byte EDID for a port, 0 to 3: a 160 cm panel, preferred timing 3840x2160, second timing
/// 1920x1080. The images only differ in the CEC physical address: 3.0.0.0, 2.0.0.0, 1.0.0.0 and, on
/// port 3, 1.0.0.0 again.
const uint8_t* HdmiEdid(unsigned port);

/// Stores every port's EDID and raises the hot-plug lines. Results of the HAL are ignored.
void StoreHdmiEdids();
