// Makes dumps without playing anything: values are generated from a seed, defects are injected on
// request.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <span>

#include "Defect.h"
#include "DumpFormat.h"

namespace player {

/// What is played. The same clip gives the same values in every run, except for the clock.
struct Clip {
  uint64_t seed = 1;
  int64_t frameCount = 600;
  int64_t frameRateMilliHz = 60000;
  int64_t width = 1920;
  int64_t height = 1080;
  int64_t startPts90k = 0;
  bool hdr = false;
  bool flashesAndBeeps = false;  // one of each every two seconds, the first after four seconds
};

/// One playback of a clip.
struct Run {
  int64_t clock90k = 0;       // the board's clock at the start
  int64_t audioOffsetMs = 0;  // delay of the sound
};

/// The number of rows that a stage dumps for the clip.
int64_t RowCount(const Clip& clip, Stage stage);

/// Values of a row without defects.
FrameValues ValuesOf(const Clip& clip, const Run& run, Stage stage, int64_t row);

/// Writes a stage's dump with title and end. Uses only the defects of that stage.
void WriteDump(std::ostream& out, const Clip& clip, const Run& run, Stage stage,
               std::span<const Defect> defects = {});

}  // namespace player
