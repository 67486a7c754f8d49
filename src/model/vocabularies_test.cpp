#include <gtest/gtest.h>

#include <cctype>
#include <limits>
#include <set>
#include <utility>

#include "quorvance/check_point_type.h"
#include "quorvance/currency_code.h"
#include "quorvance/mobile_permission.h"
#include "quorvance/payment.h"
#include "quorvance/risk.h"
#include "quorvance/screen_listener_type.h"
#include "quorvance/transaction_type.h"
#include "quorvance/user.h"

namespace quorvance {
namespace {

using WordAt = std::pair<std::int64_t, std::string>;

std::string lowerCaseOf(std::string word) {
  for (char& c : word) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return word;
}

// What holds for every vocabulary, and the words at a few of its places.
template <class Value>
void expectVocabulary(std::int64_t size, std::int64_t fallback, const std::vector<WordAt>& spots) {
  using ToString = VocabularyToString<Value>;
  const auto values = VocabularyEnumerator<Value>::array();
  const auto menu = VocabularyEnumerator<Value>::dictionary();
  ASSERT_EQ(std::ssize(values), size);
  EXPECT_EQ(std::ssize(menu), size);
  for (std::int64_t raw = 0; raw < size; ++raw) {
    const Value value = values[static_cast<std::size_t>(raw)];
    const std::string word = ToString::toString(value);
    EXPECT_EQ(static_cast<std::int64_t>(value), raw);
    EXPECT_EQ(VocabularyEnumerator<Value>::fromRawValue(raw), value);
    EXPECT_EQ(ToString::fromString(word), value);
    EXPECT_EQ(menu.at(word), raw);
    EXPECT_EQ(static_cast<std::int64_t>(ToString::fromString(lowerCaseOf(word))), fallback);
  }
  for (const auto& [raw, word] : spots) {
    EXPECT_EQ(ToString::toString(static_cast<Value>(raw)), word);
  }
  for (const std::string& unknown : {std::string(), " " + spots.front().second,
                                     spots.front().second + '\0', std::string("NO_SUCH_WORD")}) {
    EXPECT_EQ(static_cast<std::int64_t>(ToString::fromString(unknown)), fallback) << unknown;
  }
  using Limits = std::numeric_limits<std::int64_t>;
  for (const std::int64_t raw : {std::int64_t{-1}, size, Limits::min(), Limits::max()}) {
    EXPECT_EQ(VocabularyEnumerator<Value>::fromRawValue(raw), std::nullopt) << raw;
  }
}

TEST(VocabulariesTest, HaveTheirSizesWordsAndFallbacks) {
  expectVocabulary<CheckPointType>(10, 6, {{0, "LAUNCH"}, {4, "UPDATE_DETAILS"}, {9, "NONE"}});
  expectVocabulary<CheckPointStatus>(3, 2, {{0, "APPROVED"}, {1, "DENIED"}, {2, "CANCELLED"}});
  expectVocabulary<VerificationType>(3, 2, {{0, "VERIFIED"}, {1, "NOT_VERIFIED"}, {2, "UNKNOWN"}});
  expectVocabulary<PaymentMethodType>(4, 3, {{0, "CREDIT_CARD"}, {2, "ECHECK"}, {3, "UNKNOWN"}});
  expectVocabulary<TransactionType>(18, 4, {{0, "PURCHASE"}, {6, "LOAD"}, {17, "BILL_PAYMENT"}});
  expectVocabulary<MobilePermission>(7, 5, {{0, "READ_CONTACTS"}, {4, "REMINDER"}, {6, "PHOTO"}});
  expectVocabulary<ScreenListenerType>(
      16, 12, {{0, "REGISTRATION_FORM"}, {11, "EMULATOR_CHECK"}, {15, "DEPOSIT_SCREEN"}});
}

TEST(VocabulariesTest, CurrenciesStandInTheOrderOfTheirCountries) {
  expectVocabulary<CurrencyCode>(
      179, 4, {{0, "AFN"}, {1, "EUR"}, {65, "GBP"}, {100, "MRU"}, {168, "ZWL"}, {178, "XAG"}});
}

TEST(VocabulariesTest, TwoOfThemCanSayThatThereIsNoSuchWord) {
  EXPECT_EQ(CheckPointTypeToString::fromNillableString("NONE"), CheckPointType::NONE);
  EXPECT_EQ(CheckPointTypeToString::fromNillableString("none"), std::nullopt);
  EXPECT_EQ(ScreenListenerTypeToString::fromNillableString("LOGIN_FORM"),
            ScreenListenerType::LOGIN_FORM);
  EXPECT_EQ(ScreenListenerTypeToString::fromNillableString("login_form"), std::nullopt);
}

TEST(VocabulariesTest, RiskLevelsStartBelowZeroAndHaveMenuWordsOfTheirOwn) {
  EXPECT_EQ(RiskLevelEnumerator::array().front(), RiskLevel::expire);
  EXPECT_EQ(RiskLevelEnumerator::fromRawValue(-2), RiskLevel::expire);
  EXPECT_EQ(RiskLevelEnumerator::fromRawValue(-3), std::nullopt);
  EXPECT_EQ(RiskLevelEnumerator::fromRawValue(4), std::nullopt);
  EXPECT_EQ(RiskLevelEnumerator::dictionary().at("veryHigh"), 3);
  EXPECT_EQ(Risk{RiskLevel::veryHigh}.stringValue(), "VERY_HIGH");
}

TEST(VocabulariesDeathTest, AValueOutsideStopsTheProcess) {
  EXPECT_DEATH(CheckPointTypeToString::toString(static_cast<CheckPointType>(10)), "fatal");
  const auto huge = std::numeric_limits<std::int64_t>::max();
  EXPECT_DEATH(TransactionTypeToString::toString(static_cast<TransactionType>(huge)), "fatal");
  EXPECT_DEATH(Risk{static_cast<RiskLevel>(huge)}.stringValue(), "fatal: a value outside");
}

}  // namespace
}  // namespace quorvance
