#include "ConsoleInput.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <charconv>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "Ansi.h"
#include "CallMarks.h"
#include "TerminalMode.h"

namespace {

using console::Input;

constexpr std::size_t kLongestAnswer = 4095;  // limit of a terminal line
constexpr useconds_t kClosedInputPauseUs = 100'000;

void (*endOfInputHandler)() = nullptr;
const console::InputObserver* observer = nullptr;
std::string notedPrompt;  // whose answer was not asked for yet
bool putBack = false;     // a character was given back to stdin and is there without waiting

bool IsSpace(int c) {
  return c != EOF && std::isspace(c) != 0;
}

void MarkPrompt(Input kind) {
  callmarks::Prompt(kind == Input::kKey ? "key" : "line", notedPrompt);
  notedPrompt.clear();
}

/// `text` without colours and without the white space around it.
std::string Plain(std::string_view text) {
  std::string plain;
  while (!text.empty()) {
    const std::size_t colour = text.starts_with("\033[") ? text.find('m') : text.npos;
    if (colour == text.npos) plain.push_back(text.front());
    text.remove_prefix(colour == text.npos ? 1 : colour + 1);
  }
  while (!plain.empty() && IsSpace(plain.back())) plain.pop_back();
  return plain.substr(std::min(plain.find_first_not_of(" \t\n"), plain.size()));
}

void TellWaiting(Input kind) {
  int typed = 0;
  const bool isObserved = observer != nullptr && observer->waiting != nullptr;
  if (putBack) return;
  const bool isWaiting = ioctl(0, FIONREAD, &typed) != 0 || typed <= 0;
  if (kind != Input::kPoll && (isWaiting || !notedPrompt.empty())) MarkPrompt(kind);
  if (!isWaiting || !isObserved) return;
  std::fflush(stdout);
  observer->waiting(kind);
}

void TellTaken(Input kind, std::string_view text) {
  callmarks::Answer(text);
  if (observer != nullptr && observer->taken != nullptr) observer->taken(kind, text);
}

/// True if the last read was ended by a signal and not by the end of input, so that it has to be
/// repeated.
bool WasInterrupted() {
  if (std::ferror(stdin) == 0 || errno != EINTR) return false;
  std::clearerr(stdin);
  return true;
}

int NextCharacter(Input kind) {
  TellWaiting(kind);
  putBack = false;
  int c = std::getchar();
  while (c == EOF && WasInterrupted()) c = std::getchar();
  return c;
}

void PutBack(int c) {
  std::ungetc(c, stdin);
  putBack = true;
}

void UnlessNewline(int c) {
  if (c != '\n' && c != EOF) PutBack(c);
}

[[noreturn]] void EndOfInput() {
  console::GiveUpTest();
  std::printf("\nEnd of input\n");
  std::exit(1);
}

std::optional<int> ParseNumber(const std::string& token) {
  const char* first = token.c_str();
  const char* last = first + token.size();
  if (*first == '+' && std::isdigit(static_cast<unsigned char>(first[1])) != 0) ++first;
  int value = 0;
  const auto [end, error] = std::from_chars(first, last, value);
  if (error != std::errc() || end != last) return std::nullopt;
  return value;
}

/// First token of one line typed after the call, at most 19 characters. Empty if the line was
/// empty, too long or missing.
std::optional<std::string> ReadLineToken() {
  char line[20] = {};
  if (fgets_ex(line, sizeof line) != 0) {
    if (std::feof(stdin) != 0 || std::ferror(stdin) != 0) {
      // A terminal can continue after Ctrl-D; a closed pipe must not keep a core busy.
      std::clearerr(stdin);
      usleep(kClosedInputPauseUs);
    }
    return std::nullopt;
  }
  char token[sizeof line] = {};
  if (std::sscanf(line, "%19s", token) != 1) return std::nullopt;
  return token;
}

void PrintDumpRow(const unsigned char* p, unsigned len, unsigned row) {
  std::printf("%08x  ", row);
  for (unsigned at = row; at < row + 16; ++at) {
    if (at < len) {
      std::printf("%02x ", p[at]);
    } else {
      std::printf("-- ");
    }
    if ((at & 7) == 7) std::printf("  ");
  }
  std::putchar(' ');
  for (unsigned at = row; at < row + 16; ++at) {
    std::putchar(p[at] >= 0x20 && p[at] <= 0x7E ? p[at] : '.');
  }
  std::putchar('\n');
}

}  // namespace

