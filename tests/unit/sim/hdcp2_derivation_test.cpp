// Values derived by HDCP 2, compared with the openssl command line.
#include <gtest/gtest.h>

#include <cstdio>
#include <numeric>
#include <string>

#include "hdcp2/Derivation.h"
#include "hdcp2/Messages.h"

namespace {

using sim::hdcp2::Bytes;
using sim::hdcp2::Key;
using sim::hdcp2::View;

constexpr char kDigits[] = "0123456789abcdef";

std::string Hex(View bytes) {
  std::string hex;
  for (const uint8_t byte : bytes) hex.append({kDigits[byte >> 4], kDigits[byte & 15]});
  return hex;
}

/// Exclusive or of two hexadecimal numbers; the shorter one is aligned to the end of the other.
std::string Xor(std::string number, const std::string& mask) {
  for (std::size_t i = 1; i <= mask.size(); ++i) {
    const auto digit = [i](const std::string& text) {
      return std::string(kDigits).find(text[text.size() - i]);
    };
    number[number.size() - i] = kDigits[digit(number) ^ digit(mask)];
  }
  return number;
}

/// Output of openssl for the bytes of `hex`, as hexadecimal digits.
std::string Openssl(const std::string& arguments, const std::string& hex) {
  std::string escaped;
  for (std::size_t i = 0; i < hex.size(); i += 2) escaped += "\\\\x" + hex.substr(i, 2);
  const std::string command =
      "bash -c \"printf '%b' '" + escaped + "' | openssl " + arguments + " | od -An -v -tx1\"";
  std::FILE* pipe = popen(command.c_str(), "r");
  std::string digits;
  for (int c = 0; (c = std::fgetc(pipe)) != EOF;) {
    if (std::isxdigit(c) != 0) digits.push_back(static_cast<char>(c));
  }
  EXPECT_EQ(pclose(pipe), 0) << command;
  return digits;
}

std::string Aes(const std::string& key, const std::string& counter, const std::string& data) {
  return Openssl("enc -aes-128-ctr -K " + key + " -iv " + counter, data);
}

std::string Hmac(const std::string& key, const std::string& data) {
  return Openssl("dgst -sha256 -mac HMAC -macopt hexkey:" + key + " -binary", data);
}

/// Bytes starting at `first` with irregular steps.
Bytes Numbers(std::size_t size, uint8_t first) {
  Bytes bytes(size);
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<uint8_t>(first + i * 37 + i * i);
  return bytes;
}

/// The numbers of one authentication, and the values that openssl derives from them.
struct Authentication {
  Key km = sim::hdcp2::KeyFrom(Numbers(16, 0x11));
  Bytes rtx = Numbers(8, 0x22), rrx = Numbers(8, 0x33), rn = Numbers(8, 0x44);
  std::string zeros = std::string(32, '0');

