"""The folder for temporary files is not there: the program says so in an alert, and runs all the same.

usage: unusable_folders.py <folder of the programs>
CORVANE_SCREENS names a folder that keeps a picture of every step.
"""

import os

from accessible_desktop import expect, run, wait_for


def later_buttons(screen):
    return [b for window in screen.windows() for b in window.find_all("push button", "Later")]


def leave_the_work_of_others(screen):
    """The program falls back on the folder of the machine, where another run may have left work."""
    for button in later_buttons(screen):
        button.press()
        # A button that is pressed again while it goes down stays down.
        wait_for("the question to close", lambda: not later_buttons(screen))


def alert(screen):
    """What the alert about the folders says, as a screen reader tells it, and its only button."""
    leave_the_work_of_others(screen)
    told = "Some of your folders cannot be used."
    for window in screen.windows():
        texts = [control.name for control in window.find_all("label")]
        if told in texts:
            return " ".join(texts), next(window.find_all("push button", "OK"))
    return None


def walk(screen):
    missing = os.path.join(screen.work, "gone", "temporary")
    os.environ["TMPDIR"] = missing
    screen.start("--sample-market")
    said, button = wait_for("the alert about the folder", lambda: alert(screen))
    screen.picture("folders")
    expect(missing in said, f"the alert does not name the folder: {said}")
    button.press()
    wait_for("the alert to close", lambda: alert(screen) is None)
    wait_for(
        "the workspace",
        lambda: any(window.name == "SampleMarket — Corvane" for window in screen.windows()),
    )
    expect(not os.path.exists(os.path.dirname(missing)), "the folder was made")
    screen.program.terminate()
    wait_for("the program to end", lambda: screen.program.poll() is not None)
    expect(screen.program.returncode == 0, f"it ended with status {screen.program.returncode}")


if __name__ == "__main__":
    run(walk, "The program ran without its folder.")
