#pragma once

#include <memory>

#include "quorvance/transaction.h"

namespace quorvance {

/// A transaction with every record that one may hold: the largest checkpoint.
inline std::unique_ptr<Transaction> fullTransaction() {
  const auto address = std::make_shared<Address>(
      Address{"Anna", "Berg", "Main street 1", "2nd floor", "Graz", "Styria", "AT", "8010", "+43"});
  const auto card = std::make_shared<CreditCardDetail>(
      CreditCardDetail{"token", "id", "411111", "1111", 2030, 6});
  const auto bank = std::make_shared<BankAccountDetails>(BankAccountDetails{"1", "Anna Berg", "9"});
  return std::make_unique<Transaction>(TransactionFields{
      .timeStamp = 1'700'000'000'000,
      .actType = TransactionType::PURCHASE,
      .curType = CurrencyCode::EUR,
      .destinationId = "shop-1",
      .amount = 99.5,
      .user = std::make_shared<User>(User{"u1", "a@b.test", VerificationType::VERIFIED, "+43",
                                          VerificationType::VERIFIED, address,
                                          VerificationType::VERIFIED}),
      .billingAddress = address,
      .shippingAddress = address,
      .payment = std::make_shared<Payment>(
          Payment{PaymentMethodType::CREDIT_CARD, "p", "ANNA BERG", "m", card, bank}),
      .authorizationResponse = std::make_shared<AuthorizationResponse>(
          AuthorizationResponse{"ok", "Y", "00", "none", "00", "fine", "Y", "Y", "05"}),
      .merchantDetails =
          std::make_shared<MerchantDetails>(MerchantDetails{"Shop", "5411", address})});
}

}  // namespace quorvance
