// Decodes the results of a recorded call into the caller's memory.
#pragma once

#include <map>
#include <string>

#include "interface/Decoder.h"

namespace record {

/// Stand-ins for secrets: secrets passed by the harness are identified by their digests; those
/// known only to the HAL are replaced by other bytes, which count as the secret in later calls.
class SecretStandIns : public SecretMemory {
 public:
  explicit SecretStandIns(const Salt& salt) : salt_(salt) {}

  ShortDigest Given(const ShortDigest& digest, const void* secret, size_t size) override;
  /// Fills `size` bytes for the secret with this digest.
  void Fill(const ShortDigest& digest, void* secret, size_t size);

 private:
  using Key = std::array<uint8_t, sizeof(ShortDigest)>;
  static Key KeyOf(const ShortDigest& digest);

  const Salt& salt_;
  std::mutex mutex_;
  std::map<Key, std::string> known_;
  std::map<Key, ShortDigest> standsFor_;  // digest of a stand-in -> digest of the secret
};

/// A new link that answers from the recording.
RLink* NewReplayLink();

class ReturnDecoder : public Codec<ReturnDecoder, true> {
 public:
  ReturnDecoder(CodecContext& context, SecretStandIns& secrets, std::span<const uint8_t> bytes,
                Arena& halMemory)
      : context_(context), secrets_(secrets), bytes_(bytes), halMemory_(halMemory) {}

  template <typename T>
  void Scalar(T& value) {
    bytes_.Take(&value, sizeof value);
  }
  template <typename T>
  void Numbers(T& numbers) {
    bytes_.Take(&numbers, sizeof numbers);
  }

  template <typename T>
  void Out(T* pointer, bool) {
    T unwanted{};
    const bool isWritten = bytes_.TakeFlag();
    if constexpr (kHasBuffers<T>) {
      if (pointer != nullptr && !isWritten) unwanted = *pointer;
    }
    if (isWritten || kHasBuffers<T>) (*this)(isWritten && pointer != nullptr ? *pointer : unwanted);
  }

  template <typename T>
  void OutBuffer(T* elements, uint64_t room, bool) {
    using Plain = std::conditional_t<std::is_void_v<T>, uint8_t, T>;
    auto* const target = static_cast<Plain*>(elements);
    const uint32_t count = bytes_.TakeCount();
    for (uint32_t i = 0; i < count && i < kMaxBufferBytes; ++i) {
      Plain element{};
      (*this)(element);
      if (target != nullptr && i < room) target[i] = element;
    }
  }

  void OutText(char* text, uint64_t room, bool) {
    const auto content = bytes_.TakeBytes(bytes_.TakeCount());
    if (text == nullptr) return;
    const size_t kept = std::min<size_t>(content.size(), static_cast<size_t>(room));
    std::copy_n(content.begin(), kept, text);
    if (kept < room) text[kept] = '\0';  // a text that fills the buffer is not terminated
  }

  void OutSecret(void* secret, uint64_t room, bool) {
    if (!bytes_.TakeFlag()) return;
    const uint32_t length = bytes_.TakeCount();
    ShortDigest digest{};
    bytes_.Take(&digest, sizeof digest);
    if (secret != nullptr) {
      secrets_.Fill(digest, secret, static_cast<size_t>(std::min<uint64_t>(length, room)));
    }
  }

  void NewObject(RLink*& link) {
    const uint32_t number = bytes_.TakeCount();
    link = number == 0 ? nullptr : NewReplayLink();
    context_.objects.Bind(link, number);
  }
  void NewObject(RLNK_BUFFER*& buffer) {
    const uint32_t number = bytes_.TakeCount();
    buffer = number == 0 ? nullptr : new RLNK_BUFFER{};
    context_.objects.Bind(buffer, number);
  }

  template <typename T>
  void HalRecord(T*& record) {
    using Plain = std::remove_const_t<T>;
    if (!bytes_.TakeFlag()) return;
    if (record == nullptr) record = static_cast<T*>(halMemory_.Allocate(sizeof(Plain)));
    (*this)(const_cast<Plain&>(*record));
  }

  void CallerMemory(uint8_t* memory, uint64_t room) {
    const auto content = bytes_.TakeBytes(bytes_.TakeCount());
    if (memory != nullptr)
      std::copy_n(content.begin(), std::min<uint64_t>(content.size(), room), memory);
  }

  template <typename T>
  void HalMemory(T*& memory, uint64_t) {
    const auto content = bytes_.TakeBytes(bytes_.TakeCount());
    auto* const copy = static_cast<uint8_t*>(halMemory_.Allocate(content.size()));
    std::ranges::copy(content, copy);
    memory = static_cast<T*>(static_cast<void*>(copy));
  }

  void LinkValue(RLNK_CMD_PARAM& param, uint32_t type) {
    RLNK_CMD_PARAM returned{};
    Scalar(returned.a);
    Scalar(returned.b);
    if (!LinkParameter::Goes(type, true)) return;
    if (!LinkParameter::IsMemory(type)) param.a = returned.a;
    param.b = returned.b;
  }

  void LinkMemory(RLNK_CMD_PARAM& param, uint32_t type) {
    const auto content = bytes_.TakeBytes(bytes_.TakeCount());
    if (!LinkParameter::IsMemory(type) || !LinkParameter::Goes(type, true) || param.a == 0) return;
    std::copy_n(content.begin(), std::min<size_t>(content.size(), param.b),
                reinterpret_cast<uint8_t*>(static_cast<uintptr_t>(param.a)));
  }

 private:
  CodecContext& context_;
  SecretStandIns& secrets_;
  DecoderBytes bytes_;
  Arena& halMemory_;
};

}  // namespace record
