#include "PlayLog.h"

#include <utility>

#include "media/BoardLogs.h"

namespace player {

using sim::Processor;

PlayLog::PlayLog(std::filesystem::path root, const RunClock& clock)
    : root_(std::move(root)), clock_(clock) {}

void PlayLog::OutputStarts(const std::string& dumps) const {
  for (const Processor output : {Processor::kVideo2, Processor::kAudio2})
    Write(output, "output starts, dumps:" + dumps);
}

void PlayLog::DecoderOpens(const std::string& media) const {
  for (const Processor decoder : {Processor::kVideo1, Processor::kAudio1})
    Write(decoder, "decoder opens " + media);
}

void PlayLog::DecoderFails(const std::string& reason) const {
  Write(Processor::kVideo1, "decoder failed: " + reason);
}

void PlayLog::DecoderEnds(int64_t pictures, int64_t soundBlocks) const {
  Write(Processor::kVideo1, "decoder ends after " + std::to_string(pictures) + " pictures");
  Write(Processor::kAudio1,
        "decoder ends after " + std::to_string(soundBlocks) + " blocks of sound");
}

void PlayLog::Write(Processor processor, const std::string& text) const {
  const auto passed = std::chrono::duration<double>(std::chrono::steady_clock::now() - start_);
  const double startS = static_cast<double>(clock_.start90k) / kSecond90k;
  sim::WriteLog(root_, processor, startS + passed.count(), text);
}

}  // namespace player
