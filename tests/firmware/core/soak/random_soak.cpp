// Random commands, fingers, ticks and resets against what always holds: random_soak COMMANDS [SEED]
// What it prints at the end, a sum over answers, planes and images, is the same on every machine
// and with every compiler.

#include "firmware/core/ground/requests.h"
#include "firmware/core/roof/loop.h"
#include "firmware/raster/refresh.h"
#include "firmware/store/ground/eeprom.h"
#include "firmware/store/roof/timers.h"
#include "firmware/touch/areas.h"
#include "firmware/touch/bars.h"
#include "firmware/touch/finger.h"
#include "firmware/touch/menu.h"
#include "firmware/touch/menu_definitions.h"
#include "link/ground/pipes.h"
#include "tests/support/fake_platform.h"
#include "tests/support/font_image.h"
#include "tests/support/module.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace orvanel;

/// A command and how many parameters it reads; after them come a string, or raw bytes.
struct Form {
    std::string_view letters;
    int params;
    enum class Rest : std::uint8_t { none, string, picture } rest = Rest::none;
};

// clang-format off
constexpr Form forms[]{
    {"AA", 1}, {"AB", 1}, {"AD", 5}, {"AE", 1}, {"AF", 1}, {"AG", 1}, {"AH", 4}, {"AI", 1}, {"AL", 2},
    {"AJ", 5, Form::Rest::string}, {"AK", 6, Form::Rest::string}, {"AM", 7, Form::Rest::string},
    {"AN", 1}, {"AP", 2}, {"AQ", 1}, {"AR", 1}, {"AS", 1}, {"AT", 6, Form::Rest::string},
    {"AU", 5, Form::Rest::string}, {"AV", 3}, {"AW", 1}, {"AX", 1}, {"AY", 1}, {"AZ", 2},
    {"BA", 2}, {"BD", 2}, {"BL", 9}, {"BO", 9}, {"BR", 9}, {"BU", 9}, {"BS", 1}, {"BZ", 1},
    {"CB", 0}, {"CS", 4}, {"CK", 2}, {"CR", 0},
    {"DA", 0}, {"DE", 0}, {"DC", 0}, {"DN", 0}, {"DI", 0}, {"DL", 0}, {"DS", 0},
    {"GD", 4}, {"GP", 2}, {"GR", 4}, {"GV", 1}, {"GW", 2}, {"GZ", 2},
    {"ND", 3, Form::Rest::string}, {"NA", 0}, {"NF", 1}, {"NM", 1}, {"NN", 0}, {"NP", 0}, {"NS", 0},
    {"NT", 1}, {"NW", 1}, {"NY", 1}, {"NZ", 2},
    {"QI", 4}, {"QL", 4}, {"QM", 5}, {"QZ", 1},
    {"RL", 4}, {"RS", 4}, {"RI", 4}, {"RM", 5}, {"RO", 5}, {"RR", 5}, {"RT", 5},
    {"SI", 0}, {"SV", 0},
    {"TA", 0}, {"TE", 0}, {"TC", 1}, {"TP", 2}, {"TQ", 0}, {"TR", 0}, {"TS", 0}, {"TV", 0},
    {"UB", 1}, {"UC", 2}, {"UH", 4}, {"UI", 3}, {"UL", 2, Form::Rest::picture}, {"UV", 1},
    {"UW", 1}, {"UZ", 2},
    {"YH", 1}, {"YW", 2},
    {"ZL", 2, Form::Rest::string}, {"ZC", 2, Form::Rest::string}, {"ZR", 2, Form::Rest::string},
    {"ZB", 1}, {"ZF", 1}, {"ZV", 1}, {"ZW", 1}, {"ZY", 1}, {"ZZ", 2},
};
// clang-format on

// What came before the step whose result is looked at.
std::mt19937 random_bits;
std::string step;
PlaneSet planes_before;
std::optional<DrawArea> only_here;  // the box of a command that draws nowhere else
long steps_left = 0;
std::uint64_t sum = 14695981039346656037U;

