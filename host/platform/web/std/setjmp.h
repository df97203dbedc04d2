// setjmp.h, which the C library for WebAssembly leaves out: see long_jump.c.

#pragma once

struct long_jump_buffer {
    void* call;  // the call of a function that the setjmp stands in
    unsigned label;
    struct {
        void* buffer;
        int value;
    } thrown;
};
typedef struct long_jump_buffer jmp_buf[1];

#ifdef __cplusplus
extern "C" {
#endif
int setjmp(jmp_buf buffer) __attribute__((returns_twice));
void longjmp(jmp_buf buffer, int value) __attribute__((noreturn));
#ifdef __cplusplus
}
#endif
