"""Tests of the command qel-purchase as a whole, from outside.

Usage: command_test.py TOOL PROJECT [unittest options]

TOOL is the built command, PROJECT the folder that holds examples/ and tests/golden/. Python's own
json module is the reference for JSON.
"""

import errno
import fcntl
import json
import os
import pty
import random
import re
import resource
import select
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import termios
import threading
import time
import unittest

TOOL = sys.argv.pop(1)
PROJECT = sys.argv.pop(1)
EXAMPLES = os.path.join(PROJECT, "examples", "purchases.jsonl")
GOLDEN = os.path.join(PROJECT, "tests", "golden", "purchases.jsonl")
IS_SANITIZED = "QEL_SANITIZED" in os.environ

# A run that takes longer hangs. No run here takes a tenth of it.
TIMEOUT = 120

def lines_of(path):
    with open(path, "rb") as file:
        return file.read().splitlines()


EXAMPLE_LINES = lines_of(EXAMPLES)
GOLDEN_LINES = lines_of(GOLDEN)

# A good line and its result: without a product there is one message, which golden results have too.
GOOD = b'{"id":"good"}'
GOOD_RESULT = {
    "id": "good",
    "event": None,
    "diagnostics": next(
        diagnostics
        for diagnostics in (json.loads(line)["diagnostics"] for line in GOLDEN_LINES)
        if [diagnostic["code"] for diagnostic in diagnostics] == [40026]
    ),
}


def reject_constant(name):
    raise ValueError("JSON has no " + name)


# The errors for an unknown key of a line, and for a key that comes twice.
ANY_KEY = "unknown key: expected id, product, transaction, receipt or platform"
ONCE = "duplicate key: expected each key once"

# What the line { is told.
END_IN_OBJECT = (
    "broken JSON at column 2: expected a key in quotes or }, found the end of the line"
)


def parse(text, object_pairs_hook=None):
    """Parses JSON strictly. Numbers become integers, of any size, or their text."""
    return json.loads(
        text.decode("utf-8"),
        parse_constant=reject_constant,
        parse_float=str,
        object_pairs_hook=object_pairs_hook,
    )


def is_json(text):
    try:
        parse(text)
        return True
    except ValueError:
        return False


def run(*arguments, data=b"", **options):
    """Runs the command on `data` and gives its status, output and messages."""
    return subprocess.run(
        [TOOL, *arguments],
        input=None if "stdin" in options else data,
        stdout=options.pop("stdout", subprocess.PIPE),
        stderr=subprocess.PIPE,
        timeout=TIMEOUT,
        check=False,
        **options,
    )


def start(*arguments, **options):
    """Starts the command with pipes at all three ends."""
    ends = {"stdin": subprocess.PIPE, "stdout": subprocess.PIPE, "stderr": subprocess.PIPE}
    return subprocess.Popen([TOOL, *arguments], **{**ends, **options})


def summary(read, rejected, first=None):
    """The end of the messages: the first rejected line, if there is one, and the counts."""
    text = "qel-purchase: {} purchase{} read, {} line{} rejected\n".format(
        read, "" if read == 1 else "s", rejected, "" if rejected == 1 else "s"
    )
    if first is not None:
        text = "qel-purchase: first rejected line: " + first + "\n" + text
    return text.encode()


def read_for(seconds, descriptor):
    """Reads what comes from a descriptor until its end, or until the time is over."""
    data = b""
    end = time.monotonic() + seconds
    while (left := end - time.monotonic()) > 0:
        if not select.select([descriptor], [], [], left)[0]:
            break
        try:
            piece = os.read(descriptor, 65536)
        except OSError as error:
            # How a terminal tells that its other end was closed.
            if error.errno != errno.EIO:
                raise
            piece = b""
        if not piece:
            break
        data += piece
    return data


class CommandTest(unittest.TestCase):
    maxDiff = None

    def results(self, process, status=None):
        """The lines of output, parsed. Each must be JSON, and the keys of its event sorted."""
        if status is not None:
            self.assertEqual(process.returncode, status, process.stderr)
        output = process.stdout
        self.assertTrue(not output or output.endswith(b"\n"))
        # Split at newlines alone: a title may have other line separators.
        return [self.result(line) for line in output.split(b"\n")[:-1]]

    def result(self, line):
        def checked(pairs):
            keys = [key for key, _ in pairs]
            self.assertEqual(len(keys), len(set(keys)), line)
            if "product_id" in keys:
                self.assertEqual(keys, sorted(keys), line)
            return dict(pairs)

        result = parse(line, checked)
        kind = [key for key in result if key != "id"]
        self.assertIn(kind, [["event", "diagnostics"], ["error"]], line)
        return result

    def assert_error(self, data, path, message, arguments=()):
        """Checks that a line gives this error, and that the lines around it come out."""
        process = run("events", *arguments, data=GOOD + b"\n" + data + b"\n" + GOOD)
        before, result, after = self.results(process, 1)
        self.assertEqual(result["error"]["line"], 2)
        self.assertEqual(result["error"]["path"], path)
        self.assertEqual(result["error"]["message"], message)
        self.assertEqual([before, after], [GOOD_RESULT, GOOD_RESULT])
        place = "line 2 of standard input, " + (path + ": " if path else "")
        self.assertEqual(process.stderr, summary(2, 1, place + message))

    def write_file(self, data):
        file = tempfile.NamedTemporaryFile(prefix="qel-command-")
        self.addCleanup(file.close)
        file.write(data)
        file.flush()
        return file.name


class GoldenTest(CommandTest):
    def test_every_example_gives_its_golden_line(self):
        self.assertGreaterEqual(len(EXAMPLE_LINES), 30)
        self.assertEqual(len(EXAMPLE_LINES), len(GOLDEN_LINES))
        process = run("events", EXAMPLES)
        self.assertEqual(process.returncode, 0)
        for line, golden in zip(process.stdout.split(b"\n"), GOLDEN_LINES):
            with self.subTest(id=parse(golden)["id"]):
                self.assertEqual(line, golden)
        self.assertEqual(process.stdout, b"\n".join(GOLDEN_LINES) + b"\n")

    def test_every_example_has_an_id_of_its_own_which_is_echoed(self):
        ids = [parse(line)["id"] for line in EXAMPLE_LINES]
        self.assertEqual(len(ids), len(set(ids)))
        self.assertEqual([parse(line)["id"] for line in GOLDEN_LINES], ids)

    def test_every_golden_line_has_sorted_event_keys(self):
        for line in GOLDEN_LINES:
            self.result(line)

    def test_an_example_alone_gives_its_golden_line(self):
        for index in range(0, len(EXAMPLE_LINES), 10):
            process = run("events", data=EXAMPLE_LINES[index] + b"\n")
            self.assertEqual(process.stdout, GOLDEN_LINES[index] + b"\n")

    def test_integers_as_strings_differ_in_nothing_else(self):
        process = run("events", "--int64-as-string", EXAMPLES)
        for result, golden in zip(self.results(process, 0), map(parse, GOLDEN_LINES)):
            event = golden["event"]
            if event is not None:
                golden["event"] = {key: str(event[key]) for key in event}
            self.assertEqual(result, golden)
            if event is not None:
                for key in event:
                    self.assertIsInstance(result["event"][key], str)

    def test_integers_are_exact(self):
        process = run("events", EXAMPLES)
        quantities = [
            result["event"]["quantity"]
            for result in self.results(process)
            if result["event"] and "quantity" in result["event"]
        ]
        self.assertIn(9223372036854775807, quantities)


class InputTest(CommandTest):
    def test_a_file_a_dash_and_standard_input_give_the_same(self):
        expected = run("events", EXAMPLES)
        with open(EXAMPLES, "rb") as file:
            self.assertEqual(run("events", stdin=file).stdout, expected.stdout)
        with open(EXAMPLES, "rb") as file:
            self.assertEqual(run("events", "-", stdin=file).stdout, expected.stdout)
        data = b"\n".join(EXAMPLE_LINES) + b"\n"
        self.assertEqual(run("events", data=data).stdout, expected.stdout)

    def test_an_empty_input_gives_an_empty_output(self):
        process = run("events", data=b"")
        self.assertEqual((process.returncode, process.stdout), (0, b""))
        self.assertEqual(process.stderr, summary(0, 0))
        self.assertEqual(run("events", os.devnull).returncode, 0)
        self.assertEqual(run("events", self.write_file(b"")).returncode, 0)

    def test_blank_lines_are_skipped_but_counted(self):
        data = b"\n \n" + GOOD + b"\n\t\r\n\n{\n\n \t" + GOOD + b" \n  \t"
        process = run("events", data=data)
        first, error, last = self.results(process, 1)
        self.assertEqual([first, last], [GOOD_RESULT, GOOD_RESULT])
        self.assertEqual(error["error"]["line"], 6)
        self.assertEqual(process.stderr, summary(2, 1, "line 6 of standard input, " + END_IN_OBJECT))

    def test_an_input_of_blank_lines_only_gives_an_empty_output(self):
        process = run("events", data=b"\n\n \n\t\n")
        self.assertEqual((process.returncode, process.stdout), (0, b""))

    def test_lines_may_end_with_carriage_return_and_newline(self):
        process = run("events", data=b"\r\n".join(EXAMPLE_LINES) + b"\r\n")
        self.assertEqual(process.returncode, 0)
        self.assertEqual(process.stdout.split(b"\n")[:-1], GOLDEN_LINES)

    def test_the_last_line_may_lack_its_newline(self):
        process = run("events", data=GOOD + b"\n" + GOOD)
        self.assertEqual(self.results(process, 0), [GOOD_RESULT, GOOD_RESULT])

    def test_a_byte_order_mark_at_the_start_is_skipped(self):
        mark = b"\xef\xbb\xbf"
        process = run("events", data=mark + GOOD + b"\n" + GOOD)
        self.assertEqual(self.results(process, 0), [GOOD_RESULT, GOOD_RESULT])
        for data in (mark, mark + b"\n", mark + b"\r\n"):
            process = run("events", data=data)
            self.assertEqual((process.returncode, process.stdout), (0, b""), data)

    def test_a_byte_order_mark_anywhere_else_is_an_error(self):
        mark = b"\xef\xbb\xbf"
        for data in (mark + GOOD, GOOD + mark):
            process = run("events", data=GOOD + b"\n" + data + b"\n" + GOOD)
            results = self.results(process, 1)
            self.assertEqual([results[0], results[2]], [GOOD_RESULT, GOOD_RESULT])
            message = results[1]["error"]["message"]
            self.assertIn("broken JSON", message)
            self.assertTrue(message.endswith(", found U+FEFF, a byte order mark"), message)
        results = self.results(run("events", data=mark + mark + GOOD), 1)
        self.assertEqual(results[0]["error"]["line"], 1)

    def test_an_id_is_echoed_only_where_there_is_one(self):
        process = run("events", data=b'{}\n{"id":null}\n{"id":""}\n{"id":"\\ud800\\u0000\\n"}')
        ids = [result.get("id", "(none)") for result in self.results(process, 0)]
        self.assertEqual(ids, ["(none)", "(none)", "", "\ud800\0\n"])
        self.assertIn(b'"id":"\\ud800\\u0000\\n"', process.stdout)


