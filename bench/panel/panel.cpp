// How long one picture of the panel takes, and how many of them one core renders per second.
#include <fcntl.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "core/Command.h"
#include "core/SharedBoard.h"
#include "k2v/vfe_hdmi.h"
#include "k2v/vpq.h"
#include "k2v/vsc.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kRuns = 21;
constexpr char kStreamed[] = "200";  // pictures

struct Cost {
  double wallMs;
  double cpuMs;
};

double Milliseconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
}

void StayOnOneCore() {
  cpu_set_t cores;
  CPU_ZERO(&cores);
  CPU_SET(0, &cores);
  sched_setaffinity(0, sizeof(cores), &cores);
}

/// Runs cvnsim and discards its output; on a single core if requested.
Cost Run(std::vector<std::string> words, bool onOneCore) {
  words.insert(words.begin(), CVNSIM);
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  const Clock::time_point start = Clock::now();
  const pid_t child = fork();
  if (child == 0) {
    if (onOneCore) StayOnOneCore();
    dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDOUT_FILENO);
    execv(CVNSIM, arguments.data());
    _exit(127);
  }
  int status = 0;
  rusage usage = {};
  if (wait4(child, &status, 0, &usage) < 0 || status != 0) {
    std::fprintf(stderr, "cvnsim failed\n");
    std::exit(EXIT_FAILURE);
  }
  return {std::chrono::duration<double, std::milli>(Clock::now() - start).count(),
          Milliseconds(usage.ru_utime) + Milliseconds(usage.ru_stime)};
}

void Do(const std::string& command) {
  sim::Apply(*sim::BoardLock(), command);
}

void ConnectPort0() {
  K2V_RHAL_VFE_HDMI_Initialize();
  K2V_RHAL_VFE_HDMI_EnableHPD();
  K2V_RHAL_VFE_HDMI_Open();
  K2V_RHAL_VFE_HDMI_Connect(0);
  K2V_RHAL_VSC_Initialize();
  K2V_RHAL_VSC_Open(0);
  K2V_RHAL_VSC_Connect(0, {K2V_VSC_INPUTSRC_HDMI, 0, 0});
}

void SetManySettings() {
  K2V_RHAL_VPQ_SetBrightness(60);
  K2V_RHAL_VPQ_SetContrast(60);
  K2V_RHAL_VPQ_SetSaturation(60);
  K2V_RHAL_VPQ_SetHue(60);
  K2V_RHAL_VPQ_SetSharpnessExtend(70);
  K2V_RHAL_VPQ_SetGamma(6);
  K2V_RHAL_VPQ_SetColorTempLevel(4);
  K2V_RHAL_VPQ_SetBackLight(60);
}

void MeasureCamera(const std::string& file) {
  std::vector<double> wall;
  wall.reserve(kRuns);
  for (int i = 0; i < kRuns; ++i) wall.push_back(Run({"camera", file}, false).wallMs);
  std::ranges::sort(wall);
  std::printf("cvnsim camera FILE.png, %d runs: median %.0f ms, fastest %.0f ms, slowest %.0f ms\n",
              kRuns, wall[wall.size() / 2], wall.front(), wall.back());
}

void MeasureStream(const char* what) {
  const Cost cost = Run({"camera", "--y4m", "--rate", "120", "--pictures", kStreamed}, true);
  std::printf("stream on one core, %-40s %5.0f pictures a second, %4.1f ms CPU each\n", what,
              std::atof(kStreamed) * 1e3 / cost.cpuMs, cost.cpuMs / std::atof(kStreamed));
}

}  // namespace

int main() {
  std::string directory = (std::filesystem::temp_directory_path() / "bench-panel-XXXXXX").string();
  if (mkdtemp(directory.data()) == nullptr) return EXIT_FAILURE;
  setenv("CVNSIM_STATE", (directory + "/state").c_str(), 1);
  sim::PowerOn();
  ConnectPort0();
  MeasureCamera(directory + "/camera.png");
  MeasureStream("still bars:");
  Do("picture 0 box");
  MeasureStream("moving box:");
  SetManySettings();
  MeasureStream("moving box, eight settings changed:");
  std::filesystem::remove_all(directory);
  return EXIT_SUCCESS;
}
