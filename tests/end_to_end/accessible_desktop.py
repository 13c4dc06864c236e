"""A screen with the program on it, driven as somebody who hears it would drive it.

Controls are found by role and name in the accessibility tree, as a screen reader gets them; keys are
real keys of an X server. So a test depends on what controls are called and not on where they stand.
Every wait has a deadline, and a failure tells what the tree held.
"""

import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

# Seconds until a step counts as failed; a loaded machine takes its time.
DEADLINE = float(os.environ.get("CORVANE_DEADLINE", "90"))


class Failure(Exception):
    """What a step expected, and what was there instead."""


def wait_for(what, condition, deadline=DEADLINE):
    """The first true value of `condition`, which is asked again until the deadline."""
    end = time.monotonic() + deadline
    while True:
        try:
            value = condition()
        except GLib.Error:  # the control went away while it was looked at
            value = None
        if value:
            return value
        if time.monotonic() > end:
            raise Failure(f"waited {deadline:.0f} s for {what}")
        time.sleep(0.05)


class Control:
    """One node of the accessibility tree."""

    def __init__(self, node):
        self.node = node

    @property
    def name(self):
        return self.node.get_name() or ""

    @property
    def role(self):
        return self.node.get_role_name()

    @property
    def description(self):
        return self.node.get_description() or ""

    def has(self, state):
        return self.node.get_state_set().contains(getattr(Atspi.StateType, state.upper()))

    @property
    def text(self):
        """What stands in the control, or its value."""
        node = self.node.get_text_iface()
        if node is not None:
            return Atspi.Text.get_text(node, 0, -1)
        return self.name

    def children(self):
        for index in range(self.node.get_child_count()):
            child = self.node.get_child_at_index(index)
            if child is not None:
                yield Control(child)

    def walk(self, depth=0):
        """This control and all below it that are shown. Cells of tables are asked for by cell()."""
        yield self, depth
        if self.role in ("table", "tree table", "list box") and self.node.get_child_count() > 400:
            return
        for child in self.children():
            yield from child.walk(depth + 1)

    def find_all(self, role=None, name=None, shown=True):
        for control, _ in self.walk():
            if role is not None and control.role != role:
                continue
            if name is not None and control.name != name:
                continue
            if shown and not control.has("showing"):
                continue
            yield control

    def find(self, role=None, name=None):
        """The first control that is shown under this role and name, as soon as there is one."""
        return wait_for(
            f"a {role or 'control'} “{name}”",
            lambda: next(self.find_all(role, name), None),
        )

    def press(self):
        """What the control does when it is activated: a button is pressed, a menu item chosen."""
        action = self.node.get_action_iface()
        if action is None or not Atspi.Action.do_action(action, 0):
            raise Failure(f"{self.role} “{self.name}” cannot be pressed")

    def focus(self):
        component = self.node.get_component_iface()
        Atspi.Component.grab_focus(component)
        wait_for(f"the keyboard to go to {self.role} “{self.name}”", lambda: self.has("focused"))

    def area(self):
        """Left, top, width and height on the screen."""
        area = Atspi.Component.get_extents(self.node.get_component_iface(), Atspi.CoordType.SCREEN)
        return area.x, area.y, area.width, area.height

    def middle(self):
        """The point of the screen in the middle of the control."""
        left, top, width, height = self.area()
        return left + width // 2, top + height // 2

    def cell(self, row, column):
        table = self.node.get_table_iface()
        return Control(Atspi.Table.get_accessible_at(table, row, column))

    @property
    def row_count(self):
        return Atspi.Table.get_n_rows(self.node.get_table_iface())

    @property
    def column_count(self):
        return Atspi.Table.get_n_columns(self.node.get_table_iface())

    def column_names(self):
        table = self.node.get_table_iface()
        return [
            Atspi.Table.get_column_description(table, column) or ""
            for column in range(self.column_count)
        ]

    def row_texts(self, row):
        return [self.cell(row, column).name for column in range(self.column_count)]


