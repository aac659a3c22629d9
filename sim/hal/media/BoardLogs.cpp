#include "media/BoardLogs.h"

#include <cstdio>
#include <fstream>
#include <string>

namespace sim {
namespace {

// By Processor.
constexpr const char* kNames[] = {"acpu1", "acpu2", "vcpu1", "vcpu2"};

}  // namespace

void WriteLog(const std::filesystem::path& root, Processor processor, double seconds,
              std::string_view text) {
  const std::string name = kNames[static_cast<size_t>(processor)];
  char time[32];
  std::snprintf(time, sizeof(time), "[%12.6f] ", seconds);
  const std::string line = time + name + ": " + std::string(text) + '\n';
  // Opening fails if there is no directory.
  for (const std::string& log : {name, std::string("logfile")})
    std::ofstream(root / ("tmp/var/log/dpq_" + log + ".log"), std::ios::app) << line;
}

void LogPowerOn(const std::filesystem::path& root) {
  for (const Processor each :
       {Processor::kAudio1, Processor::kAudio2, Processor::kVideo1, Processor::kVideo2})
    WriteLog(root, each, 0, "started");
}

}  // namespace sim
