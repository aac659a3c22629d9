// Layout of a recording's files, which is that of the Common Trace Format 1.8: a text file
// `metadata` and a file for every thread, which consists of packets of events.
#pragma once

#include <cstdint>

namespace record {

inline constexpr char kMetadataName[] = "metadata";
inline constexpr uint32_t kPacketMagic = 0xC1FC1FC1;
inline constexpr uint16_t kFirstCallEvent = 16;  // the numbers below are marks

/// The beginning of a packet. `contentBits` grows with every event, so that the packet of a process
/// that was killed is good up to its last whole event.
struct PacketHeader {
  uint32_t magic;
  uint32_t pid;
  uint32_t tid;
  uint32_t parentPid;
  uint64_t beginNs;
  uint64_t contentBits;  // header included
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
