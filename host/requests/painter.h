// painter.h: how a drawing command waits for its rectangle to be painted. The firmware leaves the
// rectangle and a ticket in an atomic word and waits; the main thread paints, answers, and never
// waits for the firmware.

#pragma once

#include <cstdint>

namespace orvanel {

/// Says that the main thread paints from now on. The painter is sealed until then. Main thread,
/// before firmware_thread starts.
void open_painter();

/// Paints what firmware_thread has asked for, if it has. Called by
/// serve_main_requests on the main thread.
void serve_repaint();

/// Says that nothing will be painted any more: whoever waits goes on, and nobody waits ever after.
/// Main thread.
void seal_painter();

/// Rectangles painted for firmware_thread since the program started, modulo 2^31.
std::uint32_t paints_served();

}  // namespace orvanel
