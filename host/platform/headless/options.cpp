#include "host/platform/headless/options.h"

#include "base/command_line.h"
#include "base/files.h"
#include "host/platform/life/start_port.h"
#include "host/platform/system/process.h"
#include "host/scenario/commands.h"
#include "host/scenario/named_files.h"
#include "host/scenario/report.h"

#include <algorithm>
#include <string_view>

namespace orvanel {

namespace {

constexpr int max_jobs = 256;

TakeValue takes_file(TraceOptions& trace, TraceForm form) {
    return [&trace, form](const std::string& file) {
        trace.form = form;
        trace.file = file;
        return std::string();
    };
}

std::string strict_option_fault(const std::string& value) {
    return value == "remarks" || value == "hints" ? "" : "takes remarks or hints";
}

Strictness strictness_of(const std::string& value) {
    if (value.empty()) return Strictness::off;
    return value == "hints" ? Strictness::hints : Strictness::remarks;
}

std::vector<Option> options_into(Options& options) {
    return {
        {.names = "--dir",
         .place = &options.folder,
         .help = "Live in DIR as the window program does: read the settings and the EEPROM image, "
                 "and save both at the end",
         .value_name = "DIR"},
        {.names = "--image",
         .place = &options.image,
         .help = "Load FILE as the EEPROM image",
         .value_name = "FILE",
         .fault = file_fault,
         .excludes = {"--dir"}},
        {.names = "--mem",
         .place = &options.mem_kib,
         .help = "EEPROM size in KiB, 32 if not given; with --dir the setting memKB decides",
         .value_name = "32|64",
         .one_of = {32, 64},
         .excludes = {"--dir"}},
        {.names = "--map",
         .place = &options.map,
         .help = "The map that orvanel42-kit build --map wrote of the image: the trace then says "
                 "where in the kit each command stands, and 'tap' takes names of pictures",
         .value_name = "FILE",
         .needs = {"--image"}},
        {.names = "--kit",
         .place = &options.kit,
         .help = "Build the kit FILE and load its image; the EEPROM has the size that it asks for",
         .value_name = "FILE",
         .fault = file_fault,
         .excludes = {"--dir", "--image", "--mem"}},
        {.names = "--save-image",
         .place = &options.session.save_image,
         .help = "At the end write the EEPROM image to FILE, if it was programmed",
         .value_name = "FILE"},
        {.names = "--realtime",
         .place = &options.real_time,
         .help = "Run on the real clock, not in module time"},
        {.names = "--serial",
         .place = &options.session.serial,
         .help = "What stands behind COM1: pty[:LINK], tcp:[HOST:]PORT, stdio, or a device such "
                 "as /dev/ttyUSB0[@BAUD]. Without a SCENARIO it runs until SIGINT or SIGTERM. "
                 "The line speaks Pactlink unless --protocol or the setting protocol says "
                 "otherwise: plain bytes then vanish in silence",
         .value_name = "LINE",
         .fault = serial_option_fault,
         .needs = {"--realtime"}},
        {.names = "--protocol",
         .place = &options.protocol,
         .help = "What the line speaks in this run, plain bytes or Pactlink; without it the "
                 "setting protocol decides",
         .value_name = "plain|pactlink",
         .fault = protocol_option_fault},
        {.names = "--update",
         .place = &options.session.pictures.update,
         .help =
             "expect-screen writes its picture instead of comparing, await-screen what shows at "
             "the end of its time"},
        {.names = "--update-missing",
         .place = &options.session.pictures.update_missing,
         .help = "The same, but only where the file is missing"},
        {.names = "--out",
         .place = &options.session.pictures.folder,
         .help = "Pictures of failed comparisons go to DIR, not beside the expected ones",
         .value_name = "DIR"},
        {.names = "--junit",
         .place = &options.junit,
         .help = "Write the results to FILE, for CI servers",
         .value_name = "FILE"},
        {.names = "--trace",
         .place = takes_file(options.session.trace, TraceForm::text),
         .help = "Write a line for each command of the module's language to FILE, - for "
                 "standard error",
         .value_name = "FILE"},
        {.names = "--trace-json",
         .place = takes_file(options.session.trace, TraceForm::json),
         .help = "The same as one JSON object a line",
         .value_name = "FILE",
         .excludes = {"--trace"}},
        {.names = "--trace-layers",
         .place = TakeValue([&options](const std::string& list) {
             return take_layers(list, options.session.trace.layers);
         }),
         .help = "What the trace shows, of wire,command,touch,answer; all without it",
         .value_name = "LIST"},
        {.names = "--strict",
         .place = &options.strict,
         .help = "A remark makes the run fail, with =hints a hint does too, whether or not a trace "
                 "is written",
         .value_name = "[=remarks|hints]",
         .without = "remarks",
         .fault = strict_option_fault},
        {.names = "--jobs",
         .place = &options.jobs,
         .help = "Run N scenarios side by side",
         .value_name = "N",
         .range = {1, max_jobs}},
        {.names = "--json",
         .place = &options.session.json,
         .help = "Answer each line of the scenario with one JSON object on one line, for a program "
                 "that drives the module through standard input and output"},
        {.names = "--commands",
         .place = &options.commands,
         .help = "Print the reference of the module's command language and end"},
        {.names = "SCENARIO",
         .place = &options.scenarios,
         .help = "Scenario files, each run on a fresh module; - (the default) is standard input"},
    };
}

/// Whether a file may be written over that a scenario yet to come might have named: there is
/// nothing in it, or what such an option has written before.
bool is_former_output(const RunOutput& output) {
    Bytes start;
    if (!is_plain_file(output.path) || output.option == "--save-image" ||
        !read_file_start(output.path, 64, start).empty() || start.empty())
        return true;
    const std::string_view text(reinterpret_cast<const char*>(start.data()), start.size());
    if (output.option == "--junit") return text.starts_with("<?xml");
    if (output.option == "--trace-json") return text.starts_with('{');
    const std::size_t digits = text.find_first_not_of("0123456789");
    return digits > 0 && digits < text.size() && text[digits] == '.';
}

/// The option that would write over a file that is read, or over another one's, and what is wrong
/// with it; both empty if none would.
RunOutput output_clash_in(const Options& options) {
    std::vector<RunOutput> files;
    for (const std::string& name : options.scenarios)
        if (name != "-") files.push_back({"SCENARIO", name});
    if (!options.folder.empty())
        for (const char* name :
             {"/simulator.ini", "/Orvanel42.bin", "/Orvanel42.bin.bak", "/Orvanel42.lock"})
            files.push_back({"--dir", options.folder + name});
    // The image alone may go back into the file that it came from.
    if (!is_same_file(options.image, options.session.save_image))
        files.push_back({"--image", options.image});
    files.push_back({"--kit", options.kit});
    files.push_back({"--map", options.map});
    for (const RunOutput& output : run_outputs) {
        for (const RunOutput& other : files)
            if (!other.path.empty() && is_same_file(output.path, other.path))
                return {output.option,
                        output.path + " is the file of " + other.option + " too: name another one"};
        files.push_back(output);
    }
    if (!options.kit.empty())
        if (RunOutput named = output_in_kit(options.kit); !named.option.empty()) return named;
    for (const std::string& name : options.scenarios) {
        if (RunOutput named = named_output(name, file_in_line); !named.option.empty()) return named;
        if (name.empty() || is_plain_file(name)) continue;
        for (const RunOutput& output : run_outputs)
            if (!is_former_output(output))
                return {output.option, output.path + " holds something else, which the scenario "
                                                     "may be about to read: name another one"};
    }
    return {};
}

/// What the command line has the run write.
std::vector<RunOutput> outputs_of(const Options& options) {
    const TraceOptions& trace = options.session.trace;
    std::vector<RunOutput> outputs{
        {"--save-image", options.session.save_image},
        {trace.form == TraceForm::json ? "--trace-json" : "--trace", trace.file},
        {"--junit", options.junit}};
    std::erase_if(
        outputs, [](const RunOutput& output) { return output.path.empty() || output.path == "-"; });
    return outputs;
}

/// What doesn't go together: the option that is at fault and why, both empty if all is well.
RunOutput clash_in(const Options& options) {
    const std::vector<std::string>& scenarios = options.scenarios;
    if (std::count(scenarios.begin(), scenarios.end(), "-") > 1)
        return {"SCENARIO", "standard input can be read only once"};
    if (options.session.serial == "stdio" && scenarios.size() == 1 && scenarios.front() == "-")
        return {"SCENARIO", "standard input is the line: name a file"};
    if (RunOutput clash = output_clash_in(options); !clash.option.empty()) return clash;
    if (scenarios.size() == 1 && options.session.json && scenarios.front().empty())
        return {"--json", "answers the lines of a scenario: name one, or - for standard input"};
    if (options.session.json && options.session.serial == "stdio")
        return {"--json", "standard output is the line"};
    if (scenarios.size() == 1) return {};
    if (options.session.json) return {"--json", "answers the lines of one scenario"};
    if (!options.session.save_image.empty())
        return {"--save-image", "takes the image of one scenario"};
    if (!options.folder.empty()) return {"--dir", "is the folder of one scenario"};
    if (!options.session.serial.empty()) return {"--serial", "is the line of one scenario"};
    if (!options.session.trace.file.empty() && options.session.trace.file != "-")
        return {"--trace", "takes the trace of one scenario"};
    return {};
}

}  // namespace

int parse_options(int argc, char** argv, Options& options) {
    options = {};
    options.mem_kib = 32;
    options.jobs = 1;
    const CommandLine line{
        .program = "orvanel42-headless",
        .version = ORVANEL_VERSION,
        .help = "Runs the HD Orvanel42 display module without a window, driven by scenarios",
        .options = options_into(options),
        .footer = "Exit status: 0 all as expected; 1 an expectation failed, or with --strict there "
                  "was a remark; 2 a wrong command line or scenario line, or a file or standard "
                  "output that can't be read or written; 3 a settle gave up."};
    if (const int status = read_command_line(line, argc, argv); status >= 0)
        return output_is_whole(line.program) ? status : wrong_line;
    options.session.trace.strictness = strictness_of(options.strict);
    if (options.scenarios.empty()) options.scenarios = {options.session.serial.empty() ? "-" : ""};
    run_outputs = outputs_of(options);
    const auto [option, fault] = clash_in(options);
    return option.empty() ? -1 : refuse_option(line.program, option, fault);
}

}  // namespace orvanel
