// Encodes and decodes calls. HalInterface.h, which is generated, visits the arguments and results
// of every call and the fields of every record with these classes; Description reads the same bytes
// without knowing the call.
//
// All numbers are little-endian without padding. A pointer is encoded as one byte, 0 if it is null,
// and what it points to; the elements of a buffer follow their number.
#pragma once

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

#include "interface/Digest.h"
#include "interface/Identities.h"
#include "rlink.h"

namespace record {

template <typename T, typename Record>
concept IsA = std::same_as<std::remove_const_t<T>, Record>;

template <typename T>
concept IsScalar = std::is_arithmetic_v<T> || std::is_enum_v<T>;

// The outputs of a failed call are ignored.
template <std::integral T>
bool Succeeded(T result) {
  return result == 0;
}
template <typename T>
bool Succeeded(const T* result) {
  return result != nullptr;
}

// Records that contain buffers are encoded even if the pointer to them is null.
template <typename Record>
inline constexpr bool kHasBuffers = false;

enum : uint32_t {
  kMaxBufferBytes = 16 << 20,  // of one buffer; the rest is not recorded
  kMaxTextBytes = 4096,
  kMaxSecretBytes = 4096,  // of a secret that the digest covers
};

/// Substitutes for secrets, of which a recording contains only the digests.
class SecretMemory {
 public:
  virtual ~SecretMemory() = default;
  /// Registers a secret that was passed to a call. Returns its digest; for a stand-in, the digest
  /// in the recording.
  virtual ShortDigest Given(const ShortDigest& digest, const void* secret, size_t size) = 0;
};

/// What the encoding of a call depends on besides its arguments.
struct CodecContext {
  Salt salt{};
  Identities objects{};    // links and buffers
  Identities functions{};  // handlers
  SecretMemory* secrets = nullptr;
};

/// Copies at most `size` bytes of the caller's memory, which may be shorter than the caller claims.
/// Returns the number of bytes copied.
size_t CopyReadable(uint8_t* to, const void* from, size_t size);
/// The same, for kernels and emulators on which process_vm_readv() does not work.
size_t CopyThroughPipe(uint8_t* to, const void* from, size_t size);

/// What encoder and decoders share: arrays and records are visited element by element.
template <typename Self, bool isReturn>
class Codec {
 public:
  static constexpr bool kIsReturn = isReturn;

  template <typename T>
  void operator()(T& value) {
    if constexpr (IsScalar<std::remove_const_t<T>>) {
      self().Scalar(value);
    } else if constexpr (std::is_array_v<T> &&
                         IsScalar<std::remove_cv_t<std::remove_extent_t<T>>>) {
      self().Numbers(value);
    } else if constexpr (std::is_array_v<T>) {
      for (auto& element : value) (*this)(element);
    } else {
      Visit(self(), value);
    }
  }

 private:
  Self& self() { return static_cast<Self&>(*this); }
};

// The parameters of a command of the link: the values of this event's direction, and the content of
// memory instead of its address.
struct LinkParameter {
  static constexpr uint32_t kMemory = 4;  // bit of the type; the two bits below are its directions
  static bool IsMemory(uint32_t type) { return (type & kMemory) != 0; }
  static bool Goes(uint32_t type, bool isReturn) { return (type & (isReturn ? 2U : 1U)) != 0; }
  static uint32_t Type(const RLNK_CMD_PARAMS& params, unsigned index) {
    return params.paramTypes >> (4 * index) & 0xF;
  }
};

template <typename V, IsA<RLNK_CMD_PARAMS> R>
void Visit(V& v, R& params) {
  if constexpr (!V::kIsReturn) {
    v(params.cmd_id);
    v(params.paramTypes);
  }
  for (unsigned i = 0; i < RLNK_PARAM_COUNT; ++i) {
    const uint32_t type = LinkParameter::Type(params, i);
    v.LinkValue(params.param[i], type);
  }
  for (unsigned i = 0; i < RLNK_PARAM_COUNT; ++i) {
    const uint32_t type = LinkParameter::Type(params, i);
    v.LinkMemory(params.param[i], type);
  }
}

/// Writes to memory of `room` bytes. What does not fit is counted but not written; the caller then
/// encodes again with `Size()` bytes of room.
template <bool isReturn>
class Encoder : public Codec<Encoder<isReturn>, isReturn> {
 public:
  Encoder(CodecContext& context, uint8_t* memory, size_t room)
      : context_(context), memory_(memory), room_(room) {}

  /// Whether addresses of the link's memory are kept: those given by the HAL are meaningful.
  bool keepsAddresses = false;

  /// The number assigned to a handler; 0: the next one.
  uint32_t handlerNumber = 0;

  size_t Size() const { return size_; }
  bool Fits() const { return size_ <= room_; }

  template <typename T>
  void Scalar(T value) {
    if (size_ + sizeof value <= room_) std::memcpy(memory_ + size_, &value, sizeof value);
    size_ += sizeof value;
  }

  template <typename T>
  void Numbers(const T& numbers) {
    if (size_ + sizeof numbers <= room_) std::memcpy(memory_ + size_, &numbers, sizeof numbers);
    size_ += sizeof numbers;
  }

  void Given(const void* pointer) { Scalar(uint8_t{pointer != nullptr}); }

  template <typename T>
  void In(const T* pointer) {
    Given(pointer);
    if constexpr (kHasBuffers<T>) {
      const T none{};
      (*this)(pointer != nullptr ? *pointer : none);
    } else {
      if (pointer != nullptr) (*this)(*pointer);
    }
  }

