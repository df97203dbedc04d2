// setjmp and longjmp where the C library has none. The compiler turns a setjmp into a call of
// __wasm_setjmp and a catch around what follows it; longjmp throws, and each catch asks whether it
// is meant.

#include "setjmp.h"

#include <stdint.h>

_Static_assert(sizeof(struct long_jump_buffer) == 4 * sizeof(int32_t),
               "what setjmp.h gives room for");

void __wasm_setjmp(struct long_jump_buffer* buffer, uint32_t label, void* call) {
    buffer->call = call;
    buffer->label = label;
}

uint32_t __wasm_setjmp_test(struct long_jump_buffer* buffer, void* call) {
    return buffer->call == call ? buffer->label : 0;
}

void __wasm_longjmp(struct long_jump_buffer* buffer, int value) {
    buffer->thrown.buffer = buffer;
    buffer->thrown.value = value == 0 ? 1 : value;
    __builtin_wasm_throw(1, &buffer->thrown);  // 1 is the tag of longjmp, 0 that of C++
}
