// demo.h: the demo that is built in: a command stream that programs the image of data/demo/demo.kit
// and starts it. Main thread.

#pragma once

namespace orvanel {

/// Feeds the demo stream from its start, in place of a running feed.
void start_demo_feed();

/// Whether the program's copy of the stream can be unpacked.
bool demo_is_whole();

}  // namespace orvanel
