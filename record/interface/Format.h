// Layout of a recording's files, in the Common Trace Format 1.8: a text file `metadata` and one
// file per thread, which consists of packets of events.
#pragma once

#include <cstdint>

namespace record {

inline constexpr char kMetadataName[] = "metadata";
inline constexpr uint32_t kPacketMagic = 0xC1FC1FC1;
inline constexpr uint16_t kFirstCallEvent = 16;  // lower numbers are marks

/// The beginning of a packet. `contentBits` grows with every event, so that the packet of a killed
/// process is valid up to its last complete event.
struct PacketHeader {
  uint32_t magic;
  uint32_t pid;
  uint32_t tid;
  uint32_t parentPid;
  uint64_t beginNs;
  uint64_t contentBits;  // including the header
  uint64_t packetBits;   // from here to the next packet
};
static_assert(sizeof(PacketHeader) == 40, "no padding");

inline constexpr uint32_t kEventHeaderBytes = 2 + 8;  // number, time in ns

inline constexpr uint16_t EntryEvent(uint16_t callIndex) {
  return static_cast<uint16_t>(kFirstCallEvent + 2 * callIndex);
}
inline constexpr uint16_t ReturnEvent(uint16_t callIndex) {
  return static_cast<uint16_t>(EntryEvent(callIndex) + 1);
}

enum MarkEvent : uint16_t { kTestBegins = 0, kTestEnds = 1, kPrompt = 2, kAnswer = 3 };

}  // namespace record
