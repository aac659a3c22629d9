// Calls every function of the simulated board's HAL, so that the board's trace can be compared with
// a recording, and the memory written by a replay with that written by the board. Arguments are
// derived only from the C++ types, independently of the recorder's annotations of directions and
// sizes.
#include <sys/mman.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <type_traits>
#include <vector>

#include "HalInterface.h"

namespace {

constexpr size_t kRoom = 1 << 17;  // at every pointer; the last byte stays zero

enum class Pattern { kNull, kZero, kOne, kCounting };

/// Prints a hash of the memory passed to a call or a handler.
void PrintMemory(std::string_view name, const void* memory, size_t bytes) {
  const std::string_view content(static_cast<const char*>(memory), bytes);
  std::printf("%.*s %zu bytes, %zx\n", static_cast<int>(name.size()), name.data(), bytes,
              std::hash<std::string_view>()(content));
}

class Caller {
 public:
  Caller(Pattern pattern, bool ends, RLink* link) : pattern_(pattern), ends_(ends), link_(link) {}

  template <typename Result, typename... Arguments>
  void Call(std::string_view name, Result (*function)(Arguments...)) {
    if (!IsCalled(name)) return;
    function(Argument<Arguments>()...);
    PrintBlocks(name);
  }
  template <typename Result, typename... Arguments>
  void Call(std::string_view name, Result (RLink::*method)(Arguments...)) {
    if (!IsCalled(name)) return;
    (link_->*method)(Argument<Arguments>()...);
    PrintBlocks(name);
  }

 private:
  // Functions that end something are called last, so that the others find it started.
  bool IsCalled(std::string_view name) const {
    bool isEnd = false;
    for (const char* const word : {"elease", "inal", "lose", "top", "ninit", "einit", "DeInit"}) {
      isEnd = isEnd || name.find(word) != name.npos;
    }
    return isEnd == ends_;
  }

  template <typename T>
  T Argument() {
    if constexpr (std::is_same_v<T, RLNK_BUFFER*>) {
      return nullptr;  // other values must come from the HAL
    } else if constexpr (std::is_pointer_v<T>) {
      if constexpr (std::is_function_v<std::remove_pointer_t<T>>) return nullptr;
      if (pattern_ == Pattern::kNull) return nullptr;
      return reinterpret_cast<T>(Memory());
    } else if constexpr (std::is_class_v<T>) {
      T record;
      std::memcpy(&record, Memory(), sizeof record);
      return record;
    } else {
      return static_cast<T>(Number<std::conditional_t<std::is_enum_v<T>, int, T>>());
    }
  }

  template <typename T>
  T Number() {
    switch (pattern_) {
      case Pattern::kNull:
      case Pattern::kZero:
        return 0;
      case Pattern::kOne:
        return 1;
      case Pattern::kCounting:
        return static_cast<T>(++last_);
    }
    return 0;
  }

