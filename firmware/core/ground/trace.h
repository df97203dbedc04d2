// trace.h: what the module tells a listener about its work, for the trace of the windowless
// program. Without a listener each of these calls is one look at a word that never changes; with
// one the module still does what it would have done.

#pragma once

#include <cstdint>
#include <span>

namespace orvanel {

enum class ByteOrigin : std::uint8_t { companion, feed, line, macro };

struct ByteSource {
    ByteOrigin origin;
    std::uint16_t macro_table = 0;  // of a macro: one of firmware/store/ground/macro.h
    std::uint32_t number = 0;       // of the macro or the feed; else as the host that sends counts
    std::uint32_t offset = 0;       // of the byte: in the image, in what is fed or sent
};

/// What the module does in silence and the developer of a device wants to know. `from` and `to` are
/// the value that came and the one that was taken, or `from` alone is the number of what is meant.
enum class Remark : std::uint8_t {
    clamped,
    wrapped,
    sign_dropped,
    undefined_group,
    undefined_op,
    missing_font,
    missing_glyph,
    missing_picture,
    missing_border,
    missing_macro,
    missing_bar,
    missing_process,
    macros_nested,  // as deep as they can
    text_cut,       // by the buffer of its operation
    picture_cut,    // at the edge of the glass
    menus_full,
    areas_full,
    wrong_crc,
    eeprom_overflow,
    answer_dropped,  // part of it at least: nobody takes answers
};
constexpr Remark last_remark = Remark::answer_dropped;

/// A rectangle of dots, both corners inclusive, on the glass or not.
struct Block {
    int x1, y1, x2, y2;
};

enum class TraceKind : std::uint8_t {
    byte,       // delivered by the read layer: `from`, with its source
    begin,      // the byte just delivered begins a command
    letters,    // group `from` and op `to`, 0 for none; `role` says what it does, null if undefined
    parameter,  // read by the command: `from`
    remark,
    end,     // of the command
    text,    // the byte just delivered goes to the terminal
    idle,    // nothing to read
    answer,  // `bytes` go to the line
    block,   // of text, laid out: its rectangle `block`, which may leave the glass. It would have
             // begun `from` dots before that: the glass has no room there
    press,   // a finger's event at dot `from`, `to`
    drag,
    release,
    reset,  // of kind `from`: the module starts again
};

struct TraceEvent {
    TraceKind kind;
    int from = 0;
    int to = 0;
    const char* role = nullptr;
    Remark remark{};
    ByteSource source{};
    std::span<const std::uint8_t> bytes{};
    Block block{};
};

using TraceListener = void (*)(const TraceEvent&);

/// Called on firmware_thread. Set by the host before the firmware starts, then left alone; null for
/// no trace.
extern TraceListener trace_listener;

inline bool tracing() { return trace_listener != nullptr; }

/// What the inline calls below do when there is a listener; apart from them, so that they cost
/// nothing but their test.
[[gnu::cold]] void tell(TraceKind kind, int from, int to, const char* role);
[[gnu::cold]] void tell_byte(std::uint8_t byte, ByteSource source);
[[gnu::cold]] void tell_answer(std::span<const std::uint8_t> bytes);
[[gnu::cold]] void tell_block(const Block& block, int moved);
[[gnu::cold]] void tell_remark(Remark remark, int from, int to);

inline void trace(TraceKind kind, int from = 0, int to = 0, const char* role = nullptr) {
    if (tracing()) [[unlikely]]
        tell(kind, from, to, role);
}

inline void remark(Remark remark, int from = 0, int to = 0) {
    if (tracing()) [[unlikely]]
        tell_remark(remark, from, to);
}

/// The bits of `value` that `mask` has.
inline std::uint8_t masked(std::uint8_t value, std::uint8_t mask) {
    const auto taken = static_cast<std::uint8_t>(value & mask);
    if (taken != value) remark(Remark::wrapped, value, taken);
    return taken;
}

}  // namespace orvanel