class FaultTest(CommandTest):
    def test_a_file_cut_at_any_byte_gives_every_whole_line_before_the_cut(self):
        lines = [b'{"id":"one","product":{"price":1}}', GOOD, b'{"id":"three","produkt":1}']
        data = b"\n".join(lines) + b"\n"
        whole = run("events", data=data).stdout.split(b"\n")
        for size in range(len(data)):
            process = run("events", data=data[:size])
            results = self.results(process)
            whole_lines = data[:size].count(b"\n")
            rest = data[:size].rpartition(b"\n")[2]
            # A line that misses its newline alone is whole.
            is_whole = rest == lines[whole_lines]
            self.assertEqual(len(results), whole_lines + (1 if rest else 0), size)
            for index in range(whole_lines + (1 if is_whole else 0)):
                self.assertEqual(process.stdout.split(b"\n")[index], whole[index], size)
            if rest and not is_whole:
                self.assertEqual(results[-1]["error"]["line"], whole_lines + 1)
            rejected = sum("error" in result for result in results)
            self.assertEqual(process.returncode, 1 if rejected else 0, size)
            self.assertTrue(
                process.stderr.endswith(summary(len(results) - rejected, rejected)), size
            )

    def test_a_line_cut_at_any_byte_is_an_error_and_leaves_the_lines_around_it_alone(self):
        cut = [line[:size] for line in EXAMPLE_LINES[::4] for size in range(1, len(line))]
        process = run("events", data=b"".join(line + b"\n" + GOOD + b"\n" for line in cut))
        results = self.results(process, 1)
        self.assertTrue(process.stderr.endswith(summary(len(cut), len(cut))))
        self.assertEqual(len(results), 2 * len(cut))
        for index, line in enumerate(cut):
            self.assertIn("error", results[2 * index], line)
            self.assertEqual(results[2 * index + 1], GOOD_RESULT)
            self.assertEqual(results[2 * index]["error"]["line"], 2 * index + 1)

    def test_a_line_with_any_byte_changed_is_read_only_if_it_is_json(self):
        line = EXAMPLE_LINES[-1]
        self.assertLess(len(line), 600)
        spare = b"\"\\{}[],:.-+0e tfnu/\t\r\x00\x01\x1f\x7f\x80\xc3\xed\xff"
        changed = []
        for index in range(len(line)):
            changed.append(line[:index] + line[index + 1 :])
            changed.append(line[:index] + line[index : index + 1] + line[index:])
            for byte in spare:
                changed.append(line[:index] + bytes([byte]) + line[index + 1 :])
        for arguments in ((), ("--allow-unknown",)):
            process = run("events", *arguments, data=b"\n".join(changed))
            results = self.results(process, 1)
            self.assertEqual(len(results), len(changed))
            for text, result in zip(changed, results):
                if "event" in result:
                    self.assertTrue(is_json(text), text)
                elif result["error"]["message"].startswith("broken JSON"):
                    self.assertFalse(is_json(text), (text, result))

    def test_an_error_names_the_id_where_one_can_be_made_out(self):
        lines = [b'{"id":"a\\n","produkt":1}', b'{"id":"b"', b'{"produkt":1,"id":"c"}', b'{"id":7}']
        results = self.results(run("events", data=b"\n".join(lines)), 1)
        self.assertEqual([result.get("id") for result in results], ["a\n", "b", "c", None])

    def test_nul_bytes_are_errors(self):
        broken = "broken JSON at column "
        for data in (b"\0", b"\0\0\0", GOOD + b"\0", b"\0" + GOOD, b'{"id":\0"a"}', b'{"id":"\0"}'):
            process = run("events", data=GOOD + b"\n" + data + b"\n" + GOOD)
            results = self.results(process, 1)
            self.assertTrue(results[1]["error"]["message"].startswith(broken), (data, results[1]))
            self.assertEqual([results[0], results[2]], [GOOD_RESULT, GOOD_RESULT])

    def test_bad_utf8_is_an_error(self):
        stray_and_cut = (b"\xff", b"\x80", b"\xc3", b"\xe2\x82")
        overlong_surrogate_and_too_great = (b"\xc0\x80", b"\xed\xa0\x80", b"\xf4\x90\x80\x80")
        for bad in stray_and_cut + overlong_surrogate_and_too_great:
            self.assert_error(b'{"id":"' + bad + b'"}', "", "broken JSON at column 8: expected UTF-8")

    def test_an_unpaired_surrogate_is_written_back_as_an_escape(self):
        process = run("events", data=b'{"id":"a\\uD83Db"}\n{"id":"\\ud83d\\ude80"}')
        self.assertTrue(process.stdout.startswith(b'{"id":"a\\ud83db",'))
        self.assertIn('{"id":"🚀",'.encode(), process.stdout)

    def test_an_unknown_key_is_an_error_unless_allowed(self):
        self.assert_error(b'{"id":"a","produkt":{}}', "/produkt", ANY_KEY)
        self.assert_error(
            b'{"receipt":[{},{}],"platform":{"a/b~":1}}',
            "/platform/a~1b~0",
            "unknown key: expected SKProductDiscount",
        )
        data = b'{"id":"good","produkt":{"a":[1,2.5e3,"\\ud800",null,{"b":true}]},"x":0,"x":1}'
        process = run("events", "--allow-unknown", data=data)
        self.assertEqual(self.results(process, 0), [GOOD_RESULT])

    def test_a_duplicate_key_is_an_error_always(self):
        for arguments in ((), ("--allow-unknown",)):
            self.assert_error(b'{"id":"a","id":"a"}', "/id", ONCE, arguments)
            self.assert_error(
                b'{"receipt":[{"productID":"a","product\\u0049D":"b"}]}',
                "/receipt/0/productID",
                ONCE,
                arguments,
            )

    def test_a_wrong_type_is_an_error(self):
        advice = "; qel-purchase receipt --purchases reads answers of the store's validation service"
        self.assert_error(b'{"receipt":{}}', "/receipt", "expected an array, found an object" + advice)
        self.assert_error(b"[]", "", "expected an object, found an array")
        self.assert_error(b'"text"', "", "expected an object, found a string")

    def test_numbers_are_read_up_to_every_limit_and_rejected_past_it(self):
        signed = "expected an integer from -9223372036854775808 to 9223372036854775807, found "
        unsigned = "expected an integer from 0 to 18446744073709551615, found "
        keys = [
            (
                b'{"transaction":{"payment":{"quantity":@}}}',
                "/transaction/payment/quantity",
                signed,
            ),
            (b'{"receipt":[{"purchaseType":@}]}', "/receipt/0/purchaseType", signed),
            (
                b'{"product":{"introductoryPrice":{"paymentMode":@}}}',
                "/product/introductoryPrice/paymentMode",
                unsigned,
            ),
        ]
        limits = {
            signed: (
                ["9223372036854775807", "-9223372036854775808", "-0"],
                ["9223372036854775808", "-9223372036854775809", "1.5", "1e3"],
            ),
            unsigned: (["0", "-0", "18446744073709551615"], ["-1", "18446744073709551616", "2.0"]),
        }
        for line, path, message in keys:
            within, past = limits[message]
            for number in within:
                self.results(run("events", data=line.replace(b"@", number.encode())), 0)
            for number in past:
                self.assert_error(line.replace(b"@", number.encode()), path, message + number)

    def test_nesting_a_hundred_thousand_deep_is_an_error(self):
        too_deep = "expected values nested at most 1000 deep"
        for deep in (b"[" * 100000 + b"]" * 100000, b'{"a":' * 100000 + b"0" + b"}" * 100000):
            line = b'{"x":' + deep + b"}"
            self.assert_error(line, "/x", ANY_KEY)
            self.assert_error(line, "/x", too_deep, ("--allow-unknown",))
            found = "an array" if deep.startswith(b"[") else "an object"
            self.assert_error(b'{"id":' + deep + b"}", "/id", "expected a string, found " + found)
        for deep in (b"[" * 100000, b'{"x":' * 100000):
            for arguments in ((), ("--allow-unknown",)):
                process = run("events", *arguments, data=deep + b"\n" + GOOD)
                self.assertEqual(self.results(process, 1)[1], GOOD_RESULT)


