// Every function of the HAL through the recorder's encoding, the reader's description and back.
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <array>
#include <deque>
#include <limits>

#include "Descriptions.inc"
#include "HalInterface.h"
#include "interface/Decoder.h"
#include "reader/Value.h"
#include "replay/Answers.h"

namespace record {

// Not used in these tests.
RLink* NewReplayLink() {
  return nullptr;
}

namespace {

enum class Pattern { kLowest, kHighest, kCounting, kNull };

/// Fills in arguments of a call: numbers at the limits of their types, and valid memory for each
/// pointer.
template <bool isReturn>
class Filler : public Codec<Filler<isReturn>, isReturn> {
 public:
  Filler(Pattern pattern, Arena& arena) : pattern_(pattern), arena_(arena) {}

  template <typename T>
  void Scalar(T& value) {
    if constexpr (std::is_enum_v<T>) {
      value = static_cast<T>(1);
    } else if (pattern_ == Pattern::kCounting) {
      value = static_cast<T>(++last_);
    } else {
      value = pattern_ == Pattern::kHighest ? std::numeric_limits<T>::max()
                                            : std::numeric_limits<T>::lowest();
    }
  }
  template <typename T>
  void Numbers(T& numbers) {
    for (auto& number : numbers) Scalar(number);
  }
  template <typename T>
  void In(T*& pointer) {
    using Plain = std::remove_const_t<T>;
    if (pattern_ == Pattern::kNull) return;
    if (pointer == nullptr) pointer = static_cast<Plain*>(arena_.Allocate(sizeof(Plain)));
    auto& value = const_cast<Plain&>(*pointer);
    if constexpr (std::is_same_v<Plain, RLNK_CMD_PARAMS>) {
      FillParameters(value);
    } else if constexpr (std::is_same_v<Plain, K2V_VIDEO_RECT_T>) {
      value = {1, 2, 30, 4};
    } else if constexpr (IsScalar<Plain>) {
      value = 9;  // for example, sizes of buffers
    } else {
      (*this)(value);
    }
    if constexpr (std::is_same_v<Plain, RLNK_BUFFER_RANGE>) value.size_1 = value.size_2 = 9;
    if constexpr (std::is_same_v<Plain, K2V_VSC_CAPTURE_INFO_T>) value.dataSize = 999;
  }
  template <typename T>
  void Out(T* pointer, bool) {
    if (pointer != nullptr) In(pointer);
  }
  template <typename T>
  void Given(T*& pointer) {
    using Plain = std::remove_pointer_t<std::remove_const_t<T>*>;
    if constexpr (std::is_void_v<T>) {
      pointer = arena_.Allocate(1);
    } else if (pattern_ != Pattern::kNull) {
      pointer = static_cast<T*>(arena_.Allocate(std::max(sizeof(Plain), kRoom)));
    }
  }
  template <typename T>
  void InBuffer(T*& elements, uint64_t) {
    if (pattern_ == Pattern::kNull) return;
    void* const memory = arena_.Allocate(kRoom);
    std::memset(memory, 0xA5, kRoom);
    elements = static_cast<T*>(memory);
  }
  template <typename T>
  void InSecret(T*& secret, uint64_t size) {
    InBuffer(secret, size);
  }
  template <typename T>
  void Room(T*& elements, uint64_t count) {
    InBuffer(elements, count);
  }
  template <typename T>
  void OutBuffer(T*, uint64_t, bool) {}
  void OutSecret(const void*, uint64_t, bool) {}
  // The longest text fills its buffer and has no terminating zero byte.
  void OutText(char* text, uint64_t room, bool) {
    EXPECT_EQ(room, uint64_t{K2V_VPQ_TEXT_BYTES});
    if (text == nullptr) return;
    std::memset(text, 'x', kRoom);
    if (pattern_ != Pattern::kHighest) std::strcpy(text, "text");
  }
  void InText(const char*& text) { text = pattern_ == Pattern::kNull ? nullptr : "name"; }
  template <typename Function>
  void Callback(Function&) {}
  template <typename T>
  void Object(T*&) {}
  template <typename T>
  void NewObject(T*&) {}
  template <typename T>
  void HalRecord(T*& record) {
    In(record);
  }
  void FieldRoom(const void*, uint64_t) {}
  void CallerMemory(uint8_t* memory, uint64_t size) {
    if (memory != nullptr) std::fill_n(memory, std::min<uint64_t>(size, kRoom), uint8_t{0x3C});
  }
  template <typename T>
  void HalMemory(T*& memory, uint64_t) {
    void* const bytes = arena_.Allocate(kRoom);
    std::memset(bytes, 0xC3, kRoom);
    memory = static_cast<T*>(bytes);
  }
  void LinkValue(RLNK_CMD_PARAM&, uint32_t) {}
  void LinkMemory(RLNK_CMD_PARAM&, uint32_t) {}

 private:
  static constexpr size_t kRoom = 1 << 17;

