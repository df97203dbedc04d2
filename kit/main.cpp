// orvanel42-kit: fonts, pictures and macros from readable sources into an EEPROM image or the
// stream that programs it, and back.

#include "base/command_line.h"
#include "base/files.h"
#include "base/visible.h"
#include "host/platform/system/process.h"
#include "kit/assess.h"
#include "kit/build.h"
#include "kit/commands.h"
#include "kit/constants.h"
#include "kit/diff.h"
#include "kit/dump.h"
#include "kit/objects.h"
#include "kit/output.h"
#include "kit/stream.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace {

using namespace orvanel;

constexpr std::size_t max_messages = 20;

enum Status { all_well = 0, wrong_content = 1, wrong_call = 2 };

struct Options {
    std::string source, other;  // the files to read
    std::vector<std::string> outputs;
    std::string folder;
    std::string map;  // to write, or to read for an image
    std::string header, python;
    BuildOptions build;
    bool quiet;
    std::string fail_on;
};

/// Shows what is being worked on in one line that is gone at the end, if somebody watches.
class ProgressLine {
  public:
    void show(const std::string& what) {
        if (!watched) return;
        std::fprintf(stderr, "\r\x1B[K%s ...", visible(what).c_str());
        shown = true;
    }
    ~ProgressLine() {
        if (shown) std::fputs("\r\x1B[K", stderr);
    }
    ProgressLine() = default;
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

  private:
    bool watched = isatty(STDERR_FILENO) != 0;
    bool shown = false;
};

Status tell(const Faults& faults) {
    for (const std::string& message : messages_of(faults, program_name))
        tell_user(message);
    return faults.empty() ? all_well : wrong_content;
}

Built build_source(const Options& options, Faults& faults) {
    ProgressLine progress;
    return build_kit(
        options.source, options.build, [&](const std::string& what) { progress.show(what); },
        faults);
}

Content load(const std::string& path, Faults& faults) {
    ProgressLine progress;
    return load_any(
        path, [&](const std::string& what) { progress.show(what); }, faults);
}

/// Whether the output, by whatever name, is a file that the kit was read from; then that is said.
bool is_input(const Kit& kit, const std::string& option, const std::string& output) {
    for (const std::string& input : kit.inputs) {
        std::error_code not_there;
        if (!std::filesystem::equivalent(output, input, not_there) || not_there) continue;
        tell_error(option + " " + output + " would overwrite " + input +
                   ", which the kit is made of; name another file");
        return true;
    }
    return false;
}

/// A file that a build writes, and the option that names it.
struct Output {
    const char* option;
    std::string path;
    Bytes content;
};

/// Whether an output can't be written where the command line wants it; then that is said.
bool is_in_the_way(const Kit& kit, const std::vector<Output>& outputs) {
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        const auto& [option, path, content] = outputs[i];
        if (is_input(kit, option, path)) return true;
        for (std::size_t k = 0; k < i; ++k) {
            if (!is_same_file(outputs[k].path, path)) continue;
            tell_error(std::string(option) + " " + path + " is the file of " + outputs[k].option +
                       " too; name another file");
            return true;
        }
    }
    return false;
}

Bytes bytes_from(std::string_view text) { return {text.begin(), text.end()}; }

/// The map of this image. Throws a Fault if the file holds none of it.
SourceMap map_for(const std::string& path, const Bytes& image) {
    SourceMap map{};
    const std::string fault = load_map(path, image, map);
    if (!fault.empty()) throw Fault({path, 0, 0}, fault);
    return map;
}

/// All that the command line asks for, in its order.
std::vector<Output> outputs_of(const Options& options, const Built& built, Faults& faults) {
    std::vector<Output> outputs;
    for (const std::string& path : options.outputs)
        outputs.push_back(
            {"-o", path,
             ends_in(path, ".eep") ? stream_of(built.kit, built.image, faults) : built.image});
    if (!options.map.empty())
        outputs.push_back({"--map", options.map, bytes_from(text_of(built.map))});
    if (!options.header.empty())
        outputs.push_back(
            {"--header", options.header, bytes_from(header_of(built.kit, options.header, faults))});
    if (!options.python.empty())
        outputs.push_back({"--python", options.python, bytes_from(python_of(built.kit, faults))});
    return outputs;
}

