// The main thread's side of platform.h, for tests that have no thread but their own.

#include "seam/platform.h"

namespace orvanel {

bool on_main_thread() { return true; }
void wake_main() {}
void paint_window(PixelRect /*rect*/) {}

}  // namespace orvanel