class Screen:
    """A virtual screen with a window manager, a session bus and an accessibility bus of its own."""

    def __init__(self, programs, pictures=None, size="1280x800"):
        self.programs = programs
        self.work = tempfile.mkdtemp(prefix="corvane-evening-")
        self.pictures = pictures or os.path.join(self.work, "pictures")
        os.makedirs(self.pictures, exist_ok=True)
        self.output = os.path.join(self.work, "output")
        self.started = []
        self.program = None
        self._fronts = []
        self._picture_count = 0
        self._set_environment()
        try:
            self._start_screen(size)
        except BaseException:
            # What has been started already would go on for ever, and keep whoever reads what this
            # script says from its end.
            self._end()
            raise

    def __enter__(self):
        return self

    def __exit__(self, kind, error, trace):
        if error is not None:
            self._explain()
        self._end()
        return False

    def _end(self):
        for process in reversed(self.started):
            process.terminate()
            try:
                process.wait(10)
            except subprocess.TimeoutExpired:
                process.kill()
        shutil.rmtree(self.work, ignore_errors=True)

    def _set_environment(self):
        home = os.path.join(self.work, "home")
        runtime = os.path.join(self.work, "run")
        os.makedirs(os.path.join(home, "Documents"))
        os.makedirs(runtime, mode=0o700)
        # Work that another run left unsaved is none of this one's.
        temporary = os.path.join(self.work, "tmp")
        os.makedirs(temporary)
        for name in (
            "WAYLAND_DISPLAY DBUS_SESSION_BUS_ADDRESS QT_QPA_PLATFORMTHEME QT_STYLE_OVERRIDE "
            "QT_SCALE_FACTOR AT_SPI_BUS_ADDRESS"
        ).split():
            os.environ.pop(name, None)
        # The keyboard library hands strndup a text without an end, which is right and which the
        # address sanitizer's strict checks refuse; the bus library keeps what it has allocated.
        asan = os.environ.get("ASAN_OPTIONS", "")
        os.environ.update(
            HOME=home,
            TMPDIR=temporary,
            XDG_CONFIG_HOME=os.path.join(home, ".config"),
            XDG_DATA_HOME=os.path.join(home, ".local/share"),
            XDG_CACHE_HOME=os.path.join(home, ".cache"),
            XDG_STATE_HOME=os.path.join(home, ".local/state"),
            XDG_RUNTIME_DIR=runtime,
            LC_ALL="C.UTF-8",
            TZ="UTC",
            QT_QPA_PLATFORM="xcb",
            QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1",
            ASAN_OPTIONS=":".join(filter(None, [asan, "strict_string_checks=0:detect_leaks=0"])),
        )

    def _start(self, arguments, **options):
        process = subprocess.Popen(arguments, **options)
        self.started.append(process)
        return process

    def _start_screen(self, size):
        read, write = os.pipe()
        self._start(
            ["Xvfb", "-displayfd", str(write), "-screen", "0", f"{size}x24", "-nolisten", "tcp"],
            pass_fds=[write],
            stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
        )
        os.close(write)
        with os.fdopen(read) as told:
            os.environ["DISPLAY"] = ":" + told.readline().strip()
        bus = self._start(
            ["dbus-daemon", "--session", "--nofork", "--print-address"],
            stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL,
            text=True,
        )
        os.environ["DBUS_SESSION_BUS_ADDRESS"] = bus.stdout.readline().strip()
        self._start_window_manager()
        self._watch_fronts()
        Atspi.init()

    def _start_window_manager(self):
        """On a busy machine it may give up on a screen that has only just come up."""
        words = os.path.join(self.work, "window-manager")
        for _ in range(3):
            with open(words, "a", encoding="utf-8") as output:
                manager = self._start(["openbox"], stdout=output, stderr=output)
            wait_for(
                "the window manager", lambda: manager.poll() is not None or _is_screen_managed()
            )
            time.sleep(0.2)
            if manager.poll() is None:
                return
        with open(words, encoding="utf-8") as said:
            raise Failure(f"the window manager does not stay: {said.read()}")

    def _watch_fronts(self):
        """Notes which windows the window manager gives the keyboard to, one after the other."""
        spy = self._start(
            ["xprop", "-root", "-spy", "_NET_ACTIVE_WINDOW"], stdout=subprocess.PIPE, text=True
        )

        def note():
            for line in spy.stdout:
                window = re.search(r"0x[0-9a-f]+$", line.strip())
                # The same window may be told twice in a row.
                if window and self._fronts[-1:] != [window[0]]:
                    self._fronts.append(window[0])

        threading.Thread(target=note, daemon=True).start()

    def fronts(self):
        """The windows that have had the keyboard so far, in that order; "0x0" is none of them."""
        return list(self._fronts)

    # --- The program -------------------------------------------------------------------------

    def start(self, *arguments):
        """Starts the program and waits until it is in the accessibility tree."""
        with open(self.output, "a", encoding="utf-8") as output:
            self.program = self._start(
                [os.path.join(self.programs, "corvane"), *arguments], stdout=output, stderr=output
            )
        wait_for("the program", self._application)

    def _application(self):
        if self.program.poll() is not None:
            raise Failure(f"the program ended with status {self.program.returncode}")
        desktop = Atspi.get_desktop(0)
        for index in range(desktop.get_child_count()):
            application = desktop.get_child_at_index(index)
            if application is not None and application.get_process_id() == self.program.pid:
                return Control(application)
        return None

    @property
    def application(self):
        return wait_for("the program", self._application)

    def quit(self):
        """Ends the program by its key, and sees that it ends well."""
        self.key("ctrl+q")
        wait_for("the program to end", lambda: self.program.poll() is not None)
        if self.program.returncode != 0:
            raise Failure(f"the program ended with status {self.program.returncode}")

    def kill(self):
        self.program.send_signal(signal.SIGKILL)
        self.program.wait()

    def windows(self):
        return [window for window in self.application.children() if window.has("showing")]

    def window(self, name):
        """The window with this title, once it is shown and keys reach it.

        The program knows that it is active a little before or after the window manager and the X
        server do; a key that is sent in between goes to another window, or to none.
        """

        def settled():
            found = next(
                (each for each in self.windows() if each.name == name and each.has("active")), None
            )
            if found is None or not _gets_keys(name):
                return None
            time.sleep(0.1)
            return found if found.has("active") and _gets_keys(name) else None

        return wait_for(f"the window “{name}” to have the keyboard", settled)

    def window_shown(self, name):
        """The window with this title, once it is shown; keys may go to another one."""
        return wait_for(
            f"the window “{name}”",
            lambda: next((each for each in self.windows() if each.name == name), None),
        )

    def wait_until_gone(self, name):
        wait_for(
            f"the window “{name}” to close",
            lambda: all(each.name != name for each in self.windows()),
        )

    # --- Keys and pictures -------------------------------------------------------------------

    def key(self, *names):
        subprocess.run(["xdotool", "key", "--clearmodifiers", *names], check=True)

    def click(self, control):
        """Clicks into the middle of a control; a table takes the keyboard in no other way."""
        x, y = control.middle()
        subprocess.run(["xdotool", "mousemove", "--sync", str(x), str(y), "click", "1"], check=True)

    def drag(self, start, end):
        """Takes what is at one point of the screen to another one with the mouse."""

        def move(x, y):
            self._mouse("mousemove", "--sync", str(x), str(y))

        move(*start)
        self._mouse("mousedown", "1")
        # The first steps make a drag of the press, the next ones tell where it goes.
        for part in (0.2, 0.4, 0.6, 0.8, 1, 1):
            time.sleep(0.1)
            move(*(round(a + (b - a) * part) for a, b in zip(start, end)))
            self._mouse("mousemove_relative", "--", "1", "0")
        time.sleep(0.2)
        self._mouse("mouseup", "1")

    def _mouse(self, *command):
        subprocess.run(["xdotool", *command], check=True)

    def write(self, text):
        subprocess.run(["xdotool", "type", "--clearmodifiers", "--delay", "15", text], check=True)

    def retype(self, control, text):
        """Puts `text` in place of what stands in a field, as a user would."""
        control.focus()
        self.key("ctrl+a")
        self.write(text)
        self.key("Tab")

    def picture(self, name):
        self._picture_count += 1
        file = os.path.join(self.pictures, f"{self._picture_count:02}-{name}.png")
        subprocess.run(["import", "-window", "root", file], check=False)

    def console(self, *arguments):
        """What the console program prints; it has to succeed."""
        command = [os.path.join(self.programs, "corvane-cli"), *arguments]
        done = subprocess.run(command, capture_output=True, text=True, check=False)
        if done.returncode != 0:
            raise Failure(f"corvane-cli {' '.join(arguments)} failed:\n{done.stdout}{done.stderr}")
        return done.stdout

    def _explain(self):
        self.picture("failed")
        active = _said(["xdotool", "getactivewindow", "getwindowname"]).strip()
        print(f"The window manager's active window: “{active}”", file=sys.stderr)
        try:
            for control, depth in self.application.walk():
                if control.has("showing") and depth < 12:
                    states = [state for state in ("active", "focused") if control.has(state)]
                    marks = f" ({', '.join(states)})" if states else ""
                    print(f"{'  ' * depth}{control.role} “{control.name}”{marks}", file=sys.stderr)
        except (Failure, GLib.Error) as error:
            print(f"(the tree cannot be read: {error})", file=sys.stderr)
        with open(self.output, encoding="utf-8") as said:
            print("What the program said:", *said.readlines()[-40:], file=sys.stderr, sep="\n")


