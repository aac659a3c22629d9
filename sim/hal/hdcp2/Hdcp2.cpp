// HDCP 2 functions of the HAL.
#include <algorithm>
#include <cerrno>
#include <cmath>
#include <ctime>
#include <optional>
#include <string>
#include <utility>

#include "core/Call.h"
#include "core/Events.h"
#include "hdcp2/Crypto.h"
#include "hdcp2/Keys.h"
#include "hdcp2/Protocol.h"
#include "vfe/Hdmi.h"
#include "vfe/HdmiSource.h"

namespace sim {

// Found by argument-dependent lookup from CallText.h, so not in the unnamed namespace.
// Keys and the data processed with them stay out of the trace.
static void Put(CallText& out, const K2V_HDCP2_RSA_KEY_T&) {
  out.text << "{key}";
}

namespace {

/// Bytes of which the trace shows only the number.
struct Secret {
  const uint8_t* pointer;
  uint32_t size;
};

void Put(CallText& out, const Secret& secret) {
  if (secret.pointer == nullptr) {
    out.text << "NULL";
  } else {
    out.text << secret.size << " bytes";
  }
}

bool IsData(const uint8_t* data, uint32_t size) {
  return data != nullptr || size == 0;
}

hdcp2::View ViewOf(const uint8_t* data, uint32_t size) {
  return {data, size};
}

int CheckInitialized(const Board& board, bool argumentsAreRight) {
  if (!argumentsAreRight) return K2V_RHAL_ERR_PARAM;
  return board.hdcp2.initialized ? K2V_RHAL_OK : K2V_RHAL_ERR_ORDER;
}

void ForgetAuthentications(Hdcp2& receiver) {
  for (Hdcp2Port& port : receiver.ports) {
    port.status = {};
    port.paired = false;
  }
}

int Initialize(Board& board) {
  if (board.hdcp2.initialized) return K2V_RHAL_ERR_ALREADY;
  board.hdcp2.initialized = true;
  return K2V_RHAL_OK;
}

int Erase(Board& board) {
  if (const int error = CheckInitialized(board, true)) return error;
  board.hdcp2.loaded = board.hdcp2.verified = false;
  ForgetAuthentications(board.hdcp2);
  return K2V_RHAL_OK;
}

int Release(Board& board) {
  if (const int error = Erase(board)) return error;
  board.hdcp2.initialized = board.hdcp2.repeater = false;
  board.hdcp2.revokedCount = 0;
  return K2V_RHAL_OK;
}

int LoadKeys(Board& board) {
  if (const int error = CheckInitialized(board, true)) return error;
  hdcp2::MakeKeys(board.hdcp2.keys);
  board.hdcp2.loaded = true;
  return K2V_RHAL_OK;
}

int GetKeyInfo(Board& board, K2V_HDCP2_KEY_INFO_T* info) {
  if (const int error = CheckInitialized(board, info != nullptr)) return error;
  *info = {};
  if (!board.hdcp2.loaded) return K2V_RHAL_OK;
  info->bLoaded = 1;
  info->bVerified = board.hdcp2.verified;
  std::copy_n(board.hdcp2.keys.certificate, K2V_HDCP2_ID_BYTES, info->receiverId);
  info->nVersion = 2;
  return K2V_RHAL_OK;
}

bool HasBadCertificate(const Hdcp2& receiver) {
  return std::ranges::any_of(receiver.ports, [](const Hdcp2Port& port) {
    return port.order.fault == Hdcp2Fault::kCertificate;
  });
}

int VerifyKeys(Board& board) {
  if (const int error = CheckInitialized(board, true)) return error;
  Hdcp2& receiver = board.hdcp2;
  if (!receiver.loaded) return K2V_RHAL_ERR_ORDER;
  receiver.verified = !HasBadCertificate(receiver) && hdcp2::AreKeysRight(receiver.keys);
  return receiver.verified ? K2V_RHAL_OK : K2V_RHAL_ERR_FAIL;
}

int SetRevoked(Board& board, const uint8_t* ids, uint32_t count) {
  const bool areRight = count <= K2V_HDCP2_MAX_REVOKED && IsData(ids, count);
  if (const int error = CheckInitialized(board, areRight)) return error;
  std::copy_n(ids, count * K2V_HDCP2_ID_BYTES, board.hdcp2.revoked[0]);
  board.hdcp2.revokedCount = count;
  return K2V_RHAL_OK;
}

int SetRepeater(Board& board, uint32_t on) {
  if (const int error = CheckInitialized(board, on <= 1)) return error;
  board.hdcp2.repeater = on == 1;
  return K2V_RHAL_OK;
}

hdcp2::Source SourceAt(const HdmiPort& port) {
  const bool speaksHdcp2 = port.cable && port.sending && HdcpVersion(port) == K2V_HDMI_HDCP_2_2;
  return {speaksHdcp2, 1};
}

int CheckAuthentication(const Board& board, uint8_t port, uint32_t state) {
  const bool areRight =
      port < kPortCount && state >= K2V_HDCP2_STATE_AKE && state <= K2V_HDCP2_STATE_STREAM;
  return CheckInitialized(board, areRight);
}

/// Sleeps in the board's time while the source keeps up the link. The board is unlocked meanwhile.
/// Sleeps until absolute times, because the board's clock for tests shortens relative sleeps.
class LinkTime {
 public:
  LinkTime(const Board& board, uint8_t port)
      : port_(port), beginNs_(MonotonicNs()), scale_(board.clock.timeScale) {}

