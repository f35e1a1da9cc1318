#!/usr/bin/env python3
"""Writes the example purchases and what each must give as C++, for examples_test.mm.

Usage: make_examples.py EXAMPLES GOLDEN OUTPUT

EXAMPLES holds one purchase for each line, GOLDEN the event and the diagnostics that it must give.
"""

import json
import sys
from datetime import datetime, timezone


def text(value):
    """A std::string of any text, an unpaired surrogate as the three bytes of its code point."""
    data = value.encode("utf-8", "surrogatepass")
    escapes = "".join("\\{:03o}".format(byte) for byte in data)
    return 'std::string("{}", {})'.format(escapes, len(data))


def integer(value):
    # The least integer has no literal: what stands after a minus sign must fit by itself.
    return "std::numeric_limits<std::int64_t>::min()" if value == -(2**63) else str(value)


def boolean(value):
    return "true" if value else "false"


def digits(value):
    return text(str(value))


def fields(values):
    """An initializer of those fields that have a value."""
    present = [".{} = {}".format(name, value) for name, value in values if value is not None]
    return "{" + ", ".join(present) + "}"


def optional(write, value):
    return None if value is None else write(value)


def discount(record):
    return "DiscountValues" + fields(
        [
            ("price", optional(lambda price: text(str(price)), record.get("price"))),
            ("paymentMode", "{}u".format(record.get("paymentMode") or 0)),
        ]
    )


def product(record):
    locale = record.get("priceLocale")
    return "ProductValues" + fields(
        [
            ("identifier", optional(text, record.get("productIdentifier"))),
            ("price", optional(lambda price: text(str(price)), record.get("price"))),
            ("hasLocale", boolean(locale is not None)),
            ("currencyCode", optional(text, (locale or {}).get("currencyCode"))),
            ("title", optional(text, record.get("localizedTitle"))),
            ("answersIntroductoryPrice", boolean("introductoryPrice" in record)),
            ("introductoryPrice", optional(discount, record.get("introductoryPrice"))),
        ]
    )


def instant(written):
    date = datetime.fromisoformat(written.replace("Z", "+00:00")).astimezone(timezone.utc)
    seconds = int(date.replace(microsecond=0).timestamp())
    return "Instant{{{}, {}}}".format(seconds, date.microsecond * 1000)


def transaction(record):
    original = record.get("originalTransaction")
    payment = record.get("payment")
    return "TransactionValues" + fields(
        [
            ("identifier", optional(text, record.get("transactionIdentifier"))),
            ("hasOriginal", boolean(original is not None)),
            ("originalIdentifier", optional(text, (original or {}).get("transactionIdentifier"))),
            ("date", optional(instant, record.get("transactionDate"))),
            ("quantity", optional(lambda payment: integer(payment.get("quantity") or 0), payment)),
        ]
    )


def entry(record):
    """Statements that fill `item`, an entry of the receipt."""
    values = [
        ("productID", optional(text, record.get("productID"))),
        ("purchaseDateIA5String", optional(text, record.get("purchaseDateIA5String"))),
        ("purchaseType", optional(integer, record.get("purchaseType"))),
        ("webOrderLineItemID", optional(digits, record.get("webOrderLineItemID"))),
        ("transactionID", optional(text, record.get("transactionID"))),
        ("originalTransactionID", optional(text, record.get("originalTransactionID"))),
        ("isFreeTrial", optional(boolean, record.get("isFreeTrial"))),
        ("isIntroductoryOffer", optional(boolean, record.get("isIntroductoryOffer"))),
    ]
    present = [pair for pair in values if pair[1] is not None]
    return "".join("    item.{} = {};\n".format(name, value) for name, value in present)


def discount_class(platform):
    """What the platform provides for introductory offers; all of it unless said otherwise."""
    operations = (platform or {}).get("SKProductDiscount", {})
    return "{{{}, {}, {}}}".format(
        boolean(operations is not None),
        boolean((operations or {}).get("price", True)),
        boolean((operations or {}).get("paymentMode", True)),
    )


def value(content):
    if isinstance(content, str):
        return "Outcome::Value({})".format(text(content))
    return "Outcome::Value(std::int64_t{{{}}})".format(integer(content))


def context(content):
    if isinstance(content, str):
        return "Diagnostic::Context({})".format(text(content))
    return "Diagnostic::Context(std::uint64_t{{{}}})".format(content)


def diagnostic(record):
    contexts = ", ".join(context(content) for content in record["context"])
    message = text(record["message"])
    return "{{{level}, {code}, {}, {{{}}}}}".format(message, contexts, **record)


def example(number, purchase, golden):
    """A function that gives one example."""
    lines = "Example example{}() {{\n  Example example;\n".format(number)
    lines += "  example.name = {};\n".format(text(purchase["id"]))
    lines += "  example.discountClass = {};\n".format(discount_class(purchase.get("platform")))
    for part, write in [("product", product), ("transaction", transaction)]:
        if purchase.get(part) is not None:
            lines += "  example.purchase.{} = {};\n".format(part, write(purchase[part]))
    for record in purchase.get("receipt") or []:
        lines += "  {\n    QELInAppPurchaseItem& item = example.purchase.receipt.emplace_back();\n"
        lines += entry(record) + "  }\n"
    if golden["event"] is not None:
        lines += "  example.event.emplace();\n"
        for key, content in golden["event"].items():
            lines += "  example.event->emplace({}, {});\n".format(text(key), value(content))
    for record in golden["diagnostics"]:
        lines += "  example.diagnostics.push_back({});\n".format(diagnostic(record))
    return lines + "  return example;\n}\n\n"


def main():
    examples, golden, output = sys.argv[1:]
    with open(examples, encoding="utf-8") as file:
        # Prices stay as they are written.
        purchases = [json.loads(line, parse_float=str) for line in file if line.strip()]
    with open(golden, encoding="utf-8") as file:
        results = [json.loads(line) for line in file]
    assert len(purchases) == len(results)
    with open(output, "w", encoding="utf-8") as file:
        file.write('#include "examples.h"\n\n#include <limits>\n\n')
        file.write("namespace qel::testing {\nnamespace {\n\n")
        for number, (purchase, result) in enumerate(zip(purchases, results)):
            assert purchase["id"] == result["id"]
            file.write(example(number, purchase, result))
        calls = ", ".join("example{}()".format(number) for number in range(len(purchases)))
        file.write("}  // namespace\n\n")
        file.write("std::vector<Example> examplePurchases() {\n  return {" + calls + "};\n}\n\n")
        file.write("}  // namespace qel::testing\n")


if __name__ == "__main__":
    main()
