#include "host/scenario/junit.h"

#include "base/quoting.h"
#include "base/utf8.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <string_view>

namespace orvanel {

namespace {

/// Bytes of the UTF-8 character at the start of `text` that XML may hold; 0 if there is none.
std::size_t character_length(std::string_view text) {
    const auto [code, length] = utf8_character(text);
    const bool none =
        (code < 0x20 && code != '\n' && code != '\t') || code == 0xFFFE || code == 0xFFFF;
    return none ? 0 : length;
}

std::string escaped(std::string_view text) {
    std::string xml;
    while (!text.empty()) {
        const std::size_t n = character_length(text);
        switch (text.front()) {
        case '&':
            xml += "&amp;";
            break;
        case '<':
            xml += "&lt;";
            break;
        case '>':
            xml += "&gt;";
            break;
        case '"':
            xml += "&quot;";
            break;
        default:
            if (n > 0) {
                xml += text.substr(0, n);
                break;
            }
            xml += byte_escape(text.front());
        }
        text.remove_prefix(std::max<std::size_t>(n, 1));
    }
    return xml;
}

std::string seconds_text(double seconds) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.3f", seconds);
    return text.data();
}

bool is_failure(const Fault& fault) { return fault.status == expectation_failed; }
bool is_error(const Fault& fault) { return !is_failure(fault); }

std::string fault_xml(const std::string& name, const Fault& fault) {
    const std::string element = is_failure(fault) ? "failure" : "error";
    const std::string first_line = fault.text.substr(0, fault.text.find('\n'));
    return "      <" + element + " message=\"" + escaped(first_line) + "\" type=\"" +
           (fault.status == gave_up ? "settle"
            : is_failure(fault)     ? "expectation"
                                    : "scenario") +
           "\">" + escaped(fault_message(name, fault)) + "</" + element + ">\n";
}

/// As escaped, on one line: a reader would make a blank of a raw line end in an attribute.
std::string attribute(std::string_view text) {
    std::string xml = escaped(text);
    for (std::size_t at = 0; (at = xml.find('\n', at)) != std::string::npos;)
        xml.replace(at, 1, "&#10;");
    return xml;
}

std::string case_xml(const CaseResult& result) {
    std::string xml = "    <testcase classname=\"scenario\" name=\"" + attribute(result.name) +
                      "\" time=\"" + seconds_text(result.seconds) + "\"";
    if (result.faults.empty()) return xml + "/>\n";
    xml += ">\n";
    for (const Fault& fault : result.faults)
        xml += fault_xml(result.name, fault);
    return xml + "    </testcase>\n";
}

std::string counts(std::span<const CaseResult> results) {
    double seconds = 0;
    int failures = 0;  // cases; one with a failure and an error counts as an error
    int errors = 0;
    for (const CaseResult& result : results) {
        seconds += result.seconds;
        if (std::any_of(result.faults.begin(), result.faults.end(), is_error))
            ++errors;
        else if (!result.faults.empty())
            ++failures;
    }
    return " tests=\"" + std::to_string(results.size()) + "\" failures=\"" +
           std::to_string(failures) + "\" errors=\"" + std::to_string(errors) + "\" time=\"" +
           seconds_text(seconds) + "\"";
}

}  // namespace

std::string junit_xml(std::span<const CaseResult> results) {
    const std::string totals = counts(results);
    std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites" + totals +
                      ">\n  <testsuite name=\"orvanel42-headless\"" + totals + ">\n";
    for (const CaseResult& result : results)
        xml += case_xml(result);
    return xml + "  </testsuite>\n</testsuites>\n";
}

}  // namespace orvanel
