// Preloaded into what runs on the board so that its waits end sooner: sleep, usleep, nanosleep and
// relative clock_nanosleep take 1/CVNSIM_TIME_SCALE of the requested time. Clocks are not affected.
#include <dlfcn.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace {

constexpr double kNanosecondsPerSecond = 1e9;

/// How many times shorter waits are; 1 if the environment has no valid value.
double Scale() {
  static const double scale = [] {
    const char* text = std::getenv("CVNSIM_TIME_SCALE");
    const double value = text != nullptr ? std::strtod(text, nullptr) : 1;
    return std::isfinite(value) && value > 0 ? value : 1;
  }();
  return scale;
}

/// `time` multiplied by `factor`, rounded to the nanosecond.
timespec Multiply(const timespec& time, double factor) {
  const double asked =
      static_cast<double>(time.tv_sec) * kNanosecondsPerSecond + static_cast<double>(time.tv_nsec);
  const auto nanoseconds = static_cast<std::int64_t>(std::llround(asked * factor));
  constexpr auto kPerSecond = static_cast<std::int64_t>(kNanosecondsPerSecond);
  return {static_cast<time_t>(nanoseconds / kPerSecond),
          static_cast<long>(nanoseconds % kPerSecond)};
}

bool IsValid(const timespec& time) {
  return time.tv_sec >= 0 && time.tv_nsec >= 0 &&
         static_cast<double>(time.tv_nsec) < kNanosecondsPerSecond;
}

using ClockNanosleep = int (*)(clockid_t, int, const timespec*, timespec*);

/// The C library's own clock_nanosleep.
ClockNanosleep RealClockNanosleep() {
  static const auto real = reinterpret_cast<ClockNanosleep>(dlsym(RTLD_NEXT, "clock_nanosleep"));
  return real;
}

}  // namespace

extern "C" {

int clock_nanosleep(clockid_t clock, int flags, const timespec* request, timespec* remain) {
  if ((flags & TIMER_ABSTIME) != 0 || !IsValid(*request)) {
    return RealClockNanosleep()(clock, flags, request, remain);
  }
  const timespec scaled = Multiply(*request, 1 / Scale());
  const int error = RealClockNanosleep()(clock, flags, &scaled, remain);
  if (error == EINTR && remain != nullptr) *remain = Multiply(*remain, Scale());
  return error;
}

int nanosleep(const timespec* request, timespec* remain) {
  const int error = clock_nanosleep(CLOCK_REALTIME, 0, request, remain);
  if (error == 0) return 0;
  errno = error;
  return -1;
}

int usleep(useconds_t microseconds) {
  const timespec request{static_cast<time_t>(microseconds / 1000000),
                         static_cast<long>(microseconds % 1000000) * 1000};
  return nanosleep(&request, nullptr);
}

unsigned sleep(unsigned seconds) {
  timespec remain{};
  const timespec request{static_cast<time_t>(seconds), 0};
  if (nanosleep(&request, &remain) == 0) return 0;
  return static_cast<unsigned>(remain.tv_sec) + (remain.tv_nsec > 0 ? 1U : 0U);
}

}  // extern "C"
