"""One evening with the program: a statement is imported into a portfolio of the sample, the gains are
exported, the workspace is saved under a new name and opened again. Afterwards what was saved is read
with the console program.

usage: one_evening.py <folder of the programs> <folder of the example statements>
CORVANE_SCREENS names a folder that keeps a picture of every step.
"""

import os
import re

from accessible_desktop import expect, run, wait_for


def item(window, start):
    """The entry of a list whose words begin so."""
    return wait_for(
        f"a list item “{start}…”",
        lambda: next(
            (each for each in window.find_all("list item") if each.name.startswith(start)), None
        ),
    )


def open_portfolio(screen, title):
    window = screen.window(f"{title} — Corvane")
    item(window, "Retirement").press()
    window.find("page tab", "Transactions")
    return window


def choose_fields(screen, setup, fields):
    """Gives the columns of a file their fields, by keyboard: each has four stops of the Tab key."""
    setup.find("table", "Fields").focus()
    screen.key("ctrl+Home")
    screen.key("Tab")
    for field in fields:
        if field:
            screen.key("F4")
            screen.write(field)
            screen.key("Return")
        screen.key("Tab", "Tab", "Tab", "Tab")


def import_statement(screen, window, file):
    window.find("menu item", "File")
    screen.key("alt+f")
    window.find("menu item", "Import Transactions…")
    screen.key("i")
    screen.window("Import")
    screen.write(file)
    screen.key("Return")
    setup = wait_for(
        "the setup of the fields",
        lambda: next(
            (w for w in screen.windows() if w.name == "Import" and any(w.find_all("table", "Fields"))),
            None,
        ),
    )
    choose_fields(screen, setup, ["Trade D", None, "Symbol", "Cash A", "Ignore", "Ignore"])
    screen.picture("fields-chosen")
    setup.find("push button", "Import").press()
    screen.window("Corvane")
    screen.picture("import-told")
    screen.key("Return")
    screen.wait_until_gone("Corvane")


def check_saved(screen, file):
    screen.console("verify", file)

    def rows(workspace):
        return screen.console("ledger", workspace, "--portfolio", "Retirement").splitlines()

    sample = os.path.join(screen.programs, "../share/corvane/SampleMarket.corvane")
    before, after = rows(sample), rows(file)
    expect(len(after) - len(before) == 6, f"the ledger has grown by {len(after) - len(before)} rows")
    for day, kind in (
        ("2024-01-15", r"Transfer In +2500\.00 +CAD"),
        ("2024-02-02", r"Transfer Out +-?750\.00 +CAD"),
        ("2024-05-27", r"Transfer Out +-?200\.00 +CAD"),
    ):
        pattern = re.compile(f"{day} +{day} +{kind}")
        expect(any(pattern.search(row) for row in after), f"the ledger lacks {day} {kind}")


def check_gains(file):
    with open(file, encoding="utf-8") as text:
        gains = text.read()
    expect(gains.startswith('"Opening Date","Closing Date","Symbol"'), "the gains lack their header")
    # The dates are those of the statement, in which the portfolio bought this and nothing else of it.
    expect(
        re.search(r'"1/15/24","5/27/24","CWRLD\.TO",.*,"122","0",', gains),
        f"the exported gains are not those of the days shown:\n{gains}",
    )


def save_as_family(screen, file):
    """Saves the workspace in `file`, which is Family.corvane in some folder."""
    screen.key("ctrl+shift+s")
    screen.window("Save Workspace")
    screen.key("ctrl+a")
    screen.write(file)
    screen.key("Return")
    screen.window("Family — Corvane")


def evening(screen, examples):
    gains = os.path.join(screen.work, "gains.csv")
    family = os.path.join(screen.work, "Family.corvane")
    screen.start("--sample-market")
    welcome = "Welcome to Corvane — Corvane Help"
    screen.window(welcome)
    # Each window has got the keyboard once, and nothing takes it from the page again.
    fronts = [window for window in screen.fronts() if window != "0x0"]
    expect(len(fronts) == len(set(fronts)), f"the keyboard went to and fro: {fronts}")
    screen.picture("welcome")
    screen.key("alt+F4")
    screen.wait_until_gone(welcome)

    window = open_portfolio(screen, "SampleMarket")
    import_statement(screen, window, os.path.join(examples, "penwyth-bank.tsv"))
    # The star of a workspace with changes.
    window = screen.window("SampleMarket* — Corvane")
    screen.picture("imported")
    screen.key("ctrl+3")
    window.find("table", "Realized gains and losses")
    screen.key("alt+f")
    window.find("menu item", "Export…")
    screen.key("e")
    screen.window("Export")
    screen.write(gains)
    screen.key("Return")
    wait_for("the exported file", lambda: os.path.exists(gains) and os.path.getsize(gains) > 0)
    screen.wait_until_gone("Export")
    check_gains(gains)

    save_as_family(screen, family)
    screen.picture("saved")
    screen.quit()
    check_saved(screen, family)

    screen.start("--sample-market", family)
    open_portfolio(screen, "Family")
    screen.picture("opened-again")
    screen.quit()


if __name__ == "__main__":
    run(evening, "The evening went well.")
