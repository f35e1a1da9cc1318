#include "discount_parameters.h"

#include <gtest/gtest.h>

#include <limits>
#include <ostream>

#include "support/purchase_fixtures.h"

namespace qel::testing {
namespace {

constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();

// Two units of a product at 4.99 with an introductory offer at 1.99. What the receipt said is left
// to each test.
class DiscountParametersTest : public ::testing::Test {
 protected:
  DiscountParametersTest() { validated.set(ParameterKey::kPrice, price); }

  void setDiscounted(std::int64_t value) {
    validated.set(ParameterKey::kPriceIsDiscounted, QELValue::initWithInt64(value));
  }
  void setFreeTrial(std::int64_t value) {
    validated.set(ParameterKey::kFreeTrial, QELValue::initWithInt64(value));
  }
  void removePrice() {
    EventParameters others;
    others.set(ParameterKey::kPriceIsDiscounted, validated.find(ParameterKey::kPriceIsDiscounted));
    others.set(ParameterKey::kFreeTrial, validated.find(ParameterKey::kFreeTrial));
    validated = others;
  }

  std::optional<EventParameters> discount(std::int64_t multiplier = 1000000) const {
    return QELDiscountParameters(validated, productRecord, transactionRecord, multiplier);
  }

  // The same result whether the receipt or the offer says that nothing was charged.
  const Event kFreeTrialResult = {
      {"original_price", 4990000}, {"price", 0}, {"price_is_discounted", 1}, {"value", 0}};

