#include "VerifyAudio.h"

#include <cstdio>
#include <iterator>

#include "ComparisonRules.h"
#include "FrameLog.h"
#include "StageFiles.h"
#include "Verifiers.h"

namespace {

constexpr std::size_t kChecksum = ColumnOf(kAudioColumns, Unit::kChecksum);

// Maximum of skipped rows and minimum of remaining rows for a dump to count as evidence.
constexpr int32_t kEnoughSkipped = 10;
constexpr int32_t kEnoughChecked = 1000;

struct ComparedField {
  std::size_t column;
  int32_t MURO_CROSS_MODULE_CHECK_T::*value;
};
constexpr ComparedField kComparedFields[] = {
    {kChecksum, &MURO_CROSS_MODULE_CHECK_T::pcm_data_crc},
    {ColumnNamed(kAudioColumns, "sample_rate"), &MURO_CROSS_MODULE_CHECK_T::sample_rate},
    {ColumnNamed(kAudioColumns, "channel_no"), &MURO_CROSS_MODULE_CHECK_T::channel_no}};

void PrintRow(FrameLog& log, const MURO_CROSS_MODULE_CHECK_T& row) {
  log << row.frame_no << ", " << row.counter90k << ", " << row.sample_rate << ", " << row.channel_no
      << ", " << row.pcm_data_crc << ", " << row.pts << "\n";
}

/// One file of the comparison with its current row.
struct Side {
  RowReader& file;
  MURO_CROSS_MODULE_CHECK_T row;
  int32_t skipped = 0;   // rows skipped before they could be compared
  int64_t selected = 0;  // rows after the first second that have a pts

  bool Read() {
    if (read_next_row(row, file) != 0) return false;
    Note();
    return true;
  }
  void Note() { selected += row.pts != 0 ? 1 : 0; }
  void NoteRest() {
    for (std::string_view line; file.NextFilled(line);) {
      if (convert_to_data(line, row) == 0) Note();
    }
  }
  bool Skip() {
    if (!Read()) return false;
    ++skipped;
    return true;
  }
};

void SkipFirstSecond(Side& side, const char* message) {
  std::puts(message);
  while (side.Skip() && side.row.pts < kAudioSkippedTicks) {
  }
  side.selected = 0;
}

/// True if the columns after the counter are exactly the numbers of a row, and the pts is not 0.
bool HasPlainNumbers(std::string_view behindCounter) {
  constexpr std::size_t kPts = ColumnNamed(kAudioColumns, "pts");
  constexpr std::size_t kFirst = ColumnOf(kAudioColumns, Unit::kTicks90k) + 1;
  const char* p = behindCounter.data();
  bool hasPts = false;
  for (std::size_t column = kFirst; column < std::size(kAudioColumns); ++column) {
    if (*p++ != ',') return false;
    if (*p == '-') ++p;
    const char* const first = p;
    unsigned digits = 0;
    for (; *p >= '0' && *p <= '9'; ++p) digits |= static_cast<unsigned>(*p - '0');
    if (p == first) return false;
    if (column == kPts) hasPts = digits != 0;
  }
  return hasPts && *p == '\n';
}

/// Consumes the test's row if it equals golden's except for the 90 kHz counter, and both can be
/// compared as they are: numbers with a pts. Returns false if they must be parsed.
bool TakeSame(std::string_view goldenLine, RowReader& test) {
  const SameRow same = SameButSecondField(goldenLine, test.Ahead());
  if (same.length == 0 || !HasPlainNumbers(same.text)) return false;
  test.Skip(same.length);
  return true;
}

/// Skips rows while the time stamps differ. An unreadable row ends the search: then the current
/// rows are compared, so that a file that ended during the search does not pass.
void Resynchronise(FrameLog& log, Side& golden, Side& test) {
  while (golden.row.pts == 0 && golden.Skip()) {
  }
  while (test.row.pts == 0 && test.Skip()) {
  }
  while (golden.row.pts != test.row.pts) {
    const bool testIsAhead = test.row.pts > golden.row.pts;
    Side& behind = testIsAhead ? golden : test;
    if (!behind.Read()) return;
    log << "[Cross Module][Audio] resync " << (testIsAhead ? "golden" : "test") << " PTS "
        << behind.row.pts << "\n";
  }
}

/// Records a malformed row as a checksum error, so that a dump that is corrupted in the middle is
/// not mistaken for one that ended there.
void ReportBrokenRow(CM_Verify_Result& result, std::string_view golden) {
  const ItemText missing(-1, false);
  MURO_CROSS_MODULE_CHECK_T row;
  const bool goldenIsWhole = convert_to_data(golden, row) == 0;
  AppendWrongField(result, ToNumber(golden), kChecksum,
                   goldenIsWhole ? ItemText(row.pcm_data_crc, true) : missing, missing,
                   HiddenDifference::kMalformedRow);
}

/// Compares the files from here to the end of one of them. Returns the number of rows that
/// differed.
int32_t CompareRows(CM_Verify_Result& result, Side& golden, Side& test) {
  FrameLog log;
  std::string_view goldenLine;
  std::string_view testLine;
  int32_t errors = 0;
  int32_t checked = 0;
  int64_t same = 0;
  int64_t paired = 0;
  for (; golden.file.NextFilled(goldenLine); ++checked) {
    if (TakeSame(goldenLine, test.file)) {
      ++same;
      continue;
    }
    if (!test.file.NextFilled(testLine)) {
      if (convert_to_data(goldenLine, golden.row) == 0) golden.Note();
      break;
    }
    if (IsPiece(goldenLine) || IsPiece(testLine) || convert_to_data(goldenLine, golden.row) != 0 ||
        convert_to_data(testLine, test.row) != 0) {
      ReportBrokenRow(result, goldenLine);
      ++errors;
      break;
    }
    golden.Note();
    test.Note();
    Resynchronise(log, golden, test);
    if (golden.row.pts == test.row.pts && golden.row.pts != 0) ++paired;
    errors += checking_data(golden.row, test.row, result, log);
  }
  result.putVerifyFrameCount(checked);
  for (Side* side : {&golden, &test}) side->NoteRest();
  result.coverage = {same + paired, golden.selected - paired, test.selected - paired};
  return errors;
}

/// Prints the verdict. Returns true if the audio passed.
bool Judge(int32_t errors, int32_t checked, int32_t goldenSkipped, int32_t testSkipped) {
  if (errors != 0) {
    std::printf("[Cross Module][Audio] Audio Test Failed, err_count %d\n", errors);
    return false;
  }
  if (goldenSkipped > kEnoughSkipped || testSkipped > kEnoughSkipped) {
    std::puts("[Cross Module][Audio] Audio Test Passed");
    return true;
  }
  if (goldenSkipped != kEnoughSkipped || testSkipped != kEnoughSkipped) {
    std::printf("[Cross Module][Audio] Audio Test Failed, dump data too small (%d,%d)\n",
                testSkipped, goldenSkipped);
  } else if (checked >= kEnoughChecked) {
    std::printf("[Cross Module][Audio] Audio Test Failed, err_count %d\n", errors);
  } else {
    std::printf("[Cross Module][Audio] Audio Test Failed, checkcount too small %d\n", checked);
  }
  return false;
}

void SkipTitles(StageFiles& files) {
  std::puts("[Cross Module][Audio] skip first row");
  std::string_view title;
  files.golden.Next(title);
  files.sample.Next(title);
}

}  // namespace