  bool PassUntil(uint64_t us) {
    constexpr uint64_t kGlanceUs = 50'000;
    while (passedUs_ < us && IsUp()) {
      passedUs_ = std::min(us, passedUs_ + kGlanceUs);
      SleepUntil(passedUs_);
    }
    return IsUp();
  }

 private:
  bool IsUp() const { return SourceAt(BoardLock()->hdmi.ports[port_]).speaksHdcp2; }

  void SleepUntil(uint64_t us) const {
    const int64_t ns = beginNs_ + std::llround(static_cast<double>(us) * 1e3 / scale_);
    timespec until{};
    until.tv_sec = static_cast<time_t>(ns / 1'000'000'000);
    until.tv_nsec = static_cast<long>(ns % 1'000'000'000);
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr) == EINTR) {
    }
  }

  const uint8_t port_;
  const int64_t beginNs_;
  const double scale_;
  uint64_t passedUs_ = 0;
};

void NoteMessage(uint8_t port, hdcp2::View message) {
  const BoardLock board;
  Note("# hdcp2 port " + std::to_string(port) + ": " + std::string(hdcp2::NameOf(message)) + ", " +
       std::to_string(message.size()) + " bytes");
}

/// Stores the outcome of an authentication. Orders given in the meantime stay.
void Adopt(Hdcp2Port& port, const Hdcp2Port& worked, const Hdcp2Port& before) {
  const bool isSameOrder =
      port.order.fault == before.order.fault && port.order.timesLeft == before.order.timesLeft;
  const Hdcp2Order order = isSameOrder ? worked.order : port.order;
  const Hdcp2Downstream downstream = port.downstream;
  port = worked;
  port.order = order;
  port.downstream = downstream;
}

// Works on copies and locks the board only at the beginning and at the end: an authentication takes
// as long as on a television.
int Authenticate(uint8_t port, uint32_t state) {
  std::optional<BoardLock> board(std::in_place);
  if (const int error = CheckAuthentication(**board, port, state)) return error;
  (*board)->hdcp2.ports[port].status = {};
  const Hdcp2 receiver = (*board)->hdcp2;
  Hdcp2Port worked = receiver.ports[port];
  const hdcp2::Source source = SourceAt((*board)->hdmi.ports[port]);
  LinkTime time(**board, port);
  board.reset();
  hdcp2::Channel channel([&](uint64_t us) { return time.PassUntil(us); },
                         [=](hdcp2::View message) { NoteMessage(port, message); });
  const int result = hdcp2::Authenticate(receiver, worked, source, state, channel);
  board.emplace();
  if ((*board)->hdcp2.initialized) Adopt((*board)->hdcp2.ports[port], worked, receiver.ports[port]);
  return result;
}

int GetStatus(Board& board, uint8_t port, K2V_HDCP2_STATUS_T* status) {
  if (const int error = CheckInitialized(board, port < kPortCount && status != nullptr)) {
    return error;
  }
  K2V_HDCP2_STATUS_T& current = board.hdcp2.ports[port].status;
  const bool failed = current.eState == K2V_HDCP2_STATE_FAILED;
  if (!failed && !SourceAt(board.hdmi.ports[port]).speaksHdcp2) current = {};  // it has stopped
  *status = current;
  return K2V_RHAL_OK;
}

int Deauthenticate(Board& board, uint8_t port) {
  if (const int error = CheckInitialized(board, port < kPortCount)) return error;
  board.hdcp2.ports[port].status = {};
  return K2V_RHAL_OK;
}

// The primitives need no initialisation.

template <typename Result>
int Give(const Result& result, uint8_t* out) {
  std::ranges::copy(result, out);
  return K2V_RHAL_OK;
}

int GiveRandom(Board&, uint8_t* out, uint32_t size) {
  if (out == nullptr || size == 0 || size > K2V_HDCP2_MAX_RANDOM_BYTES) return K2V_RHAL_ERR_PARAM;
  return Give(hdcp2::Random(size), out);
}

int GiveDigest(Board&, const uint8_t* data, uint32_t size, uint8_t* digest) {
  if (!IsData(data, size) || digest == nullptr) return K2V_RHAL_ERR_PARAM;
  return Give(hdcp2::Sha256(ViewOf(data, size)), digest);
}

int GiveMac(const uint8_t* key, uint32_t keySize, const uint8_t* data, uint32_t size,
            uint8_t* mac) {
  if (key == nullptr || keySize == 0 || !IsData(data, size) || mac == nullptr) {
    return K2V_RHAL_ERR_PARAM;
  }
  return Give(hdcp2::HmacSha256(ViewOf(key, keySize), ViewOf(data, size)), mac);
}

int GiveCtr(const uint8_t* key, const uint8_t* counter, const uint8_t* in, uint8_t* out,
            uint32_t size) {
  if (key == nullptr || counter == nullptr || in == nullptr || out == nullptr || size == 0) {
    return K2V_RHAL_ERR_PARAM;
  }
  hdcp2::Key keyBytes{}, counterBytes{};
  std::copy_n(key, keyBytes.size(), keyBytes.begin());
  std::copy_n(counter, counterBytes.size(), counterBytes.begin());
  return Give(hdcp2::AesCtr(keyBytes, counterBytes, ViewOf(in, size)), out);
}

int GiveCiphertext(const K2V_HDCP2_RSA_KEY_T* key, const uint8_t* message, uint32_t size,
                   uint8_t* ciphertext) {
  if (key == nullptr || message == nullptr || size == 0 || size > K2V_HDCP2_MAX_OAEP_BYTES ||
      ciphertext == nullptr) {
    return K2V_RHAL_ERR_PARAM;
  }
  const auto encrypted =
      hdcp2::OaepEncrypt({key->modulus, key->publicExponent}, ViewOf(message, size));
  return encrypted ? Give(*encrypted, ciphertext) : K2V_RHAL_ERR_FAIL;
}

int GivePlaintext(const K2V_HDCP2_RSA_KEY_T* key, const uint8_t* ciphertext, uint8_t* message,
                  uint32_t* size) {
  if (key == nullptr || ciphertext == nullptr || message == nullptr || size == nullptr) {
    return K2V_RHAL_ERR_PARAM;
  }
  const auto decrypted = hdcp2::OaepDecrypt(*key, ViewOf(ciphertext, K2V_HDCP2_RSA_BYTES));
  if (!decrypted) return K2V_RHAL_ERR_FAIL;
  if (decrypted->size() > *size) return K2V_RHAL_ERR_PARAM;
  *size = static_cast<uint32_t>(decrypted->size());
  return Give(*decrypted, message);
}

int CheckSignature(const uint8_t* modulus, uint32_t modulusSize, const uint8_t* exponent,
                   const uint8_t* data, uint32_t size, const uint8_t* signature) {
  const bool isSize =
      modulusSize == K2V_HDCP2_RSA_BYTES || modulusSize == K2V_HDCP2_SIGNATURE_BYTES;
  if (!isSize || modulus == nullptr || exponent == nullptr || !IsData(data, size) ||
      signature == nullptr) {
    return K2V_RHAL_ERR_PARAM;
  }
  const hdcp2::PublicKey key = {ViewOf(modulus, modulusSize),
                                ViewOf(exponent, K2V_HDCP2_EXPONENT_BYTES)};
  return hdcp2::VerifySignature(key, ViewOf(data, size), ViewOf(signature, modulusSize))
             ? K2V_RHAL_OK
             : K2V_RHAL_ERR_FAIL;
}

}  // namespace
}  // namespace sim

