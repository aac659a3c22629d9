#include "LockStep.h"

#include <algorithm>
#include <cctype>

namespace {

constexpr std::size_t kTitleLimit = 66 - 1;

}  // namespace

void PrintMismatch(FrameLog& log, int32_t frameNumber, uint32_t mask) {
  if (mask == 0) return;
  log << "frame_no:" << frameNumber << " field:";
  log.Hex(static_cast<int32_t>(mask), 7) << " error!\n";
}

LockStepWalk::LockStepWalk(CM_Verify_Result& result, StageFiles& files)
    : result_(result), golden_{files.golden, {}, 0, false}, sample_{files.sample, {}, 0, false} {}

void LockStepWalk::Run() {
  if (!ReadTitle(golden_)) log_ << "read golden title fail\n";
  if (!ReadTitle(sample_)) log_ << "read sample title fail\n";
  ReadMode mode = ReadMode::kBoth;
  while (mode != ReadMode::kEnd && failedReads_ < 2) mode = Step(mode);
  result_.putVerifyFrameCount(compared_);
}

bool LockStepWalk::ReadTitle(Side& side) {
  std::string_view title;
  const bool isRead = side.file.Next(title, kTitleLimit);
  side.titleGoesOn = isRead && IsPiece(title, kTitleLimit);
  return isRead;
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
    log_ << "[muro:" << __LINE__ << "] fread golden no:" << golden_.rowsRead << " fail!\n";
  } else {
    log_ << "[muro:" << __LINE__ << "] fread line1:" << golden_.rowsRead
         << " fail! maybe it's the end of file!\n";
  }
  return false;
}

bool LockStepWalk::ReadSample() {
  if (sample_.file.Next(sample_.row, kDataLimit)) {
    ++sample_.rowsRead;
    return true;
  }
  ++failedReads_;
  log_ << "[muro:" << __LINE__ << "] fread line2:" << sample_.rowsRead
       << " fail! maybe it's the end of file!\n";
  return false;
}

bool LockStepWalk::IsBroken(const char* name, const Side& side, std::size_t fieldCount) {
  const std::string_view row = side.row;
  if (side.titleGoesOn && side.rowsRead == 1) return false;
  if (CountFields(row) >= fieldCount && !IsPiece(row, kDataLimit)) return false;
  if (std::ranges::all_of(row, [](unsigned char c) { return std::isspace(c) != 0; })) return false;
  log_ << "[muro:" << __LINE__ << "] " << std::string_view(name) << " row " << side.rowsRead
       << " is broken!\n";
  return true;
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
