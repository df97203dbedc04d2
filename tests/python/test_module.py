"""The module as a test drives it."""

import pickle
import re

import pytest

from conftest import page
from orvanel42 import (ExpectationFailed, Fault, GaveUp, Mistake, Module, OrvanelError, ProgramNotFound,
                       StartFailed, WrongLine)


@pytest.fixture
def paged(module):
    module.send(page)
    return module


def test_touches_by_label_code_dot_and_row(paged):
    paged.tap("Heat")
    paged.expect_answers(b"\x1bA\x01A\x1bA\x01a")
    for target in ((66,), (180, 75), ((180, 75),), (paged.areas()[1],)):
        paged.tap(*target)
        paged.await_answers(0x1B, "A", 1, "B", b"\x1bA\x01b")
    paged.hold("Stop")
    assert paged.areas()[1].state == "down"
    paged.lift()
    assert paged.answers() == b"\x1bA\x01B\x1bA\x01b"
    assert paged.answers() == b""


def test_says_what_there_is_instead(paged):
    with pytest.raises(ExpectationFailed, match=r"^no key 'Warmer'; there are 'Heat' \(65\), 'Stop' \(66\)$"):
        paged.tap("Warmer")
    with pytest.raises(ExpectationFailed, match='"23" can\'t be read near "Target"; .*"Target 22.5"'):
        paged.expect_text("23", near="Target")
    paged.expect_text("22.5", near="Target")  # the talk goes on
    paged.expect_no_text("22.5", inside=(0, 60, 239, 127))
    with pytest.raises(ExpectationFailed, match="within 30 ms"):
        paged.await_text("Ready", within=30)


def test_what_the_glass_says_comes_as_records(paged):
    assert paged.text() == "Target 22.5\nHeat Stop"
    first = paged.texts()[0]
    assert (first.text, first.x1, first.y1, first.font, first.inverted) == ("Target 22.5", 10, 10, 0, False)
    heat = paged.areas()[0]
    assert (heat.type, heat.x1, heat.y2, heat.down_code, heat.label) == ("key", 20, 90, 65, "Heat")
    paged.send('#AT20,100,100,120,67,99,a "b"\n')
    assert paged.areas()[2].label == 'a "b"'
    paged.tap('a "b"')
    paged.expect_answers("\x1bA\x01C\x1bA\x01c")


def test_bars_menus_and_the_terminal(module):
    module.send(b"#TA\n#ZF0,#AF0,#BR1,10,20,210,40,0,100,1,2,\n#BA1,20,#AB1,\n#ZL10,5,Volume\n")
    module.drag("Volume", "70 %")
    bar = module.bars()[0]
    assert (bar.number, bar.direction, bar.low, bar.high, bar.value) == (1, "right", 0, 100, 70)
    module.drag(1, 30)
    assert module.bars()[0].value == 30
    module.drag((110, 30), (20, 30))
    assert module.bars()[0].value < 10
    assert module.menu_rows() == []
    module.reset()
    module.send(b"\x0cHello")
    module.expect_terminal(1, "Hello")


def test_screens_have_the_dots_of_the_picture_that_is_written(paged, tmp_path):
    screen = paged.screen()
    assert (screen.width, screen.height, len(screen.data)) == (240, 128, 3840)
    paged.command(f"screen {tmp_path}/glass.pbm")
    assert (tmp_path / "glass.pbm").read_bytes()[-3840:] == screen.data
    screen.save(tmp_path / "saved.png")
    with Module() as other:
        other.open(tmp_path / "saved.png")
        other.send(b"#TA\n")
        paged.expect_screen(str(tmp_path / "saved.png"))
    rows = str(screen).splitlines()
    assert [len(rows), {len(row) for row in rows}] == [128, {240}]
    assert all((rows[y][x] == "#") == screen.dot(x, y) for x in range(10, 30) for y in range(10, 18))
    assert screen == paged.screen() and hash(screen) == hash(paged.screen())
    with pytest.raises(IndexError):
        screen.dot(240, 0)


