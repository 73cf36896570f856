"""A viewer's command line, asked for one picture at a time."""
import re
import shlex
import subprocess

from . import png

PLACEHOLDER = re.compile(r"\{(\w+)\}")
OPTIONAL = re.compile(r"\[([^\[\]]*)\]")
SECONDS = 60
MEANS = {"frame_from_1": "frame", "centre": "window", "window_width": "window"}
CANNOT = 77  # the exit status by which an adapter says that its tool has no way to be asked


class CannotBeAsked(Exception):
    pass


class ToolFailed(Exception):
    pass


class Tool:
    """`[...]` is left out of the command where the case sets none of its placeholders."""

    def __init__(self, template):
        self.template = template
        self.offers = {MEANS.get(name, name) for name in PLACEHOLDER.findall(template)}

    def missing(self, case):
        return sorted(set(case.needs) - self.offers)

    def command(self, case, output):
        values = dict(case.values(), output=str(output))
        wanted = set(case.needs) | {"input", "output"}

        def optional(match):
            names = PLACEHOLDER.findall(match.group(1))
            is_set = any(MEANS.get(name, name) in wanted for name in names)
            return match.group(1) if is_set else ""

        words = shlex.split(OPTIONAL.sub(optional, self.template))
        filled = [PLACEHOLDER.sub(lambda match: values.get(match.group(1), ""), word)
                  for word in words]
        return [word for word in filled if word]

    def draw(self, case, output):
        lacking = self.missing(case)
        if lacking:
            raise CannotBeAsked("for " + ", ".join(lacking))
        try:
            done = subprocess.run(self.command(case, output), capture_output=True, timeout=SECONDS)
        except subprocess.TimeoutExpired:
            raise ToolFailed(f"no answer within {SECONDS} seconds") from None
        words = done.stderr.decode(errors="replace").strip().splitlines()
        if done.returncode == CANNOT:
            raise CannotBeAsked(words[-1] if words else "")
        if done.returncode or not output.exists():
            raise ToolFailed(f"exit status {done.returncode}: " + " ".join(words[-2:])[:300])
        try:
            return png.read(output)
        except Exception as error:  # whatever it wrote is no picture that we can read
            raise ToolFailed(f"unreadable PNG: {error}") from None
