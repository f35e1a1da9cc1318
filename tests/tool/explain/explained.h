// A purchase from a line of JSON, with its explanation.

#ifndef QEL_TESTS_TOOL_EXPLAIN_EXPLAINED_H_
#define QEL_TESTS_TOOL_EXPLAIN_EXPLAINED_H_

#include <string>
#include <string_view>
#include <vector>

#include "explain/explanation.h"
#include "padded_line.h"
#include "purchase_reader.h"

namespace qel::tool::testing {

class Explained {
 public:
  explicit Explained(std::string_view line)
      : line_(line),
        reader_(UnknownKeys::kAreErrors),
        explanation_(explain(reader_.read(line_.view()))) {}

  const Explanation& operator*() const { return explanation_; }
  const Explanation* operator->() const { return &explanation_; }

  // The outcome as a sentence.
  std::string sentence() const {
    return std::string(nameOf(explanation_.outcome)) + explanation_.sentence.text();
  }

 private:
  PaddedLine line_;
  PurchaseReader reader_;
  Explanation explanation_;
};

// Returns the texts of sentences, to compare with a list.
inline std::vector<std::string> textsOf(const std::vector<Prose>& sentences) {
  std::vector<std::string> texts;
  texts.reserve(sentences.size());
  for (const Prose& sentence : sentences) texts.push_back(sentence.text());
  return texts;
}

// A purchase of the product "monthly" at 4.99 EUR in the transaction 2000 of 1000, of 14 April
// 2019. `receipt` is the list of entries in JSON.
inline std::string monthlyPurchase(const std::string& receipt) {
  return R"({"product":{"productIdentifier":"monthly","price":"4.99",)"
         R"("priceLocale":{"currencyCode":"EUR"},"localizedTitle":"Monthly"},)"
         R"("transaction":{"transactionIdentifier":"2000",)"
         R"("originalTransaction":{"transactionIdentifier":"1000"},)"
         R"("transactionDate":"2019-04-14T09:26:53Z","payment":{"quantity":1}},"receipt":)" +
         receipt + "}";
}

// An entry of "monthly" of type 3. `more` are further keys, each after a comma.
inline std::string monthlyEntry(const std::string& date, const std::string& id,
                                const std::string& more = "") {
  return R"({"productID":"monthly","purchaseDateIA5String":")" + date +
         R"(","purchaseType":3,"transactionID":")" + id + R"(","originalTransactionID":"1000")" +
         more + "}";
}

}  // namespace qel::tool::testing

#endif  // QEL_TESTS_TOOL_EXPLAIN_EXPLAINED_H_
