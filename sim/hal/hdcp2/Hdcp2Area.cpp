// The command for HDCP 2 authentications, and their part of the state text.
#include <algorithm>
#include <iterator>
#include <ostream>
#include <string>
#include <string_view>

#include "core/Areas.h"

namespace sim {
namespace {

// By Hdcp2Fault.
constexpr std::string_view kFaults[] = {"ok",           "no-keys", "revoked",   "bad-cert",
                                        "wrong-h",      "wrong-l", "wrong-ks",  "wrong-v",
                                        "wrong-m",      "silent",  "late-cert", "late-h",
                                        "late-pairing", "late-l",  "late-list", "late-m"};

std::string FaultNames() {
  std::string names;
  for (const std::string_view name : kFaults) names.append(names.empty() ? "" : ", ").append(name);
  return names;
}

std::size_t ParsePort(const std::string& word) {
  return static_cast<std::size_t>(
      ParseNumber(word, "port", 0, static_cast<int64_t>(kPortCount) - 1));
}

Action ParseDownstream(const Words& words) {
  if (words.size() < 4) RefuseCount(words, "PORT downstream DEVICES DEPTH");
  const Hdcp2Downstream downstream = {
      static_cast<unsigned>(ParseNumber(words[2], "number of devices", 0, 127)),
      static_cast<unsigned>(ParseNumber(words[3], "number of levels", 0, 7))};
  return [downstream, port = ParsePort(words[0])](Board& board) {
    board.hdcp2.ports[port].downstream = downstream;
  };
}

Action ParseHdcp2(const Words& words) {
  if (words[1] == "downstream") return ParseDownstream(words);
  const auto* const found = std::ranges::find(kFaults, words[1]);
  if (found == std::end(kFaults))
    RefuseWord("unknown fault", words[1], FaultNames() + ", downstream");
  const int64_t times =
      words.size() > 2 ? ParseNumber(words[2], "number of times", 1, INT32_MAX) : 0;
  const Hdcp2Order order = {static_cast<Hdcp2Fault>(found - std::begin(kFaults)),
                            static_cast<uint32_t>(times)};
  return
      [order, port = ParsePort(words[0])](Board& board) { board.hdcp2.ports[port].order = order; };
}

constexpr Command kCommands[] = {
    {"hdcp2", "PORT FAULT [TIMES] | PORT downstream DEVICES DEPTH",
     "set the outcome of HDCP 2 authentications on the port: ok, no-keys, revoked, bad-cert,\n"
     "      wrong-h, wrong-l, wrong-ks, wrong-v, wrong-m, silent, late-cert, late-h, "
     "late-pairing,\n"
     "      late-l, late-list, late-m; or the devices downstream of the board as a repeater",
     2, 4, ParseHdcp2},
};

bool IsWorthTelling(const Hdcp2Port& port) {
  return port.status.eState != K2V_HDCP2_STATE_IDLE || port.order.fault != Hdcp2Fault::kNone ||
         port.downstream.devices > 0;
}

void DescribeOrder(const Hdcp2Port& port, std::ostream& out) {
  if (port.order.fault != Hdcp2Fault::kNone) {
    out << ", " << kFaults[static_cast<unsigned>(port.order.fault)];
    if (port.order.timesLeft > 0) out << ' ' << port.order.timesLeft << " times";
  }
  if (port.downstream.devices > 0) {
    out << ", " << port.downstream.devices << " devices on " << port.downstream.depth
        << " levels downstream";
  }
}

void Describe(const Board& board, std::ostream& out) {
  static constexpr const char* kStates[] = {"idle",          "keys exchanged",  "locality checked",
                                            "authenticated", "streams settled", "failed"};
  const Hdcp2& receiver = board.hdcp2;
  out << "hdcp 2: " << (receiver.initialized ? "initialised" : "not initialised") << ", keys "
      << (receiver.loaded ? "loaded" : "not loaded") << '\n';
  for (std::size_t i = 0; i < kPortCount; ++i) {
    const Hdcp2Port& port = receiver.ports[i];
    if (!IsWorthTelling(port)) continue;
    out << "  port " << i << ": " << kStates[port.status.eState];
    if (port.status.eReason != 0) out << ", reason " << port.status.eReason;
    DescribeOrder(port, out);
    out << '\n';
  }
}

}  // namespace

constinit const Area kHdcp2Area = {kCommands, Describe};

}  // namespace sim
