#include "apps/risk_server/contract/contract.h"

#include "apps/risk_server/contract/contract_reader.h"
#include "apps/risk_server/http/text_codecs.h"

namespace risk_server {
namespace {

std::optional<ReplyKind> replyKindFromWord(const std::string& word) {
  static const std::map<std::string, ReplyKind> kKinds = {
      {"accepted", ReplyKind::kAccepted},
      {"configuration", ReplyKind::kConfiguration},
      {"deviceIdentifier", ReplyKind::kDeviceIdentifier},
      {"verdict", ReplyKind::kVerdict},
  };
  const auto found = kKinds.find(word);
  return found == kKinds.end() ? std::nullopt : std::optional(found->second);
}

RulePointer shapeOfContractFile() {
  const auto text = std::make_shared<TypeRule>(ValueType::kText);
  const auto object = std::make_shared<TypeRule>(ValueType::kObject);
  ObjectShape shape;
  shape.fields = {
      {"contentType", true, text}, {"definitions", false, object}, {"calls", true, object}};
  return std::make_shared<ObjectRule>(std::move(shape));
}

ServiceCall readCall(ContractReader& reader, const std::string& path, const Json& call) {
  const std::string place = "calls." + path;
  ObjectShape shape;
  shape.fields = {{"reply", true, std::make_shared<TypeRule>(ValueType::kText)},
                  {"body", true, std::make_shared<TypeRule>(ValueType::kAny)}};
  if (path.empty() || path.front() != '/') throw InputError(place + ": a path begins with \"/\"");
  if (const auto mismatch = ObjectRule(shape).firstMismatchOf(call)) {
    throw InputError(mismatch->textUnder(place));
  }
  const auto kind = replyKindFromWord(*findText(call, "reply"));
  if (!kind) throw InputError(place + ".reply: no known kind of reply");
  return {*kind, reader.read(*findMember(call, "body"), place + ".body")};
}

}  // namespace

Contract Contract::fromJson(const Json& json) {
  if (const auto mismatch = shapeOfContractFile()->firstMismatchOf(json))
    throw InputError(mismatch->text());
  Contract contract;
  contract.given_ = json;
  contract.contentType_ = *findText(json, "contentType");
  const Json none = Json::object();
  const Json* definitions = findMember(json, "definitions");
  ContractReader reader(definitions == nullptr ? none : *definitions);
  for (const auto& [path, call] : findMember(json, "calls")->items()) {
    contract.calls_.emplace(path, readCall(reader, path, call));
  }
  return contract;
}

const ServiceCall* Contract::find(const std::string& target) const {
  const auto found = calls_.find(target);
  return found == calls_.end() ? nullptr : &found->second;
}

std::string Contract::reasonForUnknown(const std::string& target) const {
  std::string reason = "no service at \"" + target + "\"";
  const std::string squeezed = squeezeSlashes(target);
  for (const auto& [path, call] : calls_) {
    if (squeezeSlashes(path) == squeezed) {
      return reason.append("; the path is \"").append(path).append("\", slash for slash");
    }
  }
  return reason;
}

std::optional<std::string> Contract::contentTypeFault(
    const std::vector<std::string>& values) const {
  if (values.empty()) return "Content-Type: missing, expected \"" + contentType_ + "\"";
  if (values.size() > 1) return "Content-Type: stands more than once";
  if (values.front() == contentType_) return std::nullopt;
  return "Content-Type: expected \"" + contentType_ + "\", got \"" + values.front() + "\"";
}

}  // namespace risk_server
