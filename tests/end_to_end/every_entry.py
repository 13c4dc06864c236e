"""A ledger kept by hand: one entry of every kind is recorded, some are changed, reordered and deleted,
all of it is taken back and done again, and what is saved is what the console reads.

usage: every_entry.py <folder of the programs>
CORVANE_SCREENS names a folder that keeps a picture of every step.
"""

import csv
import os
import re

from accessible_desktop import expect, run, wait_for

BOOK = "Book* — Corvane"
FORM = "New Transaction"

# Kind of entry by its key, the day, the equity, and what is typed into which field.
ENTRIES = [
    ("i", "2024-01-15", None, {"Total Deposit": "10,000"}),
    ("e", "2024-01-15", None, {"Total Credit": "25.50"}),
    ("x", "2024-01-15", None, {"Total Expense": "$ 5.25"}),
    ("b", "2024-01-16", "CWRLD", {"Number of Shares": "100", "Total Cost": "CA$4,000.00"}),
    ("v", "2024-02-01", "CWRLD", {"Shares Held": "100", "Total Dividend": "50"}),
    ("g", "2024-02-02", "CWRLD", {"Shares Held": "100", "Total Return": "10"}),
    ("r", "2024-02-05", "CWRLD", {"Shares Held": "100", "Total Return": "20"}),
    ("c", "2024-02-06", "CWRLD", {"Shares Held": "100", "Total Return": "30"}),
    ("t", "2024-02-07", "CWRLD", {"Pre-Split Shares": "100", "Post-Split Shares": "200"}),
    ("j", "2024-02-08", "CWRLD", {"Number of Shares": "10", "Cost Base Added": "300"}),
    ("s", "2024-02-12", "CWRLD", {"Number of Shares": "60", "Total Proceeds": "1500"}),
    ("o", "2024-02-20", None, {"Total Withdrawal": "500"}),
]

# Trade date, settlement date, type, shares, cash and note of the ledger in the end. The trades settle
# two weekdays later.
LEDGER = [
    ("2024-01-15", "2024-01-15", "Transfer In", "", "10000.00", ""),
    ("2024-01-15", "2024-01-15", "Cash Adjustment", "", "-5.25", ""),
    ("2024-01-15", "2024-01-15", "Cash Adjustment", "", "25.50", ""),
    ("2024-01-16", "2024-01-18", "Buy", "100", "-4000.00", ""),
    ("2024-02-01", "2024-02-01", "Dividend", "100", "50.00", "Of the fund"),
    ("2024-02-02", "2024-02-02", "Cap. Gains Dividend", "100", "10.00", "Of the fund"),
    ("2024-02-05", "2024-02-05", "Reinvested Distribution", "100", "20.00", ""),
    ("2024-02-06", "2024-02-06", "Return of Capital", "100", "30.00", ""),
    ("2024-02-07", "2024-02-07", "Split", "100", "", ""),
    ("2024-02-08", "2024-02-08", "Journal", "10", "", ""),
    ("2024-02-12", "2024-02-14", "Sell", "-60", "1600.00", ""),
]


