"""The pytest plugin, as the user of a project runs it."""

import xml.etree.ElementTree as ElementTree

import pytest

oven = """
import pytest

PAGE = b"#TA\\n#ZF0,#AF0,#ZL10,10,Oven\\n#AT20,60,100,90,65,97,Heat\\n"

def test_start(module):
    module.send(PAGE)
    module.expect_screen()
    module.tap("Heat")
    module.expect_screen()
    module.expect_screen("again")

class TestKeys:
    @pytest.mark.parametrize("key", ["Heat", "a/b"])
    def test_key(self, module, key):
        module.send(PAGE.replace(b"Heat", key.encode()))
        module.expect_screen(inside=(0, 40, 239, 127), without=[(0, 40, 5, 50)])
        module.expect_screen("shared/oven.png", inside=(0, 0, 239, 40))
"""


@pytest.fixture
def run(pytester, monkeypatch):
    monkeypatch.setenv("PYTHONDONTWRITEBYTECODE", "1")

    def run_tests(*options):
        return pytester.runpytest_subprocess("-p", "no:cacheprovider", "-p", "orvanel42.plugin", *options)

    return run_tests


@pytest.fixture
def project(pytester, run):
    """A folder with tests and the pictures that they expect."""
    pytester.makepyfile(test_oven=oven)
    pytester.mkdir("shared")
    run("--orvanel-update-missing").assert_outcomes(passed=3)
    return pytester.path


def pictures(folder):
    return sorted(str(file.relative_to(folder)) for file in folder.rglob("*.png")
                  if not file.is_relative_to(folder / "runpytest-2"))


def test_golden_pictures_stand_beside_the_test_named_after_it(project, run):
    made = pictures(project)
    assert made[0] == "shared/oven.png"
    assert made[1].startswith("test_oven.TestKeys.test_key-") and len(made) == 6
    assert made[3:] == ["test_oven.test_start.2.png", "test_oven.test_start.again.png",
                        "test_oven.test_start.png"]
    run().assert_outcomes(passed=3)
    (project / made[5]).unlink()
    result = run()
    result.assert_outcomes(passed=2, failed=1)
    result.stdout.fnmatch_lines(["*nothing to compare with: *test_oven.test_start.png: no such file "
                                 "(--orvanel-update-missing writes it)*"])
    assert pictures(project) == sorted(set(made) - {made[5]})  # nothing is left beside the tests


@pytest.mark.parametrize("spread", [[], ["-n", "2"]])
def test_a_changed_screen_fails_and_the_report_shows_it(project, run, spread):
    test = project / "test_oven.py"
    test.write_text(test.read_text().replace("Oven", "Owen"))
    result = run("--orvanel-report", "report", "--junit-xml", "results.xml", *spread)
    result.assert_outcomes(failed=3)
    page = (project / "report/index.html").read_text()
    assert "<h1>5 of 5 screens differ</h1>" not in page
    assert "test_oven.test_start.png" in page and page.count("expected, actual, difference<") == 3
    assert page.count("as expected<") == 2  # the lower parts of the glass
    attached = ElementTree.parse(project / "results.xml").findall(".//system-out")
    files = [line[len("[[ATTACHMENT|") : -2] for out in attached for line in out.text.split("\n")]
    assert len(files) == 6 and all((project / file).read_bytes()[:4] == b"\x89PNG" for file in files)
    run("--orvanel-update").assert_outcomes(passed=3)
    run().assert_outcomes(passed=3)


@pytest.mark.parametrize("content", [b"", b"\x89PNG\r\n\x1a\n" + b"\xff" * 64, b"<script>" * 99, None])
def test_a_hostile_golden_file_is_an_error_of_its_test(project, run, content):
    golden = project / "test_oven.test_start.png"
    golden.unlink()
    golden.mkdir() if content is None else golden.write_bytes(content)
    result = run("--orvanel-report", "report", "-k", "test_start")
    result.assert_outcomes(failed=1)
    result.stdout.fnmatch_lines(["*test_oven.test_start.png*"])
    assert "<script>" not in (project / "report/index.html").read_text()


def test_kit_by_option_ini_key_and_mark(pytester, run):
    pytester.makefile(".kit", page="[power-on macro 0]\n#TA\n#ZF 0\n#ZL 10,10,\"From a kit\"\n",
                      broken="[power-on macro 0]\n#XX\n", bare="")
    test = pytester.makepyfile(test_page="""
        import pytest
        def test_kit(module):
            module.expect_text("From a kit")
        @pytest.mark.orvanel(kit="page.kit", strict="hints", trace=True)
        def test_marked(module):
            module.expect_text("From a kit")
            assert module.trace
    """)
    run("--orvanel-kit=page.kit").assert_outcomes(passed=2)
    run().assert_outcomes(passed=1, failed=1)
    pytester.mkdir("below")
    test.rename(pytester.path / "below" / test.name)
    (pytester.path / "below/page.kit").symlink_to("../page.kit")
    pytester.makeini("[pytest]\norvanel_kit = page.kit\norvanel_strict = off\n")
    run("below").assert_outcomes(passed=2)
    result = run("--orvanel-kit=broken.kit", "-k", "test_kit")
    result.assert_outcomes(errors=1)
    result.stdout.fnmatch_lines(["*broken.kit:2:*"])


def test_a_program_that_dies_fails_its_test_alone(pytester, run):
    pytester.makepyfile("""
        import os, signal
        def test_dies(module):
            os.kill(module._talk.pid, signal.SIGKILL)
            module.text()
        def test_dies_unnoticed(module):
            os.kill(module._talk.pid, signal.SIGKILL)
        def test_lives(module):
            module.wait(1)
    """)
    result = run("-n", "2")
    result.assert_outcomes(failed=1, passed=2, errors=1)
    result.stdout.fnmatch_lines(["*orvanel42-headless was ended by signal 9 (SIGKILL), at: texts"])


def test_the_device_is_the_hardware_of_the_option(pytester, run):
    pytester.makepyfile("""
        def test_version(device):
            device.send("#SV")
            device.await_answers(0x1B, "V", within=60000)
    """)
    run().assert_outcomes(passed=1)
    run("--orvanel-protocol=plain").assert_outcomes(passed=1)
    from orvanel42 import Module

    with Module(serial="tcp:0", protocol="plain") as module:
        run(f"--orvanel-line={module.line_name}", "--orvanel-protocol=plain").assert_outcomes(passed=1)
        assert module.command("link")[0].split()[1] == "3"
