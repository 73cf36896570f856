"""The code that the pages show, run as it stands there."""
import os
import pathlib
import re
import shutil
import subprocess
import sys

import pytest
from conftest import ROOT


def blocks(page, language):
    return re.findall(rf"^```{language}\n(.*?)^```", (ROOT / page).read_text(), re.M | re.S)


CASES = [(page, code) for page in ("README.md", "docs/python.md") for code in blocks(page, "python")]


@pytest.mark.parametrize("page, code", CASES)
def test_python_of_a_page(page, code, samples, tmp_path):
    shutil.copytree(samples, tmp_path / "samples")
    environment = {**os.environ, "PYTHONPATH": str(ROOT / "python")}
    subprocess.run([sys.executable, "-W", "ignore", "-c", code], check=True, cwd=tmp_path, env=environment)


def test_commands_for_archives(tmp_path):
    command = pathlib.Path(os.environ["QUORVEX_LIBRARY"]).parents[1] / "bin/quorvex"
    if not command.exists():
        pytest.skip("the command is not built")
    environment = {**os.environ, "PATH": f"{command.parent}:{os.environ['PATH']}"}
    for lines in blocks("docs/archive.md", "sh"):
        subprocess.run(["sh", "-e", "-c", lines], check=True, cwd=tmp_path, env=environment)
    assert len(list((tmp_path / "back").rglob("*.dcm"))) >= 3
