// Names of video timings, such as 3840x2160p60, 1920x1080i50 or 1920x1080p59.94.
#pragma once

#include <string>

#include "k2v/vfe_hdmi.h"

namespace sim {

/// The record that the receiver reports for a timing. Throws CommandError for an invalid name.
K2V_HDMI_TIMING_T ParseTiming(const std::string& name);

/// The name of a timing with two digits of the rate, such as 1920x1080p59.94.
std::string TimingName(const K2V_HDMI_TIMING_T& timing);

}  // namespace sim
