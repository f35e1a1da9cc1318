"""Tests of the subcommands explain and code as a whole, from outside.

Usage: explain_command_test.py TOOL PROJECT [unittest options]
"""

import json
import os
import pty
import re
import subprocess
import sys
import tempfile
import unicodedata
import unittest

TOOL = sys.argv.pop(1)
PROJECT = sys.argv.pop(1)
EXAMPLES = os.path.join(PROJECT, "examples", "purchases.jsonl")
GOLDEN = os.path.join(PROJECT, "tests", "golden", "purchases.jsonl")

# A run that takes longer hangs.
TIMEOUT = 600

GOOD = b'{"id":"good"}'
HOSTILE = {
    "id": "\x1b[31m<b>\u202e",
    "product": {
        "productIdentifier": "a<script>alert(1)</script>\x07",
        "price": "4.99",
        "priceLocale": {"currencyCode": "<EUR>\x1b]0;x\x07"},
        "localizedTitle": "\u202e" + "x" * 100000 + "\x1b[2J\"'&<img src=x onerror=alert(1)>",
    },
    "transaction": {"transactionIdentifier": "\u0007\u009b31m", "transactionDate": "2024-05-14T09:26:53Z",
                    "payment": {"quantity": 1}},
    "receipt": [
        {"productID": "a<script>alert(1)</script>\x07", "purchaseDateIA5String": "</svg><script>\x1b[1m",
         "purchaseType": 3, "transactionID": "\u2028", "originalTransactionID": "\ud800"},
        {"productID": "</title><style>*{display:none}</style>", "purchaseDateIA5String": "2024-05-14T09:26:53Z",
         "transactionID": "'\"><b>"},
    ],
}


def run(*arguments, data=b"", **options):
    environment = {name: value for name, value in os.environ.items() if name not in ("NO_COLOR", "TERM")}
    environment.update(options.pop("env", {}))
    return subprocess.run([TOOL, *arguments], input=data, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          timeout=TIMEOUT, check=False, env=environment, **options)


def run_on_terminal(*arguments, **environment):
    """Runs the command with a terminal as its standard output. Returns what it shows."""
    master, slave = pty.openpty()
    values = {name: value for name, value in os.environ.items() if name != "NO_COLOR"}
    values.update({"TERM": "xterm", **environment})
    values = {name: value for name, value in values.items() if value is not None}
    process = subprocess.Popen([TOOL, *arguments], stdout=slave, stdin=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL, env=values)
    os.close(slave)
    shown = b""
    try:
        while piece := os.read(master, 65536):
            shown += piece
    except OSError:
        # How a terminal tells that its other end was closed.
        pass
    process.wait(TIMEOUT)
    os.close(master)
    return shown.decode()


def lines_of(path):
    with open(path, "rb") as file:
        return file.read().splitlines()


def columns(line):
    wide = sum(unicodedata.east_asian_width(character) in "WF" for character in line)
    none = sum(unicodedata.combining(character) > 0 or unicodedata.category(character) == "Cf"
               for character in line)
    return len(line) + wide - none


