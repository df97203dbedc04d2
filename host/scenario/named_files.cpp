#include "host/scenario/named_files.h"

#include "base/files.h"
#include "base/safe_file.h"
#include "base/utf8.h"
#include "host/import/file_kind.h"
#include "host/import/kit_file.h"
#include "host/scenario/report.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

namespace orvanel {

std::vector<RunOutput> run_outputs;

namespace {

constexpr std::size_t max_scenario_bytes = std::size_t{1} << 30;

std::vector<std::string> withheld;  // paths of outputs
std::string former_output;          // set aside, empty for none
std::string former_place;           // where it stood

using FileIn = NamedFile (*)(std::string_view line);

/// The output that has the path, the end of the list if none has.
auto output_at(const std::string& path) {
    return std::find_if(run_outputs.begin(), run_outputs.end(), [&path](const RunOutput& output) {
        return is_same_file(output.path, path);
    });
}

/// The output that a kit is made of, the end of the list if there is none.
auto output_of_kit(const std::string& kit) {
    for (const std::string& input : kit_inputs(kit))
        if (const auto output = output_at(input); output != run_outputs.end()) return output;
    return run_outputs.end();
}

/// The output that is read when the file is used, but for what it includes.
auto output_read(const NamedFile& file) {
    const auto output = output_at(file.path);
    const bool kit = output == run_outputs.end() && file.use == FileUse::opened &&
                     kind_of_file(file.path) == FileKind::kit;
    return kit ? output_of_kit(file.path) : output;
}

/// Each file once, or two that include each other would never end.
bool is_new(const std::string& path, std::vector<std::string>& seen) {
    std::error_code ignored;
    std::string whole = std::filesystem::weakly_canonical(path, ignored);
    if (std::ranges::find(seen, whole) != seen.end()) return false;
    seen.push_back(std::move(whole));
    return true;
}

RunOutput output_in(const std::string& scenario, FileIn file_in, std::vector<std::string>& seen) {
    if (!is_plain_file(scenario) || !is_new(scenario, seen)) return {};
    Bytes content;
    if (!read_file_start(scenario, max_scenario_bytes, content).empty()) return {};
    int number = 0;
    for (auto at = content.begin(); at != content.end();) {
        const auto end = std::find(at, content.end(), '\n');
        std::string line(at, end);
        at = end == content.end() ? end : end + 1;
        if (++number == 1) line.erase(0, line.size() - after_mark(line).size());
        if (line.ends_with('\r')) line.pop_back();
        // Its paths start from its own folder.
        const std::string_view former = std::exchange(scenario_name, scenario);
        const NamedFile file = file_in(line);
        scenario_name = former;
        if (file.path.empty()) continue;
        if (const auto output = output_read(file); output != run_outputs.end())
            return {output->option, output->path + " is a file of " + scenario + ", line " +
                                        std::to_string(number) + ": name another one"};
        if (file.use != FileUse::included) continue;
        if (RunOutput found = output_in(file.path, file_in, seen); !found.option.empty())
            return found;
    }
    return {};
}

}  // namespace

RunOutput named_output(const std::string& scenario, FileIn file_in) {
    std::vector<std::string> seen;
    return run_outputs.empty() ? RunOutput{} : output_in(scenario, file_in, seen);
}

RunOutput output_in_kit(const std::string& kit) {
    const auto output = run_outputs.empty() ? run_outputs.end() : output_of_kit(kit);
    if (output == run_outputs.end()) return {};
    return {output->option, output->path + " is a file of the kit " + kit + ": name another one"};
}

std::string output_clash(const NamedFile& file) {
    if (file.path.empty() || run_outputs.empty()) return {};
    const auto output = output_read(file);
    if (output == run_outputs.end()) return {};
    if (output->option == "--junit") write_withheld_record();
    withheld.push_back(output->path);
    const bool itself = is_same_file(output->path, file.path);
    return (itself ? file.path : output->path + ", which " + file.path + " is made of,") +
           " is the file of " + output->option + " too: name another one there";
}

void set_former_aside(const std::string& path) {
    former_place = path;
    former_output = set_aside(path);
}

void settle_former() {
    if (former_output.empty()) return;
    std::error_code ignored;
    if (is_withheld(former_place))
        bring_back(former_place, former_output);
    else
        std::filesystem::remove(former_output, ignored);
    former_output.clear();
}

bool is_withheld(const std::string& path) {
    return std::find(withheld.begin(), withheld.end(), path) != withheld.end();
}

}  // namespace orvanel
