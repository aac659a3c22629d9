#include <algorithm>
#include <string_view>

#include "../../stages/src/TestCaseCatalogue.h"
#include "../../stages/src/VerifyResult.h"
#include "RowReader.h"
#include "Verifiers.h"

namespace {

// Rows before this number are the warm-up, which counts as one block regardless of how much of it
// was dumped.
constexpr int32_t kWarmUpFrames = 120;

}  // namespace

int32_t CountFrames(const std::string& path) {
  RowReader file(path);
  std::string_view row;
  int32_t count = 0;
  int32_t largest = -1;
  bool startsLine = true;  // rows after the first piece of an overlong line have no number
  while (file.Next(row)) {
    int32_t number = 0;
    // A number that is too large reads as -1 as well and does not count.
    if (startsLine && ReadNumber(row, number) &&
        (number > largest || (number == -1 && row[0] == '-'))) {
      count = number == kWarmUpFrames ? kWarmUpFrames : count + 1;
      largest = std::max(largest, number);
    }
    startsLine = row.back() == '\n';
  }
  return count;
}

void CM_Verify_Result::Init_Frame_Count() {
  const CM_TestCase* const testCase = Get_Current_TestCase();
  const bool known = IsKnown(testCase);
  goldenFrameCount = known ? CountFrames(testCase->Get_Golden_Path(moduleType)) : 0;
  // The stored dump is older than a run that was refused.
  sampleFrameCount =
      known && !runWasRefused ? CountFrames(testCase->Get_Dump_Backup_Path(moduleType)) : 0;
  framesAreCounted = true;
}
