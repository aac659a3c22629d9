// What verifying one stage's dump against its golden data found.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "Stage.h"

/// What stands for the value of a row or an item that a file does not have.
inline constexpr char kMissingValue[] = "-1";

/// What makes two values differ that look the same in a report.
enum class HiddenDifference : uint8_t {
  kNone,
  kLineEnd,       // one row ends otherwise
  kExtraColumn,   // one row goes on
  kDropMarker,    // the frame is there, and marked as dropped
  kMalformedRow,  // a row cannot be read
};

/// One field that differs.
struct VerifyFailField {
  int32_t frameNumber = 0;   // of the golden row
  uint32_t columnIndex = 0;  // into the result's column names
  std::string goldenValue;
  std::string dumpValue;  // "-1" for a row that the dump does not have
  HiddenDifference hidden = HiddenDifference::kNone;
};

/// Writes frame, column, dump and golden value right-aligned in their widths.
std::ostream& operator<<(std::ostream& out, const VerifyFailField& field);

/// Wrong fields of one frame.
struct WrongFrame {
  int32_t fieldCount = 0;  // wrong fields of this frame
  int32_t firstField = 0;  // index of the first one in the list of wrong fields
};

/// How much of a stage was compared. Rows that the stage's rules leave out, such as titles and the
/// start of a dump, are in none of the numbers.
struct Coverage {
  int64_t compared = 0;    // pairs of rows
  int64_t goldenOnly = 0;  // golden rows that had no partner
  int64_t dumpOnly = 0;    // rows of the dump that had none

  /// Rows that the rules select for comparison.
  int64_t Selected() const { return compared + std::max(goldenOnly, dumpOnly); }
};

/// Bits of the verify status.
enum VerifyStatus : int32_t {
  kStatusNoGolden = 1,     // the golden file could not be opened
  kStatusNoSample = 2,     // the dump could not be opened
  kStatusAudioFailed = 15  // the audio verdict is a failure
};

/// Outcome of verifying one stage: plain data. What it means is told by `Judge` (StageVerdict.h);
/// its frames are counted and its row is printed in verify/src. Results move; a wrong-frame table
/// is never shared.
class CM_Verify_Result {
 public:
  explicit CM_Verify_Result(MODULE_TYPE module) : moduleType(module) {}
  CM_Verify_Result(CM_Verify_Result&&) = default;
  CM_Verify_Result& operator=(CM_Verify_Result&&) = default;

  /// Sets bits of the status; never clears any.
  void addVerifyStatus(int32_t bits) { verifyStatus |= bits; }
  void putVerifyFrameCount(int32_t count) { verifyFrameCount = count; }

  /// Counts the frames of the current test case's golden file and backed-up dump of this stage.
  void Init_Frame_Count();

  /// Makes the wrong-frame table for the counted frames, all zero. Does nothing when there is one.
  void createWrongFrame();
  void deleteWrongFrame() { wrongFrames.clear(); }

  /// Cleans the wrong fields and fills the wrong-frame table with them. Returns and keeps the
  /// number of distinct wrong frames.
  int32_t Data_Preprocessing();

  /// Prints the stage's column names as one line.
  void Print_Column_Name(std::ostream& out) const;

  /// Prints the stage's row of the summary table. Returns true when the stage passed.
  bool PrintSimpleTable(std::ostream& out) const;

  MODULE_TYPE moduleType;
  std::vector<std::string> columnNames;
  std::vector<VerifyFailField> wrongFields;  // in the order found
  int32_t verifyStatus = 0;                  // VerifyStatus bits
  int32_t verifyFrameCount = 0;
  std::vector<WrongFrame> wrongFrames;  // one a frame number, empty until made
  int32_t wrongFrameTotal = 0;          // distinct frames with a wrong field
  bool framesAreCounted = false;        // the two below are of this verification
  int32_t sampleFrameCount = 0;
  int32_t goldenFrameCount = 0;
  bool outOfOrder = false;     // DVO: a frame came earlier than its neighbours
  bool runWasRefused = false;  // there is no dump because the board was not run
  Coverage coverage;
};