  // A value and memory in each direction.
  void FillParameters(RLNK_CMD_PARAMS& params) {
    params = {7, 0x7325, {}};
    for (unsigned i = 0; i < RLNK_PARAM_COUNT; ++i) params.param[i] = {i + 1, 16};
    for (const unsigned i : {0U, 3U}) {
      void* const memory = arena_.AllocateLow(16, 0);
      std::memset(memory, 0x5A, 16);
      params.param[i].a = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(memory));
    }
  }

  Pattern pattern_;
  Arena& arena_;
  unsigned last_ = 0;
};

template <bool isReturn, typename Call>
std::vector<uint8_t> Encoded(Call& call, CodecContext& context) {
  std::vector<uint8_t> bytes(256);
  for (;;) {
    Encoder<isReturn> encoder(context, bytes.data(), bytes.size());
    if constexpr (isReturn) {
      call.Return(encoder);
    } else {
      call.Entry(encoder);
    }
    const bool fits = encoder.Fits();
    bytes.resize(encoder.Size());
    if (fits) return bytes;
  }
}

class EveryCall : public testing::Test {
 protected:
  EveryCall() { EXPECT_EQ(error_, ""); }

  void ExpectDescribed(unsigned index, bool isReturn, const std::vector<uint8_t>& bytes) {
    const Function& function = description_->Functions().at(index);
    bool good = false;
    ReadCall(function, isReturn, bytes, good);
    EXPECT_TRUE(good) << function.name << (isReturn ? ", return" : ", entry") << ", bytes "
                      << bytes.size() << ", described as " << function.line;
    EXPECT_EQ(SizeOfCall(function, isReturn, bytes), bytes.size()) << function.name;
    if (bytes.empty()) return;
    const Bytes cut = Bytes(bytes).first(bytes.size() - 1);
    EXPECT_EQ(SizeOfCall(function, isReturn, cut), std::nullopt) << function.name;
  }

  template <typename Call>
  void Check(Pattern pattern) {
    Arena arena, again;
    CodecContext context;
    Call call{};
    Filler<false> entry(pattern, arena);
    call.Entry(entry);
    const std::vector<uint8_t> bytes = Encoded<false>(call, context);
    ExpectDescribed(Call::kIndex, false, bytes);

    Call decoded{};
    EntryDecoder decoder(context, bytes, again);
    decoded.Entry(decoder);
    const bool isWhole = !decoder.HadSecrets() && bytes.size() < 1 << 16;
    EXPECT_TRUE(!isWhole || Encoded<false>(decoded, context) == bytes) << Call::kSymbol;
  }

  /// The results of a call match their description, and a replay returns them unchanged.
  template <typename Call>
  void CheckReturn(Pattern pattern) {
    Arena arena, again, halMemory;
    CodecContext context;
    SecretStandIns secrets(context.salt);
    Call call{}, answered{};
    Filler<false> entry(pattern == Pattern::kNull ? pattern : Pattern::kCounting, arena);
    call.Entry(entry);
    const std::vector<uint8_t> given = Encoded<false>(call, context);
    EntryDecoder decoder(context, given, again);
    answered.Entry(decoder);

    Filler<true> back(pattern, arena);
    call.Return(back);
    if constexpr (requires { call.result = 0; }) {
      if constexpr (std::is_integral_v<decltype(call.result)>)
        call.result = 0;  // the outputs count only after success
    }
    const std::vector<uint8_t> bytes = Encoded<true>(call, context);
    ExpectDescribed(Call::kIndex, true, bytes);
    ReturnDecoder replay(context, secrets, bytes, halMemory);
    answered.Return(replay);
    context.secrets = &secrets;
    EXPECT_EQ(Encoded<true>(answered, context), bytes) << Call::kSymbol;
  }

