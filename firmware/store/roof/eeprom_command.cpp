#include "firmware/store/roof/eeprom_command.h"

#include "base/bytes.h"
#include "firmware/core/ground/requests.h"
#include "firmware/core/ground/trace.h"
#include "firmware/core/read/read.h"
#include "firmware/store/ground/eeprom.h"
#include "firmware/store/roof/timers.h"
#include "link/ground/answers.h"
#include "link/ground/pipes.h"
#include "seam/host_calls.h"

namespace orvanel {

namespace {

constexpr std::uint8_t overflow_report = 'E';

std::uint16_t read_raw16() {
    const std::uint8_t low = read_byte();
    return le16(low, read_byte());
}

/// Writes at the cursor. The first byte that doesn't fit is reported on the line, and nothing more
/// is written until a restart has reported the overflow.
void program_byte(std::uint8_t byte) {
    if (eeprom_state == EepromState::overflowed || eeprom_write(byte)) return;
    if (shutdown_requested.load()) return;
    remark(Remark::eeprom_overflow);
    answer_byte(overflow_report);
    eeprom_state = EepromState::overflowed;
    eeprom_withdraw_copy();
}

void send_image(std::uint16_t address, int length) {
    eeprom_seek(address);
    for (int i = 0; i < length; ++i)
        answer_byte(eeprom_read());
}

void write_image(std::uint16_t address, int length) {
    if (length == 0) return;
    // A write from offset 0 starts a new image, so a download needs no erase of its own.
    if (address == 0) eeprom_erase();
    eeprom_seek(address);
    // Read to the end even when nothing fits any more, or the stream loses step.
    for (int i = 0; i < length; ++i)
        program_byte(read_byte());
}

void store_crc() {
    const ImageCheck check = eeprom_checksum();
    if (check.image_length == unprogrammed) return;
    eeprom_seek(check.image_length);
    eeprom_write(low8(check.image_crc));
    eeprom_write(low8(check.image_crc >> 8));
}

void clear_image(std::uint16_t address, int length) {
    if (length == 0) return;
    eeprom_seek(address);
    for (int i = 0; i < length && eeprom_state != EepromState::overflowed; ++i)
        program_byte(erased_byte);
    store_crc();
}

void report_overflow() {
    eeprom_state = EepromState::unchanged;
    show_message("Error: HD Orvanel42 simulator",
                 "not enough EEPROM memory (32kB)\n"
                 "to increase EEPROM-Memory edit File 'SIMULATOR.INI'\n"
                 "change memKB=64 in Section [Orvanel42]");
    eeprom_erase();
    clear_pipe(rx_pipe);
}

void restart_module() {
    if (shutdown_requested.load()) return;
    if (eeprom_state == EepromState::overflowed) {
        report_overflow();
    } else {
        eeprom_state = EepromState::programmed;
        // Here all is written that this J or C ends, and the module starts with just that. At the
        // next look between two commands a W that follows at once may have begun another image.
        eeprom_leave_copy();
    }
    tick_enabled.store(false);
    request_restart(0);
}

}  // namespace

ImageCheck eeprom_checksum() {
    ImageCheck check{};
    eeprom_seek(0);
    const std::uint8_t low = eeprom_read(), high = eeprom_read();
    check.image_length = le16(low, high);
    if (check.image_length == unprogrammed) return check;
    std::uint16_t crc = crc_step(crc_step(0, low), high);
    for (int offset = 2; offset < check.image_length; ++offset)
        crc = crc_step(crc, eeprom_read());
    check.image_crc = crc;
    // Where the cursor stands: after the length itself, for an image said to be shorter than it.
    check.stored_crc = eeprom_read16();
    return check;
}

void eeprom_command() {
    macro_processes_enabled = false;
    const std::uint16_t address = read_raw16();
    const int length = read_raw16();
    switch (read_byte()) {
    case 'R':
        send_image(address, length);
        break;
    case 'W':
        write_image(address, length);
        break;
    case 'C':
        clear_image(address, length);
        restart_module();
        break;
    case 'J':
        restart_module();
        break;
    default:
        break;
    }
}

}  // namespace orvanel
