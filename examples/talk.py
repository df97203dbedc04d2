#!/usr/bin/env python3
"""A device at the module's serial line: draws on the glass and asks the module who it is.

    talk.py LINE [--pactlink]

LINE is anything that pyserial opens (Debian's package python3-serial): a device such as
/dev/ttyUSB0, the link that a program made for --serial pty:LINK, or socket://localhost:7042 for
--serial tcp:7042. The module has to speak the same protocol: the setting `protocol` is 1 for
Pactlink, which is the default, and 0 for plain bytes.
"""

import sys

import serial

COMMANDS = b"#TA#DL#GR0,0,239,127,#ZF0,#ZZ2,2,#ZC120,50,Hello\n"
WHO_ARE_YOU = b"\x1b?"
ANSWER_LENGTH = 9


def frame(start, payload):
    body = bytes([start, len(payload)]) + payload
    return body + bytes([sum(body) & 0xFF])


def send_frame(line, start, payload):
    """Sends a frame until the module acknowledges it."""
    for _ in range(3):
        line.write(frame(start, payload))
        if line.read(1) == b"\x06":
            return
    sys.exit("no acknowledge: is the module set to Pactlink, and selected?")


def talk_plain(line):
    line.write(COMMANDS + WHO_ARE_YOU)
    return line.read(ANSWER_LENGTH)


def talk_pactlink(line):
    send_frame(line, 0x11, COMMANDS + WHO_ARE_YOU)
    answer = b""
    for _ in range(100):
        send_frame(line, 0x12, b"S")  # the module speaks only when it is asked
        length = line.read(2)[1]
        answer += line.read(length + 1)[:length]
        if len(answer) >= ANSWER_LENGTH:
            break
    return answer


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    pactlink = "--pactlink" in sys.argv[2:]
    with serial.serial_for_url(sys.argv[1], baudrate=115200, timeout=2) as line:
        answer = talk_pactlink(line) if pactlink else talk_plain(line)
    if len(answer) < ANSWER_LENGTH:
        sys.exit("no answer: is the module set to plain bytes?")
    print("the module answers", answer.hex(" "))


if __name__ == "__main__":
    main()
