#include "kit/assess.h"

#include "base/nearest.h"
#include "base/quoting.h"
#include "kit/check.h"
#include "kit/trial.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace orvanel {

namespace {

SourcePlace heading_of(const SourceMap& map, Kind kind, int number) {
    const MappedItem* item = find_item(map, kind, number);
    if (item == nullptr) return {};
    return {map.files[static_cast<std::size_t>(item->file)], item->line, item->column};
}

std::vector<Assessment> found_in(const Content& content) {
    std::vector<Assessment> all;
    bool loops = false;
    for (ImageFinding& found : findings_of(content.image)) {
        loops = loops || found.finding.kind == FindingKind::starts_itself;
        all.push_back(
            {heading_of(content.map, found.kind, found.number), "", std::move(found.finding)});
    }
    for (TrialFinding& found : try_image(content.image, content.stream)) {
        // That what starts itself runs on and on is the same mistake.
        if (loops && found.finding.kind == FindingKind::endless) continue;
        if (found.place.file.empty())
            found.place = heading_of(content.map, found.kind, found.number);
        all.push_back({std::move(found.place), std::move(found.where), std::move(found.finding)});
    }
    return all;
}

std::string unused_words(const std::string& name) {
    std::vector<std::string_view> names;
    for (const FindingType& type : finding_types())
        names.push_back(type.name);
    if (std::find(names.begin(), names.end(), name) == names.end())
        return "nothing that is found has the name " + in_quotes(name) + is_it(name, names);
    return "nothing is found here that 'allow " + name + "' lets pass: remove the comment";
}

}  // namespace

std::vector<Assessment> assess(const Content& content) {
    const SourceMap& map = content.map;
    if (map.size > 0) note_kit(map, content.image);
    std::vector<Assessment> all = found_in(content);
    forget_places();
    std::vector<bool> used(map.allowed.size());
    std::erase_if(all, [&](const Assessment& a) {
        const int allow = a.place.line == 0 ? -1
                                            : find_allow(map, type_of(a.finding.kind).name,
                                                         a.place.file, a.place.line);
        if (allow >= 0) used[static_cast<std::size_t>(allow)] = true;
        return allow >= 0;
    });
    for (std::size_t i = 0; i < used.size(); ++i) {
        if (used[i]) continue;
        const MappedAllow& allow = map.allowed[i];
        Assessment& unused = all.emplace_back();  // g++ 12 warns of a temporary here at -O3
        unused.place = {map.files[static_cast<std::size_t>(allow.file)], allow.line, 1};
        unused.finding = {FindingKind::nothing_allowed, unused_words(allow.finding)};
    }
    return all;
}

std::string line_of(const Assessment& assessment, const std::string& file) {
    const SourcePlace& place = assessment.place;
    std::string line = place.file.empty() ? file : words_of(place);
    line += ": " + std::string(severity_of(assessment.finding)) + ": ";
    if (!assessment.where.empty()) line += assessment.where + ": ";
    return line + words_of(assessment.finding);
}

}  // namespace orvanel
