// What the HDMI receiver reports about its ports and their signals.
#include <cstring>

#include "core/Call.h"
#include "vfe/Hdmi.h"
#include "vfe/HdmiSource.h"

namespace sim {

namespace {

constexpr uint8_t kReceiverId[K2V_HDMI_HDCP_ID_BYTES] = {0x9C, 0x53, 0xB4, 0x2D, 0x6A};
constexpr int kArcPort = 1;

/// Returns 0 for a connected port, otherwise an error code. `output`: where the caller wants the
/// result.
int CheckPort(const Board& board, uint8_t port, const void* output) {
  if (port >= kPortCount || output == nullptr) return K2V_RHAL_ERR_PARAM;
  return board.hdmi.ports[port].connected ? K2V_RHAL_OK : K2V_RHAL_ERR_ORDER;
}

/// Fills in `info` from what the source of a connected port sends.
template <typename Record, int (*Make)(const HdmiPort&, Record&)>
int Receive(Board& board, uint8_t port, Record* info) {
  if (const int error = CheckPort(board, port, info)) return error;
  const HdmiPort& source = board.hdmi.ports[port];
  return HasSignal(source) ? Make(source, *info) : K2V_RHAL_ERR_NO_SIGNAL;
}

int MakeDepth(const HdmiPort& port, uint32_t& depth) {
  depth = ColorDepth(port);
  return K2V_RHAL_OK;
}

int MakeKeySelection(const HdmiPort& port, uint8_t& ksv) {
  return CopyKeySelection(port, &ksv);
}

// An AV mute that the source set before a change of timing remains in effect until it clears it.
int GetMute(Board& board, uint8_t port, uint8_t* muted) {
  if (const int error = CheckPort(board, port, muted)) return error;
  const HdmiPort& source = board.hdmi.ports[port];
  if (!HasSignal(source) && !source.lock.muted) return K2V_RHAL_ERR_NO_SIGNAL;
  if (!SendsControlPackets(source)) return K2V_RHAL_ERR_FAIL;
  *muted = source.muted || source.lock.muted;
  return K2V_RHAL_OK;
}

// The clock can be measured on every port of an open receiver.
int GetClockStatus(Board& board, uint8_t port, K2V_HAL_VFE_HDMI_CLOCK_STATUS_T* status) {
  if (port >= kPortCount || status == nullptr) return K2V_RHAL_ERR_PARAM;
  if (!board.hdmi.open) return K2V_RHAL_ERR_ORDER;
  *status = {};
  const HdmiPort& source = board.hdmi.ports[port];
  if (!HasSignal(source)) return K2V_RHAL_OK;
  status->nTmdsClockKHz = TmdsClockKHz(source);
  status->bClockDetected = 1;
  status->bPllLocked = 1;
  return K2V_RHAL_OK;
}

int GetScdcStatus(Board& board, uint8_t port, uint32_t type, uint32_t* value) {
  if (const int error = CheckPort(board, port, value)) return error;
  if (type > K2V_HDMI_SCDC_CHANNELS_LOCKED) return K2V_RHAL_ERR_PARAM;
  const HdmiPort& source = board.hdmi.ports[port];
  const uint32_t locked = HasSignal(source);
  const uint32_t scrambled = locked != 0 && IsScrambled(source);
  const uint32_t values[] = {scrambled, scrambled, scrambled, locked, locked * 7};
  *value = values[type];
  return K2V_RHAL_OK;
}

int GetConnectionState(Board& board, uint8_t port, uint8_t* connected) {
  if (port >= kPortCount || connected == nullptr) return K2V_RHAL_ERR_PARAM;
  if (!board.hdmi.initialized) return K2V_RHAL_ERR_ORDER;
  const HdmiPort& source = board.hdmi.ports[port];
  *connected = source.cable && source.hotPlug == HotPlug::kRaised;
  return K2V_RHAL_OK;
}

int GetPortCount(Board&) {
  return kPortCount;
}
int GetArcChannel(Board&) {
  return kArcPort;
}
int IsHdmi20Supported(Board&) {
  return 1;
}
int IsHdcp22Supported(Board&, uint8_t port) {
  return port < kPortCount;
}

int GetLogicalPort(Board& board) {
  for (unsigned port = 0; port < kPortCount; ++port) {
    if (board.hdmi.ports[port].connected) return static_cast<int>(port);
  }
  return -1;
}

int GetHdcpVersion(Board& board, uint8_t port) {
  if (port >= kPortCount || !HasSignal(board.hdmi.ports[port])) return K2V_HDMI_HDCP_NONE;
  return HdcpVersion(board.hdmi.ports[port]);
}

int GetReceiverId(Board& board, uint8_t* id) {
  if (id == nullptr) return K2V_RHAL_ERR_PARAM;
  if (!board.hdmi.initialized) return K2V_RHAL_ERR_ORDER;
  std::memcpy(id, kReceiverId, sizeof(kReceiverId));
  return K2V_RHAL_OK;
}

}  // namespace
}  // namespace sim

