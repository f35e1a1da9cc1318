// Computes the events of subscriptions as a JavaScript programmer would, for comparison with the
// command.
//
// Usage: node events.mjs FILE
//
// FILE has purchases of make_purchases.py: subscriptions whose dates are all readable, without
// introductory prices. Writes what `qel-purchase events` writes.

import {createHash} from "node:crypto";
import {createReadStream} from "node:fs";
import {createInterface} from "node:readline";

// Returns a price in micros. A double would lose digits.
function micros(price) {
  const [units, fraction = ""] = price.split(".");
  return BigInt(units + fraction.padEnd(6, "0"));
}

function dedupeId(entry) {
  const text = entry.originalTransactionID + entry.webOrderLineItemID + entry.productID;
  return createHash("md5").update(text).digest().readBigInt64BE(8);
}

// Returns the event and the diagnostics of a purchase.
function eventOf({id, product, transaction, receipt}) {
  const price = micros(product.price);
  const {quantity} = transaction.payment;
  const entries = receipt.filter(entry => entry.productID === product.productIdentifier)
    .map(entry => ({entry, date: Date.parse(entry.purchaseDateIA5String)}))
    .sort((a, b) => a.date - b.date);
  const date = Date.parse(transaction.transactionDate);
  const position = entries.findIndex(candidate => candidate.date === date);
  if (entries.filter(candidate => candidate.date === date).length !== 1) {
    throw new Error(`expected one entry at the transaction's date: ${id}`);
  }
  const {entry} = entries[position];
  if (entry.originalTransactionID === entry.transactionID) {
    throw new Error(`expected a later purchase of a subscription: ${id}`);
  }
  const followsTrial = position > 0 && entries[position - 1].entry.isFreeTrial;
  const event = {
    _did: dedupeId(entry),
    currency: product.priceLocale.currencyCode,
    price,
    product_id: product.productIdentifier,
    product_name: product.localizedTitle,
    quantity,
    [followsTrial ? "sub_convert" : "sub_renew"]: 1,
    value: price * BigInt(quantity),
  };
  const message = "Transaction of auto-renewable subscription will be reported";
  return {event, diagnostics: [{level: 8, code: 40008, message, context: []}]};
}

// JSON.stringify refuses 64-bit integers.
function text(value) {
  if (typeof value === "bigint") return String(value);
  if (Array.isArray(value)) return `[${value.map(text).join()}]`;
  if (typeof value !== "object") return JSON.stringify(value);
  return `{${Object.entries(value).map(([key, part]) => `"${key}":${text(part)}`).join()}}`;
}

let output = "";
for await (const line of createInterface({input: createReadStream(process.argv[2])})) {
  const purchase = JSON.parse(line);
  output += text({id: purchase.id, ...eventOf(purchase)}) + "\n";
  if (output.length > 65536) {
    process.stdout.write(output);
    output = "";
  }
}
process.stdout.write(output);
