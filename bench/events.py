#!/usr/bin/env python3
"""Computes the events of subscriptions as a Python programmer would, for comparison with the command.

Usage: events.py FILE

FILE has purchases of make_purchases.py: subscriptions whose dates are all readable, without
introductory prices. Writes what `qel-purchase events` writes.
"""

import datetime
import decimal
import hashlib
import json
import sys

MICROS = 1_000_000


def instant(text):
    return datetime.datetime.fromisoformat(text)


def dedupe_id(entry):
    text = "{originalTransactionID}{webOrderLineItemID}{productID}".format(**entry)
    return int.from_bytes(hashlib.md5(text.encode()).digest()[8:], "big", signed=True)


def message(code, text, *context):
    return {"level": 8, "code": code, "message": text, "context": list(context)}


def event_of(purchase):
    """Returns the event and the diagnostics of a purchase."""
    product, transaction = purchase["product"], purchase["transaction"]
    price = decimal.Decimal(product["price"])
    quantity = transaction["payment"]["quantity"]
    event = {
        "currency": product["priceLocale"]["currencyCode"],
        "price": int(price * MICROS),
        "product_id": product["productIdentifier"],
        "product_name": product["localizedTitle"],
        "quantity": quantity,
        "value": int(price * quantity * MICROS),
    }
    entries = [e for e in purchase["receipt"] if e["productID"] == event["product_id"]]
    entries.sort(key=lambda entry: instant(entry["purchaseDateIA5String"]))
    date = instant(transaction["transactionDate"])
    matched = [e for e in entries if instant(e["purchaseDateIA5String"]) == date]
    if len(matched) != 1:
        raise ValueError("expected one entry at the transaction's date: " + purchase["id"])
    entry = matched[0]
    event["_did"] = dedupe_id(entry)
    if entry["originalTransactionID"] == entry["transactionID"]:
        raise ValueError("expected a later purchase of a subscription: " + purchase["id"])
    position = entries.index(entry)
    follows_trial = position > 0 and entries[position - 1]["isFreeTrial"]
    event["sub_convert" if follows_trial else "sub_renew"] = 1
    text = "Transaction of auto-renewable subscription will be reported"
    return dict(sorted(event.items())), [message(40008, text)]


def main():
    with open(sys.argv[1], encoding="utf-8") as lines:
        for line in lines:
            purchase = json.loads(line)
            event, diagnostics = event_of(purchase)
            result = {"id": purchase["id"], "event": event, "diagnostics": diagnostics}
            sys.stdout.write(json.dumps(result, ensure_ascii=False, separators=(",", ":")) + "\n")


if __name__ == "__main__":
    main()
