// findings.h: what is to be said of a stream, a kit or a scenario, in two degrees. A remark is what
// the module did other than asked, in silence; a hint is what is legal and probably not meant.

#pragma once

#include "firmware/core/ground/trace.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvanel {

enum class Degree : std::uint8_t { remark, hint };

/// The first are the module's own, each Remark of firmware/core/ground/trace.h (kind_of); here are
/// those of the line and of the host.
enum class FindingKind : std::uint8_t {
    bytes_lost = static_cast<std::uint8_t>(last_remark) + 1,
    frame_sum,
    frame_room,
    image_length,
    image_crc,
    object_unusable,
    objects_overlap,
    starts_itself,
    // Hints on a stream.
    number_took,
    number_skipped,
    digits,
    text_took,
    utf8,
    unfinished,
    text_unseen,
    label_alignment,
    opener_direction,
    text_off_glass,
    text_moved,
    label_outside,
    area_too_small,
    areas_overlap,
    no_code,
    same_code,
    wait_in_touch,
    press_on_nothing,
    // Hints on a scenario.
    no_question,
    same_screen,
    no_check,
    not_compared,
    unfetched,
    plain_on_frames,
    frame_on_plain,
    frame_cut,
    // Hints on a kit.
    unreached,
    endless,
    trial_cut,
    nothing_allowed,
};

constexpr FindingKind kind_of(Remark remark) { return static_cast<FindingKind>(remark); }

struct Finding {
    FindingKind kind;
    std::string words;  // what happened, and what to write instead where that can be said
};

struct FindingType {
    FindingKind kind;
    std::string_view name;  // in brackets after the words, and how it is allowed
    Degree degree;
};

/// All kinds, in their order: the remarks of the module first.
std::span<const FindingType> finding_types();

const FindingType& type_of(FindingKind kind);

inline bool is_remark(const Finding& finding) {
    return type_of(finding.kind).degree == Degree::remark;
}

/// The finding that a remark of the module is.
Finding finding_of(Remark remark, int from, int to);

/// `250 clamped to 239 [clamped]`
std::string words_of(const Finding& finding);

/// What is told of a step as a mistake: if the bytes are wrong, one line that begins with the
/// cause.
std::vector<Finding> told_together(const std::vector<Finding>& findings);

/// `warning` for a remark, `hint` for a hint: the word after a place in the form that editors and
/// CI servers read.
std::string_view severity_of(const Finding& finding);

}  // namespace orvanel
