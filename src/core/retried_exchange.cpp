#include "core/retried_exchange.h"

#include <chrono>
#include <utility>

namespace quorvance {
namespace {

constexpr std::chrono::seconds kRetryDelay{10};

}  // namespace

RetriedExchange::RetriedExchange(std::shared_ptr<Context> context,
                                 std::shared_ptr<QuorvanceNetworkManager> client, Rules rules)
    : context_(std::move(context)), client_(std::move(client)), rules_(std::move(rules)) {}

void RetriedExchange::ask(std::shared_ptr<const void> owner) const {
  const OperationTrace trace(*context_->tracing, rules_.traceName);
  rules_.whenReady([this, owner = std::move(owner), kept = trace.continuation(),
                    call = client_->prepare(rules_.service)] {
    client_->send(
        call, rules_.makeBody(),
        [this, owner, kept, session = call.session](const ResponceObject& response) mutable {
          if (!rules_.take({response, session, kept})) askLater(owner);
        });
  });
}

void RetriedExchange::askLater(std::shared_ptr<const void> owner) const {
  context_->platform.mainQueue->postAfter(kRetryDelay, [this, owner = std::move(owner)] {
    if (rules_.isNeeded()) ask(owner);
  });
}

}  // namespace quorvance
