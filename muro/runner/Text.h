// Texts on their way from a test's console into files that other tools read.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace runner {

/// `text` fit for any file: escape sequences are gone, control characters are blanks (newlines
/// stay, carriage returns go), what is no UTF-8 is U+FFFD.
std::string CleanText(std::string_view text);

/// As `CleanText`, on one line.
std::string CleanLine(std::string_view text);

/// `text` without blanks and newlines at both ends.
std::string_view Trimmed(std::string_view text);

/// The last line of clean text that is not blank, such as a prompt.
std::string LastLine(std::string_view cleanText);

/// The parts between the separators, at least one.
std::vector<std::string> Split(std::string_view text, char separator);

/// The parts with the separator between them.
std::string Joined(const std::vector<std::string>& parts, std::string_view separator);

/// Any bytes as printable text: \n, \r, \t, \e, \\ and \xNN stand for the others.
std::string Escaped(std::string_view bytes);

/// Takes `Escaped` back. Nothing when a backslash is followed by anything else.
std::optional<std::string> Unescaped(std::string_view text);

/// `text` as a glob (fnmatch) that matches nothing else.
std::string GlobOf(std::string_view text);

/// True when the glob matches the whole text.
bool MatchesGlob(const std::string& glob, const std::string& text);

/// A clean text as the contents of an XML element or attribute.
std::string XmlText(std::string_view text);

/// A clean text as a JSON string, with its quotes. It is a YAML string too.
std::string JsonText(std::string_view text);

/// Clean texts as a list of JSON strings, and of YAML.
std::string JsonList(const std::vector<std::string>& texts);

/// Seconds with milliseconds, such as "1.250".
std::string SecondsText(double seconds);

}  // namespace runner
