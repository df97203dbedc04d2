// areas.h: the table of touch areas, the rectangles of the glass that answer to a finger. Keys,
// switches, touch bars, menus, draw and report areas are rows of it and differ by their type alone.
//
// A removal moves the last row into the hole, so a row has no lasting number. Whatever names a row
// beyond one step follows it: cur_area, prev_area and area_in_hand here, menu_opener in
// menu_definitions.h. If the row is gone they name none. All of it belongs to firmware_thread; the
// host's question about the mouse cursor is answered from a copy in atomic words.

#pragma once

#include "firmware/core/ground/draw_area.h"

#include <array>
#include <atomic>
#include <cstdint>

namespace orvanel {

enum class AreaType : std::uint8_t {
    none,    // an empty row
    key,     // `state`: bit 0 held down; 2 or 3 with a picture of two images
    toggle,  // a switch. `state`: bit 0 on; 2 or 3 with a picture of two images
    bar,     // `state`: the bar's slot, 0..31
    draw,    // `state`: pen size in dots
    opener,  // `state`: the menu's slot, 0..7, or no_menu_slot
    list,
    report,
};

/// What was written on an area when it was defined, lines parted by a line feed, and its picture of
/// the image. For whoever looks from outside: the module itself never reads it.
struct AreaLabel {
    std::uint16_t picture;  // its number + 1; 0: none
    std::uint8_t length;    // bytes
    std::array<std::uint8_t, 63> text;
};

struct TouchArea {
    std::int32_t x1, x2;     // dots, 0..239, x1 <= x2
    std::uint8_t y1, y2;     // dots, 0..127, y1 <= y2
    std::uint8_t down_code;  // fired by a press, 0: none
    std::uint8_t up_code;    // fired by a release, 0: none. Opener: when an opener's press closes
                             // its list. List: the code of its first row
    AreaType type;
    std::uint8_t state;  // by type
    std::uint8_t group;  // of a switch: its radio group, 0: none
    std::uint8_t frame;  // its pressed look: 0 inverts the rectangle, else a border number; with a
                         // picture of two images that picture's number
    AreaLabel label;     // empty for what takes none
};

constexpr int max_touch_areas = 80;

/// The first area_count rows are live, in the order of their definition but for what removals have
/// moved. Rows after them are empty.
extern std::array<TouchArea, max_touch_areas> touch_areas;
extern std::uint8_t area_count;

/// Rows by index + 1, 0 for none: under the present sample, under the one before, and the one that
/// the running event works on. cur_area outlives a reset.
extern std::uint8_t cur_area;
extern std::uint8_t prev_area;
extern std::uint8_t area_in_hand;

inline DrawArea rectangle_of(const TouchArea& area) { return {area.x1, area.y1, area.x2, area.y2}; }
inline void set_rectangle(TouchArea& area, const DrawArea& r) {
    area.x1 = r.x1;
    area.x2 = r.x2;
    area.y1 = r.y1;
    area.y2 = r.y2;
}

inline TouchArea& touch_area(int index) { return touch_areas[static_cast<std::size_t>(index)]; }

/// A row, zeroed, for the area being defined; live only from add_touch_area on. In a full table it
/// is the last row, which is overwritten without being removed.
TouchArea& new_touch_area();

/// Makes the row of new_touch_area live.
void add_touch_area();

/// Removes row `index` (< area_count), and clears its rectangle if `erase` is set. An opener frees
/// its menu slot, a list leaves none open.
void remove_touch_area(int index, bool erase);

/// Shows the table's present state to touch_area_at and marks the cursor for a new judgement.
void publish_touch_areas();

/// The table has changed: the host judges the mouse cursor again. Set by firmware_thread, cleared
/// by the host's main thread.
extern std::atomic<bool> cursor_dirty;

/// Whether the mouse cursor shows a hand at dot x, y of the glass. From the host's main thread; a
/// stale answer is put right by the next question.
bool touch_area_at(int x, int y);

/// Power-on: an empty table.
void power_on_areas();

/// Program start: the finger has been in no area.
void cold_start_areas();

}  // namespace orvanel
