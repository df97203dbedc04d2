#include "host/scenario/targets.h"

#include "base/quoting.h"
#include "base/words.h"
#include "firmware/touch/bars.h"
#include "firmware/touch/menu.h"
#include "firmware/touch/menu_definitions.h"
#include "firmware/touch/tracking.h"
#include "host/reading/read.h"
#include "host/scenario/glass.h"
#include "host/scenario/module_text.h"
#include "host/trace/places.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <cstdlib>
#include <limits>
#include <span>
#include <tuple>
#include <utility>

namespace orvanel {

namespace {

using RowOfDots = std::bitset<screen_width>;
using DotSet = std::array<RowOfDots, screen_height>;

/// The dots strictly inside a rectangle: a finger on an edge touches nothing.
DotSet inside_of(const TouchArea& area) {
    DotSet dots{};
    for (int y = area.y1 + 1; y < area.y2; ++y)
        for (int x = area.x1 + 1; x < area.x2; ++x)
            dots[static_cast<std::size_t>(y)].set(static_cast<std::size_t>(x));
    return dots;
}

/// Where a finger finds the area in row `index`, and not one that stands after it in the table.
DotSet touchable_part(int index) {
    DotSet dots = inside_of(touch_area(index));
    for (int i = index + 1; i < area_count; ++i) {
        const DotSet cover = inside_of(touch_area(i));
        for (std::size_t y = 0; y < dots.size(); ++y)
            dots[y] &= ~cover[y];
    }
    return dots;
}

bool is_empty(const DotSet& dots) {
    return std::ranges::all_of(dots, [](const RowOfDots& row) { return row.none(); });
}

/// Without the dots at its edge.
DotSet eroded(const DotSet& dots) {
    DotSet inner{};
    const auto kept = [](const RowOfDots& row) { return row & row << 1 & row >> 1; };
    for (std::size_t y = 1; y + 1 < dots.size(); ++y)
        inner[y] = kept(dots[y - 1]) & kept(dots[y]) & kept(dots[y + 1]);
    return inner;
}

/// The dot that lies deepest in the set, and among these nearest to the middle of the rectangle.
/// The set isn't empty.
Dot middle_of(DotSet dots, const DrawArea& rectangle) {
    for (DotSet inner = eroded(dots); !is_empty(inner); inner = eroded(inner))
        dots = inner;
    const int mx = (rectangle.x1 + rectangle.x2) / 2, my = (rectangle.y1 + rectangle.y2) / 2;
    Dot best{};
    int nearest = std::numeric_limits<int>::max();
    for (int y = 0; y < screen_height; ++y)
        for (int x = 0; x < screen_width; ++x) {
            if (!dots[static_cast<std::size_t>(y)].test(static_cast<std::size_t>(x))) continue;
            const int distance = std::abs(x - mx) + std::abs(y - my);
            if (distance < nearest) nearest = distance, best = {x, y};
        }
    return best;
}

std::string in_single_quotes(std::span<const std::uint8_t> codes) {
    std::string text = module_text(codes);
    text.front() = text.back() = '\'';
    return text;
}

bool is_tapped_by_name(const TouchArea& area) {
    return area.type != AreaType::none && area.type != AreaType::list && area.type != AreaType::bar;
}

Label text_inside(const DrawArea& r, std::span<const ReadText> texts) {
    Label label;
    for (const ReadText& text : texts) {
        const DrawArea& a = text.place.area;
        if (a.x1 < r.x1 || a.x2 > r.x2 || a.y1 < r.y1 || a.y2 > r.y2) continue;
        if (!label.empty()) label.push_back(' ');
        label.insert(label.end(), text.codes.begin(), text.codes.end());
    }
    return label;
}

/// What the kit of the image calls the area's picture; empty if it has no name there, or the area
/// no picture of the image.
std::string_view picture_name(const TouchArea& area) {
    if (area.label.picture == 0) return {};
    return kit_name_of(Kind::picture, area.label.picture - 1);
}

/// `'Start' (65)`, or what else tells an area from others.
std::string name_of(const TouchArea& area, const Label& label) {
    std::string name = in_single_quotes(label);
    if (label.empty() && !picture_name(area).empty()) {
        name = "picture " + in_quotes(picture_name(area));
    } else if (label.empty()) {
        const bool has_word = area.type == AreaType::draw || area.type == AreaType::report;
        name = "a " + word_of(area.type) + (has_word ? " area at " : " at ") +
               std::to_string((area.x1 + area.x2) / 2) + " " +
               std::to_string((area.y1 + area.y2) / 2);
    }
    const int code = area.down_code != 0 ? area.down_code : area.up_code;
    if (code != 0) name += " (" + std::to_string(code) + ")";
    return name;
}

std::string listed(std::span<const std::string> names) {
    std::string text;
    for (const std::string& name : names)
        text += (text.empty() ? "" : ", ") + name;
    return text;
}

/// ` there are ...` of what there is, or that there is nothing.
std::string there_are(std::span<const std::string> names, const char* nothing) {
    if (names.empty()) return nothing;
    return (names.size() == 1 ? "there is " : "there are ") + listed(names);
}

std::string wish_of(const Target& target) {
    return target.by == By::label ? in_single_quotes(target.label)
                                  : "with code " + std::to_string(target.number);
}

/// The rows of the table that the target names.
std::vector<int> named_areas(const Target& target, std::span<const Label> labels) {
    std::vector<int> rows;
    const auto take = [&rows](auto matches) {
        for (int i = 0; i < area_count; ++i)
            if (is_tapped_by_name(touch_area(i)) && matches(i)) rows.push_back(i);
    };
    if (target.by == By::label) {
        take([&](int i) { return labels[static_cast<std::size_t>(i)] == target.label; });
        const std::string name(target.label.begin(), target.label.end());
        if (rows.empty() && !name.empty())
            take([&](int i) { return picture_name(touch_area(i)) == name; });
        return rows;
    }
    take([&](int i) { return touch_area(i).down_code == target.number; });
    if (rows.empty()) take([&](int i) { return touch_area(i).up_code == target.number; });
    return rows;
}

/// The dot for the area in row `index`, if a finger hits it anywhere.
FoundDot dot_in(int index, const std::string& name) {
    const TouchArea& area = touch_area(index);
    const bool of_menu = area.type == AreaType::opener || area.type == AreaType::list;
    if (open_menu_slot != no_menu_slot && !of_menu)
        return {{},
                name + " hears no finger while a menu list is open: 'choose' a row, "
                       "or tap the list's opener"};
    const DotSet part = touchable_part(index);
    if (!is_empty(part)) return {middle_of(part, rectangle_of(area)), {}};
    const bool thin = area.x2 - area.x1 < 2 || area.y2 - area.y1 < 2;
    return {{},
            name + (thin ? " has no dot inside its edges, so no finger hits it"
                         : " can't be touched: other areas lie over all of it")};
}

/// The touch area of a bar, -1 if it has none.
int area_of_bar(int slot) {
    for (int i = area_count - 1; i >= 0; --i)
        if (touch_area(i).type == AreaType::bar && touch_area(i).state == slot) return i;
    return -1;
}

constexpr int bar_count = static_cast<int>(std::tuple_size_v<decltype(bar_slots)>);

std::vector<std::string> touchable_bars() {
    std::vector<std::string> names;
    for (int slot = 0; slot < bar_count; ++slot)
        if (area_of_bar(slot) >= 0 && bar_in_slot(slot).dir != 0)
            names.push_back(std::to_string(slot + 1));
    return names;
}

/// The dots of the part where a finger sets the bar to the value.
DotSet dots_for(const BarGraph& bar, const DotSet& part, int value) {
    DotSet dots{};
    for (int y = 0; y < screen_height; ++y)
        for (int x = 0; x < screen_width; ++x) {
            const auto row = static_cast<std::size_t>(y), column = static_cast<std::size_t>(x);
            if (part[row].test(column) && bar_value_at(bar, x, y) == value) dots[row].set(column);
        }
    return dots;
}

/// The values that a finger reaches on the part.
std::bitset<256> reached_values(const BarGraph& bar, const DotSet& part) {
    std::bitset<256> values;
    const int highest = bar.low + bar.steps - 1;
    for (int y = 0; y < screen_height; ++y)
        for (int x = 0; x < screen_width; ++x)
            if (part[static_cast<std::size_t>(y)].test(static_cast<std::size_t>(x)))
                if (const auto value = bar_value_at(bar, x, y))
                    values.set(static_cast<std::size_t>(std::clamp<int>(*value, bar.low, highest)));
    return values;
}

/// The nearest value to `wanted` that is there; -1 if none is.
int nearest_value(const std::bitset<256>& values, int wanted) {
    int best = -1;
    for (int v = 0; v < 256; ++v)
        if (values.test(static_cast<std::size_t>(v)) &&
            (best < 0 || std::abs(v - wanted) < std::abs(best - wanted)))
            best = v;
    return best;
}

FoundDrag drag_in(int slot, BarGoal goal) {
    const BarGraph& bar = bar_in_slot(slot);
    const std::string name = "bar " + std::to_string(slot + 1);
    const int row = area_of_bar(slot);
    if (row < 0) return {{}, {}, name + " isn't made for a finger (A B makes it so)"};
    if (FoundDot any = dot_in(row, name); !any.fault.empty()) return {{}, {}, any.fault};
    const DotSet part = touchable_part(row);
    const std::bitset<256> values = reached_values(bar, part);
    const int highest = bar.low + bar.steps - 1;
    const int wanted =
        goal.percent ? bar.low + ((bar.steps - 1) * goal.value + 50) / 100 : goal.value;
    if (wanted < bar.low || wanted > highest)
        return {{},
                {},
                name + " goes from " + std::to_string(bar.low) + " to " + std::to_string(highest)};
    const int reached = nearest_value(values, wanted);
    if (reached < 0) return {{}, {}, name + " has no dots to move in"};
    if (reached != wanted && !goal.percent)
        return {{},
                {},
                "no finger sets " + name + " to " + std::to_string(wanted) + "; the nearest is " +
                    std::to_string(reached)};
    const DrawArea rectangle = rectangle_of(touch_area(row));
    FoundDrag found{{}, middle_of(dots_for(bar, part, reached), rectangle), {}};
    const DotSet stay = dots_for(bar, part, bar.low + bar.value);
    if (!is_empty(stay)) found.from = middle_of(stay, rectangle);
    return found;
}

/// The touchable bar that is nearest to a text on the glass, which has no bar's name of its own.
FoundDrag find_labelled_drag(const Label& label, BarGoal goal) {
    const std::vector<TextPlace> places = find_text(present_glass(), label, whole_screen);
    const std::string wish = in_single_quotes(label);
    if (places.empty()) return {{}, {}, wish + " can't be read on the glass"};
    int nearest = std::numeric_limits<int>::max();
    std::vector<int> slots;
    for (int slot = 0; slot < bar_count; ++slot) {
        const BarGraph& bar = bar_in_slot(slot);
        if (bar.dir == 0 || area_of_bar(slot) < 0) continue;
        for (const TextPlace& place : places) {
            const DrawArea area{bar.x1, bar.y1, bar.x2, bar.y2};
            const int distance = distance_between(place.area, area);
            if (!is_near(place.area, area) || distance > nearest) continue;
            if (distance < nearest) slots.clear();
            nearest = distance;
            if (slots.empty() || slots.back() != slot) slots.push_back(slot);
        }
    }
    if (slots.size() == 1) return drag_in(slots.front(), goal);
    if (slots.empty())
        return {{},
                {},
                "no bar is near " + wish + "; " +
                    there_are(touchable_bars(), "there is none that a finger moves")};
    return {{},
            {},
            std::to_string(slots.size()) + " bars are equally near " + wish +
                "; name one by its number"};
}

}  // namespace

std::vector<Label> area_labels() {
    std::vector<Label> labels;
    std::optional<std::vector<ReadText>> texts;  // a look costs more than all the rest
    for (int i = 0; i < area_count; ++i) {
        const TouchArea& area = touch_area(i);
        Label label(area.label.text.begin(), area.label.text.begin() + area.label.length);
        std::ranges::replace(label, std::uint8_t{'\n'}, std::uint8_t{' '});
        if (label.empty() && is_tapped_by_name(area)) {
            if (!texts) texts = read_texts(present_glass());
            label = text_inside(rectangle_of(area), *texts);
        }
        labels.push_back(std::move(label));
    }
    return labels;
}

std::string word_of(AreaType type) {
    constexpr std::array<const char*, 8> words{"none", "key",    "switch", "bar",
                                               "draw", "opener", "list",   "report"};
    return words[static_cast<std::size_t>(type)];
}

std::string deaf_to_fingers() { return touch_enabled ? "" : "touch is switched off (A A 0)"; }

FoundDot find_tap(const Target& target) {
    if (target.by == By::dot) return {{target.x, target.y}, {}};
    const std::vector<Label> labels = area_labels();
    const std::vector<int> rows = named_areas(target, labels);
    const auto name = [&labels](int i) {
        return name_of(touch_area(i), labels[static_cast<std::size_t>(i)]);
    };
    if (rows.size() == 1) return dot_in(rows.front(), name(rows.front()));
    std::vector<std::string> names;
    for (int i = 0; i < area_count; ++i)
        if (is_tapped_by_name(touch_area(i)) && (rows.empty() || std::ranges::count(rows, i) > 0))
            names.push_back(name(i));
    if (rows.empty())
        return {{},
                "no key " + wish_of(target) + "; " +
                    there_are(names, "there is nothing to touch by name")};
    return {{},
            std::to_string(rows.size()) + " keys " + wish_of(target) + ": " + listed(names) +
                "; name one by its code or by a dot"};
}

FoundDot find_row(const Target& target) {
    if (open_menu_slot == no_menu_slot)
        return {{},
                menu_items == 0 ? "no menu list is open"
                                : "the open box has no touch area: the device moves its "
                                  "choice by the commands of group N"};
    std::vector<std::string> names;
    std::vector<int> rows;
    const auto texts = std::span(menu_text.text).first(menu_text.length);
    auto start = texts.begin();
    for (int n = 1; n <= menu_items; ++n) {
        const auto end = std::find(start, texts.end(), std::uint8_t{'\n'});
        const std::span<const std::uint8_t> text(start, end);
        names.push_back(in_single_quotes(text));
        const bool matches =
            target.by == By::number ? n == target.number : std::ranges::equal(text, target.label);
        if (matches) rows.push_back(n);
        start = end == texts.end() ? end : end + 1;
    }
    const std::string wish =
        target.by == By::label ? in_single_quotes(target.label) : std::to_string(target.number);
    if (rows.empty()) return {{}, "no row " + wish + "; " + there_are(names, "there is none")};
    if (rows.size() > 1)
        return {{}, std::to_string(rows.size()) + " rows say " + wish + "; name one by its number"};
    int list = area_count - 1;
    while (list >= 0 && touch_area(list).type != AreaType::list)
        --list;
    if (list < 0) return {{}, "the open list has lost its place in the full table"};
    DotSet part = touchable_part(list);
    const DrawArea band = menu_row_rectangle(rows.front());
    for (int y = 0; y < screen_height; ++y)
        if (y < band.y1 || y > band.y2) part[static_cast<std::size_t>(y)].reset();
    for (RowOfDots& row : part)
        for (int x = 0; x < screen_width; ++x)
            if (x < band.x1 || x > band.x2) row.reset(static_cast<std::size_t>(x));
    if (is_empty(part)) return {{}, "row " + wish + " lies off the glass or is covered"};
    return {middle_of(part, band), {}};
}

FoundDrag find_drag(const Target& target, BarGoal goal) {
    if (target.by == By::label) return find_labelled_drag(target.label, goal);
    const int slot = target.number - 1;
    if (slot >= 0 && slot < bar_count && bar_in_slot(slot).dir != 0) return drag_in(slot, goal);
    return {{},
            {},
            "no bar " + std::to_string(target.number) + "; " +
                there_are(touchable_bars(), "there is none that a finger moves")};
}

}  // namespace orvanel
