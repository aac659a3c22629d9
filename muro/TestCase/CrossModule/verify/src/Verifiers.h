// The verifiers, one per stage: each compares a stage's dump with its golden file, prints the
// differences and fills in the caller's result. A file that cannot be opened sets its status bit.
#pragma once

#include <cstdint>
#include <string>

class CM_Verify_Result;

void Verify_OMX_Input(CM_Verify_Result& result, const std::string& goldenPath,
                      const std::string& samplePath);
void Verify_OMX_Output(CM_Verify_Result& result, const std::string& goldenPath,
                       const std::string& samplePath);
void Verify_VDEC(CM_Verify_Result& result, const std::string& goldenPath,
                 const std::string& samplePath);
void Verify_DVO(CM_Verify_Result& result, const std::string& goldenPath,
                const std::string& samplePath);
void Verify_VO(CM_Verify_Result& result, const std::string& goldenPath,
               const std::string& samplePath);
void Verify_Scaler(CM_Verify_Result& result, const std::string& goldenPath,
                   const std::string& samplePath);
void Verify_Audio(CM_Verify_Result& result, const std::string& goldenPath,
                  const std::string& samplePath);

/// Makes VO use the default tolerances, whatever the board's settings file says: for dumps that are
/// verified away from their board.
void IgnoreVoutSettings();

/// Counts the frames of a dump or golden file: rows whose number is the largest so far, and rows of
/// number -1. 0 for a file that cannot be opened.
int32_t CountFrames(const std::string& path);