using namespace sim;

int K2V_RHAL_VFE_HDMI_GetRxPortCnt() {
  return Call(__func__, GetPortCount);
}
int K2V_RHAL_VFE_HDMI_GetARCChannel() {
  return Call(__func__, GetArcChannel);
}
int K2V_RHAL_VFE_HDMI_Get_isHDMI20Supported() {
  return Call(__func__, IsHdmi20Supported);
}
int K2V_RHAL_VFE_HDMI_GetLogicalPort() {
  return Call(__func__, GetLogicalPort);
}

int K2V_RHAL_VFE_HDMI_GetConnectionState(uint8_t port, uint8_t* connected) {
  return Call(__func__, GetConnectionState, port, Out{connected});
}

int K2V_RHAL_VFE_HDMI_GetClockStatus(uint8_t port, K2V_HAL_VFE_HDMI_CLOCK_STATUS_T* status) {
  return Call(__func__, GetClockStatus, port, Out{status});
}

int K2V_RHAL_VFE_HDMI_GetColorDepth(uint8_t port, uint32_t* depth) {
  return Call(__func__, Receive<uint32_t, MakeDepth>, port, Out{depth});
}

int K2V_RHAL_VFE_HDMI_GetAVMute(uint8_t port, uint8_t* muted) {
  return Call(__func__, GetMute, port, Out{muted});
}

int K2V_RHAL_VFE_HDMI_GetScdcStatus(uint8_t port, K2V_HAL_VFE_HDMI_SCDC_TYPE_T type,
                                    uint32_t* value) {
  return Call(__func__, GetScdcStatus, port, type, Out{value});
}

int K2V_RHAL_VFE_HDMI_GetPortAVIInfo(uint8_t port, K2V_HAL_VFE_HDMI_AVI_INFO_T* info) {
  return Call(__func__, Receive<K2V_HAL_VFE_HDMI_AVI_INFO_T, MakeAvi>, port, Out{info});
}

int K2V_RHAL_VFE_HDMI_GetPortSPDInfo(uint8_t port, K2V_HAL_VFE_HDMI_SPD_INFO_T* info) {
  return Call(__func__, Receive<K2V_HAL_VFE_HDMI_SPD_INFO_T, MakeSpd>, port, Out{info});
}

int K2V_RHAL_VFE_HDMI_GetPortVSIInfo(uint8_t port, K2V_HAL_VFE_HDMI_VSI_INFO_T* info) {
  return Call(__func__, Receive<K2V_HAL_VFE_HDMI_VSI_INFO_T, MakeVsi>, port, Out{info});
}

int K2V_RHAL_VFE_HDMI_GetPortMultiVSIInfo(uint8_t port, K2V_HAL_VFE_HDMI_MULTIPLE_VSI_T* info) {
  return Call(__func__, Receive<K2V_HAL_VFE_HDMI_MULTIPLE_VSI_T, MakeAllVsi>, port, Out{info});
}

int K2V_RHAL_VFE_HDMI_GetDRMInfo(uint8_t port, K2V_HAL_VFE_HDMI_DRM_INFO_T* info) {
  return Call(__func__, Receive<K2V_HAL_VFE_HDMI_DRM_INFO_T, MakeDrm>, port, Out{info});
}

int K2V_RHAL_VFE_HDMI_GetPortPacketInfo(uint8_t port, K2V_HAL_VFE_HDMI_PACKET_INFO_T* info) {
  return Call(__func__, Receive<K2V_HAL_VFE_HDMI_PACKET_INFO_T, MakePackets>, port, Out{info});
}

int K2V_RHAL_VFE_HDMI_isHDCP22Supported(uint8_t port) {
  return Call(__func__, IsHdcp22Supported, port);
}

int K2V_RHAL_VFE_HDMI_Get_HDCP_Version(uint8_t port) {
  return Call(__func__, GetHdcpVersion, port);
}

int K2V_RHAL_VFE_HDMI_getHDCPReceiverId(uint8_t* id) {
  return Call(__func__, GetReceiverId, Buffer{id, K2V_HDMI_HDCP_ID_BYTES});
}

int K2V_RHAL_VFE_HDMI_GetSourceKSVData(uint8_t port, uint8_t* ksv) {
  return Call(__func__, Receive<uint8_t, MakeKeySelection>, port,
              Buffer{ksv, K2V_HDMI_HDCP_ID_BYTES});
}