class LongLineTest(CommandTest):
    SIZE = 100_000_000

    def test_a_good_line_of_100_mb_is_read(self):
        padded = b'{"id":' + b" " * self.SIZE + b'"good"}'
        process = run("events", data=padded + b"\n" + GOOD + b"\n" + padded)
        self.assertEqual(self.results(process, 0), [GOOD_RESULT] * 3)

    def test_a_text_of_100_mb_comes_out_whole(self):
        text = b'{"id":"' + b"x" * self.SIZE + b'"'
        process = run("events", data=GOOD + b"\n" + text + b"}\n" + GOOD)
        first, long, last = process.stdout.splitlines()
        self.assertEqual(process.returncode, 0)
        self.assertEqual([parse(first), parse(last)], [GOOD_RESULT, GOOD_RESULT])
        self.assertTrue(long.startswith(text + b","))

    def test_a_bad_line_of_100_mb_is_an_error_and_the_lines_around_it_come_out(self):
        unclosed = b'{"id":"' + b"x" * self.SIZE
        self.assert_error(unclosed, "", "broken JSON at column 7: expected a string to end with a quote")
        wrong = b'{"id":"a",' + b" " * self.SIZE + b'"product":[]}'
        self.assert_error(wrong, "/product", "expected an object, found an array")

    def test_a_line_of_nothing_but_brackets_is_an_error(self):
        message = "broken JSON at column 2: expected a key in quotes or }, found {"
        self.assert_error(b"{" * 10_000_000, "", message)

    def test_a_long_text_of_escapes_takes_time_in_proportion_to_its_length(self):
        # Four times as long takes about four times the time. Work that grows with the square of the
        # length would take minutes for the second line.
        for escapes in (500_000, 2_000_000):
            for escape in (b"\\n", b'\\"', b"\\\\", b"\\u0041"):
                line = b'{"id":"' + escape * escapes + b'"}'
                process = subprocess.run(
                    [TOOL, "events"], input=line, capture_output=True, timeout=20, check=False
                )
                self.assertEqual(self.results(process, 0)[0]["id"], parse(line)["id"])
        broken = b'{"x":"' + b"\\n" * 2_000_000 + b'","id":"a"}'
        process = subprocess.run(
            [TOOL, "events"], input=broken, capture_output=True, timeout=20, check=False
        )
        self.assertEqual(self.results(process, 1)[0]["id"], "a")


class UsageTest(CommandTest):
    def test_help_goes_to_standard_output(self):
        for arguments in (["--help"], ["-h"], ["events", "--help"], ["events", "-h"]):
            process = run(*arguments)
            self.assertEqual((process.returncode, process.stderr), (0, b""))
            self.assertIn(b"Usage: qel-purchase", process.stdout)
        text = run("events", "--help").stdout
        for word in (
            b"FILE",
            b"--allow-unknown",
            b"--first-line",
            b"--int64-as-string",
            b"--jobs",
            b"--quiet",
        ):
            self.assertIn(word, text)
        text = run("--help").stdout
        for word in (b"events", b"explains", b"receipts"):
            self.assertIn(word, text)

    def test_version_goes_to_standard_output(self):
        process = run("--version")
        self.assertEqual((process.returncode, process.stderr), (0, b""))
        self.assertRegex(process.stdout, rb"\Aqel-purchase \d+\.\d+\.\d+\n\Z")

    def test_wrong_usage_is_told_and_writes_nothing(self):
        for arguments in (
            [],
            ["event"],
            ["events", "--unknown"],
            ["events", "--jobs"],
            ["events", "--jobs", "0"],
            ["events", "--jobs", "-1"],
            ["events", "--jobs", "1025"],
            ["events", "--jobs", "two"],
            ["events", "--first-line", "0"],
            ["events", "--first-line", "-1"],
            ["events", "--first-line", "two"],
            ["events", "--first-line", "0x10"],
            ["events", "--first-line", "+5"],
            ["events", "--first-line", "9223372036854775808"],
            ["explain", "--line", "0"],
            ["explain", "--line", "9223372036854775808"],
            ["events", "--max-line", "0"],
            ["events", "--max-line", "1T"],
            ["events", "--max-rejected", "-1"],
            ["events", "--unpaired-surrogates", "drop"],
            ["events", "--output"],
            ["--jobs", "2"],
        ):
            process = run(*arguments, data=GOOD)
            self.assertEqual((process.returncode, process.stdout), (2, b""), arguments)
            self.assertTrue(process.stderr.startswith(b"qel-purchase: "), process.stderr)
            self.assertIn(b"--help", process.stderr)

    def test_wrong_usage_is_told_with_what_was_expected(self):
        for arguments, message in (
            ([], b"expected a subcommand ("),
            (["event"], b"found event; did you mean events?\n"),
            (["--jobs", "2", "events"], b"unknown option --jobs before the subcommand\n"),
            (["events", "--job", "2"], b"unknown option --job; did you mean --jobs?\n"),
            (["events", "--jobs"], b"--jobs: expected a value\n"),
            (
                ["events", "--unpaired-surrogates", "drop"],
                b"--unpaired-surrogates: expected escape or replace, found drop\n",
            ),
            (["events", "--jobs", "0"], b"--jobs: expected a number from 1 to 1024, found 0\n"),
            (["events", "--jobs", ""], b"--jobs: expected a number from 1 to 1024, found \"\"\n"),
            ([""], b"), found \"\"\n"),
            (["code", "40023", ""], b"unexpected argument \"\"\n"),
            (
                ["events", "--first-line", "1e3"],
                b"--first-line: expected a number from 1 to 9223372036854775807, found 1e3\n",
            ),
        ):
            messages = run(*arguments, data=GOOD).stderr
            self.assertTrue(messages.startswith(b"qel-purchase: "), messages)
            self.assertIn(message, messages)

    def test_wrong_usage_points_to_the_help_of_its_subcommand(self):
        for arguments, command in (
            ([], b"qel-purchase"),
            (["event"], b"qel-purchase"),
            (["--unknown"], b"qel-purchase"),
            (["events", "--unknown"], b"qel-purchase events"),
            (["events", "--jobs", "0"], b"qel-purchase events"),
        ):
            messages = run(*arguments, data=GOOD).stderr
            self.assertTrue(messages.endswith(b"\nTry '" + command + b" --help'.\n"), messages)

    def test_the_last_of_repeated_options_counts(self):
        process = run("events", "--first-line", "5", "--first-line", "7", data=b"[]")
        self.assertEqual(self.results(process, 1)[0]["error"]["line"], 7)

    def test_numbers_of_lines_are_decimal(self):
        for number, line in (("0100", 100), ("08", 8), ("9223372036854775807", 2**63 - 1)):
            process = run("events", "--first-line", number, data=b"[]")
            self.assertEqual(self.results(process, 1)[0]["error"]["line"], line)

    def test_what_follows_two_dashes_is_an_argument(self):
        with tempfile.TemporaryDirectory(prefix="qel-command-") as folder:
            for name in ("a", "-b", "--", "--quiet"):
                with open(os.path.join(folder, name), "wb") as file:
                    file.write(GOOD)
            for arguments, count in (
                (["a", "--", "a"], 2),
                (["--", "-b"], 1),
                (["a", "--", "-b", "--", "--quiet"], 4),
                (["a", "--jobs", "1", "--", "-b"], 2),
                (["a", "--"], 1),
                (["--"], 1),
                (["--", "-"], 1),
                (["-o", "--", "a"], 0),
            ):
                with self.subTest(arguments):
                    process = run("events", *arguments, data=GOOD, cwd=folder)
                    self.assertEqual(self.results(process, 0), [GOOD_RESULT] * count)
            process = run("explain", "--", "-b", cwd=folder)
            self.assertEqual(process.returncode, 0)
            process = run("explain", "a", "--", "-b", cwd=folder)
            self.assertEqual((process.returncode, process.stdout), (2, b""))
            self.assertIn(b"unexpected argument -b\n", process.stderr)
        self.assertEqual(run("code", "--", "40023").stdout, run("code", "40023").stdout)
        self.assertEqual(run("completion", "--", "zsh").stdout, run("completion", "zsh").stdout)
        process = run("--", "events", data=GOOD)
        self.assertEqual((process.returncode, process.stdout), (2, b""))
        self.assertIn(b"expected a subcommand", process.stderr)

    def test_brackets_in_a_name_are_part_of_it(self):
        with tempfile.TemporaryDirectory(prefix="qel-command-") as folder:
            for name in ("[a,b]", "[]"):
                with open(os.path.join(folder, name), "wb") as file:
                    file.write(GOOD)
            process = run("events", "[a,b]", "[]", "-o", "[c,d]", cwd=folder)
            self.assertEqual(self.results(process, 0), [])
            process = run("events", "--first-line", "2", "[a,b]", cwd=folder)
            self.assertEqual(self.results(process, 0), [GOOD_RESULT])
            written = lines_of(os.path.join(folder, "[c,d]"))
            self.assertEqual([parse(line) for line in written], [GOOD_RESULT] * 2)

    def test_help_that_cannot_be_written_is_an_error(self):
        with open("/dev/full", "wb") as full:
            for arguments in (["--help"], ["--version"], ["events", "--help"]):
                process = run(*arguments, stdout=full)
                self.assertEqual(process.returncode, 2)
                self.assertIn(b"cannot write standard output", process.stderr)

    def test_the_summary_tells_what_was_read_and_rejected(self):
        self.assertEqual(run("events", data=GOOD).stderr, summary(1, 0))
        process = run("events", data=GOOD + b"\n{\n" + GOOD + b"\n{\n")
        self.assertEqual(
            process.stderr, summary(2, 2, "line 2 of standard input, " + END_IN_OBJECT)
        )
        self.assertEqual(process.returncode, 1)
        self.assertEqual(
            run("events", "--quiet", data=b"{").stderr,
            summary(0, 1, "line 1 of standard input, " + END_IN_OBJECT),
        )

    def test_any_number_of_jobs_gives_the_same(self):
        data = b"".join(line + b"\n{\n\n" for line in EXAMPLE_LINES) * 60
        expected = run("events", "--jobs", "1", data=data)
        self.assertEqual(len(self.results(expected, 1)), 120 * len(EXAMPLE_LINES))
        for jobs in ("2", "8"):
            process = run("events", "--jobs", jobs, data=data)
            self.assertEqual(process.stdout, expected.stdout)
            self.assertEqual(process.stderr, expected.stderr)
            self.assertEqual(process.returncode, 1)

    def test_parts_of_an_input_give_what_the_whole_gives(self):
        mark = b"\xef\xbb\xbf"
        lines = [mark + GOOD, b"", b"{", GOOD, mark + GOOD, b"[", b""]
        expected = run("events", data=b"\n".join(lines))
        self.assertEqual(
            [parse(line).get("error", {}).get("line") for line in expected.stdout.splitlines()],
            [None, 3, None, 5, 6],
        )
        for cut in range(len(lines)):
            parts = [
                run("events", data=b"\n".join(lines[:cut])),
                run("events", "--first-line", str(cut + 1), data=b"\n".join(lines[cut:])),
            ]
            self.assertEqual(b"".join(part.stdout for part in parts), expected.stdout, cut)


