#include "kit/dump.h"

#include "base/hex.h"
#include "firmware/store/ground/eeprom.h"
#include "kit/bdf.h"
#include "kit/commands.h"
#include "kit/objects.h"

#include <algorithm>
#include <array>

namespace orvanel {

namespace {

using Image = std::span<const std::uint8_t>;

constexpr std::size_t bytes_a_line = 32;
// A stretch of bytes goes on over so many that need not be there, rather than begin again.
constexpr std::size_t min_gap = 8;

/// A dump on its way, and the kit that it describes.
struct Dump {
    Image image;
    Kit kit;
    std::vector<DumpFile> files;
    std::string source;
    int cursor;  // where the next item of the source falls by itself
    // The CRC is right and lies after all items, so that build makes it again, and a right one for
    // whatever the user changes.
    bool crc_holds;
};

Bytes bytes_from(std::string_view text) { return {text.begin(), text.end()}; }

/// `picture-03.png`
std::string file_name(const Object& object, std::string_view part, std::string_view ending) {
    const std::string number = std::to_string(object.number);
    return std::string(kind_name(object.kind)) + (number.size() < 2 ? "-0" : "-") + number +
           std::string(part) + std::string(ending);
}

std::string codes_text(const Font& font) {
    return std::to_string(font.glyphs.begin()->first) + ".." +
           std::to_string(font.glyphs.rbegin()->first);
}

/// The settings of a font, whose BDF becomes a file; empty if a BDF can't stand for it.
std::string font_text(Dump& dump, const Object& object) {
    Font font;
    std::size_t size = 0;
    if (!read_font_bytes(bytes_of(dump.image, object), font, size)) return {};
    const std::string name = file_name(object, "", ".bdf");
    dump.files.push_back(
        {name, bytes_from(write_bdf(font, "font" + std::to_string(object.number)))});
    return "file = " + name + "\nrange = " + codes_text(font) +
           "\ngap = " + std::to_string(font.gap) + "\nwidth = " + std::to_string(font.cell_width) +
           "\nformat = " + std::to_string(font.format) + "\n";
}

std::string picture_text(Dump& dump, const Object& object) {
    PictureView view{};
    std::size_t size = 0;
    if (!read_picture_bytes(bytes_of(dump.image, object), view, size)) return {};
    const bool both = view.second.height > 0;
    const std::string name = file_name(object, both ? "-off" : "", ".png");
    dump.files.push_back({name, encode_png(gray_of(view.first))});
    if (!both) return "file = " + name + "\n";
    const std::string second = file_name(object, "-on", ".png");
    dump.files.push_back({second, encode_png(gray_of(view.second))});
    return "file = " + name + "\nsecond = " + second + "\n";
}

std::string macro_text(Dump& dump, const Object& object) {
    std::string text;
    for (const std::string& line : lines_from(bytes_of(dump.image, object)))
        text += line + "\n";
    return text;
}

std::string body_text(Dump& dump, const Object& object) {
    if (object.kind == Kind::font) return font_text(dump, object);
    if (object.kind == Kind::picture) return picture_text(dump, object);
    return macro_text(dump, object);
}

/// The index of an item that lies exactly where the object does and may share its bytes, -1 if
/// there is none.
int shared_with(const Kit& kit, const Object& object) {
    for (std::size_t i = 0; i < kit.items.size(); ++i) {
        const Item& item = kit.items[i];
        const bool like =
            item.kind == object.kind || (is_macro(item.kind) && is_macro(object.kind));
        if (like && item.same < 0 && item.at == object.offset &&
            std::ssize(item.bytes) == object.size)
            return static_cast<int>(i);
    }
    return -1;
}

/// Adds the object as an item, or leaves it to the bytes at the end of the source.
void add_object(Dump& dump, const Object& object) {
    Kit& kit = dump.kit;
    Item item{object.kind, object.number, {}, {}, object.offset, -1, {}, {}};
    const std::string heading = "\n[" + title_of(object) + "]\n";
    item.same = shared_with(kit, object);
    if (item.same >= 0) {
        dump.source +=
            heading + "same = " + title_of(kit.items[static_cast<std::size_t>(item.same)]) + "\n";
        kit.items.push_back(std::move(item));
        return;
    }
    // Objects come in the order of their places, so only the last one can be in the way.
    // Room for a CRC stays after it, wherever the image has its own.
    if (object.offset < dump.cursor ||
        object.offset + object.size + crc_size > std::ssize(dump.image))
        return;
    const std::string body = body_text(dump, object);
    if (body.empty()) return;
    dump.source += heading;
    if (object.offset != dump.cursor) dump.source += "at = " + hex4(object.offset) + "\n";
    dump.source += body;
    dump.cursor = object.offset + object.size;
    const auto bytes = bytes_of(dump.image, object);
    item.bytes.assign(bytes.begin(), bytes.end());
    kit.items.push_back(std::move(item));
}

/// The length as a setting, if the image's own fits what the items take; and whether its CRC holds.
void add_length(Dump& dump) {
    const int length = pair_at(dump.image, image_length_at);
    const bool sound = length >= dump.cursor && length + crc_size <= std::ssize(dump.image);
    // Else any length will do; the bytes at the end of the source put the real one in its place.
    dump.kit.length = sound ? length : -1;
    dump.crc_holds = sound && pair_at(dump.image, length) ==
                                  crc_of(dump.image.first(static_cast<std::size_t>(length)));
}

/// Takes the CRC as wanted where the image has been brought to it: two bytes in front of it that
/// belong to nothing, after an item or erased bytes. A longer stretch is somebody's bytes.
void add_crc(Dump& dump) {
    dump.kit.crc = -1;
    if (!dump.crc_holds || dump.kit.length < dump.cursor + 2) return;
    const auto filler = static_cast<std::size_t>(dump.kit.length - 2);
    const bool erased = dump.image[filler] == erased_byte && dump.image[filler + 1] == erased_byte;
    const bool alone = dump.kit.length - 2 == dump.cursor || dump.image[filler - 1] == erased_byte;
    if (!erased && alone) dump.kit.crc = pair_at(dump.image, dump.kit.length);
}

/// Adds the bytes of one stretch in which the kit's image differs from the wanted one.
void add_patches(Dump& dump, Image made, std::size_t first, std::size_t last) {
    const Image wanted = dump.image;
    for (std::size_t i = first; i < last; ++i) {
        if (wanted[i] == made[i]) continue;
        std::size_t end = i + 1;
        for (std::size_t k = end; k < last && k < end + min_gap; ++k)
            if (wanted[k] != made[k]) end = k + 1;
        const auto bytes = wanted.subspan(i, end - i);
        Patch& patch = dump.kit.patches.emplace_back();
        patch.at = static_cast<int>(i);
        patch.bytes.assign(bytes.begin(), bytes.end());
        i = end - 1;
    }
}

/// Adds all the bytes in which they differ, but for those that build computes.
void add_patches(Dump& dump, Image made) {
    if (!dump.crc_holds) return add_patches(dump, made, 0, made.size());
    const auto crc = static_cast<std::size_t>(dump.kit.length);
    add_patches(dump, made, 0, dump.kit.crc < 0 ? crc : crc - 2);
    add_patches(dump, made, crc + crc_size, made.size());
}

std::string patch_text(const Patch& patch) {
    std::string text = "\n[bytes " + hex4(patch.at) + "]\n";
    const std::span bytes(patch.bytes);
    for (std::size_t i = 0; i < bytes.size(); i += bytes_a_line)
        text += hex_of(bytes.subspan(i, std::min(bytes_a_line, bytes.size() - i)), " ") + "\n";
    return text;
}

}  // namespace

std::vector<DumpFile> dump_of(Image image, const std::string& name) {
    Dump dump{image, {}, {}, {}, data_start, false};
    dump.kit.memory = static_cast<int>(image.size());
    std::vector<Object> objects = objects_of(image);
    std::stable_sort(objects.begin(), objects.end(),
                     [](const Object& a, const Object& b) { return a.offset < b.offset; });
    for (const Object& object : objects)
        if (object.fault.empty()) add_object(dump, object);
    add_length(dump);
    add_crc(dump);
    // A patch can move the length, and with it the place of a CRC that then is to be put right too.
    Faults faults;
    for (Bytes made = lay_out(dump.kit, faults).image;
         !std::equal(made.begin(), made.end(), image.begin());
         made = lay_out(dump.kit, faults).image)
        add_patches(dump, made);
    for (const Patch& patch : dump.kit.patches)
        dump.source += patch_text(patch);
    std::string head = "kit 1\n; " + summary_of(image) +
                       "\n\n[image]\nmemory = " + std::to_string(image.size() / 1024) + "\n";
    const int needed = dump.cursor + (dump.kit.crc >= 0 ? 2 : 0);
    // The length that comes by itself is left out, so that the kit can grow.
    if (dump.kit.length > needed) head += "length = " + hex4(dump.kit.length) + "\n";
    if (dump.kit.crc >= 0)
        head += "crc = " + hex4(dump.kit.crc) + "  ; kept by the two bytes in front of it\n";
    dump.files.insert(dump.files.begin(), {name + ".kit", bytes_from(head + dump.source)});
    return dump.files;
}

}  // namespace orvanel