def _is_screen_managed():
    """Whether there is a window manager: one that has died leaves the name of a window behind that
    is there no more."""
    check = "_NET_SUPPORTING_WM_CHECK"
    window = re.search(r"0x[0-9a-f]+", _said(["xprop", "-root", check]))
    return window is not None and window[0] in _said(["xprop", "-id", window[0], check])


def _said(command):
    return subprocess.run(command, capture_output=True, text=True, check=False).stdout


def _gets_keys(name):
    """Whether the X server sends keys to the window that the window manager holds for active, and
    that is the one with this title (behind which the program's name may stand)."""
    active = _said(["xdotool", "getactivewindow"]).strip()
    if not active or active != _said(["xdotool", "getwindowfocus"]).strip():
        return False
    title = _said(["xdotool", "getwindowname", active]).strip()
    return title == name or title == f"{name} — Corvane"


def run(story, well_done):
    """Plays `story` on a screen with the programs of the folder that the command line names first;
    the further arguments are handed to it. Exits with whether it went well."""
    programs, *arguments = sys.argv[1:]
    try:
        with Screen(programs, os.environ.get("CORVANE_SCREENS")) as screen:
            story(screen, *arguments)
    except Failure as failure:
        print(f"FAILED: {failure}", file=sys.stderr)
        sys.exit(1)
    print(well_done)


def expect(truth, words):
    if not truth:
        raise Failure(words)
