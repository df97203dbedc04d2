// orvanel42-headless for WebAssembly: one scenario in module time.

#include "base/visible.h"
#include "host/platform/headless/session.h"
#include "host/platform/headless/session_options.h"
#include "host/platform/life/start.h"
#include "host/scenario/ending.h"
#include "host/scenario/report.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <span>
#include <string>
#include <string_view>

namespace {

using namespace orvanel;

struct Options {
    std::string image, map, kit;
    std::string mem = "32";
    std::string trace, trace_json;
    bool remarks_fail = false, hints_fail = false;
    std::string scenario = "-";
    SessionOptions session;
};

struct TextOption {
    std::string_view name;
    std::string* place;
};

struct Flag {
    std::string_view name;
    bool* place;
};

/// Empty, or what is wrong with the command line. The options are those of the native program that
/// module time and one scenario know, with the same meaning.
std::string read_options(std::span<char*> args, Options& options) {
    const std::array<TextOption, 8> texts{{{"--image", &options.image},
                                           {"--map", &options.map},
                                           {"--kit", &options.kit},
                                           {"--mem", &options.mem},
                                           {"--save-image", &options.session.save_image},
                                           {"--out", &options.session.pictures.folder},
                                           {"--trace", &options.trace},
                                           {"--trace-json", &options.trace_json}}};
    const std::array<Flag, 6> flags{{{"--json", &options.session.json},
                                     {"--update", &options.session.pictures.update},
                                     {"--update-missing", &options.session.pictures.update_missing},
                                     {"--strict", &options.remarks_fail},
                                     {"--strict=remarks", &options.remarks_fail},
                                     {"--strict=hints", &options.hints_fail}}};
    bool scenario_named = false;
    for (std::size_t i = 1; i < args.size(); ++i) {
        const std::string_view word = args[i];
        const auto text = std::ranges::find(texts, word, &TextOption::name);
        const auto flag = std::ranges::find(flags, word, &Flag::name);
        if (text != texts.end()) {
            if (++i == args.size()) return std::string(word) + ": a value has to follow";
            *text->place = args[i];
        } else if (flag != flags.end()) {
            *flag->place = true;
        } else if (word.size() > 1 && word.starts_with('-')) {
            return std::string(word) + ": no option of this program";
        } else if (scenario_named) {
            return std::string(word) + ": one scenario is named already";
        } else {
            options.scenario = word;
            scenario_named = true;
        }
    }
    if (options.mem != "32" && options.mem != "64")
        return "--mem: " + options.mem + " is neither 32 nor 64";
    return {};
}

std::string load(const Options& options) {
    return load_start({.image = options.image,
                       .map = options.map,
                       .kit = options.kit,
                       .mem_kib = options.mem == "64" ? 64 : 32});
}

TraceOptions trace_of(const Options& options) {
    const Strictness strictness = options.hints_fail     ? Strictness::hints
                                  : options.remarks_fail ? Strictness::remarks
                                                         : Strictness::off;
    if (!options.trace_json.empty()) return {TraceForm::json, options.trace_json, strictness};
    return {options.trace.empty() ? TraceForm::none : TraceForm::text, options.trace, strictness};
}

}  // namespace

int main(int argc, char** argv) {
    // The C library knows no present folder until it is told one.
    if (const char* folder = std::getenv("PWD"); folder != nullptr) chdir(folder);
    Options options;
    std::string fault = read_options({argv, static_cast<std::size_t>(argc)}, options);
    if (fault.empty()) fault = load(options);
    if (!fault.empty()) {
        tell_user("orvanel42-headless: error: " + fault);
        return wrong_line;
    }
    scenario_name = "orvanel42-headless";
    tell_image_notice();
    session_options = options.session;
    session_options.trace = trace_of(options);
    return run_session(options.scenario);
}