class FileTest(CommandTest):
    def assert_failure(self, process, message):
        self.assertEqual((process.returncode, process.stdout), (2, b""))
        self.assertIn(b"qel-purchase: " + message, process.stderr)

    def test_a_missing_file_is_an_error(self):
        missing = os.path.join(tempfile.gettempdir(), "qel-no-such-file.jsonl")
        message = "cannot open {}: No such file or directory\n".format(missing)
        self.assert_failure(run("events", missing), message.encode())
        self.assert_failure(run("events", ""), b"cannot open ")

    def test_a_folder_is_an_error(self):
        folder = tempfile.gettempdir()
        message = "cannot read {}: Is a directory\n".format(folder)
        self.assert_failure(run("events", folder), message.encode())

    def test_a_file_that_fails_while_it_is_read_is_an_error(self):
        message = b"cannot read /proc/self/mem: Input/output error\n"
        self.assert_failure(run("events", "/proc/self/mem"), message)

    def test_a_file_without_permission_is_an_error(self):
        name = self.write_file(GOOD)
        os.chmod(name, 0)
        options = {}
        if os.geteuid() == 0:
            # Root may read anything, so nobody tries.
            options = {"user": 65534, "group": 65534, "extra_groups": []}
        try:
            process = run("events", name, **options)
        except PermissionError:
            self.skipTest("the command is out of reach without root's permissions")
        self.assert_failure(process, "cannot open {}: Permission denied\n".format(name).encode())

    def test_a_full_disk_is_an_error(self):
        with open("/dev/full", "wb") as full:
            message = b"qel-purchase: cannot write standard output: No space left on device\n"
            rejected = summary(0, 1, "line 1 of standard input, " + END_IN_OBJECT)
            for data, end in ((GOOD, summary(1, 0)), (b"{", rejected)):
                process = run("events", data=data, stdout=full)
                self.assertEqual((process.returncode, process.stderr), (2, message + end))
            # Of a long input, as much is read as comes before the failure is known.
            process = run("events", data=b"\n".join(EXAMPLE_LINES * 100), stdout=full)
            self.assertEqual(process.returncode, 2)
            self.assertTrue(process.stderr.startswith(message))
            self.assertRegex(process.stderr, rb"\nqel-purchase: [1-9]\d* purchases read, ")

    def test_a_file_that_may_not_grow_is_an_error(self):
        def limit_size():
            resource.setrlimit(resource.RLIMIT_FSIZE, (1000, 1000))

        name = self.write_file(b"")
        with open(name, "wb") as output:
            process = run("events", EXAMPLES, stdout=output, preexec_fn=limit_size)
        self.assertEqual(process.returncode, 2)
        self.assertIn(b"cannot write standard output: File too large\n", process.stderr)

    def test_a_closed_pipe_is_an_error(self):
        name = self.write_file(b"\n".join(EXAMPLE_LINES * 200))
        for jobs in ("1", "2", "8"):
            process = start("events", "--jobs", jobs, name)
            first = process.stdout.readline()
            process.stdout.close()
            messages = process.stderr.read()
            process.stderr.close()
            process.stdin.close()
            self.assertEqual(process.wait(TIMEOUT), 2)
            self.assertEqual(first, GOLDEN_LINES[0] + b"\n")
            self.assertIn(b"cannot write standard output: Broken pipe\n", messages)

    def test_closed_standard_output_is_an_error(self):
        for closed in ((1,), (0, 1)):
            process = subprocess.run(
                ["sh", "-c", 'exec "$@" ' + " ".join("{}>&-".format(end) for end in closed), "sh"]
                + [TOOL, "events", EXAMPLES],
                stderr=subprocess.PIPE,
                timeout=TIMEOUT,
                check=False,
            )
            self.assertEqual(process.returncode, 2, closed)
            self.assertIn(b"cannot write standard output", process.stderr)

    def test_closed_standard_input_is_an_error(self):
        process = subprocess.run(
            ["sh", "-c", 'exec "$@" 0<&-', "sh", TOOL, "events"],
            capture_output=True,
            timeout=10,
            check=False,
        )
        self.assertEqual((process.returncode, process.stdout), (2, b""))
        self.assertIn(b"cannot read standard input", process.stderr)


class SeveralInputsTest(CommandTest):
    def test_results_come_in_the_order_of_the_inputs(self):
        first = self.write_file(b'{"id":"1"}\n{"id":"2"}')
        second = self.write_file(b'\n{"id":"3"}\n')
        process = run("events", first, "-", second, first, data=b'{"id":"in"}')
        ids = [result["id"] for result in self.results(process, 0)]
        self.assertEqual(ids, ["1", "2", "in", "3", "1", "2"])
        self.assertEqual(process.stderr, summary(6, 0))

    def test_errors_name_the_file_and_count_lines_within_it(self):
        first = self.write_file(GOOD + b"\n{")
        second = self.write_file(GOOD + b"\n\n[]")
        for jobs in ("1", "8"):
            process = run("events", "--jobs", jobs, first, second, "-", data=b"1")
            errors = [result["error"] for result in self.results(process, 1) if "error" in result]
            places = [(error["file"], error["line"]) for error in errors]
            self.assertEqual(places, [(first, 2), (second, 3), ("-", 1)])
            self.assertEqual(
                process.stderr, summary(2, 3, "line 2 of {}, {}".format(first, END_IN_OBJECT))
            )

    def test_a_single_input_is_not_named(self):
        process = run("events", self.write_file(b"{"))
        self.assertNotIn("file", self.results(process, 1)[0]["error"])

    def test_a_name_that_is_no_utf8_comes_out_as_utf8(self):
        folder = tempfile.mkdtemp(prefix="qel-command-")
        self.addCleanup(shutil.rmtree, folder)
        name = os.fsencode(folder) + b"/\xff.jsonl"
        with open(name, "wb") as file:
            file.write(b"{")
        process = subprocess.run(
            [TOOL, "events", name, name], capture_output=True, timeout=TIMEOUT, check=False
        )
        names = [result["error"]["file"] for result in self.results(process, 1)]
        self.assertEqual(names, [folder + "/\ufffd.jsonl"] * 2)

    def test_the_first_line_is_that_of_the_first_input(self):
        process = run("events", "--first-line", "5", "-", self.write_file(b"{"), data=b"{")
        self.assertEqual([r["error"]["line"] for r in self.results(process, 1)], [5, 1])

    def test_a_byte_order_mark_is_skipped_in_each_input(self):
        name = self.write_file(b"\xef\xbb\xbf" + GOOD + b"\n")
        process = run("events", name, name, "-", data=b"\xef\xbb\xbf" + GOOD)
        self.assertEqual(self.results(process, 0), [GOOD_RESULT] * 3)

    def test_an_input_that_fails_is_left_out_and_the_others_are_read(self):
        name = self.write_file(GOOD)
        missing = name + ".missing"
        foreign = self.write_file(b"id,price\n1,2\n")
        process = run("events", missing, name, foreign, tempfile.gettempdir(), name)
        self.assertEqual(self.results(process, 2), [GOOD_RESULT] * 2)
        messages = process.stderr.decode()
        self.assertRegex(
            messages,
            r"\Aqel-purchase: cannot open .*\nqel-purchase: cannot read .* it is CSV.*\n"
            r"qel-purchase: cannot read .*: Is a directory\nqel-purchase: 2 purchases read, ",
        )

    def test_an_interrupt_between_inputs_names_the_next_line(self):
        name = self.write_file(GOOD + b"\n" + GOOD)
        process = start("events", name, "-")
        for _ in range(2):
            self.assertEqual(parse(process.stdout.readline()), GOOD_RESULT)
        time.sleep(0.2)
        process.send_signal(signal.SIGINT)
        process.wait(TIMEOUT)
        _, messages = process.communicate(timeout=TIMEOUT)
        place = "the next is line 3 of {}\n".format(name).encode()
        self.assertIn(b"qel-purchase: interrupted: 2 lines written; " + place, messages)


def compressed(program, data):
    return subprocess.run([program, "-c"], input=data, stdout=subprocess.PIPE, check=True).stdout


