#include "host/scenario/named_files.h"

#include "base/files.h"
#include "host/scenario/report.h"

#include <algorithm>
#include <fstream>
#include <utility>

namespace orvanel {

std::vector<RunOutput> run_outputs;

namespace {

std::vector<std::string> withheld;  // paths of outputs

/// The output that has the path, the end of the list if none has.
auto output_at(const std::string& path) {
    return std::find_if(run_outputs.begin(), run_outputs.end(), [&path](const RunOutput& output) {
        return is_same_file(output.path, path);
    });
}

}  // namespace

RunOutput named_output(const std::string& scenario, std::string (*path_in)(std::string_view line)) {
    if (run_outputs.empty() || !is_plain_file(scenario)) return {};
    const std::string_view former =
        std::exchange(scenario_name, scenario);  // its paths start there
    RunOutput found;
    std::ifstream file(scenario, std::ios::binary);
    int number = 0;
    for (std::string line; found.option.empty() && std::getline(file, line);) {
        ++number;
        if (line.ends_with('\r')) line.pop_back();
        const std::string path = path_in(line);
        if (path.empty()) continue;
        if (const auto output = output_at(path); output != run_outputs.end())
            found = {output->option, output->path + " is a file of " + scenario + ", line " +
                                         std::to_string(number) + ": name another one"};
    }
    scenario_name = former;
    return found;
}

std::string output_clash(const std::string& path) {
    if (path.empty()) return {};
    const auto output = output_at(path);
    if (output == run_outputs.end()) return {};
    withheld.push_back(output->path);
    return path + " is the file of " + output->option + " too: name another one there";
}

bool is_withheld(const std::string& path) {
    return std::find(withheld.begin(), withheld.end(), path) != withheld.end();
}

}  // namespace orvanel
