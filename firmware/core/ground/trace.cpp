#include "firmware/core/ground/trace.h"

namespace orvanel {

constinit TraceListener trace_listener = nullptr;

void tell(TraceKind kind, int from, int to, const char* role) {
    trace_listener({.kind = kind, .from = from, .to = to, .role = role});
}

void tell_byte(std::uint8_t byte, ByteSource source) {
    trace_listener({.kind = TraceKind::byte, .from = byte, .source = source});
}

void tell_answer(std::span<const std::uint8_t> bytes) {
    trace_listener({.kind = TraceKind::answer, .bytes = bytes});
}

void tell_block(const Block& block, int moved) {
    trace_listener({.kind = TraceKind::block, .from = moved, .block = block});
}

void tell_remark(Remark remark, int from, int to) {
    trace_listener({.kind = TraceKind::remark, .from = from, .to = to, .remark = remark});
}

}  // namespace orvanel
