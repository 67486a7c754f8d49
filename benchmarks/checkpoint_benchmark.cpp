// What a full transaction checkpoint costs the host's thread: aim at most 15 us without traces, at
// most 30 us with them, and at most 1.5 times the building of its body alone.

#include <benchmark/benchmark.h>

#include <memory>

#include "base/json.h"
#include "core/manager_core.h"
#include "platform/testing/test_world.h"
#include "quorvance/transaction.h"

namespace quorvance {
namespace {

std::unique_ptr<Transaction> fullTransaction() {
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

void bodyAlone(benchmark::State& state) {
  const auto transaction = fullTransaction();
  for (auto _ : state) benchmark::DoNotOptimize(transaction->getJson());
}
BENCHMARK(bodyAlone);

void checkpointCall(benchmark::State& state) {
  TestWorld world;
  const auto context = std::make_shared<Context>(world.platform());
  const auto manager = ManagerCore::make(context);
  manager->setup("http://risk.test/", "u1", nullptr);
  world.http->neverAnswer();
  SdkConfig config;
  config.tracingDataQvData->levelQvManager = state.range(0) != 0;
  config.tracingDataQvData->maxTraceData = 1'000'000'000;
  context->state->replaceSdkConfig(config);
  const auto transaction = fullTransaction();
  for (auto _ : state) {
    manager->getRiskForCheckPoint(*transaction, nullptr);
    state.PauseTiming();
    world.http->dropAll();
    world.time->dropAll();
    context->tracing->clear();
    state.ResumeTiming();
  }
}
BENCHMARK(checkpointCall)->ArgName("traced")->Arg(0)->Arg(1);

}  // namespace
}  // namespace quorvance
