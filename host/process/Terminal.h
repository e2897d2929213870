#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace quillohost {

// Standard output and standard error: all that this program writes there goes through here. Names
// and messages come from the service and from files; what could steer a terminal, or show a text as
// another one, is made visible. Any thread, unless said otherwise.

/// `json` as lines for PrintLines. It keeps what OneLine would replace, as JSON's escapes.
[[nodiscard]] std::vector<std::string> JsonLines(nlohmann::ordered_json const& json);

/// Splits a text at its line feeds, for PrintLines.
[[nodiscard]] std::vector<std::string> LinesOf(std::string_view text);

/// Writes `lines` to standard output, each as OneLine has it. A Failure when that does not take
/// them.
void PrintLines(std::vector<std::string> const& lines);

/// Writes `line`, as OneLine has it, to standard error.
void TellLine(std::string_view line);

/// Writes `line`, as OneLine has it, over the terminal's current line, which stays the current one.
/// For a standard error that is a terminal.
void ShowOverLine(std::string_view line);

/// Wipes the terminal's current line.
void WipeLine();

/// Has the library's traces written by TellLine from now on.
void TellTraces();

/// The same by PrintLines.
void PrintTraces();

}  // namespace quillohost
