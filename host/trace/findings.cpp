#include "host/trace/findings.h"

#include "host/trace/remarks.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace orvanel {

namespace {

constexpr Degree remark_degree = Degree::remark, hint_degree = Degree::hint;

constexpr std::array types{
    FindingType{kind_of(Remark::clamped), "clamped", remark_degree},
    FindingType{kind_of(Remark::wrapped), "wrapped", remark_degree},
    FindingType{kind_of(Remark::sign_dropped), "sign", remark_degree},
    FindingType{kind_of(Remark::undefined_group), "no-group", remark_degree},
    FindingType{kind_of(Remark::undefined_op), "no-command", remark_degree},
    FindingType{kind_of(Remark::missing_font), "no-font", remark_degree},
    FindingType{kind_of(Remark::missing_glyph), "no-glyph", remark_degree},
    FindingType{kind_of(Remark::missing_picture), "no-picture", remark_degree},
    FindingType{kind_of(Remark::missing_border), "no-border", remark_degree},
    FindingType{kind_of(Remark::missing_macro), "no-macro", remark_degree},
    FindingType{kind_of(Remark::missing_bar), "no-bar", remark_degree},
    FindingType{kind_of(Remark::missing_process), "no-process", remark_degree},
    FindingType{kind_of(Remark::macros_nested), "too-deep", remark_degree},
    FindingType{kind_of(Remark::text_cut), "text-cut", remark_degree},
    FindingType{kind_of(Remark::picture_cut), "picture-cut", remark_degree},
    FindingType{kind_of(Remark::menus_full), "menus-full", remark_degree},
    FindingType{kind_of(Remark::areas_full), "areas-full", remark_degree},
    FindingType{kind_of(Remark::wrong_crc), "wrong-crc", remark_degree},
    FindingType{kind_of(Remark::eeprom_overflow), "eeprom-full", remark_degree},
    FindingType{kind_of(Remark::answer_dropped), "answer-dropped", remark_degree},
    FindingType{FindingKind::bytes_lost, "bytes-lost", remark_degree},
    FindingType{FindingKind::frame_sum, "frame-sum", remark_degree},
    FindingType{FindingKind::frame_room, "frame-room", remark_degree},
    FindingType{FindingKind::image_length, "length", remark_degree},
    FindingType{FindingKind::image_crc, "crc", remark_degree},
    FindingType{FindingKind::object_unusable, "unusable", remark_degree},
    FindingType{FindingKind::objects_overlap, "objects-overlap", remark_degree},
    FindingType{FindingKind::starts_itself, "starts-itself", remark_degree},
    FindingType{FindingKind::number_took, "number-took", hint_degree},
    FindingType{FindingKind::number_skipped, "skipped", hint_degree},
    FindingType{FindingKind::digits, "digits", hint_degree},
    FindingType{FindingKind::text_took, "text-took", hint_degree},
    FindingType{FindingKind::utf8, "unicode", hint_degree},
    FindingType{FindingKind::unfinished, "unfinished", hint_degree},
    FindingType{FindingKind::text_unseen, "unseen", hint_degree},
    FindingType{FindingKind::label_alignment, "alignment", hint_degree},
    FindingType{FindingKind::opener_direction, "direction", hint_degree},
    FindingType{FindingKind::text_off_glass, "off-glass", hint_degree},
    FindingType{FindingKind::text_moved, "moved", hint_degree},
    FindingType{FindingKind::label_outside, "label", hint_degree},
    FindingType{FindingKind::area_too_small, "small-area", hint_degree},
    FindingType{FindingKind::areas_overlap, "overlap", hint_degree},
    FindingType{FindingKind::no_code, "no-code", hint_degree},
    FindingType{FindingKind::same_code, "same-code", hint_degree},
    FindingType{FindingKind::wait_in_touch, "wait", hint_degree},
    FindingType{FindingKind::press_on_nothing, "nothing-there", hint_degree},
    FindingType{FindingKind::no_question, "no-question", hint_degree},
    FindingType{FindingKind::same_screen, "same-screen", hint_degree},
    FindingType{FindingKind::no_check, "no-check", hint_degree},
    FindingType{FindingKind::not_compared, "not-compared", hint_degree},
    FindingType{FindingKind::unfetched, "unfetched", hint_degree},
    FindingType{FindingKind::plain_on_frames, "plain-bytes", hint_degree},
    FindingType{FindingKind::frame_on_plain, "frame-on-plain", hint_degree},
    FindingType{FindingKind::frame_cut, "frame-cut", hint_degree},
    FindingType{FindingKind::unreached, "unreached", hint_degree},
    FindingType{FindingKind::endless, "endless", hint_degree},
    FindingType{FindingKind::trial_cut, "trial-cut", hint_degree},
    FindingType{FindingKind::nothing_allowed, "nothing-allowed", hint_degree},
};

constexpr bool in_order() {
    for (std::size_t i = 0; i < types.size(); ++i)
        if (static_cast<std::size_t>(types[i].kind) != i) return false;
    return true;
}
static_assert(in_order());

/// Whether it is about the bytes, of which all else that is found follows.
bool is_cause(const Finding& finding) {
    return finding.kind == FindingKind::number_took ||
           finding.kind == FindingKind::number_skipped || finding.kind == FindingKind::digits ||
           finding.kind == FindingKind::text_took || finding.kind == FindingKind::utf8;
}

}  // namespace

std::span<const FindingType> finding_types() { return types; }

const FindingType& type_of(FindingKind kind) { return types[static_cast<std::size_t>(kind)]; }

Finding finding_of(Remark remark, int from, int to) {
    return {kind_of(remark), words_of(remark, from, to)};
}

std::string words_of(const Finding& finding) {
    return finding.words + " [" + std::string(type_of(finding.kind).name) + ']';
}

std::vector<Finding> told_together(const std::vector<Finding>& findings) {
    const auto cause = std::find_if(findings.begin(), findings.end(), is_cause);
    if (cause == findings.end()) return findings;
    std::vector<Finding> told{*cause};
    for (const Finding& finding : findings) {
        if (is_cause(finding)) continue;
        // A remark stays one: it makes a run fail that hints don't.
        if (!is_remark(finding)) continue;
        Finding& first = told.front();
        first = {finding.kind, words_of(first) + "; " + finding.words};
    }
    return told;
}

std::string_view severity_of(const Finding& finding) {
    return is_remark(finding) ? "warning" : "hint";
}

}  // namespace orvanel
