#include "vfe/Hdmi.h"

#include <algorithm>
#include <cstring>

#include "core/Areas.h"
#include "core/Call.h"
#include "core/Events.h"
#include "vfe/Timing.h"

namespace sim {

// Found from the templates in CallText.h, so not in the unnamed namespace.
static void Put(CallText& out, const K2V_HDMI_TIMING_T& timing) {
  if (timing.active.w == 0) {
    out.text << "{no signal}";
    return;
  }
  out.text << "{format=" << timing.format << ", " << TimingName(timing)
           << ", total=" << timing.hTotal << 'x' << timing.vTotal << ", porch=" << timing.hPorch
           << 'x' << timing.vPorch << ", hFreq=" << timing.hFreq << ", mode=" << +timing.mode
           << '}';
}

namespace {

bool HasSignal(const HdmiReceiver& receiver, const HdmiPort& port) {
  return receiver.hotPlug && port.cable && port.sending;
}

int Initialize(Board& board) {
  if (board.hdmi.initialized) return K2V_RHAL_ERR_ALREADY;
  board.hdmi.initialized = true;
  return K2V_RHAL_OK;
}

int Uninitialize(Board& board) {
  if (!board.hdmi.initialized) return K2V_RHAL_ERR_ORDER;
  if (board.hdmi.open) return K2V_RHAL_ERR_BUSY;
  board.hdmi.initialized = false;
  board.hdmi.hotPlug = false;
  return K2V_RHAL_OK;
}

int Open(Board& board) {
  if (!board.hdmi.initialized) return K2V_RHAL_ERR_ORDER;
  if (board.hdmi.open) return K2V_RHAL_ERR_ALREADY;
  board.hdmi.open = true;
  return K2V_RHAL_OK;
}

int Close(Board& board) {
  if (!board.hdmi.open) return K2V_RHAL_ERR_ORDER;
  board.hdmi.open = false;
  board.hdmi.hotPlug = false;
  for (HdmiPort& port : board.hdmi.ports) port.connected = false;
  return K2V_RHAL_OK;
}

int EnableHotPlug(Board& board) {
  if (!board.hdmi.initialized) return K2V_RHAL_ERR_ORDER;
  board.hdmi.hotPlug = true;
  return K2V_RHAL_OK;
}

int WriteEdid(Board& board, uint8_t port, const uint8_t* edid) {
  if (port >= kPortCount || edid == nullptr) return K2V_RHAL_ERR_PARAM;
  if (!board.hdmi.initialized) return K2V_RHAL_ERR_ORDER;
  std::memcpy(board.hdmi.ports[port].edid, edid, K2V_HDMI_EDID_BYTES);
  board.hdmi.ports[port].edidWritten = true;
  return K2V_RHAL_OK;
}

int Connect(Board& board, uint8_t port) {
  if (port >= kPortCount) return K2V_RHAL_ERR_PARAM;
  if (!board.hdmi.open) return K2V_RHAL_ERR_ORDER;
  if (board.hdmi.ports[port].connected) return K2V_RHAL_ERR_ALREADY;
  board.hdmi.ports[port].connected = true;
  return K2V_RHAL_OK;
}

int Disconnect(Board& board, uint8_t port) {
  if (port >= kPortCount) return K2V_RHAL_ERR_PARAM;
  if (!board.hdmi.ports[port].connected) return K2V_RHAL_ERR_ORDER;
  board.hdmi.ports[port].connected = false;
  return K2V_RHAL_OK;
}

int GetPortTimingInfo(Board& board, uint8_t port, K2V_HDMI_TIMING_T* timing) {
  if (port >= kPortCount || timing == nullptr) return K2V_RHAL_ERR_PARAM;
  const HdmiPort& source = board.hdmi.ports[port];
  if (!source.connected) return K2V_RHAL_ERR_ORDER;
  *timing = HasSignal(board.hdmi, source) ? source.timing : K2V_HDMI_TIMING_T{};
  return K2V_RHAL_OK;
}

size_t ParsePort(const std::string& word) {
  return static_cast<size_t>(ParseNumber(word, "port", 0, kPortCount - 1));
}

HdmiPort& PluggedPort(Board& board, size_t port) {
  HdmiPort& plugged = board.hdmi.ports[port];
  if (!plugged.cable) {
    Refuse(std::to_string(port), "is a port without a source", "a port to which 'plug' gave one");
  }
  return plugged;
}

bool ParseChoice(const std::string& word, const char* yes, const char* no) {
  if (word != yes && word != no) Refuse(word, "is no choice", std::string(yes) + ", " + no);
  return word == yes;
}

Action ParsePlug(const Words& words) {
  const size_t port = ParsePort(words[0]);
  const K2V_HDMI_TIMING_T timing = ParseTiming(words[1]);
  const bool hdr = words.size() > 2 && ParseChoice(words[2], "hdr", "sdr");
  return [=](Board& board) {
    HdmiPort& plugged = board.hdmi.ports[port];
    plugged.cable = true;
    plugged.sending = true;
    plugged.hdr = hdr;
    plugged.timing = timing;
  };
}

Action ParseUnplug(const Words& words) {
  return [port = ParsePort(words[0])](Board& board) { board.hdmi.ports[port].cable = false; };
}

Action ParseSignal(const Words& words) {
  const size_t port = ParsePort(words[0]);
  const bool on = ParseChoice(words[1], "on", "off");
  return [=](Board& board) { PluggedPort(board, port).sending = on; };
}

Action ParseNewTiming(const Words& words) {
  const size_t port = ParsePort(words[0]);
  const K2V_HDMI_TIMING_T timing = ParseTiming(words[1]);
  return [=](Board& board) { PluggedPort(board, port).timing = timing; };
}

void DescribeSource(const HdmiPort& port, std::ostream& out) {
  if (!port.cable) {
    out << "no cable";
    return;
  }
  out << TimingName(port.timing) << (port.hdr ? " hdr" : " sdr") << ", format "
      << port.timing.format << (port.sending ? "" : ", source silent");
}

void Describe(const Board& board, std::ostream& out) {
  const HdmiReceiver& hdmi = board.hdmi;
  out << "hdmi receiver: " << (hdmi.initialized ? "initialised" : "not initialised") << ", "
      << (hdmi.open ? "open" : "closed") << ", hot-plug " << (hdmi.hotPlug ? "raised" : "low")
      << '\n';
  for (size_t i = 0; i < kPortCount; ++i) {
    const HdmiPort& port = hdmi.ports[i];
    out << "  port " << i << ": ";
    DescribeSource(port, out);
    if (port.connected) out << ", connected";
    if (port.edidWritten) out << ", edid crc32=" << Crc32Text(port.edid, sizeof(port.edid));
    out << '\n';
  }
}

constexpr Command kCommands[] = {
    {"plug", "PORT TIMING [hdr|sdr]", "plug in a source that sends, such as 3840x2160p60 hdr", 2, 3,
     ParsePlug},
    {"unplug", "PORT", "take the cable out", 1, 1, ParseUnplug},
    {"signal", "PORT on|off", "let the plugged source send, or fall silent with its cable in", 2, 2,
     ParseSignal},
    {"timing", "PORT TIMING", "let the plugged source change its timing", 2, 2, ParseNewTiming},
};

}  // namespace

constinit const Area kHdmiArea = {kCommands, Describe};

Picture HdmiPicture(const HdmiReceiver& receiver) {
  for (const HdmiPort& port : receiver.ports) {
    if (!port.connected || !HasSignal(receiver, port)) continue;
    const K2V_VIDEO_RECT_T& active = port.timing.active;
    const uint32_t standard = port.hdr          ? K2V_COLOR_STANDARD_BT2020
                              : active.h >= 720 ? K2V_COLOR_STANDARD_BT709
                                                : K2V_COLOR_STANDARD_BT601;
    return {active.w, active.h, standard};
  }
  return {};
}

}  // namespace sim

