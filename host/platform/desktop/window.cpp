#include "host/platform/desktop/window.h"

#include "base/standard_output.h"
#include "base/visible.h"
#include "firmware/core/ground/backlight.h"
#include "host/platform/desktop/main_window.h"
#include "host/platform/desktop/panel.h"
#include "host/platform/desktop/scale.h"
#include "host/platform/life/start.h"
#include "host/platform/life/start_port.h"
#include "host/platform/real_time/real_time.h"
#include "host/platform/serial/serial_line.h"
#include "host/platform/system/process.h"
#include "host/platform/system/wake.h"
#include "host/program/program_folder.h"
#include "host/requests/main_requests.h"
#include "host/requests/painter.h"
#include "host/window/roof/window_timer.h"
#include "seam/platform.h"

#include <QApplication>
#include <QSocketNotifier>
#include <QTimer>

namespace orvanel {

constinit bool ended_by_signal = false;
constinit const SerialLines* serial_lines = &real_lines;

namespace {

constinit QTimer* fade_timer = nullptr;  // a child of the window
constinit int main_wake = -1;            // set by firmware_thread when it wants a paint
constinit int end_wake = -1;             // set by a signal

/// Has the event loop run `action` whenever `fd` has been set; ends with the window.
void on_wake(int fd, void (*action)()) {
    auto* notifier = new QSocketNotifier(fd, QSocketNotifier::Read, main_window);
    QObject::connect(notifier, &QSocketNotifier::activated, main_window, [fd, action] {
        take_wake(fd);
        action();
    });
}

void make_fade_timer() {
    fade_timer = new QTimer(main_window);
    fade_timer->setTimerType(Qt::PreciseTimer);
    QObject::connect(fade_timer, &QTimer::timeout, main_window, backlight_fade_step);
}

void show_and_listen() {
    show_main_window();
    on_wake(main_wake, serve_main_requests);
    on_wake(end_wake, [] {
        ended_by_signal = true;
        QApplication::exit();  // not quit, which would close the ports panel as if by hand
    });
    make_fade_timer();
}

void start_window_timer() {
    auto* timer = new QTimer(main_window);
    timer->setTimerType(Qt::PreciseTimer);
    QObject::connect(timer, &QTimer::timeout, main_window, window_timer);
    QObject::connect(timer, &QTimer::timeout, main_window, save_programmed_image);
    timer->start(window_timer_ms);
}

/// The port that is open from the start. Why it can't be opened is for who has started us; the user
/// has a message.
std::string open_port(const std::string& serial) {
    const std::string fault = open_start_port(start_port(serial), serial);
    if (!fault.empty()) tell_user("orvanel42: error: " + fault);
    const std::string name = new_peer_name(serial);
    if (name.empty()) return {};
    write_stdout("serial " + name + "\n");
    (void)output_is_whole("orvanel42");  // who waits for the name learns why it doesn't come
    return {};
}

void start_painted_module() {
    open_painter();
    start_module();
}

}  // namespace

bool prepare_window() {
    main_wake = open_wake();
    end_wake = open_end_signals();
    ended_by_signal = false;
    return open_real_time() && main_wake >= 0 && end_wake >= 0;
}

std::string open_window(const std::string& file, const std::string& serial) {
    return start_run({.make_window = make_main_window,
                      .show_window = show_and_listen,
                      .open_port = open_port,
                      .start_timers = start_window_timer,
                      .start_threads = start_painted_module},
                     serial, file);
}

void close_window() {
    stop_module();
    keep_place();
    keep_panel_place();
    drop_main_window();
    close_wake(main_wake);
    close_real_time();
}

// The platform: real time, and the window above.

void sleep_ms(int ms) { real_sleep_ms(ms); }

void sleep_until_woken(int) { real_sleep_until_woken(max_idle_ms); }

void wake_firmware() { real_wake_firmware(); }

void spend_byte_time() {}

bool on_main_thread() { return real_on_main_thread(); }

std::int64_t clock_ms() { return real_clock_ms(); }

void wake_main() { set_wake(main_wake); }

void paint_window(PixelRect rect) {
    // A hidden or minimised window paints nothing here, and all of it when it shows again.
    glass->repaint(covering(rect, glass->devicePixelRatioF()));
}

void set_fade_timer(bool runs) {
    if (runs)
        fade_timer->start(fade_step_ms);
    else
        fade_timer->stop();
}

}  // namespace orvanel
