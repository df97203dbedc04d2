// start.h: the order of a start, for every program with a window, on a screen or in memory. Main
// thread.
//
// An end is the other way round: the threads and the port (stop_module, where threads run), the
// feed, the window, then image and settings (save_program_folder).

#pragma once

#include <string>

namespace orvanel {

/// What the command line says of a start: empty, or 0, where it says nothing.
struct StartOptions {
    std::string folder{};  // to live in; without one nothing is kept
    std::string image{};   // the file of an EEPROM image, without a folder
    std::string map{};     // the file of that image's map
    std::string kit{};     // the file of a kit to take the image from, without folder and image
    int mem_kib = 0;       // 32 or 64, without a folder
    std::string serial{};  // what stands at COM1
    std::string protocol{};
};

/// First, before there is a window: settings and image, then what is spoken on the line and what
/// stands at its ports. Empty on success, else what can't be read, and the program ends.
std::string load_start(const StartOptions& options);

/// A program's own part in the rest of a start, each step in its turn.
struct StartSteps {
    void (*make_window)();
    void (*show_window)();
    std::string (*open_port)(const std::string& serial);  // empty, or why it can't go on
    void (*start_timers)();
    void (*start_threads)();
};

/// Then the view is prepared, the window made, dressed and shown, the port opened, the timers and
/// the threads started, and the window furnished with `file` (program_life.h). Empty on success,
/// else the fault of the first step that had one, and none follows it.
std::string start_run(const StartSteps& steps, const std::string& serial, const std::string& file);

}  // namespace orvanel
