#!/usr/bin/env python3
"""Writes a file of purchases for benchmarks: subscriptions with two receipt entries each.

Usage: make_purchases.py FILE [COUNT]

COUNT is the number of lines, 250000 by default. A line has about 790 bytes. The same count gives the
same file.
"""

import datetime
import json
import random
import sys

PRODUCTS = [
    ("app.monthly", "Monthly", "4.99"),
    ("app.yearly", "Yearly", "39.99"),
    ("app.weekly", "Weekly", "1.49"),
]
CURRENCIES = ["EUR", "GBP", "JPY", "USD"]
FIRST_DATE = datetime.datetime(2019, 1, 1)
SECONDS_OF_A_YEAR = 365 * 24 * 3600


def written(seconds):
    """Returns the date `seconds` after FIRST_DATE as an RFC 3339 timestamp."""
    return (FIRST_DATE + datetime.timedelta(seconds=seconds)).strftime("%Y-%m-%dT%H:%M:%SZ")


def entry(product, date, number, original, is_trial):
    return {
        "productID": product,
        "purchaseDateIA5String": date,
        "purchaseType": 3,
        "webOrderLineItemID": number - 40_000_000,
        "transactionID": str(number),
        "originalTransactionID": str(original),
        "isFreeTrial": is_trial,
        "isIntroductoryOffer": False,
    }


def purchase(index, choices):
    """Returns the second purchase of a subscription. About every other one follows a free trial."""
    product, title, price = choices.choice(PRODUCTS)
    original = 52_000_000 + choices.randrange(40_000_000)
    number = original + 1 + choices.randrange(1_000_000)
    first = choices.randrange(SECONDS_OF_A_YEAR)
    second = written(first + 86400 + choices.randrange(SECONDS_OF_A_YEAR))
    return {
        "id": "p{:06}".format(index),
        "product": {
            "productIdentifier": product,
            "price": price,
            "priceLocale": {"currencyCode": choices.choice(CURRENCIES)},
            "localizedTitle": title,
        },
        "transaction": {
            "transactionIdentifier": str(number),
            "originalTransaction": {"transactionIdentifier": str(original)},
            "transactionDate": second,
            "payment": {"quantity": 1},
        },
        "receipt": [
            entry(product, written(first), original, original, choices.random() < 0.5),
            entry(product, second, number, original, False),
        ],
    }


def main():
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__)
    count = int(sys.argv[2]) if len(sys.argv) == 3 else 250_000
    choices = random.Random(count)
    with open(sys.argv[1], "w", encoding="ascii") as file:
        for index in range(count):
            line = json.dumps(purchase(index, choices), separators=(",", ":"))
            file.write(line + "\n")


if __name__ == "__main__":
    main()
