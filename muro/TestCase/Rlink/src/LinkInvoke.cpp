#include "LinkInvoke.h"

#include <atomic>
#include <cstdio>
#include <cstring>
#include <initializer_list>

#include "LinkCommands.h"
#include "RlinkTestCase.h"

namespace {

// Written by the test and by the library's thread.
std::atomic<RLink*> answering{nullptr};
std::atomic<bool> succeeded{false};

uint32_t TypeOf(const RLNK_CMD_PARAMS& params, unsigned i) {
  return params.paramTypes >> (4 * i) & 0xF;
}

void* Memory(const RLNK_CMD_PARAM& param) {
  return reinterpret_cast<void*>(uintptr_t{param.a});
}

void PrintParam(uint32_t type, const RLNK_CMD_PARAM& param) {
  static constexpr const char* kDirections[] = {"", "IN", "OUT", "INOUT"};
  const char* direction = kDirections[type & 3];
  if (*direction == '\0') return;
  if (type < RLNK_PARAM_MEMREF_IN) {
    std::printf("VALUE %s, a = %d\n", direction, static_cast<int>(param.a));
    std::printf("VALUE %s, b = %d\n", direction, static_cast<int>(param.b));
  } else {
    std::printf("MEMREF %s, buffer = %p\n", direction, Memory(param));
    std::printf("MEMREF %s, size = %d\n", direction, static_cast<int>(param.b));
  }
}

constexpr uint32_t kMemoryTypes[] = {RLNK_PARAM_MEMREF_IN, RLNK_PARAM_MEMREF_IN,
                                     RLNK_PARAM_MEMREF_OUT, RLNK_PARAM_MEMREF_INOUT};
constexpr uint32_t kMemorySizes[] = {8, 8, 16, 24};
constexpr uint32_t kWordBytes = sizeof(uint32_t);
constexpr uint32_t kFilledBytes = 24;

/// Expected address of parameter `i`: the slave's memory is contiguous.
uint32_t ExpectedAddress(const RLNK_CMD_PARAMS& params, unsigned i) {
  uint32_t address = params.param[0].a;
  for (unsigned before = 0; before < i; ++before) address += kMemorySizes[before];
  return address;
}

void PrintMemory(const RLNK_CMD_PARAM& param) {
  const auto* bytes = static_cast<const unsigned char*>(Memory(param));
  for (uint32_t i = 0; i < param.b; ++i) std::printf("%02x ", bytes[i]);
  std::printf("\n");
}

bool CheckMemoryParams(const RLNK_CMD_PARAMS& params) {
  bool ok = params.param[0].a != 0;
  for (unsigned i = 0; i < RLNK_PARAM_COUNT; ++i) {
    std::printf("type%u: [%d, %d]\n", i, static_cast<int>(TypeOf(params, i)),
                static_cast<int>(kMemoryTypes[i]));
    ok = ok && TypeOf(params, i) == kMemoryTypes[i];
  }
  for (unsigned i = 0; i < RLNK_PARAM_COUNT; ++i) {
    const uint32_t expected = ExpectedAddress(params, i);
    std::printf("param[%u] buffer: [%p, %p]\n", i, Memory(params.param[i]), Memory({expected, 0}));
    ok = ok && params.param[i].a == expected;
  }
  for (unsigned i = 0; i < RLNK_PARAM_COUNT; ++i) {
    std::printf("param[%u] size: [%08x, %u]\n", i, params.param[i].b, kMemorySizes[i]);
    ok = ok && params.param[i].b == kMemorySizes[i];
  }
  return ok;
}

/// Prints the memory and checks the numbers of the input parameters. Output parameters are counted
/// too.
bool CheckNumbers(const RLNK_CMD_PARAMS& params) {
  bool ok = true;
  uint32_t expected = kFirstNumber;
  for (unsigned i = 0; i < RLNK_PARAM_COUNT; ++i) {
    PrintMemory(params.param[i]);
    for (uint32_t at = 0; at < kMemorySizes[i]; at += kWordBytes, ++expected) {
      uint32_t word = 0;
      std::memcpy(&word, static_cast<const char*>(Memory(params.param[i])) + at, kWordBytes);
      ok = ok && (kMemoryTypes[i] == RLNK_PARAM_MEMREF_OUT || word == expected);
    }
  }
  return ok;
}

/// Writes the host's numbers to the output parameters.
void WriteAnswer(const RLNK_CMD_PARAMS& params) {
  uint32_t next = kFirstAnswer;
  for (const RLNK_CMD_PARAM* param : {&params.param[2], &params.param[3]}) {
    for (uint32_t at = 0; at < param->b; at += kWordBytes, ++next) {
      std::memcpy(static_cast<char*>(Memory(*param)) + at, &next, kWordBytes);
    }
  }
}

}  // namespace

void ExpectInvocation(RLink& rlink) {
  answering = &rlink;
  succeeded = false;
}

bool InvocationSucceeded(uint32_t) {
  return succeeded;
}

void Command_Test(RLNK_HOST_SESSION* session, RLNK_CMD_PARAMS* params) {
  std::puts("Command_Test ->");
  if (session != nullptr) std::printf("session_id = %08x\n", session->session_id);
  if (params != nullptr) {
    std::printf("cmd_id = %08x\n", params->cmd_id);
    std::printf("paramTypes = %08x\n", params->paramTypes);
    for (unsigned i = 0; i < RLNK_PARAM_COUNT; ++i) {
      const uint32_t type = TypeOf(*params, i);
      PrintParam(type, params->param[i]);
      const bool hasMemory = params->param[i].a != 0 && params->param[i].b >= kFilledBytes;
      if (type == RLNK_PARAM_MEMREF_INOUT && hasMemory)
        std::memset(Memory(params->param[i]), 'A', kFilledBytes);
    }
  }
  std::puts("Command_Test <-");
}

void Command_Test_1(RLNK_HOST_SESSION*, RLNK_CMD_PARAMS* params) {
  auto& [in, inout, out, none] = params->param;
  const bool ok = params->paramTypes == 0x231 && in.a == Letters('U') && in.b == Letters('V') &&
                  inout.a == Letters('W') && inout.b == Letters('X');
  std::printf("%s[%d]: %s\n", __func__, __LINE__, ok ? "OK" : "Failed");
  inout = {Letters('Y'), Letters('Z')};
  out = {Letters('['), Letters('\\')};
  succeeded = ok;
}

void Command_Test_2(RLNK_HOST_SESSION* session, RLNK_CMD_PARAMS* params) {
  if (!CheckMemoryParams(*params) || !CheckNumbers(*params)) return;
  WriteAnswer(*params);
  RLNK_CMD_PARAMS answer = *params;
  answer.cmd_id = kCommandAnswer;
  if (answering.load()->Send(session, &answer) != 0) {
    std::printf("%s[%d]: RLinkSend: Failed\n", __func__, __LINE__);
    return;
  }
  succeeded = true;
}
