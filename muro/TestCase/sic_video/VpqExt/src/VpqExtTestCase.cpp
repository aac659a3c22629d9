#include "VpqExtTestCase.h"

#include <cstdio>
#include <iterator>

#include "../../RecordAdjuster.h"
#include "../../ValueTests.h"

namespace {

using namespace record_adjuster;
using namespace value_tests;

constexpr K2V_VPQ_COLOR_TEMP_EXTEND_T kNeutralTemperature = {512, 512, 512, 512, 512, 512};
constexpr K2V_VPQ_MODULE_T kFirstModule = {0, 1};
constexpr K2V_VPQ_DEMO_T kFirstModuleDemo = {0, 0, 1};
constexpr K2V_VPQ_DOLBY_CONFIG_T kDolbyConfig = {0, 50, 1000};
constexpr K2V_VPQ_ENG_ID_T kFirstItem = {0, 0};

/// Calls once; the effect is visible on the panel and in the HAL's log.
template <typename... Arguments>
int Call(int (*call)(Arguments...), std::type_identity_t<Arguments>... arguments) {
  call(arguments...);
  return 0;
}

/// A record whose tables are straight lines.
template <typename Record>
Record Ramp() {
  Record record{};
  const auto fields = k2v::FieldsOf(&record);
  record_adjuster::Store(NumbersOf(fields), fields, &record);
  return record;
}

/// Sets a record whose tables are straight lines.
template <typename Record>
int SendRamp(int (*set)(Record* record)) {
  Record record = Ramp<Record>();
  set(&record);
  return 0;
}

/// Sets a straight gamma curve that uses all its points.
int SendGammaRamp(int (*set)(K2V_VPQ_GAMMA_CURVE_T* curve)) {
  K2V_VPQ_GAMMA_CURVE_T curve = Ramp<K2V_VPQ_GAMMA_CURVE_T>();
  curve.nTableSize = std::size(curve.nCurve);
  set(&curve);
  return 0;
}

}  // namespace

#define VPQEXT_AS(name, description, run, ...)             \
  int VpqExtTestCase::VPQ_FunctionTest_HAL_##name(char*) { \
    std::puts(__func__);                                   \
    return run;                                            \
  }
#define VPQEXT(name, run, ...) VPQEXT_AS(name, "", run)
#include "VpqExtTests.def"
