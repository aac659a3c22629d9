#include "hdcp2/Messages.h"

#include <algorithm>
#include <iterator>

#include "hdcp2/Hdcp2State.h"

namespace sim::hdcp2 {
namespace {

struct Form {
  MessageId id;
  std::string_view name;
  std::size_t size;      // with the identifier
  std::size_t item = 0;  // size of items that may follow, any number of them; 0: none
};

constexpr Form kForms[] = {
    {MessageId::kAkeInit, "AKE_Init", 1 + kNonceBytes + kCapsBytes},
    {MessageId::kAkeSendCert, "AKE_Send_Cert",
     1 + kHdcp2CertificateBytes + kNonceBytes + kCapsBytes},
    {MessageId::kAkeNoStoredKm, "AKE_No_Stored_km", 1 + K2V_HDCP2_RSA_BYTES},
    {MessageId::kAkeStoredKm, "AKE_Stored_km", 1 + 2 * K2V_HDCP2_AES_BYTES},
    {MessageId::kAkeSendHPrime, "AKE_Send_H_prime", 1 + K2V_HDCP2_HASH_BYTES},
    {MessageId::kAkeSendPairingInfo, "AKE_Send_Pairing_Info", 1 + K2V_HDCP2_AES_BYTES},
    {MessageId::kLcInit, "LC_Init", 1 + kNonceBytes},
    {MessageId::kLcSendLPrime, "LC_Send_L_prime", 1 + K2V_HDCP2_HASH_BYTES},
    {MessageId::kSkeSendEks, "SKE_Send_Eks", 1 + K2V_HDCP2_AES_BYTES + kNonceBytes},
    {MessageId::kReceiverIdList, "RepeaterAuth_Send_ReceiverID_List",
     1 + kRxInfoBytes + kSequenceBytes + kHalfHashBytes, K2V_HDCP2_ID_BYTES},
    {MessageId::kAck, "RepeaterAuth_Send_Ack", 1 + kHalfHashBytes},
    {MessageId::kStreamManage, "RepeaterAuth_Stream_Manage", 1 + kSequenceBytes + kStreamBytes,
     kStreamBytes},
    {MessageId::kStreamReady, "RepeaterAuth_Stream_Ready", 1 + K2V_HDCP2_HASH_BYTES},
};

const Form* FormOf(View message) {
  if (message.empty()) return nullptr;
  const auto* form = std::ranges::find(kForms, static_cast<MessageId>(message.front()), &Form::id);
  return form == std::end(kForms) ? nullptr : form;
}

}  // namespace

Bytes MakeMessage(MessageId id, std::initializer_list<View> fields) {
  Bytes message = {static_cast<uint8_t>(id)};
  for (const View field : fields) message.insert(message.end(), field.begin(), field.end());
  return message;
}

std::string_view NameOf(View message) {
  const Form* form = FormOf(message);
  return form == nullptr ? "" : form->name;
}

bool IsMessage(View message, MessageId id) {
  const Form* form = FormOf(message);
  if (form == nullptr || form->id != id || message.size() < form->size) return false;
  const std::size_t behind = message.size() - form->size;
  return form->item == 0 ? behind == 0 : behind % form->item == 0;
}

Bytes Joined(std::initializer_list<View> parts) {
  Bytes all;
  for (const View part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

}  // namespace sim::hdcp2
