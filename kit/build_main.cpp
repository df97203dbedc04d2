// orvanel42-kit for WebAssembly: `build` alone, with the same outputs, messages and exit status.

#include "base/safe_file.h"
#include "base/standard_output.h"
#include "base/visible.h"
#include "kit/build.h"
#include "kit/objects.h"
#include "kit/stream.h"

#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace orvanel;

constexpr const char* program_name = "orvanel42-kit";

enum Status { all_well = 0, wrong_content = 1, wrong_call = 2 };

struct Options {
    std::string source;
    std::vector<std::string> outputs;
};

void tell_error(const std::string& what) {
    tell_user(std::string(program_name) + ": error: " + what);
}

/// Empty, or what is wrong with the command line.
std::string read_options(std::span<char*> args, Options& options) {
    if (args.size() < 2 || std::string_view(args[1]) != "build")
        return "build is the only command of this program";
    for (std::size_t i = 2; i < args.size(); ++i) {
        const std::string word = args[i];
        if (word == "-o") {
            if (++i == args.size()) return "-o: a value has to follow";
            options.outputs.emplace_back(args[i]);
        } else if (word.starts_with('-') || !options.source.empty()) {
            return word + ": one kit and -o FILE are all that build takes here";
        } else {
            options.source = word;
        }
    }
    return options.source.empty() || options.outputs.empty() ? "a kit and -o FILE are required"
                                                             : "";
}

Status tell(const Faults& faults) {
    for (const std::string& message : messages_of(faults, program_name))
        tell_user(message);
    return faults.empty() ? all_well : wrong_content;
}

int build(const Options& options) {
    Faults faults;
    const Built built = build_kit(
        options.source, {-1, -1, -1}, [](const std::string&) {}, faults);
    if (!faults.empty()) return tell(faults);
    std::vector<Bytes> contents;
    for (const std::string& path : options.outputs)
        contents.push_back(path.ends_with(".eep") ? stream_of(built.kit, built.image, faults)
                                                  : built.image);
    if (!faults.empty()) return tell(faults);
    for (std::size_t i = 0; i < contents.size(); ++i) {
        const std::string& path = options.outputs[i];
        if (const std::string fault = replace_file(path, contents[i], Backup::none);
            !fault.empty()) {
            tell_error("cannot write " + path + ": " + fault);
            return wrong_call;
        }
        write_stdout(visible_lines(path + ": " + std::to_string(contents[i].size()) + " bytes\n"));
    }
    write_stdout("image: " + summary_of(built.image) + "\n");
    return all_well;
}

}  // namespace

int main(int argc, char** argv) {
    // The C library knows no present folder until it is told one.
    if (const char* folder = std::getenv("PWD"); folder != nullptr) chdir(folder);
    try {
        Options options;
        const std::string fault = read_options({argv, static_cast<std::size_t>(argc)}, options);
        if (fault.empty()) {
            const int status = build(options);
            if (flush_stdout()) return status;
            tell_error(stdout_fault());
            return wrong_call;
        }
        tell_error(fault);
    } catch (const Fault& fault) {
        // The file of the kit itself.
        tell_user(message_of(fault));
    } catch (const std::exception& fault) {
        tell_error(fault.what());
    }
    return wrong_call;
}
