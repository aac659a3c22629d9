// The logs that the board's processors write to /tmp/var/log.
#pragma once

#include <filesystem>
#include <string_view>

namespace sim {

/// Two processors for sound, two for pictures.
enum class Processor { kAudio1, kAudio2, kVideo1, kVideo2 };

/// Appends a line to the processor's log and to the log of all processors. `root` is the board's
/// root directory, `seconds` counts from the power-on. A board without a log directory keeps no
/// logs.
void WriteLog(const std::filesystem::path& root, Processor processor, double seconds,
              std::string_view text);

/// Makes each processor log that it has started.
void LogPowerOn(const std::filesystem::path& root);

}  // namespace sim
