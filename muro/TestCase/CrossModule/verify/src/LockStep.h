// Walks through a golden file and a dump side by side, for the stages whose rows are aligned by
// frame number (OMX input, OMX output, DVO). The walk reads the rows; a stage decides what to do
// with a pair of rows.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "../../stages/src/VerifyResult.h"
#include "FrameLog.h"
#include "RowReader.h"
#include "StageFiles.h"

/// Rows of text fields. A field is a view of at most 15 characters into the row.
struct OMX_MURO_FIELDS {
  std::array<std::string_view, std::size(kOmxOutputColumns)> field;
};
struct MURO_OMX_INPUT_FIELDS {
  std::array<std::string_view, std::size(kOmxInputColumns)> field;
};
struct MURO_DVO_FIELDS {
  std::array<std::string_view, std::size(kDvoColumns)> field;
};

/// Splits a row into fields. Fields that the row does not have are empty.
template <class Fields>
void parseFields(Fields& fields, std::string_view line) {
  constexpr std::size_t kLongestField = 15;
  SplitRow(line, {',', ' '}, fields.field);
  for (std::string_view& field : fields.field) field = field.substr(0, kLongestField);
}

/// Prints and appends the mismatches of two rows. Returns one bit for each kind of mismatch, 0 when
/// equal.
uint32_t compareFields(CM_Verify_Result& result, const OMX_MURO_FIELDS& golden,
                       const OMX_MURO_FIELDS& sample, FrameLog& log);
uint32_t compareFields(CM_Verify_Result& result, const MURO_OMX_INPUT_FIELDS& golden,
                       const MURO_OMX_INPUT_FIELDS& sample, FrameLog& log);
uint32_t compareFields(CM_Verify_Result& result, const MURO_DVO_FIELDS& golden,
                       const MURO_DVO_FIELDS& sample, FrameLog& log);

/// Appends every column of a golden row that the dump does not have, or not as a whole row.
void reportMissingFields(CM_Verify_Result& result, const OMX_MURO_FIELDS& golden,
                         HiddenDifference hidden = HiddenDifference::kNone);
void reportMissingFields(CM_Verify_Result& result, const MURO_OMX_INPUT_FIELDS& golden,
                         HiddenDifference hidden = HiddenDifference::kNone);
void reportMissingFields(CM_Verify_Result& result, const MURO_DVO_FIELDS& golden,
                         HiddenDifference hidden = HiddenDifference::kNone);

/// Appends every column of a row that the dump repeats instead of the golden one.
void reportRepeatFields(CM_Verify_Result& result, const MURO_DVO_FIELDS& golden,
                        const MURO_DVO_FIELDS& sample);

/// Longest piece of a line that is read as a row: the board's line buffer without its last
/// character, which terminates the text.
inline constexpr std::size_t kDataLimit = 128 - 1;

/// Prints the line of a frame that differs; nothing for an empty mask.
void PrintMismatch(FrameLog& log, int32_t frameNumber, uint32_t mask);

/// Which rows the walk reads next.
enum class ReadMode { kBoth, kGoldenOnly, kSampleOnly, kEnd };

class LockStepWalk {
 public:
  /// Both titles and rows are read from `files`; mismatches are added to `result`.
  LockStepWalk(CM_Verify_Result& result, StageFiles& files);
  virtual ~LockStepWalk() = default;
  LockStepWalk(const LockStepWalk&) = delete;
  LockStepWalk& operator=(const LockStepWalk&) = delete;

  /// Walks to the second read that fails, or until the stage ends it.
  void Run();

 protected:
  /// One file of the walk.
  struct Side {
    RowReader& file;
    std::string_view row;  // the last one read
    int32_t rowsRead;
    bool titleGoesOn;         // the first row is the rest of a long title
    bool startsLine;          // the next row begins a line
    int64_t selected = 0;     // rows so far that the stage's rules select for comparison
    bool isSelected = false;  // the current row is one of them
  };

  /// Length of the sample's next row if it equals golden's current one and there is nothing to
  /// report about them; else 0.
  virtual std::size_t FindSame() = 0;

  /// Compares the current rows and decides what to read next.
  virtual ReadMode Judge() = 0;

  /// True if the stage's rules select a row for comparison. `rowsRead` counts it.
  virtual bool IsSelected(std::string_view row, int32_t rowsRead) const = 0;

  /// True if the current row of a side is malformed: it has fewer than `fieldCount` fields, or is a
  /// piece of an overlong line. Reports it. White space and the rest of a title are not malformed.
  bool IsBroken(const char* name, const Side& side, std::size_t fieldCount);

  /// Counts the current rows as compared, whether they are the same or reported as different. Blank
  /// rows and others that the rules do not select must not make up for one that was not compared.
  void CountAsCompared();

  CM_Verify_Result& result_;
  Side golden_;
  Side sample_;
  FrameLog log_;

 private:
  static bool ReadTitle(Side& side);
  static bool Read(Side& side);
  void NoteRow(Side& side) const;
  void NoteRest(Side& side) const;
  bool ReadGolden(bool alone);
  bool ReadSample();
  bool TakeSame();
  ReadMode Step(ReadMode mode);

  int failedReads_ = 0;
  int32_t compared_ = 0;  // pairs of rows
};
