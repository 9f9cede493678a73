"""The program under test and its window, as assistive technology, fingers and eyes find it."""

import os
import subprocess
import tempfile
import warnings
from contextlib import suppress
from pathlib import Path

import numpy

from servers import SCREEN, end, wait_for

# The tests belong to any build: the one named from outside, or what ./test builds.
PROGRAM = os.environ.get("ZEMO_PROGRAM") or str(
    Path(__file__).resolve().parents[2] / "build/release/bin/zemo")

PLAY = "Play"
STOP = "Stop"
RED = (204, 51, 102)  # the title during a play
GREEN = (26, 230, 179)  # and from the stop that is asked for to the end of the fade


def assistive_technology():
    """Loaded late, because it takes the bus that is there when it is loaded."""
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", ImportWarning)  # from within that library
        import gi
        gi.require_version("Atspi", "2.0")
        from gi.repository import Atspi
    Atspi.init()
    return Atspi


def press_keys(*keys):
    subprocess.run(["xdotool", "key", *keys], stdin=subprocess.DEVNULL, check=True)


def move_window(title, left, top):
    subprocess.run(["xdotool", "search", "--onlyvisible", "--name", f"^{title}$",
                    "windowmove", "--sync", str(left), str(top)],
                   stdin=subprocess.DEVNULL, check=True)


def is_visible(title):
    return subprocess.run(["xdotool", "search", "--onlyvisible", "--name", f"^{title}$"],
                          stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                          check=False).returncode == 0


def screenshot():
    """The whole screen: rows, columns, and red, green and blue from 0 to 255."""
    picture = subprocess.run(["import", "-window", "root", "-depth", "8", "rgb:-"],
                             stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, check=True).stdout
    return numpy.frombuffer(picture, dtype=numpy.uint8).reshape(SCREEN[1], SCREEN[0], 3)


