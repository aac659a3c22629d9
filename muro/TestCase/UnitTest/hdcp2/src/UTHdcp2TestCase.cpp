#include "UTHdcp2TestCase.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "ConsoleInput.h"
#include "DriverTest.h"
#include "KnownAnswers.h"
#include "TestCase/sic_hal_driver/Hdcp2/src/Hdcp2Steps.h"

namespace {

using namespace hdcp2;

using Hash = std::array<uint8_t, K2V_HDCP2_HASH_BYTES>;
using Block = std::array<uint8_t, K2V_HDCP2_RSA_BYTES>;

constexpr uint8_t kPort = 0;

/// Prints what was checked, and its result. Returns `passed`.
bool Check(const char* what, bool passed) {
  std::printf("%s : %s\n", what, passed ? "OK" : "NG");
  return passed;
}

/// Prints the result line. Returns the test's result.
int Result(bool passed) {
  std::printf("Result : %s\n", passed ? "Passed" : "Failed");
  return passed ? 0 : 1;
}

std::string Hex(const Hash& hash) {
  std::string text;
  for (const uint8_t byte : hash) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02x", byte);
    text += digits;
  }
  return text;
}

const uint8_t* BytesOf(std::string_view text) {
  return reinterpret_cast<const uint8_t*>(text.data());
}

uint32_t SizeOf(std::string_view text) {
  return static_cast<uint32_t>(text.size());
}

bool DigestIsRight(const known_answers::DigestAnswer& answer) {
  Hash digest{};
  return Succeeded("K2V_RHAL_HDCP2_Sha256",
                   K2V_RHAL_HDCP2_Sha256(BytesOf(answer.message), SizeOf(answer.message),
                                         digest.data())) &&
         Hex(digest) == answer.digest;
}

bool MacIsRight(const known_answers::MacAnswer& answer) {
  std::vector<uint8_t> key(answer.keyText.begin(), answer.keyText.end());
  key.insert(key.end(), answer.keySize, answer.keyByte);
  Hash mac{};
  return Succeeded("K2V_RHAL_HDCP2_HmacSha256",
                   K2V_RHAL_HDCP2_HmacSha256(key.data(), static_cast<uint32_t>(key.size()),
                                             BytesOf(answer.message), SizeOf(answer.message),
                                             mac.data())) &&
         Hex(mac) == answer.mac;
}

/// True if counter mode turns `in` into `expected`.
bool CtrGives(const known_answers::CtrAnswer& answer, known_answers::Bytes in,
              known_answers::Bytes expected) {
  std::vector<uint8_t> out(in.size());
  return Succeeded("K2V_RHAL_HDCP2_AesCtr",
                   K2V_RHAL_HDCP2_AesCtr(answer.key.data(), answer.counter.data(), in.data(),
                                         out.data(), static_cast<uint32_t>(in.size()))) &&
         std::ranges::equal(out, expected);
}

bool DecryptsTo(const K2V_HDCP2_RSA_KEY_T& key, const uint8_t* ciphertext,
                known_answers::Bytes expected) {
  Block message{};
  uint32_t size = message.size();
  return Succeeded("K2V_RHAL_HDCP2_RsaOaepDecrypt",
                   K2V_RHAL_HDCP2_RsaOaepDecrypt(&key, ciphertext, message.data(), &size)) &&
         size <= message.size() &&
         std::ranges::equal(known_answers::Bytes(message).first(size), expected);
}

int VerifyRsa(const known_answers::RsaAnswer& answer, known_answers::Bytes message,
              const uint8_t* signature) {
  return K2V_RHAL_HDCP2_RsaVerify(answer.key.modulus, sizeof answer.key.modulus,
                                  answer.key.publicExponent, message.data(),
                                  static_cast<uint32_t>(message.size()), signature);
}

