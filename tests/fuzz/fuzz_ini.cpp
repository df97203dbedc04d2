// fuzz_ini.cpp: any text is a simulator.ini: what is read is in range, what is saved reads back as
// it was, and what isn't asked for stays as it is written.

#include "host/program/ini_file.h"
#include "host/program/settings.h"
#include "tests/fuzz/steps.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace orvanel {
namespace {

/// All settings as they stand.
std::vector<std::string> settings_now() {
    std::vector<std::string> lines;
    std::istringstream keys(setting_keys());
    for (std::string key; std::getline(keys >> std::ws, key, ',');)
        lines.push_back(setting_line(key).value());
    return lines;
}

void check_ranges() {
    check(port_setting.wanted >= 0 && port_setting.wanted <= max_com_ports);
    check(view_zoom >= 1 && view_zoom <= max_view_zoom);
    check(skin_model >= 0 && skin_model <= custom_model);
    check(lcd_type >= 0 && lcd_type <= 2);
    check(lcd_polarizer >= 0 && lcd_polarizer <= 1);
    check(lcd_backlight >= 0 && lcd_backlight <= 5);
}

/// The lines of `text` that aren't in `other`, each as often as it is missing there.
std::vector<std::string> lines_without(std::string_view text, std::string_view other) {
    const auto lines_of = [](std::string_view whole) {
        std::vector<std::string> lines;
        std::istringstream stream{std::string(whole)};
        for (std::string line; std::getline(stream, line);)
            lines.push_back(line);
        std::sort(lines.begin(), lines.end());
        return lines;
    };
    const auto all = lines_of(text);
    const auto taken = lines_of(other);
    std::vector<std::string> left;
    std::set_difference(all.begin(), all.end(), taken.begin(), taken.end(),
                        std::back_inserter(left));
    return left;
}

/// A save changes lines of settings, and takes the section of the large zoom out with its blanks.
bool may_go(std::string_view line) {
    line.remove_prefix(std::min(line.find_first_not_of(" \t\r"), line.size()));
    if (line.empty()) return true;
    return line.front() != ';' && line.front() != '#' && line.find_first_of("=[") != line.npos;
}

}  // namespace
}  // namespace orvanel

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvanel;
    const std::string text(data, data + size);
    take_settings(text, "/folder");
    check_ranges();
    const auto settings = settings_now();

    std::string saved = text;
    put_settings(saved);
    take_settings(saved, "/folder");
    check(settings_now() == settings);
    std::string again = saved;
    put_settings(again);
    check(again == saved);

    // The last line gets an end where something is added after it.
    for (const std::string& line : lines_without(text, saved))
        check(may_go(line) || text.ends_with(line));

    remove_ini_value(saved, "Ports", "COM1");
    check(!ini_value(saved, "Ports", "COM1").has_value());
    return 0;
}
