"""What the page shows, and what the keys do."""

import pytest

at_line = pytest.mark.orvanel(serial="pty", protocol="plain")
busy = 2 * 60 * 1000  # a busy machine gets this long; it ends as soon as the text is there


def test_start(module, start):
    start()
    module.expect_text("18.0", whole=True)
    module.expect_text("21.0", near="Target")
    module.expect_text("Heating")
    module.expect_screen()


def test_target(module, start):
    firmware = start()
    firmware.touch("Warmer")
    module.expect_text("21.5", near="Target")
    firmware.touch("Cooler")
    firmware.touch("Cooler")
    module.expect_text("20.5", near="Target")


def test_target_has_limits(module, start):
    firmware = start(room=295)
    for _ in range(20):
        firmware.touch("Warmer")
    module.expect_text("30.0", near="Target")
    for _ in range(52):
        firmware.touch("Cooler")
    module.expect_text("5.0", near="Target")


def test_heater_follows_the_target(module, start):
    firmware = start(room=210)
    module.expect_text("Idle")
    firmware.touch("Warmer")
    module.expect_text("Heating")
    firmware.touch("Cooler")
    module.expect_text("Idle")


def test_off_and_on(module, start):
    firmware = start()
    firmware.touch("Off")
    module.expect_no_text("Heating")
    module.expect_text("--.-", near="Target")
    module.expect_screen()
    firmware.touch("Cooler")  # only switches it on
    module.expect_text("Heating")
    module.expect_text("21.0", near="Target")


@pytest.mark.parametrize("room, degrees", [(-5, "-0.5"), (0, "0.0"), (50, "5.0"), (305, "30.5")])
def test_room(module, start, room, degrees):
    start(room)
    module.expect_text(degrees, near="Living room", whole=True)


def test_frost(module, start):
    firmware = start(room=49)
    module.expect_text("Frost in the room")
    module.expect_screen()
    firmware.touch("Quiet")
    module.expect_no_text("Quiet")
    module.expect_text("Frost in the room")
    firmware.touch("Off")  # the alarm leaves the other keys as they are
    module.expect_text("--.-", near="Target")


@at_line
def test_it_gets_warm(module, start_at_line):
    start_at_line(room=207)
    module.await_text("Idle", within=busy)
    module.tap("Warmer")
    module.await_text("21.5", near="Target", within=busy)
    module.await_text("Heating", within=busy)


@at_line
def test_the_frost_goes(module, start_at_line):
    start_at_line(room=49)
    module.await_text("Heating", within=busy)  # begins in the place of the alarm
    module.expect_no_text("Frost")
    module.expect_no_text("Quiet")
