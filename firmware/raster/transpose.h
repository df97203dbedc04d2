// transpose.h: turning squares of dots over their diagonal, in words whose leftmost dot is bit 63.

#pragma once

#include <cstdint>

namespace orvanel {

/// In a square of 2 * distance dots, the upper right and the lower left quarter change places.
template <int distance> constexpr void swap_quarters(std::uint64_t& upper, std::uint64_t& lower) {
    constexpr std::uint64_t right = ~std::uint64_t{0} / ((std::uint64_t{1} << distance) + 1);
    const std::uint64_t differing = (upper ^ lower >> distance) & right;
    upper ^= differing;
    lower ^= differing << distance;
}

/// Transposes each square of 8 * distance dots in the eight words that lie `distance` apart from
/// `first` on, as 8 x 8 fields of distance x distance dots that stay upright. With a distance of 1
/// word i then has column 8 * n + i of the eight rows in byte n, the first row in its bit 7.
// The words stay in registers: written as loops, GCC 12 keeps them in memory and takes twice as
// long.
template <int distance> void transpose_eight(std::uint64_t* first) {
    std::uint64_t a = first[0], b = first[distance];
    std::uint64_t c = first[2 * distance], d = first[3 * distance];
    std::uint64_t e = first[4 * distance], f = first[5 * distance];
    std::uint64_t g = first[6 * distance], h = first[7 * distance];
    swap_quarters<4 * distance>(a, e);
    swap_quarters<4 * distance>(b, f);
    swap_quarters<4 * distance>(c, g);
    swap_quarters<4 * distance>(d, h);
    swap_quarters<2 * distance>(a, c);
    swap_quarters<2 * distance>(b, d);
    swap_quarters<2 * distance>(e, g);
    swap_quarters<2 * distance>(f, h);
    swap_quarters<distance>(a, b);
    swap_quarters<distance>(c, d);
    swap_quarters<distance>(e, f);
    swap_quarters<distance>(g, h);
    first[0] = a, first[distance] = b;
    first[2 * distance] = c, first[3 * distance] = d;
    first[4 * distance] = e, first[5 * distance] = f;
    first[6 * distance] = g, first[7 * distance] = h;
}

}  // namespace orvanel
