"""Programs that die, hang, or answer otherwise than agreed: an error each, no hang and no zombie."""

import gc
import os
import signal
import threading

import pytest

from orvanel42 import Module, OrvanelError, ProgramDied, ProtocolError, StartFailed

pytestmark = pytest.mark.usefixtures("no_process_left")


def start(**arguments):
    return Module(settle=False, **arguments)


good = '{"line":%d,"ok":true,"ms":5.0,"events":[],"printed":[],"faults":[]}'


def test_last_words_and_status_of_a_program_that_dies(fake):
    program = fake("greet()", "line()", "print('first\\nout of paper', file=sys.stderr)", "sys.exit(7)")
    with start(program=program) as module:
        with pytest.raises(ProgramDied, match="(?s)ended with status 7, at: time\n.*out of paper") as caught:
            module.command("time")
        assert (caught.value.status, caught.value.last_words) == (7, "first\nout of paper")
        with pytest.raises(ProgramDied, match="status 7"):  # for good
            module.wait(1)


@pytest.mark.parametrize("moment", ["idle", "at work", "at the end"])
def test_a_killed_program_names_its_signal(module, moment):
    if moment == "at work":
        timer = threading.Timer(0.3, os.kill, (module._talk.pid, signal.SIGKILL))
        timer.start()
        with pytest.raises(ProgramDied, match="SIGKILL"):
            module.send(b"#TA\n#ZF0,")
            while True:
                module.wait(36000000)
        timer.join()
        return
    os.kill(module._talk.pid, signal.SIGABRT)
    with pytest.raises(ProgramDied, match=r"signal 6 \(SIGABRT\)"):
        module.close() if moment == "at the end" else module.text()


@pytest.mark.parametrize("answer", [
    "hello", "", "[]", "{}", "{" * 100000, '{"line":2}', good % 2,
    '{"line":1,"ok":true,"ms":"5","events":[],"printed":[],"faults":[]}',
    '{"line":1,"ok":true,"ms":5,"events":[1],"printed":[],"faults":[]}',
    '{"line":1,"ok":true,"ms":5,"events":[],"printed":{},"faults":[]}',
    '{"line":1,"ok":false,"ms":5,"events":[],"printed":[],"faults":[]}',
    '{"line":1,"ok":false,"ms":5,"events":[],"printed":[],"faults":[{"kind":"line"}]}',
    '{"line":1,"ok":true,"ms":1e999,"events":[],"printed":[],"faults":null}',
])  # fmt: skip
def test_an_answer_that_was_not_agreed_is_a_protocol_error(fake, answer):
    program = fake("greet()", "line()", f"say({answer!r})", "time.sleep(600)")
    module = start(program=program)
    with pytest.raises(ProtocolError):
        module.command("time")
    with pytest.raises(ProtocolError):
        module.command("time")
    module.close()


def test_bytes_that_are_no_text_and_a_table_that_is_none(fake):
    program = fake("greet()", "line()", "os.write(1, b'\\xff\\xfe\\n')")
    with pytest.raises(ProtocolError), start(program=program) as module:
        module.command("time")
    said = (good % 1).replace('"printed":[]', '"printed":["areas 1","area x"]')
    program = fake("greet()", "line()", f"say('''{said}''')", "line()")
    module = start(program=program)
    with pytest.raises(ProtocolError, match="table"):
        module.areas()
    with pytest.raises(ProgramDied):  # it ends without its last answer
        module.close()


def impatient(program):
    """A module whose program has begun, and then has half a second for each answer."""
    module = start(program=program)
    module._talk._time_limit_s = 0.5
    return module


def test_a_program_that_never_answers_is_ended(fake):
    with pytest.raises(StartFailed, match="within 0.5 s"):
        start(program=fake("time.sleep(600)"), time_limit=0.5)
    with pytest.raises(ProgramDied, match="within 0.5 s and was killed, at: wait 1"):
        impatient(fake("greet()", "time.sleep(600)")).wait(1)


def test_a_program_that_takes_nothing_and_writes_without_end(fake):
    module = impatient(fake("greet()", "time.sleep(600)"))
    with pytest.raises(ProgramDied, match="within 0.5 s"):
        module.send(bytes(80000))  # more than a pipe holds
    module = impatient(fake("greet()", "line()", "while True: os.write(2, b'x' * 65536)"))
    with pytest.raises(ProgramDied):
        module.wait(1)
    module = start(program=fake("greet()", "line()", "while True: os.write(1, b'x' * 65536)"))
    with pytest.raises(ProtocolError, match="has no end"):
        module.wait(1)


def test_a_program_that_greets_otherwise(fake, tmp_path):
    with pytest.raises(ProtocolError, match="version 2"):
        start(program=fake("say('{\"protocol\":2}')", "line()"))
    with pytest.raises(ProtocolError, match="greets otherwise"):
        start(program=fake("say('{}')", "line()"))
    with pytest.raises(StartFailed, match="no kit"):
        start(program=fake("print('no kit', file=sys.stderr)"))
    broken = tmp_path / "orvanel42-headless"
    broken.write_bytes(b"\x7fELF no program")
    with pytest.raises(StartFailed, match="can't be started"):
        start(program=broken)


def test_one_that_does_not_end_when_it_is_asked_is_ended(fake):
    ignores = "signal.signal(signal.SIGTERM, signal.SIG_IGN)"
    module = impatient(fake(ignores, "greet()", "time.sleep(600)"))
    with pytest.raises(ProgramDied, match="no answer"):
        module.close()
    # All is said, and the process stays.
    last = '{"end":true,"status":0,"ok":true,"ms":5.0,"events":[],"printed":[],"faults":[]}'
    start(program=fake("greet()", "line()", f"say('{last}')", "time.sleep(600)")).close()


def test_a_module_that_nobody_closes_leaves_no_process():
    module = Module()
    pid = module._talk.pid
    del module
    gc.collect()
    with pytest.raises(ProcessLookupError):
        os.kill(pid, 0)


def test_an_exception_in_a_test_ends_the_program():
    with pytest.raises(RuntimeError), Module() as module:
        raise RuntimeError
    assert module.is_ended


def test_a_child_that_was_forked_off_leaves_the_module_alone(module):
    child = os.fork()
    if child == 0:
        status = 1
        try:
            module.wait(1)
        except OrvanelError as fault:
            status = 0 if "forked" in str(fault) else 2
        module.close()
        del module
        gc.collect()
        os._exit(status)
    assert os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]) == 0
    module.wait(1)
    holder = os.fork()  # holds the pipe to the program open
    if holder == 0:
        signal.pause()
    try:
        module.close()
    finally:
        os.kill(holder, signal.SIGKILL)
        os.waitpid(holder, 0)


def test_threads_share_a_module_line_by_line(module):
    faults = []

    def work(number):
        try:
            for _ in range(20):
                assert module.command("time")[0].startswith("time")
                module.send(f"#ZF0,#ZL{number},{number},x\n")
        except BaseException as fault:
            faults.append(fault)

    threads = [threading.Thread(target=work, args=(10 * number,)) for number in range(1, 5)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert faults == []


def test_a_talk_that_was_cut_short_is_over(fake):
    def stop(number, frame):
        raise KeyboardInterrupt

    before = signal.signal(signal.SIGALRM, stop)
    module = start(program=fake("greet()", "time.sleep(600)"))
    try:
        signal.setitimer(signal.ITIMER_REAL, 0.2)
        with pytest.raises(KeyboardInterrupt):
            module.wait(1)
        with pytest.raises(ProgramDied, match="cut short"):
            module.wait(1)
    finally:
        signal.signal(signal.SIGALRM, before)
        module.close()