using namespace sim;

int K2V_RHAL_VFE_HDMI_Initialize() {
  return Call(__func__, Initialize);
}
int K2V_RHAL_VFE_HDMI_Uninitialize() {
  return Call(__func__, Uninitialize);
}
int K2V_RHAL_VFE_HDMI_Open() {
  return Call(__func__, Open);
}
int K2V_RHAL_VFE_HDMI_Close() {
  return Call(__func__, Close);
}
int K2V_RHAL_VFE_HDMI_EnableHPD() {
  return Call(__func__, EnableHotPlug);
}

int K2V_RHAL_VFE_HDMI_WriteEDID(uint8_t port, const uint8_t* edid) {
  return Call(__func__, WriteEdid, port, Buffer{edid, K2V_HDMI_EDID_BYTES});
}

int K2V_RHAL_VFE_HDMI_Connect(uint8_t port) {
  return Call(__func__, Connect, port);
}
int K2V_RHAL_VFE_HDMI_Disconnect(uint8_t port) {
  return Call(__func__, Disconnect, port);
}

int K2V_RHAL_VFE_HDMI_GetPortTimingInfo(uint8_t port, K2V_HDMI_TIMING_T* timing) {
  // Every poll counts, also one that a programmed failure answers.
  CountPoll(*BoardLock(), port);
  return Call(__func__, GetPortTimingInfo, port, Out{timing});
}