class CompressionTest(CommandTest):
    PROGRAMS = ("gzip", "zstd", "xz")

    def test_compressed_files_and_pipes_are_decompressed(self):
        data = b"\n".join(EXAMPLE_LINES) + b"\n"
        expected = b"\n".join(GOLDEN_LINES) + b"\n"
        for program in self.PROGRAMS:
            packed = compressed(program, data)
            self.assertEqual(run("events", self.write_file(packed)).stdout, expected, program)
            self.assertEqual(run("events", data=packed).stdout, expected, program)
        names = [self.write_file(compressed(program, data)) for program in self.PROGRAMS]
        process = run("events", names[0], EXAMPLES, *names[1:])
        self.assertEqual((process.returncode, process.stdout), (0, expected * 4))

    def test_files_of_several_streams_are_read_to_the_end(self):
        for program in self.PROGRAMS:
            packed = compressed(program, GOOD + b"\n") + compressed(program, GOOD)
            self.assertEqual(self.results(run("events", data=packed), 0), [GOOD_RESULT] * 2)

    def test_any_number_of_jobs_gives_the_same(self):
        data = b"".join(line + b"\n{\n\n" for line in EXAMPLE_LINES) * 20
        expected = run("events", data=data)
        for program in self.PROGRAMS:
            for jobs in ("1", "8"):
                process = run("events", "--jobs", jobs, data=compressed(program, data))
                self.assertEqual(process.stdout, expected.stdout)
                self.assertEqual(process.stderr, expected.stderr)

    def test_a_truncated_file_gives_its_whole_lines_and_status_2(self):
        lines = [b'{"id":"%d"}' % (index * 7919) for index in range(20_000)]
        data = b"\n".join(lines) + b"\n"
        for program in self.PROGRAMS:
            packed = compressed(program, data)
            for size in (len(packed) - 1, len(packed) - 10, len(packed) // 2, 20):
                name = self.write_file(packed[:size])
                # What the program itself gets out of the file.
                read = subprocess.run(
                    [program, "-dc"], input=packed[:size], capture_output=True, check=False
                ).stdout
                process = run("events", name)
                self.assertEqual(process.returncode, 2)
                message = "cannot read {}: the compressed data are truncated\n".format(name)
                self.assertIn(message.encode(), process.stderr)
                ids = [parse(line)["id"] for line in process.stdout.splitlines()]
                self.assertGreaterEqual(len(ids), read.count(b"\n"), (program, size))
                self.assertEqual(ids, [str(index * 7919) for index in range(len(ids))])

    def test_a_file_with_a_changed_byte_is_an_error_unless_the_text_is_the_same(self):
        data = b"\n".join(EXAMPLE_LINES) + b"\n"
        for program in self.PROGRAMS:
            packed = compressed(program, data)
            for place in range(10, len(packed), len(packed) // 20):
                changed = packed[:place] + bytes([packed[place] ^ 0x55]) + packed[place + 1 :]
                process = run("events", data=changed)
                if process.stdout != b"\n".join(GOLDEN_LINES) + b"\n":
                    self.assertEqual(process.returncode, 2, (program, place))
                    self.assertIn(b"cannot read standard input: ", process.stderr)

    def test_an_interrupt_of_a_compressed_pipe_is_no_truncation(self):
        process = start("events")
        process.stdin.write(compressed("gzip", GOOD)[:-3])
        process.stdin.flush()
        # There is no output yet. By then the command catches signals, also on a busy machine.
        time.sleep(2)
        process.send_signal(signal.SIGTERM)
        process.wait(TIMEOUT)
        _, messages = process.communicate(timeout=TIMEOUT)
        self.assertEqual(process.returncode, 143)
        self.assertNotIn(b"truncated", messages)


class ForeignInputTest(CommandTest):
    def test_wrong_input_gives_one_error_and_status_2(self):
        text = b"\n".join(EXAMPLE_LINES)
        objects = [json.loads(line) for line in EXAMPLE_LINES[:5]]
        inputs = {
            b"UTF-16": text.decode().encode("utf-16"),
            b"UTF-16 ": text.decode().encode("utf-16-le"),
            b"UTF-16 or": text.decode().encode("utf-16-be"),
            b"a JSON array": json.dumps(objects).encode(),
            b"a JSON array;": json.dumps(objects, indent=2).encode(),
            b"JSON over several lines": json.dumps(objects[0], indent=2).encode(),
            b"CSV": b"id,product,price\n1,monthly,4.99\n",
            b"binary data": b"\x89\xe4\x1a" + b"\x00\x01\x02" * 100,
            b"an app receipt": b"MIITtgYJKoZIhvcNAQcCoIITpzCCE6MCAQExCzAJBgUrDgMCGgUAMIIDVwYJKoZIhvc",
        }
        for format_name, data in inputs.items():
            if data.startswith((b"{", b"\x1f\x8b")):
                self.assertIn(format_name.strip(), (b"JSON over several lines", b"UTF-16"))
            process = run("events", data=data)
            self.assertEqual((process.returncode, process.stdout), (2, b""), format_name)
            start_text = b"qel-purchase: cannot read standard input: it is " + format_name.strip()
            self.assertTrue(process.stderr.startswith(start_text), process.stderr)
            self.assertEqual(process.stderr.count(b"\n"), 2)

    def test_standard_input_is_read_once(self):
        process = run("events", "-", "-", data=GOOD)
        self.assertEqual((process.returncode, process.stdout), (2, b""))
        self.assertEqual(
            process.stderr,
            b"qel-purchase: standard input is given more than once, but it can be read once only\n",
        )

    def test_the_advice_works(self):
        with tempfile.TemporaryDirectory(prefix="qel-command-") as folder:
            name = os.path.join(folder, "array.json")
            with open(name, "wb") as file:
                file.write(b"[\n" + b",\n".join(EXAMPLE_LINES[:3]) + b"\n]\n")
            lines = subprocess.run(["jq", "-c", ".[]", name], stdout=subprocess.PIPE, check=True)
        process = run("events", data=lines.stdout)
        self.assertEqual(process.stdout.split(b"\n")[:-1], GOLDEN_LINES[:3])

    def test_a_part_of_an_input_is_read_line_by_line(self):
        process = run("events", "--first-line", "2", data=b'[{"id":"a"}]\n' + GOOD)
        error, good = self.results(process, 1)
        self.assertEqual(error["error"]["line"], 2)
        self.assertEqual(good, GOOD_RESULT)


class LimitTest(CommandTest):
    def test_a_line_over_the_limit_is_rejected_and_the_next_is_read(self):
        for size in (100, 300_000):
            fitting = b'{"id":"' + b"x" * (size - 9) + b'"}'
            lines = [GOOD, fitting, fitting + b" ", GOOD, fitting + b"x" * 1_000_000]
            data = b"\n".join(lines) + b"\n" + GOOD
            process = run("events", "--max-line", str(size), data=data)
            results = self.results(process, 1)
            self.assertEqual(["error" in result for result in results], [0, 0, 1, 0, 1, 0])
            self.assertEqual(
                results[4]["error"]["message"],
                "expected a line of at most {} bytes (--max-line), found a longer one".format(size),
            )
            self.assertEqual([results[index]["error"]["line"] for index in (2, 4)], [3, 5])

    def test_a_line_that_does_not_fit_into_memory_is_an_error_in_its_place(self):
        def limit_memory():
            resource.setrlimit(resource.RLIMIT_AS, (200_000_000, 200_000_000))

        if IS_SANITIZED:
            self.skipTest("sanitizers need much address space")
        long = b'{"id":"a","product":{"localizedTitle":"' + b"x" * 150_000_000 + b'"}}'
        process = run(
            "events", "--jobs", "1", data=GOOD + b"\n" + long + b"\n" + GOOD, preexec_fn=limit_memory
        )
        before, error, after = self.results(process, 1)
        self.assertEqual([before, after], [GOOD_RESULT, GOOD_RESULT])
        self.assertEqual(error["id"], "a")
        self.assertEqual(
            error["error"]["message"],
            "expected a line that fits into memory; --max-line rejects longer ones",
        )

    def test_lines_that_hardly_fit_into_memory_end_with_a_result_or_status_2(self):
        if IS_SANITIZED:
            self.skipTest("sanitizers need much address space")
        for megabytes in (5, 10, 15, 20, 25, 30, 40):

            def limit_memory():
                resource.setrlimit(resource.RLIMIT_AS, (200_000_000, 200_000_000))

            line = b'{"id":"a","product":{"localizedTitle":"' + b"x" * (megabytes * 1_000_000)
            process = run("events", "--jobs", "1", data=line + b'"}}\n' + GOOD, preexec_fn=limit_memory)
            self.assertIn(process.returncode, (0, 1, 2), megabytes)
            if process.returncode == 2:
                self.assertIn(b"not enough memory", process.stderr)
            else:
                self.assertEqual(len(process.stdout.splitlines()), 2)

    def test_without_memory_for_threads_there_is_a_result_or_an_error(self):
        if IS_SANITIZED:
            self.skipTest("sanitizers need much address space")
        statuses = set()
        for megabytes in range(14, 60, 2):

            def limit_memory():
                resource.setrlimit(resource.RLIMIT_AS, (megabytes << 20, megabytes << 20))

            # With less memory than this the program does not start: the system ends it with status
            # 127, or a shared library aborts before main.
            if run("--version", preexec_fn=limit_memory).returncode in (127, -signal.SIGABRT):
                continue
            for jobs in ("1", "2"):
                process = run("events", "--jobs", jobs, data=GOOD, preexec_fn=limit_memory)
                self.assertIn(process.returncode, (0, 1, 2), (megabytes, jobs, process.stderr))
                results = self.results(process)
                if process.returncode == 0:
                    self.assertEqual(results, [GOOD_RESULT])
                else:
                    self.assertNotEqual(process.stderr, b"")
                statuses.add(process.returncode)
        self.assertLessEqual({0, 2}, statuses)

    def test_too_many_rejected_lines_stop_the_run(self):
        lines = [GOOD if index % 3 else b"{" for index in range(30_000)]
        data = b"\n".join(lines) + b"\n"
        whole = run("events", data=data)
        for most in (0, 1, 2, 1000, 9_998):
            for jobs in ("1", "8"):
                process = run("events", "--jobs", jobs, "--max-rejected", str(most), data=data)
                self.assertEqual(process.returncode, 2)
                results = process.stdout.splitlines(keepends=True)
                # Up to the rejected line that is one too many.
                self.assertEqual(len(results), 3 * most + 1)
                self.assertTrue(whole.stdout.startswith(process.stdout))
                message = "qel-purchase: stopped: more than {} line{} rejected\n"
                self.assertTrue(
                    process.stderr.startswith(message.format(most, "" if most == 1 else "s").encode())
                )
                first = "line 1 of standard input, " + END_IN_OBJECT
                self.assertTrue(process.stderr.endswith(summary(2 * most, most + 1, first)))
        process = run("events", "--max-rejected", "10000", data=data)
        self.assertEqual((process.returncode, process.stdout), (1, whole.stdout))


class FindingTest(CommandTest):
    ENTRY = '{{"receipt":[{{}},{{"purchaseDateIA5String":{},"webOrderLineItemID":{}}}]}}\n'

    def messages(self, *entries):
        data = "".join(self.ENTRY.format(date, number) for date, number in entries).encode()
        process = run("events", data=GOOD + b"\n" + data)
        self.assertEqual(process.returncode, 0)
        self.assertTrue(process.stderr.endswith(summary(len(entries) + 1, 0)))
        return process.stderr.decode().splitlines()[:-1]

    def test_purchase_dates_that_cannot_be_read_are_counted(self):
        for date in ("2020-07-14 19:36:40 Etc/GMT", "2020-10-14T19:36:40.686Z", ""):
            messages = self.messages(('"2020-07-14T19:36:40Z"', 7), ('"{}"'.format(date), 8))
            self.assertEqual(
                messages,
                [
                    "qel-purchase: 1 receipt entry has a purchase date that cannot be read; "
                    "the first: line 3 of standard input, "
                    "/receipt/1/purchaseDateIA5String: found " + (date or '""')
                ],
            )
        self.assertEqual(self.messages(("null", 7)), [])

    def test_entries_with_the_line_item_0_are_counted(self):
        messages = self.messages(("null", 1), ("null", 0), ("null", "-0"), ("null", "null"))
        self.assertEqual(
            messages,
            [
                "qel-purchase: 2 receipt entries have webOrderLineItemID 0, which counts as a "
                "subscription's; the first: line 3 of standard input, "
                "/receipt/1/webOrderLineItemID"
            ],
        )

    def test_counts_do_not_depend_on_the_number_of_jobs(self):
        expected = run("events", "--jobs", "1", *[EXAMPLES] * 20).stderr
        self.assertIn(b"80 receipt entries have a purchase date", expected)
        self.assertEqual(run("events", "--jobs", "8", *[EXAMPLES] * 20).stderr, expected)

    def test_messages_cannot_control_the_terminal(self):
        messages = self.messages(('"\\u001b[31m\\n"', 1))
        self.assertTrue(messages[0].endswith(': found "?[31m?"'), messages)


class OutputTest(CommandTest):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="qel-command-")
        self.addCleanup(shutil.rmtree, self.folder)
        self.output = os.path.join(self.folder, "events.jsonl")

    def content(self):
        with open(self.output, "rb") as file:
            return file.read()

    def test_an_empty_name_is_an_error(self):
        for arguments in (["events", "-o", ""], ["explain", "--html", ""]):
            process = run(*arguments, data=GOOD)
            self.assertEqual((process.returncode, process.stdout), (2, b""))
            expected = b'expected a file to write to, or - for standard output, found ""\n'
            self.assertEqual(process.stderr, b"qel-purchase: " + expected)

    def test_a_file_gets_what_standard_output_would_get(self):
        process = run("events", "-o", self.output, EXAMPLES)
        self.assertEqual((process.returncode, process.stdout), (0, b""))
        self.assertEqual(self.content(), b"\n".join(GOLDEN_LINES) + b"\n")
        process = run("events", "--output", self.output, data=b"1")
        self.assertEqual(process.returncode, 1)
        self.assertEqual(parse(self.content())["error"]["line"], 1)
        self.assertEqual(os.listdir(self.folder), ["events.jsonl"])
        self.assertEqual(self.results(run("events", "-o", "-", data=GOOD), 0), [GOOD_RESULT])

    def test_a_failure_leaves_the_file_as_it_was(self):
        for arguments, data in (
            ((EXAMPLES, self.folder), b""),
            (("--max-rejected", "0"), GOOD + b"\n{"),
            (("-",), compressed("gzip", GOOD)[:-5]),
        ):
            for before in (None, b"before"):
                if before is not None:
                    with open(self.output, "wb") as file:
                        file.write(before)
                process = run("events", "-o", self.output, *arguments, data=data)
                self.assertEqual(process.returncode, 2)
                message = "qel-purchase: {} is not written\n".format(self.output).encode()
                self.assertIn(message, process.stderr)
                files = [] if before is None else ["events.jsonl"]
                self.assertEqual(os.listdir(self.folder), files)
                if before is not None:
                    self.assertEqual(self.content(), before)
                    os.remove(self.output)

    def test_a_disk_that_becomes_full_leaves_no_file(self):
        def limit_size():
            resource.setrlimit(resource.RLIMIT_FSIZE, (1000, 1000))

        process = run("events", "-o", self.output, EXAMPLES, preexec_fn=limit_size)
        self.assertEqual(process.returncode, 2)
        message = "cannot write {}: File too large\n".format(self.output).encode()
        self.assertIn(message, process.stderr)
        self.assertEqual(os.listdir(self.folder), [])

    def test_a_signal_leaves_no_file(self):
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            process = start("events", "-o", self.output)
            process.stdin.write(GOOD + b"\n")
            process.stdin.flush()
            time.sleep(0.2)
            process.send_signal(number)
            process.wait(TIMEOUT)
            _, messages = process.communicate(timeout=TIMEOUT)
            self.assertEqual(process.returncode, 128 + number)
            message = "qel-purchase: interrupted: {} is not written\n".format(self.output)
            self.assertIn(message.encode(), messages)
            self.assertEqual(os.listdir(self.folder), [])

    def test_an_output_that_is_an_input_is_refused(self):
        with open(self.output, "wb") as file:
            file.write(GOOD + b"\n")
        link = os.path.join(self.folder, "link")
        os.symlink("events.jsonl", link)
        message = b"it is the input "
        for arguments in (
            ("-o", self.output, self.output),
            ("-o", link, self.output),
            ("-o", self.output, EXAMPLES, link),
        ):
            process = run("events", *arguments)
            self.assertEqual((process.returncode, process.stdout), (2, b""))
            self.assertIn(message, process.stderr)
        with open(self.output, "rb") as file:
            process = run("events", "-o", self.output, stdin=file)
        self.assertIn(message + b"standard input", process.stderr)
        for mode in ("ab", "r+b"):
            with open(self.output, mode) as file:
                process = run("events", self.output, stdout=file)
            self.assertEqual(process.returncode, 2)
            self.assertIn(b"cannot write standard output: " + message, process.stderr)
        self.assertEqual(self.content(), GOOD + b"\n")
        self.assertEqual(run("events", "-o", "/dev/null", "/dev/null").returncode, 0)

    def test_a_run_killed_at_any_moment_leaves_the_file_absent_or_whole(self):
        name = self.write_file(b"\n".join(EXAMPLE_LINES * 20))
        expected = (b"\n".join(GOLDEN_LINES) + b"\n") * 20
        begin = time.monotonic()
        self.assertEqual(run("events", "-o", self.output, name).returncode, 0)
        whole_run = time.monotonic() - begin
        self.assertEqual(self.content(), expected)
        os.remove(self.output)
        moments = random.Random(7)
        present = 0
        for _ in range(100):
            process = start("events", "-o", self.output, name, stderr=subprocess.DEVNULL)
            time.sleep(moments.uniform(0, 1.2 * whole_run))
            process.kill()
            process.communicate(timeout=TIMEOUT)
            if os.path.exists(self.output):
                present += 1
                self.assertEqual(self.content(), expected)
                os.remove(self.output)
        # Some runs were killed before their end.
        self.assertLess(present, 100)


class SignalTest(CommandTest):
    def test_each_signal_ends_the_run_and_its_results_are_written(self):
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            process = start("events")
            process.stdin.write(GOOD + b"\n" + GOOD + b'\n{"id":')
            process.stdin.flush()
            for _ in range(2):
                self.assertEqual(parse(process.stdout.readline()), GOOD_RESULT)
            process.send_signal(number)
            process.wait(TIMEOUT)
            output, messages = process.communicate(timeout=TIMEOUT)
            self.assertEqual((process.returncode, output), (128 + number, b""))
            self.assertEqual(
                messages,
                b"qel-purchase: interrupted: 2 lines written; the next is line 3 of standard input\n"
                + summary(2, 0),
            )

    def test_a_second_signal_of_another_kind_ends_the_command_at_once(self):
        name = self.write_file(b"\n".join(EXAMPLE_LINES * 200))
        process = start("events", name, stdin=subprocess.DEVNULL)
        # Once there is output, the command catches signals.
        self.assertEqual(os.read(process.stdout.fileno(), 1), b"{")
        process.send_signal(signal.SIGTERM)
        time.sleep(0.2)
        self.assertIsNone(process.poll())
        process.send_signal(signal.SIGINT)
        self.assertEqual(process.wait(TIMEOUT), -signal.SIGINT)
        process.stdout.close()
        process.stderr.close()

    def test_the_run_goes_on_where_it_was_interrupted(self):
        lines = [GOOD if index % 5 else b"{" for index in range(200_000)]
        name = self.write_file(b"\n".join(lines))
        expected = run("events", name).stdout
        process = start("events", name, stdin=subprocess.DEVNULL)
        first = os.read(process.stdout.fileno(), 1)
        process.send_signal(signal.SIGTERM)
        output, messages = process.communicate(timeout=TIMEOUT)
        output = first + output
        self.assertEqual(process.returncode, 143)
        place = re.search(rb"the next is line (\d+) of ", messages).group(1).decode()
        rest = subprocess.run(["tail", "-n", "+" + place, name], stdout=subprocess.PIPE, check=True)
        process = run("events", "--first-line", place, data=rest.stdout)
        self.assertEqual(output + process.stdout, expected)


def help_of(*arguments):
    return run(*arguments, "--help").stdout.decode()


def subcommands():
    listed = help_of().partition("\nSubcommands:\n")[2].partition("\n\n")[0]
    return [line.split()[0] for line in listed.splitlines() if re.match(r"  \w", line)]


class ExampleTest(CommandTest):
    """Runs the examples of the help and of docs/command.md as they are written."""

    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="qel-command-")
        self.addCleanup(shutil.rmtree, self.folder)
        shutil.copytree(os.path.join(PROJECT, "examples"), os.path.join(self.folder, "examples"))
        for folder in (".zfunc", ".config/fish/completions"):
            os.makedirs(os.path.join(self.folder, folder))
        data = b"\n".join(EXAMPLE_LINES) + b"\n"
        self.write("purchases.jsonl", data)
        self.write("events.jsonl", b"")
        self.write("monday.jsonl.gz", compressed("gzip", data))
        self.write("tuesday.jsonl.zst", compressed("zstd", data))

    def write(self, name, data):
        with open(os.path.join(self.folder, name), "wb") as file:
            file.write(data)

    def shell(self, script):
        path = os.path.dirname(os.path.realpath(TOOL)) + ":/usr/bin:" + os.environ["PATH"]
        process = subprocess.run(
            ["bash", "-e", "-o", "pipefail", "-c", script],
            cwd=self.folder,
            env={**os.environ, "PATH": path, "HOME": self.folder},
            capture_output=True,
            timeout=TIMEOUT,
            check=False,
        )
        self.assertEqual(process.returncode, 0, (script, process.stderr))
        return process.stdout.decode()

    def test_every_example_of_the_help_runs(self):
        for name in subcommands():
            examples = help_of(name).partition("\nExamples:\n")[2].replace("\\\n", "")
            lines = [line.strip() for line in examples.splitlines() if line.startswith("  ")]
            self.assertGreater(len(lines), 0, name)
            for line in lines:
                with self.subTest(line):
                    self.shell(line)

    def test_every_example_of_the_document_runs(self):
        with open(os.path.join(PROJECT, "docs", "command.md"), encoding="utf-8") as file:
            document = file.read()
        commands = re.findall(r"^    ((?:qel-purchase|tail|source) .*[^\]\n])$", document, re.MULTILINE)
        commands = [command for command in commands if "OPTIONS" not in command]
        self.assertGreaterEqual(len(commands), 4)
        for command in commands:
            with self.subTest(command):
                self.shell(command)

    def test_the_recipes_of_the_document_give_exact_identifiers(self):
        with open(os.path.join(PROJECT, "docs", "command.md"), encoding="utf-8") as file:
            recipes = re.findall(r"^```sh\n(.*?)^```$", file.read(), re.MULTILINE | re.DOTALL)
        events = [parse(line)["event"] for line in GOLDEN_LINES]
        exact = [event["_did"] for event in events if event and "_did" in event]
        programs = ["jq", "node", "python3", "sqlite3"]
        self.assertEqual(len(recipes), len(programs))
        for program, recipe in zip(programs, recipes):
            self.assertIn(program, recipe)
            with self.subTest(program):
                identifiers = [line.split("\t")[0] for line in self.shell(recipe).splitlines()]
                # jq writes a line for an event without an identifier, too.
                self.assertEqual([int(text) for text in identifiers if text], exact)


