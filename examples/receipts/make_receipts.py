#!/usr/bin/env python3
"""Makes the example receipts of this folder. Needs the command openssl.

Usage: make_receipts.py FOLDER

Each run makes new keys, so signatures differ from run to run. Private keys are not kept.
"""

import base64
import json
import os
import subprocess
import sys
import tempfile

# Attribute types of a receipt and of its entries.
ENVIRONMENT = 0
BUNDLE_IDENTIFIER = 2
APP_VERSION = 3
CREATION_DATE = 12
ENTRY = 17
ORIGINAL_APP_VERSION = 19
EXPIRATION_DATE = 21
QUANTITY = 1701
PRODUCT_IDENTIFIER = 1702
TRANSACTION_IDENTIFIER = 1703
PURCHASE_DATE = 1704
ORIGINAL_TRANSACTION_IDENTIFIER = 1705
ORIGINAL_PURCHASE_DATE = 1706
PURCHASE_TYPE = 1707
SUBSCRIPTION_EXPIRATION_DATE = 1708
WEB_ORDER_LINE_ITEM_IDENTIFIER = 1711
CANCELLATION_DATE = 1712
TRIAL_PERIOD = 1713
INTRODUCTORY_PRICE_PERIOD = 1719

INTEGERS = {
    QUANTITY,
    PURCHASE_TYPE,
    WEB_ORDER_LINE_ITEM_IDENTIFIER,
    TRIAL_PERIOD,
    INTRODUCTORY_PRICE_PERIOD,
}
DATES = {
    CREATION_DATE,
    EXPIRATION_DATE,
    PURCHASE_DATE,
    ORIGINAL_PURCHASE_DATE,
    SUBSCRIPTION_EXPIRATION_DATE,
    CANCELLATION_DATE,
}