class Book:
    """The window of the workspace, and what one does in it."""

    def __init__(self, screen):
        self.screen = screen

    @property
    def window(self):
        return self.screen.window(BOOK)

    @property
    def table(self):
        return self.window.find("table", "Transactions")

    def wait_for_rows(self, count):
        wait_for(f"{count} transactions", lambda: self.table.row_count == count)

    def rows(self):
        table = self.table
        return [table.row_texts(row) for row in range(table.row_count)]

    def select(self, row, further=0):
        self.screen.click(self.table)
        self.screen.key("ctrl+Home", *["Down"] * row, *["shift+Down"] * further)

    def drag_row(self, row, place):
        """Drops a row in front of the one at `place`."""
        left, top, width, _ = self.table.cell(place, 0).area()
        self.screen.drag(self.table.cell(row, 0).middle(), (left + width // 2, top))

    def open_form(self, key):
        self.screen.key("ctrl+t")
        form = self.screen.window(FORM)
        self.screen.key(f"ctrl+shift+{key}")
        return form

    def choose_equity(self, form, symbol):
        if any(form.find_all("combo box", "Equity")):
            # What is held stands in a menu, behind the dates.
            form.find("text", "Settlement Date").focus()
            self.screen.key("Tab")
            self.screen.write(symbol)
            wait_for(
                f"{symbol} to be chosen",
                lambda: not any(
                    each.name.startswith("Choose an equity") for each in form.find_all("label")
                ),
            )
            return
        form.find("text", "Equity").focus()
        self.screen.write(symbol)
        matches = self.screen.window_shown("Equity matches")
        wait_for(
            f"the match {symbol}",
            lambda: any(
                each.name.startswith(f"{symbol}.TO") for each in matches.find_all("list item")
            ),
        )
        self.screen.key("Return", "Tab")

    def fill(self, form, day, equity, fields):
        self.screen.retype(form.find("text", "Transaction Date"), day)
        if equity is not None:
            self.choose_equity(form, equity)
        for name, text in fields.items():
            self.screen.retype(form.find("text", name), text)

    def record(self, key, day, equity, fields):
        form = self.open_form(key)
        self.fill(form, day, equity, fields)
        self.screen.picture(f"entry-{key}")
        self.screen.key("Return")
        self.screen.wait_until_gone(FORM)

    def undo(self, times):
        for _ in range(times):
            self.screen.key("ctrl+z")

    def redo(self, times):
        for _ in range(times):
            self.screen.key("ctrl+shift+z")


def start(screen):
    workspace = os.path.join(screen.work, "Book")
    screen.console("create", workspace, "--portfolio", "Savings", "--currency", "CAD")
    screen.start("--sample-market", workspace + ".corvane")
    welcome = "Welcome to Corvane — Corvane Help"
    screen.window(welcome)
    screen.key("Escape")
    screen.wait_until_gone(welcome)
    screen.window("Book — Corvane")
    screen.key("ctrl+2")
    return workspace + ".corvane"


def wait_for_words(form, words):
    wait_for(
        f"“{words}”",
        lambda: any(words in label.name for label in form.find_all("label")),
    )


def refuse_unknown_equity(screen, book):
    """An equity that the service does not know is said to be such, and is not taken for another."""
    form = book.open_form("b")
    field = form.find("text", "Equity")
    field.focus()
    screen.write("zzqq")
    matches = screen.window_shown("Equity matches")
    wait_for(
        "the offer of an unknown equity",
        lambda: [each.name for each in matches.find_all("list item")] == ["ZZQQ"],
    )
    screen.key("Escape")
    screen.wait_until_gone("Equity matches")
    expect(field.text == "zzqq", f"what was typed has become “{field.text}”")
    expect(not form.find("push button", "Buy").has("enabled"), "no equity can be bought")
    screen.key("Tab")
    screen.retype(form.find("text", "Number of Shares"), "1")
    wait_for_words(form, "ZZQQ is not known to the source of prices.")
    screen.picture("unknown-equity")
    screen.key("Escape")
    screen.wait_until_gone(FORM)

    book.select(3, further=1)
    screen.key("Return")
    form = screen.window("Modify Transactions")
    form.find("check box", "Change equity").press()
    field = form.find("text", "New equity")
    screen.key("ctrl+a")
    screen.write("zzqq")
    matches = screen.window_shown("New equity matches")
    wait_for(
        "the words that nothing matches",
        lambda: [each.name for each in matches.find_all("list item")] == ["No matches."],
    )
    expect(not form.find("push button", "Modify").has("enabled"), "no equity can be set")
    screen.key("Escape", "Escape")
    screen.wait_until_gone("Modify Transactions")


def refuse_bad_input(screen, book):
    """Nothing of what is wrong is recorded, and what was typed stays."""
    form = book.open_form("s")
    amount = "9" * 39
    for field, text, words in (
        ("Number of Shares", "many", "“many” is not a number."),
        ("Number of Shares", amount, "No more than 38 digits can be kept."),
        ("Transaction Date", "0000-01-01", "Dates before the year 1 cannot be kept."),
        (
            "Settlement Date",
            "2001-01-01",
            "The settlement date must be equal to or later than the trade date.",
        ),
    ):
        control = form.find("text", field)
        screen.retype(control, text)
        form.find("label", f"⚠ {words}")
        expect(control.text == text, f"{field}: “{text}” has become “{control.text}”")
        expect(not form.find("push button", "Sell").has("enabled"), f"{text} can be recorded")
    # As a spreadsheet writes what was paid out.
    screen.retype(form.find("text", "Total Proceeds"), "($1,500.00)")
    wait_for_words(form, "Enter a total of 0 or more.")
    screen.picture("bad-input")
    screen.retype(form.find("text", "Transaction Date"), "2024-02-21")
    book.choose_equity(form, "CWRLD")
    screen.retype(form.find("text", "Number of Shares"), "1000")
    screen.retype(form.find("text", "Total Proceeds"), "1")
    wait_for_words(
        form, "⚠ Insufficient shares. The transaction requires 1000\u00a0shares of CWRLD.TO but"
    )
    screen.key("Return")
    screen.window("Corvane")
    screen.picture("refused")
    screen.key("Return")
    screen.wait_until_gone("Corvane")
    expect(form.find("text", "Number of Shares").text == "1,000", "what was typed is lost")
    screen.key("Escape")
    screen.wait_until_gone(FORM)


def change_rows(screen, book):
    """Modifies, revises several, reorders and deletes; the number of undo steps that makes."""
    book.select(10)
    screen.key("Return")
    form = screen.window("Modify Transaction")
    screen.retype(form.find("text", "Total Proceeds"), "1600")
    screen.key("Return")
    screen.wait_until_gone("Modify Transaction")

    book.select(4, further=1)
    screen.key("Return")
    form = screen.window("Modify Transactions")
    form.find("check box", "Change note").press()
    screen.retype(form.find("text", "New note"), "Of the fund")
    screen.picture("bulk")
    screen.key("Return")
    screen.wait_until_gone("Modify Transactions")

    # With the mouse, and then to and fro with keys.
    book.select(2)
    book.drag_row(2, 1)
    wait_for("the dragged row", lambda: "Cash Expense" in book.table.row_texts(1))
    book.select(1)
    screen.key("alt+Down")
    wait_for("the row further down", lambda: "Cash Expense" in book.table.row_texts(2))
    screen.key("alt+Up")
    wait_for("the row further up", lambda: "Cash Expense" in book.table.row_texts(1))

    book.select(11)
    screen.key("Delete")
    screen.window("Corvane")
    screen.key("Return")
    screen.wait_until_gone("Corvane")
    book.wait_for_rows(len(LEDGER))
    return 6


def read_csv(file):
    with open(file, encoding="utf-8", newline="") as text:
        return list(csv.reader(text))


def plain(cell):
    """An amount of money without its symbol, grouping and brackets; other texts as they are."""
    amount = re.fullmatch(r"(\(|-)?\D*?([\d,]+(?:\.\d+)?)\)?", cell)
    if amount is None:
        return cell
    return ("-" if amount[1] else "") + amount[2].replace(",", "")


def check_saved(screen, file, exported):
    screen.console("verify", file)
    told = os.path.join(screen.work, "console.csv")
    screen.console("export", "transactions", file, "--portfolio", "Savings", "--out", told)
    rows = read_csv(told)
    # The window writes as the user reads: days and amounts in the style of his place.
    for console, window in zip(rows[1:], read_csv(exported)[1:], strict=True):
        expect(
            [plain(cell) for cell in console[2:]] == [plain(cell) for cell in window[2:]],
            f"the console exports {console}, the window {window}",
        )
    places = [
        rows[0].index(name)
        for name in (
            "Trade Date,Settlement Date,Transaction Type,Number of Shares,Cash Amount,Note"
        ).split(",")
    ]
    saved = [tuple(row[place] for place in places) for row in rows[1:]]
    for is_, should_be in zip(saved, LEDGER):
        expect(is_ == should_be, f"the ledger has {is_} instead of {should_be}")
    expect(len(saved) == len(LEDGER), f"the ledger has {len(saved)} rows")


def keep_a_ledger(screen):
    file = start(screen)
    book = Book(screen)
    for entry in ENTRIES:
        book.record(*entry)
    book.wait_for_rows(len(ENTRIES))
    refuse_bad_input(screen, book)
    refuse_unknown_equity(screen, book)
    book.wait_for_rows(len(ENTRIES))
    steps = len(ENTRIES) + change_rows(screen, book)
    screen.picture("changed")
    final = book.rows()

    book.undo(steps)
    # There is nothing to be saved any more.
    unchanged = screen.window("Book — Corvane")
    unchanged.find("label", "Nothing has been recorded in this portfolio yet.")
    book.redo(steps)
    book.wait_for_rows(len(LEDGER))
    wait_for("the ledger as it was", lambda: book.rows() == final)

    exported = os.path.join(screen.work, "window.csv")
    screen.key("ctrl+e")
    screen.window("Export")
    screen.write(exported)
    screen.key("Return")
    screen.wait_until_gone("Export")
    wait_for("the exported file", lambda: os.path.exists(exported) and os.path.getsize(exported) > 0)
    screen.window(BOOK)
    screen.key("ctrl+s")
    screen.window("Book — Corvane")
    screen.quit()
    check_saved(screen, file, exported)


if __name__ == "__main__":
    run(keep_a_ledger, "The ledger is as it was kept.")
