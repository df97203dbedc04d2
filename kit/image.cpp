#include "kit/image.h"

#include "base/bytes.h"
#include "base/hex.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace orvanel {

namespace {

constexpr int crc_filler_size = 2;  // bytes that bring the CRC to a wanted value

/// An image on its way.
struct Layout {
    const Kit* kit;
    Bytes image;
    std::vector<bool> patched;  // which bytes a [bytes] section has set
    std::vector<int> offsets;   // of each item
    int end;                    // after the last item
    Faults* faults;
};

/// The two bytes that bring a CRC from `crc` to `wanted`: sixteen steps of it, run backwards.
std::array<std::uint8_t, 2> bytes_for_crc(std::uint16_t crc, int wanted) {
    int before = wanted;
    for (int bit = 0; bit < 16; ++bit)
        before = (before & 1) != 0 ? (before ^ crc_polynomial) >> 1 | 0x8000 : before >> 1;
    const int bytes = before ^ crc;
    return {low8(bytes >> 8), low8(bytes)};
}

void put_pair(Bytes& image, int at, int value) {
    image[static_cast<std::size_t>(at)] = low8(value);
    image[static_cast<std::size_t>(at) + 1] = low8(value >> 8);
}

/// Gives each item with bytes of its own its place.
void place_items(Layout& layout) {
    int cursor = data_start;
    for (const Item& item : layout.kit->items) {
        const int offset = item.at >= 0 && item.same < 0 ? item.at : cursor;
        layout.offsets.push_back(offset);
        if (item.same >= 0) continue;
        if (offset < data_start)
            layout.faults->emplace_back(item.place, title_of(item) +
                                                        " lies in the tables, which end at " +
                                                        hex4(data_start));
        cursor = offset + static_cast<int>(item.bytes.size());
        layout.end = std::max(layout.end, cursor);
    }
}

void find_overlaps(const Layout& layout) {
    const std::vector<Item>& items = layout.kit->items;
    std::vector<std::size_t> order;
    for (std::size_t i = 0; i < items.size(); ++i)
        if (!items[i].bytes.empty()) order.push_back(i);
    std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        return std::pair(layout.offsets[a], a) < std::pair(layout.offsets[b], b);
    });
    for (std::size_t k = 1; k < order.size(); ++k) {
        const std::size_t before = order[k - 1], after = order[k];
        const int end = layout.offsets[before] + static_cast<int>(items[before].bytes.size());
        if (end > layout.offsets[after])
            layout.faults->emplace_back(
                items[after].place, title_of(items[after]) + " at " + hex4(layout.offsets[after]) +
                                        " overlaps " + title_of(items[before]) +
                                        ", which ends at " + hex4(end));
    }
}

void put_items(Layout& layout) {
    const Kit& kit = *layout.kit;
    for (std::size_t i = 0; i < kit.items.size(); ++i) {
        const Item& item = kit.items[i];
        const std::size_t owner = item.same < 0 ? i : static_cast<std::size_t>(item.same);
        const Bytes& bytes = kit.items[owner].bytes;
        const int entry = entry_at(item.kind, item.number);
        if (bytes.empty()) continue;  // an empty macro is one that isn't there
        put_pair(layout.image, entry, layout.offsets[owner]);
        if (is_macro(item.kind)) put_pair(layout.image, entry + 2, static_cast<int>(bytes.size()));
        if (owner == i)
            std::copy(bytes.begin(), bytes.end(), layout.image.begin() + layout.offsets[i]);
    }
}

void put_patches(Layout& layout) {
    for (const Patch& patch : layout.kit->patches) {
        if (patch.at + std::ssize(patch.bytes) > std::ssize(layout.image)) {
            layout.faults->emplace_back(patch.place, "these bytes reach beyond the EEPROM");
            continue;
        }
        std::copy(patch.bytes.begin(), patch.bytes.end(), layout.image.begin() + patch.at);
        std::fill_n(layout.patched.begin() + patch.at, patch.bytes.size(), true);
    }
}

/// The image's length, -1 if it can't be as wanted.
int choose_length(const Layout& layout) {
    const Kit& kit = *layout.kit;
    const int needed = layout.end + (kit.crc >= 0 ? crc_filler_size : 0);
    const Place place{kit.file, 0, 0};
    if (kit.length >= 0 && kit.length < needed) {
        layout.faults->emplace_back(
            place, "the image takes " + std::to_string(needed) +
                       " bytes, more than the wanted length of " + std::to_string(kit.length) +
                       (kit.crc >= 0 ? "; two of them are for the wanted CRC" : ""));
        return -1;
    }
    const int length = kit.length >= 0 ? kit.length : needed;
    if (length + crc_size > kit.memory) {
        layout.faults->emplace_back(place, "the image takes " + std::to_string(length + crc_size) +
                                               " bytes with its CRC, and the EEPROM has " +
                                               std::to_string(kit.memory));
        return -1;
    }
    return length;
}

/// Whether neither of the two bytes is a patch.
bool is_free(const Layout& layout, int at) {
    return !layout.patched[static_cast<std::size_t>(at)] &&
           !layout.patched[static_cast<std::size_t>(at) + 1];
}

void put_crc_filler(Layout& layout, int length) {
    const int at = length - crc_filler_size;
    if (!is_free(layout, at)) {
        layout.faults->push_back(
            Fault({layout.kit->file, 0, 0},
                  "a [bytes] section holds the two bytes in front of the CRC, which would bring it "
                  "to the wanted value"));
        return;
    }
    const auto before = std::span(layout.image).first(static_cast<std::size_t>(at));
    const auto filler = bytes_for_crc(crc_of(before), layout.kit->crc);
    std::copy(filler.begin(), filler.end(), layout.image.begin() + at);
}

}  // namespace

int pair_at(std::span<const std::uint8_t> bytes, int at) {
    const auto i = static_cast<std::size_t>(at);
    return le16(bytes[i], bytes[i + 1]);
}

void put_crc(Bytes& image) {
    const int length = pair_at(image, image_length_at);
    if (length == unprogrammed || length + crc_size > std::ssize(image)) return;
    put_pair(image, length, crc_of(std::span(image).first(static_cast<std::size_t>(length))));
}

std::string hex4(int value) { return "0x" + hex_digits(static_cast<std::uint32_t>(value), 4); }

LaidOut lay_out(const Kit& kit, Faults& faults) {
    const auto memory = static_cast<std::size_t>(kit.memory);
    Layout layout{&kit,   Bytes(memory, erased_byte), std::vector<bool>(memory), {}, data_start,
                  &faults};
    const std::size_t faults_before = faults.size();
    place_items(layout);
    find_overlaps(layout);
    const int length = choose_length(layout);
    if (faults.size() > faults_before) return {};
    put_items(layout);
    put_pair(layout.image, image_length_at, length);
    put_patches(layout);
    if (faults.size() > faults_before) return {};
    if (kit.crc >= 0) put_crc_filler(layout, length);
    // A [bytes] section may have given another length, or a CRC of its own.
    const int covered = pair_at(layout.image, image_length_at);
    if (covered + crc_size <= kit.memory && is_free(layout, covered)) put_crc(layout.image);
    return {std::move(layout.image), std::move(layout.offsets)};
}

}  // namespace orvanel
