/*
 * main.c: the thermostat as a program, in place of a board: thermostat [-r ROOM] [LINE]
 *
 * The module is at LINE, a serial port or a pseudo terminal, in plain bytes; without it at standard
 * input and output. ROOM is the temperature that it begins with, in tenths of a degree. The room is
 * a simple one: it gets warmer by a tenth each time the sensor measures while the heater is on, and
 * else colder. The end of the input ends the program.
 */

#define _XOPEN_SOURCE 600

#include "thermostat.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <termios.h>
#include <time.h>
#include <unistd.h>

enum { MEASURE_MS = 100, MIN_ROOM = -400, MAX_ROOM = 600, OUTSIDE = 40 };

/* The line, and whether it has failed. */
static int line_in = STDIN_FILENO, line_out = STDOUT_FILENO;
static bool line_failed;

static bool open_line(const char *path)
{
    struct termios settings;
    line_in = line_out = open(path, O_RDWR | O_NOCTTY);
    if (line_in < 0) return false;
    if (tcgetattr(line_in, &settings) != 0) return errno == ENOTTY;
    settings.c_iflag = 0;
    settings.c_oflag = 0;
    settings.c_lflag = 0;
    settings.c_cflag = CS8 | CREAD | CLOCAL;
    settings.c_cc[VMIN] = 1;
    settings.c_cc[VTIME] = 0;
    cfsetispeed(&settings, B115200);
    cfsetospeed(&settings, B115200);
    return tcsetattr(line_in, TCSANOW, &settings) == 0;
}

static void send_bytes(const uint8_t *bytes, size_t count)
{
    while (count > 0 && !line_failed) {
        const ssize_t sent = write(line_out, bytes, count);
        if (sent > 0) {
            bytes += sent;
            count -= (size_t)sent;
        } else if (errno != EINTR) {
            line_failed = true;
        }
    }
}

static long now_ms(void)
{
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000L + now.tv_nsec / 1000000L;
}

static int measured(const struct thermostat *thermostat)
{
    if (thermostat->heater == HEATER_ON) return thermostat->room + 1;
    return thermostat->room > OUTSIDE ? thermostat->room - 1 : thermostat->room;
}

/* Sends what has changed since `shown`, which then is as `now`. */
static void show_changes(const struct thermostat *now, struct thermostat *shown)
{
    uint8_t bytes[512];
    orvanel_out out = orvanel_to_buffer(bytes, sizeof bytes);
    thermostat_draw_changes(&out, now, shown);
    send_bytes(bytes, out.length);
    if (out.failed) line_failed = true;
    *shown = *now;
}

static void run(struct thermostat now)
{
    orvanel_answer answer = {0};
    struct thermostat shown = now;
    uint8_t bytes[512];
    orvanel_out out = orvanel_to_buffer(bytes, sizeof bytes);
    long next_ms;

    thermostat_draw(&out, &now);
    send_bytes(bytes, out.length);
    next_ms = now_ms() + MEASURE_MS;
    while (!line_failed) {
        struct pollfd input = {line_in, POLLIN, 0};
        const long left_ms = next_ms - now_ms();
        const int ready = poll(&input, 1, left_ms > 0 ? (int)left_ms : 0);
        if (ready < 0 && errno != EINTR) return;
        if (ready > 0) {
            ssize_t i;
            const ssize_t got = read(line_in, bytes, sizeof bytes);
            if (got < 0 && errno == EINTR) continue;
            if (got <= 0) return;
            for (i = 0; i < got; ++i) {
                if (!orvanel_read_answer(&answer, bytes[i]) || answer.letter != 'A') continue;
                thermostat_key(&now, answer.bytes[0]);
                show_changes(&now, &shown);
            }
        } else if (ready == 0) {
            thermostat_measure(&now, measured(&now));
            show_changes(&now, &shown);
            next_ms = now_ms() + MEASURE_MS;
        }
    }
}

int main(int count, char **words)
{
    int letter;
    long room = 180;
    while ((letter = getopt(count, words, "r:")) != -1) {
        char *end = NULL;
        if (letter == 'r') room = strtol(optarg, &end, 10);
        if (end == NULL || end == optarg || *end != '\0' || room < MIN_ROOM || room > MAX_ROOM) {
            fprintf(stderr, "usage: thermostat [-r TENTHS] [LINE], TENTHS from %d to %d\n",
                    MIN_ROOM, MAX_ROOM);
            return 2;
        }
    }
    if (optind < count && !open_line(words[optind])) {
        fprintf(stderr, "thermostat: can't open the line %s: %s\n", words[optind], strerror(errno));
        return 2;
    }
    run(thermostat_start((int)room));
    return line_failed ? 1 : 0;
}
