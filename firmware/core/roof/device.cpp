#include "firmware/core/roof/device.h"

#include "base/bytes.h"
#include "firmware/core/ground/backlight.h"
#include "firmware/core/ground/draw_area.h"
#include "firmware/core/ground/requests.h"
#include "firmware/core/ground/tone.h"
#include "firmware/core/ground/trace.h"
#include "firmware/core/read/read.h"
#include "firmware/store/ground/eeprom.h"
#include "firmware/store/roof/eeprom_command.h"
#include "firmware/store/roof/timers.h"
#include "firmware/text/terminal.h"
#include "link/ground/answers.h"
#include "link/ground/pipes.h"
#include "link/ground/port.h"
#include "seam/host_calls.h"
#include "seam/platform.h"

#include <array>
#include <string_view>

namespace orvanel {

constinit std::atomic<std::uint8_t> output_port{0};
constinit std::atomic<std::uint32_t> ports_shown{0};

namespace {

/// The version as two BCD digits and the revision letter, out of the version text: the digit after
/// the first 'V', the one after the next '.', and the letter after the '.' after that.
struct Version {
    std::uint8_t number, revision;
};

constexpr Version version_of(std::string_view text) {
    const std::size_t v = text.find('V');
    const std::size_t dot = text.find('.', v);
    const std::size_t revision = text.find('.', dot + 1);
    const int high = text[v + 1] - '0', low = text[dot + 1] - '0';
    return {low8(high << 4 | low), static_cast<std::uint8_t>(text[revision + 1])};
}
static_assert(version_of("HD V1.8 Rev.B").number == 0x18 &&
              version_of("HD V1.8 Rev.B").revision == 'B');

}  // namespace

void power_on_device() { output_port.store(0xFF); }

void identify() {
    constexpr std::array<std::uint8_t, 9> answer{
        0xFF, 0xFF, 0x48, low8(screen_width), 0, low8(screen_height), 0, 0x01, 0x42};
    tx_pipe_put_block(answer);
}

void set_line_speed() {
    com_set_baud(line_speeds[masked(params[0], low8(line_speeds.size() - 1))]);
}

void wait_command() {
    for (int left = params[0]; left > 0 && !breaking_off(); --left)
        sleep_ms(tick_ms);
}

void set_address() {
    if (module_address.load() == 0) module_address.store(params[0]);
}

void send_bytes() {
    for (int left = params[0]; left > 0; --left)
        answer_byte(read_byte());
}

void send_information() {
    const ImageCheck check = eeprom_checksum();
    if (check.image_crc != check.stored_crc)
        remark(Remark::wrong_crc, check.stored_crc, check.image_crc);
    const auto [version, revision] = version_of(version_text);
    const int size_kb = eeprom_size / 1024;
    const std::array<std::uint8_t, 21> payload{low8(screen_width),
                                               0,
                                               low8(screen_height),
                                               0,
                                               version,
                                               revision,
                                               '+',
                                               '+',
                                               0x13,
                                               0x80,
                                               0x13,
                                               0x80,
                                               low8(size_kb),
                                               low8(size_kb >> 8),
                                               low8(check.image_crc),
                                               low8(check.image_crc >> 8),
                                               low8(check.stored_crc),
                                               low8(check.stored_crc >> 8),
                                               low8(check.image_length),
                                               low8(check.image_length >> 8),
                                               0};
    answer_packet('I', payload);
}

void send_version() { answer_text('V', version_text); }

void beep_command() { start_beep(params[0]); }

void set_output_port(std::uint8_t p, std::uint8_t v) {
    const int line = masked(p, 0x0F);
    const auto bit = low8(1 << ((line - 1) & 7));
    if (line == 0)
        output_port.store(v);
    else if ((v & 3) == 0)
        output_port.fetch_and(low8(~bit));
    else if ((v & 3) == 1)
        output_port.fetch_or(bit);
    else if ((v & 3) == 2)
        output_port.fetch_xor(bit);
    ports_shown.store(~std::uint32_t{output_port.load()});
    show_ports();
}

void output_port_command() { set_output_port(params[0], params[1]); }

void set_brightness() {
    // One step from the end, so that off and full come without a visible fade.
    constexpr std::uint8_t dark_at_once = 254, full_at_once = 255, full = backlight_full;
    const std::uint8_t p = params[0];
    if (p == dark_at_once) put_backlight_current(1);
    if (p == full_at_once) put_backlight_current(full - 1);
    if (p > full && p < dark_at_once) remark(Remark::clamped, p, full);
    const std::uint8_t brightness = p == dark_at_once ? std::uint8_t{0} : std::min(p, full);
    backlight_brightness.store(brightness);
    backlight_goal.store({brightness, 0});
}

void switch_backlight() {
    constexpr std::uint8_t off = 0, on = 1;
    const std::uint8_t b = read_byte();  // raw under both lead-ins
    const std::uint8_t target = b == off ? std::uint8_t{0} : backlight_brightness.load();
    backlight_goal.store({target, b == on ? std::uint8_t{0} : b});
}

}  // namespace orvanel
