#include "host/platform/life/start.h"

#include "host/platform/life/start_port.h"
#include "host/window/roof/program_life.h"

namespace orvanel {

namespace {

std::string load_eeprom(const StartOptions& options) {
    if (!options.kit.empty()) return load_kit(options.kit);
    std::string fault =
        load_memory(options.folder, options.image, options.mem_kib,
                    options.serial.empty() ? WithoutImage::demo : WithoutImage::blank);
    return fault.empty() && !options.map.empty() ? load_map_of_image(options.map) : fault;
}

}  // namespace

std::string load_start(const StartOptions& options) {
    if (std::string fault = load_eeprom(options); !fault.empty()) return fault;
    take_protocol_option(options.protocol);
    name_devices(options.serial, options.folder);
    return {};
}

std::string start_run(const StartSteps& steps, const std::string& serial, const std::string& file) {
    if (std::string fault = prepare_skin(); !fault.empty()) return fault;
    steps.make_window();
    dress_window();
    steps.show_window();
    if (std::string fault = steps.open_port(serial); !fault.empty()) return fault;
    steps.start_timers();
    steps.start_threads();
    furnish_window(file);
    return {};
}

}  // namespace orvanel
