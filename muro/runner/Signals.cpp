#include "Signals.h"

#include <algorithm>
#include <csignal>
#include <iterator>

namespace runner {
namespace {

struct SignalName {
  int number;
  const char* name;
};
constexpr SignalName kSignals[] = {
    {SIGABRT, " SIGABRT"}, {SIGBUS, " SIGBUS"},   {SIGFPE, " SIGFPE"},   {SIGHUP, " SIGHUP"},
    {SIGILL, " SIGILL"},   {SIGINT, " SIGINT"},   {SIGKILL, " SIGKILL"}, {SIGPIPE, " SIGPIPE"},
    {SIGQUIT, " SIGQUIT"}, {SIGSEGV, " SIGSEGV"}, {SIGSYS, " SIGSYS"},   {SIGTERM, " SIGTERM"},
    {SIGTRAP, " SIGTRAP"},
};

}  // namespace

std::string SignalText(int signal) {
  const auto* row = std::ranges::find(kSignals, signal, &SignalName::number);
  return "signal " + std::to_string(signal) + (row == std::end(kSignals) ? "" : row->name);
}

}  // namespace runner