using namespace sim;

int K2V_RHAL_HDCP2_Initialize() {
  return Call(__func__, Initialize);
}

int K2V_RHAL_HDCP2_Release() {
  return Call(__func__, Release);
}

int K2V_RHAL_HDCP2_LoadKeys() {
  return Call(__func__, LoadKeys);
}

int K2V_RHAL_HDCP2_GetKeyInfo(K2V_HDCP2_KEY_INFO_T* info) {
  return Call(__func__, GetKeyInfo, Out{info});
}

int K2V_RHAL_HDCP2_VerifyKeys() {
  return Call(__func__, VerifyKeys);
}

int K2V_RHAL_HDCP2_EraseKeys() {
  return Call(__func__, Erase);
}

int K2V_RHAL_HDCP2_SetRevocationList(const uint8_t* ids, uint32_t count) {
  return Call(
      __func__, [ids](Board& board, Secret, uint32_t n) { return SetRevoked(board, ids, n); },
      Secret{ids, count * K2V_HDCP2_ID_BYTES}, count);
}

int K2V_RHAL_HDCP2_SetRepeater(uint32_t on) {
  return Call(__func__, SetRepeater, on);
}

int K2V_RHAL_HDCP2_Authenticate(uint8_t port, uint32_t state) {
  return CallAtLength(__func__, Authenticate, port, state);
}

