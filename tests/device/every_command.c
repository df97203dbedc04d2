/* Calls each function of the header once; every_command.h tells what the test sees of it. */

#include "tests/device/every_command.h"

#include "orvanel42.h"

#include <stddef.h>
#include <string.h>

static uint8_t bytes[256];

const struct called_command *call_every_command(size_t *count)
{
    static struct called_command calls[256];
    size_t n = 0;
    orvanel_out out = orvanel_to_buffer(bytes, sizeof bytes);
#define CALL(line_of_kit, call)                             \
    out.length = 0;                                         \
    calls[n].line = line_of_kit;                            \
    calls[n].written = call;                                \
    calls[n].size = out.length;                             \
    memcpy(calls[n++].bytes, bytes, out.length)
#include "every_command.inc"
#undef CALL
    *count = n;
    return calls;
}

bool call_with(enum odd_call call, uint8_t *buffer, size_t size, size_t *length)
{
    static const uint8_t picture[] = {9, 2, 0xAA, 0x80, 0x55};
    orvanel_out out = orvanel_to_buffer(buffer, size);
    bool written = true;
    orvanel_DL(&out);
    switch (call) {
    case number_too_large:
        written = orvanel_GP(&out, 10, 256);
        break;
    case number_below_zero:
        written = orvanel_GP(&out, -1, 10);
        break;
    case text_with_line_feed:
        written = orvanel_ZL(&out, 1, 2, "one\ntwo");
        break;
    case text_missing:
        written = orvanel_ZL(&out, 1, 2, NULL);
        break;
    case text_without_room:
        written = orvanel_ZL(&out, 1, 2, "a text that is longer than the buffer");
        break;
    case picture_cut:
        written = orvanel_UL(&out, 1, 2, picture, sizeof picture);
        break;
    case too_many_bytes:
        written = orvanel_SB(&out, buffer, 256);
        break;
    case frame_too_long:
        written = orvanel_frame(&out, ORVANEL_DATA, buffer, 256);
        break;
    }
    orvanel_DE(&out);
    *length = out.length;
    return written || !out.failed;
}

static void put_byte(void *context, uint8_t byte)
{
    uint8_t **to = (uint8_t **)context;
    *(*to)++ = byte;
}

size_t frames_by_function(uint8_t *to)
{
    uint8_t *end = to;
    orvanel_out out = orvanel_to_function(put_byte, &end);
    orvanel_frame(&out, ORVANEL_DATA, "#TA", 3);
    orvanel_ask_state(&out);
    orvanel_fetch(&out);
    orvanel_repeat(&out);
    orvanel_set_packets(&out, 64, 200);
    orvanel_ask_packets(&out);
    orvanel_deselect(&out, 7);
    orvanel_select(&out, 7);
    return (size_t)(end - to);
}

size_t read_replies(const uint8_t *from, size_t size, char *seen)
{
    orvanel_frame_reader reader = {0};
    orvanel_answer answer = {0};
    size_t i, k, n = 0;
    for (i = 0; i < size; ++i) {
        const orvanel_reply reply = orvanel_read_frame(&reader, from[i]);
        if (reply == ORVANEL_ACK) seen[n++] = '+';
        if (reply == ORVANEL_NAK) seen[n++] = '-';
        if (reply == ORVANEL_DAMAGED) seen[n++] = '!';
        if (reply != ORVANEL_PAYLOAD) continue;
        seen[n++] = reader.type == ORVANEL_DATA ? 'd' : 'c';
        for (k = 0; k < reader.size && reader.type == ORVANEL_DATA; ++k) {
            if (!orvanel_read_answer(&answer, reader.bytes[k])) continue;
            seen[n++] = answer.letter;
            seen[n++] = (char)('0' + answer.size);
        }
    }
    seen[n] = 0;
    return n;
}
