#include "kit/check.h"

#include "kit/forms.h"
#include "kit/objects.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace orvanel {

namespace {

using ItemId = std::pair<Kind, int>;
constexpr ItemId no_item{Kind::number, -1};

void add(std::vector<ImageFinding>& findings, FindingKind kind, std::string words,
         const ItemId& item = no_item) {
    findings.push_back({{kind, std::move(words)}, item.first, item.second});
}

/// The macros that a macro starts at once; those that a timer starts are no part of it.
std::vector<ItemId> starts_of(std::span<const std::uint8_t> macro) {
    std::vector<ItemId> starts;
    while (!macro.empty()) {
        const bool command = macro[0] == lead_in_esc || macro[0] == lead_in_hash;
        const std::optional<Parsed> parsed = command ? parse_command(macro) : std::nullopt;
        if (command && !parsed) break;
        if (parsed && parsed->form != nullptr && parsed->form->group == 'M') {
            const int number = parsed->params[0];
            if (parsed->form->op == 'N') starts.emplace_back(Kind::normal, number);
            if (parsed->form->op == 'T') starts.emplace_back(Kind::touch, number);
            if (parsed->form->op == 'M') starts.emplace_back(Kind::menu, number);
        }
        macro = macro.subspan(parsed ? parsed->size : 1);
    }
    return starts;
}

using StartGraph = std::map<ItemId, std::vector<ItemId>>;

/// The shortest way from a macro back to itself; empty if there is none.
std::vector<ItemId> way_back(const StartGraph& graph, const ItemId& from) {
    std::map<ItemId, ItemId> reached_from;
    std::vector<ItemId> queue{from};
    for (std::size_t i = 0; i < queue.size(); ++i) {
        const auto found = graph.find(queue[i]);
        if (found == graph.end()) continue;
        for (const ItemId& next : found->second) {
            if (next == from) {
                std::vector<ItemId> way{from};
                for (ItemId at = queue[i]; at != from; at = reached_from.at(at))
                    way.push_back(at);
                std::reverse(way.begin() + 1, way.end());
                return way;
            }
            if (reached_from.emplace(next, queue[i]).second) queue.push_back(next);
        }
    }
    return {};
}

std::string title_of(const ItemId& macro) {
    return std::string(kind_name(macro.first)) + " " + std::to_string(macro.second);
}

void find_loops(std::span<const std::uint8_t> image, const std::vector<Object>& objects,
                std::vector<ImageFinding>& findings) {
    StartGraph graph;
    for (const Object& object : objects)
        if (is_macro(object.kind) && object.fault.empty())
            graph[{object.kind, object.number}] = starts_of(bytes_of(image, object));
    std::set<ItemId> reported;  // in a ring that has been reported
    for (const auto& [macro, starts] : graph) {
        if (reported.contains(macro)) continue;
        const std::vector<ItemId> way = way_back(graph, macro);
        if (way.empty()) continue;
        reported.insert(way.begin(), way.end());
        std::string text = title_of(macro) + " starts itself";
        for (std::size_t i = 1; i < way.size(); ++i)
            text += (i == 1 ? ", by way of " : ", ") + title_of(way[i]);
        add(findings, FindingKind::starts_itself, text, macro);
    }
}

/// A stretch of the image, and whose it is.
struct Stretch {
    int first, end;
    std::string title;
    ItemId item;
};

void find_overlaps(const std::vector<Object>& objects, int crc_at,
                   std::vector<ImageFinding>& findings) {
    std::vector<Stretch> stretches;
    for (const Object& object : objects)
        if (object.fault.empty())
            stretches.push_back({object.offset,
                                 object.offset + object.size,
                                 title_of(object),
                                 {object.kind, object.number}});
    if (crc_at >= 0) stretches.push_back({crc_at, crc_at + crc_size, "the CRC", no_item});
    std::stable_sort(stretches.begin(), stretches.end(), [](const Stretch& a, const Stretch& b) {
        return std::pair(a.first, a.end) < std::pair(b.first, b.end);
    });
    const Stretch* farthest = nullptr;
    for (const Stretch& stretch : stretches) {
        // Two entries for the same bytes share them on purpose.
        const bool shared =
            farthest != nullptr && stretch.first == farthest->first && stretch.end == farthest->end;
        if (farthest != nullptr && stretch.first < farthest->end && !shared)
            add(findings, FindingKind::objects_overlap,
                stretch.title + " at " + hex4(stretch.first) + " overlaps " + farthest->title +
                    ", which ends at " + hex4(farthest->end),
                stretch.item);
        if (farthest == nullptr || stretch.end > farthest->end) farthest = &stretch;
    }
}

}  // namespace

std::vector<ImageFinding> findings_of(std::span<const std::uint8_t> image) {
    std::vector<ImageFinding> findings;
    const int length = pair_at(image, image_length_at);
    const bool has_crc = length != unprogrammed && length + crc_size <= std::ssize(image);
    if (length == unprogrammed) {
        add(findings, FindingKind::image_length,
            "the image is not programmed: its length is 0xFFFF");
    } else if (!has_crc) {
        add(findings, FindingKind::image_length,
            "the image is overfull: its length and CRC end at " +
                std::to_string(length + crc_size) + ", and the EEPROM has " +
                std::to_string(image.size()) + " bytes");
    } else {
        const int stored = pair_at(image, length);
        const int computed = crc_of(image.first(static_cast<std::size_t>(length)));
        if (stored != computed)
            add(findings, FindingKind::image_crc,
                "the CRC is " + hex4(stored) + " and should be " + hex4(computed));
    }
    const std::vector<Object> objects = objects_of(image);
    for (const Object& object : objects) {
        const ItemId item{object.kind, object.number};
        if (!object.fault.empty())
            add(findings, FindingKind::object_unusable,
                title_of(object) + " is unusable: " + object.fault, item);
        else if (has_crc && object.offset + object.size > length + crc_size)
            add(findings, FindingKind::object_unusable,
                title_of(object) + " ends at " + hex4(object.offset + object.size) +
                    ", behind the length that the CRC covers",
                item);
    }
    find_overlaps(objects, has_crc ? length : -1, findings);
    find_loops(image, objects, findings);
    return findings;
}

}  // namespace orvanel