  /// dkey 0 to 2; rn is used only for the last one.
  std::string Dkey(int number) const {
    const std::string key = number < 2 ? Hex(km) : Xor(Hex(km), Hex(rn));
    const std::string last = {'0', static_cast<char>('0' + number)};
    return Aes(key, Hex(rtx) + Xor(Hex(rrx), last), zeros);
  }
  std::string Kd() const { return Dkey(0) + Dkey(1); }
  Bytes OurKd() const { return sim::hdcp2::SharedKey(km, rtx, rrx); }
};

TEST(Hdcp2Derivation, KeysMatchOpenssl) {
  const Authentication a;
  EXPECT_EQ(Hex(a.OurKd()), a.Kd());
  EXPECT_EQ(Hex(sim::hdcp2::DerivedKey(a.km, a.rn, a.rtx, a.rrx, 2)), a.Dkey(2));
  EXPECT_NE(a.Dkey(0), a.Dkey(1));

  const Bytes secret = Numbers(128, 0x55);
  const std::string digest = Openssl("dgst -sha256 -binary", Hex(secret));
  const Key kh = sim::hdcp2::PairingKey(secret);
  EXPECT_EQ(Hex(kh), digest.substr(32)) << "the lower half of the digest";
  const Key m = sim::hdcp2::KeyFrom(sim::hdcp2::Joined({a.rtx, a.rrx}));
  const Bytes paired = sim::hdcp2::PairedKey(kh, m, a.km);
  EXPECT_EQ(Hex(paired), Aes(digest.substr(32), Hex(a.rtx) + Hex(a.rrx), Hex(a.km)));
  EXPECT_EQ(Hex(sim::hdcp2::PairedKey(kh, m, paired)), Hex(a.km))
      << "decrypting gives the original key";

  const Key ks = sim::hdcp2::KeyFrom(Numbers(16, 0x66));
  const Key dkey2 = sim::hdcp2::DerivedKey(a.km, a.rn, a.rtx, a.rrx, 2);
  EXPECT_EQ(Hex(sim::hdcp2::MaskedSessionKey(ks, dkey2, a.rrx)),
            Xor(Hex(ks), Xor(a.Dkey(2), Hex(a.rrx))));
}

TEST(Hdcp2Derivation, ProofsMatchOpenssl) {
  const Authentication a;
  const Bytes kd = a.OurKd(), rxCaps = {2, 0, 1}, txCaps = {2, 0, 0};
  EXPECT_EQ(Hex(sim::hdcp2::HPrime(kd, a.rtx, rxCaps, txCaps)),
            Hmac(a.Kd(), Hex(a.rtx) + "020001" + "020000"));
  EXPECT_EQ(Hex(sim::hdcp2::LPrime(kd, a.rrx, a.rn)), Hmac(Xor(a.Kd(), Hex(a.rrx)), Hex(a.rn)));
  const Bytes ids = Numbers(15, 0x77), rxInfo = {0x04, 0x30}, sequence = {0, 0, 1};
  EXPECT_EQ(Hex(sim::hdcp2::ListProof(kd, ids, rxInfo, sequence)),
            Hmac(a.Kd(), Hex(ids) + "0430" + "000001"));
  const Bytes streams = {0, 1};
  EXPECT_EQ(Hex(sim::hdcp2::StreamProof(kd, streams, sequence)),
            Hmac(Openssl("dgst -sha256 -binary", a.Kd()),
                 "0001"
                 "000001"));
}

TEST(Hdcp2Derivation, KeystreamDependsOnSessionKeyConstantAndCounter) {
  const Key ks = sim::hdcp2::KeyFrom(Numbers(16, 1));
  const Bytes lc128 = Numbers(16, 2), riv = Numbers(8, 3);
  EXPECT_EQ(Hex(sim::hdcp2::Keystream(ks, lc128, riv)),
            Aes(Xor(Hex(ks), Hex(lc128)), Hex(riv) + std::string(16, '0'), std::string(64, '0')));
}

TEST(Hdcp2Messages, HaveTheirIdentifiersAndSizes) {
  using sim::hdcp2::IsMessage;
  using sim::hdcp2::MessageId;
  const struct {
    MessageId id;
    uint8_t byte;
    std::size_t size;
    std::size_t more;  // bytes of an additional item; 0 for none
  } kCases[] = {
      {MessageId::kAkeInit, 2, 12, 0},        {MessageId::kAkeSendCert, 3, 534, 0},
      {MessageId::kAkeNoStoredKm, 4, 129, 0}, {MessageId::kAkeStoredKm, 5, 33, 0},
      {MessageId::kAkeSendHPrime, 7, 33, 0},  {MessageId::kAkeSendPairingInfo, 8, 17, 0},
      {MessageId::kLcInit, 9, 9, 0},          {MessageId::kLcSendLPrime, 10, 33, 0},
      {MessageId::kSkeSendEks, 11, 25, 0},    {MessageId::kReceiverIdList, 12, 22, 5},
      {MessageId::kAck, 15, 17, 0},           {MessageId::kStreamManage, 16, 6, 2},
      {MessageId::kStreamReady, 17, 33, 0},
  };
  for (const auto& c : kCases) {
    Bytes message(c.size, 0);
    message[0] = c.byte;
    EXPECT_TRUE(IsMessage(message, c.id)) << int{c.byte};
    EXPECT_FALSE(IsMessage(View(message).first(c.size - 1), c.id)) << int{c.byte};
    message.push_back(0);
    EXPECT_FALSE(IsMessage(message, c.id)) << int{c.byte};
    message.resize(c.size + c.more);
    EXPECT_TRUE(IsMessage(message, c.id)) << int{c.byte};
    message[0] = 6;  // no such message
    EXPECT_FALSE(IsMessage(message, c.id));
    EXPECT_EQ(sim::hdcp2::NameOf(message), "");
  }
  EXPECT_FALSE(IsMessage({}, MessageId::kAkeInit));
}

}  // namespace
