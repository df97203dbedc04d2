#include "kit/build.h"

#include "base/files.h"
#include "base/png.h"
#include "firmware/store/ground/eeprom.h"
#include "kit/code_page.h"
#include "kit/image.h"
#include "kit/map.h"
#include "kit/objects.h"
#include "kit/stream.h"

#include <algorithm>

namespace orvanel {

namespace {

constexpr std::size_t max_stream_bytes = std::size_t{16} << 20;  // bytes of a file

Built build_lines(const std::string& name, const std::vector<SourceLine>& lines,
                  const BuildOptions& options, const Progress& progress, Faults& faults) {
    Built built{read_kit(name, lines, progress, faults), {}, {}};
    if (options.length >= 0) built.kit.length = options.length;
    if (options.crc >= 0) built.kit.crc = options.crc;
    if (options.stream_length >= 0) built.kit.stream.length = options.stream_length;
    if (!faults.empty()) return built;
    LaidOut laid_out = lay_out(built.kit, faults);
    if (!faults.empty()) return built;
    built.map = map_of(built.kit, laid_out);
    built.image = std::move(laid_out.image);
    return built;
}

/// The smaller of the two memories if that holds all that a stream writes.
Bytes play_stream(const Bytes& stream) {
    Bytes image = image_from_stream(stream, eeprom_large);
    const auto beyond = image.begin() + eeprom_small;
    const bool small =
        std::all_of(beyond, image.end(), [](std::uint8_t byte) { return byte == 0xFF; });
    if (small) image.resize(eeprom_small);
    return image;
}

/// Whether the bytes are text, which no image is: it has zeros, and 0xFF where it is erased.
bool is_text(const Bytes& content) {
    std::string_view rest(reinterpret_cast<const char*>(content.data()), content.size());
    while (!rest.empty()) {
        const int character = take_character(rest);
        const bool blank = character >= '\t' && character <= '\r';
        if (character < 0 || (character < ' ' && !blank && character != '\x1B')) return false;
    }
    return !content.empty();
}

/// Of an image that a file of `size` bytes begins.
std::string cut_of(const Bytes& image, std::size_t size) {
    const int end = pair_at(image, image_length_at) + crc_size;  // after the CRC
    if (size >= image.size() || end - 2 == unprogrammed || end <= static_cast<int>(size)) return {};
    return "the file ends at " + std::to_string(size) + ", its image with its CRC at " +
           std::to_string(end);
}

}  // namespace

Built build_kit(const std::string& path, const BuildOptions& options, const Progress& progress,
                Faults& faults) {
    return build_lines(path, read_source(path, faults), options, progress, faults);
}

Built build_text(const std::string& name, std::string_view text, const BuildOptions& options,
                 const Progress& progress, Faults& faults) {
    return build_lines(name, lines_of(name, text, faults), options, progress, faults);
}

Content load_any(const std::string& path, const Progress& progress, Faults& faults) {
    if (ends_in(path, ".kit")) {
        const Built built = build_kit(path, {-1, -1, -1}, progress, faults);
        const StreamPlan& plan = built.kit.stream;
        const bool talks = !plan.before.empty() || !plan.after_block.empty() || !plan.after.empty();
        if (!faults.empty() || !talks) return {built.image, {}, {}, built.map};
        return {built.image, stream_of(built.kit, built.image, faults), {}, built.map};
    }
    Bytes content;
    const bool stream = ends_in(path, ".eep");
    const std::string fault =
        read_file(path, stream ? max_stream_bytes : std::size_t{eeprom_large}, content);
    if (!fault.empty()) throw Fault({path, 0, 0}, fault);
    if (stream) return {play_stream(content), content, {}, {}};
    if (is_png(content))
        throw Fault({path, 0, 0}, "is a picture, and no image; a kit takes it by 'file' in a "
                                  "section [picture]");
    if (is_text(content))
        throw Fault({path, 0, 0},
                    "is a text, and no image; the name of a kit ends in .kit, that of a "
                    "stream in .eep");
    // What a short file leaves out is erased.
    const std::size_t size = content.size();
    content.resize(size > eeprom_small ? eeprom_large : eeprom_small, 0xFF);
    const std::string doubt = doubt_about(content);
    return {content, {}, doubt.empty() ? cut_of(content, size) : doubt, {}};
}

}  // namespace orvanel
