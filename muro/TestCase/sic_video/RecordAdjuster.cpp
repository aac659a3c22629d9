#include "RecordAdjuster.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string_view>

#include "ConsoleInput.h"

namespace record_adjuster {
namespace {

constexpr int kStepsOfRange = 100;
constexpr int kWholeRamp = 100;  // percent
constexpr int kMaxChoices = 15;  // a field with at most this many values starts at its smallest one

// A letter is below its digit on the keyboard, except 'q', which leaves the test.
constexpr std::string_view kUpKeys = "0123456789";
constexpr std::string_view kDownKeys = "pawertyuio";
constexpr std::string_view kAllKeys = "><?.,/";

std::span<Adjustable> WithKeys(std::span<Adjustable> numbers) {
  return numbers.first(std::min(numbers.size(), kUpKeys.size()));
}

void PrintKeys(std::string_view keys, const char* verb, std::span<const Adjustable> numbers) {
  std::printf("Enter");
  for (std::size_t i = 0; i < numbers.size(); ++i) std::printf(" '%c'", keys[i]);
  std::printf(" to %s", verb);
  for (const Adjustable& number : numbers) std::printf(" %s", number.name);
  std::printf(" value\n");
}

void PrintPrompt(std::span<const Adjustable> numbers) {
  PrintKeys(kUpKeys, "increase", numbers);
  PrintKeys(kDownKeys, "decrease", numbers);
  std::puts("Use 'q' to exit");
  std::puts("Use '>' to test Max Value, '<' to test Min Value, '?' to test Random Value");
}

void Set(Adjustable& number, int value) {
  number.value = std::clamp(value, number.min, number.max);
  std::printf("Set %s = %d\n", number.name, number.value);
}

/// The middle of a range, where most settings are neutral.
int MiddleOf(int min, int max) {
  return static_cast<int>((int64_t{min} + max + 1) / 2);
}

/// Steps up or down to the next value that is a whole number of steps away from the middle, so that
/// the keys reach the middle from any value.
void Step(Adjustable& number, bool up) {
  const int step =
      number.step != 0 ? number.step : std::max(1, (number.max - number.min) / kStepsOfRange);
  const int middle = MiddleOf(number.min, number.max);
  const int beyond = ((number.value - middle) % step + step) % step;
  const int down = beyond != 0 ? beyond : step;
  Set(number, up ? number.value + step - beyond : number.value - down);
}

/// Index of `key` among the first `count` keys, or `count`.
std::size_t PlaceOf(char key, std::string_view keys, std::size_t count) {
  return std::min(keys.find(key), count);
}

int RandomOf(const Adjustable& number) {
  const unsigned values = static_cast<unsigned>(number.max) - static_cast<unsigned>(number.min) + 1;
  return number.min + static_cast<int>(static_cast<unsigned>(std::rand()) % values);
}

/// Sets all numbers together, if the key does that.
bool SetAll(char key, std::span<Adjustable> numbers) {
  if (kAllKeys.find(key) == std::string_view::npos) return false;
  for (Adjustable& number : numbers) {
    if (number.isChoice) continue;
    if (key == '>' || key == '.') {
      Set(number, number.max);
    } else if (key == '<' || key == ',') {
      Set(number, number.min);
    } else {
      Set(number, RandomOf(number));
    }
  }
  return true;
}

/// Reads keys until one changes something (true, with its index) or leaves.
bool ReadChange(std::span<Adjustable> numbers, std::size_t& changed) {
  const std::span<Adjustable> stepped = WithKeys(numbers);
  for (;;) {
    const char key = console::ReadKey();
    if (key == 'q' || key == 'Q') return false;
    changed = 0;
    if (SetAll(key, numbers)) return true;
    const std::size_t up = PlaceOf(key, kUpKeys, stepped.size());
    const std::size_t down = PlaceOf(key, kDownKeys, stepped.size());
    changed = std::min(up, down);
    if (changed == stepped.size()) continue;
    Step(stepped[changed], up < stepped.size());
    return true;
  }
}

/// True if a field is represented by one number that defines a ramp.
bool IsRamp(const k2v::RecordField& field) {
  return field.count > 1 && !field.isMatrix;
}

void AddIdentity(const k2v::RecordField& field, std::vector<Adjustable>& numbers) {
  static constexpr const char* kNames[] = {"m11", "m12", "m13", "m21", "m22",
                                           "m23", "m31", "m32", "m33"};
  constexpr int kStep = k2v::kMatrixOne / 16;
  for (std::size_t i = 0; i < std::size(kNames); ++i) {
    const bool onDiagonal = i % (k2v::kMatrixSide + 1) == 0;
    numbers.push_back({kNames[i], field.min, field.max, onDiagonal ? k2v::kMatrixOne : 0, kStep});
  }
}

void StoreRamp(int percent, const k2v::RecordField& field, void* record) {
  const int64_t rise = (int64_t{field.max} - field.min) * percent / kWholeRamp;
  for (std::size_t i = 0; i < field.count; ++i) {
    const int64_t risen = rise * static_cast<int64_t>(i) / static_cast<int64_t>(field.count - 1);
    k2v::SetField(record, field, field.min + risen, i);
  }
}

}  // namespace

int Adjust(std::span<Adjustable> numbers, const std::function<int(std::size_t changed)>& apply) {
  std::srand(static_cast<unsigned>(std::time(nullptr)));
  std::size_t changed = 0;
  while (apply(changed) == 0) {
    PrintPrompt(WithKeys(numbers));
    if (!ReadChange(numbers, changed)) break;
  }
  return 0;
}

std::vector<Adjustable> NumbersOf(std::span<const k2v::RecordField> fields) {
  std::vector<Adjustable> numbers;
  for (const k2v::RecordField& field : fields) {
    if (field.isMatrix) {
      AddIdentity(field, numbers);
    } else if (IsRamp(field)) {
      numbers.push_back({field.name, 0, kWholeRamp, kWholeRamp});
    } else {
      const bool isChoice = field.max - field.min <= kMaxChoices;
      const int start = isChoice ? field.min : MiddleOf(field.min, field.max);
      numbers.push_back({field.name, field.min, field.max, start});
    }
  }
  return numbers;
}

void Store(std::span<const Adjustable> numbers, std::span<const k2v::RecordField> fields,
           void* record) {
  auto number = numbers.begin();
  for (const k2v::RecordField& field : fields) {
    if (IsRamp(field)) {
      StoreRamp(number++->value, field, record);
      continue;
    }
    for (std::size_t i = 0; i < field.count; ++i) {
      k2v::SetField(record, field, number++->value, i);
    }
  }
}

}  // namespace record_adjuster
