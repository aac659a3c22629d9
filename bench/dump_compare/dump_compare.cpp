// dump_compare [ROWS [ROUNDS [WORD]]]: compares the verifiers, as complete programs, with other
// ways of comparing dumps. The two programs of a line run alternately, round by round, with their
// output to a file; the ratio is the median of the rounds' ratios. With WORD, only the lines of
// that stage, kind or program.
#include <sys/mman.h>
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

namespace {

using Words = std::vector<std::string>;

/// The resources that one program used.
struct Figures {
  std::vector<double> ms;
  long peakKib = 0;
};

/// Pairs of dumps in a temporary directory, made on first use.
class Dumps {
 public:
  Dumps() : path_((std::filesystem::temp_directory_path() / "dump_compare_XXXXXX").string()) {
    if (mkdtemp(path_.data()) == nullptr) std::exit((std::perror("mkdtemp"), 1));
  }
  ~Dumps() { std::filesystem::remove_all(path_); }
  Dumps(const Dumps&) = delete;
  Dumps& operator=(const Dumps&) = delete;

  std::string PathOf(const std::string& name) const { return path_ + "/" + name; }

  /// Paths of the golden file and the sample.
  Words Pair(const std::string& stage, long rows, const std::string& kind);

 private:
  std::string path_;
};

/// Runs a program with its output to a file in memory, so that no disk is measured. Returns false
/// if it cannot be run.
bool Run(const Words& words, Figures& figures) {
  std::vector<char*> arguments;
  for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  const int output = memfd_create("output", MFD_CLOEXEC);
  const auto start = std::chrono::steady_clock::now();
  const pid_t child = fork();
  if (child == 0) {
    dup2(output, 1);
    dup2(output, 2);
    execvp(arguments[0], arguments.data());
    _exit(127);
  }
  int status = 0;
  rusage usage{};
  if (child < 0 || wait4(child, &status, 0, &usage) != child) return false;
  const std::chrono::duration<double, std::milli> taken = std::chrono::steady_clock::now() - start;
  close(output);
  figures.ms.push_back(taken.count());
  figures.peakKib = std::max(figures.peakKib, usage.ru_maxrss);
  return WIFEXITED(status) && WEXITSTATUS(status) != 127 && WEXITSTATUS(status) != 2;
}

Words Dumps::Pair(const std::string& stage, long rows, const std::string& kind) {
  const std::string name = stage + "-" + std::to_string(rows);
  const std::string golden = PathOf(name + (kind == "one_row" ? ".one_row" : "") + ".golden");
  const std::string sample = PathOf(name + "." + kind);
  Figures unused;
  if (!std::filesystem::exists(sample) &&
      !Run({MAKE_DUMPS, stage, std::to_string(rows), kind, golden, sample}, unused)) {
    std::exit((std::fprintf(stderr, "cannot make the dumps %s\n", sample.c_str()), 1));
  }
  return {golden, sample};
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const std::size_t middle = values.size() / 2;
  return values.size() % 2 != 0 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

/// Direction of a ratio: how much faster the first program is, or how much longer it takes.
enum class Bar { kFaster, kLonger };

class Comparison {
 public:
  explicit Comparison(int rounds) : rounds_(rounds) {
    std::printf("%-44s %9s %9s  %-8s %7s %6s %5s %9s\n", "verifier and pair", "ms", "other ms",
                "other", "ratio", "bar", "", "peak KiB");
  }

  /// Runs both programs alternately and prints a line. Reports programs that are not installed.
  void Print(const std::string& what, const Words& ours, const char* otherName, const Words& other,
             Bar kind, double bar) {
    Figures first;
    Figures second;
    std::vector<double> ratios;
    for (int round = -1; round < rounds_; ++round) {
      if (!Run(ours, first) || !Run(other, second)) {
        std::printf("%-44s cannot be run beside %s\n", what.c_str(), otherName);
        return;
      }
      // The first round only loads files and programs into memory.
      if (round < 0) first.ms.clear(), second.ms.clear();
      if (round >= 0) ratios.push_back(Ratio(first.ms.back(), second.ms.back(), kind));
    }
    const double ratio = Median(ratios);
    const bool met = kind == Bar::kFaster ? ratio >= bar : ratio <= bar;
    std::printf("%-44s %9.1f %9.1f  %-8s %7.2f %s%5.1f %5s %9ld\n", what.c_str(), Median(first.ms),
                Median(second.ms), otherName, ratio, kind == Bar::kFaster ? ">" : "<", bar,
                met ? "met" : "MISS", first.peakKib);
    std::fflush(stdout);
  }

 private:
  static double Ratio(double ours, double other, Bar kind) {
    return kind == Bar::kFaster ? other / ours : ours / other;
  }

  const int rounds_;
};

Words operator+(Words words, const Words& more) {
  words.insert(words.end(), more.begin(), more.end());
  return words;
}

/// One line of the table: a verifier on one pair, another program on the same pair or a different
/// one.
struct Line {
  const char* stage;
  const char* kind;
  const char* other;  // "fscanf", "strtok", "verifier" or the command of a common tool
  const char* otherKind;
  Bar bar;
  double limit;
  const char* ours = "verifier";
};
constexpr Line kLines[] = {
    {"VDEC", "clock", "cmp", "equal", Bar::kLonger, 6},
    {"VDEC", "clock", "fscanf", "clock", Bar::kFaster, 25},
    {"VDEC", "clock", "strtok", "clock", Bar::kFaster, 6},
    {"VDEC", "clock", "mawk", "equal", Bar::kFaster, 2},
    {"VDEC", "clock", "diff", "equal", Bar::kFaster, 1},
    {"VDEC", "equal", "cmp", "equal", Bar::kLonger, 2.5},
    {"VDEC", "percent", "verifier", "clock", Bar::kLonger, 2},
    {"VDEC", "every", "strtok", "every", Bar::kFaster, 3},
    {"VO", "clock", "fscanf", "clock", Bar::kFaster, 15},
    {"VO", "percent", "verifier", "clock", Bar::kLonger, 2},
    {"VO", "every", "strtok", "every", Bar::kFaster, 3},
    {"Scaler", "clock", "fscanf", "clock", Bar::kFaster, 15},
    {"Scaler", "percent", "verifier", "clock", Bar::kLonger, 2},
    {"Scaler", "every", "strtok", "every", Bar::kFaster, 3},
    {"OMXIN", "clock", "strtok", "clock", Bar::kFaster, 8},
    {"OMXOUT", "clock", "strtok", "clock", Bar::kFaster, 8},
    {"DVO", "clock", "strtok", "clock", Bar::kFaster, 8},
    {"Audio", "clock", "strtok", "clock", Bar::kFaster, 8},
    {"Audio", "percent", "verifier", "clock", Bar::kLonger, 2},
    {"Audio", "every", "strtok", "every", Bar::kFaster, 3},
    {"VDEC", "events", "verifier", "events", Bar::kLonger, 3, "analysis"},
    {"VO", "events", "verifier", "events", Bar::kLonger, 3, "analysis"},
    {"Scaler", "events", "verifier", "events", Bar::kLonger, 3, "analysis"},
    {"OMXIN", "events", "verifier", "events", Bar::kLonger, 3, "analysis"},
    {"DVO", "events", "verifier", "events", Bar::kLonger, 3, "analysis"},
    {"Audio", "events", "verifier", "events", Bar::kLonger, 3, "analysis"},
    {"VDEC", "equal", "verifier", "equal", Bar::kLonger, 10, "analysis"},
    {"VDEC", "every", "verifier", "every", Bar::kLonger, 10, "analysis"},
    {"VDEC", "unrelated", "verifier", "unrelated", Bar::kLonger, 10, "analysis"},
    {"VDEC", "one_row", "verifier", "one_row", Bar::kLonger, 10, "analysis"},
    {"Scaler", "equal", "verifier", "equal", Bar::kLonger, 10, "analysis"},
    {"Scaler", "every", "verifier", "every", Bar::kLonger, 10, "analysis"},
    {"Scaler", "unrelated", "verifier", "unrelated", Bar::kLonger, 10, "analysis"},
    {"Scaler", "one_row", "verifier", "one_row", Bar::kLonger, 10, "analysis"},
    {"OMXIN", "every", "verifier", "every", Bar::kLonger, 10, "analysis"},
    {"OMXIN", "unrelated", "verifier", "unrelated", Bar::kLonger, 10, "analysis"},
    {"OMXIN", "one_row", "verifier", "one_row", Bar::kLonger, 10, "analysis"},
};

Words CommandOf(const std::string& program, const std::string& stage, const Words& pair) {
  if (program == "analysis") return Words{ANALYSE_DUMP, stage} + pair;
  if (program == "verifier") return Words{VERIFY_DUMP, stage} + pair;
  if (program == "fscanf") return Words{WITH_FSCANF, stage} + pair;
  if (program == "strtok") return Words{WITH_STRTOK, stage} + pair;
  if (program == "mawk") return {"mawk", "-f", WHOLE_LINES_AWK, "-v", "S=" + pair[1], pair[0]};
  if (program == "numdiff") return Words{"numdiff", "-s", ",\\n"} + pair;
  return Words{program} + pair;
}

/// The number in an argument; exits if it is not a number.
long NumberIn(const char* text) {
  char* end = nullptr;
  const long number = std::strtol(text, &end, 10);
  if (end != text && *end == '\0' && number > 0) return number;
  std::exit((std::fprintf(stderr, "usage: dump_compare [ROWS [ROUNDS [WORD]]]\n"), 2));
}

}  // namespace

int main(int argc, char** argv) {
  const long rows = argc > 1 ? NumberIn(argv[1]) : 1'000'000;
  const int rounds = argc > 2 ? static_cast<int>(NumberIn(argv[2])) : 15;
  const std::string only = argc > 3 ? argv[3] : "";
  Dumps dumps;
  Comparison comparison(rounds);
  for (const Line& line : kLines) {
    if (!only.empty() && only != line.stage && only != line.kind && only != line.ours) continue;
    comparison.Print(
        std::string(line.stage) + ", " + line.kind +
            (line.ours == std::string("verifier") ? "" : std::string(", ") + line.ours),
        CommandOf(line.ours, line.stage, dumps.Pair(line.stage, rows, line.kind)), line.other,
        CommandOf(line.other, line.stage, dumps.Pair(line.stage, rows, line.otherKind)), line.bar,
        line.limit);
  }
  if (!only.empty()) return 0;
  const Words small = dumps.Pair("VDEC", rows / 10, "clock");
  comparison.Print("VDEC, clock, a tenth of the rows", CommandOf("verifier", "VDEC", small),
                   "numdiff", CommandOf("numdiff", "VDEC", small), Bar::kFaster, 100);
  comparison.Print("VDEC, clock", CommandOf("verifier", "VDEC", dumps.Pair("VDEC", rows, "clock")),
                   "tenth", CommandOf("verifier", "VDEC", small), Bar::kLonger, 11);
  return 0;
}
