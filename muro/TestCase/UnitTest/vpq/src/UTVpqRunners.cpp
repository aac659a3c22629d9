#include "UTVpqRunners.h"

#include <string>

#include "Remarks.h"

namespace utvpq {
namespace {

constexpr uint32_t kGammaPoints = 1024;
constexpr unsigned kLutSide = 9;  // points along each edge of the colour cube

/// Number for point `i` of `count` on a straight line up to `max`.
uint16_t OnLine(unsigned i, unsigned count, unsigned max) {
  return static_cast<uint16_t>(i * max / (count - 1));
}

int NumberFor(const k2v::RecordField& field, Filling filling) {
  switch (filling) {
    case Filling::kMinimum:
      return 0;
    case Filling::kMaximum:
      return field.max;
    case Filling::kRandom:
      break;
  }
  return std::rand();
}

/// Calls with a number within the range. These tests do not judge results: an error is added as a
/// remark.
void CallWithGoodNumber(const char* kind, const char* name, int32_t value, NumberSetter call) {
  const int result = CallWithNumber(kind, name, value, call);
  if (result == 0) return;
  Remark(std::string(kind) + " " + std::to_string(value) + " answered " + std::to_string(result) +
         ", which this test does not judge");
}

}  // namespace

void CallTwice(int (*call)()) {
  std::puts("No parameters need to be tested.");
  call();
  std::puts("boundary test : repeat call");
  call();
}

int CallWithNumber(const char* kind, const char* name, int32_t value, NumberSetter call) {
  std::printf("%s test : %s = %d\n", kind, name, value);
  return call(value);
}

void CallWithLimits(const char* name, int32_t min, int32_t max, NumberSetter call, Random random,
                    std::initializer_list<int32_t> boundaries) {
  std::srand(static_cast<unsigned>(std::time(nullptr)));
  CallWithGoodNumber("min value", name, min, call);
  CallWithGoodNumber("max value", name, max, call);
  if (random == Random::kAny) CallWithNumber("random value", name, std::rand(), call);
  if (random == Random::kKept)
    CallWithGoodNumber("random value", name, std::rand() % (max + 1), call);
  for (const int32_t boundary : boundaries) CallWithNumber("boundary", name, boundary, call);
}

void Fill(void* record, std::span<const k2v::RecordField> fields, Filling filling) {
  for (const k2v::RecordField& field : fields) {
    for (std::size_t i = 0; i < field.count; ++i) {
      k2v::SetField(record, field, NumberFor(field, filling), i);
    }
  }
}

int32_t AnnounceRandom(const char* name) {
  const int32_t value = std::rand();
  std::printf("random value test : %s = %d\n", name, value);
  return value;
}

void CallWithIdentityGamma(int (*call)(K2V_VPQ_GAMMA_CURVE_T*)) {
  K2V_VPQ_GAMMA_CURVE_T curve{};
  curve.nTableSize = kGammaPoints;
  for (unsigned i = 0; i < kGammaPoints; ++i) curve.nCurve[i] = OnLine(i, kGammaPoints, 4095);
  call(&curve);
}

void CallWithIdentityLut(int (*call)(K2V_VPQ_HDR_3D_LUT_T*)) {
  K2V_VPQ_HDR_3D_LUT_T lut{};
  for (unsigned i = 0; i < kLutSide * kLutSide * kLutSide; ++i) {
    lut.nRed[i] = OnLine(i / (kLutSide * kLutSide), kLutSide, 1023);
    lut.nGreen[i] = OnLine(i / kLutSide % kLutSide, kLutSide, 1023);
    lut.nBlue[i] = OnLine(i % kLutSide, kLutSide, 1023);
  }
  call(&lut);
}

}  // namespace utvpq