class TextTest(unittest.TestCase):
    def test_each_example_is_explained(self):
        golden = [json.loads(line) for line in lines_of(GOLDEN)]
        for number, result in enumerate(golden, 1):
            with self.subTest(result["id"]):
                done = run("explain", EXAMPLES, "--line", str(number))
                self.assertEqual(done.returncode, 0, done.stderr)
                self.assertEqual(done.stderr, b"")
                text = done.stdout.decode()
                for diagnostic in result["diagnostics"]:
                    self.assertIn("\n  {}  ".format(diagnostic["code"]), text)
                self.assertEqual("\nEvent\n" in text, result["event"] is not None)
                for key, value in (result["event"] or {}).items():
                    self.assertRegex(text, r"\n  {} +".format(key))
                    if isinstance(value, int):
                        self.assertRegex(text, r"\n  {} +{}\b".format(key, value))

    def test_lines_have_80_columns(self):
        done = run("explain", EXAMPLES)
        numbers = range(1, len(lines_of(EXAMPLES)) + 1)
        texts = [run("explain", EXAMPLES, "--line", str(number)).stdout for number in numbers]
        for line in b"".join([done.stdout, *texts]).decode().splitlines():
            # The line that says how to select has the path of the input.
            if not line.startswith("To explain one"):
                self.assertLessEqual(columns(line), 80, line)

    def test_several_purchases_are_listed(self):
        done = run("explain", "-", data=GOOD + b"\n\n" + b"{bad}\n" + GOOD)
        self.assertEqual(done.returncode, 1)
        lines = done.stdout.decode().splitlines()
        self.assertEqual(lines[0:2], ["     1  good", "        No event: the purchase has no product"])
        self.assertEqual(lines[2], "     3  (no id)")
        self.assertRegex(lines[3], "^        Unreadable: ")
        self.assertEqual(lines[-1], "To explain one of them: qel-purchase explain --line N, or --id ID")
        self.assertEqual(done.stderr, b"qel-purchase: 2 purchases read, 1 line rejected\n")

    def test_one_purchase_is_explained(self):
        done = run("explain", data=b"\n" + GOOD + b"\n")
        self.assertEqual(done.returncode, 0)
        self.assertTrue(done.stdout.startswith(b"Purchase good (line 2)\n"), done.stdout)

    def test_empty_input_shows_nothing(self):
        done = run("explain")
        self.assertEqual((done.returncode, done.stdout), (0, b""))
        self.assertEqual(done.stderr, b"qel-purchase: 0 purchases read, 0 lines rejected\n")

    def test_purchases_are_selected_by_id(self):
        done = run("explain", "--id", "good", data=GOOD + b"\n{}\n" + GOOD)
        self.assertEqual(done.returncode, 0)
        self.assertEqual(re.findall(rb"^Purchase .*$", done.stdout, re.M),
                         [b"Purchase good (line 1)", b"Purchase good (line 3)"])

    def test_selected_line_that_cannot_be_read_is_reported(self):
        done = run("explain", "--line", "2", data=GOOD + b"\n{\"id\":1}\n")
        self.assertEqual(done.returncode, 1)
        self.assertIn(b"Unreadable: at \"/id\":", done.stdout)

    def test_unknown_keys_are_errors_unless_allowed(self):
        self.assertEqual(run("explain", data=b'{"x":1}').returncode, 1)
        self.assertEqual(run("explain", "--allow-unknown", data=b'{"x":1}').returncode, 0)

    def test_nothing_selected_is_an_error(self):
        for arguments, message in (
            (["--id", "x"], "no purchase of standard input has the id x; without --id, the command lists all purchases"),
            (["--id", ""], 'no purchase of standard input has the id ""; without --id, the command lists all purchases'),
            (["--line", "9"], "line 9 of standard input does not exist: the input has 3 lines"),
            (["--line", "2"], "line 2 of standard input is blank"),
        ):
            with self.subTest(arguments):
                done = run("explain", *arguments, data=GOOD + b"\n\n" + GOOD)
                self.assertEqual(done.returncode, 2)
                self.assertEqual(done.stdout, b"")
                self.assertEqual(done.stderr.decode(), "qel-purchase: " + message + "\n")

    def test_wrong_usage_is_an_error(self):
        for arguments in (["--line", "0"], ["--line", "x"], ["--line", "1", "--id", "a"], ["--page"]):
            with self.subTest(arguments):
                self.assertEqual(run("explain", *arguments, data=GOOD).returncode, 2)
        missing = run("explain", "/nonexistent")
        self.assertEqual(missing.returncode, 2)
        self.assertIn(b"cannot open /nonexistent", missing.stderr)

    def test_full_disk_is_an_error(self):
        with open("/dev/full", "wb") as full:
            done = subprocess.run([TOOL, "explain", EXAMPLES], stdout=full, stderr=subprocess.PIPE,
                                  timeout=TIMEOUT, check=False)
        self.assertEqual(done.returncode, 2)
        self.assertIn(b"cannot write standard output", done.stderr)

    def test_colour_is_for_terminals_that_want_it(self):
        arguments = ("explain", EXAMPLES, "--line", "28")
        self.assertNotIn(b"\x1b", run(*arguments).stdout)
        self.assertIn("\x1b[1;32mConversion\x1b[0m", run_on_terminal(*arguments))
        self.assertNotIn("\x1b", run_on_terminal(*arguments, NO_COLOR="1"))
        self.assertNotIn("\x1b", run_on_terminal(*arguments, TERM="dumb"))
        self.assertNotIn("\x1b", run_on_terminal(*arguments, TERM=None))

    def test_hostile_texts_are_shown_and_shortened(self):
        data = json.dumps(HOSTILE).encode()
        for arguments in ((), ("--line", "1")):
            text = run("explain", *arguments, data=data).stdout.decode()
            self.assertFalse([c for c in text if c != "\n" and unicodedata.category(c) in ("Cc", "Cf", "Zl", "Zp")])
            self.assertIn("\\u001b[31m<b>\\u202e", text)
            self.assertIn("(100038 bytes)", text)
            self.assertLess(len(text), 10000)
        listed = run("explain", data=data + b"\n" + GOOD).stdout.decode()
        self.assertIn("\\u001b[31m<b>\\u202e", listed)


class PageTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.page = os.path.join(folder.name, "page.html")

    def read(self):
        with open(self.page, encoding="utf-8") as file:
            return file.read()

    def test_page_has_one_purchase_or_all(self):
        done = run("explain", EXAMPLES, "--line", "28", "--html", self.page)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, b"", b""))
        self.assertNotIn("<details", self.read())
        done = run("explain", EXAMPLES, "--html", self.page)
        self.assertEqual((done.returncode, done.stdout), (0, b""))
        self.assertEqual(self.read().count("<details"), len(lines_of(EXAMPLES)))

    def test_page_goes_to_standard_output(self):
        done = run("explain", "--html", "-", data=GOOD)
        self.assertEqual(done.returncode, 0)
        self.assertTrue(done.stdout.startswith(b"<!doctype html>"))

    def test_page_loads_nothing(self):
        run("explain", EXAMPLES, "--html", self.page)
        page = self.read()
        self.assertIn("default-src 'none'", page)
        self.assertNotRegex(page, r"<(script|link|img|iframe|object|form)\b|\b(src|on\w+|style)=|url\(|@import")
        self.assertEqual(set(re.findall(r'href="([^"]*)"', page)),
                         {"#m-" + name for name in ("paid", "trial", "offer", "unread", "ring", "bad")})

    def test_hostile_texts_stay_texts(self):
        run("explain", "--html", self.page, data=json.dumps(HOSTILE).encode() + b"\n" + GOOD)
        page = self.read()
        self.assertNotRegex(page, r"<script|<img|onerror=alert\(1\)>|</svg><script|<style>\*")
        self.assertIn("&lt;script&gt;alert(1)&lt;/script&gt;\\u0007", page)
        self.assertFalse([c for c in page if c != "\n" and unicodedata.category(c) in ("Cc", "Cf", "Zl", "Zp")])
        self.assertLess(len(page), 60000)

    def test_page_that_cannot_be_written_leaves_the_old_one(self):
        with open(self.page, "w", encoding="utf-8") as file:
            file.write("old")
        for arguments, data in ((("--id", "x"), GOOD), ((), b""), (("/nonexistent",), b"")):
            done = run("explain", *arguments, "--html", self.page, data=data)
            self.assertEqual(done.returncode, 2, arguments)
            self.assertEqual(self.read(), "old")
        self.assertEqual(os.listdir(os.path.dirname(self.page)), ["page.html"])
        self.assertEqual(run("explain", "--html", "/nonexistent/page.html", data=GOOD).returncode, 2)

    def test_more_purchases_than_a_page_has_are_an_error(self):
        done = run("explain", "--html", self.page, data=b"{}\n" * 20001)
        self.assertEqual(done.returncode, 2)
        self.assertIn(b"more than 20000 purchases; select with --id or --line", done.stderr)
        self.assertFalse(os.path.exists(self.page))

    def test_ten_thousand_purchases_are_one_page(self):
        line = lines_of(EXAMPLES)[27]
        done = run("explain", "--html", self.page, data=(line + b"\n") * 10000)
        self.assertEqual(done.returncode, 0)
        page = self.read()
        self.assertEqual(page.count('class="row '), 10000)
        self.assertLess(len(page), 20 << 20)
        self.assertRegex(done.stderr.decode(), r"the page explains \d+ purchases, and lists \d+ more")


