// program_life.h: what every program with a window, on a screen or in memory, does around the run
// of the module: the steps of a start, whose order is in host/platform/life/start.h. Main thread.

#pragma once

#include "host/program/program_folder.h"

#include <string>
#include <string_view>

namespace orvanel {

/// Whether what is packed into the program unpacks. If it doesn't, the program ends without a word
/// and with status 0.
bool built_in_data_is_whole();

/// The defaults of the settings, and the image that a kit makes, in an EEPROM of the size that it
/// asks for. Empty on success, else what is wrong with the kit.
std::string load_kit(const std::string& path);

/// What the map of the image that has been loaded says of it. Empty on success, else why the file
/// is no map of this image.
std::string load_map_of_image(const std::string& path);

/// Settings and image of the folder; without one the defaults, and the image of the file or a blank
/// one, 32 KiB large unless `mem_kib` is 64. Empty on success, else what can't be read.
std::string load_memory(const std::string& folder, const std::string& image, int mem_kib,
                        WithoutImage without);

/// Prepares the view (host/skin/view.h). Empty on success, else the text of the message, under
/// start_fault_caption, with which the program ends; nothing is saved then.
std::string prepare_skin();
constexpr std::string_view start_fault_caption = "HD Orvanel42 simulator";

/// Gives a window that has just been made its title, its shape and the arrow.
void dress_window();

/// Opens the panel of the ports if it was open last time, marks the menu, opens `file` unless that
/// is empty, and brings the window on top if it is to stay there.
void furnish_window(const std::string& file);

}  // namespace orvanel
