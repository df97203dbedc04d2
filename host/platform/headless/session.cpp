#include "host/platform/headless/session.h"

#include "base/visible.h"
#include "firmware/store/ground/eeprom.h"
#include "host/platform/headless/end_signals.h"
#include "host/platform/headless/first_port.h"
#include "host/platform/headless/halt.h"
#include "host/platform/headless/module_time.h"
#include "host/platform/headless/real_session.h"
#include "host/platform/headless/simulated_line.h"
#include "host/program/image_file.h"
#include "host/program/program_folder.h"
#include "host/scenario/memory_window.h"
#include "host/scenario/report.h"
#include "host/scenario/runner.h"
#include "host/scenario/world.h"
#include "host/window/roof/menu_command.h"
#include "host/window/roof/program_life.h"
#include "link/feeds/feeds.h"
#include "link/ground/port.h"
#include "seam/platform.h"

#include <poll.h>

#include <array>
#include <cstdio>
#include <string>

namespace orvanel {

constinit bool real_time = false;
std::string image_save_path;
TraceOptions trace_options;

namespace {

void tell_unsaved(const std::string& fault) {
    open_message_box(MessageOf::host, "Error: HD Orvanel42 simulator", fault);
    report_fault(wrong_line, fault);
}

/// What there is to save, the image as it stood when the firmware was told to end.
void save_all() {
    for (const std::string& fault : save_program_folder())
        tell_unsaved(fault);
    tell_image_notice();
    if (image_save_path.empty() || eeprom_state != EepromState::programmed) return;
    const std::string fault = save_image(image_save_path, eeprom_bytes(), Backup::none);
    if (!fault.empty()) tell_unsaved(fault);
    tell_image_notice();
}

void end_trace() {
    if (trace_options.form == TraceForm::none && !trace_options.strict) return;
    scenario_line = 0;  // what is wrong with the trace is the fault of no line
    const TraceFaults faults = finish_trace();
    if (!faults.unwritten.empty()) report_fault(wrong_line, faults.unwritten);
    for (const std::string& fault : faults.remarks)
        report_fault(expectation_failed, fault);
}

}  // namespace

void tell_image_notice() {
    if (!image_notice.empty()) tell_user("orvanel42-headless: " + image_notice);
    image_notice.clear();
}

std::int64_t clock_us() { return real_time ? real_clock_us() : module_clock_us(); }

std::uint64_t bytes_delivered() {
    return real_time ? real_bytes_delivered() : module_bytes_delivered();
}

bool wait_for_scenario_input(int fd) {
    // In real time the main loop watches the input, and the timers go on meanwhile.
    if (real_time) return false;
    std::array<pollfd, 2> fds{pollfd{fd, POLLIN, 0}, pollfd{end_signals_fd(), POLLIN, 0}};
    while (poll(fds.data(), fds.size(), -1) < 0) {
    }
    if (fds[1].revents == 0) return true;
    stop_scenario();
    return false;
}

bool scenario_input_is_there(int fd) {
    pollfd input{fd, POLLIN, 0};
    return poll(&input, 1, 0) > 0;
}

void halt_module() {
    if (real_time) halt_firmware();
}

void resume_module() {
    if (real_time) resume_firmware();
}

bool line_is_simulated() { return !real_time; }

int line_queued() { return real_time ? 0 : simulated_queued_in(); }

bool line_rts() { return real_time ? com_port.load() > 0 && rts_wanted.load() : simulated_rts(); }

std::int32_t line_speed() {
    if (real_time) return com_port.load() > 0 ? line_baud.load() : 0;
    return simulated_baud();
}

int run_session(const std::string& name) {
    const std::string no_view = prepare_skin();
    if (no_view.empty()) {
        open_memory_window();
        set_companions("manual/index.html", "orvanel42-terminal");
        dress_window();
    }
    const std::string fault = open_scenario(name);
    start_trace(trace_options, clock_us);
    if (!no_view.empty())
        report_fault(wrong_line, no_view);
    else if (!fault.empty())
        report_fault(wrong_line, "can't be opened: " + fault);
    else if (real_time)
        run_in_real_time();
    else {
        open_first_port();
        furnish_window("");
        run_in_module_time();
    }
    close_scenario();
    stop_feed();
    end_trace();
    save_all();
    write_end_record();
    return fault_status();
}

}  // namespace orvanel
