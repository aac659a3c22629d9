// Converts texts from a test's console for files that other tools read.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace runner {

/// `text` made safe for any file: escape sequences are removed, control characters become blanks
/// (newlines stay, carriage returns are removed), invalid UTF-8 becomes U+FFFD.
std::string CleanText(std::string_view text);

/// As `CleanText`, on one line.
std::string CleanLine(std::string_view text);

/// `text` without leading and trailing blanks and newlines.
std::string_view Trimmed(std::string_view text);

/// The last line of clean text that is not blank, such as a prompt.
std::string LastLine(std::string_view cleanText);

/// The parts between the separators, at least one.
std::vector<std::string> Split(std::string_view text, char separator);

/// The parts joined by the separator.
std::string Joined(const std::vector<std::string>& parts, std::string_view separator);

/// Any bytes as printable text:
/// , \r, \t, \e, \\ and \xNN represent the others.
std::string Escaped(std::string_view bytes);

/// Reverses `Escaped`. Nothing if a backslash is followed by anything else.
std::optional<std::string> Unescaped(std::string_view text);

/// `text` as a glob (fnmatch) that matches only this text.
std::string GlobOf(std::string_view text);

/// True if the glob matches the whole text.
bool MatchesGlob(const std::string& glob, const std::string& text);

/// A clean text as the contents of an XML element or attribute.
std::string XmlText(std::string_view text);

/// A clean text as a JSON string, with its quotes. It is a YAML string too.
std::string JsonText(std::string_view text);

/// Clean texts as a list of JSON strings, which is valid YAML as well.
std::string JsonList(const std::vector<std::string>& texts);

/// Seconds with milliseconds, such as "1.250".
std::string SecondsText(double seconds);

}  // namespace runner
