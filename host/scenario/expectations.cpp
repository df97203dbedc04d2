#include "host/scenario/expectations.h"

#include "host/scenario/answers.h"
#include "host/scenario/comparison.h"
#include "host/scenario/report.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <vector>

namespace orvanel {

PictureOptions picture_options;

namespace {

bool is_missing(const std::string& path) {
    std::error_code ignored;
    return !std::filesystem::exists(path, ignored);
}

/// Whether the command line has the picture written instead of compared.
bool is_to_be_written(const std::string& path) {
    return picture_options.update || (picture_options.update_missing && is_missing(path));
}

/// Where a picture about the expected one goes: `golden/a.pbm` gives `golden/a.KIND.png`, or the
/// same name in the folder of the command line.
std::string path_beside(const std::string& path, const std::string& kind) {
    std::filesystem::path beside(path);
    beside.replace_extension(kind + ".png");
    if (picture_options.folder.empty()) return beside.string();
    std::error_code ignored;  // what is wrong with the folder shows when the picture is written
    std::filesystem::create_directories(picture_options.folder, ignored);
    return (std::filesystem::path(picture_options.folder) / beside.filename()).string();
}

/// A line for the report: the picture's path, or why it isn't there. The comparison has failed
/// already; a picture that can't be written makes it no worse.
std::string written_line(const std::string& path, const std::string& fault) {
    return "\n    " + path + (fault.empty() ? "" : " can't be written: " + fault);
}

std::string write_actual(const std::string& path, const BitPlane& actual) {
    const std::string beside = path_beside(path, ".actual");
    note_fault_file(beside);
    return written_line(beside, write_picture(beside, actual));
}

bool is_whole_glass(const ScreenPart& part) { return !part.inside && part.except.empty(); }

bool holds(const DrawArea& area, int x, int y) {
    return x >= area.x1 && x <= area.x2 && y >= area.y1 && y <= area.y2;
}

/// The expected picture where it is compared, and what the glass shows elsewhere.
BitPlane expected_part(const ScreenExpectation& expectation, const BitPlane& actual) {
    BitPlane expected = *expectation.dots;
    const ScreenPart& part = expectation.part;
    if (is_whole_glass(part)) return expected;
    for (int y = 0; y < screen_height; ++y)
        for (int x = 0; x < screen_width; ++x) {
            const bool compared = (!part.inside || holds(*part.inside, x, y)) &&
                                  std::ranges::none_of(part.except, [x, y](const DrawArea& area) {
                                      return holds(area, x, y);
                                  });
            if (!compared) plane_put(expected.data(), x, y, plane_get(actual.data(), x, y));
        }
    return expected;
}

}  // namespace

void report_answers(std::span<const std::uint8_t> expected, std::span<const std::uint8_t> actual,
                    const std::string& occasion) {
    report_fault(expectation_failed, occasion + explain_bytes(expected, actual));
}

void expect_answers(std::span<const std::uint8_t> expected) {
    const std::vector<std::uint8_t> actual = take_answers();
    if (!std::equal(expected.begin(), expected.end(), actual.begin(), actual.end()))
        report_answers(expected, actual, "other answers: ");
}

void expect_line(std::span<const std::uint8_t> expected) {
    const std::vector<std::uint8_t> actual = take_line_sent();
    if (!std::equal(expected.begin(), expected.end(), actual.begin(), actual.end()))
        report_answers(expected, actual, "other bytes on the line: ");
}

void save_screen(const std::string& path, Shown shown) {
    const std::string fault = write_picture(path, take_glass(shown));
    if (!fault.empty()) report_fault(wrong_line, "can't write " + path + ": " + fault);
}

bool load_expectation(ScreenExpectation& expectation) {
    BitPlane dots{};
    const std::string fault = read_picture(expectation.path, dots);
    if (fault.empty()) {
        expectation.dots = dots;
        return true;
    }
    if (is_to_be_written(expectation.path)) return true;
    const bool missing = is_missing(expectation.path);
    report_fault(
        expectation_failed,
        "nothing to compare with: " + expectation.path + ": " + fault +
            (missing ? " (--update-missing writes it); the glass shows" : "; the glass shows") +
            write_actual(expectation.path, take_glass(expectation.shown)));
    return false;
}

bool glass_shows(const ScreenExpectation& expectation) {
    if (!expectation.dots) return false;
    if (is_whole_glass(expectation.part)) return glass_is(*expectation.dots, expectation.shown);
    const BitPlane actual = take_glass(expectation.shown);
    return expected_part(expectation, actual) == actual;
}

void miss_screen(const ScreenExpectation& expectation, const std::string& occasion) {
    if (picture_options.update || !expectation.dots)
        return save_screen(expectation.path, expectation.shown);
    const BitPlane actual = take_glass(expectation.shown);
    const BitPlane expected = expected_part(expectation, actual);
    const Difference difference = compare_pictures(expected, actual);
    const std::string beside = path_beside(expectation.path, ".diff");
    note_fault_file(beside);
    report_fault(expectation_failed,
                 occasion + expectation.path + ": " +
                     explain_difference(difference, expected, actual) +
                     write_actual(expectation.path, actual) +
                     written_line(beside, write_difference(beside, expected, actual)));
}

void expect_screen(const std::string& path, Shown shown, const ScreenPart& part) {
    if (is_to_be_written(path)) return save_screen(path, shown);
    ScreenExpectation expectation{path, shown, part, {}};
    if (load_expectation(expectation) && !glass_shows(expectation))
        miss_screen(expectation, "another screen than ");
}

}  // namespace orvanel
