#include "firmware/touch/areas.h"

#include "base/bytes.h"
#include "firmware/core/ground/trace.h"
#include "firmware/raster/area_fill.h"
#include "firmware/raster/refresh.h"
#include "firmware/touch/menu_definitions.h"

#include <cassert>

namespace orvanel {

constinit std::array<TouchArea, max_touch_areas> touch_areas{};
constinit std::uint8_t area_count = 0;
constinit std::uint8_t cur_area = 0;
constinit std::uint8_t prev_area = 0;
constinit std::uint8_t area_in_hand = 0;
constinit std::atomic<bool> cursor_dirty{false};

namespace {

/// A row as the mouse cursor sees it, in one word: its rectangle, and whether it is live and takes
/// a finger while a list is open.
constexpr int y1_shift = 8, x2_shift = 16, y2_shift = 24;
constexpr std::uint64_t row_live = std::uint64_t{1} << 32;
constexpr std::uint64_t row_of_menu = std::uint64_t{1} << 33;

constinit std::array<std::atomic<std::uint64_t>, max_touch_areas> published_rows{};
constinit std::atomic<bool> published_list_open{false};

bool is_of_menu(AreaType type) { return type == AreaType::opener || type == AreaType::list; }

std::uint64_t published(const TouchArea& area) {
    if (area.type == AreaType::none) return 0;
    const auto dot = [](int v) { return static_cast<std::uint64_t>(v); };
    return dot(area.x1) | dot(area.y1) << y1_shift | dot(area.x2) << x2_shift |
           dot(area.y2) << y2_shift | row_live | (is_of_menu(area.type) ? row_of_menu : 0);
}

/// Row `from` now stands at `to`, and what stood there is gone. Names are index + 1.
void follow_move(std::uint8_t& name, int to, int from) {
    if (name == to + 1)
        name = 0;
    else if (name == from + 1)
        name = low8(to + 1);
}

}  // namespace

void power_on_areas() {
    touch_areas = {};
    area_count = 0;
    prev_area = 0;
    publish_touch_areas();
}

void cold_start_areas() { cur_area = 0; }

void publish_touch_areas() {
    for (std::size_t i = 0; i < touch_areas.size(); ++i)
        published_rows[i].store(i < area_count ? published(touch_areas[i]) : 0,
                                std::memory_order_relaxed);
    published_list_open.store(open_menu_slot != no_menu_slot, std::memory_order_relaxed);
    cursor_dirty.store(true);
}

TouchArea& new_touch_area() {
    if (area_count == max_touch_areas) {
        // The new area overwrites the last row, and no more: whatever names that row names the new
        // area now, the menu slot of an opener stays taken, and a list stays open without its row.
        remark(Remark::areas_full);
        --area_count;
        publish_touch_areas();
    }
    TouchArea& area = touch_areas[area_count];
    area = {};
    return area;
}

void add_touch_area() {
    ++area_count;
    publish_touch_areas();
}

void remove_touch_area(int index, bool erase) {
    assert(index < area_count);
    TouchArea& area = touch_area(index);
    if (erase && area.type != AreaType::none) {
        draw_area = rectangle_of(area);
        fill_area(link_replace, pattern_clear);
        refresh_area();
    }
    if (area.type == AreaType::opener) free_menu_slot(area.state);
    if (area.type == AreaType::list) open_menu_slot = no_menu_slot;

    const int last = --area_count;
    area = touch_area(last);
    touch_area(last) = {};
    for (std::uint8_t* name : {&cur_area, &prev_area, &area_in_hand})
        follow_move(*name, index, last);
    if (menu_opener == index)
        menu_opener = no_opener;
    else if (menu_opener == last)
        menu_opener = low8(index);
    publish_touch_areas();
}

bool touch_area_at(int x, int y) {
    const bool list_open = published_list_open.load(std::memory_order_relaxed);
    const auto dot = [](std::uint64_t row, int shift) {
        return static_cast<int>(row >> shift & 0xFF);
    };
    for (const auto& published_row : published_rows) {
        const std::uint64_t row = published_row.load(std::memory_order_relaxed);
        if ((row & row_live) == 0 || (list_open && (row & row_of_menu) == 0)) continue;
        if (dot(row, 0) < x && x < dot(row, x2_shift) && dot(row, y1_shift) < y &&
            y < dot(row, y2_shift))
            return true;
    }
    return false;
}

}  // namespace orvanel