  std::string error_;
  std::unique_ptr<Description> description_ = Description::Parse(TextOf(kDescription), error_);
};

TEST_F(EveryCall, IsDecodedAsEncodedAtTheLimitsOfItsTypes) {
  for (const Pattern pattern :
       {Pattern::kLowest, Pattern::kHighest, Pattern::kCounting, Pattern::kNull}) {
#define CVN_ANY(call)   \
  Check<call>(pattern); \
  CheckReturn<call>(pattern);
#define CVN_FUNCTION(result, name, parameters, call, arguments) CVN_ANY(call)
#define CVN_METHOD(result, name, parameters, call, arguments) CVN_ANY(call)
#define CVN_LINK_FUNCTION(result, name, parameters, call, arguments) CVN_ANY(call)
#define CVN_CALLBACK(result, name, parameters, call, arguments) Check<call>(pattern);
#include "HalCalls.inc"
  }
}

// Keys and data derived from them: removing one from this list allows it into recordings.
TEST_F(EveryCall, HidesTheseSecrets) {
  std::vector<std::string> secrets;
  for (const Function& function : description_->Functions()) {
    for (const Argument& argument : function.arguments) {
      const bool isSecret = argument.way == Way::kSecretIn || argument.way == Way::kSecretOut;
      if (isSecret) secrets.push_back(function.name + ' ' + argument.name);
    }
  }
  EXPECT_EQ(
      secrets,
      (std::vector<std::string>{
          "K2V_RHAL_HDCP2_Random out", "K2V_RHAL_HDCP2_Sha256 data",
          "K2V_RHAL_HDCP2_HmacSha256 key", "K2V_RHAL_HDCP2_HmacSha256 data",
          "K2V_RHAL_HDCP2_AesCtr key", "K2V_RHAL_HDCP2_AesCtr in", "K2V_RHAL_HDCP2_AesCtr out",
          "K2V_RHAL_HDCP2_RsaOaepEncrypt key", "K2V_RHAL_HDCP2_RsaOaepEncrypt message",
          "K2V_RHAL_HDCP2_RsaOaepDecrypt key", "K2V_RHAL_HDCP2_RsaOaepDecrypt message",
          "K2V_RHAL_VFE_HDMI_WriteHDCP data", "K2V_RHAL_VFE_HDMI_ReadHDCP data"}));
}

TEST_F(EveryCall, ReportsFunctionsThatDifferInOtherHeaders) {
  std::string other = TextOf(kDescription), error;
  const auto replace = [&other](const std::string& from, const std::string& to) {
    const size_t at = other.find(from);
    ASSERT_NE(at, std::string::npos) << from;
    other.replace(at, from.size(), to);
  };
  replace("call K2V_RHAL_VSC_Open|val i32|val u32 wid",
          "call K2V_RHAL_VSC_Open|val i32|val u8 wid");
  replace("record K2V_VPQ_HISTOGRAM_T|u16 nAverage", "record K2V_VPQ_HISTOGRAM_T|u32 nAverage");
  const auto changed = Description::Parse(other, error);
  ASSERT_NE(changed, nullptr) << error;
  EXPECT_EQ(description_->Differences(*changed),
            (std::vector<std::string>{"K2V_RHAL_VPQ_GetHistoData", "K2V_RHAL_VPQ_GetHistogram",
                                      "K2V_RHAL_VSC_Open"}));
}

// A buffer that is shorter than its stated size must not crash the harness.
TEST(Buffers, AreReadUpToTheEndOfMappedMemory) {
  constexpr size_t kPage = 4096, kThere = 40 * kPage;
  void* const map =
      mmap(nullptr, kThere + kPage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(map, MAP_FAILED);
  auto* const memory = static_cast<uint8_t*>(map);
  for (size_t i = 0; i < kThere; ++i) memory[i] = static_cast<uint8_t>(i * 7 + i / kPage);
  ASSERT_EQ(mprotect(memory + kThere, kPage, PROT_NONE), 0);
  for (const auto copy : {CopyReadable, CopyThroughPipe}) {
    std::vector<uint8_t> to(kThere + kPage);
    EXPECT_EQ(copy(to.data(), memory + 100, to.size() - 100), kThere - 100);
    EXPECT_EQ(std::memcmp(to.data(), memory + 100, kThere - 100), 0);
    EXPECT_EQ(copy(to.data(), memory + 5, 9), 9U);
    EXPECT_EQ(copy(to.data(), memory + kThere, 16), 0U);
    EXPECT_EQ(copy(to.data(), nullptr, 16), 0U);
  }
  munmap(map, kThere + kPage);
}

TEST(StandIns, AreRecognisedAndNeverEqualOtherInputsByChance) {
  const Salt salt{};
  SecretStandIns secrets(salt);
  const auto digest = [&](const std::string& bytes) {
    return SaltedDigest(salt, bytes.data(), bytes.size());
  };
  const auto pass = [&](const std::string& bytes) {
    return std::to_array(secrets.Given(digest(bytes), bytes.data(), bytes.size()).bytes);
  };
  for (const std::string& secret : {std::string("sixteen byte key"), std::string("\x07"),
                                    std::string("\xff"), std::string("\x01")}) {
    std::string standIn(secret.size(), '\0');
    secrets.Fill(digest(secret), standIn.data(), standIn.size());
    EXPECT_EQ(standIn == secret, secret.size() == 1) << secret;
    EXPECT_EQ(pass(standIn), std::to_array(digest(secret).bytes)) << secret;
  }
  for (int i = 0; i < 256; ++i) {
    const std::string byte(1, static_cast<char>(i));
    EXPECT_EQ(pass(byte), std::to_array(digest(byte).bytes)) << i;
  }
}

TEST(Digests, MatchSha256) {
  const auto digest = [](std::string_view text) {
    const std::span<const uint8_t> parts[] = {
        {reinterpret_cast<const uint8_t*>(text.data()), text.size()}};
    std::string hex;
    char digits[3];
    for (const uint8_t byte : Sha256(parts)) {
      std::snprintf(digits, sizeof digits, "%02x", byte);
      hex += digits;
    }
    return hex;
  };
  EXPECT_EQ(digest("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(digest("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
            "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
  EXPECT_NE(SaltedDigest({1}, "key", 3).bytes[0], SaltedDigest({2}, "key", 3).bytes[0]);
}

}  // namespace
}  // namespace record
