// Cost of recording per call, compared with the same call without the recorder, and cost of reading
// ten million calls. Processor time is measured, so that other work on the machine has less
// influence.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string>

#include "k2v/vfe_hdmi.h"
#include "k2v/vpq.h"
#include "k2v/vsc.h"

namespace {

namespace fs = std::filesystem;

constexpr int kReadCalls = 10'000'000;

void Scalars(int i) {
  K2V_RHAL_VSC_SetWinBlank(0, static_cast<uint32_t>(i & 1), 2);
}
void Record(int i) {
  K2V_RHAL_VSC_SetInputRegion(0, {static_cast<uint16_t>(i), 0, 1920, 1080});
}
void Curve(int i) {
  static K2V_VPQ_GAMMA_LUT_T curve;
  curve.nRed[0] = static_cast<uint16_t>(i);
  K2V_RHAL_VPQ_SetGammaLUT(&curve);
}
void Buffer(int i) {
  static uint8_t edid[K2V_HDMI_EDID_BYTES];
  edid[0] = static_cast<uint8_t>(i);
  K2V_RHAL_VFE_HDMI_WriteEDID(0, edid);
}

constexpr struct {
  const char* name;
  void (*call)(int);
  int calls;
  unsigned payload;  // bytes of arguments and result
} kRows[] = {
    {"three numbers", Scalars, 1'000'000, 16},
    {"a record of 8 bytes", Record, 1'000'000, 16},
    {"a record of 1536 bytes", Curve, 200'000, 1541},
    {"a buffer of 256 bytes", Buffer, 200'000, 266},
};

double ProcessorNs() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

/// In the child: makes the calls and prints the time per call and the memory of the process.
int Measure(const char* row, const char* calls) {
  const auto& what = kRows[std::atoi(row)];
  const int count = std::atoi(calls);
  const double begin = ProcessorNs();
  for (int i = 0; i < count; ++i) what.call(i);
  rusage used{};
  const double ns = (ProcessorNs() - begin) / count;
  getrusage(RUSAGE_SELF, &used);
  std::printf("%f %ld\n", ns, used.ru_maxrss);
  return 0;
}

struct Figures {
  double ns = 0;
  long peakKib = 0;
};

Figures Run(const std::string& variables, const std::string& words) {
  Figures figures;
  const std::string self = fs::read_symlink("/proc/self/exe");
  FILE* const pipe = popen((variables + ' ' + self + ' ' + words).c_str(), "r");
  if (pipe == nullptr || std::fscanf(pipe, "%lf %ld", &figures.ns, &figures.peakKib) != 2) {
    std::fprintf(stderr, "no figures of %s\n", words.c_str());
    std::exit(1);
  }
  pclose(pipe);
  return figures;
}

uintmax_t StreamBytes(const fs::path& directory) {
  uintmax_t bytes = 0;
  for (const auto& file : fs::directory_iterator(directory)) {
    if (file.path().filename() != "metadata") bytes += file.file_size();
  }
  return bytes;
}

Figures Recorded(const fs::path& directory, const std::string& words) {
  return Run("CVN_RECORD=" + directory.string() + " LD_PRELOAD=" CVN_RECORDER, words);
}

void PrintReading(const fs::path& directory) {
  for (const char* command : {"stats", "print"}) {
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
      if (std::freopen("/dev/null", "w", stdout) == nullptr) _exit(1);
      execl(CVN_TRACE, CVN_TRACE, command, directory.c_str(), nullptr);
      _exit(127);
    }
    int status = 0;
    rusage used{};
    wait4(child, &status, 0, &used);
    std::printf("cvntrace %-6s of %d calls: %5.1f s, peak %ld KiB%s\n", command, kReadCalls,
                static_cast<double>(used.ru_utime.tv_sec) +
                    static_cast<double>(used.ru_utime.tv_usec) / 1e6,
                used.ru_maxrss, status == 0 ? "" : ", failed");
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 3) return Measure(argv[1], argv[2]);
  std::string scratch = (fs::temp_directory_path() / "bench_record-XXXXXX").string();
  if (mkdtemp(scratch.data()) == nullptr) return 1;
  const fs::path directory = scratch;
  std::printf("%-24s %10s %10s %10s %14s %10s\n", "call with", "direct ns", "recorded", "more ns",
              "bytes + data", "more KiB");
  int index = 0;
  for (const auto& row : kRows) {
    const std::string words = std::to_string(index++) + ' ' + std::to_string(row.calls);
    const fs::path recording = directory / std::to_string(index);
    const Figures direct = Run("", words), recorded = Recorded(recording, words);
    const double bytes = static_cast<double>(StreamBytes(recording)) / row.calls;
    std::printf("%-24s %10.1f %10.1f %10.1f %6.1f + %5u %10ld\n", row.name, direct.ns, recorded.ns,
                recorded.ns - direct.ns, bytes - row.payload, row.payload,
                recorded.peakKib - direct.peakKib);
    fs::remove_all(recording);
  }
  Recorded(directory / "many", "0 " + std::to_string(kReadCalls));
  PrintReading(directory / "many");
  fs::remove_all(directory);
  return 0;
}