class DocumentTest(unittest.TestCase):
    """The examples in the documents: each has a command, and lines of its output."""

    def check(self, document, count):
        with open(os.path.join(PROJECT, document), encoding="utf-8") as file:
            text = file.read()
        examples = re.findall(r"^    \$ qel-purchase (explain .*)\n((?:    .*\n|\n)+)", text, re.M)
        self.assertEqual(len(examples), count)
        for command, shown in examples:
            with self.subTest(command):
                done = subprocess.run([TOOL, *command.split()], stdout=subprocess.PIPE, timeout=TIMEOUT,
                                      cwd=PROJECT, check=True)
                self.assertIn(re.sub("^    ", "", shown, flags=re.M).rstrip("\n") + "\n", done.stdout.decode())

    def test_readme_shows_what_the_command_prints(self):
        self.check("README.md", 1)

    def test_case_shows_what_the_command_prints(self):
        self.check(os.path.join("docs", "explain.md"), 1)

    def test_case_quotes_the_explanation(self):
        with open(os.path.join(PROJECT, "docs", "explain.md"), encoding="utf-8") as file:
            document = file.read()
        reason = re.search(r"^    Why this result\n(?:    .*\n)+", document, re.M).group()
        text = run("explain", os.path.join(PROJECT, "examples", "explain.jsonl"), "--line", "1").stdout.decode()
        self.assertTrue(text.endswith("\n\n" + re.sub("^    ", "", reason, flags=re.M)), text)
        quotes = re.findall(r'^\| "(.+)" \|', document, re.M)
        self.assertEqual(len(quotes), 3)
        texts = b"".join(run("explain", EXAMPLES, "--line", str(number)).stdout for number in range(27, 36))
        for quote in quotes:
            self.assertIn(quote, re.sub(r"\s+", " ", texts.decode()))


class CodeTest(unittest.TestCase):
    def test_code_is_explained(self):
        done = run("code", "40023")
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        text = done.stdout.decode()
        self.assertTrue(text.startswith("40023  Subscription transaction missing in receipt will be"))
        self.assertIn("\nEvent: the store's values, invalid and subscription. It has no _did.\n", text)
        self.assertIn("\nUsual causes\n", text)

    def test_codes_are_those_of_the_page_and_the_header(self):
        listed = re.findall(r"^(\d{5})  (.+)$", run("code").stdout.decode(), re.M)
        with open(os.path.join(PROJECT, "docs", "diagnostics.md"), encoding="utf-8") as page:
            self.assertEqual(listed, re.findall(r"^## (\d{5}) (.+)$", page.read(), re.M))
        with open(os.path.join(PROJECT, "include", "qel", "diagnostic_codes.h"), encoding="utf-8") as header:
            self.assertEqual({code for code, _ in listed}, set(re.findall(r"= (\d{5}),", header.read())))

    def test_other_codes_are_errors(self):
        for code in ("40099", "4002", "40023x", "E40023", "\x1b[31m"):
            with self.subTest(code):
                done = run("code", code)
                self.assertEqual((done.returncode, done.stdout), (2, b""))
                self.assertIn(b"expected a code of the diagnostics, such as 40023, found ", done.stderr)
                self.assertIn(b"qel-purchase code lists all", done.stderr)
                self.assertNotIn(b"\x1b", done.stderr)


if __name__ == "__main__":
    unittest.main()
