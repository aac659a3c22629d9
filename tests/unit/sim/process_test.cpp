// State shared by several processes: state file, trace file, scenario, cvnsim.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <thread>

#include "Emulated.h"
#include "HalSteps.h"
#include "SimHal.h"

namespace {

namespace fs = std::filesystem;
using testing::TempDir;

struct Outcome {
  int status;
  std::string output;  // standard output and standard error
};

class Processes : public testing::Test {
 protected:
  void SetUp() override {
    board_ = TempDir() + "cvnsim-";
    fs::create_directories(board_ + "/run");
    Write("run/on", "android\n");  // the board stays on between programs
    unsetenv("CVNSIM_SCENARIO");
    setenv("CVNSIM_STATE", (board_ + "/run/state").c_str(), 1);
    setenv("CVNSIM_TRACE", (board_ + "/run/trace").c_str(), 1);
  }

  void TearDown() override { fs::remove_all(board_); }

  // Runs a shell command line until it ends; the environment selects the board.
  static Outcome Run(const std::string& command) {
    Outcome outcome = {-1, {}};
    FILE* pipe = popen(("exec 2>&1; " + command).c_str(), "r");
    char block[4096];
    while (const size_t got = fread(block, 1, sizeof(block), pipe))
      outcome.output.append(block, got);
    const int status = pclose(pipe);
    if (WIFEXITED(status)) outcome.status = WEXITSTATUS(status);
    return outcome;
  }

  static Outcome Client(const std::string& steps) { return Run(SIM_CLIENT " " + steps); }

  Outcome Cvnsim(const std::string& command) const {
    return Run("timeout 10 " CVNSIM " --board " + board_ + ' ' + command);
  }

  void Write(const std::string& name, const std::string& text) const {
    std::ofstream(board_ + '/' + name) << text;
  }

  std::vector<std::string> TraceLines() const {
    std::ifstream file(board_ + "/run/trace");
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return lines;
  }

