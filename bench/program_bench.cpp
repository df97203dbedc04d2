// The programs as users run them: program_bench HEADLESS WINDOW EMPTY_WINDOW
// How long they take to start, what they take at rest and under traffic, one of them and a hundred,
// and how many scenarios a second pass. Needs an X display without a window manager, black at
// the start, as xvfb-run gives one.

#include "bench/processes.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <signal.h>
#include <string>
#include <thread>
#include <vector>
#include <xcb/xcb.h>

namespace {

using namespace orvanel;
using std::chrono::milliseconds;
using std::chrono::seconds;
using std::chrono::steady_clock;
namespace fs = std::filesystem;

constexpr seconds share_time{10};
constexpr int module_count = 100;

using Command = std::vector<std::string>;

/// Median milliseconds of `count` runs.
double median_ms(int count, const std::function<void()>& run) {
    std::vector<double> times;
    for (int i = 0; i < count; ++i) {
        const auto begin = steady_clock::now();
        run();
        times.push_back(seconds_since(begin) * 1e3);
    }
    std::ranges::nth_element(times, times.begin() + count / 2);
    return times[static_cast<std::size_t>(count) / 2];
}

void measure_start(const std::string& what, const Command& command) {
    print_result(what, median_ms(50, [&] { end_process(begin_process(command)); }), "ms");
}

// Windows.

struct Screen {
    xcb_connection_t* connection;
    xcb_window_t root;
};

Screen open_screen() {
    xcb_connection_t* const connection = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(connection) != 0) {
        std::fputs("program_bench: there is no X display\n", stderr);
        std::exit(EXIT_FAILURE);
    }
    return {connection, xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root};
}

/// Whether the pixel in the middle of where the windows stand is black.
bool is_black(const Screen& screen) {
    auto* const picture =
        xcb_get_image_reply(screen.connection,
                            xcb_get_image(screen.connection, XCB_IMAGE_FORMAT_Z_PIXMAP, screen.root,
                                          446, 290, 1, 1, ~0U),
                            nullptr);
    if (picture == nullptr) return true;
    const std::uint8_t* const pixel = xcb_get_image_data(picture);
    const bool black = pixel[0] == 0 && pixel[1] == 0 && pixel[2] == 0;
    std::free(picture);
    return black;
}

/// Median milliseconds until something is painted. The window before has to be gone.
void measure_first_frame(const std::string& what, const Screen& screen, const Command& command) {
    std::vector<double> times;
    for (int i = 0; i < 11; ++i) {
        while (!is_black(screen))
            std::this_thread::sleep_for(milliseconds{1});
        const auto begin = steady_clock::now();
        const pid_t pid = begin_process(command);
        while (is_black(screen))
            std::this_thread::sleep_for(milliseconds{1});
        times.push_back(seconds_since(begin) * 1e3);
        end_process(pid, SIGTERM);
    }
    std::ranges::sort(times);
    print_result(what, times[times.size() / 2], "ms");
}

// Modules with a line.

struct Module {
    pid_t pid;
    int line;
};