unsigned below(unsigned limit) { return static_cast<unsigned>(random_bits()) % limit; }

/// FNV-1a.
void add_to_sum(std::uint64_t value) {
    for (int i = 0; i < 8; ++i)
        sum = (sum ^ (value >> 8 * i & 0xFF)) * 1099511628211U;
}

void check(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "random_soak: %s, behind '%s', %ld steps to go\n", what, step.c_str(),
                 steps_left);
    std::exit(EXIT_FAILURE);
}

/// Small numbers for codes, slots and modes, places all over the glass, and any byte.
unsigned parameter() {
    const unsigned kind = below(8);
    return kind < 3 ? below(10) : kind < 7 ? below(245) : below(256);
}

std::string text_of(std::string_view letters, const std::vector<unsigned>& params, bool with_hash) {
    std::string text(with_hash ? "#" : "\x1B");
    text += letters;
    for (const unsigned value : params)
        if (with_hash)
            text += std::to_string(value) + ",";
        else
            text += static_cast<char>(value);
    return text;
}

std::string any_string() {
    constexpr std::string_view characters = "0123ABCxyz |~@\\\"";
    std::string text = below(4) == 0 ? "C" : "L";
    for (unsigned n = below(20); n > 0; --n)
        text += characters[below(characters.size())];
    return text + (below(2) == 0 ? '\r' : '\0');
}

std::string any_picture() {
    const unsigned width = below(60) + 1, height = below(40) + 1;
    std::string picture{static_cast<char>(width), static_cast<char>(height)};
    for (unsigned n = (width + 7) / 8 * height; n > 0; --n)
        picture += static_cast<char>(random_bits());
    return picture;
}

/// The box that a fill of group R or Q may change: its corners clamped, then ordered. A border is
/// never smaller than its corners, and may go beyond.
std::optional<DrawArea> box_of(std::string_view letters, const std::vector<unsigned>& params) {
    constexpr std::string_view fills[]{"RL", "RS", "RI", "RM", "RO", "QI", "QL", "QM"};
    if (std::ranges::find(fills, letters) == std::end(fills)) return std::nullopt;
    const auto clamped = [&](std::size_t i, int max) {
        return std::min(static_cast<int>(params[i]), max);
    };
    const auto [x1, x2] = std::minmax({clamped(0, last_x), clamped(2, last_x)});
    const auto [y1, y2] = std::minmax({clamped(1, last_y), clamped(3, last_y)});
    return DrawArea{x1, static_cast<std::uint8_t>(y1), x2, static_cast<std::uint8_t>(y2)};
}

std::string next_command() {
    const Form& form = forms[below(std::size(forms))];
    std::vector<unsigned> params(static_cast<std::size_t>(form.params));
    std::ranges::generate(params, parameter);
    only_here = box_of(form.letters, params);
    // Raw bytes follow the last number's comma as they are, so a picture is for either lead-in.
    std::string text = text_of(form.letters, params, below(2) == 0);
    if (form.rest == Form::Rest::string) text += any_string();
    if (form.rest == Form::Rest::picture) text += any_picture();
    return text;
}

void check_planes() {
    if (!only_here.has_value()) return;
    for (int half = 0; half < 2; ++half) {
        const auto start = static_cast<std::size_t>(half * plane_bytes);
        for (int y = 0; y < screen_height; ++y)
            for (int x = 0; x < screen_width; ++x) {
                if (x >= only_here->x1 && x <= only_here->x2 && y >= only_here->y1 &&
                    y <= only_here->y2)
                    continue;
                check(plane_get(graphics_planes.data() + start, x, y) ==
                          plane_get(planes_before.data() + start, x, y),
                      "a dot outside the box has changed");
            }
    }
}

/// Upright and turned images show the same dots.
void check_turned(const UprightImage& upright, const RotatedImage& turned) {
    for (int y = 0; y < screen_height; ++y)
        for (int x = 0; x < screen_width; ++x) {
            const int column = last_y - y;
            const auto word =
                turned[static_cast<std::size_t>(last_x - x)][static_cast<std::size_t>(column / 64)]
                    .load(std::memory_order_relaxed);
            check(((word >> (63 - column % 64) & 1) != 0) == image_dot(upright, x, y),
                  "the turned image shows other dots");
        }
}

