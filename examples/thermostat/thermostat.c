/*
 * thermostat.c: the states of the heater and of the alarm, and what the page shows of them. The
 * fonts, macros and places are those of page.kit, by the names in page.h, which is made of it.
 */

#include "thermostat.h"

#include "page.h"

#include <stdio.h>

enum {
    MIN_TARGET = 50, /* tenths of a degree, as all of these */
    MAX_TARGET = 300,
    FIRST_TARGET = 210,
    STEP = 5,
    HYSTERESIS = 2, /* so that the heater doesn't switch all the time */
    FROST = 50,
    NO_FROST = 60,
    BEEP = 20, /* hundredths of a second */
    ERASE = 1  /* a key goes from the glass, too */
};

/* From the present state, by the temperatures, to the next one. */
static void decide(struct thermostat *thermostat)
{
    switch (thermostat->heater) {
    case HEATER_OFF:
        break;
    case HEATER_IDLE:
        if (thermostat->room <= thermostat->target - HYSTERESIS) thermostat->heater = HEATER_ON;
        break;
    case HEATER_ON:
        if (thermostat->room >= thermostat->target) thermostat->heater = HEATER_IDLE;
        break;
    }
    switch (thermostat->alarm) {
    case ALARM_NONE:
        if (thermostat->room < FROST) thermostat->alarm = ALARM_SOUNDS;
        break;
    case ALARM_SOUNDS:
    case ALARM_QUIET:
        if (thermostat->room >= NO_FROST) thermostat->alarm = ALARM_NONE;
        break;
    }
}

struct thermostat thermostat_start(int room)
{
    struct thermostat thermostat = {room, FIRST_TARGET, HEATER_IDLE, ALARM_NONE};
    decide(&thermostat);
    return thermostat;
}

/* The first touch of a thermostat that is off only switches it on. */
static void move_target(struct thermostat *thermostat, int by)
{
    const int target = thermostat->target + by;
    if (thermostat->heater == HEATER_OFF)
        thermostat->heater = HEATER_IDLE;
    else if (target >= MIN_TARGET && target <= MAX_TARGET)
        thermostat->target = target;
}

void thermostat_key(struct thermostat *thermostat, int code)
{
    switch (code) {
    case PAGE_WARMER:
        move_target(thermostat, STEP);
        break;
    case PAGE_COOLER:
        move_target(thermostat, -STEP);
        break;
    case PAGE_OFF:
        thermostat->heater = HEATER_OFF;
        break;
    case PAGE_QUIET:
        if (thermostat->alarm == ALARM_SOUNDS) thermostat->alarm = ALARM_QUIET;
        break;
    default:
        break; /* a page newer than this firmware */
    }
    decide(thermostat);
}

void thermostat_measure(struct thermostat *thermostat, int room)
{
    thermostat->room = room;
    decide(thermostat);
}

/* "21.5", of 215. */
static const char *degrees(char *text, size_t size, int tenths, const char *unit)
{
    const int whole = tenths < 0 ? -tenths : tenths;
    snprintf(text, size, "%s%d.%d%s", tenths < 0 ? "-" : "", whole / 10, whole % 10, unit);
    return text;
}

static void draw_room(orvanel_out *out, const struct thermostat *now)
{
    char text[16];
    orvanel_RL(out, 0, PAGE_ROOM_TOP, PAGE_ROOM_RIGHT, PAGE_ROOM_BOTTOM);
    orvanel_ZF(out, PAGE_FONT_ROOM);
    orvanel_ZR(out, PAGE_ROOM_RIGHT, PAGE_ROOM_TOP, degrees(text, sizeof text, now->room, ""));
}

static void draw_target(orvanel_out *out, const struct thermostat *now)
{
    char text[16];
    orvanel_RL(out, PAGE_TARGET_LEFT, PAGE_TARGET_TOP, PAGE_TARGET_RIGHT, PAGE_TARGET_BOTTOM);
    orvanel_ZF(out, PAGE_FONT_TARGET);
    orvanel_ZC(out, PAGE_TARGET_MIDDLE, PAGE_TARGET_TOP,
               now->heater == HEATER_OFF ? "--.-"
                                         : degrees(text, sizeof text, now->target, " \370C"));
}

static void draw_bar(orvanel_out *out, const struct thermostat *now)
{
    int value = now->room / 10;
    if (value < PAGE_COLDEST) value = PAGE_COLDEST;
    if (value > PAGE_WARMEST) value = PAGE_WARMEST;
    orvanel_BA(out, PAGE_ROOM_BAR, value);
}

static void draw_heater(orvanel_out *out, const struct thermostat *now)
{
    static const char *const words[] = {"Off", "Idle", "Heating"};
    orvanel_RL(out, PAGE_FLAME_LEFT, PAGE_FLAME_TOP, PAGE_STATE_RIGHT, PAGE_STATE_BOTTOM);
    if (now->heater == HEATER_ON)
        orvanel_UI(out, PAGE_FLAME_LEFT, PAGE_FLAME_TOP, PAGE_PICTURE_FLAME);
    orvanel_ZF(out, PAGE_FONT_LABEL);
    orvanel_ZL(out, PAGE_STATE_LEFT, PAGE_STATE_TOP, words[now->heater]);
}

/* The strip between the temperatures and the keys has the bar and the heater, or the alarm. */
static void draw_strip(orvanel_out *out, const struct thermostat *now)
{
    if (now->alarm == ALARM_NONE) {
        orvanel_MN(out, PAGE_NORMAL_MACRO_SHOW_BAR);
        draw_bar(out, now);
        draw_heater(out, now);
    } else {
        orvanel_MN(out, PAGE_NORMAL_MACRO_SHOW_FROST);
        if (now->alarm == ALARM_QUIET) orvanel_AL(out, PAGE_QUIET, ERASE);
    }
}

void thermostat_draw(orvanel_out *out, const struct thermostat *now)
{
    orvanel_TA(out);
    orvanel_MN(out, PAGE_NORMAL_MACRO_PAGE);
    draw_room(out, now);
    draw_target(out, now);
    draw_strip(out, now);
    if (now->alarm == ALARM_SOUNDS) orvanel_YS(out, BEEP);
}

void thermostat_draw_changes(orvanel_out *out, const struct thermostat *now,
                             const struct thermostat *shown)
{
    const bool was_off = shown->heater == HEATER_OFF, is_off = now->heater == HEATER_OFF;
    const bool had_alarm = shown->alarm != ALARM_NONE, has_alarm = now->alarm != ALARM_NONE;
    if (now->room != shown->room) draw_room(out, now);
    if (now->target != shown->target || was_off != is_off) draw_target(out, now);
    if (had_alarm != has_alarm) {
        draw_strip(out, now);
    } else if (has_alarm) {
        if (now->alarm != shown->alarm) orvanel_AL(out, PAGE_QUIET, ERASE);
    } else {
        if (now->room != shown->room) draw_bar(out, now);
        if (now->heater != shown->heater) draw_heater(out, now);
    }
    if (now->alarm == ALARM_SOUNDS && now->room != shown->room) orvanel_YS(out, BEEP);
}
