// A/V synchronisation: pairs the flashes of the test clip with its beeps and judges the difference.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iostream>
#include <string>
#include <vector>

#include "../../stages/src/Stage.h"
#include "LateStage.h"

class CM_TestCase;

/// One row of a dump. The texts are checksums in lowercase hexadecimal; decimal for audio.
struct AV_Sync_Field {
  AV_Sync_Field(int32_t frame, uint32_t time, std::string text1, std::string text2, uint32_t value);
  AV_Sync_Field(int32_t frame, uint32_t time, std::string text, uint32_t value1, uint32_t value2);

  int32_t frameNumber;
  uint32_t time90k;          // when the row was dumped
  std::string firstText;     // VO: output; Scaler: panel; Audio: samples
  std::string secondText;    // VO and Scaler: picture at the scaler's input
  uint32_t firstValue;       // VO and Audio: pts in 90 kHz ticks
  uint32_t secondValue = 0;  // Audio: delay after the dump point, in 90 kHz ticks
};

/// The rows of one stage in the order in which they were dumped.
struct AV_Sync_Info {
  MODULE_TYPE moduleType;
  std::vector<AV_Sync_Field> fields;
  bool whole = true;  // false: reading ended at a malformed row
};

/// Reads a stage's dump. A file that cannot be opened is reported on `log` and returns no rows; a
/// malformed row is reported and ends the reading.
AV_Sync_Info Fetch_AVsync_Info_VO(const std::string& path, std::ostream& log = std::cout);
AV_Sync_Info Fetch_AVsync_Info_Scaler(const std::string& path, std::ostream& log = std::cout);
AV_Sync_Info Fetch_AVsync_Info_Audio(const std::string& path, std::ostream& log = std::cout);

/// Index of the first beep within `range` of `time` (90 kHz ticks); 0 if there is none. The first
/// 100 rows are ignored.
std::size_t AVsync_Find_Audio_Frame_By_Time(uint32_t time, uint32_t range,
                                            const AV_Sync_Info* audio);

/// Difference in milliseconds inherent in the current content, added to every event's.
void Set_AVsync_Offset(int offsetMs);

/// Accepted differences between sound and picture, in milliseconds.
inline constexpr int64_t kAheadToleranceMs = 20;
inline constexpr int64_t kDelayToleranceMs = -30;

/// A flash and its beep.
struct SyncMark {
  uint32_t flash90k;  // pts
  uint32_t beep90k;
  int64_t diffMs;  // above 0: the sound is ahead
  bool passed;
};

/// The result of the analysis.
struct AvSyncVerdict {
  bool passed = false;
  std::string reason;           // why not, such as "3 of 7 flashes outside the tolerance"
  uint32_t failedFlash90k = 0;  // pts of the first flash outside the tolerance
  int32_t failedFrame = -1;     // frame of that flash; -1: none
  std::vector<SyncMark> marks = {};
};

/// Prints every flash with its beep, and below the table why the analysis failed. It fails if an
/// event is outside the tolerance, a flash was not judged or has no beep, there is no flash or no
/// beep at all, or a dump could not be read to its end. A flash before the first beep that the
/// search can find does not need a beep.
AvSyncVerdict AnalyseAvSync(const AV_Sync_Info& vo, const AV_Sync_Info& scaler,
                            const AV_Sync_Info& audio, std::ostream& out);

/// The same. Returns whether the analysis passed.
bool Print_AVsync_Anayze_Result(const AV_Sync_Info* vo, const AV_Sync_Info* scaler,
                                const AV_Sync_Info* audio, std::ostream& out);

/// Analyses a test case's dumps, prints to `out`, reports problems of reading on `log`, and names
/// the stage that came too late or too early compared with the golden data.
AvSyncVerdict VerifyAvSync(const CM_TestCase& testCase, const StagePath& golden,
                           const StagePath& dump, std::ostream& out, std::ostream& log);

/// Analyses the dumps of the current test case on the console. Returns false if the analysis failed
/// or the test case is unknown.
bool Verify_AVsync();
