#include "host/scenario/glass.h"

#include "host/reading/read.h"
#include "host/scenario/module_text.h"
#include "host/scenario/picture.h"

#include <algorithm>
#include <array>

namespace orvanel {

namespace {

constexpr int near_beside = 60, near_above = 20;  // dots
constexpr std::size_t max_texts_told = 20;

/// Dots between two ranges, 0 if they touch or overlap.
int gap_between(int first_from, int first_to, int second_from, int second_to) {
    return std::max({0, second_from - first_to - 1, first_from - second_to - 1});
}

int gap_along(const DrawArea& a, const DrawArea& b) { return gap_between(a.x1, a.x2, b.x1, b.x2); }
int gap_across(const DrawArea& a, const DrawArea& b) { return gap_between(a.y1, a.y2, b.y1, b.y2); }

bool overlap(const DrawArea& a, const DrawArea& b) {
    return a.x1 <= b.x2 && b.x1 <= a.x2 && a.y1 <= b.y2 && b.y1 <= a.y2;
}

/// The places of the text in one phase that are where they are to be, whole or not.
std::vector<TextPlace> places_of(const DotRows& glass, std::span<const std::uint8_t> codes,
                                 const TextWhere& where) {
    std::vector<TextPlace> places = find_text(glass, codes, where.inside.value_or(whole_screen));
    if (where.near.empty() || places.empty()) return places;
    const std::vector<TextPlace> anchors = find_text(glass, where.near, whole_screen);
    std::erase_if(places, [&](const TextPlace& place) {
        return std::ranges::none_of(
            anchors, [&](const TextPlace& anchor) { return is_near(place.area, anchor.area); });
    });
    return places;
}

std::vector<DotRows> glasses_of(const TextWhere& where) {
    if (!where.any_phase) return {present_glass()};
    return {rows_of(take_glass(Shown::main)), rows_of(take_glass(Shown::flash))};
}

}  // namespace

DotRows present_glass() { return rows_of(take_glass(Shown::present_phase)); }

bool is_near(const DrawArea& a, const DrawArea& b) {
    return gap_along(a, b) <= near_beside && gap_across(a, b) <= near_above;
}

int distance_between(const DrawArea& a, const DrawArea& b) {
    return gap_along(a, b) * gap_along(a, b) + gap_across(a, b) * gap_across(a, b);
}

bool shows_text(std::span<const std::uint8_t> codes, const TextWhere& where) {
    return std::ranges::any_of(glasses_of(where), [&](const DotRows& glass) {
        return std::ranges::any_of(places_of(glass, codes, where), [&](const TextPlace& place) {
            return !where.whole || !goes_on(glass, place);
        });
    });
}

std::string why_unread(std::span<const std::uint8_t> codes, const TextWhere& where) {
    const std::vector<DotRows> glasses = glasses_of(where);
    std::string message = module_text(codes) + " can't be read";
    std::vector<TextPlace> anchors;
    std::vector<std::string> texts;
    if (where.inside)
        message += " in " + std::to_string(where.inside->x1) + " " +
                   std::to_string(where.inside->y1) + " " + std::to_string(where.inside->x2) + " " +
                   std::to_string(where.inside->y2);
    if (!where.near.empty()) message += " near " + module_text(where.near);
    if (where.whole) message += " as a whole text";
    for (const DotRows& glass : glasses)
        for (const TextPlace& anchor : find_text(glass, where.near, whole_screen))
            anchors.push_back(anchor);
    const bool lost = !where.near.empty() && anchors.empty();
    if (lost) message += ", which itself can't be read";
    for (const DotRows& glass : glasses)
        for (const ReadText& text : read_texts(glass)) {
            const DrawArea& area = text.place.area;
            const bool looked_at =
                (!where.inside || overlap(area, *where.inside)) &&
                (anchors.empty() || std::ranges::any_of(anchors, [&](const TextPlace& anchor) {
                     return is_near(area, anchor.area);
                 }));
            const std::string told = module_text(text.codes);
            if (looked_at && std::ranges::find(texts, told) == texts.end()) texts.push_back(told);
        }
    if (texts.empty()) return message + "; nothing can be read there";
    message += "; what can be read there is ";
    for (std::size_t i = 0; i < texts.size() && i < max_texts_told; ++i)
        message += (i == 0 ? "" : ", ") + texts[i];
    return texts.size() > max_texts_told ? message + " and more" : message;
}

}  // namespace orvanel
