"""The device at the line, with both protocols, and frames that a bad line damages."""

import os
import socket
import threading
import tty

import pytest

from orvanel42 import Device, ExpectationFailed, LineError, Module, ProtocolError
from orvanel42.pactlink import frame

version = b"\x1bV&HD Orvanel42 V1.8 Rev.B TP+ simulation"


@pytest.mark.parametrize("serial", ["pty", "tcp:0"])
@pytest.mark.parametrize("protocol", ["plain", "pactlink"])
def test_the_same_talk_over_each_line(serial, protocol):
    with Module(serial=serial, protocol=protocol) as module:
        with Device(module.line_name, protocol=protocol, module=module) as device:
            device.send("#TA\n#SV")
            assert device.receive(3, within=60000) == version[:3]
            device.await_answers(version[3:], within=60000)
            device.send("#AF0,#ZF0,#AT20,60,100,90,65,97,Heat\n", b"#ZL10,10,Hello\n")
            module.await_text("Hello", within=60000)
            module.tap("Heat")
            device.await_answers(b"\x1bA\x01A", within=60000)
            with pytest.raises(ExpectationFailed, match="1B 41 01 62 expected.*: 1B 41 01 61"):
                device.await_answers(b"\x1bA\x01b", within=60000)
            device.expect_answers(b"\x1bA\x01a")  # what failed has stayed
            device.send("#ZF0,#ZL10,30,x\n" * 2000)  # many frames
            module.await_text("x", within=60000)
        with Device(module.line_name, protocol=protocol) as device:  # the next one
            device.send("#SV")
            device.await_answers(version, within=60000)


def test_the_fixture_has_the_module_behind_the_line(device):
    assert device.waiting() == (0, 250)
    assert device.packet() == (64, 64, 2.0)
    device.pactlink.set_packet(8, 0.5)
    device.send("#TA\n#SV")
    device.module.settle()
    assert device.waiting().answers == len(version)
    assert device.pactlink.fetch() == version[:8]
    assert device.answers(quiet=200) == version[8:]
    device.pactlink.deselect(7)
    device.pactlink.select(7)
    with pytest.raises(ExpectationFailed, match="1 bytes expected within 50 ms, and these came: nothing"):
        device.receive(1, within=50)


class Peer:
    """The other end of a socket, which answers each frame with what the test says."""

    def __init__(self, *answers):
        self._listener = socket.create_server(("127.0.0.1", 0))
        self.name = f"tcp:{self._listener.getsockname()[1]}"
        self.got = []
        self._thread = threading.Thread(target=self._serve, args=(answers,))
        self._thread.start()

    def _serve(self, answers):
        line, _ = self._listener.accept()
        with line, line.makefile("rb") as stream:
            for answer in answers:
                head = stream.read(2)
                self.got.append(head + stream.read(head[1] + 1))
                line.sendall(answer)

    def end(self):
        self._thread.join()
        self._listener.close()
        return self.got


ack, nak = b"\x06", b"\x15"


def test_a_refused_frame_is_sent_again_and_a_damaged_answer_asked_for_again():
    peer = Peer(nak, nak, ack, ack + b"\x11\x02AB\x00", ack + frame(0x11, b"AB"))
    with Device(peer.name) as device:
        device.send("x")
        assert device.pactlink.fetch() == b"AB"
    sent = frame(0x11, b"x")
    assert peer.end() == [sent, sent, sent, frame(0x12, b"S"), frame(0x12, b"R")]


@pytest.mark.parametrize("answers,fault,words", [
    ([b"?"], ProtocolError, "0x3F in place of an acknowledge"),
    ([ack + b"\x11\x02ABC"] * 3, ProtocolError, "three answer frames in a row"),
    ([ack], LineError, "has gone"),
    ([b""], LineError, "has gone"),
])  # fmt: skip
def test_what_is_no_frame_is_an_error(answers, fault, words):
    peer = Peer(*answers)
    with Device(peer.name) as device, pytest.raises(fault, match=words):
        device.pactlink.fetch()
    peer.end()


def test_silence_says_what_may_be_wrong():
    master, slave = os.openpty()
    tty.setraw(slave)
    try:
        with Device(os.ttyname(slave), time_limit=0.2) as device:
            with pytest.raises(LineError, match="no acknowledge after 0.2 s. Is the module set to Pactlink"):
                device.send("x")
    finally:
        os.close(master)
        os.close(slave)


def test_lines_that_can_not_be_opened(tmp_path):
    with pytest.raises(LineError, match="No such file"):
        Device(str(tmp_path / "line"), time_limit=0.1)
    with pytest.raises(LineError, match="can't be opened"):
        Device("tcp:1", time_limit=0.1)
    (tmp_path / "plain").write_text("no line")
    with pytest.raises(LineError, match="can't be opened"):
        Device(str(tmp_path / "plain"), time_limit=0.1)
    for wrong in ("tcp:", "tcp:a:b", "tcp:70000", "/dev/ttyUSB0@fast"):
        with pytest.raises(ValueError):
            Device(wrong)
