// The protocol between the link tests and the slave: classes, commands and data.
#pragma once

#include <cstdint>

inline constexpr uint32_t kTestClass = 0x54455354;
inline constexpr uint32_t kSecondClass = 0x54455353;

enum LinkCommand : uint32_t {
  kCommandValues = 0x1001,        // the slave answers with the letters that follow
  kCommandMemory = 0x1002,        // the slave fills memory with the numbers that follow
  kCommandInvokeValues = 0x1003,  // the slave invokes Command_Test_1
  kCommandInvokeMemory = 0x1004,  // the slave invokes Command_Test_2
  kCommandTakeData = 0x1005,      // the slave takes data out of a buffer and reports their checksum
  kCommandPutData = 0x1006,       // the slave puts data into a buffer and reports their checksum
  kCommandAnswer = 0x1007,        // the host's answer to Command_Test_2, checked by the slave
  kCommandNotice = 0x1010,        // the slave invokes Command_Test
};

inline constexpr int kRounds = 10;

/// The word whose bytes in memory are `letter` and "SET".
constexpr uint32_t Letters(char letter) {
  return static_cast<uint32_t>(letter) | uint32_t{'S'} << 8 | uint32_t{'E'} << 16 |
         uint32_t{'T'} << 24;
}

// Numbers in memory: those of the sender, and those in the other side's answer.
inline constexpr uint32_t kFirstNumber = 0x1004;
inline constexpr uint32_t kFirstAnswer = 0x1035;
