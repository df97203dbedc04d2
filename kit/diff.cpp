#include "kit/diff.h"

#include "kit/commands.h"
#include "kit/objects.h"

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

namespace orvanel {

namespace {

using Image = std::span<const std::uint8_t>;
using ObjectMap = std::map<std::pair<Kind, int>, Object>;

ObjectMap map_of(Image image) {
    ObjectMap map;
    for (Object& object : objects_of(image))
        map.emplace(std::pair(object.kind, object.number), std::move(object));
    return map;
}

std::string line_of(Image image, const Object& object) {
    const std::string shape = shape_of(image, object);
    return title_of(object) + ": " + std::to_string(object.size) + " bytes" +
           (shape.empty() ? "" : ", " + shape);
}

/// The lines of both, without those that they begin and end with in common.
std::string macro_difference(Image before, Image after) {
    const std::vector<std::string> a = lines_from(before), b = lines_from(after);
    const auto [a_first, b_first] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
    auto a_last = a.end(), b_last = b.end();
    while (a_last != a_first && b_last != b_first && *(a_last - 1) == *(b_last - 1)) {
        --a_last;
        --b_last;
    }
    std::string text;
    for (auto line = a_first; line != a_last; ++line)
        text += "    - " + *line + "\n";
    for (auto line = b_first; line != b_last; ++line)
        text += "    + " + *line + "\n";
    return text;
}

std::string object_difference(Image before, const Object& a, Image after, const Object& b) {
    const auto a_bytes = bytes_of(before, a), b_bytes = bytes_of(after, b);
    if (std::equal(a_bytes.begin(), a_bytes.end(), b_bytes.begin(), b_bytes.end()) &&
        a.size == b.size) {
        if (a.offset == b.offset) return {};
        return title_of(a) + " has moved from " + hex4(a.offset) + " to " + hex4(b.offset) + "\n";
    }
    std::string text = title_of(a) + " differs\n";
    if (is_macro(a.kind) && a.fault.empty() && b.fault.empty())
        return text + macro_difference(a_bytes, b_bytes);
    return text + "    - " + line_of(before, a) + "\n    + " + line_of(after, b) + "\n";
}

/// Marks the bytes that tables and objects account for.
void mark_known(Image image, const ObjectMap& objects, std::vector<bool>& known) {
    const auto mark = [&known](int first, int count) {
        const std::ptrdiff_t end = std::min<std::ptrdiff_t>(first + count, std::ssize(known));
        if (first < end) std::fill(known.begin() + first, known.begin() + end, true);
    };
    for (const auto& [id, object] : objects) {
        mark(entry_at(object.kind, object.number), table_of(object.kind).entry_size);
        mark(object.offset, object.size);
    }
    mark(image_length_at, 2);
    if (const int length = pair_at(image, image_length_at); length != unprogrammed)
        mark(length, crc_size);
}

std::string other_bytes(Image before, Image after, const std::vector<bool>& known) {
    std::string text;
    const std::size_t size = std::max(before.size(), after.size());
    const auto at = [](Image image, std::size_t i) {
        return i < image.size() ? image[i] : erased_byte;
    };
    const auto differs = [&](std::size_t i) {
        return i < size && !known[i] && at(before, i) != at(after, i);
    };
    for (std::size_t i = 0; i < size; ++i) {
        if (!differs(i)) continue;
        const std::size_t first = i;
        while (differs(i))
            ++i;
        text += "bytes " + hex4(static_cast<int>(first)) + " to " + hex4(static_cast<int>(i) - 1) +
                " differ\n";
    }
    return text;
}

}  // namespace

std::string difference_of(Image before, Image after) {
    std::string text;
    const std::string a_summary = summary_of(before), b_summary = summary_of(after);
    if (a_summary != b_summary) text += "- " + a_summary + "\n+ " + b_summary + "\n";
    const ObjectMap a = map_of(before), b = map_of(after);
    ObjectMap both = a;
    both.insert(b.begin(), b.end());
    for (const auto& [id, object] : both) {
        const auto in_a = a.find(id), in_b = b.find(id);
        if (in_b == b.end())
            text += "- " + line_of(before, in_a->second) + "\n";
        else if (in_a == a.end())
            text += "+ " + line_of(after, in_b->second) + "\n";
        else
            text += object_difference(before, in_a->second, after, in_b->second);
    }
    std::vector<bool> known(std::max(before.size(), after.size()));
    mark_known(before, a, known);
    mark_known(after, b, known);
    return text + other_bytes(before, after, known);
}

}  // namespace orvanel
