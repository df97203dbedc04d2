// orvanel42-headless: the module without a window, driven by scenarios.

#include "base/folder_lock.h"
#include "base/visible.h"
#include "firmware/core/roof/commands.h"
#include "firmware/store/ground/eeprom.h"
#include "host/import/file_kind.h"
#include "host/platform/headless/end_signals.h"
#include "host/platform/headless/first_port.h"
#include "host/platform/headless/jobs.h"
#include "host/platform/headless/options.h"
#include "host/platform/headless/session.h"
#include "host/platform/real_time/start_port.h"
#include "host/platform/system/process.h"
#include "host/program/image_file.h"
#include "host/program/program_folder.h"
#include "host/program/settings.h"
#include "host/scenario/expectations.h"
#include "host/scenario/report.h"

#include <cstdio>
#include <exception>
#include <string>

namespace {

using namespace orvanel;

/// Settings and image of the folder; without one the defaults, and the image of the command line or
/// a blank one. Empty on success, else what can't be read.
std::string load_memory(const Options& options) {
    if (!options.folder.empty())
        return open_program_folder(options.folder, options.serial.empty() ? WithoutImage::demo
                                                                          : WithoutImage::blank);
    take_settings("", "");
    const int size = options.mem_kib == 64 ? eeprom_large : eeprom_small;
    eeprom_reset_to(size, {});
    if (options.image.empty()) return {};
    const std::string fault = not_an_image(options.image);
    return fault.empty() ? load_image(options.image, size) : fault;
}

/// A folder is for one program at a time.
std::string lock_and_load(const Options& options) {
    std::string fault;
    if (!options.folder.empty() && lock_folder(options.folder, fault) != FolderLock::taken)
        return fault;
    return load_memory(options);
}

int run(int argc, char** argv) {
    Options options;
    if (const int status = parse_options(argc, argv, options); status >= 0) return status;
    scenario_name = "orvanel42-headless";
    if (options.commands) {
        std::string text = command_reference();
        if (text.ends_with('\n')) text.pop_back();
        print_line(text);
        return fault_status();
    }
    if (const std::string fault = lock_and_load(options); !fault.empty()) {
        tell_user("orvanel42-headless: error: " + fault);
        return wrong_line;
    }
    tell_image_notice();
    picture_options = {options.update, options.update_missing, options.out_folder};
    image_save_path = options.save_image;
    serial_option = options.serial;
    take_protocol_option(options.protocol);
    name_devices(options.serial, options.folder);
    real_time = options.real_time;
    trace_options = options.trace;
    take_end_signals();
    // The results of a lone scenario have to outlive its crash; what it says goes out at once.
    const bool several = options.scenarios.size() > 1;
    if (several || !options.junit.empty())
        return run_jobs(options.scenarios, {options.jobs, several, options.junit});
    return run_session(options.scenarios.front());
}

}  // namespace

int main(int argc, char** argv) {
    prepare_process();
    try {
        return run(argc, argv);
    } catch (const std::exception& fault) {
        // The system has no memory or no thread left.
        tell_user("orvanel42-headless: error: " + std::string(fault.what()));
        return wrong_line;
    }
}
