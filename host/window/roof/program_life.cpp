#include "host/window/roof/program_life.h"

#include "firmware/store/ground/eeprom.h"
#include "host/import/file_kind.h"
#include "host/import/kit_file.h"
#include "host/import/picture_import.h"
#include "host/program/demo.h"
#include "host/program/image_file.h"
#include "host/program/settings.h"
#include "host/skin/outline.h"
#include "host/skin/skin.h"
#include "host/skin/view.h"
#include "host/trace/places.h"
#include "host/window/ground/menu.h"
#include "host/window/ground/ports_panel.h"
#include "host/window/ground/title.h"
#include "seam/window_system.h"

#include <new>
#include <utility>

namespace orvanel {

bool built_in_data_is_whole() { return !builtin_skin().empty() && demo_is_whole(); }

std::string load_memory(const std::string& folder, const std::string& image, int mem_kib,
                        WithoutImage without) {
    if (!folder.empty()) return open_program_folder(folder, without);
    take_settings("", "");
    const int size = mem_kib == 64 ? eeprom_large : eeprom_small;
    eeprom_reset_to(size, {});
    if (image.empty()) return {};
    const std::string fault = not_an_image(image);
    return fault.empty() ? load_image(image, size) : fault;
}

std::string load_kit(const std::string& path) {
    take_settings("", "");
    Bytes image;
    int memory = eeprom_small;
    std::string fault = not_a_kit(path);
    if (fault.empty()) fault = kit_image(path, image, memory);
    eeprom_reset_to(memory, image);
    return fault;
}

std::string load_map_of_image(const std::string& path) {
    SourceMap map{};
    const std::string fault = load_map(path, eeprom_bytes(), map);
    if (!fault.empty()) return path + ": " + fault;
    note_kit(std::move(map), eeprom_bytes());
    return {};
}

std::string prepare_skin() {
    try {
        const std::string fault = prepare_view();
        return fault.empty() ? "" : "Error: " + fault;
    } catch (const std::bad_alloc&) {
        return "Error: not enough memory";
    }
}

void dress_window() {
    title_update();
    if (!show_frame) window_cut_to_skin();
    set_pointer(Pointer::arrow);
}

void furnish_window(const std::string& file) {
    if (ports_visible) ports_open();
    menu_mark_view();
    menu_mark_port();
    menu_mark_baud();
    menu_mark_switches();
    if (!file.empty()) open_feed(file, 0, 0);
    if (always_on_top) set_window_on_top(true);
}

}  // namespace orvanel
