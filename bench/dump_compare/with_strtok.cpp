// with_strtok STAGE GOLDEN SAMPLE: line by line with fgets, strtok and atoi, as a reference for the
// verifiers.
#include <cstdlib>
#include <cstring>

#include "PlainCompare.h"

namespace {

bool ReadRow(std::FILE* file, const BenchStage& stage, int* row) {
  char line[1024];
  if (std::fgets(line, sizeof line, file) == nullptr) return false;
  std::size_t i = 0;
  for (char* token = std::strtok(line, stage.separators); token != nullptr && i < stage.columnCount;
       token = std::strtok(nullptr, stage.separators), ++i) {
    row[i] = HasBit(stage.hexadecimal, i) ? static_cast<int>(std::strtoul(token, nullptr, 16))
                                          : std::atoi(token);
  }
  return i == stage.columnCount;
}

}  // namespace

int main(int argc, char** argv) {
  return CompareFiles(argc, argv, ReadRow);
}