int convert_to_data(std::string_view line, MURO_CROSS_MODULE_CHECK_T& row) {
  int32_t* const numbers[] = {&row.frame_no,     &row.counter90k, &row.sample_rate, &row.channel_no,
                              &row.pcm_data_crc, &row.pts,        &row.delay};
  return ReadNumbers(line, numbers) < std::size(numbers) ? 1 : 0;
}

int read_next_row(MURO_CROSS_MODULE_CHECK_T& row, RowReader& file) {
  std::string_view line;
  return file.Next(line) && !IsPiece(line) ? convert_to_data(line, row) : 1;
}

int checking_data(const MURO_CROSS_MODULE_CHECK_T& golden, const MURO_CROSS_MODULE_CHECK_T& test,
                  CM_Verify_Result& result, FrameLog& log) {
  bool same = true;
  for (const ComparedField& field : kComparedFields) {
    if (golden.*field.value == test.*field.value) continue;
    same = false;
    AppendWrongField(result, golden.frame_no, field.column, ItemText(golden.*field.value, true),
                     ItemText(test.*field.value, true));
  }
  if (same) return 0;
  log << "[Cross Module][Audio] data no matched\nframe, misc, rate, channel, crc, pts\n";
  PrintRow(log, golden);
  PrintRow(log, test);
  return 1;
}

void Verify_Audio(CM_Verify_Result& result, const std::string& goldenPath,
                  const std::string& samplePath) {
  ListColumns(result, kAudioColumns);
  StageFiles files(goldenPath, samplePath);
  if (!files.AreOpen(result, "[Cross Module][Audio] muro open golden file failed",
                     "[Cross Module][Audio] muro open test file failed")) {
    return;
  }
  SkipTitles(files);
  Side golden{files.golden, {}};
  Side test{files.sample, {}};
  SkipFirstSecond(golden, "[Cross Module][Audio] skip first 1000ms golden data");
  SkipFirstSecond(test, "[Cross Module][Audio] skip first 1000ms test data");
  std::printf("[Cross Module][Audio] skip first 1000ms data End %d,%d!!!\n", golden.row.pts,
              test.row.pts);
  const int32_t errors = CompareRows(result, golden, test);
  if (!Judge(errors, result.verifyFrameCount, golden.skipped, test.skipped)) {
    result.addVerifyStatus(kStatusAudioFailed);
  }
}
