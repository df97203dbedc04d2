#include "firmware/raster/planes.h"

namespace orvanel {

constinit PlaneSet graphics_planes{};
constinit BitPlane terminal_plane{};
constinit std::uint8_t* work_plane = graphics_planes.data();
constinit bool both_planes = true;

void select_graphics_planes() {
    work_plane = main_plane();
    both_planes = true;
}

void select_terminal_plane() {
    work_plane = terminal_plane.data();
    both_planes = false;
}

}  // namespace orvanel
