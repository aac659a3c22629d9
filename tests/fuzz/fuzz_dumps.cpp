// Dumps and golden files of every stage, half-written, garbled or of another kind. The first byte
// names the reader; golden data and dump stand behind it, with the line "--" between them.
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>

#include "FuzzFile.h"
#include "TestCase/CrossModule/stages/src/VerifyResult.h"
#include "TestCase/CrossModule/verify/src/AvSync.h"
#include "TestCase/CrossModule/verify/src/Verifiers.h"

namespace {

using Verifier = void (*)(CM_Verify_Result&, const std::string&, const std::string&);

struct Stage {
  MODULE_TYPE module;
  Verifier verify;
};

constexpr Stage kStages[] = {
    {MODULE_OMXIN, Verify_OMX_Input}, {MODULE_OMXOUT, Verify_OMX_Output},
    {MODULE_VDEC, Verify_VDEC},       {MODULE_DVO, Verify_DVO},
    {MODULE_VO, Verify_VO},           {MODULE_SCALER, Verify_Scaler},
    {MODULE_AUDIO, Verify_Audio},
};
constexpr std::string_view kSeparator = "--\n";
constexpr std::size_t kStageCount = sizeof kStages / sizeof kStages[0];

/// Prints the summary's row as a report does. True when the stage passed.
bool Passes(CM_Verify_Result& result, const std::string& golden, const std::string& dump) {
  result.goldenFrameCount = CountFrames(golden);
  result.sampleFrameCount = CountFrames(dump);
  result.Data_Preprocessing();
  std::ostringstream row;
  return result.PrintSimpleTable(row);
}

void Verify(const Stage& stage, const std::string& golden, const std::string& dump) {
  CM_Verify_Result result(stage.module);
  stage.verify(result, golden, dump);
  if (!Passes(result, golden, dump)) return;
  fuzz::Require(result.goldenFrameCount > 0 && result.sampleFrameCount > 0, "nothing passed");
  fuzz::Require(result.wrongFields.empty(), "a wrong field passed");
}

/// The analysis of sound and picture, on one file in place of all three.
void Synchronise(const std::string& path) {
  const AV_Sync_Info audio = Fetch_AVsync_Info_Audio(path);
  Fetch_AVsync_Info_VO(path);
  Fetch_AVsync_Info_Scaler(path);
  if (!audio.fields.empty()) AVsync_Find_Audio_Frame_By_Time(90000, 45000, &audio);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  fuzz::BeQuiet();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string_view text(reinterpret_cast<const char*>(data + 1), size - 1);
  const std::size_t end = text.find(kSeparator);
  const fuzz::MemoryFile golden(text.substr(0, end));
  const fuzz::MemoryFile dump(end == std::string_view::npos ? text
                                                            : text.substr(end + kSeparator.size()));
  const std::size_t reader = data[0] % (kStageCount + 1);
  if (reader < kStageCount) {
    Verify(kStages[reader], golden.Path(), dump.Path());
  } else {
    Synchronise(dump.Path());
  }
  return 0;
}