  std::string board_;
};

TEST_F(Processes, FindTheBoardAsThePreviousOneLeftIt) {
  EXPECT_EQ(Client("h-init h-hpd h-open").output, "0\n0\n0\n");
  Write("other", "plug 0 720x480p60\n");  // only the process that starts the board reads a scenario
  setenv("CVNSIM_SCENARIO", (board_ + "/other").c_str(), 1);
  EXPECT_EQ(Client("h-init h-conn0 signal").output, "-4\n0\n3840x2160\n");
}

TEST_F(Processes, ProvideTheRegisterFileIfTheBoardHasOne) {
  const std::string path = board_ + "/register";
  EXPECT_EQ(Run("CVNSIM_REGISTER=" + path + " " SIM_CLIENT " h-init; test -p " + path).status, 0);
}

TEST_F(Processes, KeepTheRegisterFileOfARunningProgram) {
  const std::string path = board_ + "/register";
  const std::string client = "CVNSIM_REGISTER=" + path + " " SIM_CLIENT " ";
  FILE* first = popen((client + "h-init wait >/dev/null").c_str(), "w");
  struct stat before {
  }, after{};
  while (stat(path.c_str(), &before) != 0) std::this_thread::yield();
  EXPECT_EQ(Run(client + "signal").status, 0);
  EXPECT_EQ(stat(path.c_str(), &after), 0);
  EXPECT_EQ(after.st_ino, before.st_ino);
  pclose(first);
}

TEST_F(Processes, LeaveAChildBehindOnRequest) {
  Write("other", "misbehave K2V_RHAL_VFE_HDMI_Initialize leave-child\n");
  setenv("CVNSIM_SCENARIO", (board_ + "/other").c_str(), 1);
  ASSERT_EQ(prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
  EXPECT_EQ(Client("h-init >/dev/null 2>&1").status, 0);
  std::ifstream children("/proc/thread-self/children");
  pid_t left = 0;
  children >> left;
  ASSERT_GT(left, 0) << "no process is left";
  EXPECT_EQ(kill(left, SIGKILL), 0);
  EXPECT_EQ(waitpid(left, nullptr, 0), left);
}

TEST_F(Processes, ForkedChildrenShareTheAnonymousBoard) {
  const pid_t child = fork();
  if (child == 0) _exit(DoSteps("h-init h-open"));
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(DoSteps("h-open"), K2V_RHAL_ERR_ALREADY);
}

TEST_F(Processes, TakeTurnsInCallsAndTrace) {
  Write("scenario", "fail K2V_RHAL_VFE_HDMI_Initialize 77 --times 6000\n");
  setenv("CVNSIM_SCENARIO", (board_ + "/scenario").c_str(), 1);
  EXPECT_EQ(Run(SIM_CLIENT " loop 5000 & " SIM_CLIENT " loop 5000; wait").status, 0);
  std::map<std::string, int> counts;
  for (const std::string& line : TraceLines()) ++counts[line];
  const std::map<std::string, int> expected = {{"K2V_RHAL_VFE_HDMI_Initialize() = 77", 6000},
                                               {"K2V_RHAL_VFE_HDMI_Initialize() = 0", 1},
                                               {"K2V_RHAL_VFE_HDMI_Initialize() = -4", 3999}};
  EXPECT_EQ(counts, expected);
  // The end of a long trace, in whole lines only.
  EXPECT_EQ(Run(CVNSIM " trace 9000 | sort | uniq -c | wc -l").output, "3\n");
  EXPECT_EQ(Run(CVNSIM " trace 9000 | wc -l").output, "9000\n");
  EXPECT_EQ(Run(CVNSIM " trace 20000 | wc -l").output, "10000\n");
}

TEST_F(Processes, InspectingTheBoardProcessesDueEvents) {
  Client("h-init");
  EXPECT_EQ(Cvnsim("after 0 s signal 3 on").status, 0);
  EXPECT_EQ(Cvnsim("state").status, 0);
  EXPECT_EQ(TraceLines().back().rfind("# signal 3 on: ", 0), 0U) << TraceLines().back();
}

// The trace is a full pipe, so that the client blocks inside a call, holding the board's lock.
TEST_F(Processes, ContinueAfterAProcessWasKilledInsideACall) {
  if (test::IsEmulated()) GTEST_SKIP() << test::kNoRobustMutex;
  const std::string fifo = board_ + "/run/fifo";
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  const int pipe = open(fifo.c_str(), O_RDWR);
  const int capacity = fcntl(pipe, F_SETPIPE_SZ, 4096);
  ASSERT_GT(capacity, 0);
  const pid_t client = fork();
  if (client == 0) {
    setenv("CVNSIM_TRACE", fifo.c_str(), 1);
    execl(SIM_CLIENT, SIM_CLIENT, "loop", "1000000", nullptr);
    _exit(127);
  }
  const auto isAsleep = [client] {
    std::ifstream file("/proc/" + std::to_string(client) + "/stat");
    std::string pid, name, state;
    file >> pid >> name >> state;
    return state == "S";
  };
  int buffered = 0;
  while (kill(client, 0) == 0 && (buffered + 64 < capacity || !isAsleep())) {
    ASSERT_EQ(ioctl(pipe, FIONREAD, &buffered), 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  EXPECT_EQ(Run("timeout 0.2 " SIM_CLIENT " h-init").status, 124) << "the board is locked";
  kill(client, SIGKILL);
  int status = 0;
  waitpid(client, &status, 0);
  close(pipe);
  EXPECT_EQ(WTERMSIG(status), SIGKILL);
  const Outcome next = Client("h-init h-open");
  EXPECT_EQ(next.output, "-4\n0\n") << "status " << next.status;
}

TEST_F(Processes, TimeScaleSpeedsUpTimedEvents) {
  Write("scenario", "plug 0 1920x1080p60\nafter 100 s unplug 0\n");
  setenv("CVNSIM_SCENARIO", (board_ + "/scenario").c_str(), 1);
  const std::string steps = std::string(kHdmiOn) + " signal nap signal";
  const std::string connected = "0\n0\n0\n0\n1920x1080\n";
  EXPECT_EQ(Client(steps).output, connected + "1920x1080\n");
  fs::remove(board_ + "/run/state");
  setenv("CVNSIM_TIME_SCALE", "5000", 1);
  const Outcome scaled = Client(std::string(kHdmiOn) + " nap signal");
  EXPECT_EQ(scaled.output, "0\n0\n0\n0\n0x0\n");
  fs::remove(board_ + "/run/state");
  setenv("CVNSIM_TIME_SCALE", "fast", 1);
  EXPECT_EQ(Client("").status, 2);
}

TEST_F(Processes, RejectAnInvalidScenarioLineImmediately) {
  const struct {
    const char* line;
    const char* message;
  } kCases[] = {
      {"plgu 0 1920x1080p60", "unknown command 'plgu': expected plug, unplug, signal,"},
      {"plug 4 1920x1080p60", "invalid port '4': expected 0 to 3"},
      {"plug 0", "wrong number of arguments in 'plug 0': expected plug PORT TIMING"},
      {"plug 0 1920x1080", "invalid timing '1920x1080': expected WIDTHxHEIGHT, p or i,"},
      {"plug 0 8193x1080p60", "invalid timing"},
      {"plug 0 63x64p60", "invalid timing"},
      {"plug 0 64x63p60", "invalid timing"},
      {"plug 0 64x4321p60", "invalid timing"},
      {"plug 0 1920x1080p600", "invalid timing"},
      {"plug 0 1920x1080p60 HDR", "invalid argument 'HDR': expected TIMING [sdr|hdr|"},
      {"signal 0 maybe", "invalid argument 'maybe': expected on or off"},
      {"hdmitx 0 maybe", "invalid argument 'maybe': expected on or off"},
      {"timing 2 1920x1080p60", "no source at port '2'"},
      {"fail K2V_RHAL_VSC_Opn -3",
       "': expected a function of hal/include, "
       "such as K2V_RHAL_VSC_Open"},
      {"fail K2V_RHAL_VSC_Open minus", "invalid code 'minus'"},
      {"fail K2V_RHAL_VSC_Open 99999999999", "invalid code '99999999999'"},
      {"fail K2V_RHAL_VSC_Open 1 --at", "invalid option '--at'"},
      {"fail K2V_RHAL_VSC_Open 1 --times 0", "invalid number for --times '0': expected 1 to"},
      {"after 5 m unplug 0", "invalid unit 'm': expected s or polls"},
      {"after nan s unplug 0", "invalid number of seconds 'nan'"},
      {"after -1 s unplug 0", "invalid number of seconds '-1'"},
      {"after 5 s unplug", "wrong number of arguments in 'unplug'"},
      {"after 5 s", "wrong number of arguments in"},
      {"after 0 polls 0 unplug 0", "invalid number of polls '0'"},
      {"after 1 polls 9 unplug 0", "invalid port '9': expected 0 to 3"},
      {"after 1 polls 0", "unknown command ''"},
  };
  setenv("CVNSIM_SCENARIO", (board_ + "/scenario").c_str(), 1);
  for (const auto& [line, message] : kCases) {
    Write("scenario", std::string("# a comment\n\nplug 1 1920x1080p60 # another\n") + line + '\n');
    const Outcome outcome = Client("h-init");
    EXPECT_EQ(outcome.status, 2) << line;
    EXPECT_EQ(outcome.output.rfind("simulated board: " + board_ + "/scenario:4: ", 0), 0U)
        << outcome.output;
    EXPECT_NE(outcome.output.find(message), std::string::npos) << outcome.output;
    EXPECT_EQ(std::count(outcome.output.begin(), outcome.output.end(), '\n'), 1);
  }
  setenv("CVNSIM_SCENARIO_NAME", "given.txt", 1);
  EXPECT_EQ(Client("h-init").output.rfind("simulated board: given.txt:4: unknown command ''", 0),
            0U);
  Write("scenario", "plug 3 1920x1080p60\n");  // the rejected lines had no effect
  EXPECT_EQ(Client("h-init h-hpd h-open h-conn0 signal").output, "0\n0\n0\n0\n0x0\n");
}

TEST_F(Processes, RejectUnusableAndForeignFiles) {
  Write("run/state", "a letter to my aunt\n");
  EXPECT_EQ(Client("h-init").status, 2);
  EXPECT_NE(Client("h-init").output.find("state file of another version"), std::string::npos);
  EXPECT_EQ(Cvnsim("state").status, 1);
  fs::remove(board_ + "/run/state");
  setenv("CVNSIM_SCENARIO", board_.c_str(), 1);
  EXPECT_EQ(Client("").output, "simulated board: " + board_ + ": Is a directory\n");
  unsetenv("CVNSIM_SCENARIO");
  setenv("CVNSIM_TRACE", "/nowhere/trace", 1);
  EXPECT_EQ(Client("").output, "simulated board: /nowhere/trace: No such file or directory\n");
}

TEST_F(Processes, ShareTheRingsOfTheLink) {
  const std::string printed = board_ + "/printed";
  const auto text = [&] {
    std::ifstream file(printed);
    return std::string(std::istreambuf_iterator<char>(file), {});
  };
  FILE* running = popen((SIM_CLIENT " ring wait ring-used >" + printed).c_str(), "w");
  while (!text().ends_with('\n')) std::this_thread::yield();
  EXPECT_EQ(Client("fill 1 fill 2").output, "0\n-2\n") << "there is only one ring";
  EXPECT_EQ(pclose(running), 0);
  EXPECT_EQ(text(), "1\n30\n");
}

TEST_F(Processes, CvnsimChangesARunningBoard) {
  FILE* running = popen(SIM_CLIENT " wait", "w");
  const fs::path state = board_ + "/run/state";
  while (!fs::exists(state) || fs::file_size(state) == 0) std::this_thread::yield();
  EXPECT_EQ(Client(kHdmiOn).output, "0\n0\n0\n0\n");
  EXPECT_EQ(Cvnsim("lock 0 1").output, "");
  EXPECT_EQ(Cvnsim("timing 0 1920x1080i50").output, "");
  EXPECT_EQ(Client("signal").output, "0x0\n");
  EXPECT_EQ(Client("signal").output, "1920x1080\n");
  EXPECT_EQ(Cvnsim("fail K2V_RHAL_VSC_Initialize -3 --times 1").status, 0);
  EXPECT_EQ(Cvnsim("after 100 s unplug 0").status, 0);
  const std::string text = Cvnsim("state").output;
  EXPECT_NE(text.find("port 0: 1920x1080i50.00 hdr, format 20, connected\n"), std::string::npos)
      << text;
  EXPECT_NE(text.find("K2V_RHAL_VSC_Initialize returns -3, for 1 call\n"), std::string::npos);
  EXPECT_NE(text.find(" s: unplug 0\n"), std::string::npos);
  EXPECT_EQ(Client("s-init s-init").output, "-3\n0\n");
  EXPECT_EQ(Cvnsim("trace 2").output,
            "K2V_RHAL_VSC_Initialize() = -3\nK2V_RHAL_VSC_Initialize() = 0\n");
  EXPECT_EQ(Cvnsim("reset").status, 0);
  EXPECT_EQ(Client("h-init").output, "0\n");
  EXPECT_EQ(Cvnsim("state").output.find("unplug 0"), std::string::npos);
  EXPECT_EQ(pclose(running), 0);
}

TEST_F(Processes, CvnsimChangesTheEnvironmentOfTheBoard) {
  fs::remove_all(board_ + "/run");
  fs::create_directories(board_ + "/root/sim");
  fs::create_directories(board_ + "/root/dev/block");
  fs::create_directory_symlink("root/sim", board_ + "/run");
  Write("run/on", "android\n");
  const auto isThere = [&](const char* path) { return fs::exists(board_ + '/' + path); };
  Write("scenario", "stick out\ntftp down\n");
  setenv("CVNSIM_SCENARIO", (board_ + "/scenario").c_str(), 1);
  Client("");
  EXPECT_FALSE(isThere("root/dev/block/sda1"));
  EXPECT_TRUE(isThere("run/tftp-down"));
  EXPECT_EQ(Cvnsim("stick in").output, "");
  EXPECT_EQ(Cvnsim("network down").output, "");
  EXPECT_TRUE(isThere("root/dev/block/sda") && isThere("root/dev/block/sda1") &&
              isThere("run/network-down"));
  EXPECT_EQ(Cvnsim("reset").output, "");
  EXPECT_FALSE(isThere("root/dev/block/sda") || isThere("run/network-down"));
}

TEST_F(Processes, CvnsimReportsErrors) {
  const Outcome wrong = Cvnsim("unplgu 0");
  EXPECT_EQ(wrong.status, 2);
  EXPECT_EQ(wrong.output.rfind("cvnsim: unknown command 'unplgu': expected plug, unplug,", 0), 0U);
  const Outcome none = Cvnsim("unplug 0");
  EXPECT_EQ(none.status, 1);
  EXPECT_EQ(none.output.rfind("cvnsim: no running board found (missing " + board_, 0), 0U);
  EXPECT_FALSE(fs::exists(board_ + "/run/state")) << "a query must not start a board";
}

}  // namespace
