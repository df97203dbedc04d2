#include "host/platform/system/program_dir.h"

#include <algorithm>

namespace orvanel {

namespace {

/// Behind its last slash nothing is left; without one it is the root.
std::string cut_behind_slash(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? "/" : std::string(path.substr(0, slash + 1));
}

}  // namespace

std::string find_program_dir(std::string_view program, std::string_view present_folder) {
    if (program.starts_with('"')) {
        program.remove_prefix(1);
        program = program.substr(0, program.find('"'));
    }
    if (program.starts_with('/')) return cut_behind_slash(program);
    std::string folder(present_folder);
    while (folder.ends_with('/'))
        folder.pop_back();
    for (; program.starts_with("../"); program.remove_prefix(3))
        folder.resize(std::min(folder.rfind('/'), folder.size()));
    if (program.starts_with("./")) program.remove_prefix(2);
    return cut_behind_slash(folder + '/' + std::string(program));
}

std::string find_data_dir(std::string_view data_home, std::string_view home) {
    if (data_home.starts_with('/')) return std::string(data_home) + "/orvanel42/";
    return home.starts_with('/') ? std::string(home) + "/.local/share/orvanel42/" : "";
}

std::string choose_program_dir(std::string_view folder, bool writable, std::string_view data_home,
                               std::string_view home) {
    const bool own = !folder.empty() && writable && !folder.starts_with("/usr/");
    return own ? std::string(folder) : find_data_dir(data_home, home);
}

}  // namespace orvanel