/// Starts the program and opens the pseudo terminal that it names.
Module begin_module(Command command) {
    std::array<int, 2> out{};
    if (pipe2(out.data(), O_CLOEXEC) != 0) std::exit(EXIT_FAILURE);
    command.insert(command.end(), {"--serial", "pty"});
    const pid_t pid = begin_process(command, out[1]);
    close(out[1]);
    std::string name;
    for (char c = 0; read(out[0], &c, 1) == 1 && c != '\n';)
        name += c;
    close(out[0]);
    const int line = name.empty() ? -1
                                  : open(name.substr(name.find('/')).c_str(),
                                         O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (line < 0) {
        std::fprintf(stderr, "program_bench: %s names no line\n", command[0].c_str());
        std::exit(EXIT_FAILURE);
    }
    return {pid, line};
}

void end_module(const Module& module) {
    end_process(module.pid, SIGTERM);
    close(module.line);
}

/// 8 x 8 dots inverted and lettered, all over the glass.
std::string small_changes() {
    std::string commands = "#TA";
    for (int i = 0; i < 600; ++i) {
        const int x = i * 24 % 232, y = i * 40 % 120;
        const std::string corner = std::to_string(x) + "," + std::to_string(y);
        commands.append("#RI").append(corner).append(",").append(std::to_string(x + 7));
        commands.append(",").append(std::to_string(y + 7)).append("\r#ZL").append(corner);
        commands.append(",\"A\"\r");
    }
    return commands;
}

void rest() { std::this_thread::sleep_for(share_time); }

/// A folder with these settings and a blank image, so that no demo runs.
std::string make_folder(const fs::path& folder, const std::string& settings) {
    fs::create_directories(folder);
    std::ofstream(folder / "Orvanel42.bin") << std::string(32768, '\xFF');
    std::ofstream(folder / "simulator.ini") << "[Orvanel42]\nprotocol=0\nxpos=300\nypos=200\n"
                                            << settings;
    return folder.string();
}

void measure_window(const fs::path& folder, const std::string& program, int zoom) {
    const std::string at_zoom = ", zoom " + std::to_string(zoom);
    const Module module = begin_module(
        {program, "--dir",
         make_folder(folder / ("zoom" + std::to_string(zoom)), "zoom=" + std::to_string(zoom))});
    std::this_thread::sleep_for(seconds{2});
    measure_share("window idle, port open" + at_zoom, {module.pid}, rest);
    measure_share("window, 8 x 8 changes at 115200 baud" + at_zoom, {module.pid},
                  [&] { send_at_line_speed(module.line, small_changes(), share_time); });
    print_result("window, resident" + at_zoom,
                 static_cast<double>(kib_of(module.pid, "status", "VmRSS:")) / 1024, "MiB");
    end_module(module);
}

void measure_many(const fs::path& folder, const std::string& program) {
    std::vector<Module> modules;
    std::vector<pid_t> processes;
    for (int i = 0; i < module_count; ++i) {
        const std::string home = make_folder(folder / ("module" + std::to_string(i)), "");
        modules.push_back(begin_module({program, "--realtime", "--dir", home}));
        processes.push_back(modules.back().pid);
    }
    print_result("one windowless module, private",
                 static_cast<double>(kib_of(processes[0], "smaps_rollup", "Private_Dirty:") +
                                     kib_of(processes[0], "smaps_rollup", "Private_Clean:")) /
                     1024,
                 "MiB");
    const std::string count = std::to_string(module_count);
    measure_share(count + " modules, idle", processes, rest);
    measure_share(count + " modules, ten commands a second each", processes, [&] {
        const std::string command = "#RI0,0,239,127\r";
        for (auto begin = steady_clock::now(); steady_clock::now() - begin < share_time;) {
            for (const Module& module : modules)
                if (write(module.line, command.data(), command.size()) < 0) break;
            std::this_thread::sleep_for(milliseconds{100});
        }
    });
    for (const Module& module : modules)
        kill(module.pid, SIGTERM);
    for (const Module& module : modules)
        end_module(module);
}

// Module time.

/// Scenarios of 50 commands and 5 pictures each, which one of them draws before.
void measure_scenarios(const fs::path& folder, const std::string& program) {
    constexpr int scenarios = 1000;
    fs::create_directories(folder);
    std::string text = "scenario 1\n";
    for (int picture = 0; picture < 5; ++picture) {
        for (int i = 0; i < 9; ++i)
            text += "send \"#GD" + std::to_string(picture * 40) + ",0,239," +
                    std::to_string(i * 14) + "\\r\"\n";
        text += "settle\nexpect-screen picture" + std::to_string(picture) + ".png\n";
    }
    Command all{program, "--jobs", "2"};
    for (int i = 0; i < scenarios; ++i) {
        all.push_back((folder / ("s" + std::to_string(i) + ".scn")).string());
        std::ofstream(all.back()) << text;
    }
    end_process(begin_process({program, "--update", all.back()}));
    const auto begin = steady_clock::now();
    end_process(begin_process(all));
    print_result("1000 scenarios of 50 commands and 5 pictures, 2 jobs",
                 scenarios / seconds_since(begin), "a second");
}

void measure_idle_hour(const fs::path& folder, const std::string& program) {
    const std::string path = (folder / "hour.scn").string();
    std::ofstream(path) << "scenario 1\nwait 3600000\n";
    const double ms = median_ms(5, [&] { end_process(begin_process({program, path})); });
    print_result("an idle hour of module time", 3600e3 / ms, "x real time");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fputs("usage: program_bench HEADLESS WINDOW EMPTY_WINDOW\n", stderr);
        return 2;
    }
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    const std::string headless = argv[1], window = argv[2], empty_window = argv[3];
    std::string pattern = (fs::temp_directory_path() / "program_bench.XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) return EXIT_FAILURE;
    const fs::path folder = pattern;

    measure_start("an empty process", {"true"});
    measure_start("windowless, an empty scenario, start to end", {headless, "/dev/null"});
    const Screen screen = open_screen();
    measure_first_frame("an empty window, to its first frame", screen, {empty_window});
    measure_first_frame("window, to its first frame", screen,
                        {window, "--dir", make_folder(folder / "start", "")});
    measure_sleeper(share_time);
    for (const int zoom : {1, 3})
        measure_window(folder, window, zoom);
    measure_many(folder, headless);
    measure_scenarios(folder / "scenarios", headless);
    measure_idle_hour(folder, headless);
    fs::remove_all(folder);
    xcb_disconnect(screen.connection);
}
