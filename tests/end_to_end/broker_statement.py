"""A broker's statement goes in as it is: it is looked at, what only the user knows is answered, it is
recorded, read again without doubling anything, and taken back. By keyboard and by what a screen
reader is told.

usage: broker_statement.py <folder of the programs>
CORVANE_SCREENS names a folder that keeps a picture of every step.
"""

import os

from accessible_desktop import expect, run, wait_for
from one_evening import open_portfolio, save_as_family

STATEMENT = """Date;Order #;Transaction;Symbol;Name;ISIN;Quantity;Unit price;Costs;Accrued Interest;Net Amount;Balance;Currency
12-03-2024 12:16:00;1002;Dividend;CWRLD.TO;Cedar World;CA0000000002;1.0;4.21;0.00;0.00;4.21;2.0;CAD
11-03-2024 12:22:24;1001;Loyalty bonus;;;;1.0;1.25;0.00;0.00;1.25;1.0;CAD
08-03-2024 07:00:15;00000000;Credit;;;;1.0;500.00;0.00;0.00;500.00;5000.00;CAD
"""
LINES = "Lines of the statement"


def open_statement(screen, file):
    screen.key("ctrl+shift+i")
    screen.window("Import Statement")
    screen.write(file)
    screen.key("Return")
    return wait_for(
        "the lines of the statement",
        lambda: next(
            (w for w in screen.windows() if w.name == "Import Statement" and any(w.find_all("table", LINES))),
            None,
        ),
    )


def verdicts(dialog):
    """The verdict of each line, as soon as the table can be read."""
    table = dialog.find("table", LINES)
    return [table.row_texts(row)[1] for row in range(table.row_count)]


def button(dialog, start):
    return wait_for(
        f"a button “{start}…”",
        lambda: next((b for b in dialog.find_all("push button") if b.name.startswith(start)), None),
    )


def read_once(screen, file):
    dialog = open_statement(screen, file)
    wait_for("three lines", lambda: verdicts(dialog) == ["new", "refused", "new"])
    screen.picture("statement-asks")
    expect(not button(dialog, "Import 2 Rows").has("enabled"), "rows go in while one is refused")
    # The first question has the keyboard.
    dialog.find("combo box", "What does “Loyalty bonus” mean?")
    screen.write("Cas")
    button(dialog, "Use Answers").press()
    wait_for("three new lines", lambda: verdicts(dialog) == ["new", "new", "new"])
    screen.picture("statement-ready")
    button(dialog, "Import 3 Rows").press()
    screen.window("Corvane")
    screen.key("Return")
    screen.wait_until_gone("Corvane")


def read_again(screen, file):
    dialog = open_statement(screen, file)
    wait_for("lines that are there", lambda: verdicts(dialog) == ["already there"] * 3)
    expect(not button(dialog, "Import 0 Rows").has("enabled"), "nothing is new and can go in")
    screen.picture("statement-again")
    screen.key("Escape")
    screen.wait_until_gone("Import Statement")


def take_back(screen, window):
    screen.key("alt+f")
    window.find("menu item", "Imports of Statements…")
    screen.key("t")
    imports = screen.window("Imports of Statements")
    table = imports.find("table", "Imports")
    expect(table.row_texts(0)[-1] == "3", f"the import is told as {table.row_texts(0)}")
    screen.picture("imports")
    button(imports, "Take Back Import").press()
    question = screen.window("Corvane")
    button(question, "Take Back").press()
    wait_for("the rows to go", lambda: table.row_texts(0)[-1] == "0")
    imports.find("push button", "Close").press()
    screen.wait_until_gone("Imports of Statements")


def walk(screen):
    file = os.path.join(screen.work, "transactions.csv")
    with open(file, "w", encoding="utf-8") as text:
        text.write(STATEMENT)
    family = os.path.join(screen.work, "Family.corvane")
    screen.start("--sample-market")
    welcome = "Welcome to Corvane — Corvane Help"
    screen.window(welcome)
    screen.key("alt+F4")
    screen.wait_until_gone(welcome)
    open_portfolio(screen, "SampleMarket")
    read_once(screen, file)
    window = screen.window("SampleMarket* — Corvane")
    read_again(screen, file)
    take_back(screen, window)
    screen.key("ctrl+z")
    save_as_family(screen, family)
    screen.quit()

    def rows(workspace):
        return screen.console("ledger", workspace, "--portfolio", "Retirement").splitlines()

    sample = os.path.join(screen.programs, "../share/corvane/SampleMarket.corvane")
    grown = len(rows(family)) - len(rows(sample))
    expect(grown == 3, f"the ledger has grown by {grown} rows")


if __name__ == "__main__":
    run(walk, "The statement went in.")
