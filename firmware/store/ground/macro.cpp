#include "firmware/store/ground/macro.h"

#include "base/bytes.h"
#include "firmware/core/ground/trace.h"
#include "firmware/store/ground/eeprom.h"

#include <array>

namespace orvanel {

constinit std::uint8_t macro_depth = 0;
constinit std::atomic<std::uint8_t> auto_macro_mode{0};

namespace {

/// Where a level reads on.
struct MacroFrame {
    int macro_pos;   // image offset of the next byte
    int macro_left;  // bytes that the level still holds, above 0 while it is active
};

constinit MacroFrame running{};

// The suspended levels, each under the depth it had: row 0 is never used, since the innermost
// level is always `running`.
constinit std::array<MacroFrame, max_macro_depth> suspended{};

// Of all levels, for a trace.
constinit std::array<ByteSource, max_macro_depth + 1> names{};

}  // namespace

void power_on_macros() {
    macro_depth = 0;
    auto_macro_mode.store(0);
}

bool run_macro(std::uint16_t table, std::uint8_t index) {
    if (macro_depth == max_macro_depth) {
        remark(Remark::macros_nested, index);
        return false;
    }
    eeprom_seek(static_cast<std::uint16_t>(table + macro_record_size * index));
    const int offset = eeprom_read16();
    const int length = eeprom_read16();
    if (!is_macro_length(length)) return false;
    if (macro_depth > 0) suspended[macro_depth] = running;
    ++macro_depth;
    running = {offset, length};
    names[macro_depth] = {ByteOrigin::macro, table, index, static_cast<std::uint32_t>(offset)};
    return true;
}

void start_macro(std::uint16_t table, std::uint8_t index) {
    const bool room = macro_depth < max_macro_depth;
    if (!run_macro(table, index) && room) remark(Remark::missing_macro, index);
}

ByteSource next_macro_source() {
    ByteSource source = names[macro_depth];
    source.offset = static_cast<std::uint32_t>(running.macro_pos);
    return source;
}

std::uint8_t next_macro_byte() {
    const std::uint8_t byte = eeprom_at(running.macro_pos);
    ++running.macro_pos;
    --running.macro_left;
    while (running.macro_left == 0) {
        if (--macro_depth == 0) break;
        running = suspended[macro_depth];
    }
    return byte;
}

}  // namespace orvanel
