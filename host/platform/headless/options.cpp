#include "host/platform/headless/options.h"

#include "host/platform/real_time/start_port.h"
#include "host/scenario/report.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace orvanel {

namespace {

constexpr int most_jobs = 256;

void add_trace_options(CLI::App& app, TraceOptions& trace) {
    const auto takes_file = [&trace](TraceForm form) {
        return [&trace, form](const std::string& file) { trace = {form, file, trace.strict}; };
    };
    auto* text = app.add_option_function<std::string>(
                        "--trace", takes_file(TraceForm::text),
                        "Write a line for each command of the module's language to FILE, - for "
                        "standard error")
                     ->option_text("FILE");
    app.add_option_function<std::string>("--trace-json", takes_file(TraceForm::json),
                                         "The same as one JSON object a line")
        ->excludes(text)
        ->option_text("FILE");
    app.add_flag("--strict", trace.strict,
                 "A remark in the trace makes the run fail, whether or not it is written");
}

void add_options(CLI::App& app, Options& options) {
    auto* folder = app.add_option("--dir", options.folder,
                                  "Live in DIR as the window program does: read the settings and "
                                  "the EEPROM image, and save both at the end");
    folder->option_text("DIR");
    app.add_option("--image", options.image, "Load FILE as the EEPROM image")
        ->excludes(folder)
        ->option_text("FILE");
    app.add_option("--mem", options.mem_kib,
                   "EEPROM size in KiB, 32 if not given; with --dir the setting memKB decides")
        ->excludes(folder)
        ->option_text("32|64")
        ->check(CLI::IsMember({32, 64}));
    app.add_option("--save-image", options.save_image,
                   "At the end write the EEPROM image to FILE, if it was programmed")
        ->option_text("FILE");
    auto* real_time =
        app.add_flag("--realtime", options.real_time, "Run on the real clock, not in module time");
    app.add_option("--serial", options.serial,
                   "What stands behind COM1: pty[:LINK], tcp:[HOST:]PORT, stdio, or a device such "
                   "as /dev/ttyUSB0[@BAUD]. Without a SCENARIO it runs until SIGINT or SIGTERM. "
                   "The line speaks Pactlink unless the setting protocol is 0: plain bytes then "
                   "vanish in silence")
        ->needs(real_time)
        ->option_text("LINE")
        ->check(serial_option_fault);
    app.add_flag("--update", options.update,
                 "expect-screen writes its picture instead of comparing");
    app.add_flag("--update-missing", options.update_missing,
                 "expect-screen writes its picture where the file is missing");
    app.add_option("--out", options.out_folder,
                   "Pictures of failed comparisons go to DIR, not beside the expected ones")
        ->option_text("DIR");
    app.add_option("--junit", options.junit, "Write the results to FILE, for CI servers")
        ->option_text("FILE");
    add_trace_options(app, options.trace);
    app.add_option("--jobs", options.jobs, "Run N scenarios side by side")
        ->option_text("N")
        ->check(CLI::Range(1, most_jobs));
    app.add_flag("--commands", options.commands,
                 "Print the reference of the module's command language and end");
    app.add_option("SCENARIO", options.scenarios,
                   "Scenario files, each run on a fresh module; - (the default) is standard input");
    app.set_version_flag("--version", "orvanel42-headless " ORVANEL_VERSION);
}

}  // namespace

int parse_options(int argc, char** argv, Options& options) {
    options = {};
    options.mem_kib = 32;
    options.jobs = 1;
    CLI::App app{"Runs the HD Orvanel42 display module without a window, driven by scenarios",
                 "orvanel42-headless"};
    add_options(app, options);
    try {
        app.parse(argc, argv);
        if (options.scenarios.empty()) options.scenarios = {options.serial.empty() ? "-" : ""};
        if (std::count(options.scenarios.begin(), options.scenarios.end(), "-") > 1)
            throw CLI::ValidationError("SCENARIO", "standard input can be read only once");
        if (!options.save_image.empty() && options.scenarios.size() > 1)
            throw CLI::ValidationError("--save-image", "takes the image of one scenario");
        if (!options.folder.empty() && options.scenarios.size() > 1)
            throw CLI::ValidationError("--dir", "is the folder of one scenario");
        if (!options.serial.empty() && options.scenarios.size() > 1)
            throw CLI::ValidationError("--serial", "is the line of one scenario");
        if (options.serial == "stdio" && options.scenarios.front() == "-")
            throw CLI::ValidationError("SCENARIO", "standard input is the line: name a file");
        if (!options.trace.file.empty() && options.trace.file != "-" &&
            options.scenarios.size() > 1)
            throw CLI::ValidationError("--trace", "takes the trace of one scenario");
    } catch (const CLI::ParseError& fault) {
        return app.exit(fault) == 0 ? all_well : wrong_line;
    }
    return -1;
}

}  // namespace orvanel
