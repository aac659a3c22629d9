// verify_dump STAGE GOLDEN SAMPLE: one verifier of the harness as a program of its own. Exit status
// 0: no differences, 1: differences, 2: invalid usage.
#include <cstdio>
#include <string_view>

#include "TestCase/CrossModule/stages/src/VerifyResult.h"
#include "TestCase/CrossModule/verify/src/Verifiers.h"

namespace {

struct Verifier {
  std::string_view stage;
  MODULE_TYPE module;
  void (*verify)(CM_Verify_Result&, const std::string&, const std::string&);
};

constexpr Verifier kVerifiers[] = {
    {"OMXIN", MODULE_OMXIN, Verify_OMX_Input},
    {"OMXOUT", MODULE_OMXOUT, Verify_OMX_Output},
    {"VDEC", MODULE_VDEC, Verify_VDEC},
    {"DVO", MODULE_DVO, Verify_DVO},
    {"VO", MODULE_VO, Verify_VO},
    {"Scaler", MODULE_SCALER, Verify_Scaler},
    {"Audio", MODULE_AUDIO, Verify_Audio},
};

}  // namespace

int main(int argc, char** argv) {
  for (const Verifier& verifier : kVerifiers) {
    if (argc != 4 || verifier.stage != argv[1]) continue;
    CM_Verify_Result result(verifier.module);
    verifier.verify(result, argv[2], argv[3]);
    std::printf("wrong fields: %zu, status %d, compared %d\n", result.wrongFields.size(),
                result.verifyStatus, result.verifyFrameCount);
    return result.wrongFields.empty() && result.verifyStatus == 0 ? 0 : 1;
  }
  std::fprintf(stderr, "usage: verify_dump STAGE GOLDEN SAMPLE\n");
  return 2;
}
