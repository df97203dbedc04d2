/* every_command.h: the device's header in use, in C, for a test in C++. */

#ifndef EVERY_COMMAND_H
#define EVERY_COMMAND_H

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

struct called_command {
    const char* line; /* the same command in a kit */
    bool written;
    size_t size;
    uint8_t bytes[64];
};

/* Each function of a command, called once with numbers that differ. */
const struct called_command* call_every_command(size_t* count);

enum odd_call {
    number_too_large,
    number_below_zero,
    text_with_line_feed,
    text_missing,
    text_without_room,
    picture_cut,
    too_many_bytes,
    frame_too_long
};

/* D L, then a call that has to fail, then D E, into `buffer`. False if the call wrote nothing and
   said so. */
bool call_with(enum odd_call call, uint8_t* buffer, size_t size, size_t* length);

/* A frame of each sort, by way of a function. Returns the bytes. */
size_t frames_by_function(uint8_t* to);

/* What the readers make of the module's bytes, a letter each: + - ! d c, and of each answer in a
   data frame its letter and the digit of its size. */
size_t read_replies(const uint8_t* from, size_t size, char* seen);

#ifdef __cplusplus
}
#endif

#endif
