"""Hours with the program: whatever somebody might do, at random and by accessibility and keys, with
kills of the program, power that goes, and new starts in between. All the while a list on paper says
what the ledger must hold; nothing of it may be lost, and nothing may be told that nobody asked for.

usage: soak.py <folder of the programs> <seconds> [seed]

Not part of the tests: it takes as long as it is told to. The seed, which it prints, repeats the order
of what is done. Under the address sanitizer, give it the programs of that build. CORVANE_SCREENS names
a folder that keeps a picture of a failure.
"""

import json
import os
import random
import re
import subprocess
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../end_to_end"))
from accessible_desktop import Failure, Screen, expect, wait_for  # noqa: E402

FORM = "New Transaction"
STATEMENT = "Import Statement"
STATEMENT_COLUMNS = (
    "Date;Order #;Transaction;Symbol;Name;ISIN;Quantity;Unit price;Costs;Accrued Interest;"
    "Net Amount;Balance;Currency"
)
# What a program says when something has gone wrong inside of it.
COMPLAINTS = re.compile(
    r"AddressSanitizer|UndefinedBehavior|runtime error|LeakSanitizer|Assertion|terminate called|"
    r"Segmentation|QObject::|QPainter::|ASSERT"
)


class Paper:
    """What the ledger must hold: amounts of deposits and withdrawals in cents, with their days."""

    def __init__(self):
        self.now = []
        self.saved = []
        self.undone = []  # states to come back to by redo
        self.done = []  # states to come back to by undo

    def record(self, entry):
        self.done.append(list(self.now))
        self.undone.clear()
        self._add(entry)

    def take_in(self, entries):
        """As record(), of an import, which is not undone and with which nothing before it is."""
        self.done.clear()
        self.undone.clear()
        for entry in entries:
            self._add(entry)

    def _add(self, entry):
        self.now.append(entry)
        self.now.sort(key=lambda each: each[0])

    def delete(self, row):
        self.done.append(list(self.now))
        self.undone.clear()
        del self.now[row]

    def undo(self):
        self.undone.append(self.now)
        self.now = self.done.pop()

    def redo(self):
        self.done.append(self.now)
        self.now = self.undone.pop()

    def back_to_saved(self):
        self.now = list(self.saved)
        self.done.clear()
        self.undone.clear()

    @property
    def has_changes(self):
        return self.now != self.saved


