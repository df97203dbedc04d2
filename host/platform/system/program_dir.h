// program_dir.h: where a program lives if the user names no folder.

#pragma once

#include <string>
#include <string_view>

namespace orvanel {

/// The folder of a program, with a slash at its end, by the path that it was started with:
/// absolute, or from the present folder, as a bare name too. A path in double quotes ends at the
/// second one.
std::string find_program_dir(std::string_view program, std::string_view present_folder);

/// The folder of this program in the user's data folder, by what XDG_DATA_HOME and HOME say (empty
/// if they aren't set; the former counts only as an absolute path). Empty if neither helps.
std::string find_data_dir(std::string_view data_home, std::string_view home);

/// The folder that a program lives in: its own, unless that can't be written or is one of the
/// system's (/usr and below), where even who may write keeps no settings; then, or if it isn't
/// known (empty), the one in the user's data folder.
std::string choose_program_dir(std::string_view folder, bool writable, std::string_view data_home,
                               std::string_view home);

}  // namespace orvanel
