#include "RunRecord.h"

#include <fcntl.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <ctime>
#include <utility>

#include "BuildIds.h"
#include "JsonLines.h"
#include "OutputFile.h"
#include "Text.h"

namespace runner {
namespace {

/// The time of day, such as "2026-11-22T02:40:00Z".
std::string Now() {
  const std::time_t now = std::time(nullptr);
  struct tm parts = {};
  gmtime_r(&now, &parts);
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts);
  return text;
}

std::string HostName() {
  utsname names = {};
  return uname(&names) == 0 ? CleanLine(names.nodename) : "";
}

std::string Member(const char* name, const std::string& text) {
  return std::string(", \"").append(name).append("\": ") + JsonText(text);
}

std::string LabelsJson(const std::vector<Label>& labels) {
  std::string json;
  for (const Label& label : labels)
    json += (json.empty() ? "" : ", ") + JsonText(label.name) + ": " + JsonText(label.value);
  return "{" + json + "}";
}

std::string TypedJson(const std::vector<Typed>& typed) {
  std::string json;
  for (const Typed& keys : typed)
    json += (json.empty() ? "[" : ", [") + std::to_string(keys.at) + ", " +
            std::to_string(keys.length) + "]";
  return "[" + json + "]";
}

/// A power cut may have left an incomplete line at the end of the file.
bool EndsInALine(int fd) {
  const off_t size = lseek(fd, 0, SEEK_END);
  char last = '\n';
  return size <= 0 || (pread(fd, &last, 1, size - 1) == 1 && last == '\n');
}

}  // namespace

RunRecord::RunRecord(const std::string& path, std::vector<TestEntry> tests,
                     std::vector<Label> labels, bool resumed)
    : tests_(std::move(tests)),
      labels_(std::move(labels)),
      resumed_(resumed),
      fd_(open(path.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0644)),
      good_(fd_ >= 0) {
  if (good_ && !EndsInALine(fd_)) Write("\n");
}

RunRecord::~RunRecord() {
  if (fd_ >= 0) close(fd_);
}

void RunRecord::RunStarted(std::size_t tests) {
  Write(std::string("{\"event\": \"run-start\", \"format\": 1") + Member("version", CVN_VERSION) +
        Member("build", BuildIds()) + Member("board", HostName()) + Member("at", Now()) +
        ", \"resumed\": " + (resumed_ ? "true" : "false") + ", \"labels\": " + LabelsJson(labels_) +
        ", \"tests\": " + (tests > 0 ? std::to_string(tests) : "null") + "}\n");
  for (const TestEntry& entry : tests_) {
    Write(std::string("{\"event\": \"test-listed\"") + Member("test", entry.id) +
          Member("module", entry.moduleClass) + Member("name", CleanLine(entry.test->getName())) +
          Member("description", CleanLine(entry.test->getDescription())) + "}\n");
  }
  Sync();
}

void RunRecord::TestStarted(const PlannedTest& test) {
  Write("{\"event\": \"test-start\", \"number\": " + std::to_string(test.number) +
        Member("test", test.id) + Member("at", Now()) + "}\n");
}

void RunRecord::TestFound(const std::string& json) {
  Write(json + "\n");
}

void RunRecord::TestEnded(const TestResult& result) {
  if (result.earlier) return;
  Write(TestEndLine(result, ", \"typed\": " + TypedJson(result.typed)));
  if (result.verdict != Verdict::kSkipped) Sync();
}

void RunRecord::RunEnded(const Totals& totals) {
  Write(RunEndLine(totals));
}

void RunRecord::RunExits(int status) {
  Write("{\"event\": \"run-exit\", \"status\": " + std::to_string(status) + Member("at", Now()) +
        "}\n");
  Sync();
}

void RunRecord::Write(const std::string& text) {
  good_ = good_ && WriteAll(fd_, text);
}

void RunRecord::Sync() {
  good_ = good_ && fdatasync(fd_) == 0;
}

}  // namespace runner