class Soak:
    def __init__(self, screen, dice):
        self.screen = screen
        self.dice = dice
        self.paper = Paper()
        self.counts = {}
        self.latest = []  # the names of the last acts
        self.file = os.path.join(screen.work, "Book.corvane")
        self.resident = []  # MiB at the end of each run, and how long it was
        self.started_at = 0.0
        self.statements = 0

    # --- The window --------------------------------------------------------------------------

    @property
    def window(self):
        return wait_for(
            "the window of the book",
            lambda: next((w for w in self.screen.windows() if w.name.startswith("Book")), None),
        )

    def front(self):
        """The window of the book, once keys reach it."""
        return self.screen.window(self.window.name)

    def sheets(self):
        return [w for w in self.screen.windows() if not w.name.startswith("Book")]

    def close_sheets(self):
        for _ in range(12):
            if not self.sheets():
                return
            self.screen.key("Escape")
            time.sleep(0.15)
        raise Failure(f"these do not close: {[sheet.name for sheet in self.sheets()]}")

    @property
    def table(self):
        return self.window.find("table", "Transactions")

    def show_ledger(self):
        self.close_sheets()
        self.front()
        # The keyboard goes to the list with it: in the search box, undo is that of the box.
        self.screen.click(next_item(self.window, "Savings"))
        self.screen.key("ctrl+2")
        return self.window

    def row_count(self):
        """Of the ledger that is shown; an empty one has an invitation in place of its table."""
        table = next(self.window.find_all("table", "Transactions"), None)
        if table is not None:
            return table.row_count
        return 0 if any(self.window.find_all("push button", "Add a Transaction…")) else None

    def check_rows(self):
        self.show_ledger()
        wait_for(
            f"{len(self.paper.now)} transactions, of which there are {self.row_count()}",
            lambda: self.row_count() == len(self.paper.now),
            20,
        )

    # --- What somebody does ------------------------------------------------------------------

    def record(self):
        self.show_ledger()
        self.screen.key("ctrl+t")
        form = self.screen.window(FORM)
        self.screen.key("ctrl+shift+i")
        day = f"20{self.dice.randrange(10, 24)}-{self.dice.randrange(1, 13):02}-{self.dice.randrange(1, 29):02}"
        cents = self.dice.randrange(1, 10_000_000)
        self.screen.retype(form.find("text", "Transaction Date"), day)
        self.screen.retype(form.find("text", "Total Deposit"), f"{cents // 100}.{cents % 100:02}")
        self.screen.key("Return")
        self.screen.wait_until_gone(FORM)
        self.paper.record((day, cents))
        self.check_rows()

    def abandon_entry(self):
        self.show_ledger()
        self.screen.key("ctrl+t")
        form = self.screen.window(FORM)
        self.screen.key(self.dice.choice(["ctrl+shift+" + key for key in "bsvrctj"]))
        for field in list(form.find_all("text"))[:4]:
            if field.has("editable") and field.name:
                self.screen.retype(field, self.dice.choice(["12", "a lot", "(3)", "0", "9" * 40]))
        self.close_sheets()
        self.check_rows()

    def delete(self):
        if not self.paper.now:
            return
        row = self.dice.randrange(min(len(self.paper.now), 12))
        self.show_ledger()
        self.screen.click(self.table)
        # Down and up again select one row alone, whichever the click has hit.
        self.screen.key("ctrl+Home", "Down", "Up", *["Down"] * row, "space", "Delete")
        # It is told, not asked: the deletion can be undone.
        said = [each.name for each in self.screen.window("Corvane").find_all("label")]
        expect("Deleted 1 transaction." in said, f"one transaction was to be deleted: {said}")
        self.screen.key("Return")
        self.screen.wait_until_gone("Corvane")
        self.paper.delete(row)
        self.check_rows()

    def undo(self):
        if self.paper.done:
            self.show_ledger()
            self.screen.key("ctrl+z")
            self.paper.undo()
            self.check_rows()

    def redo(self):
        if self.paper.undone:
            self.show_ledger()
            self.screen.key("ctrl+shift+z")
            self.paper.redo()
            self.check_rows()

    def import_statement(self):
        """Credits of a bank go in, or are looked at and left."""
        entries = {
            (f"20{self.dice.randrange(10, 24)}-{self.dice.randrange(1, 13):02}-{self.dice.randrange(1, 29):02}",
             self.dice.randrange(1, 10_000_000))
            for _ in range(self.dice.randrange(1, 6))
        } - set(self.paper.now)  # fmt: skip
        self.statements += 1
        file = os.path.join(self.screen.work, f"statement-{self.statements}.csv")
        with open(file, "w", encoding="utf-8") as text:
            print(STATEMENT_COLUMNS, file=text)
            for order, (day, cents) in enumerate(sorted(entries, reverse=True)):
                year, month, of_month = day.split("-")
                amount = f"{cents // 100}.{cents % 100:02}"
                print(
                    f"{of_month}-{month}-{year} 07:00:15;{order};Credit;;;;1.0;{amount};0.00;0.00;"
                    f"{amount};{amount};CAD",
                    file=text,
                )
        self.show_ledger()
        self.screen.key("ctrl+shift+i")
        self.screen.window(STATEMENT)
        self.screen.write(file)
        self.screen.key("Return")
        preview = wait_for(
            "the lines of the statement",
            lambda: next(
                (w for w in self.sheets() if any(w.find_all("table", "Lines of the statement"))), None
            ),
        )
        if not entries or self.dice.random() < 0.3:
            self.close_sheets()
        else:
            go = f"Import {len(entries)} Row"
            ready = wait_for(
                f"a button “{go}…” that can be pressed",
                lambda: next(
                    (b for b in preview.find_all("push button")
                     if b.name.startswith(go) and b.has("enabled")),
                    None,
                ),
            )  # fmt: skip
            ready.press()
            self.screen.window("Corvane")
            self.screen.key("Return")
            self.screen.wait_until_gone("Corvane")
            self.paper.take_in(sorted(entries))
            self.show_all_days()
        self.check_rows()

    def show_all_days(self):
        """After an import the screen shows the days of the statement."""
        self.front()
        for _ in range(10):
            self.screen.click(button(self.window, "Range"))
            time.sleep(0.5)
            self.screen.key("Down", "Return")
            time.sleep(0.5)
            if find_button(self.window, "Range: All time") is not None:
                return
        raise Failure("the range “All time” is not taken")

    def look_at_reports(self):
        self.close_sheets()
        self.front()
        reports = [each.name for each in self.window.find("list", "Reports").find_all("list item")]
        for name in self.dice.sample(reports, self.dice.randrange(1, len(reports) + 1)):
            self.screen.click(next_item(self.window, name))
            time.sleep(self.dice.random())
            # Controls, figures and what they say about themselves.
            self.screen.key(*["Tab"] * self.dice.randrange(1, 9))
            self.screen.key(self.dice.choice(["Down", "Up", "space", "ctrl+shift+e", "ctrl+e"]))
            time.sleep(0.3)
            self.close_sheets()
            self.screen.key("Escape")
        self.show_ledger()
        self.screen.key(self.dice.choice(["ctrl+4", "ctrl+5"]))
        self.screen.key("ctrl+shift+e")
        time.sleep(self.dice.random())
        self.screen.key("Escape")
        self.check_rows()

    def try_strategies(self):
        """A run or a batch of an equity on the watchlist, waited for or given up."""
        self.close_sheets()
        self.front()
        self.screen.click(next_item(self.window, self.dice.choice(["CASTR", "CWRLD.TO", "0582.T"])))
        self.screen.key(self.dice.choice(["ctrl+3", "ctrl+4"]))
        button(self.window, "Run", "Cancel").press()
        if self.dice.random() < 0.5:
            button(self.window, "Run")
        else:
            time.sleep(self.dice.random() * 2)
        for name in self.dice.sample(["Make Batch", "Heat Map", "Go to Detail"], 3):
            shown = find_button(self.window, name)
            if shown is not None and shown.has("enabled"):
                shown.press()
                time.sleep(self.dice.random())
                self.close_sheets()
        self.check_rows()

    def change_settings(self):
        """Those that change nothing of what the other acts rely on."""
        self.close_sheets()
        self.front()
        self.screen.key("ctrl+comma")
        settings = self.screen.window("Settings")
        boxes = ["Dates in the local time zone", "Mark rows from the network", "Diagnostic tools"]
        for name in self.dice.sample(boxes, self.dice.randrange(1, 4)):
            settings.find("check box", name).press()
        if self.dice.random() < 0.5:
            self.screen.click(settings.find("combo box"))
            time.sleep(0.5)
            self.screen.key(self.dice.choice(["Home", "Down", "End"]), "Return")
        press_button(settings, "Close")
        self.screen.wait_until_gone("Settings")
        self.check_rows()

    def look_around(self):
        items = list(self.window.find_all("list item"))
        self.dice.choice(items).press()
        self.front()
        for _ in range(self.dice.randrange(1, 6)):
            self.screen.key(f"ctrl+{self.dice.randrange(1, 5)}")
            time.sleep(self.dice.random() / 2)

    def open_and_close(self):
        keys = ["ctrl+k", "ctrl+comma", "ctrl+shift+n", "F1", "ctrl+e", "ctrl+i", "ctrl+shift+i"]
        self.front()
        self.screen.key(self.dice.choice(keys))
        time.sleep(0.4 + self.dice.random() / 2)
        self.close_sheets()

    def search(self):
        self.front()
        self.screen.key("ctrl+f")
        self.screen.write(self.dice.choice(["castr", "cwr", "xyz", "a", "0582"]))
        time.sleep(1)
        self.screen.key(self.dice.choice(["Escape", "Down", "Tab"]))
        self.close_sheets()

    def refresh(self):
        self.front()
        self.screen.key("F5")

    def save(self):
        self.show_ledger()
        self.screen.key("ctrl+s")
        self.paper.saved = list(self.paper.now)
        wait_for("the workspace to be saved", lambda: "*" not in self.window.name)
        self.check_file()

    def revert(self):
        if not self.is_edited():
            return
        self.show_ledger()
        self.screen.key("ctrl+k")
        self.screen.window("Command Palette")
        self.screen.write("revert to")
        self.screen.key("Return")
        press_button(self.screen.window("Corvane"), "Revert")
        self.screen.wait_until_gone("Corvane")
        self.paper.back_to_saved()
        self.check_rows()

    # --- Ends and starts ---------------------------------------------------------------------

    def start(self):
        self.screen.start("--sample-market", self.file)
        self.started_at = time.monotonic()

    def is_edited(self):
        """Whether the window marks unsaved work. The book keeps strategies and tax years as well,
        which are not on paper."""
        mark = "*" in self.window.name
        expect(mark or not self.paper.has_changes, "unsaved transactions are not marked")
        return mark

    def after_kill(self, is_unsaved):
        """What was unsaved is offered, and nothing else; what was saved is as it was. Nothing is
        expected where it cannot be known whether work was unsaved."""
        unsaved = len(self.paper.now)
        self.paper.back_to_saved()
        self.check_file()
        self.start()
        if not is_unsaved:
            self.check_offered_nothing(is_unsaved is None)
            return
        offer = self.screen.window_shown("Corvane")
        answer = self.dice.choice(["Recover", "Discard"])
        self.answer_offer(offer, answer)
        if answer == "Recover":
            self.check_recovered(unsaved)
        self.check_rows()

    def answer_offer(self, offer, answer):
        press_button(offer, answer)
        # An Escape in between would be answered first, and mean "Later".
        self.screen.wait_until_gone("Corvane")

    def check_offered_nothing(self, may_be_offered):
        wait_for("a window", lambda: any(self.screen.windows()))
        time.sleep(2)
        offer = next((w for w in self.screen.windows() if w.name == "Corvane"), None)
        expect(offer is None or may_be_offered, "what was saved is offered as unsaved")
        if offer is not None:
            self.answer_offer(offer, "Discard")
        self.check_rows()

    def check_recovered(self, count):
        window = wait_for(
            "the recovered work",
            lambda: next((w for w in self.screen.windows() if w.name.startswith("Recovered")), None),
        )
        bring_to_front("Recovered")
        self.screen.window(window.name)
        self.screen.click(next_item(window, "Savings"))
        self.screen.key("ctrl+2")
        if count > 0:
            wait_for(
                f"{count} recovered transactions",
                lambda: window.find("table", "Transactions").row_count == count,
                20,
            )
        self.screen.key("alt+F4")
        asked = self.screen.window_shown("Corvane")
        press_button(asked, "Don")
        wait_for(
            "the recovered work to close",
            lambda: not any(w.name.startswith("Recovered") for w in self.screen.windows()),
        )
        bring_to_front("Book")

    def kill(self):
        self.note_memory()
        is_unsaved = self.is_edited()
        self.screen.kill()
        self.after_kill(is_unsaved)

    def kill_while_saving(self):
        self.show_ledger()
        expected = list(self.paper.now)
        is_unsaved = self.is_edited()
        if not self.paper.has_changes and is_unsaved:
            is_unsaved = None  # the rows of the file will not tell
        self.screen.key("ctrl+s")
        time.sleep(self.dice.random() * 0.15)
        self.note_memory()
        self.screen.kill()
        # Either the old or the new one is there, and it is whole.
        if len(self.rows_of_file()) == len(expected) and self.amounts_of_file() == amounts(expected):
            is_unsaved = is_unsaved if self.paper.saved == expected else False
            self.paper.saved = expected
        self.after_kill(is_unsaved)

    def quit(self):
        self.front()
        self.note_memory()
        is_unsaved = self.is_edited()
        self.screen.key("ctrl+q")
        if is_unsaved:
            asked = self.screen.window("Corvane")
            keeps = self.dice.random() < 0.5
            press_button(asked, "Save" if keeps else "Don")
            if keeps:
                self.paper.saved = list(self.paper.now)
        wait_for("the program to end", lambda: self.screen.program.poll() is not None)
        expect(self.screen.program.returncode == 0, f"it ended with {self.screen.program.returncode}")
        self.paper.back_to_saved()
        self.check_file()
        self.start()
        self.check_rows()

    # --- What is there -----------------------------------------------------------------------

    def rows_of_file(self):
        return json.loads(self.screen.console("ledger", self.file, "--portfolio", "Savings", "--json"))

    def amounts_of_file(self):
        return sorted(round(float(row["cash"]) * 100) for row in self.rows_of_file())

    def check_file(self):
        self.screen.console("verify", self.file)
        there = self.amounts_of_file()
        expect(
            there == amounts(self.paper.saved),
            f"the file holds {len(there)} transactions that are not the {len(self.paper.saved)} saved",
        )

    def note_memory(self):
        with open(f"/proc/{self.screen.program.pid}/status", encoding="ascii") as status:
            kilobytes = int(re.search(r"VmRSS:\s+(\d+)", status.read())[1])
        self.resident.append((kilobytes / 1024, time.monotonic() - self.started_at))

    def check_words(self):
        with open(self.screen.output, encoding="utf-8", errors="replace") as said:
            for line in said:
                expect(not COMPLAINTS.search(line), f"the program says: {line.strip()}")

    def step(self):
        acts = {
            self.record: 10, self.abandon_entry: 4, self.delete: 3, self.undo: 4, self.redo: 3,
            self.look_around: 8, self.open_and_close: 6, self.search: 2, self.refresh: 1,
            self.save: 4, self.revert: 1, self.kill: 1, self.kill_while_saving: 1, self.quit: 1,
            self.import_statement: 3, self.look_at_reports: 3, self.try_strategies: 2,
            self.change_settings: 2,
        }  # fmt: skip
        act = self.dice.choices(list(acts), weights=list(acts.values()))[0]
        self.counts[act.__name__] = self.counts.get(act.__name__, 0) + 1
        self.latest = [*self.latest[-11:], act.__name__]
        act()
        expect(self.screen.program.poll() is None, "the program has ended by itself")
        unexpected = [sheet.name for sheet in self.sheets() if sheet.name == "Corvane"]
        expect(not unexpected, "an alert is shown that nobody has asked for")
        self.check_words()


