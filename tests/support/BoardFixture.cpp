#include "BoardFixture.h"

#include <sys/wait.h>

#include <array>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>

namespace test {
namespace {

namespace fs = std::filesystem;

constexpr const char* kBoardRun = CVN_BOARD_RUN;
constexpr const char* kBuildDirectory = CVN_BUILD_DIRECTORY;

fs::path NewDirectory() {
  std::string name = testing::TempDir() + "board-XXXXXX";
  if (mkdtemp(name.data()) == nullptr) throw fs::filesystem_error("mkdtemp", name, {});
  return name;
}

std::vector<std::string> LinesOf(const fs::path& path) {
  std::ifstream file(path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  return lines;
}

std::string LastWord(const std::string& text) {
  std::istringstream words(text);
  std::string last;
  while (words >> last) {
  }
  return last;
}

void Append(std::vector<std::string>& words, const std::vector<std::string>& more) {
  words.insert(words.end(), more.begin(), more.end());
}

}  // namespace

BoardFixture::BoardFixture() : directory_(NewDirectory()), board_(directory_ / "board") {}

BoardFixture::~BoardFixture() {
  pty_.reset();
  std::error_code ignored;
  fs::remove_all(directory_, ignored);
}

void BoardFixture::SetUp() {
  const ShellResult probe = RunShell(Quoted(kBoardRun) + " --board " + Quoted(board_) + " --bin " +
                                     Quoted(kBuildDirectory) + " --probe");
  sandbox_ = LastWord(probe.output);
  if (probe.status != 0 || sandbox_ == "none") GTEST_SKIP() << "no sandbox: " << probe.output;
  // Use the same sandbox for every start, without repeating the notice on the terminal.
  setenv("CVN_SANDBOX", sandbox_.c_str(), 1);
}

Pty& BoardFixture::Start(const BoardOptions& options) {
  std::vector<std::string> argv{"cvntester"};
  Append(argv, options.arguments);
  return StartProgram(argv, options);
}

Pty& BoardFixture::StartProgram(const std::vector<std::string>& argv, const BoardOptions& options) {
  pty_.reset();
  if (!options.scenario.empty()) std::ofstream(directory_ / "scenario") << options.scenario;
  pty_ = std::make_unique<Pty>(CommandLine(argv, options), options.terminal);
  return *pty_;
}

std::vector<std::string> BoardFixture::CommandLine(const std::vector<std::string>& argv,
                                                   const BoardOptions& options) const {
  std::vector<std::string> words{kBoardRun, "--board", board_, "--bin", kBuildDirectory};
  Append(words, options.launcher);
  if (!options.scenario.empty()) Append(words, {"--scenario", directory_ / "scenario"});
  if (options.timeScale > 1) {
    Append(words, {"--setenv", "LD_PRELOAD=/opt/cvntester/lib/libcvnsim_time.so", "--setenv",
                   "CVNSIM_TIME_SCALE=" + std::to_string(options.timeScale)});
  }
  words.emplace_back("--");
  Append(words, argv);
  return words;
}

fs::path BoardFixture::OnBoard(const std::string& path) const {
  return board_ / "root" / fs::path(path).relative_path();
}

fs::path BoardFixture::ReportPath() const {
  std::vector<fs::path> reports;
  for (const auto& entry : fs::directory_iterator(OnBoard("/tmp/var/log"))) {
    if (entry.path().extension() == ".txt") reports.push_back(entry.path());
  }
  EXPECT_EQ(1U, reports.size()) << "reports in " << OnBoard("/tmp/var/log");
  return reports.empty() ? fs::path() : reports.front();
}

std::string BoardFixture::ReportText() const {
  return FileText(ReportPath());
}

std::string BoardFixture::Totals() const {
  constexpr std::size_t kLine = 137;  // the totals are on the line before the last
  const std::string report = ReportText();
  if (report.size() < 2 * kLine) return "no totals";
  std::istringstream words(report.substr(report.size() - 2 * kLine, kLine));
  std::string numbers;
  for (std::string word; words >> word;) {
    if (std::isdigit(static_cast<unsigned char>(word[0])) == 0) continue;
    numbers += (numbers.empty() ? "" : "/") + word;
  }
  return numbers;
}

std::vector<std::string> BoardFixture::Trace() const {
  return LinesOf(board_ / "run/trace");
}

std::vector<std::string> BoardFixture::LogCommands() const {
  return LinesOf(board_ / "run/log/commands");
}

std::string BoardFixture::Cvnsim(const std::string& command) const {
  const ShellResult result = RunShell(Quoted(std::string(kBuildDirectory) + "/bin/cvnsim") +
                                      " --board " + Quoted(board_) + " " + command);
  EXPECT_EQ(0, result.status) << "cvnsim " << command << ": " << result.output;
  return result.output;
}

ShellResult RunShell(const std::string& command) {
  FILE* pipe = popen(("{ " + command + "\n} 2>&1").c_str(), "r");
  if (pipe == nullptr) return {-1, "popen failed"};
  std::string output;
  std::array<char, 4096> buffer{};
  for (std::size_t count; (count = fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) {
    output.append(buffer.data(), count);
  }
  const int status = pclose(pipe);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), output};
}

std::string FileText(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file.is_open()) << "cannot read " << path;
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string Quoted(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

}  // namespace test
