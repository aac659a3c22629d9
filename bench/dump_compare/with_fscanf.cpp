// with_fscanf STAGE GOLDEN SAMPLE: the simple way, item by item, as a reference for the verifiers.
#include "PlainCompare.h"

namespace {

bool ReadRow(std::FILE* file, const BenchStage& stage, int* row) {
  for (std::size_t i = 0; i < stage.columnCount; ++i) {
    unsigned hexadecimal = 0;
    const int read = HasBit(stage.hexadecimal, i) ? std::fscanf(file, "%x%*c", &hexadecimal)
                                                  : std::fscanf(file, "%d%*c", row + i);
    if (read != 1) return false;
    if (HasBit(stage.hexadecimal, i)) row[i] = static_cast<int>(hexadecimal);
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  return CompareFiles(argc, argv, ReadRow);
}