  PlainProduct product = {.introductoryPrice = PlainDiscount{decimal("1.99")}};
  PlainTransaction transaction = {.quantity = 2};
  Asked asked;
  const PlainProductRecord plainProductRecord = PlainProductRecord(product);
  const PlainTransactionRecord plainTransactionRecord = PlainTransactionRecord(transaction);
  const LoggedProduct productRecord = LoggedProduct(plainProductRecord, asked);
  const LoggedTransaction transactionRecord = LoggedTransaction(plainTransactionRecord, asked);
  const QELValuePtr price = QELValue::initWithInt64(4990000);
  EventParameters validated;
};

// --- Nothing to add ---

TEST_F(DiscountParametersTest, AbsentParametersGiveNothing) {
  EXPECT_TRUE(
      isNothing(QELDiscountParameters(std::nullopt, productRecord, transactionRecord, 1000000)));
  EXPECT_EQ(asked, Asked());
}

TEST_F(DiscountParametersTest, NoFlagGivesNothing) {
  EXPECT_TRUE(isNothing(discount()));
  EXPECT_EQ(asked, Asked());
}

struct UnsetFlagCase {
  const char* name;
  std::int64_t value;
  friend std::ostream& operator<<(std::ostream& out, const UnsetFlagCase& c) {
    return out << c.name;
  }
};

class UnsetFlagTest : public DiscountParametersTest,
                      public ::testing::WithParamInterface<UnsetFlagCase> {};

TEST_P(UnsetFlagTest, OfAFreeTrialGivesNothing) {
  setFreeTrial(GetParam().value);
  EXPECT_TRUE(isNothing(discount()));
  EXPECT_EQ(asked, Asked());
}

TEST_P(UnsetFlagTest, OfADiscountGivesNothing) {
  setDiscounted(GetParam().value);
  EXPECT_TRUE(isNothing(discount()));
  EXPECT_EQ(asked, Asked());
}

TEST_P(UnsetFlagTest, OfAFreeTrialLeavesTheDecisionToTheOffer) {
  setDiscounted(1);
  setFreeTrial(GetParam().value);
  EXPECT_TRUE(
      isEvent(discount(), {{"original_price", 4990000}, {"price", 1990000}, {"value", 3980000}}));
}

TEST_P(UnsetFlagTest, OfADiscountDoesNotTouchAFreeTrial) {
  setDiscounted(GetParam().value);
  setFreeTrial(1);
  EXPECT_TRUE(isEvent(discount(), kFreeTrialResult));
  EXPECT_EQ(asked, Asked());
}

INSTANTIATE_TEST_SUITE_P(Values, UnsetFlagTest,
                         ::testing::Values(UnsetFlagCase{"Zero", 0}, UnsetFlagCase{"Two", 2},
                                           UnsetFlagCase{"MinusOne", -1},
                                           UnsetFlagCase{"OneInTheHighHalf", std::int64_t{1} << 32},
                                           UnsetFlagCase{"OnePastTheLowHalf",
                                                         (std::int64_t{1} << 32) + 1}),
                         nameOfCase<UnsetFlagCase>);

TEST_F(DiscountParametersTest, FlagThatIsAStringIsNotSet) {
  validated.set(ParameterKey::kFreeTrial, QELValue::initWithString("1"));
  validated.set(ParameterKey::kPriceIsDiscounted, QELValue::initWithString("1"));
  EXPECT_TRUE(isNothing(discount()));
}

// --- Free trials ---

TEST_F(DiscountParametersTest, FreeTrialChargesNothing) {
  setFreeTrial(1);
  EXPECT_TRUE(isEvent(discount(), kFreeTrialResult));
  EXPECT_EQ(asked, Asked());
}

TEST_F(DiscountParametersTest, FreeTrialTakesPrecedenceOverTheOffer) {
  setDiscounted(1);
  setFreeTrial(1);
  EXPECT_TRUE(isEvent(discount(), kFreeTrialResult));
  EXPECT_EQ(asked, Asked());
}

TEST_F(DiscountParametersTest, FreeTrialWithoutAPriceHasNoOriginalPrice) {
  setFreeTrial(1);
  removePrice();
  EXPECT_TRUE(isEvent(discount(), {{"price", 0}, {"price_is_discounted", 1}, {"value", 0}}));
}

TEST_F(DiscountParametersTest, OriginalPriceOfAFreeTrialIsTheVeryObjectUnderPrice) {
  setFreeTrial(1);
  const std::optional<EventParameters> result = discount();
  ASSERT_TRUE(result.has_value());
  EXPECT_EQ(result->find(ParameterKey::kOriginalPrice), price);
}

TEST_F(DiscountParametersTest, ValidatedParametersAreNotChanged) {
  setFreeTrial(1);
  discount();
  EXPECT_TRUE(isEvent(validated, {{"free_trial", 1}, {"price", 4990000}}));
  EXPECT_EQ(validated.find(ParameterKey::kPrice), price);
}

// --- Offers ---

TEST_F(DiscountParametersTest, OfferOfPaymentModeTwoIsAFreeTrialAndItsPriceIsNotRead) {
  setDiscounted(1);
  product.introductoryPrice->paymentMode = 2;
  EXPECT_TRUE(isEvent(discount(), kFreeTrialResult));
  EXPECT_EQ(asked, Asked({"product.hasDiscountClass", "product.discountsAnswerPrice",
                          "product.discountsAnswerPaymentMode", "product.answersIntroductoryPrice",
                          "product.introductoryPrice", "discount.paymentMode"}));
}

TEST_F(DiscountParametersTest, OfferOfPaymentModeTwoNeedsNoPriceAnywhere) {
  setDiscounted(1);
  removePrice();
  product.introductoryPrice->price = std::nullopt;
  product.introductoryPrice->paymentMode = 2;
  EXPECT_TRUE(isEvent(discount(), {{"price", 0}, {"price_is_discounted", 1}, {"value", 0}}));
}

struct PaymentModeCase {
  const char* name;
  std::uint64_t paymentMode;
  friend std::ostream& operator<<(std::ostream& out, const PaymentModeCase& c) {
    return out << c.name;
  }
};

class PricedPaymentModeTest : public DiscountParametersTest,
                              public ::testing::WithParamInterface<PaymentModeCase> {};

TEST_P(PricedPaymentModeTest, ChargesTheOffersPriceAndDoesNotRepeatTheFlag) {
  setDiscounted(1);
  product.introductoryPrice->paymentMode = GetParam().paymentMode;
  EXPECT_TRUE(
      isEvent(discount(), {{"original_price", 4990000}, {"price", 1990000}, {"value", 3980000}}));
}

INSTANTIATE_TEST_SUITE_P(
    Modes, PricedPaymentModeTest,
    ::testing::Values(PaymentModeCase{"Zero", 0}, PaymentModeCase{"One", 1},
                      PaymentModeCase{"Three", 3},
                      PaymentModeCase{"TwoPastTheLowHalf", (std::uint64_t{1} << 32) + 2},
                      PaymentModeCase{"Greatest", std::numeric_limits<std::uint64_t>::max()}),
    nameOfCase<PaymentModeCase>);

TEST_F(DiscountParametersTest, PricedOfferIsAskedInOrderAndTheQuantityReadOnce) {
  setDiscounted(1);
  discount();
  EXPECT_EQ(asked, Asked({"product.hasDiscountClass", "product.discountsAnswerPrice",
                          "product.discountsAnswerPaymentMode", "product.answersIntroductoryPrice",
                          "product.introductoryPrice", "discount.paymentMode", "discount.price",
                          "transaction.payment", "payment.quantity"}));
}

TEST_F(DiscountParametersTest, OriginalPriceOfAnOfferOfPaymentModeTwoIsTheVeryObjectUnderPrice) {
  setDiscounted(1);
  product.introductoryPrice->paymentMode = 2;
  const std::optional<EventParameters> result = discount();
  ASSERT_TRUE(result.has_value());
  EXPECT_EQ(result->find(ParameterKey::kOriginalPrice), price);
}

TEST_F(DiscountParametersTest, OriginalPriceOfAnOfferIsTheVeryObjectUnderPrice) {
  setDiscounted(1);
  const std::optional<EventParameters> result = discount();
  ASSERT_TRUE(result.has_value());
  EXPECT_EQ(result->find(ParameterKey::kOriginalPrice), price);
}

TEST_F(DiscountParametersTest, PricedOfferOfAProductWithoutAPriceHasNoOriginalPrice) {
  setDiscounted(1);
  removePrice();
  EXPECT_TRUE(isEvent(discount(), {{"price", 1990000}, {"value", 3980000}}));
}

TEST_F(DiscountParametersTest, OfferWithoutAPriceGivesNothing) {
  setDiscounted(1);
  product.introductoryPrice->price = std::nullopt;
  EXPECT_TRUE(isNothing(discount()));
}

TEST_F(DiscountParametersTest, ProductWithoutAnOfferGivesNothing) {
  setDiscounted(1);
  product.introductoryPrice = std::nullopt;
  EXPECT_TRUE(isNothing(discount()));
  EXPECT_EQ(asked, Asked({"product.hasDiscountClass", "product.discountsAnswerPrice",
                          "product.discountsAnswerPaymentMode", "product.answersIntroductoryPrice",
                          "product.introductoryPrice"}));
}

TEST_F(DiscountParametersTest, OfferAtZeroIsAPrice) {
  setDiscounted(1);
  product.introductoryPrice->price = Decimal();
  EXPECT_TRUE(isEvent(discount(), {{"original_price", 4990000}, {"price", 0}, {"value", 0}}));
}

TEST_F(DiscountParametersTest, QuantityOfZeroLeavesTheValueOut) {
  setDiscounted(1);
  transaction.quantity = 0;
  EXPECT_TRUE(isEvent(discount(), {{"original_price", 4990000}, {"price", 1990000}}));
}

TEST_F(DiscountParametersTest, QuantityOfZeroWithoutAPriceLeavesTheOffersPriceAlone) {
  setDiscounted(1);
  removePrice();
  transaction.quantity = 0;
  EXPECT_TRUE(isEvent(discount(), {{"price", 1990000}}));
}

TEST_F(DiscountParametersTest, MissingPaymentReadsAQuantityOfZero) {
  setDiscounted(1);
  transaction.quantity = std::nullopt;
  EXPECT_TRUE(isEvent(discount(), {{"original_price", 4990000}, {"price", 1990000}}));
}

TEST_F(DiscountParametersTest, NegativeQuantityCounts) {
  setDiscounted(1);
  transaction.quantity = -3;
  EXPECT_TRUE(
      isEvent(discount(), {{"original_price", 4990000}, {"price", 1990000}, {"value", -5970000}}));
}

TEST_F(DiscountParametersTest, QuantityOfMoreThan32BitsIsNotCut) {
  setDiscounted(1);
  transaction.quantity = std::int64_t{1} << 32;
  EXPECT_TRUE(isEvent(
      discount(), {{"original_price", 4990000}, {"price", 1990000}, {"value", 8546984919040000}}));
}

TEST_F(DiscountParametersTest, PriceUsesTheMultiplierThatTheBuilderRead) {
  setDiscounted(1);
  EXPECT_TRUE(isEvent(discount(/*multiplier=*/1000),
                      {{"original_price", 4990000}, {"price", 1990}, {"value", 3980000}}));
}

// --- Availability ---

struct AvailabilityCase {
  const char* name;
  bool PlainProduct::*answer;
  // How many of the four questions are asked until the first no.
  std::ptrdiff_t questions;
  friend std::ostream& operator<<(std::ostream& out, const AvailabilityCase& c) {
    return out << c.name;
  }
};

class UnavailableOfferTest : public DiscountParametersTest,
                             public ::testing::WithParamInterface<AvailabilityCase> {};

TEST_P(UnavailableOfferTest, GivesNothingAndEndsTheQuestions) {
  setDiscounted(1);
  product.*GetParam().answer = false;
  EXPECT_TRUE(isNothing(discount()));
  const Asked questions = {"product.hasDiscountClass", "product.discountsAnswerPrice",
                           "product.discountsAnswerPaymentMode",
                           "product.answersIntroductoryPrice"};
  EXPECT_EQ(asked, Asked(questions.begin(), questions.begin() + GetParam().questions));
}

TEST_P(UnavailableOfferTest, DoesNotMatterToAFreeTrial) {
  setDiscounted(1);
  setFreeTrial(1);
  product.*GetParam().answer = false;
  EXPECT_TRUE(isEvent(discount(), kFreeTrialResult));
  EXPECT_EQ(asked, Asked());
}

INSTANTIATE_TEST_SUITE_P(
    Answers, UnavailableOfferTest,
    ::testing::Values(
        AvailabilityCase{"PlatformWithoutTheClass", &PlainProduct::hasDiscountClass, 1},
        AvailabilityCase{"DiscountsWithoutPrice", &PlainProduct::discountsAnswerPrice, 2},
        AvailabilityCase{"DiscountsWithoutPaymentMode", &PlainProduct::discountsAnswerPaymentMode,
                         3},
        AvailabilityCase{"ProductWithoutIntroductoryPrice", &PlainProduct::answersIntroductoryPrice,
                         4}),
    nameOfCase<AvailabilityCase>);

// --- Amounts ---

// The multiplier is 1000000 and the quantity 2, so that `value` is twice the exact price, cut off
// only then: `echo '0.0000079*2*1000000' | bc` gives 15.8.
struct OfferAmountCase {
  const char* name;
  const char* offerPrice;
  std::int64_t price;
  std::int64_t value;
  friend std::ostream& operator<<(std::ostream& out, const OfferAmountCase& c) {
    return out << c.name;
  }
};

class OfferAmountTest : public DiscountParametersTest,
                        public ::testing::WithParamInterface<OfferAmountCase> {};

TEST_P(OfferAmountTest, IsTheExactProductTruncatedTowardZero) {
  setDiscounted(1);
  product.introductoryPrice->price = decimal(GetParam().offerPrice);
  EXPECT_TRUE(isEvent(
      discount(),
      {{"original_price", 4990000}, {"price", GetParam().price}, {"value", GetParam().value}}));
}

INSTANTIATE_TEST_SUITE_P(
    Prices, OfferAmountTest,
    ::testing::Values(OfferAmountCase{"FractionIsDropped", "0.0000079", 7, 15},
                      OfferAmountCase{"NegativeFractionIsDroppedTowardZero", "-0.0000015", -1, -3},
                      OfferAmountCase{"TooLarge", "1e13", kLeast, kLeast},
                      OfferAmountCase{"TooLargeNegative", "-1e13", kLeast, kLeast},
                      OfferAmountCase{"TooLargeOnlyWithTheQuantity", "5e12", 5000000000000000000,
                                      kLeast},
                      OfferAmountCase{"NotANumber", "NaN", kLeast, kLeast},
                      OfferAmountCase{"NoDoubleError", "8.29", 8290000, 16580000}),
    nameOfCase<OfferAmountCase>);

}  // namespace
}  // namespace qel::testing
