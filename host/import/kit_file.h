// kit_file.h: files that the kit compiler understands, for whoever opens one in a module: pictures
// as PNG, and kits. Main thread.

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace orvanel {

/// Longer ones are refused, whatever they show.
constexpr std::size_t max_png_size = std::size_t{4} << 20;  // bytes

/// A PNG of at most 255 x 127 dots as a raw module bitmap (docs/reference/formats.md): what is
/// darker than middle gray is set, what is transparent clear. The result is empty on success, else
/// what is wrong with the file.
std::string png_bitmap(std::span<const std::uint8_t> file, std::vector<std::uint8_t>& bitmap);

/// Builds a kit into the stream that programs the module with it, and the trace knows it from then
/// on. The result is empty on success, else its first faults, each with its place, one a line.
std::string kit_stream(const std::string& path, std::vector<std::uint8_t>& stream);

/// Builds a kit into its image, and the size of the memory that it asks for; the trace knows it
/// from then on. Result as above.
std::string kit_image(const std::string& path, std::vector<std::uint8_t>& image, int& memory);

/// Every file that a build of the kit reads, itself included, as far as its faults let that be
/// known.
std::vector<std::string> kit_inputs(const std::string& path);

}  // namespace orvanel
