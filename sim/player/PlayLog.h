// What the board's processors log during a playback.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>

#include "StageFacts.h"

namespace sim {
enum class Processor;
}

namespace player {

/// Writes to the logs of the board whose root directory is given, by the board's clock.
class PlayLog {
 public:
  PlayLog(std::filesystem::path root, const RunClock& clock);

  void OutputStarts(const std::string& dumps) const;
  void DecoderOpens(const std::string& media) const;
  void DecoderFails(const std::string& reason) const;
  void DecoderEnds(int64_t pictures, int64_t soundBlocks) const;

 private:
  void Write(sim::Processor processor, const std::string& text) const;

  const std::filesystem::path root_;
  const RunClock clock_;
  const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

}  // namespace player
