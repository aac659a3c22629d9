#include "StageFiles.h"

#include <cstdio>

bool StageFiles::AreOpen(CM_Verify_Result& result, const char* goldenFailure,
                         const char* sampleFailure) const {
  const auto check = [&](const RowReader& file, int32_t bit, const char* failure) {
    if (file.IsOpen()) return true;
    result.addVerifyStatus(bit);
    if (failure != nullptr) std::puts(failure);
    return false;
  };
  const bool goldenIsOpen = check(golden, kStatusNoGolden, goldenFailure);
  const bool sampleIsOpen = check(sample, kStatusNoSample, sampleFailure);
  return goldenIsOpen && sampleIsOpen;
}

void AppendWrongField(CM_Verify_Result& result, int32_t frameNumber, std::size_t column,
                      std::string_view golden, std::string_view dump) {
  result.wrongFields.push_back({frameNumber, static_cast<uint32_t>(column),
                                std::string(WithoutLineEnd(golden)),
                                std::string(WithoutLineEnd(dump))});
}
