// The scaler dumps no time stamps. The checksum of its input is that of the video output, whose
// rows have them.
#pragma once

#include <string>

#include "FrameEvent.h"

/// Gives the events of the scaler, and what it shows, the time stamps of the video output's golden
/// rows.
void GiveScalerTime(StageEvents& scaler, const std::string& scalerGolden,
                    const std::string& voGolden);
