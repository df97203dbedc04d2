#include "host/skin/painting.h"

#include "host/skin/view.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <vector>

namespace orvanel {

namespace {

constexpr std::uint32_t opaque = 0xFF000000;

/// The picture being composed.
struct Frame {
    std::span<std::uint32_t> pixels;
    std::size_t stride;  // pixels
    int dot;             // pixels of a dot on each axis

    std::uint32_t* at(int column, int row) const {
        return &pixels[static_cast<std::size_t>(row) * stride + static_cast<std::size_t>(column)];
    }
};

// The skin: `dot` pixels of the window lie over `scale` pixels of the picture on each axis, within
// one dot. A window pixel is `scale` units long, a picture's pixel `dot` units.

/// The picture's pixels below one window pixel: `weights` of those from `first` on, in units.
struct Taps {
    int first;
    std::vector<std::uint32_t> weights;  // their sum is `scale`
};

/// For each window pixel of a dot.
std::vector<Taps> taps_of(int dot, int scale) {
    std::vector<Taps> all;
    for (int i = 0; i < dot; ++i) {
        const int begin = i * scale;
        const int end = begin + scale;
        Taps taps{begin / dot, {}};
        for (int j = taps.first; j * dot < end; ++j)
            taps.weights.push_back(static_cast<std::uint32_t>(std::min(end, (j + 1) * dot) -
                                                              std::max(begin, j * dot)));
        all.push_back(std::move(taps));
    }
    return all;
}

// Three sums, of red, green and blue, in one word, 21 bits each.
using Sums = std::uint64_t;
constexpr int red_shift = 42, green_shift = 21;
constexpr std::uint64_t sum_mask = (1 << 21) - 1;
constexpr int max_scale = 64;
static_assert(255 * max_scale * max_scale <= sum_mask);

constexpr Sums spread(std::uint32_t colour) {
    return std::uint64_t{colour >> 16 & 0xFF} << red_shift |
           std::uint64_t{colour >> 8 & 0xFF} << green_shift | (colour & 0xFF);
}

/// Division of sums by the area of a window pixel, to the nearest.
struct Mean {
    std::uint64_t half;        // of the area
    std::uint64_t reciprocal;  // 2^40 / area, rounded up
};

Mean mean_over(int scale) {
    const auto area = static_cast<std::uint64_t>(scale * scale);
    return {area / 2, ((std::uint64_t{1} << 40) + area - 1) / area};
}

std::uint32_t mean_colour(Sums sums, const Mean& mean) {
    const auto channel = [&mean](std::uint64_t sum) {
        return static_cast<std::uint32_t>(((sum & sum_mask) + mean.half) * mean.reciprocal >> 40);
    };
    return opaque | channel(sums >> red_shift) << 16 | channel(sums >> green_shift) << 8 |
           channel(sums);
}

/// What painting the skin needs, whatever the rectangle.
struct SkinScaler {
    const SkinImage& skin;
    int scale;
    std::array<Sums, 256> palette;
    std::vector<Taps> taps;
    Mean mean;
    std::vector<Sums> columns;  // of one window row, a sum for each pixel of the picture
};

SkinScaler make_scaler(const SkinImage& skin, int dot) {
    SkinScaler scaler{skin, static_cast<int>(skin.scale), {}, {}, {}, {}};
    for (std::size_t i = 0; i < scaler.palette.size(); ++i)
        scaler.palette[i] = spread(dib_colour(skin, static_cast<int>(i)));
    scaler.taps = taps_of(dot, scaler.scale);
    scaler.mean = mean_over(scaler.scale);
    scaler.columns.resize(static_cast<std::size_t>(dib_columns(skin)));
    return scaler;
}

/// The sums down the rows below one window row of the dots in row `y`, for the dots left..right.
void sum_rows(SkinScaler& scaler, int y, const Taps& taps, int left, int right) {
    const auto first = static_cast<std::size_t>(left * scaler.scale);
    const auto count = static_cast<std::size_t>((right - left + 1) * scaler.scale);
    std::fill_n(scaler.columns.begin(), count, 0);
    int row = y * scaler.scale + taps.first;
    for (const std::uint32_t weight : taps.weights) {
        const auto indices = dib_row(scaler.skin, row++).subspan(first, count);
        for (std::size_t i = 0; i < count; ++i)
            scaler.columns[i] += scaler.palette[indices[i]] * weight;
    }
}

void mean_columns(const SkinScaler& scaler, int dots, std::uint32_t* pixel) {
    const Sums* dot = scaler.columns.data();
    for (int i = 0; i < dots; ++i, dot += scaler.scale)
        for (const Taps& taps : scaler.taps) {
            Sums sums = 0;
            const Sums* column = dot + taps.first;
            for (const std::uint32_t weight : taps.weights)
                sums += *column++ * weight;
            *pixel++ = mean_colour(sums, scaler.mean);
        }
}

bool same_taps(const Taps& a, const Taps& b) {
    return a.first == b.first && a.weights == b.weights;
}

/// Paints a rectangle of the skin, which lies in its area.
void paint_skin(const Frame& frame, SkinScaler& scaler, SkinRect rect) {
    const int dots = rect.right - rect.left + 1;
    const int left = rect.left * frame.dot;
    const auto width = static_cast<std::size_t>(dots * frame.dot);
    for (int y = rect.top; y <= rect.bottom; ++y) {
        const Taps* above = nullptr;
        int row = y * frame.dot;
        for (const Taps& taps : scaler.taps) {
            std::uint32_t* pixel = frame.at(left, row++);
            if (above != nullptr && same_taps(*above, taps)) {
                std::copy_n(pixel - frame.stride, width, pixel);
            } else {
                sum_rows(scaler, y, taps, rect.left, rect.right);
                mean_columns(scaler, dots, pixel);
            }
            above = &taps;
        }
    }
}

// The display.

/// `dots` dots of a row from column `first` on, `dot` pixels for each, as runs of one colour.
void expand_row(std::span<const std::atomic<std::uint64_t>> words, int first, int dots, int dot,
                const std::array<std::uint32_t, 2>& colours, std::uint32_t* pixel) {
    int x = first;
    const int end = first + dots;
    while (x < end) {
        const int in_word = std::min(64 - x % 64, end - x);
        std::uint64_t bits = words[static_cast<std::size_t>(x / 64)].load(std::memory_order_relaxed)
                             << x % 64;
        for (int left = in_word; left > 0;) {
            const bool set = (bits >> 63) != 0;
            const int run = std::min(set ? std::countl_one(bits) : std::countl_zero(bits), left);
            pixel = std::fill_n(pixel, run * dot, colours[set ? 1 : 0]);
            left -= run;
            bits = run < 64 ? bits << run : 0;
        }
        x += in_word;
    }
}

/// Paints a rectangle of the display, which lies in its area.
void paint_display(const Frame& frame, const Display& display, SkinRect rect) {
    const std::array<std::uint32_t, 2> colours{opaque | dib_colour(display, 0),
                                               opaque | dib_colour(display, 1)};
    const int dots = rect.right - rect.left + 1;
    const auto width = static_cast<std::size_t>(dots * frame.dot);
    for (int y = rect.top; y <= rect.bottom; ++y) {
        std::uint32_t* pixel = frame.at(rect.left * frame.dot, y * frame.dot);
        expand_row(dot_row(display, y - display.area.top), rect.left - display.area.left, dots,
                   frame.dot, colours, pixel);
        for (int i = 1; i < frame.dot; ++i)
            std::copy_n(pixel, width, pixel + static_cast<std::size_t>(i) * frame.stride);
    }
}

/// The dots that a rectangle of window pixels touches; empty outside the window.
SkinRect touched_dots(PixelRect rect, int dot) {
    if (rect.right <= 0 || rect.bottom <= 0 || rect.right <= rect.left || rect.bottom <= rect.top)
        return {0, 0, -1, -1};
    const SkinRect touched{std::max(rect.left, 0) / dot, std::max(rect.top, 0) / dot,
                           (rect.right - 1) / dot, (rect.bottom - 1) / dot};
    return common_part(touched, view_skin->area);
}

}  // namespace

void compose_window(std::span<std::uint32_t> frame, PixelRect rect) {
    const int dot = dot_pixels();
    const SkinRect clip = touched_dots(rect, dot);
    if (is_empty(clip)) return;
    const Frame into{frame, static_cast<std::size_t>(window_width()), dot};

    const SkinImage& skin = *view_skin;
    SkinScaler scaler = make_scaler(skin, dot);
    for (const SkinRect& band :
         {skin.band_top, skin.band_left, skin.band_right, skin.band_bottom}) {
        const SkinRect part = common_part(band, clip);
        if (!is_empty(part)) paint_skin(into, scaler, part);
    }
    const Display& display = flash_phase.load() != 0 ? *view_lcd_flash : *view_lcd;
    const SkinRect part = common_part(display.area, clip);
    if (!is_empty(part)) paint_display(into, display, part);
}

}  // namespace orvanel
