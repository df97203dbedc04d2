// fuzz_check.cpp: any image and any stream can be tried by `kit check`: it comes to an end, says
// the same each time, and says it in characters that a terminal only prints.

#include "base/bytes.h"
#include "firmware/store/ground/eeprom.h"
#include "firmware/store/ground/macro.h"
#include "kit/check.h"
#include "kit/stream.h"
#include "kit/trial.h"
#include "tests/fuzz/steps.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace orvanel {
namespace {

using Input = std::span<const std::uint8_t>;

void put_pair(Bytes& image, std::size_t at, std::size_t value) {
    image[at] = low8(static_cast<int>(value));
    image[at + 1] = low8(static_cast<int>(value >> 8));
}

/// Macros with their entries, of few numbers so that they start each other: table, number, length
/// and bytes, until a length is 0. Then single bytes, wherever: an address of two bytes and a
/// value.
Bytes image_from(Input input) {
    constexpr std::array kinds{Kind::power_on, Kind::normal, Kind::touch, Kind::menu};
    Bytes image(eeprom_small, erased_byte);
    std::size_t end = data_start;
    while (!input.empty()) {
        const std::uint8_t which = take(input);
        const std::size_t length = std::min<std::size_t>(take(input), input.size());
        if (length == 0) break;
        const auto entry = static_cast<std::size_t>(entry_at(kinds[which % 4], which / 4 % 4));
        put_pair(image, entry, end);
        put_pair(image, entry + 2, length);
        std::copy_n(input.begin(), length, image.begin() + static_cast<std::ptrdiff_t>(end));
        end += length;
        input = input.subspan(length);
    }
    put_pair(image, image_length_at, end);
    while (input.size() >= 3) {
        const std::uint8_t low = take(input);
        const std::size_t at = le16(low, take(input)) % image.size();
        image[at] = take(input);
    }
    return image;
}

void check_text(const std::vector<std::string>& findings) {
    constexpr std::size_t max_findings = 1001;
    check(findings.size() <= max_findings);
    for (const std::string& finding : findings)
        for (const char c : finding)
            check(static_cast<unsigned char>(c) >= ' ' && c != '\x7F');
}

std::vector<std::string> told_of(const Bytes& image, Input stream) {
    std::vector<std::string> told;
    for (const TrialFinding& found : try_image(image, stream))
        told.push_back(found.where + ": " + words_of(found.finding));
    return told;
}

}  // namespace
}  // namespace orvanel

/// The first byte says whether the rest makes an image or is a stream, and whether it is tried
/// twice.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvanel;
    Input input(data, size);
    const std::uint8_t choice = take(input);
    const bool is_stream = choice % 4 == 0;
    const Input stream = is_stream ? input : Input();
    const Bytes image = is_stream ? image_from_stream(stream, eeprom_small) : image_from(input);
    for (const ImageFinding& found : findings_of(image))
        check_text({found.finding.words});
    const std::vector<std::string> told = told_of(image, stream);
    check_text(told);
    if (choice >= 0xF0) check(told_of(image, stream) == told);
    return 0;
}
