#include "host/platform/headless/session.h"

#include "base/files.h"
#include "base/visible.h"
#include "firmware/store/ground/eeprom.h"
#include "host/import/file_kind.h"
#include "host/platform/headless/session_options.h"
#include "host/platform/headless/time_mode.h"
#include "host/platform/life/start.h"
#include "host/program/image_file.h"
#include "host/program/program_folder.h"
#include "host/scenario/hints.h"
#include "host/scenario/json_answers.h"
#include "host/scenario/memory_window.h"
#include "host/scenario/named_files.h"
#include "host/scenario/report.h"
#include "host/scenario/runner.h"
#include "host/scenario/world.h"
#include "host/window/roof/menu_command.h"
#include "link/feeds/feeds.h"
#include "seam/platform.h"

#include <cstdio>
#include <string>

namespace orvanel {

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
    if (session_options.save_image.empty() || eeprom_state != EepromState::programmed ||
        is_withheld(session_options.save_image))
        return;
    const std::string fault = save_image(session_options.save_image, eeprom_bytes(), Backup::none);
    if (!fault.empty()) tell_unsaved(fault);
    tell_image_notice();
}

void end_trace() {
    const TraceOptions& options = session_options.trace;
    if (options.form == TraceForm::none && options.strictness == Strictness::off) return;
    scenario_line = 0;  // what is wrong with the trace is the fault of no line
    const TraceFaults faults = finish_trace();
    if (!faults.unwritten.empty()) report_fault(wrong_line, faults.unwritten);
    if (answers_in_json()) return answer_mistakes(faults.mistakes, faults.unkept);
    scenario_line = brings_its_place;
    for (const Mistake& mistake : faults.mistakes)
        report_fault(expectation_failed, words_of(mistake, std::string(scenario_name)));
    scenario_line = 0;
    if (faults.unkept > 0)
        report_fault(expectation_failed, "and " + std::to_string(faults.unkept) + " more");
}

void make_window() {
    open_memory_window();
    set_companions("manual/index.html", "orvanel42-terminal");
}

}  // namespace

void tell_image_notice() {
    if (!image_notice.empty()) tell_user("orvanel42-headless: " + image_notice);
    image_notice.clear();
}

std::string start_session() {
    return start_run({.make_window = make_window,
                      .show_window = [] {},
                      .open_port = time_mode->open_port,
                      .start_timers = time_mode->start_timers,
                      .start_threads = time_mode->start_threads},
                     session_options.serial, "");
}

int run_session(const std::string& name) {
    picture_options = session_options.pictures;
    const std::string other = not_a_scenario(name);
    std::string fault = open_scenario(name);
    if (!fault.empty()) fault = "can't be opened: " + fault;
    if (!other.empty()) fault = other;
    if (session_options.json) start_answers();
    const std::string& trace = session_options.trace.file;
    if (!name.empty() && !is_plain_file(name) && !trace.empty() && trace != "-")
        set_former_aside(trace);
    start_trace(session_options.trace, clock_us);
    if (fault.empty()) fault = start_session();
    if (fault.empty()) {
        time_mode->run();
    } else {
        scenario_line = 0;  // it is the fault of none
        report_fault(wrong_line, fault);
    }
    hint_on_end();
    close_scenario();
    stop_feed();
    end_trace();
    settle_former();
    save_all();
    end_answers(fault_status());
    write_end_record();
    return fault_status();
}

}  // namespace orvanel
