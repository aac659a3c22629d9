// Writes a dump row by row, as the stage's driver would, with the defects that it shows.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "Defect.h"
#include "DumpFormat.h"

namespace player {

class DumpWriter {
 public:
  /// Writes the title. `defects` are all that this dump shows, whatever stage they come from.
  DumpWriter(std::ostream& out, Stage stage, std::vector<Defect> defects);

  /// Writes a row. Returns false if the file ends before or in it; nothing is written after that.
  bool Write(FrameValues values);

  /// Writes the end of the stream.
  void End();

 private:
  bool Has(DefectKind kind, int64_t frame) const;
  int64_t Delay90k(int64_t frame) const;
  void ChangeValues(FrameValues& values) const;
  void Put(const std::string& text);

  std::ostream& out_;
  const DumpFormat& format_;
  std::vector<Defect> defects_;
  std::string held_;                   // rows to be written after the next one
  std::optional<FrameValues> before_;  // of the last row
  int64_t lastClock90k_ = 0;           // of the last row, without defects
  int64_t skipped90k_ = 0;
  bool ended_ = false;
};

}  // namespace player
