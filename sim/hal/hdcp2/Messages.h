// The messages of HDCP 2.3 on HDMI: an identifier, followed by its fields.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string_view>

#include "hdcp2/Crypto.h"

namespace sim::hdcp2 {

enum class MessageId : uint8_t {
  kAkeInit = 2,
  kAkeSendCert = 3,
  kAkeNoStoredKm = 4,
  kAkeStoredKm = 5,
  kAkeSendHPrime = 7,
  kAkeSendPairingInfo = 8,
  kLcInit = 9,
  kLcSendLPrime = 10,
  kSkeSendEks = 11,
  kReceiverIdList = 12,
  kAck = 15,
  kStreamManage = 16,
  kStreamReady = 17,
};

// Sizes of fields in bytes.
constexpr std::size_t kNonceBytes = 8;  // rtx, rrx, rn, riv
constexpr std::size_t kCapsBytes = 3;   // RxCaps, TxCaps
constexpr std::size_t kRxInfoBytes = 2;
constexpr std::size_t kSequenceBytes = 3;  // seq_num_V, seq_num_M
constexpr std::size_t kHalfHashBytes = K2V_HDCP2_HASH_BYTES / 2;
constexpr std::size_t kStreamBytes = 2;  // StreamID and type; also the number of streams

/// Makes a message from an identifier and its fields.
Bytes MakeMessage(MessageId id, std::initializer_list<View> fields);

/// The name of a message's identifier; empty if it is unknown.
std::string_view NameOf(View message);

/// Returns whether a message has that identifier and a size that its fields can have.
bool IsMessage(View message, MessageId id);

/// Splits a message into leading fields of the given sizes, and the rest. `message` must be long
/// enough for them.
template <std::size_t... sizes>
std::array<View, sizeof...(sizes) + 1> FieldsOf(View message) {
  std::array<View, sizeof...(sizes) + 1> fields;
  View rest = message.subspan(1);
  std::size_t i = 0;
  ((fields[i++] = rest.first(sizes), rest = rest.subspan(sizes)), ...);
  fields[i] = rest;
  return fields;
}

/// Concatenates all parts.
Bytes Joined(std::initializer_list<View> parts);

}  // namespace sim::hdcp2
