#include "host/skin/lcd_colours.h"

#include "firmware/core/ground/backlight.h"
#include "host/program/settings.h"
#include "host/skin/skin.h"

#include <algorithm>

namespace orvanel {

namespace {

constexpr int types = 3, polarizers = 2, backlights = 6;

// In each group the backlights CFL white, LED white, yellow/green, red, blue, amber.
// clang-format off
constexpr std::array<LcdColours, std::size_t{types} * polarizers * backlights> lcd_colours{{
    // dot at 100, 50, 0 %              clear dot                       surround
    // FSTN, positive
    {{0x1E1E4B, 0x0F0F41, 0x000031}, {0xE6E6EB, 0xC5C5CB, 0x888887}, {0xEBEBEB, 0xD1D1D5, 0x91918E}},
    {{0x191945, 0x080837, 0x000031}, {0xD1D1D4, 0xB7B7BC, 0x888887}, {0xDCDCDC, 0xC1C1C6, 0x91918E}},
    {{0x101010, 0x080808, 0x000000}, {0xE0E600, 0xB2B800, 0x888887}, {0xE9F315, 0xBAC311, 0x91918E}},
    {{0x191919, 0x070707, 0x000000}, {0xE30128, 0xA01930, 0x888887}, {0xF41937, 0xB42337, 0x91918E}},
    {{0x191919, 0x080808, 0x000000}, {0x211CC9, 0x3C38B1, 0x888887}, {0x3C32D7, 0x5050BE, 0x91918E}},
    {{0x191919, 0x080808, 0x000000}, {0xE6A71B, 0xAA8229, 0x888887}, {0xE8B439, 0xB18F3F, 0x91918E}},
    // FSTN, negative
    {{0xFAFAFF, 0xBBBBC1, 0x101010}, {0x373737, 0x2D2D2D, 0x000000}, {0x414141, 0x373737, 0x000000}},
    {{0xD1D1D4, 0xA7A7AD, 0x101010}, {0x2D2D2D, 0x232323, 0x000000}, {0x373737, 0x2D2D2D, 0x000000}},
    {{0xCDE51B, 0xBAC313, 0x101010}, {0x1E1E0F, 0x14140A, 0x000000}, {0x28280F, 0x1E1E0F, 0x000000}},
    {{0xF71928, 0xA01930, 0x101010}, {0x371919, 0x250707, 0x000000}, {0x412323, 0x2F1111, 0x000000}},
    {{0x211CFA, 0x1410B1, 0x101010}, {0x000028, 0x00001E, 0x000000}, {0x00003C, 0x000032, 0x000000}},
    {{0xE5A71B, 0xAA8619, 0x101010}, {0x231A00, 0x0D0A00, 0x000000}, {0x28200F, 0x120F05, 0x000000}},
    // STN blue, positive
    {{0x1E1E91, 0x0F0F7D, 0x000069}, {0xE6E6F5, 0xC5C5DF, 0xA6A6AF}, {0xEBEBF5, 0xD1D1DF, 0xAFAFB6}},
    {{0x191981, 0x080873, 0x000069}, {0xD1D1E8, 0xB7B7D0, 0xA6A6AF}, {0xDCDCE8, 0xC1C1D0, 0xAFAFB6}},
    {{0x19192D, 0x0E0E41, 0x000069}, {0xE0E632, 0xB2B832, 0xA6A6AF}, {0xE9F315, 0xBAC311, 0xAFAFB6}},
    {{0x191937, 0x070741, 0x000069}, {0xE30132, 0xA0193A, 0xA6A6AF}, {0xF41937, 0xB42337, 0xAFAFB6}},
    {{0x191969, 0x080869, 0x000069}, {0x211CC9, 0x3C38B1, 0xA6A6AF}, {0x3C32D7, 0x5050BE, 0xAFAFB6}},
    {{0x191937, 0x080841, 0x000069}, {0xE6A72F, 0xAA823D, 0xA6A6AF}, {0xE8B439, 0xB18F3F, 0xAFAFB6}},
    // STN blue, negative
    {{0xFFFFFF, 0xB6B6B6, 0x2E2E2E}, {0x0000FF, 0x0000A9, 0x000071}, {0x2520FD, 0x0B00C7, 0x050192}},
    {{0xD2D2D2, 0xA2A2A2, 0x2E2E2E}, {0x0000E6, 0x0000A9, 0x000071}, {0x2520FD, 0x0B00C7, 0x050192}},
    {{0xE9F315, 0xBAC311, 0x2E2E2E}, {0x19192D, 0x0E0E41, 0x000071}, {0x232337, 0x18184B, 0x050192}},
    {{0xF41937, 0xB42337, 0x2E2E2E}, {0x191937, 0x070741, 0x000071}, {0x232341, 0x11114B, 0x050192}},
    {{0x211CE7, 0x282EB1, 0x2E2E2E}, {0x080869, 0x080869, 0x000071}, {0x0F0F73, 0x121273, 0x050192}},
    {{0xE6A72F, 0xAA823D, 0x2E2E2E}, {0x191937, 0x080841, 0x000071}, {0x232341, 0x12124B, 0x050192}},
    // STN yellow/green, positive
    {{0x0A280A, 0x081E08, 0x051405}, {0xD9DF99, 0xBBC44C, 0x9CAB00}, {0xDCE295, 0xC2CF4A, 0xA9BA00}},
    {{0x0A280A, 0x081E08, 0x051405}, {0xC3CC64, 0xB2BF31, 0x9CAB00}, {0xCDD763, 0xBCCA30, 0xA9BA00}},
    {{0x0A280A, 0x081E08, 0x051405}, {0xBEEB01, 0xAAD201, 0x9CAB00}, {0xCFFD04, 0xB4DC00, 0xA9BA00}},
    {{0x0A140A, 0x0A140A, 0x051405}, {0xCB470F, 0xAB7F0D, 0x9CAB00}, {0xCF4E12, 0xB3890F, 0xA9BA00}},
    {{0x0A140A, 0x0A140A, 0x051405}, {0x605785, 0x6E7161, 0x9CAB00}, {0x686185, 0x787C66, 0xA9BA00}},
    {{0x0A140A, 0x0A140A, 0x051405}, {0xC1B305, 0xAEB00E, 0x9CAB00}, {0xC6B909, 0xB5BA10, 0xA9BA00}},
    // STN yellow/green, negative
    {{0xD9DF99, 0xBBC44C, 0x284000}, {0x0A280A, 0x081E08, 0x051405}, {0x0A280A, 0x081E08, 0x051405}},
    {{0xC3CC64, 0xB2BF31, 0x284000}, {0x0A280A, 0x081E08, 0x051405}, {0x0A280A, 0x081E08, 0x051405}},
    {{0xBEEB01, 0xAABE01, 0x284000}, {0x0A280A, 0x081E08, 0x051405}, {0x0A280A, 0x081E08, 0x051405}},
    {{0xCB470F, 0xAB3D0D, 0x284000}, {0x0A140A, 0x0A140A, 0x051405}, {0x0A140A, 0x0A140A, 0x051405}},
    {{0x6057C1, 0x605785, 0x284000}, {0x0A140A, 0x0A140A, 0x051405}, {0x0A140A, 0x0A140A, 0x051405}},
    {{0xC1B305, 0x8F8504, 0x284000}, {0x0A140A, 0x0A140A, 0x051405}, {0x0A140A, 0x0A140A, 0x051405}},
}};
// clang-format on

/// What the model says of its glass, as lcd_type, lcd_polarizer and lcd_backlight.
struct FixedModel {
    int type, polarizer, backlight;
};
constexpr std::array<FixedModel, custom_model> fixed_models{{{1, 1, 1}, {0, 0, 1}, {0, 0, 5}}};

constexpr std::uint32_t mixed(std::uint32_t first, std::uint32_t first_weight, std::uint32_t second,
                              std::uint32_t second_weight) {
    std::uint32_t colour = 0;
    for (const int shift : {16, 8, 0}) {
        const std::uint32_t sum =
            (first >> shift & 0xFF) * first_weight + (second >> shift & 0xFF) * second_weight;
        colour |= sum / (first_weight + second_weight) << shift;
    }
    return colour;
}
static_assert(mixed(0x880000, 25, 0xC50000, 25) == 0xA60000);

}  // namespace

const LcdColours& lcd_colours_of(int type, int polarizer, int backlight) {
    const int row =
        (std::clamp(type, 0, types - 1) * polarizers + std::clamp(polarizer, 0, polarizers - 1)) *
            backlights +
        std::clamp(backlight, 0, backlights - 1);
    return lcd_colours[static_cast<std::size_t>(row)];
}

std::uint32_t blended(const std::array<std::uint32_t, 3>& colour, std::uint8_t level) {
    constexpr std::uint32_t half = 50, full = backlight_full;
    const auto [at_full, at_half, at_dark] = colour;
    if (level == backlight_level_full) return at_full;
    const std::uint32_t percent = std::min<std::uint32_t>(level, full);
    if (percent <= half) return mixed(at_dark, half - percent, at_half, percent);
    return mixed(at_half, full - percent, at_full, percent - half);
}

void model_apply() {
    if (skin_model < 0 || skin_model > custom_model) return;
    if (skin_model != custom_model) {
        const FixedModel& model = fixed_models[static_cast<std::size_t>(skin_model)];
        lcd_type = model.type;
        lcd_polarizer = model.polarizer;
        lcd_backlight = model.backlight;
    }
    const LcdColours& row = lcd_colours_of(lcd_type, lcd_polarizer, lcd_backlight);
    const std::uint8_t level = backlight_light.load().backlight_level;
    for (Dib* display : {&lcd_dib, &lcd_dib_flash, &lcd_dib_rot, &lcd_dib_rot_flash}) {
        dib_set_colour(*display, 0, blended(row.clear, level));
        dib_set_colour(*display, 1, blended(row.dot, level));
    }
    for (Dib* skin : {&skin_image, &skin_image_rot})
        dib_set_colour(*skin, band_index, blended(row.surround, level));
}

}  // namespace orvanel
