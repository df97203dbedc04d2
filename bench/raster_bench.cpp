// What the raster engine costs, beside what others need for the same dots. The engine writes both
// planes, a peer its one; nothing is refreshed unless the name says so. A name ending in /peer is
// the limit or the library that the row in front of it is measured against.

#include "firmware/raster/area_fill.h"
#include "firmware/raster/blit.h"
#include "firmware/raster/line.h"
#include "firmware/raster/planes.h"
#include "firmware/raster/refresh.h"
#include "firmware/raster/screen_store.h"

#include <benchmark/benchmark.h>
#include <cairo.h>
#include <pixman.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

namespace orvanel {
namespace {

constexpr int place_count = 1024;  // a power of two

struct Place {
    int x1, y1, x2, y2;
};

/// Boxes of w x h dots somewhere on the glass, the same ones in each run.
std::vector<Place> places(int w, int h, int step = 1) {
    std::mt19937 random{42};
    std::vector<Place> list(place_count);
    for (Place& place : list) {
        place.x1 = static_cast<int>(random() % static_cast<unsigned>((240 - w) / step + 1)) * step;
        place.y1 = static_cast<int>(random() % static_cast<unsigned>((128 - h) / step + 1)) * step;
        place.x2 = place.x1 + w - 1;
        place.y2 = place.y1 + h - 1;
    }
    return list;
}

/// Two random points each.
std::vector<Place> random_lines() {
    std::mt19937 random{43};
    std::vector<Place> list(place_count);
    for (auto& [x1, y1, x2, y2] : list) {
        x1 = static_cast<int>(random() % 240);
        y1 = static_cast<int>(random() % 128);
        x2 = static_cast<int>(random() % 240);
        y2 = static_cast<int>(random() % 128);
    }
    return list;
}

void set_draw_area(const Place& place) {
    draw_area = {place.x1, static_cast<std::uint8_t>(place.y1), place.x2,
                 static_cast<std::uint8_t>(place.y2)};
}

/// Runs `work` once for each iteration, with one place after the other.
template <typename Work>
void run(benchmark::State& state, const std::vector<Place>& list, Work work) {
    select_graphics_planes();
    power_on_pen();
    std::size_t i = 0;
    for (auto _ : state) {
        work(list[i++ % place_count]);
        benchmark::ClobberMemory();
    }
}

std::vector<std::uint8_t> noise(std::size_t bytes) {
    std::mt19937 random{44};
    std::vector<std::uint8_t> list(bytes);
    for (std::uint8_t& byte : list)
        byte = static_cast<std::uint8_t>(random());
    return list;
}

/// One plane of a peer: rows of 32 bytes, one bit a dot.
constexpr int peer_stride = 32;
alignas(64) std::array<std::uint32_t, std::size_t{8} * 128> peer_plane{};

pixman_image_t* peer_image() {
    return pixman_image_create_bits(PIXMAN_a1, 240, 128, peer_plane.data(), peer_stride);
}

// The whole glass.

void fill_glass(benchmark::State& state, std::uint8_t mode, std::uint8_t pattern) {
    run(state, places(240, 128), [=](const Place& place) {
        set_draw_area(place);
        fill_area(mode, pattern);
    });
}

void memset_planes(benchmark::State& state) {
    run(state, places(240, 128), [](const Place&) {
        std::memset(main_plane(), 0xFF, plane_bytes);
        benchmark::ClobberMemory();
        std::memset(flash_plane_of(main_plane()), 0xFF, plane_bytes);
    });
}

void write_rows(benchmark::State& state) {
    run(state, places(240, 128), [](const Place&) {
        for (int plane = 0; plane < 2; ++plane)
            for (int y = 0; y < 128; ++y)
                std::memset(main_plane() + plane * plane_bytes + y * plane_stride,
                            pattern_table[4][static_cast<std::size_t>(y & 7)], plane_stride);
    });
}

void invert_words(benchmark::State& state) {
    run(state, places(240, 128), [](const Place&) {
        for (std::size_t i = 0; i < graphics_planes.size(); i += 8) {
            std::uint64_t word;
            std::memcpy(&word, &graphics_planes[i], 8);
            word = ~word;
            std::memcpy(&graphics_planes[i], &word, 8);
        }
    });
}

BENCHMARK_CAPTURE(fill_glass, solid, link_replace, pattern_solid)->Name("glass/set");
BENCHMARK_CAPTURE(fill_glass, clear, link_replace, pattern_clear)->Name("glass/clear");
BENCHMARK(memset_planes)->Name("glass/clear/peer");
BENCHMARK_CAPTURE(fill_glass, pattern, link_replace, 4)->Name("glass/pattern");
BENCHMARK(write_rows)->Name("glass/pattern/peer");
BENCHMARK_CAPTURE(fill_glass, invert, link_invert, pattern_solid)->Name("glass/invert");
BENCHMARK(invert_words)->Name("glass/invert/peer");

// Areas at random places.

void fill_box(benchmark::State& state, int w, int h, std::uint8_t mode, std::uint8_t pattern) {
    run(state, places(w, h), [=](const Place& place) {
        set_draw_area(place);
        fill_area(mode, pattern);
    });
}

void fill_box_peer(benchmark::State& state, int w, int h) {
    run(state, places(w, h), [=](const Place& place) {
        pixman_fill(peer_plane.data(), peer_stride / 4, 1, place.x1, place.y1, w, h, 1);
    });
}

BENCHMARK_CAPTURE(fill_box, set_8, 8, 8, link_set, pattern_solid)->Name("box8x8/set");
BENCHMARK_CAPTURE(fill_box, xor_8, 8, 8, link_invert, pattern_solid)->Name("box8x8/invert");
BENCHMARK_CAPTURE(fill_box_peer, fill_8, 8, 8)->Name("box8x8/peer");
BENCHMARK_CAPTURE(fill_box, pattern_100, 100, 60, link_replace, 4)->Name("box100x60/pattern");
BENCHMARK_CAPTURE(fill_box, solid_100, 100, 60, link_replace, 1)->Name("box100x60/solid");
BENCHMARK_CAPTURE(fill_box_peer, fill_100, 100, 60)->Name("box100x60/peer");

// Lines with a pen of one dot.

void lines(benchmark::State& state) {
    run(state, random_lines(), [](const Place& place) {
        set_draw_area(place);
        draw_line();
    });
}

void lines_peer(benchmark::State& state) {
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_A1, 240, 128);
    cairo_t* context = cairo_create(surface);
    cairo_set_antialias(context, CAIRO_ANTIALIAS_NONE);
    cairo_set_line_width(context, 1);
    run(state, random_lines(), [=](const Place& place) {
        cairo_move_to(context, place.x1 + 0.5, place.y1 + 0.5);
        cairo_line_to(context, place.x2 + 0.5, place.y2 + 0.5);
        cairo_stroke(context);
    });
    cairo_destroy(context);
    cairo_surface_destroy(surface);
}

BENCHMARK(lines)->Name("line/random");
BENCHMARK(lines_peer)->Name("line/random/peer");

// Glyphs and pictures.

void picture(benchmark::State& state, int w, int h, int zoom, int step, std::uint8_t link) {
    const std::vector<std::uint8_t> rows = noise(static_cast<std::size_t>(stride_of(w) * h));
    run(state, places(w * zoom, h * zoom, step), [=, &rows](const Place& place) {
        set_draw_area(place);
        picture_width = w;
        picture_height = static_cast<std::uint8_t>(h);
        blit_zoom_x = blit_zoom_y = static_cast<std::uint8_t>(zoom);
        blit_link = link;
        flash_attr = flash_none;
        prepare_blit();
        blit(rows);
    });
}

void picture_peer(benchmark::State& state, int w, int h, int zoom, int step, pixman_op_t op) {
    const int stride = (w + 31) / 32 * 4;
    std::vector<std::uint8_t> bytes = noise(static_cast<std::size_t>(stride * h));
    std::vector<std::uint32_t> rows(bytes.size() / 4);
    std::memcpy(rows.data(), bytes.data(), bytes.size());
    pixman_image_t* source = pixman_image_create_bits(PIXMAN_a1, w, h, rows.data(), stride);
    if (zoom > 1) {
        pixman_transform_t scale;
        pixman_transform_init_scale(&scale, pixman_fixed_1 / zoom, pixman_fixed_1 / zoom);
        pixman_image_set_transform(source, &scale);
        pixman_image_set_filter(source, PIXMAN_FILTER_NEAREST, nullptr, 0);
    }
    pixman_image_t* plane = peer_image();
    run(state, places(w * zoom, h * zoom, step), [=](const Place& place) {
        pixman_image_composite32(op, source, nullptr, plane, 0, 0, 0, 0, place.x1, place.y1,
                                 w * zoom, h * zoom);
    });
    pixman_image_unref(plane);
    pixman_image_unref(source);
}

BENCHMARK_CAPTURE(picture, glyph, 8, 8, 1, 8, link_replace)->Name("glyph8x8/replace");
BENCHMARK_CAPTURE(picture, glyph_any, 8, 8, 1, 1, link_replace)->Name("glyph8x8/replace_any_x");
BENCHMARK_CAPTURE(picture_peer, glyph, 8, 8, 1, 8, PIXMAN_OP_SRC)->Name("glyph8x8/peer");
BENCHMARK_CAPTURE(picture, set, 60, 40, 1, 1, link_set)->Name("picture60x40/set");
BENCHMARK_CAPTURE(picture_peer, set, 60, 40, 1, 1, PIXMAN_OP_OVER)->Name("picture60x40/set/peer");
BENCHMARK_CAPTURE(picture, invert, 60, 40, 1, 1, link_invert)->Name("picture60x40/invert");
BENCHMARK_CAPTURE(picture_peer, invert, 60, 40, 1, 1, PIXMAN_OP_XOR)
    ->Name("picture60x40/invert/peer");
BENCHMARK_CAPTURE(picture, replace, 60, 40, 1, 1, link_replace)->Name("picture60x40/replace");
BENCHMARK_CAPTURE(picture_peer, replace, 60, 40, 1, 1, PIXMAN_OP_SRC)
    ->Name("picture60x40/replace/peer");
BENCHMARK_CAPTURE(picture, zoomed, 60, 40, 2, 1, link_set)->Name("picture60x40/zoom2/set");
BENCHMARK_CAPTURE(picture_peer, zoomed, 60, 40, 2, 1, PIXMAN_OP_OVER)
    ->Name("picture60x40/zoom2/set/peer");

// Moving and storing.

void scroll(benchmark::State& state) {
    run(state, places(240, 128), [](const Place&) {
        select_terminal_plane();
        draw_area = {0, 8, last_x, last_y};
        move_area(0, 0);
    });
}

void scroll_peer(benchmark::State& state) {
    run(state, places(240, 128), [](const Place&) {
        std::memmove(terminal_plane.data(), terminal_plane.data() + 8 * plane_stride,
                     120 * plane_stride);
    });
}

void store_and_restore(benchmark::State& state) {
    run(state, places(100, 60), [](const Place& place) {
        select_graphics_planes();
        set_draw_area(place);
        store_area(menu_slot);
        restore_area(menu_slot);
    });
}

void store_and_restore_peer(benchmark::State& state) {
    std::array<std::uint32_t, 4 * 60> bits{};
    pixman_image_t* stored = pixman_image_create_bits(PIXMAN_a1, 100, 60, bits.data(), 16);
    pixman_image_t* plane = peer_image();
    run(state, places(100, 60), [=](const Place& place) {
        pixman_image_composite32(PIXMAN_OP_SRC, plane, nullptr, stored, place.x1, place.y1, 0, 0, 0,
                                 0, 100, 60);
        pixman_image_composite32(PIXMAN_OP_SRC, stored, nullptr, plane, 0, 0, 0, 0, place.x1,
                                 place.y1, 100, 60);
    });
    pixman_image_unref(plane);
    pixman_image_unref(stored);
}

BENCHMARK(scroll)->Name("scroll/8rows");
BENCHMARK(scroll_peer)->Name("scroll/8rows/peer");
BENCHMARK(store_and_restore)->Name("store_and_restore100x60");
BENCHMARK(store_and_restore_peer)->Name("store_and_restore100x60/peer");

// Composition into the display images; nobody paints.

void refresh(benchmark::State& state, int w, int h) {
    const std::vector<std::uint8_t> bytes = noise(graphics_planes.size());
    std::memcpy(graphics_planes.data(), bytes.data(), bytes.size());
    graphic_on = terminal_on = true;
    run(state, places(w, h),
        [](const Place& place) { refresh_rect(place.x1, place.y1, place.x2, place.y2); });
}

BENCHMARK_CAPTURE(refresh, whole, 240, 128)->Name("refresh/whole");
BENCHMARK_CAPTURE(refresh, box, 100, 60)->Name("refresh/100x60");
BENCHMARK_CAPTURE(refresh, cell, 8, 8)->Name("refresh/8x8");

}  // namespace
}  // namespace orvanel

BENCHMARK_MAIN();
