#include "host/import/picture_import.h"

#include "base/bmp.h"
#include "base/bytes.h"
#include "base/files.h"
#include "base/png.h"
#include "firmware/core/ground/draw_area.h"
#include "firmware/raster/blit.h"
#include "host/import/file_kind.h"
#include "host/import/kit_file.h"
#include "host/program/program_folder.h"
#include "host/trace/places.h"
#include "host/window/ground/boxes.h"
#include "host/window/ground/input.h"
#include "link/feeds/feeds.h"
#include "seam/host_calls.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>
#include <vector>

namespace orvanel {

namespace {

constexpr int head_size = 5;  // ESC U L x y
constexpr int bitmap_head_size = 2;
constexpr std::size_t command_size = 4000;
static_assert(head_size + bitmap_head_size + screen_height * stride_of(screen_width) <=
              static_cast<int>(command_size));

// Where the two colours stand after the usual head; a longer one isn't reckoned with.
constexpr std::size_t bmp_colour_0 = bmp_file_head + bmp_usual_head,
                      bmp_colour_1 = bmp_colour_0 + 4;

constinit std::array<std::array<std::uint8_t, command_size>, 2> commands{};
constinit std::size_t made = 0;                      // the other one may be in a feed
constinit std::vector<std::uint8_t> built_stream{};  // of a kit; it may be in a feed

void picture_error(std::string_view text) { show_message("Error: HD Orvanel42 simulator", text); }

void too_big() {
    picture_error("The Picture is to big (max. " + std::to_string(screen_width) + "x" +
                  std::to_string(screen_height) + " dots) !");
}

/// The sum of blue, green and red: which of two colours is the darker one.
std::uint32_t brightness(std::uint32_t colour) {
    return (colour >> 16) + (colour >> 8 & 0xFF) + (colour & 0xFF);
}

/// Why a file that begins as a BMP is refused, empty if it isn't.
bool bmp_refused(const BmpHead& head, std::size_t file_size) {
    // A negative height, which means top row first, is none that fits either.
    const auto fits = [](int side, int max) { return side >= 0 && side <= max; };
    if (head.bits > 1)
        picture_error("This is not a monochrome Picture !");
    else if (head.file_size != file_size)
        picture_error("Picturefilelength is false!");
    else if (!fits(head.width, screen_width) || !fits(head.height, screen_height))
        too_big();
    else if (head.compression != 0)
        picture_error("Only uncompressed Pictures are allowed !");
    else
        return false;
    return true;
}

/// Makes the raw module bitmap from a BMP that isn't refused: dark pixels become set dots, whatever
/// the order of the two colours. What the file doesn't hold stays clear.
void bmp_convert(std::span<const std::uint8_t> file, const BmpHead& head,
                 std::span<std::uint8_t> target) {
    const bool inverted =
        brightness(bmp_colour(file, bmp_colour_1)) < brightness(bmp_colour(file, bmp_colour_0));
    target[0] = low8(head.width);
    target[1] = low8(head.height);
    for (int y = 0; y < head.height; ++y)
        for (int x = 0; x < head.width; ++x) {
            const auto at = static_cast<std::size_t>(bmp_row_at(head, y) + x / 8);
            if (at >= file.size()) continue;
            const int mask = 0x80 >> (x & 7);
            const bool bit = ((file[at] & mask) != 0) != inverted;
            const int to = bitmap_head_size + y * stride_of(head.width) + x / 8;
            std::uint8_t& dots = target[static_cast<std::size_t>(to)];
            if (!bit) dots = low8(dots | mask);
        }
}

/// Moves the picture left and up until it touches the edges that it stuck out of.
void keep_on_glass(std::span<std::uint8_t> command) {
    const int w = command[head_size];
    const int h = command[head_size + 1];
    if (command[3] + w > screen_width) command[3] = low8(screen_width - w);
    if (command[4] + h > screen_height) command[4] = low8(screen_height - h);
}

int bitmap_size(int width, int height) { return stride_of(width) * height + bitmap_head_size; }

/// False if a message said why the picture was refused.
bool png_convert(std::span<const std::uint8_t> file, std::span<std::uint8_t> target) {
    const auto [width, height] = png_size(file);
    if (width > screen_width || height > screen_height) {
        too_big();
        return false;
    }
    std::vector<std::uint8_t> bitmap;
    const std::string fault = png_bitmap(file, bitmap);
    if (!fault.empty()) picture_error("This file " + fault + "; save the picture as a PNG again");
    std::copy(bitmap.begin(), bitmap.end(), target.begin());
    return fault.empty();
}

/// The raw module bitmap of a picture, in `target`. The result is as that of picture_convert.
int convert(std::span<const std::uint8_t> file, std::span<std::uint8_t> target) {
    const auto start = file.first(std::min(file.size(), picture_file_size));
    if (start.size() < bitmap_head_size) return -1;
    const int length = static_cast<int>(start.size());
    if (bitmap_size(start[0], start[1]) == length) {
        if (start[0] > screen_width || start[1] > screen_height) {
            too_big();
            return 0;
        }
        std::copy(start.begin(), start.end(), target.begin());
        return length;
    }
    if (is_png(start)) {
        if (!png_convert(file, target)) return 0;
    } else {
        if (start[0] != 'B' || start[1] != 'M') return -1;
        BmpHead head = bmp_head(start);
        if (bmp_refused(head, start.size())) return 0;
        head.bits = 1;  // 0 passes for it
        bmp_convert(start, head, target);
    }
    return bitmap_size(target[0], target[1]);
}

/// Feeds the stream that programs the module with a kit.
void open_kit(const std::string& path) {
    std::vector<std::uint8_t> stream;
    std::string fault = kit_stream(path, stream);
    if (fault.empty()) fault = keep_former_image();
    if (!fault.empty()) return picture_error(fault);
    start_feed_memory(stream);
    note_feed(feed_number(), path, false, acting_scenario_line());
    built_stream = std::move(stream);
}

void open_other(const std::string& path) {
    if (!unreadable(path).empty()) return;
    switch (kind_of_file(path)) {
    case FileKind::kit:
        return open_kit(path);
    case FileKind::scenario:
        return picture_error(scenario_refusal(path));
    case FileKind::png:
    case FileKind::bmp:
    case FileKind::other:
        start_feed_of(path);
        note_feed(feed_number(), path, true, acting_scenario_line());
    }
}

}  // namespace

int picture_convert(std::span<const std::uint8_t> file, std::uint8_t x, std::uint8_t y) {
    auto& command = commands[made];
    command = {0x1B, 'U', 'L', x, y};
    const int length = convert(file, std::span(command).subspan(head_size));
    if (length <= 0) return length;
    keep_on_glass(command);
    return length + head_size;
}

int picture_load(std::string_view path, std::uint8_t x, std::uint8_t y) {
    const std::string name(path);
    std::vector<std::uint8_t> file;
    if (!read_file_start(name, picture_file_size, file).empty()) return 0;
    if (is_png(file) && !read_file_start(name, max_png_size, file).empty()) return 0;
    return picture_convert(file, x, y);
}

std::span<const std::uint8_t> picture_command() { return commands[made]; }

void open_feed(std::string_view path, int x, int y) {
    const std::string_view name = unquoted(path);
    const int length = picture_load(name, low8(x), low8(y));
    if (length < 0) open_other(std::string(name));
    if (length <= 0) return;
    start_feed_memory(std::span(commands[made]).first(static_cast<std::size_t>(length)));
    note_feed(feed_number(), std::string(name), false, acting_scenario_line());
    made = 1 - made;
}

void drop_file(std::string_view path, int px, int py) {
    if (postpone([path = std::string(path), px, py] { drop_file(path, px, py); })) return;
    if (feed_left() > 0) return;
    if (!glass_hit(px, py)) return open_feed(path, 0, 0);
    const ModuleDot dot = glass_to_module(px, py);
    open_feed(path, dot.x + 1, dot.y + 1);
}

}  // namespace orvanel
