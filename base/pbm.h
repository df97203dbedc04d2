// pbm.h: portable bitmaps (PBM, of the netpbm formats) in and out of memory.

#pragma once

#include "base/bytes.h"

#include <cstdint>
#include <span>
#include <string>

namespace orvanel {

struct PbmHead {
    bool text;                           // P1, dots as the digits 0 and 1; else P4, packed rows
    std::int64_t width, height;          // 0..1,000,000; more counts as that
    std::span<const std::uint8_t> rest;  // of the file, the white space before the dots included
};

/// Whether the file begins as a P1 or a P4.
bool is_pbm(std::span<const std::uint8_t> file);

/// Reads the head of such a file. The result is empty on success, else what is wrong with it.
std::string read_pbm_head(std::span<const std::uint8_t> file, PbmHead& head);

/// The dots after a head, whose size the caller has found bearable, as packed rows: the leftmost in
/// bit 7, a set one black. What follows them doesn't matter. The result is as above.
std::string read_pbm_rows(const PbmHead& head, Bytes& rows);

/// Such rows as a P4.
Bytes pbm_file(int width, int height, std::span<const std::uint8_t> rows);

}  // namespace orvanel