class Control:
    """One accessible object of the window."""

    def __init__(self, technology, accessible):
        self._technology = technology
        self._accessible = accessible

    @property
    def name(self):
        return self._accessible.get_name()

    @property
    def role(self):
        return self._accessible.get_role_name()

    @property
    def description(self):
        return self._accessible.get_description()

    def value(self):
        return self._accessible.get_current_value()

    def labels(self):
        """The names of the labels that belong to it."""
        labelled_by = self._technology.RelationType.LABELLED_BY
        return [relation.get_target(index).get_name()
                for relation in self._accessible.get_relation_set()
                if relation.get_relation_type() == labelled_by
                for index in range(relation.get_n_targets())]

    def has(self, state):
        wanted = getattr(self._technology.StateType, state)
        return self._accessible.get_state_set().contains(wanted)

    def children(self):
        count = self._accessible.get_child_count()
        found = [self._accessible.get_child_at_index(index) for index in range(count)]
        return [Control(self._technology, child) for child in found if child is not None]

    def descendants(self):
        for child in self.children():
            yield child
            yield from child.descendants()

    def extents(self):
        """Left, top, width, height on the screen."""
        extents = self._accessible.get_extents(self._technology.CoordType.SCREEN)
        return extents.x, extents.y, extents.width, extents.height

    def press(self):
        # A button that is not enabled yet has no actions.
        wait_for(lambda: self._accessible.get_n_actions() > 0, f"{self.name} can be pressed")
        self._accessible.do_action(0)

    def write(self, text):
        """Until it stands there: a panel that is still finding its files may write over it."""
        def stands():
            if self.text() != text:
                self._accessible.set_text_contents(text)
            return self.text() == text
        wait_for(stands, f"{text} stands in {self.name}")

    def text(self):
        return self._accessible.get_text(0, -1)

    def picture(self):
        """What the screen shows of it: rows, columns, colour."""
        left, top, width, height = self.extents()
        return screenshot()[top:top + height, left:left + width]

    def shows_colour(self, colour):
        """Whether enough of it has this colour to be its title and not its edge."""
        return (abs(self.picture().astype(int) - colour).max(axis=2) <= 2).sum() > 20

    def click(self, *, holding=None):
        """A real click, with a key held down or not."""
        left, top, width, height = self.extents()
        command = ["mousemove", str(left + width // 2), str(top + height // 2)]
        click = ["click", "1"]
        if holding is not None:
            click = ["keydown", holding, *click, "keyup", holding]
        subprocess.run(["xdotool", *command, *click], stdin=subprocess.DEVNULL, check=True)


class Program:
    """One run of the program, with all that it says. Unsaved work of others is not offered to it."""

    def __init__(self, desktop, *arguments, environment=None):
        self._directory = Path(tempfile.mkdtemp(prefix="program-", dir=desktop.directory))
        self._output = self._directory / "stdout"
        self._log = self._directory / "stderr"
        with open(self._output, "wb") as output, open(self._log, "wb") as log:
            self._process = desktop.start(
                [PROGRAM, *map(str, arguments)], cwd=self._directory,
                env=os.environ | {"XDG_STATE_HOME": str(self._directory)} | (environment or {}),
                stdout=output, stderr=log)
        self.process_id = self._process.pid

    def close(self):
        end(self._process)

    def is_running(self):
        return self._process.poll() is None

    def status(self):
        """The exit status, once there is one."""
        return wait_for(lambda: not self.is_running() and [self._process.returncode],
                        "the program has ended")[0]

    def output(self):
        return self._output.read_text(encoding="utf-8", errors="replace")

    def output_from(self, place):
        """What it has said since, in bytes; `place` counts them from the beginning."""
        with open(self._output, "rb") as output:
            output.seek(place)
            return output.read()

    def log(self):
        return self._log.read_text(encoding="utf-8", errors="replace")

    def log_lines(self, beginning):
        """What follows in the log lines that begin so."""
        beginning = f"zemo: {beginning}"
        return [line.removeprefix(beginning) for line in self.log().splitlines()
                if line.startswith(beginning)]


class Window:
    """The program's main window."""

    def __init__(self, program):
        self._program = program
        self._technology = assistive_technology()
        self._application = wait_for(self._find_application, "the window is known")
        # Names and states change all the time: ask for them anew, always.
        self._application.set_cache_mask(self._technology.Cache.NONE)
        self._root = Control(self._technology, self._application)
        wait_for(self.is_active, "the window has the focus")

    @property
    def technology(self):
        return self._technology

    def focus(self):
        """The role and the name of the control that has the focus, or None."""
        with suppress(self._error()):
            focused = [(control.role, control.name) for control in self._root.descendants()
                       if control.has("FOCUSED") and control.has("SHOWING")]
            # A group of which one has the focus says that it has it too, and stands before it.
            return focused[-1] if focused else None
        return None

    def _find_application(self):
        if not self._program.is_running():
            raise AssertionError(f"the program has ended: {self._program.log()}")
        desktop = self._technology.get_desktop(0)
        desktop.clear_cache()
        for index in range(desktop.get_child_count()):
            application = desktop.get_child_at_index(index)
            if application is not None and application.get_child_count() > 0:
                if application.get_child_at_index(0).get_process_id() == self._program.process_id:
                    return application
        return None

    def is_active(self):
        return any(child.has("ACTIVE") for child in self._root.children())

    def look_for(self, role, name, within=None):
        """The control on the screen that has this role and name, or None."""
        # An object may go while it is looked at; then it is not there.
        with suppress(self._error()):
            for control in (within or self._root).descendants():
                if control.role == role and control.name == name and control.has("SHOWING"):
                    return control
        return None

    def _error(self):
        from gi.repository import GLib
        return GLib.Error

    def find(self, role, name, within=None):
        return wait_for(lambda: self.look_for(role, name, within), f"a {role} named {name}")

    def button(self, name):
        return self.find("push button", name)

    def controls(self):
        with suppress(self._error()):
            return list(self._root.descendants())
        return []

    def labels(self):
        with suppress(self._error()):
            return [control.name for control in self._root.descendants()
                    if control.role == "label" and control.has("SHOWING")]
        return []

    def wait_for_label(self, text):
        return self.find("label", text)

    def wait_for_title(self, title):
        """The play button's title."""
        return self.button(title)

    def choose(self, item):
        """A menu item that is not on the screen: the menus stay closed."""
        for control in self._root.descendants():
            if control.role == "menu item" and control.name == item:
                return control.press()
        raise AssertionError(f"there is no menu item {item}")

    def dialog(self, title, role="dialog"):
        return self.find(role, title)

    def alert(self, title):
        return self.dialog(title, role="alert")

    def wait_until_closed(self, title, role="dialog"):
        wait_for(lambda: self.look_for(role, title) is None, f"the {role} {title} is closed")

    def open(self, path, boxes=()):
        """File > Open, with these boxes checked."""
        self.choose("Open…")
        self._fill_panel("Open", path, boxes)

    def open_raw(self, path, boxes=()):
        # By the keyboard: this panel keeps the one who opens it waiting.
        press_keys("ctrl+shift+o")
        self._fill_panel("Open as Raw Data", path, boxes)

    def _fill_panel(self, title, path, boxes):
        panel = self.dialog(title)
        for box in boxes:
            self._check(self.find("check box", box, panel))
        field = self.find("text", "File name:", panel)
        field.write(str(path))
        self.find("push button", "Open", panel).press()
        self.wait_until_closed(title)

    @staticmethod
    def _check(box):
        box.press()
        wait_for(lambda: box.has("CHECKED"), f"{box.name} is checked")

    def meter(self):
        """What the level meter shows: rows, columns, colour."""
        return self.find("progress bar", "Level meter").picture()
