// Access to the simulated board for tests in the same process: the HAL calls of the harness, and
// the world around the board. A forked child shares the board; its calls are in the file named by
// CVNSIM_TRACE, not in the Calls() of its parent.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace simhal {

constexpr uint32_t kForEver = UINT32_MAX;

/// The trace lines of this process, oldest first, such as "K2V_RHAL_VSC_Open(0) = 0". Only the
/// newest 8192 are kept, and none if CVNSIM_TRACE names a file for them.
std::vector<std::string> Calls();
void ClearCalls();

/// Resets the board to its power-on state (default: 3840x2160p60 HDR on port 0, 1920x1080p60 on
/// port 1) without programmed failures, and clears the calls.
void Reset();

/// Executes one command as in a scenario file: "plug 2 1920x1080p50", "after 3 polls 0 unplug 0".
/// Returns an empty string, or a one-line error that says what is expected.
std::string Apply(const std::string& command);

/// Makes `function` return `code` without doing anything, starting with its `at`-th call from now,
/// for `times` calls. Throws std::invalid_argument if the HAL has no such function.
void Fail(const std::string& function, int code, uint32_t at = 1, uint32_t times = kForEver);

/// Plugs in a source that sends `timing`, such as "1920x1080p60" or "3840x2160p60 hdr". Throws
/// std::invalid_argument if the port or the timing is invalid.
void PlugHdmi(unsigned port, const std::string& timing);
void Unplug(unsigned port);

/// The board's state as human-readable text.
std::string State();

/// The EDID last stored through the HAL for `port` (0 to 3); empty if there is none.
std::vector<uint8_t> StoredEdid(unsigned port);

}  // namespace simhal