def element(tag, content):
    """Encodes an element of ASN.1 in DER."""
    size = len(content)
    if size < 0x80:
        return bytes([tag, size]) + content
    digits = size.to_bytes((size.bit_length() + 7) // 8, "big")
    return bytes([tag, 0x80 | len(digits)]) + digits + content


def integer(value):
    return element(0x02, value.to_bytes(value.bit_length() // 8 + 1, "big", signed=True))


def utf8_string(text):
    return element(0x0C, text.encode())


def ia5_string(text):
    return element(0x16, text.encode())


def octet_string(octets):
    return element(0x04, octets)


def attribute(kind, value):
    return element(0x30, integer(kind) + integer(1) + octet_string(value))


def attribute_set(values):
    """Encodes a list of (type, value). A value in bytes is used as it is."""
    encoded = b""
    for kind, value in values:
        if isinstance(value, bytes):
            encoded += attribute(kind, value)
        elif kind in INTEGERS:
            encoded += attribute(kind, integer(value))
        elif kind in DATES:
            encoded += attribute(kind, ia5_string(value))
        else:
            encoded += attribute(kind, utf8_string(value))
    return element(0x31, encoded)


def receipt(values, entries):
    """Encodes the content of a receipt."""
    return attribute_set(values + [(ENTRY, attribute_set(entry)) for entry in entries])


def openssl(*arguments, data=b""):
    return subprocess.run(
        ["openssl", *arguments], input=data, stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=True
    ).stdout


CA_CONFIGURATION = """
[ca]
default_ca = default
[default]
database = {folder}/index.txt
new_certs_dir = {folder}
rand_serial = yes
policy = policy
default_md = sha256
x509_extensions = leaf
unique_subject = no
[policy]
commonName = supplied
[root]
basicConstraints = critical, CA:true
keyUsage = critical, keyCertSign
[leaf]
basicConstraints = critical, CA:false
keyUsage = critical, digitalSignature
"""


class Signer:
    """A certificate authority and a certificate that it issued, valid from 2023 to 2025."""

    def __init__(self, folder):
        self.folder = folder
        with open(self.path("ca.cnf"), "w", encoding="ascii") as file:
            file.write(CA_CONFIGURATION.format(folder=folder))
        with open(self.path("index.txt"), "w", encoding="ascii"):
            pass
        self.make_request("root", "Example Root CA")
        self.make_request("leaf", "Example Receipt Signing")
        self.issue("root", "20200101000000Z", "20400101000000Z", "-selfsign", "-extensions", "root")
        self.issue("leaf", "20230101000000Z", "20250101000000Z", "-cert", self.path("root.pem"))

    def path(self, name):
        return os.path.join(self.folder, name)

    def make_request(self, name, subject):
        openssl("req", "-new", "-newkey", "rsa:2048", "-nodes", "-subj", "/CN=" + subject,
                "-keyout", self.path(name + ".key"), "-out", self.path(name + ".csr"))

    def issue(self, name, start, end, *options):
        openssl("ca", "-batch", "-notext", "-config", self.path("ca.cnf"),
                "-keyfile", self.path("root.key"), "-in", self.path(name + ".csr"),
                "-out", self.path(name + ".pem"), "-startdate", start, "-enddate", end, *options)

    def sign(self, content, *options):
        """Returns the signed data in DER, or in BER with the option -stream."""
        return openssl("cms", "-sign", "-binary", "-nodetach", "-outform", "DER",
                       "-signer", self.path("leaf.pem"), "-inkey", self.path("leaf.key"),
                       "-certfile", self.path("root.pem"), *options, data=content)

    def certificate(self):
        with open(self.path("root.pem"), "rb") as file:
            return file.read()


def monthly(transaction, date, end, web_order, trial=0):
    return [
        (QUANTITY, 1),
        (PRODUCT_IDENTIFIER, "com.example.reader.monthly"),
        (TRANSACTION_IDENTIFIER, transaction),
        (PURCHASE_DATE, date),
        (ORIGINAL_TRANSACTION_IDENTIFIER, "540000712300101"),
        (ORIGINAL_PURCHASE_DATE, "2024-01-05T08:00:00Z"),
        (PURCHASE_TYPE, 3),
        (SUBSCRIPTION_EXPIRATION_DATE, end),
        (WEB_ORDER_LINE_ITEM_IDENTIFIER, web_order),
        (CANCELLATION_DATE, ""),
        (TRIAL_PERIOD, trial),
        (INTRODUCTORY_PRICE_PERIOD, 0),
    ]


def one_off(product, kind, transaction, date, original, original_date, quantity=1):
    return [
        (QUANTITY, quantity),
        (PRODUCT_IDENTIFIER, product),
        (TRANSACTION_IDENTIFIER, transaction),
        (PURCHASE_DATE, date),
        (ORIGINAL_TRANSACTION_IDENTIFIER, original),
        (ORIGINAL_PURCHASE_DATE, original_date),
        (PURCHASE_TYPE, kind),
        (SUBSCRIPTION_EXPIRATION_DATE, ""),
        (WEB_ORDER_LINE_ITEM_IDENTIFIER, 0),
        (CANCELLATION_DATE, ""),
    ]


def production_receipt():
    """A trial, its conversion, two renewals, a consumable, and a restored non-consumable."""
    values = [
        (ENVIRONMENT, "Production"),
        (BUNDLE_IDENTIFIER, "com.example.reader"),
        (APP_VERSION, "3.2.1"),
        (CREATION_DATE, "2024-03-15T10:00:05Z"),
        (ORIGINAL_APP_VERSION, "1.0"),
    ]
    coins = "540000712300177"
    entries = [
        one_off("com.example.reader.coins", 1, coins, "2024-02-01T19:12:44Z", coins, "2024-02-01T19:12:44Z", 3),
        monthly("540000712300311", "2024-03-12T08:00:00Z", "2024-04-12T08:00:00Z", 540000091200044),
        monthly("540000712300101", "2024-01-05T08:00:00Z", "2024-01-12T08:00:00Z", 540000091200041, trial=1),
        monthly("540000712300203", "2024-02-12T08:00:00Z", "2024-03-12T08:00:00Z", 540000091200043),
        monthly("540000712300140", "2024-01-12T08:00:00Z", "2024-02-12T08:00:00Z", 540000091200042),
        one_off("com.example.reader.pro", 0, "540000712300322", "2024-03-15T10:00:00Z",
                "540000398100009", "2022-11-20T16:45:10Z"),
    ]
    return receipt(values, entries)


def development_receipt():
    """A receipt of the development environment: few attributes, one more OCTET STRING."""
    values = [
        (ENVIRONMENT, "Development"),
        (BUNDLE_IDENTIFIER, "com.example.reader"),
        (APP_VERSION, "3.3"),
        (CREATION_DATE, "2024-04-15T18:52:30+0100"),
    ]
    entry = [
        (QUANTITY, 1),
        (PRODUCT_IDENTIFIER, "com.example.reader.coins"),
        (TRANSACTION_IDENTIFIER, "0"),
        (PURCHASE_DATE, "2024-04-15T18:52:22+0100"),
        (ORIGINAL_PURCHASE_DATE, "2024-04-15T18:52:22+0100"),
        (SUBSCRIPTION_EXPIRATION_DATE, ""),
        (WEB_ORDER_LINE_ITEM_IDENTIFIER, 0),
        (CANCELLATION_DATE, ""),
        (TRIAL_PERIOD, 0),
        (INTRODUCTORY_PRICE_PERIOD, 0),
    ]
    return octet_string(receipt(values, [entry]))


def service_entry(transaction, second, web_order, trial="false"):
    day, milliseconds = second
    return {
        "quantity": "1",
        "product_id": "com.example.reader.monthly",
        "transaction_id": transaction,
        "original_transaction_id": "540000712300101",
        "purchase_date": day + " 08:00:00 Etc/GMT",
        "purchase_date_ms": milliseconds,
        "web_order_line_item_id": web_order,
        "is_trial_period": trial,
        "is_in_intro_offer_period": "false",
    }


def service_answer():
    """The validation service's answer: the same subscription, of which the receipt has the trial."""
    trial = service_entry("540000712300101", ("2024-01-05", "1704441600000"), "540000091200041", "true")
    conversion = service_entry("540000712300140", ("2024-01-12", "1705046400000"), "540000091200042")
    renewal = service_entry("540000712300203", ("2024-02-12", "1707724800000"), "540000091200043")
    receipt = {
        "bundle_id": "com.example.reader",
        "application_version": "3.2.1",
        "original_application_version": "1.0",
        "receipt_creation_date": "2024-01-05 08:00:03 Etc/GMT",
        "in_app": [trial],
    }
    answer = {
        "status": 0,
        "environment": "Production",
        "receipt": receipt,
        "latest_receipt_info": [trial, conversion, renewal],
    }
    return (json.dumps(answer, indent=1) + "\n").encode()


def main():
    target = sys.argv[1]

    def write(name, data):
        with open(os.path.join(target, name), "wb") as file:
            file.write(data)

    with tempfile.TemporaryDirectory() as folder:
        signer = Signer(folder)
        write("ca.pem", signer.certificate())
        write("production.b64", base64.encodebytes(signer.sign(production_receipt(), "-stream", "-md", "sha1")))
        write("service.json", service_answer())
        write("development.der", signer.sign(development_receipt(), "-md", "sha256"))


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    main()
