// lines.h: the lines of a trace, as text and as JSON. Times are milliseconds with three places,
// written out already.

#pragma once

#include "host/trace/places.h"
#include "host/trace/step.h"

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvanel {

/// A string of JSON, where a byte is the character of that number.
std::string json_quoted(std::string_view text);

/// One JSON object: the time and its members, each value written out already; an empty one is left
/// out.
std::string json_object(const std::string& time,
                        std::initializer_list<std::pair<std::string_view, std::string>> members);

/// The words of findings as a JSON list of strings.
std::string json_findings(const std::vector<Finding>& findings, Degree degree);

/// `# G D 10 10 250 20`: lead-in, letters and numbers as the module read them, and a text; `-` for
/// what no command asked for. Of text for the terminal that text.
std::string command_words(const Step& step);

/// `ok`, or what is to be said.
std::string verdict(const std::vector<Finding>& findings);

/// `MS SOURCE BYTES | COMMAND | ROLE | VERDICT`
std::string text_line(const std::string& time, const Step& step, const SourcePlace& place);

/// The same as a JSON object.
std::string json_line(const std::string& time, const Step& step, const SourcePlace& place);

}  // namespace orvanel