void add_images_to_sum() {
    for (const UprightImage* image : {&lcd_image, &lcd_image_flash})
        for (const auto& row : *image)
            for (const auto& word : row)
                add_to_sum(word.load(std::memory_order_relaxed));
}

void check_tables() {
    check(area_count <= max_touch_areas && cur_area <= max_touch_areas &&
              prev_area <= max_touch_areas && area_in_hand <= max_touch_areas,
          "a row of the touch table is out of bounds");
    // In a full table another area may have taken the opener's row, or be taking it right now.
    check(menu_opener == no_opener || menu_opener <= std::min<int>(area_count, max_touch_areas - 1),
          "the menu's opener is in no row");
    check(open_menu_slot == no_menu_slot || (open_menu_slot < 8 && menu_items > 0),
          "the open menu has no slot");
    check(bar_current >= -1 && bar_current < static_cast<int>(bar_slots.size()),
          "there is no such bar");
    check(flash_phase.load() <= 1 && flash_period.load() <= 15, "the flash clock is out of range");
    check(draw_area.x1 >= -screen_width && draw_area.x2 < 2 * screen_width,
          "the draw area is far off");
}

/// All dots as the planes have them, whatever was refreshed before.
void check_composition() {
    static std::vector<std::uint64_t> shown;
    shown.clear();
    for (const UprightImage* image : {&lcd_image, &lcd_image_flash})
        for (const auto& row : *image)
            for (const auto& word : row)
                shown.push_back(word.load(std::memory_order_relaxed));
    refresh_all();
    std::size_t at = 0;
    for (const UprightImage* image : {&lcd_image, &lcd_image_flash})
        for (const auto& row : *image)
            for (const auto& word : row)
                check(word.load(std::memory_order_relaxed) == shown[at++],
                      "the images show other dots than the planes have");
}

void look_at_step() {
    check_planes();
    check_tables();
    if (steps_left % 16 != 0) return;
    check_composition();
    check_turned(lcd_image, lcd_image_rot);
    check_turned(lcd_image_flash, lcd_image_rot_flash);
    add_images_to_sum();
}

void take_step() {
    const bool after_command = step.starts_with('#') || step.starts_with('\x1B');
    only_here.reset();
    planes_before = graphics_planes;
    const unsigned kind = below(20);
    if (kind == 0) {
        step = "a finger";
        const auto x = static_cast<int>(below(screen_width));
        const auto y = static_cast<int>(below(screen_height));
        put_finger(x, y);
    } else if (kind == 1) {
        step = "no finger";
        lift_finger();
    } else if (kind == 2) {
        step = "a tick";
        firmware_tick();
    } else if (kind == 3 && below(50) == 0) {
        step = "a reset";
        request_restart(static_cast<std::uint8_t>(below(4)));
    } else {
        step = next_command();
        if (!after_command) only_here.reset();  // a finger or a reset may still do its part
        rx_pipe_put_block(std::vector<std::uint8_t>(step.begin(), step.end()));
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fputs("usage: random_soak COMMANDS [SEED]\n", stderr);
        return 2;
    }
    steps_left = std::atol(argv[1]);
    random_bits.seed(argc > 2 ? static_cast<unsigned>(std::atol(argv[2])) : 1);
    fresh_module();
    eeprom_reset_to(eeprom_small, image_with_font());
    shutdown_requested = false;
    fake_platform.on_sleep = [] {
        if (rx_count() > 0) return;
        for (int byte = tx_pipe_get(); byte >= 0; byte = tx_pipe_get())
            add_to_sum(static_cast<std::uint64_t>(byte));
        look_at_step();
        if (steps_left-- == 0)
            shutdown_requested = true;
        else
            take_step();
    };
    run_firmware();
    check(fake_platform.bytes_spent > 0, "no time has passed");
    std::printf("%016llx\n", static_cast<unsigned long long>(sum));
}