int build(const Options& options) {
    Faults faults;
    const Built built = build_source(options, faults);
    if (!faults.empty()) return tell(std::move(faults));
    // All of them first, so that a fault leaves every old file as it was.
    const std::vector<Output> outputs = outputs_of(options, built, faults);
    if (!faults.empty()) return tell(std::move(faults));
    if (is_in_the_way(built.kit, outputs)) return wrong_call;
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        const auto& [option, path, content] = outputs[i];
        if (!write_output(path, content)) return wrong_call;
        if (!options.quiet && i < options.outputs.size())
            put(path + ": " + std::to_string(content.size()) + " bytes\n");
    }
    if (!options.quiet) put("image: " + summary_of(built.image) + "\n");
    return all_well;
}

int dump(const Options& options) {
    Faults faults;
    const auto [image, stream, cut, map] = load(options.source, faults);
    if (!faults.empty()) return tell(faults);
    if (!cut.empty()) tell_user(options.source + ": " + cut);
    // What isn't one at all would fill a screen with odd entries; -o takes it apart all the same.
    if (options.folder.empty() && !doubt_about(image).empty()) return wrong_content;
    put(options.source + ": " + listing_of(image));
    if (options.folder.empty()) return all_well;
    const std::string name = std::filesystem::path(options.source).stem().string();
    return write_folder(options.folder, dump_of(image, name)) ? all_well : wrong_call;
}

/// What stops a check with status 1.
enum class FailOn : std::uint8_t { nothing, warnings, hints };

FailOn fail_on(const std::string& word) {
    if (word == "nothing") return FailOn::nothing;
    return word == "hints" ? FailOn::hints : FailOn::warnings;
}

std::string fail_on_fault(const std::string& word) {
    const bool known = word == "nothing" || word == "warnings" || word == "hints";
    return known ? "" : "takes nothing, warnings or hints";
}

int check(const Options& options) {
    Faults faults;
    Content content = load(options.source, faults);
    if (!faults.empty()) return tell(faults);
    if (!options.map.empty()) content.map = map_for(options.map, content.image);
    if (!content.cut.empty()) {
        put(options.source + ": " + content.cut + "\n");
        return wrong_content;
    }
    const std::vector<Assessment> findings = assess(content);
    for (std::size_t i = 0; i < findings.size() && i < max_messages; ++i)
        put(line_of(findings[i], options.source) + "\n");
    if (findings.size() > max_messages)
        put(options.source + ": and " + std::to_string(findings.size() - max_messages) + " more\n");
    const FailOn limit = fail_on(options.fail_on);
    const bool fails =
        std::any_of(findings.begin(), findings.end(), [limit](const Assessment& found) {
            return limit == FailOn::hints ||
                   (limit == FailOn::warnings && is_remark(found.finding));
        });
    return fails ? wrong_content : all_well;
}

int diff(const Options& options) {
    Faults faults;
    const Bytes before = load(options.source, faults).image;
    const Bytes after = load(options.other, faults).image;
    if (!faults.empty()) return tell(faults);
    const std::string text = difference_of(before, after);
    put(text);
    return text.empty() ? all_well : wrong_content;
}

/// An option whose value is a number, decimal or hexadecimal, 0..max.
Option number_option(const char* name, int max, int& value, const char* help) {
    const auto take = [max, &value](const std::string& text) {
        const bool taken = number_of(text, 0, max, value);
        return taken ? "" : "takes a number, 0 to " + std::to_string(max);
    };
    return {.names = name, .place = take, .help = help, .value_name = "N"};
}

Option file_word(const char* name, std::string& value, const char* help) {
    return {.names = name, .place = &value, .help = help, .value_name = " ", .required = true};
}

