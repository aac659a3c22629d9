#include "vfe/Vby1rx.h"

#include "core/Areas.h"
#include "core/Call.h"
#include "vfe/SignalLock.h"
#include "vfe/Timing.h"

namespace sim {

namespace {

const K2V_HDMI_TIMING_T& SelectedSource(const Vby1Receiver& receiver) {
  return receiver.sources[receiver.selected];
}

K2V_HDMI_TIMING_T ReceivedTiming(const Vby1Receiver& receiver) {
  return receiver.lock.lost ? K2V_HDMI_TIMING_T{} : SelectedSource(receiver);
}

int Initialize(Board& board) {
  if (board.vby1.initialized) return K2V_RHAL_ERR_ALREADY;
  board.vby1.initialized = true;
  return K2V_RHAL_OK;
}

int Uninitialize(Board& board) {
  Vby1Receiver& receiver = board.vby1;
  if (!receiver.initialized) return K2V_RHAL_ERR_ORDER;
  receiver.initialized = receiver.open = receiver.connected = false;
  receiver.selected = 0;
  receiver.lock = {};
  return K2V_RHAL_OK;
}

int Open(Board& board) {
  if (!board.vby1.initialized) return K2V_RHAL_ERR_ORDER;
  if (board.vby1.open) return K2V_RHAL_ERR_ALREADY;
  board.vby1.open = true;
  return K2V_RHAL_OK;
}

int Connect(Board& board, uint8_t port) {
  Vby1Receiver& receiver = board.vby1;
  if (port >= K2V_VBY1RX_PORT_COUNT) return K2V_RHAL_ERR_PARAM;
  if (!receiver.open) return K2V_RHAL_ERR_ORDER;
  if (receiver.connected && receiver.selected == port) return K2V_RHAL_ERR_ALREADY;
  receiver.selected = port;
  receiver.connected = true;
  receiver.lock = {};
  return K2V_RHAL_OK;
}

int GetTimingInfo(Board& board, K2V_VBY1RX_TIMING_T* timing, uint32_t source) {
  if (timing == nullptr || source != K2V_VFE_TIMING_SOURCE_VBY1RX) return K2V_RHAL_ERR_PARAM;
  if (!board.vby1.initialized) return K2V_RHAL_ERR_ORDER;
  const K2V_HDMI_TIMING_T t = ReceivedTiming(board.vby1);
  *timing = {t.format, t.hFreq,  t.vFreq,  t.hTotal,   t.vTotal,
             t.hPorch, t.vPorch, t.active, t.scanType, 0};
  CountUnlockedPoll(board.vby1.lock);
  return K2V_RHAL_OK;
}

size_t ParseInput(const std::string& word) {
  return static_cast<size_t>(ParseNumber(word, "V-by-One input", 0, K2V_VBY1RX_PORT_COUNT - 1));
}

Action ParseVby1(const Words& words) {
  K2V_HDMI_TIMING_T timing = {};
  if (words[0] == "plug") {
    if (words.size() < 3) RefuseWord("missing timing after", Join(words), "plug PORT TIMING");
    timing = ParseTiming(words[2]);
  } else if (words[0] != "unplug" || words.size() > 2) {
    RefuseWord("invalid arguments", Join(words), "plug PORT TIMING or unplug PORT");
  }
  return [timing, input = ParseInput(words[1])](Board& board) {
    Vby1Receiver& receiver = board.vby1;
    receiver.sources[input] = timing;
    if (receiver.selected != input) return;
    receiver.lock = {};
    if (receiver.connected && timing.active.w != 0) LoseLock(board, receiver.lock, false);
  };
}

void Describe(const Board& board, std::ostream& out) {
  const Vby1Receiver& receiver = board.vby1;
  out << "v-by-one receiver: " << (receiver.initialized ? "initialised" : "not initialised") << ", "
      << (receiver.open ? "open" : "closed") << '\n';
  for (size_t i = 0; i < K2V_VBY1RX_PORT_COUNT; ++i) {
    const K2V_HDMI_TIMING_T& source = receiver.sources[i];
    out << "  input " << i << ": " << (source.active.w == 0 ? "no cable" : TimingName(source));
    if (receiver.connected && receiver.selected == i) {
      out << ", connected" << (receiver.lock.lost ? ", not locked" : "");
    }
    out << '\n';
  }
}

void Settle(Board& board, int64_t nowMs) {
  SettleLock(board.vby1.lock, nowMs);
}

constexpr Command kCommands[] = {
    {"vby1", "plug PORT TIMING | unplug PORT", "plug a source into a V-by-One input, or unplug it",
     2, 3, ParseVby1},
};

}  // namespace

constinit const Area kVby1Area = {kCommands, Describe, Settle};

Picture Vby1Picture(const Vby1Receiver& receiver) {
  if (!receiver.connected) return {};
  const K2V_HDMI_TIMING_T timing = ReceivedTiming(receiver);
  return {timing.active.w,
          timing.active.h,
          K2V_COLOR_STANDARD_BT709,
          K2V_HDMI_EOTF_SDR,
          receiver.sent[receiver.selected],
          false,
          Stereo::kNone,
          timing.vFreq,
          0,
          0};
}

}  // namespace sim

using namespace sim;

int K2V_RHAL_VFE_VBY1RX_Initialize() {
  return Call(__func__, Initialize);
}
int K2V_RHAL_VFE_VBY1RX_Uninitialize() {
  return Call(__func__, Uninitialize);
}
int K2V_RHAL_VFE_VBY1RX_Open() {
  return Call(__func__, Open);
}
int K2V_RHAL_VFE_VBY1RX_Connect(uint8_t port) {
  return Call(__func__, Connect, port);
}
int K2V_RHAL_VFE_VBY1RX_GetTimingInfo(K2V_VBY1RX_TIMING_T* timing, uint32_t source) {
  return Call(__func__, GetTimingInfo, Out{timing}, source);
}