  // The memory after the block cannot be read, so that an excessive size always ends there.
  void* Memory() {
    constexpr size_t kGuard = 1 << 16;
    void* const map =
        mmap(nullptr, kRoom + kGuard, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    auto* const block = static_cast<uint8_t*>(map);
    if (map == MAP_FAILED || mprotect(block + kRoom, kGuard, PROT_NONE) != 0) std::exit(1);
    blocks_.push_back(block);
    for (size_t i = 0; i + 1 < kRoom && pattern_ != Pattern::kZero; ++i) {
      block[i] = pattern_ == Pattern::kOne ? i % 4 == 0 : static_cast<uint8_t>(i + blocks_.size());
    }
    return block;
  }

  void PrintBlocks(std::string_view name) {
    for (; printed_ < blocks_.size(); ++printed_) PrintMemory(name, blocks_[printed_], kRoom);
  }

  Pattern pattern_;
  bool ends_;
  RLink* link_;
  unsigned last_ = 0;
  std::vector<uint8_t*> blocks_;  // kept until the process ends
  size_t printed_ = 0;            // number of blocks already printed
};

void CallAll(Pattern pattern, bool ends, RLink* link) {
  Caller caller(pattern, ends, link);
#define CVN_FUNCTION(result, name, parameters, call, arguments) caller.Call(#name, name);
#define CVN_METHOD(result, name, parameters, call, arguments) caller.Call(#name, &RLink::name);
#define CVN_LINK_FUNCTION(result, name, parameters, call, arguments)
#define CVN_CALLBACK(result, name, parameters, call, arguments)
#include "HalCalls.inc"
}

// Uses a picture: pixels in both directions, and a capture.
void UseScaler() {
  uint8_t edid[K2V_HDMI_EDID_BYTES] = {};
  K2V_RHAL_VFE_HDMI_Initialize();
  K2V_RHAL_VFE_HDMI_WriteEDID(0, edid);
  K2V_RHAL_VFE_HDMI_Open();
  K2V_RHAL_VFE_HDMI_EnableHPD();
  K2V_RHAL_VFE_HDMI_Connect(0);
  K2V_RHAL_VSC_Initialize();
  K2V_RHAL_VSC_Open(0);
  K2V_RHAL_VSC_Connect(0, {2, 0x1f0, 1});
  K2V_VIDEO_RECT_T rect = {0, 0, 3, 2};
  K2V_VIDEO_PIXEL_T pixels[6] = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {10, 11, 12}, {13, 14, 15}, {}};
  uint32_t standard = 0, format = 0;
  K2V_RHAL_VSC_WriteVideoFrameBuffer(0, &rect, pixels);
  K2V_RHAL_VSC_ReadVideoFrameBuffer(0, &rect, pixels, &standard, &format);
  std::vector<uint8_t> capture(K2V_CAPTURE_BYTES + 100);
  K2V_VSC_CAPTURE_INFO_T info = {capture.data(), K2V_CAPTURE_BYTES + 100, 0, 0};
  K2V_RHAL_VSC_CaptureVideoFrame(0, &info);
  K2V_VPQ_PIXEL_INFO_T pixel = {30, 40, 1, 2, 3};
  K2V_RHAL_VPQEX_GetPixelinfo(&pixel);
  PrintMemory("K2V_RHAL_VPQEX_GetPixelinfo", &pixel, sizeof pixel);
}

RLNK_HOST_SESSION heardSession = {};
RLNK_CMD_PARAMS heardParams = {};

// Sets the second and the third parameter, the slave's output parameters.
void HandleCommand(RLNK_HOST_SESSION* session, RLNK_CMD_PARAMS* params) {
  heardSession = *session;
  heardParams = *params;
  params->param[1] = {21, 22};
  params->param[2] = {23, 24};
}

// Uses data in a link buffer, in one piece and wrapping around its end.
void UseLink(RLink* link) {
  RLNK_HOST_SESSION session = {};
  link->RegisterInvokeCommand(0x54455354, HandleCommand);
  link->OpenSession(0x54455354, &session);
  RLNK_BUFFER* const buffer = link->AllocateBuffer(&session, 100, RLNK_BUFFER_RECEIVE);
  for (const uint32_t taken : {60U, 79U}) {
    RLNK_CMD_PARAMS params = {0x1006, 0x211, {{buffer->handle, 70}, {3, 0}, {}, {}}};
    link->Send(&session, &params);
    RLNK_BUFFER_RANGE range = {};
    link->GetBufferDataRange(&session, buffer, &range);
    PrintMemory("start_1", range.start_1, range.size_1);
    PrintMemory("start_2", range.start_2, range.size_2);
    uint8_t data[79];
    link->GetBuffer(&session, buffer, data, taken);
  }
  link->ReleaseBuffer(&session, buffer);
  RLNK_CMD_PARAMS invoke = {0x1003, 0, {}};
  link->Send(&session, &invoke);
  link->CloseSession(&session);
  PrintMemory("RLink::CloseSession", &session, sizeof session);
  PrintMemory("session of the handler", &heardSession, sizeof heardSession);
  PrintMemory("parameters of the handler", &heardParams, sizeof heardParams);
}

constexpr struct {
  std::string_view name;
  Pattern pattern;
} kPatterns[] = {{"null", Pattern::kNull},
                 {"zero", Pattern::kZero},
                 {"one", Pattern::kOne},
                 {"counting", Pattern::kCounting}};

}  // namespace

int main(int argc, char** argv) {
  RLink* const link = RLink::Create();
  if (argc == 2 && std::string_view(argv[1]) == "session") {
    UseScaler();
    UseLink(link);
    return 0;
  }
  for (const auto& [name, pattern] : kPatterns) {
    if (argc != 2 || name != argv[1]) continue;
    CallAll(pattern, false, link);
    CallAll(pattern, true, link);
    return 0;
  }
  return 2;
}
