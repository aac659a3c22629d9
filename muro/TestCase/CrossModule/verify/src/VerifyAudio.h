// Rows of the audio dump and their comparison.
#pragma once

#include <cstdint>
#include <string_view>

#include "../../stages/src/VerifyResult.h"
#include "FrameLog.h"
#include "RowReader.h"

/// One block of audio.
struct MURO_CROSS_MODULE_CHECK_T {
  int32_t frame_no = 0;
  int32_t counter90k = 0;
  int32_t sample_rate = 0;
  int32_t channel_no = 0;
  int32_t pcm_data_crc = 0;
  int32_t pts = 0;
  int32_t delay = 0;  // never compared
};

/// Reads the numbers of a line into `row`. Returns 0; 1 if the line has too few, with the existing
/// ones in `row`.
int convert_to_data(std::string_view line, MURO_CROSS_MODULE_CHECK_T& row);

/// Reads the next row. Returns 0; nonzero at the end of the file, with `row` unchanged, and for an
/// incomplete row.
int read_next_row(MURO_CROSS_MODULE_CHECK_T& row, RowReader& file);

/// Compares two rows: prints them and appends every mismatch. Returns 1 if there is one, else 0.
int checking_data(const MURO_CROSS_MODULE_CHECK_T& golden, const MURO_CROSS_MODULE_CHECK_T& test,
                  CM_Verify_Result& result, FrameLog& log);
