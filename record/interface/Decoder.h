// Decodes the arguments with which handlers are called and calls are repeated, and provides what
// the decoder of results (replay/Answers.h) shares.
#pragma once

#include <memory>
#include <span>
#include <vector>

#include "interface/Codec.h"

namespace record {

/// Memory for the data that decoded pointers refer to.
class Arena {
 public:
  Arena() = default;
  ~Arena();
  Arena(const Arena&) = delete;
  Arena& operator=(const Arena&) = delete;

  /// Zeroed, and aligned for any type.
  void* Allocate(size_t bytes);
  /// Memory in the lowest 4 GiB, which the link's slave can address; at `wanted` if that is free.
  /// Null if there is none.
  void* AllocateLow(size_t bytes, uint32_t wanted);

 private:
  struct Mapping {
    uint8_t* memory;
    size_t bytes;
  };
  void* MapAt(uintptr_t wanted, size_t bytes, int flags);

  std::vector<std::unique_ptr<std::max_align_t[]>> blocks_;
  std::vector<Mapping> mappings_;
};

/// What both decoders share: the bytes. Past their end, everything is zero.
class DecoderBytes {
 public:
  explicit DecoderBytes(std::span<const uint8_t> bytes) : bytes_(bytes) {}

  void Take(void* to, size_t size) {
    const size_t there = std::min(size, bytes_.size());
    std::memcpy(to, bytes_.data(), there);
    std::memset(static_cast<uint8_t*>(to) + there, 0, size - there);
    bytes_ = bytes_.subspan(there);
  }
  uint32_t TakeCount() {
    uint32_t count = 0;
    Take(&count, sizeof count);
    return count;
  }
  bool TakeFlag() {
    uint8_t flag = 0;
    Take(&flag, sizeof flag);
    return flag != 0;
  }
  std::span<const uint8_t> TakeBytes(uint64_t size) {
    const auto taken =
        bytes_.subspan(0, static_cast<size_t>(std::min<uint64_t>(size, bytes_.size())));
    bytes_ = bytes_.subspan(taken.size());
    return taken;
  }

 private:
  std::span<const uint8_t> bytes_;
};

/// The arguments of a call or of a handler.
class EntryDecoder : public Codec<EntryDecoder, false> {
 public:
  EntryDecoder(CodecContext& context, std::span<const uint8_t> bytes, Arena& arena)
      : context_(context), bytes_(bytes), arena_(arena) {}

  /// True if the call had secrets, which a recording does not contain.
  bool HadSecrets() const { return hadSecrets_; }

  template <typename T>
  void Scalar(T& value) {
    bytes_.Take(&value, sizeof value);
  }
  template <typename T>
  void Numbers(T& numbers) {
    bytes_.Take(&numbers, sizeof numbers);
  }

  template <typename T>
  void Given(T*& pointer) {
    pointer = bytes_.TakeFlag() ? static_cast<T*>(arena_.Allocate(SizeOf<T>(1))) : nullptr;
  }

  template <typename T>
  void In(T*& pointer) {
    using Plain = std::remove_const_t<T>;
    const bool isGiven = bytes_.TakeFlag();
    auto* const memory = static_cast<Plain*>(arena_.Allocate(sizeof(Plain)));
    if (isGiven || kHasBuffers<Plain>) (*this)(*memory);
    pointer = isGiven ? memory : nullptr;
  }

  template <typename T>
  void InBuffer(T*& elements, uint64_t) {
    using Plain = std::conditional_t<std::is_void_v<T>, uint8_t, std::remove_const_t<T>>;
    const bool isGiven = bytes_.TakeFlag();
    elements =
        TakeElements<std::conditional_t<std::is_void_v<std::remove_const_t<T>>, uint8_t, Plain>>();
    if (!isGiven) elements = nullptr;
  }

  void InText(const char*& text) {
    const bool isGiven = bytes_.TakeFlag();
    text = TakeElements<char>();
    if (!isGiven) text = nullptr;
  }

  template <typename T>
  void InSecret(T*& secret, uint64_t) {
    secret = nullptr;
    if (!bytes_.TakeFlag()) return;
    bytes_.TakeBytes(sizeof(uint32_t) + sizeof(ShortDigest));
    hadSecrets_ = true;
  }

  template <typename T>
  void Room(T*& elements, uint64_t) {
    const bool isGiven = bytes_.TakeFlag();
    const uint64_t bytes = std::min<uint64_t>(SizeOf<T>(bytes_.TakeCount()), kMaxBufferBytes);
    elements = isGiven ? static_cast<T*>(arena_.Allocate(static_cast<size_t>(bytes))) : nullptr;
  }

  /// For a field that was `Given` before its size was known.
  template <typename T>
  void FieldRoom(T*& memory, uint64_t count) {
    const uint64_t bytes = std::min<uint64_t>(SizeOf<T>(count), kMaxBufferBytes);
    if (memory != nullptr) memory = static_cast<T*>(arena_.Allocate(static_cast<size_t>(bytes)));
  }

  template <typename... Arguments>
  void Callback(void (*&function)(Arguments...)) {
    const uint32_t number = bytes_.TakeCount();
    if (number != 0) function = [](Arguments...) {};  // a placeholder, for repeated calls
  }

  template <typename T>
  void Object(T*& object) {
    object = static_cast<T*>(context_.objects.Find(bytes_.TakeCount()));
  }

  void LinkValue(RLNK_CMD_PARAM& param, uint32_t) {
    Scalar(param.a);
    Scalar(param.b);
  }

  void LinkMemory(RLNK_CMD_PARAM& param, uint32_t type) {
    const uint32_t size = bytes_.TakeCount();
    const auto content = bytes_.TakeBytes(size);
    if (!LinkParameter::IsMemory(type)) return;
    const size_t room =
        std::min<size_t>(std::max<size_t>(param.b, content.size()), kMaxBufferBytes);
    void* const memory = arena_.AllocateLow(std::max<size_t>(room, 1), param.a);
    if (memory == nullptr) return;
    std::copy(content.begin(), content.end(), static_cast<uint8_t*>(memory));
    param.a = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(memory));
  }

 private:
  template <typename T>
  static constexpr uint64_t SizeOf(uint64_t count) {
    if constexpr (std::is_void_v<T>) {
      return count;
    } else {
      return count * sizeof(T);
    }
  }

  // Followed by a zero element, so that texts are terminated.
  template <typename T>
  T* TakeElements() {
    const uint32_t count = std::min<uint32_t>(bytes_.TakeCount(), kMaxBufferBytes / sizeof(T));
    auto* const memory = static_cast<T*>(arena_.Allocate((size_t{count} + 1) * sizeof(T)));
    for (uint32_t i = 0; i < count; ++i) (*this)(memory[i]);
    return memory;
  }

  CodecContext& context_;
  DecoderBytes bytes_;
  Arena& arena_;
  bool hadSecrets_ = false;
};

}  // namespace record
