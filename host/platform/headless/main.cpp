// orvanel42-headless: the module without a window, driven by scenarios.

#include "base/folder_lock.h"
#include "base/visible.h"
#include "host/platform/headless/end_signals.h"
#include "host/platform/headless/jobs.h"
#include "host/platform/headless/options.h"
#include "host/platform/headless/session.h"
#include "host/platform/headless/time_mode.h"
#include "host/platform/life/start.h"
#include "host/platform/system/process.h"
#include "host/scenario/report.h"
#include "host/trace/command_reference.h"

#include <cstdio>
#include <exception>
#include <string>

namespace {

using namespace orvanel;

/// A folder is for one program at a time.
std::string lock_and_load(const Options& options) {
    std::string fault;
    if (!options.folder.empty() && lock_folder(options.folder, fault) != FolderLock::taken)
        return fault;
    return load_start({.folder = options.folder,
                       .image = options.image,
                       .map = options.map,
                       .kit = options.kit,
                       .mem_kib = options.mem_kib,
                       .serial = options.session.serial,
                       .protocol = options.protocol});
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
    session_options = options.session;
    if (options.real_time) choose_time_mode(real_time);
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
