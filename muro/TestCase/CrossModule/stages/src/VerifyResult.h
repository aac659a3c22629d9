// The result of verifying a stage's dump against its golden data.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "Stage.h"

/// Represents the value of a row or an item that is missing in a file.
inline constexpr char kMissingValue[] = "-1";

/// Why two values that look the same in a report differ.
enum class HiddenDifference : uint8_t {
  kNone,
  kLineEnd,       // one row has a different line end
  kExtraColumn,   // one row has more columns
  kDropMarker,    // the frame exists but is marked as dropped
  kMalformedRow,  // a row cannot be read
};

/// One field that differs.
struct VerifyFailField {
  int32_t frameNumber = 0;   // of the golden row
  uint32_t columnIndex = 0;  // index into the result's column names
  std::string goldenValue;
  std::string dumpValue;  // "-1" for a row that the dump does not have
  HiddenDifference hidden = HiddenDifference::kNone;
};

/// Writes frame, column, dump and golden value, right-aligned in their widths.
std::ostream& operator<<(std::ostream& out, const VerifyFailField& field);

/// Wrong fields of one frame.
struct WrongFrame {
  int32_t fieldCount = 0;  // wrong fields of this frame
  int32_t firstField = 0;  // index of the first one in the list of wrong fields
};

/// How much of a stage was compared. Rows that the stage's rules exclude, such as titles and the
/// start of a dump, are not counted.
struct Coverage {
  int64_t compared = 0;    // pairs of rows
  int64_t goldenOnly = 0;  // golden rows without a partner
  int64_t dumpOnly = 0;    // rows of the dump without a partner

  /// Rows that the rules select for comparison.
  int64_t Selected() const { return compared + std::max(goldenOnly, dumpOnly); }
};

/// Bits of the verify status.
enum VerifyStatus : int32_t {
  kStatusNoGolden = 1,     // the golden file could not be opened
  kStatusNoSample = 2,     // the dump could not be opened
  kStatusAudioFailed = 15  // the audio verdict is a failure
};

/// Outcome of verifying one stage, as plain data. `Judge` (StageVerdict.h) interprets it;
/// verify/src counts its frames and prints its row. Results can be moved; a wrong-frame table is
/// never shared.
class CM_Verify_Result {
 public:
  explicit CM_Verify_Result(MODULE_TYPE module) : moduleType(module) {}
  CM_Verify_Result(CM_Verify_Result&&) = default;
  CM_Verify_Result& operator=(CM_Verify_Result&&) = default;

  /// Sets bits of the status; never clears any.
  void addVerifyStatus(int32_t bits) { verifyStatus |= bits; }
  void putVerifyFrameCount(int32_t count) { verifyFrameCount = count; }

  /// Counts the frames of the current test case's golden file and of its stored dump of this stage.
  void Init_Frame_Count();

  /// Creates the wrong-frame table for the counted frames, all zero. Does nothing if the table
  /// exists.
  void createWrongFrame();
  void deleteWrongFrame() { wrongFrames.clear(); }

  /// Cleans the wrong fields and fills the wrong-frame table with them. Returns and stores the
  /// number of distinct wrong frames.
  int32_t Data_Preprocessing();

  /// Prints the stage's column names as one line.
  void Print_Column_Name(std::ostream& out) const;

  /// Prints the stage's row of the summary table. Returns true if the stage passed.
  bool PrintSimpleTable(std::ostream& out) const;

  MODULE_TYPE moduleType;
  std::vector<std::string> columnNames;
  std::vector<VerifyFailField> wrongFields;  // in the order found
  int32_t verifyStatus = 0;                  // VerifyStatus bits
  int32_t verifyFrameCount = 0;
  std::vector<WrongFrame> wrongFrames;  // one per frame number, empty until created
  int32_t wrongFrameTotal = 0;          // distinct frames with a wrong field
  bool framesAreCounted = false;        // the next two members belong to this verification
  int32_t sampleFrameCount = 0;
  int32_t goldenFrameCount = 0;
  bool outOfOrder = false;     // DVO: a frame came earlier than its neighbours
  bool runWasRefused = false;  // the dump is missing because the run was refused
  Coverage coverage;
};