  template <typename T>
  void InBuffer(const T* elements, uint64_t count) {
    Given(elements);
    CallersMemory(elements, elements == nullptr ? 0 : count);
  }

  void InBuffer(const void* bytes, uint64_t count) {
    InBuffer(static_cast<const uint8_t*>(bytes), count);
  }

  void InText(const char* text) { InBuffer(text, text == nullptr ? 0 : TextLength(text)); }

  template <typename T>
  void InSecret(const T* secret, uint64_t bytes) {
    Given(secret);
    if (secret != nullptr) Secret(secret, bytes);
  }

  void Room(const void* pointer, uint64_t count) {
    Given(pointer);
    Scalar(static_cast<uint32_t>(std::min<uint64_t>(count, UINT32_MAX)));
  }

  template <typename T>
  void Out(const T* pointer, bool ok) {
    In(ok ? pointer : nullptr);
  }

  template <typename T>
  void OutBuffer(const T* elements, uint64_t count, bool ok) {
    Memory(elements, ok ? count : 0);
  }

  void OutBuffer(const void* bytes, uint64_t count, bool ok) {
    OutBuffer(static_cast<const uint8_t*>(bytes), count, ok);
  }

  void OutText(const char* text, uint64_t room, bool ok) {
    Memory(text, ok && text != nullptr ? strnlen(text, static_cast<size_t>(room)) : 0);
  }

  void OutSecret(const void* secret, uint64_t bytes, bool ok) {
    InSecret(ok ? secret : nullptr, bytes);
  }

  template <typename Function>
  void Callback(Function function) {
    const auto address = reinterpret_cast<void*>(function);
    if (handlerNumber != 0) context_.functions.Bind(address, handlerNumber);
    Scalar(address == nullptr ? 0 : context_.functions.OfOrNew(address));
  }

  void Object(const void* object) { Scalar(context_.objects.Of(object)); }
  void NewObject(const void* object) { Scalar(context_.objects.Of(object)); }

  template <typename T>
  void HalRecord(const T* record) {
    In(record);
  }

  void FieldRoom(const void*, uint64_t) {}

  void CallerMemory(const void* memory, uint64_t bytes) {
    Memory(static_cast<const uint8_t*>(memory), bytes);
  }
  void HalMemory(const void* memory, uint64_t bytes) { CallerMemory(memory, bytes); }

  void LinkValue(const RLNK_CMD_PARAM& param, uint32_t type) {
    const bool isMemory = LinkParameter::IsMemory(type);
    const bool goes = LinkParameter::Goes(type, isReturn);
    const bool isKept = isMemory ? keepsAddresses && !isReturn : goes;
    Scalar(isKept ? param.a : 0);
    Scalar(goes || (isMemory && !isReturn) ? param.b : 0);
  }

  void LinkMemory(const RLNK_CMD_PARAM& param, uint32_t type) {
    const bool goes = LinkParameter::IsMemory(type) && LinkParameter::Goes(type, isReturn);
    CallersMemory(reinterpret_cast<const uint8_t*>(static_cast<uintptr_t>(param.a)),
                  goes && param.a != 0 ? param.b : 0);
  }

 private:
  static uint64_t TextLength(const char* text) { return strnlen(text, kMaxTextBytes); }

  template <typename T>
  static constexpr bool IsPlain() {
    return IsScalar<T>;
  }

  // The HAL has just written all of it.
  template <typename T>
  void Memory(const T* elements, uint64_t count) {
    if (elements == nullptr) count = 0;
    const size_t kept = static_cast<size_t>(std::min<uint64_t>(count, kMaxBufferBytes / sizeof(T)));
    Scalar(static_cast<uint32_t>(kept));
    if constexpr (IsPlain<T>()) {
      const size_t bytes = kept * sizeof(T);
      if (elements != nullptr && size_ + bytes <= room_)
        std::memcpy(memory_ + size_, elements, bytes);
      size_ += bytes;
    } else {
      for (size_t i = 0; i < kept; ++i) (*this)(elements[i]);
    }
  }

  // The HAL may reject a call before it reads a buffer that is shorter than its stated size.
  template <typename T>
  void CallersMemory(const T* elements, uint64_t count) {
    const size_t most = static_cast<size_t>(std::min<uint64_t>(count, kMaxBufferBytes / sizeof(T)));
    const size_t bytes = most * sizeof(T);
    const size_t begin = size_ + sizeof(uint32_t);
    size_t readable = bytes;
    if (begin + bytes <= room_) readable = CopyReadable(memory_ + begin, elements, bytes);
    const size_t kept = readable / sizeof(T);
    Scalar(static_cast<uint32_t>(kept));
    size_ += kept * sizeof(T);
  }

  // Like any buffer of the caller, a secret may be shorter than its stated size.
  void Secret(const void* secret, uint64_t bytes) {
    uint8_t copy[kMaxSecretBytes];
    const size_t most = static_cast<size_t>(std::min<uint64_t>(bytes, sizeof copy));
    const size_t size = CopyReadable(copy, secret, most);
    ShortDigest digest = SaltedDigest(context_.salt, copy, size);
    if (context_.secrets != nullptr) digest = context_.secrets->Given(digest, copy, size);
    Scalar(static_cast<uint32_t>(bytes));
    (*this)(digest.bytes);
  }

  CodecContext& context_;
  uint8_t* memory_;
  size_t room_;
  size_t size_ = 0;
};

}  // namespace record
