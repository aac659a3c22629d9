// Everything that reads the console: menu choices, prompts, lines and keys. Standard input is
// unbuffered (main makes it so), so that nothing is read ahead.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace console {

/// What happens to the characters of a token after the limit.
enum class Overlong {
  kKeep,  // they become the next token
  kDrop,  // they are read and discarded
};

/// Prints a prompt as std::printf does. A recording of HAL calls has it with its answer.
[[gnu::format(printf, 1, 2)]] void Prompt(const char* format, ...);

/// Keeps the text of a prompt that was printed in another way, for a recording.
void NotePrompt(std::string_view text);

/// Reads one token: skips white space, takes at most `limit` characters up to the next white space
/// and the newline directly behind them. Returns nothing when the input ends before a token begins.
std::optional<std::string> ReadToken(std::size_t limit, Overlong overlong);

/// Reads the answer to a prompt, one token of any kind. At the end of input the handler of
/// `SetEndOfInputHandler` is called and the program exits with status 1.
std::string ReadAnswer();

/// Reads one whole line, without its newline; it may be empty. End of input as in `ReadAnswer`.
std::string ReadLine();

/// Reads one key without echo and without waiting for Enter. End of input as in `ReadAnswer`.
char ReadKey();

/// Reads the answer to a prompt for a number: a decimal 32-bit integer. Anything else is discarded
/// with a message and the read is repeated. End of input as in `ReadAnswer`.
int ReadNumber();

/// Prints `text` unchanged and reads a number (`ReadNumber`).
int AskNumber(const char* text);

/// Prints `text` in blue and reads a number (`ReadNumber`).
int AskNumberInBlue(const char* text);

/// How the console waits for the operator.
enum class Input {
  kLine,  // for a token or a line
  kKey,   // for one key
  kPoll,  // does not wait: checks whether a key was typed
};

/// Callbacks for when the console needs the operator. A null function is not called.
struct InputObserver {
  /// The console starts to wait and nothing was typed yet. All output so far is on the terminal.
  void (*waiting)(Input kind);
  /// The console read `text`: a token, a line without its newline, or a key.
  void (*taken)(Input kind, std::string_view text);
};

/// Sets the only observer; null removes it.
void SetInputObserver(const InputObserver* observer);

/// Sets the handler that is called at the end of input in a prompt, before the program exits: there
/// the frame counts and reports the running test. Null removes it.
void SetEndOfInputHandler(void (*handler)());

/// Calls that handler, for other exits of the program in the middle of a test.
void GiveUpTest();

}  // namespace console

/// Number of bytes waiting on standard input, 0 if it cannot be determined.
int _kbhit();

/// Reads one line into `dst` of `len` bytes, newline included. Whole lines typed before the call
/// are discarded. Returns 0; -1 at end of input, or with a message for a line longer than `len` -
/// 2.
int fgets_ex(char* dst, unsigned len);

/// Parses all of `s` as an integer of base 8, 10, 16 or 32 (any other base: by C prefix). Returns 0
/// and sets `*out`; -1, with `*out` unchanged, if a character is left over.
int _str_to_long(const char* s, long* out, unsigned base);

/// Waits for "y" (returns 1) or "n" (returns 0); asks again for anything else, end of input
/// included.
int _get_yes_no();

/// Prints the question `text` and returns `_get_yes_no()`.
int _get_yes_no_with_text(const char* text);

/// Reads one number of `base` (low byte, as in `_str_to_long`) from `min` to `max` into `*out`.
/// Returns 0; -1 with a message for an invalid answer. Waits until there is an answer.
int _get_number_with_range(int* out, int min, int max, unsigned base);

/// Prints `len` bytes as hexadecimal numbers and characters, 16 per row. `p` must be readable up to
/// the next multiple of 16. Returns the result of the last `puts`.
int dump_mem(const unsigned char* p, unsigned len);

/// 1 if a key waits on standard input, else 0. Does not wait and does not consume the key.
int kbhit();

/// Reads one key without echo and without waiting for Enter. Returns EOF at end of input.
int mygetch();