/// True if the last authentication on the port failed for `reason`.
bool FailedFor(uint32_t reason) {
  K2V_HDCP2_STATUS_T status{};
  return K2V_RHAL_HDCP2_GetStatus(kPort, &status) == 0 && status.eState == K2V_HDCP2_STATE_FAILED &&
         status.eReason == reason;
}

}  // namespace

int UTHdcp2TestCase::UTHdcp2Test_Init(char*) {
  PrintUnitTraceLine(__func__);
  bool passed = Restart();
  passed &= Check("initialise twice is refused", K2V_RHAL_HDCP2_Initialize() != 0);
  passed &= Check("release", K2V_RHAL_HDCP2_Release() == 0);
  passed &= Check("release twice is refused", K2V_RHAL_HDCP2_Release() != 0);
  passed &= Check("keys before initialise are refused", K2V_RHAL_HDCP2_LoadKeys() != 0);
  return Result(passed);
}

int UTHdcp2TestCase::UTHdcp2Test_Sha256(char*) {
  PrintUnitTraceLine(__func__);
  bool passed = true;
  for (const auto& answer : known_answers::Sha256Answers()) {
    passed &= Check("SHA-256 known answer", DigestIsRight(answer));
  }
  return Result(passed);
}

int UTHdcp2TestCase::UTHdcp2Test_HmacSha256(char*) {
  PrintUnitTraceLine(__func__);
  bool passed = true;
  for (const auto& answer : known_answers::HmacAnswers()) {
    passed &= Check("HMAC-SHA-256 known answer", MacIsRight(answer));
  }
  return Result(passed);
}

int UTHdcp2TestCase::UTHdcp2Test_AesCtr(char*) {
  PrintUnitTraceLine(__func__);
  const auto answer = known_answers::AesCtrAnswer();
  bool passed =
      Check("AES-128 CTR encrypts", CtrGives(answer, answer.plaintext, answer.ciphertext));
  passed &= Check("AES-128 CTR decrypts", CtrGives(answer, answer.ciphertext, answer.plaintext));
  const auto part = answer.plaintext.first(K2V_HDCP2_AES_BYTES + 1);
  passed &= Check("AES-128 CTR of a part of a block",
                  CtrGives(answer, part, answer.ciphertext.first(part.size())));
  return Result(passed);
}

int UTHdcp2TestCase::UTHdcp2Test_RsaOaep(char*) {
  PrintUnitTraceLine(__func__);
  const auto answer = known_answers::RsaAnswers();
  bool passed = Check("RSA-OAEP known answer",
                      DecryptsTo(answer.key, answer.ciphertext.data(), answer.message));
  Block ciphertext{};
  passed &= Check("RSA-OAEP encrypts",
                  Succeeded("K2V_RHAL_HDCP2_RsaOaepEncrypt",
                            K2V_RHAL_HDCP2_RsaOaepEncrypt(
                                &answer.key, answer.message.data(),
                                static_cast<uint32_t>(answer.message.size()), ciphertext.data())));
  passed &= Check("RSA-OAEP round trip", DecryptsTo(answer.key, ciphertext.data(), answer.message));
  ciphertext[0] ^= 1;
  uint32_t size = ciphertext.size();
  Block message{};
  passed &= Check(
      "RSA-OAEP refuses a changed ciphertext",
      K2V_RHAL_HDCP2_RsaOaepDecrypt(&answer.key, ciphertext.data(), message.data(), &size) != 0);
  return Result(passed);
}

int UTHdcp2TestCase::UTHdcp2Test_RsaSignature(char*) {
  PrintUnitTraceLine(__func__);
  const auto answer = known_answers::RsaAnswers();
  bool passed = Check("RSA signature known answer",
                      VerifyRsa(answer, answer.message, answer.signature.data()) == 0);
  std::vector<uint8_t> changed(answer.signature.begin(), answer.signature.end());
  changed.back() ^= 1;
  passed &= Check("RSA signature refuses a changed signature",
                  VerifyRsa(answer, answer.message, changed.data()) != 0);
  passed &= Check("RSA signature refuses another message",
                  VerifyRsa(answer, answer.message.first(1), answer.signature.data()) != 0);
  return Result(passed);
}

