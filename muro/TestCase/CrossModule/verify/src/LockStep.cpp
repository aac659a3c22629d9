#include "LockStep.h"

#include <cstdio>

namespace {

constexpr std::size_t kTitleLimit = 66 - 1;

}  // namespace

LockStepWalk::LockStepWalk(CM_Verify_Result& result, StageFiles& files)
    : result_(result), golden_{files.golden, {}, 0}, sample_{files.sample, {}, 0} {}

void LockStepWalk::Run() {
  std::string_view title;
  if (!golden_.file.Next(title, kTitleLimit)) std::puts("read golden title fail");
  if (!sample_.file.Next(title, kTitleLimit)) std::puts("read sample title fail");
  ReadMode mode = ReadMode::kBoth;
  while (mode != ReadMode::kEnd && failedReads_ < 2) mode = Step(mode);
  result_.putVerifyFrameCount(compared_);
}

/// Reads the rows of the mode and looks at them. Returns what to read next: after a failed read,
/// which leaves nothing to compare, the same once more.
ReadMode LockStepWalk::Step(ReadMode mode) {
  const bool goldenIsRead =
      mode == ReadMode::kSampleOnly || ReadGolden(mode == ReadMode::kGoldenOnly);
  if (goldenIsRead && mode == ReadMode::kBoth && TakeSame()) return mode;
  const bool sampleIsRead = mode == ReadMode::kGoldenOnly || ReadSample();
  return goldenIsRead && sampleIsRead ? Judge() : mode;
}

bool LockStepWalk::ReadGolden(bool alone) {
  if (golden_.file.Next(golden_.row, kDataLimit)) {
    ++golden_.rowsRead;
    return true;
  }
  ++failedReads_;
  if (alone) {
    std::printf("[muro:%d] fread golden no:%d fail!\n", __LINE__, golden_.rowsRead);
  } else {
    std::printf("[muro:%d] fread line1:%d fail! maybe it's the end of file!\n", __LINE__,
                golden_.rowsRead);
  }
  return false;
}

bool LockStepWalk::ReadSample() {
  if (sample_.file.Next(sample_.row, kDataLimit)) {
    ++sample_.rowsRead;
    return true;
  }
  ++failedReads_;
  std::printf("[muro:%d] fread line2:%d fail! maybe it's the end of file!\n", __LINE__,
              sample_.rowsRead);
  return false;
}

/// Takes the sample's row without a further look when it is the same.
bool LockStepWalk::TakeSame() {
  const std::size_t length = FindSame();
  if (length == 0 || length > kDataLimit) return false;
  sample_.file.Skip(length);
  ++sample_.rowsRead;
  ++compared_;
  return true;
}
