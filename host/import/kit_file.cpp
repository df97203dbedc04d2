#include "host/import/kit_file.h"

#include "host/trace/places.h"
#include "kit/build.h"
#include "kit/dots.h"
#include "kit/stream.h"

#include <exception>
#include <functional>
#include <string_view>
#include <utility>

namespace orvanel {

namespace {

constexpr std::size_t max_faults_shown = 5;
constexpr int middle_gray = 50;  // percent of white

/// `folder` is the kit's, with its slash: who has opened it needs no path to it, five times over.
std::string text_of(Faults faults, std::string_view folder) {
    sort_by_place(faults);
    for (Fault& fault : faults)
        if (fault.place.file.starts_with(folder)) fault.place.file.erase(0, folder.size());
    std::string text;
    for (std::size_t i = 0; i < faults.size() && i < max_faults_shown; ++i)
        text += (i == 0 ? "" : "\n") + message_of(faults[i]);
    if (faults.size() > max_faults_shown)
        text += "\nand " + std::to_string(faults.size() - max_faults_shown) +
                " more, which orvanel42-kit build tells";
    return text;
}

/// Builds a kit, and has `use` take what it wants of it. Its first faults, each with its place.
std::string build(const std::string& path,
                  const std::function<void(const Built&, Faults& faults)>& use) {
    try {
        Faults faults;
        const Built built = build_kit(
            path, {-1, -1, -1}, [](const std::string&) {}, faults);
        if (faults.empty()) use(built, faults);
        const std::size_t name_at = path.rfind('/') + 1;  // 0 without a slash
        return text_of(std::move(faults), std::string_view(path).substr(0, name_at));
    } catch (const Fault& fault) {
        return message_of(fault);
    } catch (const std::exception& fault) {
        // The system has no memory left.
        return path + ": " + fault.what();
    }
}

}  // namespace

std::string png_bitmap(std::span<const std::uint8_t> file, std::vector<std::uint8_t>& bitmap) {
    GrayPicture picture{};
    std::string fault = decode_picture(file, picture);
    if (fault.empty()) bitmap = picture_bytes(by_threshold(picture, middle_gray), nullptr);
    return fault;
}

std::string kit_stream(const std::string& path, std::vector<std::uint8_t>& stream) {
    return build(path, [&stream](const Built& built, Faults& faults) {
        Bytes built_stream = stream_of(built.kit, built.image, faults);
        if (!faults.empty()) return;
        stream = std::move(built_stream);
        note_kit(built.map, built.image);
    });
}

std::string kit_image(const std::string& path, std::vector<std::uint8_t>& image, int& memory) {
    return build(path, [&image, &memory](const Built& built, Faults& /*faults*/) {
        image = built.image;
        memory = built.kit.memory;
        note_kit(built.map, built.image);
    });
}

std::vector<std::string> kit_inputs(const std::string& path) {
    try {
        Faults faults;
        const auto no_progress = [](const std::string&) {};
        return build_kit(path, {-1, -1, -1}, no_progress, faults).kit.inputs;
    } catch (const std::exception&) {
        // Who builds it for its own sake is told why that can't be.
        return {path};
    }
}

}  // namespace orvanel
