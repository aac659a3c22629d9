// The kinds of picture-quality unit tests: each calls its HAL function with prepared arguments.
// Results are ignored: such a test only fails through its effect on the HAL, such as a crash.
#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <initializer_list>
#include <memory>
#include <tuple>

#include "TestCase/sic_video/VpqFields.h"

namespace utvpq {

using NumberSetter = int (*)(int32_t);

/// Calls a function without arguments twice.
void CallTwice(int (*call)());

/// Calls with `value`, printed after the kind of test and the parameter's name. Returns the HAL's
/// result.
int CallWithNumber(const char* kind, const char* name, int32_t value, NumberSetter call);

/// The random number used for a range.
enum class Random {
  kNone,
  kAny,   // of any size
  kKept,  // between 0 and the largest number
};

/// Calls with the smallest and the largest number, with a random one, and with each number beyond
/// the limits. An error for a number within the range is added as a remark.
void CallWithLimits(const char* name, int32_t min, int32_t max, NumberSetter call, Random random,
                    std::initializer_list<int32_t> boundaries);

template <typename... Boundaries>
void CallWithRange(const char* name, int32_t min, int32_t max, NumberSetter call,
                   Boundaries... boundaries) {
  CallWithLimits(name, min, max, call, Random::kAny, {boundaries...});
}

template <typename... Boundaries>
void CallWithChoices(const char* name, int32_t min, int32_t max, NumberSetter call,
                     Boundaries... boundaries) {
  CallWithLimits(name, min, max, call, Random::kNone, {boundaries...});
}

template <typename... Boundaries>
void CallWithRangeKept(const char* name, int32_t min, int32_t max, NumberSetter call,
                       Boundaries... boundaries) {
  CallWithLimits(name, min, max, call, Random::kKept, {boundaries...});
}

/// Calls with a null pointer.
template <typename T>
void CallWithNull(const char* name, int (*call)(T*)) {
  std::printf("Null Pointer Check : %s = NULL\n", name);
  call(nullptr);
}

/// What a record's fields are filled with. The minimum is zero, even if a field's range begins
/// below it.
enum class Filling { kMinimum, kMaximum, kRandom };

/// Fills every element of every field; random numbers are truncated to the field's width.
void Fill(void* record, std::span<const k2v::RecordField> fields, Filling filling);

/// Calls with records of zeros, of the largest numbers and of random ones, and with a null pointer.
template <typename Record>
void CallWithRecord(const char* name, int (*call)(Record*)) {
  static constexpr struct {
    const char* line;
    Filling filling;
  } kSteps[] = {{"min value test", Filling::kMinimum},
                {"max value test", Filling::kMaximum},
                {"random value test", Filling::kRandom}};
  std::srand(static_cast<unsigned>(std::time(nullptr)));
  const auto record = std::make_unique<Record>();  // some have large tables
  for (const auto& step : kSteps) {
    std::puts(step.line);
    Fill(record.get(), k2v::FieldsOf(record.get()), step.filling);
    call(record.get());
  }
  CallWithNull(name, call);
}

/// A random number, printed after the parameter's name.
int32_t AnnounceRandom(const char* name);

/// Calls with random numbers, one per name.
template <typename... Numbers, std::size_t count>
void CallWithRandom(const char* const (&names)[count], int (*call)(Numbers...)) {
  static_assert(sizeof...(Numbers) == count);
  std::srand(static_cast<unsigned>(std::time(nullptr)));
  std::array<int32_t, count> numbers;
  for (std::size_t i = 0; i < count; ++i) numbers[i] = AnnounceRandom(names[i]);
  std::apply(call, numbers);
}

/// Calls with tables that have no effect.
void CallWithIdentityGamma(int (*call)(K2V_VPQ_GAMMA_CURVE_T*));
void CallWithIdentityLut(int (*call)(K2V_VPQ_HDR_3D_LUT_T*));

}  // namespace utvpq