def test_strict_says_where_the_bytes_came_from(module):
    place = re.escape(__file__.rpartition("/")[2]) + r":\d+: warning: .*font 9 is missing \[no-font\]"
    with pytest.raises(Mistake, match=place):
        module.send("#ZF9,")
    module.allow("no-font")
    module.send("#ZF9,", settle=False)
    module.settle()


@pytest.mark.orvanel(strict=False)
def test_without_strict_a_mistake_passes(module):
    module.send("#ZF9,")


@pytest.mark.orvanel(trace=True)
def test_the_trace_tells_each_command(module):
    module.send("#TA#ZF0,")
    assert [event["command"] for event in module.trace if "command" in event] == ["# T A", "# Z F"]


def test_the_clock_is_the_modules(module):
    module.wait(1)
    begin = module.ms
    module.wait(3600000)
    assert module.ms - begin == 3600000
    with pytest.raises(GaveUp, match="within 1 ms"):
        module.settle(1)


def test_what_no_line_can_hold_is_refused_before_it_is_sent(paged, tmp_path):
    cases = [
        (ValueError, lambda: paged.send("grün")),
        (ValueError, lambda: paged.send(256)),
        (ValueError, lambda: paged.send(bytes(80001))),
        (TypeError, lambda: paged.send(1.5)),
        (TypeError, lambda: paged.tap(None)),
        (ValueError, lambda: paged.command("time\ntime")),
        (ValueError, lambda: paged.expect_text("\ud800")),
        (ValueError, lambda: paged.expect_screen(str(tmp_path / 'a"b.png'))),
        (ValueError, lambda: paged.drag("Heat", "70")),
        (ValueError, lambda: paged.screen("both")),
        (ValueError, lambda: paged.expect_text("x", inside=(1, 2, 3))),
        (WrongLine, lambda: paged.expect_text("x", inside=(0, 0, 240, 1))),
        (WrongLine, lambda: paged.feed(tmp_path / "nowhere.orv")),
    ]
    for fault, call in cases:
        with pytest.raises(fault):
            call()
    paged.send(bytes(79999))  # and the talk is in step
    paged.expect_text("Heat", whole=True)


def test_kit_image_and_memory(tmp_path):
    kit = tmp_path / "page.kit"
    kit.write_text("[power-on macro 0]\n#TA\n#ZF 0\n#ZL 10,10,\"From a kit\"\n")
    with Module(kit=kit, options=["--save-image", str(tmp_path / "saved.bin")]) as module:
        module.settle()
        module.expect_text("From a kit")
    with pytest.raises(StartFailed, match="nowhere.bin"):
        Module(image=tmp_path / "nowhere.bin")
    kit.write_text("[power-on macro 0]\n#XX\n")
    with pytest.raises(StartFailed, match=r"page.kit:2"):
        Module(kit=kit)
    with pytest.raises(StartFailed, match="--mem"):
        Module(mem=48)
    with pytest.raises(ValueError, match="strict"):
        Module(strict="very")


def test_finds_the_program_or_names_the_ways(tmp_path, monkeypatch):
    with pytest.raises(ProgramNotFound, match="argument `program`"):
        Module(program=tmp_path)
    monkeypatch.setenv("ORVANEL42_BIN", str(tmp_path / "gone"))
    with pytest.raises(ProgramNotFound, match="gone is not there: ORVANEL42_BIN"):
        Module()
    monkeypatch.delenv("ORVANEL42_BIN")
    monkeypatch.setenv("PATH", str(tmp_path))
    with pytest.raises(ProgramNotFound, match="on the path, .* ORVANEL42_BIN, .* `program`"):
        Module()


def test_a_closed_module_says_so_and_faults_can_be_sent_on(paged):
    with pytest.raises(Fault) as caught:
        paged.tap("Warmer")
    again = pickle.loads(pickle.dumps(caught.value))
    assert (type(again), str(again)) == (ExpectationFailed, str(caught.value))
    paged.close()
    paged.close()
    with pytest.raises(OrvanelError, match="closed"):
        paged.tap("Heat")
