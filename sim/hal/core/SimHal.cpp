#include "SimHal.h"

#include <iterator>
#include <stdexcept>

#include "core/Areas.h"
#include "core/SharedBoard.h"
#include "core/Trace.h"

namespace simhal {
namespace {

void ApplyOrThrow(const std::string& command) {
  if (const std::string error = Apply(command); !error.empty()) throw std::invalid_argument(error);
}

}  // namespace

std::vector<std::string> Calls() {
  const sim::BoardLock board;
  return sim::NotedLines();
}

void ClearCalls() {
  const sim::BoardLock board;
  sim::ForgetNotedLines();
}

void Reset() {
  const sim::BoardLock board;
  sim::ResetBoard(*board);
  sim::ForgetNotedLines();
}

std::string Apply(const std::string& command) {
  const sim::BoardLock board;
  try {
    sim::Apply(*board, command);
  } catch (const sim::CommandError& error) {
    return error.what();
  }
  return {};
}

void Fail(const std::string& function, int code, uint32_t at, uint32_t times) {
  const std::string limit = times == kForEver ? "" : " --times " + std::to_string(times);
  ApplyOrThrow("fail " + function + ' ' + std::to_string(code) + " --at " + std::to_string(at) +
               limit);
}

void PlugHdmi(unsigned port, const std::string& timing) {
  ApplyOrThrow("plug " + std::to_string(port) + ' ' + timing);
}

void Unplug(unsigned port) {
  ApplyOrThrow("unplug " + std::to_string(port));
}

std::string State() {
  const sim::BoardLock board;
  return sim::Describe(*board);
}

std::vector<uint8_t> StoredEdid(unsigned port) {
  const sim::BoardLock board;
  if (port >= sim::kPortCount || !board->hdmi.ports[port].edidWritten) return {};
  const sim::HdmiPort& source = board->hdmi.ports[port];
  return {std::begin(source.edid), std::end(source.edid)};
}

}  // namespace simhal
