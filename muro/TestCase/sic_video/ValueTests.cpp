#include "ValueTests.h"

#include <unistd.h>

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "ConsoleInput.h"

namespace value_tests {
namespace {

constexpr useconds_t kReadingTimeUs = 4'000'000;

/// Prints the meanings of the numbers starting at `number`.
void PrintLevels(const Levels& levels, int number) {
  const char* separator = "";
  for (const char* name : levels.names) {
    std::printf("%s%d=%s", separator, number++, name);
    separator = ", ";
  }
  std::printf("\n");
}

int Read(NumberGetter get) {
  int32_t value = 0;
  get(&value);
  return value;
}

/// The initial value: the HAL's, or `otherwise` if the HAL cannot report it.
int StartValue(int otherwise, NumberGetter get) {
  int32_t value = otherwise;
  if (get != nullptr) get(&value);
  std::srand(static_cast<unsigned>(std::time(nullptr)));
  return value;
}

void PrintRangeKeys(const Range& range) {
  std::printf("Use '0' '1' to swith 'Value +' 'Value -' %s\n", range.label);
  std::puts("Use 'q' to exit");
  std::puts("Use '>' to test Max Value, '<' to test Min Value, '?' to test Random Value");
}

/// Reads keys until one changes the value (true) or leaves. Unshifted keys have the same effect as
/// the shifted ones on the same key.
bool ReadRangeKey(const Range& range, int& value) {
  for (;;) {
    switch (console::ReadKey()) {
      case '0':
        // The value initially comes from the HAL and can be any number.
        value = value < range.max ? value + 1 : range.max;
        std::printf("Set %s = %d\n", range.label, value);
        return true;
      case '1':
        value = value > range.min && value - 1 <= range.max ? value - 1 : range.min;
        std::printf("Set %s = %d\n", range.label, value);
        return true;
      case '>':
      case '.':
        value = range.max;
        std::printf("Set Max %s =%d\n", range.label, value);
        return true;
      case '<':
      case ',':
        value = range.min;
        std::printf("Set Min %s = %d\n", range.label, value);
        return true;
      case '?':
      case '/':
        value = range.min + std::rand() % (range.max - range.min) + 1;
        std::printf("Set random %s = %d\n", range.label, value);
        return true;
      case 'q':
      case 'Q':
        return false;
      default:
        break;
    }
  }
}

/// Reads keys until one is a level (true) or leaves.
bool ReadLevelKey(const Levels& levels, std::size_t& level) {
  for (;;) {
    const char key = console::ReadKey();
    if (key == 'q' || key == 'Q') return false;
    if (key < '0') continue;
    level = static_cast<std::size_t>(key - '0');
    if (level < levels.names.size()) return true;
  }
}

}  // namespace

void LetRead() {
  std::fflush(stdout);
  usleep(kReadingTimeUs);
}

int ShowNumber(const char* label, NumberGetter get) {
  std::printf("%s = %d\n", label, Read(get));
  LetRead();
  return 0;
}

int ShowLevel(const char* label, const Levels& levels, NumberGetter get) {
  const int level = Read(get);
  std::printf("%s level: ", label);
  PrintLevels(levels, levels.first);
  std::printf("%s level = %d\n", label, level);
  LetRead();
  return 0;
}

int ShowText(const char* label, int (*get)(char* text)) {
  char text[K2V_VPQ_TEXT_BYTES] = {};
  get(text);
  std::printf("%s = %.*s\n", label, K2V_VPQ_TEXT_BYTES, text);
  LetRead();
  return 0;
}

void PrintRecord(const void* record, std::span<const k2v::RecordField> fields) {
  for (const k2v::RecordField& field : fields) {
    if (field.count == 1) {
      std::printf("%s = %" PRId64 "\n", field.name, k2v::GetField(record, field));
      continue;
    }
    for (std::size_t i = 0; i < field.count; ++i) {
      std::printf("%s[%zu] = %" PRId64 "\n", field.name, i, k2v::GetField(record, field, i));
    }
  }
}

int AdjustRange(const Range& range) {
  int value = StartValue((range.min + range.max) / 2, range.get);
  while (range.set(value) == 0) {
    PrintRangeKeys(range);
    if (!ReadRangeKey(range, value)) break;
  }
  return 0;
}

int ChooseLevel(const char* label, const Levels& levels, NumberSetter set, NumberGetter get) {
  int value = StartValue(levels.first, get);
  while (set(value) == 0) {
    std::printf("Choose the %s level\n", label);
    PrintLevels(levels, 0);  // the keys
    std::puts("Use 'q' to exit");
    std::size_t level = 0;
    if (!ReadLevelKey(levels, level)) break;
    std::printf("Set %s level is %s\n", label, levels.names[level]);
    value = levels.first + static_cast<int>(level);
  }
  return 0;
}

}  // namespace value_tests