int UTHdcp2TestCase::UTHdcp2Test_Random(char*) {
  PrintUnitTraceLine(__func__);
  Block first{}, second{};
  bool passed =
      Succeeded("K2V_RHAL_HDCP2_Random", K2V_RHAL_HDCP2_Random(first.data(), first.size())) &&
      Succeeded("K2V_RHAL_HDCP2_Random", K2V_RHAL_HDCP2_Random(second.data(), second.size()));
  passed &= Check("two random numbers differ", first != second);
  const Block zeros{};
  passed &= Check("random numbers are not zero", first != zeros && second != zeros);
  return Result(passed);
}

int UTHdcp2TestCase::UTHdcp2Test_KeyStore(char*) {
  PrintUnitTraceLine(__func__);
  K2V_HDCP2_KEY_INFO_T info{};
  bool passed = Restart() && Prepare();
  passed &= Check("verify", Succeeded("K2V_RHAL_HDCP2_VerifyKeys", K2V_RHAL_HDCP2_VerifyKeys()));
  passed &= Check(
      "query", K2V_RHAL_HDCP2_GetKeyInfo(&info) == 0 && info.bLoaded == 1 && info.bVerified == 1);
  int ones = 0;
  for (const uint8_t byte : info.receiverId) ones += __builtin_popcount(byte);
  passed &= Check("receiver id has 20 ones", ones == 20);
  passed &= Check("erase", K2V_RHAL_HDCP2_EraseKeys() == 0 &&
                               K2V_RHAL_HDCP2_GetKeyInfo(&info) == 0 && info.bLoaded == 0);
  passed &= Check("verify without keys is refused", K2V_RHAL_HDCP2_VerifyKeys() != 0);
  return Result(passed);
}

int UTHdcp2TestCase::UTHdcp2Test_NullBuffers(char*) {
  PrintUnitTraceLine(__func__);
  const auto answer = known_answers::RsaAnswers();
  Block buffer{};
  uint32_t size = buffer.size();
  bool passed = Restart();
  const struct {
    const char* what;
    int result;
  } calls[] = {
      {"key info", K2V_RHAL_HDCP2_GetKeyInfo(nullptr)},
      {"status", K2V_RHAL_HDCP2_GetStatus(kPort, nullptr)},
      {"revocation list", K2V_RHAL_HDCP2_SetRevocationList(nullptr, 1)},
      {"random number", K2V_RHAL_HDCP2_Random(nullptr, 1)},
      {"message of a digest", K2V_RHAL_HDCP2_Sha256(nullptr, 1, buffer.data())},
      {"digest", K2V_RHAL_HDCP2_Sha256(buffer.data(), 1, nullptr)},
      {"key of a MAC", K2V_RHAL_HDCP2_HmacSha256(nullptr, 1, buffer.data(), 1, buffer.data())},
      {"MAC", K2V_RHAL_HDCP2_HmacSha256(buffer.data(), 1, buffer.data(), 1, nullptr)},
      {"AES key", K2V_RHAL_HDCP2_AesCtr(nullptr, buffer.data(), buffer.data(), buffer.data(), 1)},
      {"AES output",
       K2V_RHAL_HDCP2_AesCtr(buffer.data(), buffer.data(), buffer.data(), nullptr, 1)},
      {"RSA key", K2V_RHAL_HDCP2_RsaOaepEncrypt(nullptr, buffer.data(), 1, buffer.data())},
      {"RSA message size",
       K2V_RHAL_HDCP2_RsaOaepDecrypt(&answer.key, buffer.data(), buffer.data(), nullptr)},
      {"RSA message", K2V_RHAL_HDCP2_RsaOaepDecrypt(&answer.key, buffer.data(), nullptr, &size)},
      {"signature", VerifyRsa(answer, answer.message, nullptr)},
  };
  for (const auto& [what, result] : calls) {
    std::printf("NULL %s ", what);
    passed &= Check("is refused", result != 0);
  }
  return Result(passed);
}

