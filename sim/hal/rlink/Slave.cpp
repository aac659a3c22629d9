#include "rlink/Slave.h"

#include <sys/mman.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <initializer_list>
#include <iterator>
#include <numeric>
#include <vector>

#include "k2v/types.h"

namespace sim {
namespace {

using Params = RLNK_CMD_PARAMS;
using Param = RLNK_CMD_PARAM;

// Patterns: words of four letters, beginning with "USET" in memory, and plain numbers.
constexpr uint32_t kFirstLetters = 0x54455355;
constexpr uint32_t kFirstWord = 0x1004;
constexpr uint32_t kAnswerOffset = 0x31;

enum InvokedCommand : uint32_t { kInvokeValues = 0x2001, kInvokeMemory = 0x2002, kNotice = 0x2010 };

uint32_t TypeOf(const Params& params, unsigned i) {
  return params.paramTypes >> (4 * i) & 0xF;
}

uint8_t* Memory(const Param& param) {
  return reinterpret_cast<uint8_t*>(uintptr_t{param.a});
}

uint32_t WordAt(const Param& param, uint32_t index) {
  uint32_t word = 0;
  std::memcpy(&word, Memory(param) + index * sizeof(word), sizeof(word));
  return word;
}

void SetWord(const Param& param, uint32_t index, uint32_t word) {
  std::memcpy(Memory(param) + index * sizeof(word), &word, sizeof(word));
}

uint32_t WordCount(const Param& param) {
  return param.b / static_cast<uint32_t>(sizeof(uint32_t));
}

// Fills the memory of a parameter with consecutive numbers from `next`; returns the next number.
uint32_t FillWords(const Param& param, uint32_t next) {
  for (uint32_t i = 0; i < WordCount(param); ++i) SetWord(param, i, next++);
  return next;
}

// Memory that the slave lends to the host for a command that it invokes: 1 KiB from a ring of such
// pieces, below 4 GiB. Null if no such memory can be mapped.
uint8_t* LendMemory() {
  constexpr size_t kPieceBytes = 1024;
  constexpr unsigned kPieces = 64;
  static uint8_t* const area = [] {
    void* const wanted = reinterpret_cast<void*>(uintptr_t{0x30000000});
    void* const got = mmap(wanted, kPieceBytes * kPieces, PROT_READ | PROT_WRITE,
                           MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    const bool low = got != MAP_FAILED && reinterpret_cast<uintptr_t>(got) < UINT32_MAX;
    return low ? static_cast<uint8_t*>(got) : nullptr;
  }();
  static std::atomic<unsigned> next{0};
  return area == nullptr ? nullptr : area + (next++ % kPieces) * kPieceBytes;
}

// Assigns consecutive memory of the given sizes to the parameters from `first` on.
bool LayMemory(Params& params, unsigned first, std::initializer_list<uint32_t> sizes) {
  const uint8_t* memory = LendMemory();
  for (const uint32_t size : sizes) {
    if (memory == nullptr) return false;
    params.param[first++] = {static_cast<uint32_t>(reinterpret_cast<uintptr_t>(memory)), size};
    memory += size;
  }
  return true;
}

// Inverts one bit of every parameter in the direction of the types' `bit` (1 in, 2 out).
void Falsify(Params& params, uint32_t bit) {
  for (unsigned i = 0; i < RLNK_PARAM_COUNT; ++i) {
    const uint32_t type = TypeOf(params, i);
    if ((type & bit) == 0) continue;
    if (type < RLNK_PARAM_MEMREF_IN) {
      params.param[i].a ^= 1;
    } else if (params.param[i].b > 0) {
      *Memory(params.param[i]) ^= 1;
    }
  }
}

void Invoke(const SlaveView& view, Params params) {
  if (view.wrong) Falsify(params, 1);
  view.invoke(params);
}

int AnswerValues(const SlaveView&, Params& params) {
  uint32_t next = params.param[1].b;
  for (const unsigned i : {1U, 2U}) {
    params.param[i] = {next + 1, next + 2};
    next += 2;
  }
  return K2V_RHAL_OK;
}

int AnswerMemory(const SlaveView&, Params& params) {
  if (WordCount(params.param[0]) == 0) return K2V_RHAL_ERR_PARAM;
  uint32_t next = WordAt(params.param[0], 0) + kAnswerOffset;
  for (const unsigned i : {1U, 2U, 3U}) next = FillWords(params.param[i], next);
  return K2V_RHAL_OK;
}

int InvokeValues(const SlaveView& view, Params&) {
  Invoke(view, {kInvokeValues,
                0x231,
                {{kFirstLetters, kFirstLetters + 1}, {kFirstLetters + 2, kFirstLetters + 3}}});
  return K2V_RHAL_OK;
}

int InvokeMemory(const SlaveView& view, Params&) {
  Params invoked = {kInvokeMemory, 0x7655, {}};
  if (!LayMemory(invoked, 0, {8, 8, 16, 24})) return K2V_RHAL_ERR_FAIL;
  uint32_t next = kFirstWord;
  for (const Param& param : invoked.param) next = FillWords(param, next);
  Invoke(view, invoked);
  return K2V_RHAL_OK;
}

// The answer to InvokeMemory: the host's data continue the slave's first number.
int CheckAnswer(const SlaveView&, Params& params) {
  uint32_t expected = kFirstWord + kAnswerOffset;
  for (const unsigned i : {2U, 3U}) {
    for (uint32_t word = 0; word < WordCount(params.param[i]); ++word) {
      if (WordAt(params.param[i], word) != expected++) return K2V_RHAL_ERR_FAIL;
    }
  }
  return K2V_RHAL_OK;
}

uint32_t Checksum(const std::vector<uint8_t>& bytes) {
  return std::accumulate(bytes.begin(), bytes.end(), uint32_t{0});
}

// Takes the data out of the buffer and returns their checksum.
int TakeData(const SlaveView& view, Params& params) {
  const auto& [handle, size] = params.param[0];
  const auto ring = view.ring(handle);
  if (ring == nullptr || size > ring->Used()) return K2V_RHAL_ERR_PARAM;
  std::vector<uint8_t> bytes(size);
  if (!ring->Take(bytes)) return K2V_RHAL_ERR_PARAM;
  params.param[2] = {Checksum(bytes), size};
  return K2V_RHAL_OK;
}

// Puts consecutive byte values into the buffer and returns their checksum.
int PutData(const SlaveView& view, Params& params) {
  const auto& [handle, size] = params.param[0];
  const auto ring = view.ring(handle);
  if (ring == nullptr || size > ring->Free()) return K2V_RHAL_ERR_PARAM;
  std::vector<uint8_t> bytes(size);
  std::iota(bytes.begin(), bytes.end(), static_cast<uint8_t>(params.param[1].a));
  if (!ring->Put(bytes)) return K2V_RHAL_ERR_PARAM;
  params.param[2] = {Checksum(bytes), size};
  return K2V_RHAL_OK;
}

// Sends the host its own values back, with memory to write to. The memory that the host sent with
// them must be zero.
int Notice(const SlaveView& view, Params& params) {
  const Param& zeros = params.param[1];
  for (uint32_t i = 0; i < WordCount(zeros); ++i) {
    if (WordAt(zeros, i) != 0) return K2V_RHAL_ERR_FAIL;
  }
  Params invoked = {kNotice, 0x71, {params.param[0]}};
  if (!LayMemory(invoked, 1, {24})) return K2V_RHAL_ERR_FAIL;
  FillWords(invoked.param[1], 0);
  Invoke(view, invoked);
  return K2V_RHAL_OK;
}

struct Service {
  uint32_t command;
  uint32_t paramTypes;
  int (*serve)(const SlaveView& view, Params& params);
};

constexpr Service kServices[] = {
    {0x1001, 0x231, AnswerValues}, {0x1002, 0x7675, AnswerMemory}, {0x1003, 0, InvokeValues},
    {0x1004, 0, InvokeMemory},     {0x1005, 0x211, TakeData},      {0x1006, 0x211, PutData},
    {0x1007, 0x7655, CheckAnswer}, {0x1010, 0x51, Notice},
};

bool HasItsMemory(const Params& params) {
  for (unsigned i = 0; i < RLNK_PARAM_COUNT; ++i) {
    const bool isMemory = TypeOf(params, i) >= RLNK_PARAM_MEMREF_IN;
    if (isMemory && params.param[i].a == 0 && params.param[i].b > 0) return false;
  }
  return true;
}

}  // namespace

int ServeCommand(const SlaveView& view, Params& params) {
  const auto service = std::ranges::find(kServices, params.cmd_id, &Service::command);
  if (service == std::end(kServices)) return K2V_RHAL_ERR_NOT_SUPPORTED;
  if (service->paramTypes != params.paramTypes || !HasItsMemory(params)) return K2V_RHAL_ERR_PARAM;
  const int result = service->serve(view, params);
  if (view.wrong) Falsify(params, 2);
  return result;
}

}  // namespace sim
