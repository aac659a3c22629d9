#include "Text.h"

#include <fnmatch.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>

namespace runner {
namespace {

constexpr char kEscape = '\033';
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

bool IsFinal(char c) {
  return c >= 0x40 && c <= 0x7E;
}

/// Length of the escape sequence at the beginning of `text`: CSI up to its final byte, OSC and
/// other strings up to BEL or ST, else two bytes.
std::size_t EscapeLength(std::string_view text) {
  if (text.size() < 2) return text.size();
  if (text[1] == '[') {
    const auto* end = std::find_if(text.begin() + 2, text.end(), IsFinal);
    return std::min(text.size(), static_cast<std::size_t>(end - text.begin()) + 1);
  }
  if (std::string_view("]P_^X").find(text[1]) == std::string_view::npos) return 2;
  for (std::size_t i = 2; i < text.size(); ++i) {
    if (text[i] == '\a') return i + 1;
    if (text[i] == kEscape) return std::min(text.size(), i + 2);
  }
  return text.size();
}

struct Character {
  std::size_t length;  // bytes
  bool valid;
};

/// The UTF-8 character at the beginning of `text`. Invalid: overlong, surrogate, too large, C1
/// control or not allowed in XML.
Character FirstCharacter(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned lead = byte(0);
  if (lead < 0x80) return {1, true};
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4) return {1, false};
  uint32_t code = lead & (0x7FU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if (i >= text.size() || (byte(i) & 0xC0) != 0x80) return {i, false};
    code = code << 6 | (byte(i) & 0x3FU);
  }
  constexpr std::array<uint32_t, 5> kSmallest = {0, 0, 0xA0, 0x800, 0x10000};
  const bool allowed = code >= kSmallest[length] && code <= 0x10FFFF &&
                       (code < 0xD800 || code > 0xDFFF) && code != 0xFFFE && code != 0xFFFF;
  return {length, allowed};
}

std::string Replaced(std::string_view text, std::string (*replace)(char)) {
  std::string out;
  out.reserve(text.size());
  for (const char c : text) out += replace(c);
  return out;
}

std::string HexEscape(char c) {
  char text[8];
  std::snprintf(text, sizeof text, "\\x%02x", static_cast<unsigned char>(c));
  return text;
}

struct ShortEscape {
  char letter;
  char meaning;
};
constexpr ShortEscape kShortEscapes[] = {
    {'n', '\n'}, {'r', '\r'}, {'t', '\t'}, {'e', kEscape}, {'\\', '\\'}};

std::string EscapedCharacter(char c) {
  for (const ShortEscape& escape : kShortEscapes) {
    if (escape.meaning == c) return {'\\', escape.letter};
  }
  return static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? HexEscape(c) : std::string(1, c);
}

/// Decodes the escape after a backslash at the beginning of `text` and removes it. Nothing for an
/// unknown one.
std::optional<char> TakeEscape(std::string_view& text) {
  if (text.empty()) return std::nullopt;
  for (const ShortEscape& escape : kShortEscapes) {
    if (escape.letter != text[0]) continue;
    text.remove_prefix(1);
    return escape.meaning;
  }
  constexpr std::string_view kHex = "0123456789abcdef";
  if (text[0] != 'x' || text.size() < 3) return std::nullopt;
  const auto high = kHex.find(text[1]);
  const auto low = kHex.find(text[2]);
  if (high == std::string_view::npos || low == std::string_view::npos) return std::nullopt;
  text.remove_prefix(3);
  return static_cast<char>(high * 16 + low);
}

std::string XmlCharacter(char c) {
  switch (c) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    default:
      return std::string(1, c);
  }
}

std::string JsonCharacter(char c) {
  if (c == '\n') return "\\n";
  return c == '"' || c == '\\' ? std::string{'\\', c} : std::string(1, c);
}

}  // namespace

std::string CleanText(std::string_view text) {
  std::string clean;
  clean.reserve(text.size());
  while (!text.empty()) {
    const char c = text[0];
    std::size_t length = 1;
    if (c == kEscape) {
      length = EscapeLength(text);
    } else if (c == '\n') {
      clean += c;
    } else if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
      if (c != '\r') clean += ' ';
    } else {
      const Character character = FirstCharacter(text);
      length = character.length;
      clean += character.valid ? text.substr(0, length) : kReplacement;
    }
    text.remove_prefix(length);
  }
  return clean;
}

std::string CleanLine(std::string_view text) {
  std::string line = CleanText(text);
  std::replace(line.begin(), line.end(), '\n', ' ');
  return line;
}

std::string_view Trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(" \n");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \n") - first + 1);
}

std::string LastLine(std::string_view cleanText) {
  const std::string_view text = Trimmed(cleanText);
  return std::string(Trimmed(text.substr(text.rfind('\n') + 1)));
}

std::vector<std::string> Split(std::string_view text, char separator) {
  std::vector<std::string> parts;
  for (auto at = text.find(separator); at != std::string_view::npos; at = text.find(separator)) {
    parts.emplace_back(text.substr(0, at));
    text.remove_prefix(at + 1);
  }
  parts.emplace_back(text);
  return parts;
}

std::string Joined(const std::vector<std::string>& parts, std::string_view separator) {
  std::string text;
  for (const std::string& part : parts) {
    if (&part != parts.data()) text += separator;
    text += part;
  }
  return text;
}

std::string Escaped(std::string_view bytes) {
  return Replaced(bytes, EscapedCharacter);
}

std::optional<std::string> Unescaped(std::string_view text) {
  std::string bytes;
  while (!text.empty()) {
    const char c = text[0];
    text.remove_prefix(1);
    const std::optional<char> meaning = c == '\\' ? TakeEscape(text) : c;
    if (!meaning) return std::nullopt;
    bytes += *meaning;
  }
  return bytes;
}

std::string GlobOf(std::string_view text) {
  return Replaced(text, [](char c) {
    return std::string_view("*?[]\\").find(c) == std::string_view::npos ? std::string(1, c)
                                                                        : std::string{'\\', c};
  });
}

bool MatchesGlob(const std::string& glob, const std::string& text) {
  return fnmatch(glob.c_str(), text.c_str(), 0) == 0;
}

std::string XmlText(std::string_view text) {
  return Replaced(text, XmlCharacter);
}

std::string JsonText(std::string_view text) {
  return '"' + Replaced(text, JsonCharacter) + '"';
}

std::string JsonList(const std::vector<std::string>& texts) {
  std::string list;
  for (const std::string& text : texts)
    list.append(list.empty() ? "" : ", ").append(JsonText(text));
  return std::string("[").append(list).append("]");
}

std::string SecondsText(double seconds) {
  char text[32];
  std::snprintf(text, sizeof text, "%.3f", seconds);
  return text;
}

}  // namespace runner