namespace console {

void NotePrompt(std::string_view text) {
  if (callmarks::AreKept()) notedPrompt = Plain(text);
}

void Prompt(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  va_list again;
  va_copy(again, arguments);
  char text[1024];
  std::vsnprintf(text, sizeof text, format, again);
  NotePrompt(text);
  std::vprintf(format, arguments);
  va_end(again);
  va_end(arguments);
}

std::optional<std::string> ReadToken(std::size_t limit, Overlong overlong) {
  std::fflush(stdout);
  int c = NextCharacter(Input::kLine);
  while (IsSpace(c)) c = NextCharacter(Input::kLine);
  if (c == EOF) {
    std::clearerr(stdin);
    return std::nullopt;
  }
  std::string token;
  for (; c != EOF && !IsSpace(c); c = NextCharacter(Input::kLine)) {
    if (token.size() < limit) {
      token.push_back(static_cast<char>(c));
    } else if (overlong == Overlong::kKeep) {
      break;
    }
  }
  UnlessNewline(c);
  TellTaken(Input::kLine, token);
  return token;
}

std::string ReadAnswer() {
  std::optional<std::string> token = ReadToken(kLongestAnswer, Overlong::kDrop);
  if (!token) EndOfInput();
  return *std::move(token);
}

std::string ReadLine() {
  std::fflush(stdout);
  std::string line;
  int c = NextCharacter(Input::kLine);
  if (c == EOF) EndOfInput();
  for (; c != EOF && c != '\n'; c = NextCharacter(Input::kLine)) {
    if (line.size() < kLongestAnswer) line.push_back(static_cast<char>(c));
  }
  TellTaken(Input::kLine, line);
  return line;
}

char ReadKey() {
  const int key = mygetch();
  if (key == EOF) EndOfInput();
  return static_cast<char>(key);
}

int ReadNumber() {
  for (;;) {
    const std::string token = ReadAnswer();
    if (const std::optional<int> value = ParseNumber(token)) return *value;
    std::printf("\nUnknown Input > %s\n", token.c_str());
  }
}

int AskNumber(const char* text) {
  Prompt("%s", text);
  return ReadNumber();
}

int AskNumberInBlue(const char* text) {
  Prompt("%s%s%s", ansi::kBlue, text, ansi::kReset);
  return ReadNumber();
}

void SetInputObserver(const InputObserver* newObserver) {
  observer = newObserver;
}

void SetEndOfInputHandler(void (*handler)()) {
  endOfInputHandler = handler;
}

void GiveUpTest() {
  if (endOfInputHandler != nullptr) endOfInputHandler();
}

}  // namespace console

int _kbhit() {
  const TerminalMode raw(ICANON);
  std::setbuf(stdin, nullptr);
  int waiting = 0;
  if (ioctl(0, FIONREAD, &waiting) != 0) waiting = 0;
  return waiting;
}

int fgets_ex(char* dst, unsigned len) {
  std::fflush(stdout);
  std::size_t typedAhead = static_cast<std::size_t>(std::max(_kbhit(), 0));
  char line[256];
  std::size_t length = 0;
  for (;;) {
    std::memset(line, 0, sizeof line);
    TellWaiting(Input::kLine);
    putBack = false;
    while (std::fgets(line, sizeof line, stdin) == nullptr) {
      if (!WasInterrupted()) return -1;
    }
    length = std::strlen(line);
    if (typedAhead < length) break;
    typedAhead -= length;
  }
  if (length - typedAhead >= len - 1) {
    std::printf("string length more than input buffer %d\n", static_cast<int>(len));
    return -1;
  }
  std::strncpy(dst, line + typedAhead, len);
  TellTaken(Input::kLine, {dst, std::strcspn(dst, "\n")});
  return 0;
}

int _str_to_long(const char* s, long* out, unsigned base) {
  const bool known = base == 8 || base == 10 || base == 16 || base == 32;
  char* end = nullptr;
  const long value = std::strtol(s, &end, known ? static_cast<int>(base) : 0);
  if (*end != '\0') return -1;
  *out = value;
  return 0;
}

int _get_yes_no() {
  for (;;) {
    std::fflush(stdin);
    usleep(10);
    const std::optional<std::string> token = ReadLineToken();
    if (!token) continue;
    if (*token == "y") return 1;
    if (*token == "n") return 0;
    std::printf("\nUnknown Input > %s\n", token->c_str());
  }
}

int _get_yes_no_with_text(const char* text) {
  console::Prompt("\n%s <y/n> ", text);
  return _get_yes_no();
}

int _get_number_with_range(int* out, int min, int max, unsigned base) {
  std::optional<std::string> token;
  while (!token) token = ReadLineToken();
  long value = 0;
  errno = 0;
  if (_str_to_long(token->c_str(), &value, base & 0xFF) != 0) {
    std::printf("\nUnknown Input > %s", token->c_str());
    return -1;
  }
  // Where a long has 32 bits, a number that is too large reads as the largest one.
  if (errno == ERANGE || value < min || value > max) {
    std::printf("\n invalid inout > %s", token->c_str());
    return -1;
  }
  *out = static_cast<int>(value);
  return 0;
}

int dump_mem(const unsigned char* p, unsigned len) {
  static constexpr char kRule[] = "------------------------------------------------------------";
  std::puts(kRule);
  std::puts("ADDRESS   00 01 02 03 04 05 06 07   08 09 0A 0B 0C 0D 0E 0F ");
  std::puts(kRule);
  for (unsigned row = 0; row < len; row += 16) PrintDumpRow(p, len, row);
  return std::puts(kRule);
}

int kbhit() {
  std::fflush(stdout);
  const TerminalMode raw(ICANON | ECHO, O_NONBLOCK);
  TellWaiting(Input::kPoll);
  const int key = std::getchar();
  putBack = false;
  if (key == EOF) {
    std::clearerr(stdin);
    return 0;
  }
  PutBack(key);
  return 1;
}

int mygetch() {
  std::fflush(stdout);
  const TerminalMode raw(ICANON | ECHO);
  const int key = NextCharacter(Input::kKey);
  const char typed = static_cast<char>(key);
  if (key != EOF) TellTaken(Input::kKey, {&typed, 1});
  return key;
}