int UTHdcp2TestCase::UTHdcp2Test_WrongLengths(char*) {
  PrintUnitTraceLine(__func__);
  const auto answer = known_answers::RsaAnswers();
  std::array<uint8_t, K2V_HDCP2_MAX_RANDOM_BYTES> buffer{};
  uint32_t room = 1;
  bool passed = Restart();
  passed &=
      Check("random number of no byte is refused", K2V_RHAL_HDCP2_Random(buffer.data(), 0) != 0);
  passed &= Check("random number too long is refused",
                  K2V_RHAL_HDCP2_Random(buffer.data(), buffer.size() + 1) != 0);
  passed &=
      Check("MAC key of no byte is refused",
            K2V_RHAL_HDCP2_HmacSha256(buffer.data(), 0, buffer.data(), 1, buffer.data()) != 0);
  passed &= Check("RSA message too long is refused",
                  K2V_RHAL_HDCP2_RsaOaepEncrypt(&answer.key, buffer.data(),
                                                K2V_HDCP2_MAX_OAEP_BYTES + 1, buffer.data()) != 0);
  passed &= Check("too little room for an RSA message is refused",
                  K2V_RHAL_HDCP2_RsaOaepDecrypt(&answer.key, answer.ciphertext.data(),
                                                buffer.data(), &room) != 0);
  passed &= Check("modulus of a wrong length is refused",
                  K2V_RHAL_HDCP2_RsaVerify(answer.key.modulus, sizeof answer.key.modulus - 1,
                                           answer.key.publicExponent, answer.message.data(),
                                           static_cast<uint32_t>(answer.message.size()),
                                           answer.signature.data()) != 0);
  passed &= Check("revocation list too long is refused",
                  K2V_RHAL_HDCP2_SetRevocationList(buffer.data(), K2V_HDCP2_MAX_REVOKED + 1) != 0);
  passed &= Check("port 4 is refused",
                  K2V_RHAL_HDCP2_Authenticate(4, K2V_HDCP2_STATE_AUTHENTICATED) != 0);
  return Result(passed);
}

int UTHdcp2TestCase::UTHdcp2Test_WithoutKeys(char*) {
  PrintUnitTraceLine(__func__);
  bool passed = Restart();
  passed &= Check("authentication without keys is refused",
                  K2V_RHAL_HDCP2_Authenticate(kPort, K2V_HDCP2_STATE_AUTHENTICATED) != 0);
  passed &= Check("the reason is told", FailedFor(K2V_HDCP2_REASON_NO_KEYS));
  return Result(passed);
}

int UTHdcp2TestCase::UTHdcp2Test_RevokedReceiver(char*) {
  PrintUnitTraceLine(__func__);
  K2V_HDCP2_KEY_INFO_T info{};
  bool passed = Restart() && Prepare() && K2V_RHAL_HDCP2_GetKeyInfo(&info) == 0;
  passed &= Check("revoke", K2V_RHAL_HDCP2_SetRevocationList(info.receiverId, 1) == 0);
  passed &= Check("authentication of a revoked receiver is refused",
                  K2V_RHAL_HDCP2_Authenticate(kPort, K2V_HDCP2_STATE_AUTHENTICATED) != 0);
  passed &= Check("the reason is told", FailedFor(K2V_HDCP2_REASON_REVOKED));
  passed &= Check("take back", K2V_RHAL_HDCP2_SetRevocationList(nullptr, 0) == 0);
  passed &= Check("authentication works again", Authenticate(kPort, K2V_HDCP2_STATE_AUTHENTICATED));
  return Result(passed);
}