class ManPageTest(CommandTest):
    def test_the_pages_are_those_of_the_help(self):
        with tempfile.TemporaryDirectory(prefix="qel-command-") as folder:
            subprocess.run(
                [os.path.join(PROJECT, "script", "man"), TOOL, folder], check=True, timeout=TIMEOUT
            )
            pages = os.path.join(PROJECT, "docs", "man")
            names = sorted(os.listdir(folder))
            expected = ["qel-purchase.1"] + ["qel-purchase-" + n + ".1" for n in subcommands()]
            self.assertEqual(names, sorted(expected))
            self.assertEqual(sorted(os.listdir(pages)), names, "run script/man")
            for name in names:
                self.assertEqual(
                    lines_of(os.path.join(folder, name)),
                    lines_of(os.path.join(pages, name)),
                    "run script/man",
                )


class ReceiptLeftOutTest(CommandTest):
    """For a build without the subcommand `receipt`."""

    def test_receipt_says_that_it_was_left_out(self):
        for arguments in ([], ["--purchases", "a.der"], ["--", "-a"]):
            process = run("receipt", *arguments)
            self.assertEqual((process.returncode, process.stdout), (2, b""))
            self.assertTrue(
                process.stderr.startswith(b"qel-purchase: receipt was left out of this build: "),
                process.stderr,
            )
            self.assertEqual(process.stderr.count(b"\n"), 1)

    def test_the_help_says_so_too(self):
        process = run("receipt", "--help")
        self.assertEqual((process.returncode, process.stderr), (0, b""))
        self.assertIn(b"receipt was left out of this build", process.stdout)
        self.assertIn(b"left out of this build", run("--help").stdout)
        self.assertEqual(run("events", data=GOOD).returncode, 0)


