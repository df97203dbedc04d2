/*
 * thermostat.h: what a room thermostat knows and does. No line and no clock in it: bytes go where
 * the caller says, and the caller says when time has passed.
 */

#ifndef THERMOSTAT_H
#define THERMOSTAT_H

#include <orvanel42.h>

enum heater { HEATER_OFF, HEATER_IDLE, HEATER_ON };
enum alarm { ALARM_NONE, ALARM_SOUNDS, ALARM_QUIET };

struct thermostat {
    int room; /* tenths of a degree, as is the next */
    int target;
    enum heater heater;
    enum alarm alarm;
};

/* A thermostat that is on, in a room with this temperature. */
struct thermostat thermostat_start(int room);

/* A key of the page was touched. */
void thermostat_key(struct thermostat *thermostat, int code);

/* The sensor has measured. */
void thermostat_measure(struct thermostat *thermostat, int room);

/* Draws the whole page, or what differs from `shown`. */
void thermostat_draw(orvanel_out *out, const struct thermostat *now);
void thermostat_draw_changes(orvanel_out *out, const struct thermostat *now,
                             const struct thermostat *shown);

#endif
