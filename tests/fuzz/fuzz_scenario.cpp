// fuzz_scenario.cpp: any text is a scenario that ends, well or with a message. Each one runs in a
// process of its own, as in the program, which hands its counts of edges back to the fuzzer. Built
// with ORVANEL_FUZZ_JSON it is the talk of a program, and each answer one object on one line.

#include "base/utf8.h"
#include "firmware/store/ground/eeprom.h"
#include "host/platform/headless/module_time.h"
#include "host/platform/headless/session.h"
#include "host/platform/headless/session_options.h"
#include "host/program/settings.h"
#include "host/scenario/report.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <sanitizer/common_interface_defs.h>
#include <span>
#include <string>
#include <string_view>

// How often each edge was taken; the linker names the ends of the counters.
extern "C" std::uint8_t first_counter[] asm("__start___sancov_cntrs");
extern "C" std::uint8_t end_of_counters[] asm("__stop___sancov_cntrs");

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace orvanel {
namespace {

#ifdef ORVANEL_FUZZ_JSON
constexpr bool in_json = true;
#else
constexpr bool in_json = false;
#endif

constexpr unsigned patience_s = 3;

std::filesystem::path folder;         // where the scenarios run
std::span<std::uint8_t> handed_back;  // the counters of the last one, in memory of both processes
constinit std::int64_t seen_clock_us = -1;
constinit int seen_line = -1;

std::span<std::uint8_t> counters() { return {first_counter, end_of_counters}; }

[[noreturn]] void hand_back() {
    std::ranges::copy(counters(), handed_back.begin());
    _exit(0);
}

/// A scenario may last long, and is left alone then, as long as its module's time goes on, or one
/// line follows another.
void judge_clock(int /*signal*/) {
    if (module_clock_us() == seen_clock_us && scenario_line == seen_line) std::abort();
    if (seen_clock_us >= 0) hand_back();
    seen_clock_us = module_clock_us();
    seen_line = scenario_line;
    alarm(patience_s);
}

[[noreturn]] void run_scenario(int text_fd, int answers_fd) {
    dup2(text_fd, STDIN_FILENO);
    // What the scenario says goes nowhere, what the sanitizers say stays.
    __sanitizer_set_report_fd(reinterpret_cast<void*>(static_cast<std::intptr_t>(dup(2))));
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(in_json ? answers_fd : nowhere, STDOUT_FILENO);
    dup2(nowhere, STDERR_FILENO);
    if (chdir(folder.c_str()) != 0) std::abort();
    std::signal(SIGALRM, judge_clock);
    alarm(patience_s);
    session_options.json = in_json;
    run_session("-");
    hand_back();
}

/// Text in memory, to be read from its beginning.
int file_of(std::span<const std::uint8_t> text) {
    const int fd = memfd_create("scenario", MFD_CLOEXEC);
    if (fd < 0 || write(fd, text.data(), text.size()) != std::ssize(text)) std::abort();
    lseek(fd, 0, SEEK_SET);
    return fd;
}

/// The answers, as far as they came.
std::string read_answers(int fd) {
    std::string answers(static_cast<std::size_t>(lseek(fd, 0, SEEK_END)), '\0');
    if (pread(fd, answers.data(), answers.size(), 0) != std::ssize(answers)) std::abort();
    return answers.substr(0, answers.rfind('\n') + 1);
}

void judge_answers(std::string_view answers) {
    while (!answers.empty()) {
        const std::string_view line = answers.substr(0, answers.find('\n'));
        answers.remove_prefix(line.size() + 1);
        if (!line.starts_with('{') || !line.ends_with('}')) std::abort();
        for (std::string_view rest = line; !rest.empty();) {
            const Utf8Character character = utf8_character(rest);
            if (character.length == 0 || character.code < ' ') std::abort();
            rest.remove_prefix(character.length);
        }
    }
}

void empty_folder() {
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        std::filesystem::remove_all(entry);
}

}  // namespace
}  // namespace orvanel

int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    using namespace orvanel;
    std::string name = (std::filesystem::temp_directory_path() / "fuzz-scenario-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) std::abort();
    folder = name;
    std::atexit([] { std::filesystem::remove_all(folder); });
    const std::size_t size = counters().size();
    void* const shared =
        mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED) std::abort();
    handed_back = {static_cast<std::uint8_t*>(shared), size};
    take_settings("", "");
    eeprom_reset_to(eeprom_small, {});
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvanel;
    const std::span text(data, size);
    // Its files stay in the folder.
    if (std::ranges::find(text, '/') != text.end()) return -1;
    const int text_fd = file_of(text);
    const int answers_fd = file_of({});
    const pid_t child = fork();
    if (child < 0) std::abort();
    if (child == 0) run_scenario(text_fd, answers_fd);
    close(text_fd);
    int status = 0;
    while (waitpid(child, &status, 0) < 0) {
    }
    empty_folder();
    if (status != 0) std::abort();
    judge_answers(read_answers(answers_fd));
    close(answers_fd);
    std::ranges::copy(handed_back, counters().begin());
    return 0;
}
