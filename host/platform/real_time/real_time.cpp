#include "host/platform/real_time/real_time.h"

#include "firmware/core/ground/requests.h"
#include "firmware/core/roof/loop.h"
#include "host/platform/serial/serial_line.h"
#include "host/platform/system/wake.h"
#include "host/requests/main_requests.h"
#include "host/requests/painter.h"
#include "link/feeds/feeds.h"
#include "link/roof/com_port.h"
#include "link/roof/link_thread.h"
#include "seam/platform.h"

#include <atomic>
#include <chrono>
#include <optional>
#include <thread>

namespace orvanel {

namespace {

// Written before firmware_thread starts and after it has ended.
constinit int input_wake = -1;
constinit int stop_wake = -1;  // once set it stays so: every sleep ends at once
constinit std::optional<std::thread::id> main_thread{};
constinit std::optional<std::thread> firmware_thread{};
constinit std::optional<std::thread> link_thread{};

void join(std::optional<std::thread>& thread) {
    if (thread) thread->join();
    thread.reset();
}

// input_wake has been set since the last sleep: saves a system call for each further block.
constinit std::atomic<bool> firmware_woken{false};

}  // namespace

bool open_real_time() {
    main_thread = std::this_thread::get_id();
    firmware_woken.store(false);
    input_wake = open_wake();
    stop_wake = open_wake();
    return open_serial() && input_wake >= 0 && stop_wake >= 0;
}

void close_real_time() {
    close_serial();
    close_wake(input_wake);
    close_wake(stop_wake);
}

std::int64_t real_clock_ms() {
    using std::chrono::duration_cast;
    using std::chrono::milliseconds;
    return duration_cast<milliseconds>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void real_sleep_ms(int ms) { wait_for_wake(stop_wake, ms); }

void real_sleep_until_woken(int ms) {
    if (!wait_for_wake(input_wake, ms)) return;
    // The flag goes last: who finds it still set put his bytes before we look at the pipe again,
    // and who finds it clear sets the wake again.
    take_wake(input_wake);
    firmware_woken.exchange(false);
}

void real_wake_firmware() {
    if (!firmware_woken.exchange(true)) set_wake(input_wake);
}

bool real_on_main_thread() { return std::this_thread::get_id() == main_thread; }

void start_module() {
    open_messages();
    try {
        firmware_thread.emplace(run_firmware);
        link_thread.emplace(run_link);
    } catch (...) {
        stop_module();
        throw;
    }
}

void stop_module() {
    shutdown_requested.store(true);
    seal_painter();
    seal_messages();
    set_wake(stop_wake);
    real_wake_firmware();
    wake_link();
    join(firmware_thread);
    join(link_thread);
    close_link();
    stop_feed();
}

}  // namespace orvanel
