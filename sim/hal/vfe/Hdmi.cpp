#include "vfe/Hdmi.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "core/Areas.h"
#include "core/Call.h"
#include "core/Events.h"
#include "vfe/HdmiSource.h"
#include "vfe/SignalLock.h"
#include "vfe/Timing.h"

namespace sim {

namespace {

void Release(HdmiPort& port) {
  port.connected = false;
  port.lock = {};
}

void EndOpen(HdmiReceiver& receiver) {
  receiver.open = false;
  for (HdmiPort& port : receiver.ports) {
    port.hotPlug = HotPlug::kIdle;
    Release(port);
  }
}

int Initialize(Board& board) {
  if (board.hdmi.initialized) return K2V_RHAL_ERR_ALREADY;
  board.hdmi.initialized = true;
  return K2V_RHAL_OK;
}

int Uninitialize(Board& board) {
  if (!board.hdmi.initialized) return K2V_RHAL_ERR_ORDER;
  EndOpen(board.hdmi);
  board.hdmi.initialized = false;
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
  EndOpen(board.hdmi);
  return K2V_RHAL_OK;
}

/// Makes the receiver lose its lock, because the source starts or changes its timing. `behindMute`:
/// the source set AV mute before.
void Restart(const Board& board, HdmiPort& port, bool behindMute) {
  port.lock = {};
  if (port.connected && HasSignal(port)) LoseLock(board, port.lock, behindMute);
}

// If the line was held low, the source starts again.
void RaiseHotPlug(const Board& board, HdmiPort& port) {
  const bool startsAnew = port.hotPlug == HotPlug::kHeldLow;
  port.hotPlug = HotPlug::kRaised;
  if (startsAnew) Restart(board, port, false);
}

int EnableHotPlug(Board& board) {
  if (!board.hdmi.initialized) return K2V_RHAL_ERR_ORDER;
  for (HdmiPort& port : board.hdmi.ports) RaiseHotPlug(board, port);
  return K2V_RHAL_OK;
}

int SetHotPlug(Board& board, uint8_t port, uint8_t level) {
  if (port >= kPortCount || level > 1) return K2V_RHAL_ERR_PARAM;
  if (!board.hdmi.initialized) return K2V_RHAL_ERR_ORDER;
  HdmiPort& target = board.hdmi.ports[port];
  if (level == 1)
    RaiseHotPlug(board, target);
  else
    target.hotPlug = HotPlug::kHeldLow;
  return K2V_RHAL_OK;
}

int CheckMemoryAccess(const Board& board, uint8_t port, const void* data) {
  if (port >= kPortCount || data == nullptr) return K2V_RHAL_ERR_PARAM;
  return board.hdmi.initialized ? K2V_RHAL_OK : K2V_RHAL_ERR_ORDER;
}

int WriteEdid(Board& board, uint8_t port, const uint8_t* edid) {
  if (const int error = CheckMemoryAccess(board, port, edid)) return error;
  HdmiPort& target = board.hdmi.ports[port];
  std::memcpy(target.edid, edid, K2V_HDMI_EDID_BYTES);
  if (target.edidDefect) ++target.edid[K2V_HDMI_EDID_BYTES / 2];
  target.edidWritten = true;
  return K2V_RHAL_OK;
}

int ReadEdid(Board& board, uint8_t port, uint8_t* edid) {
  if (const int error = CheckMemoryAccess(board, port, edid)) return error;
  std::memcpy(edid, board.hdmi.ports[port].edid, K2V_HDMI_EDID_BYTES);
  return K2V_RHAL_OK;
}

int WriteHdcp(Board& board, uint8_t port, const uint8_t* data) {
  if (const int error = CheckMemoryAccess(board, port, data)) return error;
  HdmiPort& target = board.hdmi.ports[port];
  std::memcpy(target.hdcp, data, K2V_HDMI_HDCP_BYTES);
  if (target.hdcpDefect) ++target.hdcp[K2V_HDMI_HDCP_BYTES / 2];
  return K2V_RHAL_OK;
}

int ReadHdcp(Board& board, uint8_t port, uint8_t* data) {
  if (const int error = CheckMemoryAccess(board, port, data)) return error;
  std::memcpy(data, board.hdmi.ports[port].hdcp, K2V_HDMI_HDCP_BYTES);
  return K2V_RHAL_OK;
}

int Connect(Board& board, uint8_t port) {
  if (port >= kPortCount) return K2V_RHAL_ERR_PARAM;
  if (!board.hdmi.open) return K2V_RHAL_ERR_ORDER;
  HdmiPort& target = board.hdmi.ports[port];
  if (target.connected) return K2V_RHAL_ERR_ALREADY;
  target.connected = true;
  if (target.hotPlug == HotPlug::kIdle) target.hotPlug = HotPlug::kRaised;
  return K2V_RHAL_OK;
}

int Disconnect(Board& board, uint8_t port) {
  if (port >= kPortCount) return K2V_RHAL_ERR_PARAM;
  if (!board.hdmi.ports[port].connected) return K2V_RHAL_ERR_ORDER;
  Release(board.hdmi.ports[port]);
  return K2V_RHAL_OK;
}

int GetPortTimingInfo(Board& board, uint8_t port, K2V_HDMI_TIMING_T* timing) {
  if (port >= kPortCount || timing == nullptr) return K2V_RHAL_ERR_PARAM;
  HdmiPort& source = board.hdmi.ports[port];
  if (!source.connected) return K2V_RHAL_ERR_ORDER;
  *timing = HasSignal(source) ? source.timing : K2V_HDMI_TIMING_T{};
  CountUnlockedPoll(source.lock);
  return K2V_RHAL_OK;
}

size_t ParsePort(const std::string& word) {
  return static_cast<size_t>(ParseNumber(word, "port", 0, kPortCount - 1));
}

HdmiPort& PluggedPort(Board& board, size_t port) {
  HdmiPort& plugged = board.hdmi.ports[port];
  if (!plugged.cable) {
    RefuseWord("no source at port", std::to_string(port), "a port with a source ('plug')");
  }
  return plugged;
}

Action ParsePlug(const Words& words) {
  const size_t port = ParsePort(words[0]);
  const SourceOrder order = ParseSource(words, 1);
  return [=](Board& board) {
    HdmiPort& plugged = board.hdmi.ports[port];
    board.hdcp2.ports[port].status = {};  // a new cable is a new link
    plugged.cable = true;
    plugged.sending = true;
    plugged.muted = false;
    plugged.kind = order.kind;
    plugged.stereo = order.stereo;
    plugged.timing = order.timing;
    Restart(board, plugged, false);
  };
}

Action ParseUnplug(const Words& words) {
  return [port = ParsePort(words[0])](Board& board) {
    board.hdmi.ports[port].cable = false;
    board.hdcp2.ports[port].status = {};
  };
}

Action ParseSignal(const Words& words) {
  const size_t port = ParsePort(words[0]);
  const bool on = ParseChoice(words[1], "on", "off");
  return [=](Board& board) {
    HdmiPort& plugged = PluggedPort(board, port);
    const bool starts = on && !plugged.sending;
    plugged.sending = on;
    if (starts) Restart(board, plugged, false);
  };
}

Action ParseMute(const Words& words) {
  const size_t port = ParsePort(words[0]);
  const bool on = ParseChoice(words[1], "on", "off");
  return [=](Board& board) { PluggedPort(board, port).muted = on; };
}

Action ParseDefect(const Words& words) {
  const size_t port = ParsePort(words[0]);
  const bool edid = ParseChoice(words[1], "edid", "hdcp");
  const bool on = ParseChoice(words[2], "on", "off");
  return [=](Board& board) {
    HdmiPort& target = board.hdmi.ports[port];
    (edid ? target.edidDefect : target.hdcpDefect) = on;
  };
}

Action ParseNewTiming(const Words& words) {
  const size_t port = ParsePort(words[0]);
  const K2V_HDMI_TIMING_T timing = ParseTiming(words[1]);
  return [=](Board& board) {
    HdmiPort& plugged = PluggedPort(board, port);
    const uint8_t mode = plugged.timing.mode;
    plugged.timing = Packed(timing, plugged.stereo);
    plugged.timing.mode = mode;
    Restart(board, plugged, MutesChanges(plugged));
  };
}

void DescribeSource(const HdmiPort& port, std::ostream& out) {
  if (!port.cable) {
    out << "no cable";
    return;
  }
  out << TimingName(port.timing) << ' ' << SourceName(port) << ", format " << port.timing.format
      << (port.sending ? "" : ", source silent") << (port.muted ? ", muted" : "")
      << (FitsLink(port) ? "" : ", more than the link carries");
}

void DescribePort(const HdmiPort& port, std::ostream& out) {
  DescribeSource(port, out);
  if (port.hotPlug == HotPlug::kHeldLow) out << ", hot-plug held low";
  if (port.edidDefect) out << ", edid memory defective";
  if (port.hdcpDefect) out << ", hdcp memory defective";
  if (port.connected) out << ", connected";
  if (port.lock.lost) out << ", not locked";
  if (port.edidWritten) out << ", edid crc32=" << Crc32Text(port.edid, sizeof(port.edid));
}

bool IsRaised(const HdmiPort& port) {
  return port.hotPlug == HotPlug::kRaised;
}

void Describe(const Board& board, std::ostream& out) {
  const HdmiReceiver& hdmi = board.hdmi;
  const bool raised = std::any_of(std::begin(hdmi.ports), std::end(hdmi.ports), IsRaised);
  out << "hdmi receiver: " << (hdmi.initialized ? "initialised" : "not initialised") << ", "
      << (hdmi.open ? "open" : "closed") << ", hot-plug " << (raised ? "raised" : "low") << '\n';
  for (size_t i = 0; i < kPortCount; ++i) {
    out << "  port " << i << ": ";
    DescribePort(hdmi.ports[i], out);
    out << '\n';
  }
}

void SettleLocks(Board& board, int64_t nowMs) {
  for (HdmiPort& port : board.hdmi.ports) SettleLock(port.lock, nowMs);
}

constexpr Command kCommands[] = {
    {"plug", kPlugArguments, "plug in an active source, such as 3840x2160p60 hdr", 2, 4, ParsePlug},
    {"unplug", "PORT", "pull the cable", 1, 1, ParseUnplug},
    {"signal", "PORT on|off", "switch the signal of the plugged source on or off", 2, 2,
     ParseSignal},
    {"mute", "PORT on|off", "set or clear the source's AV mute", 2, 2, ParseMute},
    {"spoil", "PORT edid|hdcp on|off",
     "corrupt one byte of what is written to the port's EDID or HDCP memory", 3, 3, ParseDefect},
    {"timing", "PORT TIMING", "change the timing of the plugged source", 2, 2, ParseNewTiming},
};

}  // namespace

constinit const Area kHdmiArea = {kCommands, Describe, SettleLocks};

bool HasSignal(const HdmiPort& port) {
  return port.hotPlug == HotPlug::kRaised && port.cable && port.sending && !port.lock.lost &&
         FitsLink(port);
}

Picture HdmiPicture(const HdmiReceiver& receiver) {
  for (const HdmiPort& port : receiver.ports) {
    if (!port.connected || !HasSignal(port)) continue;
    const K2V_VIDEO_RECT_T& active = port.timing.active;
    return {active.w,   active.h,    ColorStandard(port), Eotf(port), port.sent,
            port.muted, port.stereo, port.timing.vFreq,   0,          0};
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

int K2V_RHAL_VFE_HDMI_Set_HotPlug(uint8_t port, uint8_t level) {
  return Call(__func__, SetHotPlug, port, level);
}

int K2V_RHAL_VFE_HDMI_WriteEDID(uint8_t port, const uint8_t* edid) {
  return Call(__func__, WriteEdid, port, Buffer{edid, K2V_HDMI_EDID_BYTES});
}

int K2V_RHAL_VFE_HDMI_ReadEDID(uint8_t port, uint8_t* edid) {
  return Call(__func__, ReadEdid, port, Buffer{edid, K2V_HDMI_EDID_BYTES});
}

int K2V_RHAL_VFE_HDMI_WriteHDCP(uint8_t port, const uint8_t* data) {
  return Call(__func__, WriteHdcp, port, Buffer{data, K2V_HDMI_HDCP_BYTES});
}

int K2V_RHAL_VFE_HDMI_ReadHDCP(uint8_t port, uint8_t* data) {
  return Call(__func__, ReadHdcp, port, Buffer{data, K2V_HDMI_HDCP_BYTES});
}

int K2V_RHAL_VFE_HDMI_Connect(uint8_t port) {
  return Call(__func__, Connect, port);
}
int K2V_RHAL_VFE_HDMI_Disconnect(uint8_t port) {
  return Call(__func__, Disconnect, port);
}

int K2V_RHAL_VFE_HDMI_GetPortTimingInfo(uint8_t port, K2V_HDMI_TIMING_T* timing) {
  // Every poll counts, even if a programmed failure answers it.
  CountPoll(*BoardLock(), port);
  return Call(__func__, GetPortTimingInfo, port, Out{timing});
}
