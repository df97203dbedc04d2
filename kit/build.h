// build.h: from any file that holds a kit, an image or a stream to the image in memory.

#pragma once

#include "host/trace/source_map.h"
#include "kit/kit.h"

#include <cstdint>
#include <string>

namespace orvanel {

/// What the command line asks for over what the source says; -1 leaves it to the source.
struct BuildOptions {
    int length;         // of the image
    int crc;            // of the image
    int stream_length;  // bytes
};

struct Built {
    Kit kit;
    Bytes image;
    SourceMap map;  // of the image
};

/// Builds a kit source. With a fault the image is empty. Throws a Fault if the file can't be read.
Built build_kit(const std::string& path, const BuildOptions& options, const Progress& progress,
                Faults& faults);

/// The same from memory; files that it names are taken from the folder of `name`.
Built build_text(const std::string& name, std::string_view text, const BuildOptions& options,
                 const Progress& progress, Faults& faults);

struct Content {
    Bytes image;
    Bytes stream;     // of an .eep, or of a kit with lines around its blocks; else empty
    std::string cut;  // why it is no whole image, or hardly one at all; else empty
    SourceMap map;    // of a kit's image; else of nothing
};

/// What a file holds: a .kit is built, an .eep played, anything else but a text taken as the image
/// that it is. Throws a Fault if that can't be.
Content load_any(const std::string& path, const Progress& progress, Faults& faults);

}  // namespace orvanel
