// program_folder.h: the folder that a program lives in: the settings in simulator.ini, the EEPROM
// image in Orvanel42.bin. Main thread.

#pragma once

#include <string>
#include <vector>

namespace orvanel {

/// What stands in for an image that isn't there: the demo is fed, which programs it; or nothing,
/// for a program that was started for a device on its line, whose page the demo would wipe.
enum class WithoutImage : bool { blank, demo };

/// Makes the folder if it isn't there, takes the settings from it, and loads the image in the size
/// that they say; missing settings give the defaults. The result is empty on success, else what
/// can't be read: it must not be written over, so the program has to end.
std::string open_program_folder(const std::string& folder,
                                WithoutImage without = WithoutImage::demo);

/// At the end, when no firmware runs any more: saves the image, if the module has programmed it,
/// and then the settings. The result is what went wrong; the old file stays then. Does nothing if
/// no folder is open.
std::vector<std::string> save_program_folder();

/// For a timer of a program in real time: saves the image a second after a J or C has left one, so
/// that whatever ends the process later costs nothing of it. A fault is shown, each once.
void save_programmed_image();

/// Before something programs the module that the user may not have meant to: the image of the
/// folder becomes the one before the last save, once in each run. The result is what went wrong.
/// Does nothing without a folder or an image in it.
std::string keep_former_image();

}  // namespace orvanel
