"""Wheel and source archive, built without a network, and what an installed wheel brings."""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tarfile
import venv
import zipfile

import pytest

import orvanel42

source = pathlib.Path(orvanel42.__file__).resolve().parents[1]
build = "from setuptools import build_meta as b; print(b.build_wheel('out')); print(b.build_sdist('out'))"


@pytest.fixture(scope="module")
def archives(tmp_path_factory):
    """The folder with both, built from a copy."""
    folder = tmp_path_factory.mktemp("source") / "python"
    shutil.copytree(source, folder, ignore=shutil.ignore_patterns("__pycache__"))
    done = subprocess.run([sys.executable, "-c", build], cwd=folder, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, env={**os.environ, "PYTHONPATH": ""}, check=False)
    assert done.returncode == 0, done.stdout.decode()
    return folder / "out"


def test_the_archives_hold_all_of_the_package(archives):
    modules = {f"orvanel42/{file.name}" for file in (source / "orvanel42").iterdir() if file.is_file()}
    assert "orvanel42/py.typed" in modules
    with zipfile.ZipFile(next(archives.glob("*.whl"))) as wheel:
        names = set(wheel.namelist())
    assert modules <= names and all(re.match(r"orvanel42[/-]", name) for name in names)
    with tarfile.open(next(archives.glob("*.tar.gz"))) as sources:
        names = {name.partition("/")[2] for name in sources.getnames()}
    assert modules | {"pyproject.toml", "README.md"} <= names


def test_an_installed_wheel_brings_the_fixtures_by_itself(archives, tmp_path):
    venv.create(tmp_path / "env", system_site_packages=True, with_pip=False)
    (packages,) = (tmp_path / "env").glob("lib/python3*/site-packages")
    with zipfile.ZipFile(next(archives.glob("*.whl"))) as wheel:
        wheel.extractall(packages)
    (tmp_path / "test_one.py").write_text("def test_one(module):\n    module.wait(1)\n")
    done = subprocess.run([tmp_path / "env/bin/python", "-m", "pytest", "-p", "no:cacheprovider", "-q"],
                          cwd=tmp_path, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False,
                          env={**os.environ, "PYTHONPATH": ""})
    assert b"1 passed" in done.stdout, done.stdout.decode()


def test_the_version_is_that_of_the_programs():
    program = os.path.join(os.environ["ORVANEL42_BIN"], "orvanel42-headless")
    said = subprocess.run([program, "--version"], stdout=subprocess.PIPE, check=True).stdout.decode()
    assert said.split()[-1] == orvanel42.__version__


def test_the_reference_is_what_the_docstrings_say():
    tool = source.parent / "tools/python_reference"
    printed = subprocess.run([sys.executable, tool], stdout=subprocess.PIPE, check=True).stdout
    assert printed.decode() == (source.parent / "docs/reference/python.md").read_text()


def test_debians_package_names_the_same_entry_point(archives):
    packed = (source.parent / "packaging/python/entry_points.txt").read_text().split()
    with zipfile.ZipFile(next(archives.glob("*.whl"))) as wheel:
        (name,) = (name for name in wheel.namelist() if name.endswith("entry_points.txt"))
        assert wheel.read(name).decode().split() == packed
