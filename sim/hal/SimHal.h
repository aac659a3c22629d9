// The simulated board as tests in the same process see it: what the harness called, and the world
// outside of the board. A forked child changes the same board; its calls are in the file named by
// CVNSIM_TRACE, not in the Calls() of its parent.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace simhal {

constexpr uint32_t kForEver = UINT32_MAX;

/// The trace lines of this process, oldest first, such as "K2V_RHAL_VSC_Open(0) = 0". Only the
/// newest 8192 are kept, and none where CVNSIM_TRACE names a file for them.
std::vector<std::string> Calls();
void ClearCalls();

/// Puts the board back to its power-on state (default: 3840x2160p60 HDR on port 0, 1920x1080p60 on
/// port 1) without programmed failures, and forgets the calls.
void Reset();

/// Does one command as in a scenario file: "plug 2 1920x1080p50", "after 3 polls 0 unplug 0".
/// Returns an empty string, or a one-line error with what is expected.
std::string Apply(const std::string& command);

/// Lets `function` answer `code` without doing anything, from its `at`-th call from now on, for
/// `times` calls. Throws std::invalid_argument when the HAL has no such function.
void Fail(const std::string& function, int code, uint32_t at = 1, uint32_t times = kForEver);

/// Plugs in a source that sends `timing`, such as "1920x1080p60" or "3840x2160p60 hdr". Throws
/// std::invalid_argument on a wrong port or timing.
void PlugHdmi(unsigned port, const std::string& timing);
void Unplug(unsigned port);

/// The board's state as text for people.
std::string State();

/// The EDID that the HAL stored last for `port` (0 to 3); empty when there was none.
std::vector<uint8_t> StoredEdid(unsigned port);

}  // namespace simhal