class CompletionTest(CommandTest):
    def script(self, shell):
        process = run("completion", shell)
        self.assertEqual((process.returncode, process.stderr), (0, b""))
        return process.stdout.decode()

    def run_shell(self, *words):
        process = subprocess.run(words, capture_output=True, timeout=TIMEOUT, check=False)
        self.assertEqual((process.returncode, process.stderr), (0, b""))
        return process.stdout.decode()

    # A command line, and words that complete it. The last word is being completed.
    CASES = [
        (["qel-purchase", ""], {"events", "explain", "code", "completion", "--help", "--version"}),
        (["qel-purchase", "ev"], {"events"}),
        (["qel-purchase", "explain", "--ht"], {"--html"}),
        (["qel-purchase", "events", "--max"], {"--max-line", "--max-rejected"}),
        (["qel-purchase", "events", "--jobs", "2", "--qui"], {"--quiet"}),
        (["qel-purchase", "events", "--unpaired-surrogates", ""], {"escape", "replace"}),
        (["qel-purchase", "completion", ""], {"bash", "zsh", "fish"}),
    ]

    def test_bash_completes(self):
        for words, expected in self.CASES:
            quoted = " ".join("'{}'".format(word) for word in words)
            script = self.script("bash") + (
                "COMP_WORDS=({})\nCOMP_CWORD={}\n_qel_purchase\n"
                'printf "%s\\n" "${{COMPREPLY[@]}}"\n'
            ).format(quoted, len(words) - 1)
            found = set(self.run_shell("bash", "-c", script).split())
            self.assertLessEqual(expected, found, words)
            self.assertTrue(all(word.startswith(words[-1]) for word in found), found)

    def test_fish_completes(self):
        for words, expected in self.CASES:
            script = self.script("fish") + "complete -C '{}'\n".format(" ".join(words))
            output = self.run_shell("fish", "--no-config", "-c", script)
            found = {line.split("\t")[0] for line in output.splitlines()}
            # fish proposes options only after a hyphen.
            expected = {word for word in expected if words[-1] or not word.startswith("-")}
            self.assertLessEqual(expected, found, words)

    def test_zsh_completes(self):
        folder = tempfile.mkdtemp(prefix="qel-command-")
        self.addCleanup(shutil.rmtree, folder)
        name = os.path.join(folder, "_qel-purchase")
        with open(name, "w", encoding="utf-8") as file:
            file.write(self.script("zsh"))
        for setup in ("compinit -D -u && source " + name, "fpath+=({}) && compinit -D -u".format(folder)):
            self.check_zsh(folder, "autoload -U compinit && " + setup)

    def check_zsh(self, folder, setup):
        terminal = self.start_zsh(folder)
        self.type(terminal, setup)
        for words, expected in self.CASES:
            with self.subTest(words, setup=setup):
                # zsh proposes options only after a hyphen.
                expected = {word for word in expected if words[-1] or not word.startswith("-")}
                # The first tab inserts what is certain, the second lists the choices.
                os.write(terminal, " ".join(words).encode() + b"\t\t")
                self.wait_for(terminal, expected)
                # Ctrl-C gives up the line.
                self.type(terminal, "\x03")

    def start_zsh(self, folder):
        """An interactive zsh. Returns the descriptor of its terminal."""
        terminal, end = pty.openpty()
        self.addCleanup(os.close, terminal)
        fcntl.ioctl(end, termios.TIOCSWINSZ, struct.pack("4H", 50, 120, 0, 0))
        process = subprocess.Popen(
            ["zsh", "-f", "-i"],
            stdin=end,
            stdout=end,
            stderr=end,
            start_new_session=True,
            cwd=folder,
            env={**os.environ, "TERM": "xterm"},
        )
        os.close(end)
        self.addCleanup(process.wait, TIMEOUT)
        self.addCleanup(process.kill)
        return terminal

    def type(self, terminal, line):
        """Types a line, and waits until it has run."""
        os.write(terminal, line.encode() + b"\necho has-'run'\n")
        self.wait_for(terminal, {"has-run\r\n"})

    def wait_for(self, terminal, words):
        shown = b""
        text = ""
        while not all(word in text for word in words):
            ready, _, _ = select.select([terminal], [], [], TIMEOUT)
            self.assertTrue(ready, (words, text))
            shown += os.read(terminal, 65536)
            # Without the sequences that move the cursor, and without the bell.
            text = re.sub(rb"\x1b\[[0-9;?]*[A-Za-z]|\x07", b"", shown).decode("utf-8", "replace")


