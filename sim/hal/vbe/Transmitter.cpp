// HDMI transmitter: devices at its ports, and notifications.
#include <atomic>
#include <chrono>
#include <thread>

#include "core/Areas.h"
#include "core/Call.h"
#include "k2v/vbe.h"

namespace sim {

// Found by argument-dependent lookup from CallText.h, so not in the unnamed namespace.
static void Put(CallText& out, K2V_VBE_HDMI_CONNECTION_CALLBACK callback) {
  out.text << (callback == nullptr ? "NULL" : "{callback}");
}

namespace {

using Callback = K2V_VBE_HDMI_CONNECTION_CALLBACK;

constexpr auto kWatchPeriod = std::chrono::milliseconds(20);

std::atomic<Callback> listener{nullptr};

/// The last state that the listener was notified of.
struct Connections {
  bool connected[kTransmitterCount];
};

Connections ConnectionsNow() {
  const BoardLock board;
  Connections now{};
  for (unsigned port = 0; port < kTransmitterCount; ++port) {
    now.connected[port] = !board->display.transmitterUnplugged[port];
  }
  return now;
}

void TellChanges(Connections known) {
  for (;;) {
    std::this_thread::sleep_for(kWatchPeriod);
    const Connections now = ConnectionsNow();
    for (unsigned port = 0; port < kTransmitterCount; ++port) {
      if (now.connected[port] != known.connected[port]) listener.load()(now.connected[port], port);
    }
    known = now;
  }
}

void TellAndWatch(Callback callback) {
  const Connections now = ConnectionsNow();
  for (unsigned port = 0; port < kTransmitterCount; ++port) callback(now.connected[port], port);
  // Like the driver's own thread, it lives as long as the process.
  if (listener.exchange(callback) == nullptr) std::thread(TellChanges, now).detach();
}

int Accept(Board&, Callback callback) {
  return callback == nullptr ? K2V_RHAL_ERR_PARAM : K2V_RHAL_OK;
}

Action ParseTransmitter(const Words& words) {
  const int64_t port = ParseNumber(words[0], "transmitter port", 0, kTransmitterCount - 1);
  const bool unplugged = !ParseChoice(words[1], "on", "off");
  return [=](Board& board) { board.display.transmitterUnplugged[port] = unplugged; };
}

constexpr Command kCommands[] = {
    {"hdmitx", "PORT on|off", "plug a device into HDMI transmitter port 0 or 1, or unplug it", 2, 2,
     ParseTransmitter},
};

void Describe(const Board& board, std::ostream& out) {
  out << "hdmi transmitter:";
  for (unsigned port = 0; port < kTransmitterCount; ++port) {
    out << " port " << port << (board.display.transmitterUnplugged[port] ? " empty" : " connected");
  }
  out << '\n';
}

}  // namespace

constinit const Area kTransmitterArea = {kCommands, Describe};

}  // namespace sim

using namespace sim;

int K2V_RHAL_HdmiConnectionNotify(K2V_VBE_HDMI_CONNECTION_CALLBACK callback) {
  const int result = Call(__func__, Accept, callback);
  if (result == K2V_RHAL_OK) TellAndWatch(callback);
  return result;
}
