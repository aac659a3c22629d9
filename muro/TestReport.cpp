#include "TestReport.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <string>

#include "Ansi.h"
#include "Util.h"

namespace {

constexpr char kResultText[][5] = {"PASS", "FAIL"};
constexpr char kUndefinedResultText[] = "----";

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

/// Opens the file unbuffered, so that a failed write is not repeated later.
File Open(const char* path, const char* mode) {
  File file(path == nullptr ? nullptr : std::fopen(path, mode), &std::fclose);
  if (file) std::setvbuf(file.get(), nullptr, _IONBF, 0);
  return file;
}

const char* ResultText(int result) {
  return result == 0 || result == 1 ? kResultText[result] : kUndefinedResultText;
}

/// Flushes everything to the operating system; false if any byte was not written.
bool Write(std::FILE* file, const std::string& text) {
  return std::fwrite(text.data(), 1, text.size(), file) == text.size();
}

/// Restores the footer after the disk was full: the existing lines stay as they are, and there is
/// room for the next one.
void PutFooterBack(std::FILE* file, long begin) {
  std::clearerr(file);
  if (std::fseek(file, begin, SEEK_SET) == 0 &&
      Write(file, report::FormatFooter(testCounters, '#')) &&
      ftruncate(fileno(file), begin + report::kFooterBytes) == 0) {
    return;
  }
  std::puts("The footer of the report is lost");
}

/// The report that only this process may write, as this process last left it.
struct OwnReport {
  dev_t device;
  ino_t file;
  off_t size;
  std::string footer;
};

std::optional<OwnReport> ownReport;

/// The last bytes of a file, as many as a footer has.
std::string LastFooter(std::FILE* file) {
  std::string footer(report::kFooterBytes, '\0');
  if (std::fseek(file, -report::kFooterBytes, SEEK_END) != 0) return "";
  footer.resize(std::fread(footer.data(), 1, footer.size(), file));
  return footer;
}

/// Records the present state of the file as the one that this process left.
void NoteOwn(std::FILE* file) {
  struct stat status = {};
  fstat(fileno(file), &status);
  ownReport = {status.st_dev, status.st_ino, status.st_size, LastFooter(file)};
}

/// True as well if the report is not reserved for this process.
bool IsAsLeft(std::FILE* file) {
  struct stat status = {};
  if (!ownReport) return true;
  return fstat(fileno(file), &status) == 0 && status.st_dev == ownReport->device &&
         status.st_ino == ownReport->file && status.st_size == ownReport->size &&
         LastFooter(file) == ownReport->footer;
}

/// True if the file has `text` at `begin` and nothing after it.
bool IsThere(std::FILE* file, long begin, const std::string& text) {
  std::string found(text.size() + 1, '\0');
  if (std::fseek(file, begin, SEEK_SET) != 0) return false;
  found.resize(std::fread(found.data(), 1, found.size(), file));
  return found == text;
}

std::string FormatHeader() {
  const std::string rule = std::string(report::kLineWidth, '#') + '\n';
  return rule + rule + report::Centred(" THAL1.1 Test Report ", '#') + '\n' + rule + rule;
}

}  // namespace

namespace report {

std::string Centred(const char* text, char fill) {
  char line[kLineWidth + 1] = {};
  std::memset(line, fill, kLineWidth);
  return Util::FormatString(text, line);
}

std::string FormatTestLine(const TestLine& line) {
  char text[385];
  std::snprintf(text, sizeof text, "# TestCase: %-25s %03ld.%-25s(%-30s) %10s%8s", line.menu,
                static_cast<long>(line.id), line.name, line.description, ResultText(line.result),
                "#");
  return text;
}

std::string FormatTotals(const TestCounters& counters) {
  char text[kLineWidth + 1];
  std::snprintf(text, sizeof text, "-%37s%-25ld%10s%-25ld%-10s%-25ld%3s",
                "Total TestCase : ", static_cast<long>(counters.total),
                "PASS : ", static_cast<long>(counters.pass),
                "FAIL :  ", static_cast<long>(counters.fail), "-");
  return text;
}

std::string FormatFooter(const TestCounters& counters, char separator) {
  const std::string rule = std::string(kLineWidth, '-') + '\n';
  return std::string(kLineWidth, separator) + '\n' + rule + Centred(" @TOTAL@ ", '-') + '\n' +
         rule + FormatTotals(counters) + '\n' + rule;
}

bool AppendTestLine(const TestLine& line) {
  const char* path = Util::GetTestReportPath();
  const File file = Open(path, "r+");
  if (!file) {
    std::puts("Test Report file open fail!!!(you can ignore this)");
    return false;
  }
  if (!IsAsLeft(file.get())) {
    std::puts("Test Report file was changed by somebody else");
    return false;
  }
  std::string text = FormatTestLine(line) + '\n';
  const bool positioned = std::fseek(file.get(), -kFooterBytes, SEEK_END) == 0;
  // A file shorter than a footer was truncated by somebody else: it gets a complete footer again,
  // which the next line overwrites.
  if (!positioned) text.clear();
  const long begin = std::ftell(file.get());
  text += FormatFooter(testCounters, '#');
  bool written = Write(file.get(), text);
  if (!positioned || !written) std::puts("write fail!");
  if (positioned && !written) PutFooterBack(file.get(), begin);
  if (ownReport && written) {
    written = IsThere(file.get(), begin, text);
    NoteOwn(file.get());
  }
  std::printf("%sTest Report file generated at %s\n", ansi::kPass, path);
  return positioned && written;
}

bool StartOwn() {
  constexpr int kMostSeconds = 60;
  for (int second = 0; second < kMostSeconds; ++second) {
    const char* path = Util::GetTestReportPath();
    const int fd = path == nullptr ? -1 : open(path, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (fd >= 0) {
      close(fd);
      break;
    }
    if (path == nullptr || errno != EEXIST) return false;
    Util::UseNextTestReportPath();
  }
  if (!printReport()) return false;
  const File file = Open(Util::GetTestReportPath(), "r");
  if (file) NoteOwn(file.get());
  return file != nullptr;
}

}  // namespace report

bool printReport() {
  const File file = Open(Util::GetTestReportPath(), "w+");
  if (!file) {
    std::puts("write fail!");
    return false;
  }
  std::printf("length%zu\n", report::FormatTotals(testCounters).size());
  const bool written = Write(file.get(), FormatHeader() + report::FormatFooter(testCounters, '-'));
  if (!written) std::puts("write fail!");
  return written;
}
