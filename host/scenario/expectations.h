// expectations.h: what a scenario expects of the module, and the reports where it is not met.
// A disappointment is a fault of status 1 and doesn't end the run.

#pragma once

#include "firmware/raster/planes.h"
#include "host/scenario/picture.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvanel {

/// What the command line says about pictures. Whoever sets it keeps the text alive.
struct PictureOptions {
    bool update;          // pictures are written instead of compared
    bool update_missing;  // the same where a file is missing
    std::string folder;   // for the pictures of failed comparisons; empty: beside the file
};
extern PictureOptions picture_options;

/// The part of the glass that is compared.
struct ScreenPart {
    std::optional<DrawArea> inside;  // none: the whole glass
    std::vector<DrawArea> except;    // left out, corners included
};

/// A picture that the glass is to show.
struct ScreenExpectation {
    std::string path;  // of the file that holds it
    Shown shown;
    ScreenPart part;
    std::optional<BitPlane> dots;  // none: there is no picture yet, and whatever shows is written
};

/// Takes all answers and compares.
void expect_answers(std::span<const std::uint8_t> expected);

/// The same with what has left on the simulated line.
void expect_line(std::span<const std::uint8_t> expected);

/// Writes what the glass shows to the file.
void save_screen(const std::string& path, Shown shown);

/// Compares with the file, or writes it, as picture_options say.
void expect_screen(const std::string& path, Shown shown, const ScreenPart& part);

/// Reads the picture. False, and reported, if there is none to compare with and none is to be
/// written.
bool load_expectation(ScreenExpectation& expectation);

/// Whether the glass shows it now.
bool glass_shows(const ScreenExpectation& expectation);

/// The glass shows something else in the end: writes that to the file if picture_options say so,
/// else reports it, in words, in characters and as pictures. `occasion` begins the report.
void miss_screen(const ScreenExpectation& expectation, const std::string& occasion);

/// Reports answers that aren't the expected ones.
void report_answers(std::span<const std::uint8_t> expected, std::span<const std::uint8_t> actual,
                    const std::string& occasion);

}  // namespace orvanel