class StreamTest(CommandTest):
    def start(self, *arguments, **options):
        process = start("events", *arguments, **options)
        self.addCleanup(self.stop, process)
        return process

    def stop(self, process):
        process.kill()
        process.wait(TIMEOUT)
        for end in (process.stdin, process.stdout, process.stderr):
            if end is not None:
                end.close()

    def test_each_line_comes_out_before_the_next_goes_in(self):
        for jobs in ("1", "2", "8"):
            process = self.start("--jobs", jobs)
            for line, golden in zip(EXAMPLE_LINES[:10], GOLDEN_LINES):
                process.stdin.write(line + b"\n")
                process.stdin.flush()
                self.assertEqual(self.line(process), golden + b"\n")
            process.stdin.close()
            self.assertEqual(process.wait(TIMEOUT), 0)

    def line(self, process):
        """The next line of output, which must come within a while."""
        ready, _, _ = select.select([process.stdout], [], [], TIMEOUT)
        self.assertTrue(ready, "no line came out")
        return os.read(process.stdout.fileno(), 65536)

    def test_a_line_that_arrives_in_pieces_is_read_as_one(self):
        process = self.start()
        for index in range(0, len(EXAMPLE_LINES[0]), 100):
            process.stdin.write(EXAMPLE_LINES[0][index : index + 100])
            process.stdin.flush()
            time.sleep(0.01)
        output, messages = process.communicate(b"\n", TIMEOUT)
        self.assertEqual((output, messages), (GOLDEN_LINES[0] + b"\n", summary(1, 0)))

    def test_a_slow_reader_holds_the_command_back_and_loses_nothing(self):
        data = b"\n".join(EXAMPLE_LINES * 60)
        process = self.start(self.write_file(data), stdin=subprocess.DEVNULL)
        time.sleep(0.3)
        self.assertIsNone(process.poll())
        output, _ = process.communicate(timeout=TIMEOUT)
        self.assertEqual(output, (b"\n".join(GOLDEN_LINES) + b"\n") * 60)

    def test_a_slow_reader_of_a_pipe_that_does_not_block_loses_nothing(self):
        data = b"\n".join(EXAMPLE_LINES * 60)
        reading_end, writing_end = os.pipe()
        os.set_blocking(writing_end, False)
        process = self.start(self.write_file(data), stdin=subprocess.DEVNULL, stdout=writing_end)
        os.close(writing_end)
        time.sleep(0.3)
        self.assertIsNone(process.poll())
        with open(reading_end, "rb") as pipe:
            self.assertEqual(pipe.read(), (b"\n".join(GOLDEN_LINES) + b"\n") * 60)
        self.assertEqual(process.wait(TIMEOUT), 0)

    def test_a_slow_writer_of_a_pipe_that_does_not_block_loses_nothing(self):
        reading_end, writing_end = os.pipe()
        os.set_blocking(reading_end, False)
        process = self.start(stdin=reading_end)
        os.close(reading_end)
        with open(writing_end, "wb", buffering=0) as pipe:
            for piece in (EXAMPLE_LINES[0][:100], EXAMPLE_LINES[0][100:], b"\n"):
                time.sleep(0.1)
                pipe.write(piece)
        output, messages = process.communicate(timeout=TIMEOUT)
        self.assertEqual((output, messages), (GOLDEN_LINES[0] + b"\n", summary(1, 0)))

    def test_an_interrupt_that_is_ignored_at_the_start_stays_so(self):
        process = self.start(
            preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_IGN),
        )
        process.stdin.write(GOOD + b"\n")
        process.stdin.flush()
        self.line(process)
        process.send_signal(signal.SIGINT)
        output, messages = process.communicate(GOOD, TIMEOUT)
        self.assertEqual((process.returncode, messages), (0, summary(2, 0)))
        self.assertEqual([parse(line) for line in output.splitlines()], [GOOD_RESULT])

    def test_the_first_interrupt_ends_the_wait_for_input(self):
        for jobs in ("1", "2"):
            process = self.start("--jobs", jobs)
            process.stdin.write((GOOD + b"\n") * 3 + b'{"id":"begun')
            process.stdin.flush()
            output = b""
            while output.count(b"\n") < 3:
                output += self.line(process)
            process.send_signal(signal.SIGINT)
            self.assertEqual(process.wait(TIMEOUT), 130)
            self.assertEqual(process.stdout.read(), b"")
            self.assertEqual([parse(line) for line in output.splitlines()], [GOOD_RESULT] * 3)
            self.assertEqual(
                process.stderr.read(),
                b"qel-purchase: interrupted: 3 lines written; the next is line 4 of standard input\n"
                + summary(3, 0),
            )

    def test_the_first_interrupt_writes_what_was_read_and_counts_it(self):
        for jobs in ("1", "2"):
            name = self.write_file(b"\n".join(EXAMPLE_LINES * 1000))
            process = self.start("--jobs", jobs, name, stdin=subprocess.DEVNULL)
            # The pipe is full and the command waits in the middle.
            time.sleep(0.3)
            self.assertIsNone(process.poll())
            process.send_signal(signal.SIGINT)
            output, messages = process.communicate(timeout=TIMEOUT)
            self.assertEqual(process.returncode, 130)
            self.assertTrue(output.endswith(b"\n"))
            count = output.count(b"\n")
            self.assertLess(0, count)
            self.assertLess(count, 1000 * len(EXAMPLE_LINES))
            expected = (b"\n".join(GOLDEN_LINES) + b"\n") * 1000
            self.assertEqual(output, expected[: len(output)])
            written = "qel-purchase: interrupted: {} lines written; the next is line {} of {}\n"
            self.assertTrue(messages.startswith(written.format(count, count + 1, name).encode()))
            self.assertTrue(messages.endswith(summary(count, 0)))

    def test_the_second_interrupt_ends_the_command_at_once(self):
        name = self.write_file(b"\n".join(EXAMPLE_LINES * 200))
        process = self.start(name, stdin=subprocess.DEVNULL)
        time.sleep(0.3)
        process.send_signal(signal.SIGINT)
        time.sleep(0.2)
        self.assertIsNone(process.poll())
        process.send_signal(signal.SIGINT)
        self.assertEqual(process.wait(TIMEOUT), -signal.SIGINT)


class ProgressTest(CommandTest):
    ERASED = b"\r\x1b[K"

    def run_on_terminal(self, *arguments, columns=80, env=None):
        """Runs on a file, slowly, with standard error on a terminal; gives all that came there."""
        name = self.write_file(b"\n".join(EXAMPLE_LINES * 40))
        terminal, end = pty.openpty()
        fcntl.ioctl(end, termios.TIOCSWINSZ, struct.pack("4H", 24, columns, 0, 0))
        env = {"TERM": "xterm"} if env is None else env
        process = start("events", *arguments, name, stdin=subprocess.DEVNULL, stderr=end, env=env)
        os.close(end)
        # The output waits here, so that there is time for progress to be shown.
        output = b""
        while piece := process.stdout.read(400_000):
            output += piece
            time.sleep(0.3)
        shown = read_for(5, terminal)
        self.assertEqual(process.wait(TIMEOUT), 0)
        process.stdout.close()
        os.close(terminal)
        self.assertEqual(output.count(b"\n"), 40 * len(EXAMPLE_LINES))
        return shown.replace(b"\r\n", b"\n")

    def test_progress_is_shown_on_a_terminal_and_erased(self):
        shown = self.run_on_terminal()
        end = summary(40 * len(EXAMPLE_LINES), 0)
        self.assertTrue(shown.endswith(end), shown)
        # Each state takes the place of the one before, the messages that of the last.
        *states, messages = shown.split(self.ERASED)
        self.assertTrue(messages.startswith(b"qel-purchase: "), messages)
        self.assertEqual(states[0], b"")
        self.assertGreaterEqual(len(states), 2)
        for state in states[1:]:
            self.assertRegex(
                state,
                rb"\A\d+\.\d [kM]?B of \d\.\d MB, \d+ lines/s, (\d+ min )?\d+ s left\Z",
            )

    def test_no_progress_is_shown_when_quiet(self):
        shown = self.run_on_terminal("--quiet")
        self.assertTrue(shown.startswith(b"qel-purchase: "), shown)
        self.assertTrue(shown.endswith(summary(40 * len(EXAMPLE_LINES), 0)), shown)
        self.assertNotIn(b"\r", shown)

    def test_no_progress_is_shown_on_a_dumb_terminal(self):
        for terminal in ({"TERM": "dumb"}, {}):
            shown = self.run_on_terminal(env=terminal)
            self.assertTrue(shown.startswith(b"qel-purchase: "), shown)
            self.assertNotIn(b"\r", shown)

    def test_progress_fits_the_terminal(self):
        shown = self.run_on_terminal(columns=20)
        states = shown.split(self.ERASED)[1:-1]
        self.assertGreaterEqual(len(states), 2)
        for state in states:
            self.assertRegex(state, rb"\A\d+\.\d [kM]?B of \d\.\d MB\Z")
            self.assertLess(len(state), 20)

    def test_progress_of_a_pipe_has_no_total(self):
        terminal, end = pty.openpty()
        process = start(
            "events", stderr=end, stdout=subprocess.DEVNULL, env={"TERM": "xterm"}
        )
        os.close(end)
        shown = b""
        # The first line of progress can take long on a busy machine.
        for _ in range(100):
            process.stdin.write(GOOD + b"\n")
            process.stdin.flush()
            shown += read_for(0.3, terminal)
            if shown:
                break
        process.stdin.close()
        shown += read_for(5, terminal)
        self.assertEqual(process.wait(TIMEOUT), 0)
        os.close(terminal)
        self.assertRegex(shown, rb"\A(\r\x1b\[K\d+\.\d B, \d+ lines/s)+\r\x1b\[Kqel-purchase: ")

    def test_no_progress_is_shown_elsewhere(self):
        process = start("events", stdout=subprocess.DEVNULL)
        for _ in range(2):
            process.stdin.write(GOOD + b"\n")
            process.stdin.flush()
            time.sleep(0.3)
        _, messages = process.communicate(timeout=TIMEOUT)
        self.assertEqual(messages, summary(2, 0))


class MemoryTest(CommandTest):
    MOST = 256 * 1024 * 1024

    def peak(self, megabytes, *arguments):
        """The greatest memory, in bytes, of a run over so much input."""
        chunk = b"\n".join(EXAMPLE_LINES * 20) + b"\n"
        process = start("events", *arguments, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        for _ in range(megabytes * 1_000_000 // len(chunk)):
            process.stdin.write(chunk)
        process.stdin.flush()
        # The usage of an ended child includes the memory of this process before exec, so the peak
        # is read while the command runs.
        with open("/proc/{}/status".format(process.pid), encoding="ascii") as status:
            peak = next(line for line in status if line.startswith("VmHWM:"))
        process.stdin.close()
        self.assertEqual(process.wait(TIMEOUT), 0)
        return int(peak.split()[1]) * 1024

    @unittest.skipIf(IS_SANITIZED, "sanitizers multiply memory")
    def test_memory_does_not_grow_with_the_input(self):
        small = self.peak(20, "--jobs", "8")
        large = self.peak(200, "--jobs", "8")
        self.assertLess(large, self.MOST)
        self.assertLess(large, small + 16 * 1024 * 1024)


if __name__ == "__main__":
    unittest.main()
