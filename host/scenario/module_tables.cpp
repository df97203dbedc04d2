#include "host/scenario/module_tables.h"

#include "firmware/touch/areas.h"
#include "firmware/touch/bars.h"
#include "firmware/touch/menu.h"
#include "firmware/touch/menu_definitions.h"
#include "host/scenario/module_text.h"
#include "host/scenario/report.h"
#include "host/scenario/targets.h"
#include "host/scenario/world.h"

#include <algorithm>
#include <span>
#include <string>
#include <vector>

namespace orvanel {

namespace {

std::string corners(const DrawArea& r) {
    return ' ' + std::to_string(r.x1) + ' ' + std::to_string(r.y1) + ' ' + std::to_string(r.x2) +
           ' ' + std::to_string(r.y2);
}

std::string state_of(const TouchArea& area) {
    const bool bit = (area.state & 1) != 0;
    switch (area.type) {
    case AreaType::key:
        return bit ? " down" : " up";
    case AreaType::toggle:
        return (bit ? " on" : " off") +
               (area.group == 0 ? "" : " group " + std::to_string(area.group));
    case AreaType::bar:
        return " bar " + std::to_string(area.state + 1);
    case AreaType::draw:
        return " pen " + std::to_string(area.state);
    case AreaType::opener:
        return area.state != no_menu_slot && area.state == open_menu_slot ? " open" : " closed";
    case AreaType::none:
    case AreaType::list:
    case AreaType::report:
        break;
    }
    return "";
}

std::string area_line(int index, const Label& label) {
    const TouchArea& area = touch_area(index);
    return "area " + std::to_string(index + 1) + ' ' + word_of(area.type) +
           corners(rectangle_of(area)) + ' ' + std::to_string(area.down_code) + ' ' +
           std::to_string(area.up_code) + ' ' + module_text(label) + state_of(area);
}

std::string bar_line(int slot) {
    const BarGraph& bar = bar_in_slot(slot);
    const char* const direction = bar.dir == 'L'   ? " left"
                                  : bar.dir == 'R' ? " right"
                                  : bar.dir == 'O' ? " up"
                                                   : " down";
    return "bar " + std::to_string(slot + 1) + (bar.kind > 1 ? " pointer" : " bar") + direction +
           corners({bar.x1, bar.y1, bar.x2, bar.y2}) + ' ' + std::to_string(bar.low) + ' ' +
           std::to_string(bar.low + bar.steps - 1) + ' ' + std::to_string(bar.low + bar.value);
}

void print_table(const std::string& name, const std::vector<std::string>& lines) {
    print_line(name + ' ' + std::to_string(lines.size()));
    for (const std::string& line : lines)
        print_line(line);
}

}  // namespace

void print_areas(const Arguments& /*a*/) {
    const ModuleHalt halt;
    std::vector<std::string> lines;
    const std::vector<Label> labels = area_labels();
    for (int i = 0; i < area_count; ++i)
        lines.push_back(area_line(i, labels[static_cast<std::size_t>(i)]));
    print_table("areas", lines);
}

void print_bars(const Arguments& /*a*/) {
    const ModuleHalt halt;
    std::vector<std::string> lines;
    for (int slot = 0; slot < static_cast<int>(bar_slots.size()); ++slot)
        if (bar_in_slot(slot).dir != 0) lines.push_back(bar_line(slot));
    print_table("bars", lines);
}

void print_menu_rows(const Arguments& /*a*/) {
    const ModuleHalt halt;
    const bool is_list = open_menu_slot != no_menu_slot && open_menu_slot < menu_defs.size();
    const int base = is_list ? menu_defs[open_menu_slot].list_code : 0;
    const auto texts = std::span(menu_text.text).first(menu_text.length);
    std::vector<std::string> lines;
    auto start = texts.begin();
    for (int n = 1; n <= menu_items; ++n) {
        const auto end = std::find(start, texts.end(), std::uint8_t{'\n'});
        const int code = base == 0 ? 0 : (base + n - 1) & 0xFF;
        lines.push_back("row " + std::to_string(n) + (is_list ? " list" : " box") +
                        corners(menu_row_rectangle(n)) + ' ' + std::to_string(code) + ' ' +
                        module_text({start, end}) + (n == menu_selection ? " selected" : ""));
        start = end == texts.end() ? end : end + 1;
    }
    print_table("menu-rows", lines);
}

}  // namespace orvanel