int K2V_RHAL_HDCP2_GetStatus(uint8_t port, K2V_HDCP2_STATUS_T* status) {
  return Call(__func__, GetStatus, port, Out{status});
}

int K2V_RHAL_HDCP2_Deauthenticate(uint8_t port) {
  return Call(__func__, Deauthenticate, port);
}

int K2V_RHAL_HDCP2_Random(uint8_t* out, uint32_t size) {
  return Call(
      __func__, [out](Board& board, Secret bytes) { return GiveRandom(board, out, bytes.size); },
      Secret{out, size});
}

int K2V_RHAL_HDCP2_Sha256(const uint8_t* data, uint32_t size, uint8_t* digest) {
  return Call(
      __func__, [=](Board& board, Secret, Secret) { return GiveDigest(board, data, size, digest); },
      Secret{data, size}, Secret{digest, K2V_HDCP2_HASH_BYTES});
}

int K2V_RHAL_HDCP2_HmacSha256(const uint8_t* key, uint32_t keySize, const uint8_t* data,
                              uint32_t size, uint8_t* mac) {
  return Call(
      __func__,
      [=](Board&, Secret, Secret, Secret) { return GiveMac(key, keySize, data, size, mac); },
      Secret{key, keySize}, Secret{data, size}, Secret{mac, K2V_HDCP2_HASH_BYTES});
}

int K2V_RHAL_HDCP2_AesCtr(const uint8_t* key, const uint8_t* counter, const uint8_t* in,
                          uint8_t* out, uint32_t size) {
  return Call(
      __func__, [=](Board&, Secret, Secret) { return GiveCtr(key, counter, in, out, size); },
      Secret{in, size}, Secret{out, size});
}

int K2V_RHAL_HDCP2_RsaOaepEncrypt(const K2V_HDCP2_RSA_KEY_T* key, const uint8_t* message,
                                  uint32_t size, uint8_t* ciphertext) {
  return Call(
      __func__,
      [=](Board&, const K2V_HDCP2_RSA_KEY_T* k, Secret) {
        return GiveCiphertext(k, message, size, ciphertext);
      },
      key, Secret{message, size});
}

int K2V_RHAL_HDCP2_RsaOaepDecrypt(const K2V_HDCP2_RSA_KEY_T* key, const uint8_t* ciphertext,
                                  uint8_t* message, uint32_t* size) {
  return Call(
      __func__,
      [=](Board&, const K2V_HDCP2_RSA_KEY_T* k, Secret, uint32_t* room) {
        return GivePlaintext(k, ciphertext, message, room);
      },
      key, Secret{ciphertext, K2V_HDCP2_RSA_BYTES}, Out{size});
}

int K2V_RHAL_HDCP2_RsaVerify(const uint8_t* modulus, uint32_t modulusSize, const uint8_t* exponent,
                             const uint8_t* data, uint32_t size, const uint8_t* signature) {
  return Call(
      __func__,
      [=](Board&, Secret, Secret, Secret) {
        return CheckSignature(modulus, modulusSize, exponent, data, size, signature);
      },
      Secret{modulus, modulusSize}, Secret{data, size}, Secret{signature, modulusSize});
}
