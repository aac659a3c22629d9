// The scaler dumps no time stamps. Its input checksum equals that of the video output, whose rows
// have them.
#pragma once

#include <string>

#include "FrameEvent.h"

/// Copies the time stamps of the video output's golden rows to the scaler's events and to its shown
/// range.
void GiveScalerTime(StageEvents& scaler, const std::string& scalerGolden,
                    const std::string& voGolden);