std::vector<Option> build_options(Options& options) {
    return {
        file_word("KIT", options.source, "Kit source"),
        {.names = "-o,--output",
         .place = &options.outputs,
         .help = "Write NAME.eep, a stream, or NAME.bin, an image; may come again",
         .value_name = "FILE",
         .required = true},
        {.names = "--map",
         .place = &options.map,
         .help = "Write beside them where each byte of the image stands in the sources",
         .value_name = "MAP"},
        {.names = "--header",
         .place = &options.header,
         .help = "Write the names of the kit as constants in C",
         .value_name = "FILE.h"},
        {.names = "--python",
         .place = &options.python,
         .help = "Write the names of the kit as constants in Python",
         .value_name = "FILE.py"},
        number_option("--image-length", max_image_length, options.build.length,
                      "Bring the image to this length by filler bytes"),
        number_option("--crc", 0xFFFF, options.build.crc,
                      "Bring the image to this CRC by two filler bytes"),
        number_option("--stream-length", 1 << 24, options.build.stream_length,
                      "Bring the stream to this length by commands that do nothing"),
        {.names = "-q,--quiet", .place = &options.quiet, .help = "Say nothing when all is well"},
    };
}

CommandLine command_line(Options& options) {
    constexpr const char* any_file = "Kit source, stream or image";
    const Option folder{.names = "-o,--output",
                        .place = &options.folder,
                        .help = "Write a kit source, with its fonts and pictures, into DIR",
                        .value_name = "DIR"};
    return {.program = program_name,
            .version = ORVANEL_VERSION,
            .help = "Turns sources of fonts, pictures and macros into an EEPROM image, and back",
            .options = {},
            .commands = {{"build", "Build a kit into a stream or an image", build_options(options)},
                         {"dump",
                          "List what an image holds",
                          {file_word("FILE", options.source, any_file), folder}},
                         {"check",
                          "Tell what is wrong with an image, and what is probably not meant",
                          {file_word("FILE", options.source, any_file),
                           {.names = "--map",
                            .place = &options.map,
                            .help = "The map that build --map wrote of the image FILE; a kit "
                                    "needs none",
                            .value_name = "MAP"},
                           {.names = "--fail-on",
                            .place = &options.fail_on,
                            .help = "What makes the exit status 1; warnings if not given",
                            .value_name = "nothing|warnings|hints",
                            .fault = fail_on_fault}}},
                         {"diff",
                          "Tell what differs between two images",
                          {file_word("A", options.source, any_file),
                           file_word("B", options.other, any_file)}},
                         {"commands", "List the module's commands and their parameters", {}}},
            .footer =
                "FILE is a kit source (.kit), a stream (.eep) or an image.\n"
                "Exit status: 0 all well; 1 the source is wrong, check found something, or diff "
                "found a difference; 2 a wrong command line, or a file of it or standard "
                "output that can't be read or written."};
}

int run(int argc, char** argv) {
    Options options{};
    options.build = {-1, -1, -1};
    std::string command;
    const int status = read_command_line(command_line(options), argc, argv, &command);
    if (status >= 0) return status;
    for (const std::string& path : options.outputs)
        if (!ends_in(path, ".eep") && !ends_in(path, ".bin"))
            return refuse_option(program_name, "-o",
                                 path + " ends in neither .eep (a stream) nor .bin (an image)");
    if (command == "check" && !options.map.empty() && ends_in(options.source, ".kit"))
        return refuse_option(program_name, "--map", "is for an image; a kit needs none");
    if (command == "commands") {
        put(command_list());
        return all_well;
    }
    try {
        if (command == "build") return build(options);
        if (command == "dump") return dump(options);
        if (command == "check") return check(options);
        return diff(options);
    } catch (const Fault& fault) {
        // A file of the command line itself.
        tell_user(message_of(fault));
        return wrong_call;
    }
}

}  // namespace

int main(int argc, char** argv) {
    prepare_process();
    try {
        const int status = run(argc, argv);
        return output_is_whole(program_name) ? status : wrong_call;
    } catch (const std::exception& fault) {
        // The system has no memory left.
        tell_error(fault.what());
        return wrong_call;
    }
}
