// objects.h: what the tables of an image name, and how messages call it.

#pragma once

#include "kit/image.h"

#include <span>
#include <string>
#include <vector>

namespace orvanel {

/// A font, picture or macro of an image.
struct Object {
    Kind kind;
    int number;
    int offset;         // in the image
    int size;           // bytes as far as it is known, also beyond the image's end
    std::string fault;  // why it is none, empty if it is one
};

/// All entries of the tables that aren't empty, in the order of the tables.
std::vector<Object> objects_of(std::span<const std::uint8_t> image);

/// The part of an object that lies in the image.
std::span<const std::uint8_t> bytes_of(std::span<const std::uint8_t> image, const Object& object);

/// `normal macro 5`
std::string title_of(const Object& object);

/// Its shape: codes and dots of a font, dots of a picture, bytes of a macro.
std::string shape_of(std::span<const std::uint8_t> image, const Object& object);

/// The first line of a listing: size, length and CRC.
std::string summary_of(std::span<const std::uint8_t> image);

/// Why the bytes are hardly an image at all, empty if they may be one.
std::string doubt_about(std::span<const std::uint8_t> image);

/// The whole image in words: the summary, a line for each object, the lines of each macro.
std::string listing_of(std::span<const std::uint8_t> image);

}  // namespace orvanel