def amounts(entries):
    return sorted(cents for _, cents in entries)


def bring_to_front(start):
    """Of several windows, the one that the user would click on in his bar."""
    command = ["xdotool", "search", "--onlyvisible", "--name", f"^{start}", "windowactivate", "--sync"]
    subprocess.run(command, check=True)


def find_button(window, *starts):
    """The first button that is shown whose text begins with one of these; None without one."""
    shown = window.find_all("push button")
    return next((b for b in shown if b.name.replace("&", "").startswith(starts)), None)


def button(window, *starts):
    return wait_for(f"a button “{starts[0]}…”", lambda: find_button(window, *starts))


def press_button(window, start):
    button(window, start).press()


def next_item(window, start):
    return wait_for(
        f"a list item “{start}…”",
        lambda: next(
            (each for each in window.find_all("list item") if each.name.startswith(start)), None
        ),
    )


def soak(screen, seconds, dice):
    run = Soak(screen, dice)
    screen.console("create", run.file[: -len(".corvane")], "--portfolio", "Savings", "--currency", "CAD")
    for symbol in ("CASTR", "CWRLD.TO", "0582.T"):
        screen.console("watch", run.file, symbol)
    # A first run shows a sample and a welcome; its normal end makes the next one an ordinary run.
    run.start()
    welcome = "Welcome to Corvane — Corvane Help"
    screen.window(welcome)
    screen.key("Escape")
    screen.wait_until_gone(welcome)
    run.front()
    screen.quit()
    run.start()
    end = time.monotonic() + seconds
    steps = 0
    try:
        while time.monotonic() < end:
            run.step()
            steps += 1
        run.save()
        run.quit()
    finally:
        print(f"The last were {', '.join(run.latest)}.")
        print(f"{steps} steps: {dict(sorted(run.counts.items()))}")
        if run.resident:
            largest, after = max(run.resident)
            print(f"{len(run.resident)} runs; the largest had {largest:.0f} MiB after {after:.0f} s")
    print(f"Nothing was lost; the ledger has {len(run.paper.saved)} transactions.")


def main():
    programs, seconds = sys.argv[1], float(sys.argv[2])
    seed = int(sys.argv[3]) if len(sys.argv) > 3 else random.randrange(10**6)
    print(f"seed {seed}", flush=True)
    try:
        with Screen(programs, os.environ.get("CORVANE_SCREENS")) as screen:
            soak(screen, seconds, random.Random(seed))
    except Failure as failure:
        print(f"FAILED: {failure}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
