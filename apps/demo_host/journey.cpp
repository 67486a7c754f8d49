#include "apps/demo_host/journey.h"

#include <array>
#include <set>
#include <utility>

#include "apps/demo_host/journey_check_point.h"
#include "quorvance/check_point_type.h"

namespace demo_host {
namespace {

using quorvance::CheckPointType;

using Folder = std::filesystem::path;

constexpr const char* kNoteKey = "note";
constexpr std::size_t kMaxNoteBytes = 80;

std::string requireText(ObjectReader& reader, const std::string& key) {
  reader.require(key);
  return *reader.text(key);
}

// The value of a word; `words` maps the known ones.
template <class Value>
std::optional<Value> wordValue(ObjectReader& reader, const std::string& key, const char* called,
                               const std::map<std::string, Value>& words) {
  const auto word = reader.text(key);
  if (!word) return std::nullopt;
  const auto found = words.find(*word);
  if (found != words.end()) return found->second;
  std::set<std::string> known;
  for (const auto& entry : words) known.insert(entry.first);
  throw PlacedError(reader.placeOf(key),
                    "\"" + *word + "\" is no " + called + "; known are " + listed(known));
}

// A vocabulary whose wire words are its dictionary's.
template <class Value>
std::map<std::string, Value> wordsOf() {
  std::map<std::string, Value> words;
  for (const auto& [word, raw] : quorvance::VocabularyEnumerator<Value>::dictionary()) {
    words.emplace(word, *quorvance::VocabularyEnumerator<Value>::fromRawValue(raw));
  }
  return words;
}

// The levels' dictionary has other words than the wire.
std::map<std::string, quorvance::RiskLevel> levelWords() {
  std::map<std::string, quorvance::RiskLevel> words;
  for (const auto level : quorvance::RiskLevelEnumerator::array()) {
    quorvance::Risk risk;
    risk.riskLevel = level;
    words.emplace(risk.stringValue(), level);
  }
  return words;
}

std::optional<Outcome> readOutcome(ObjectReader& reader, CheckPointType type) {
  const auto transactionId = reader.text("transactionID");
  const auto status =
      wordValue(reader, "outcome", "outcome", wordsOf<quorvance::CheckPointStatus>());
  if (!transactionId) {
    return status ? std::optional<Outcome>({*status, std::nullopt}) : std::nullopt;
  }
  const Pointer place = reader.placeOf("transactionID");
  if (!status) throw PlacedError(place, "goes with an \"outcome\", and there is none");
  if (type != CheckPointType::TRANSACTION) {
    throw PlacedError(place, "is only sent for a TRANSACTION");
  }
  return Outcome{*status, transactionId};
}

Action readCheckPointStep(ObjectReader& reader, const Folder& /*folder*/) {
  std::shared_ptr<const quorvance::CheckPoint> checkPoint =
      buildCheckPoint(reader.require("checkpoint"), reader.placeOf("checkpoint"));
  const bool isReport =
      wordValue<bool>(reader, "ask", "question", {{"verdict", false}, {"report", true}})
          .value_or(false);
  const auto expected = wordValue(reader, "expect", "risk level", levelWords());
  auto outcome = readOutcome(reader, checkPoint->type());
  if (!isReport) return VerdictStep{std::move(checkPoint), expected, std::move(outcome)};
  if (expected) throw PlacedError(reader.placeOf("expect"), "a report gets no verdict");
  if (outcome) throw PlacedError(reader.placeOf("outcome"), "is for a verdict, not for a report");
  return ReportStep{std::move(checkPoint)};
}

Action readWaitStep(ObjectReader& reader, const Folder& /*folder*/) {
  return WaitStep{std::chrono::milliseconds(*reader.integer("wait", 0, kMaxWait.count()))};
}

Action readLogoutStep(ObjectReader& reader, const Folder& /*folder*/) {
  if (!*reader.boolean("logout")) throw PlacedError(reader.placeOf("logout"), "can only be true");
  return LogoutStep{};
}

Action readUserStep(ObjectReader& reader, const Folder& /*folder*/) {
  return UserStep{requireText(reader, "user")};
}

Action readPermissionStep(ObjectReader& reader, const Folder& /*folder*/) {
  return PermissionStep{
      *wordValue(reader, "permission", "permission", wordsOf<quorvance::MobilePermission>())};
}

Action readCrashStep(ObjectReader& reader, const Folder& /*folder*/) {
  return CrashStep{*wordValue<CrashKind>(reader, "crash", "crash",
                                         {{"segv", CrashKind::segv},
                                          {"abort", CrashKind::abort},
                                          {"exception", CrashKind::exception}})};
}

// In a file of its own, or in the journey itself.
RecordedScreen readRecording(const Json& json, const Pointer& place, const Folder& folder) {
  if (!json.is_string()) return readRecordedScreen(json, place);
  try {
    return loadRecordedScreen(folder / json.get<std::string>());
  } catch (const InputError& error) {
    throw PlacedError(place, error.what());
  }
}

Action readScreenStep(ObjectReader& step, const Folder& folder) {
  ObjectReader reader(step.require("screen"), step.placeOf("screen"));
  reader.require("type");
  reader.require("id");
  ScreenStep screen;
  screen.type = *wordValue(reader, "type", "screen type", wordsOf<quorvance::ScreenListenerType>());
  screen.id = *reader.integer("id", INT64_MIN, INT64_MAX);
  screen.recording =
      readRecording(reader.require("recording"), reader.placeOf("recording"), folder);
  reader.finish();
  return screen;
}

struct StepKind {
  const char* key;
  Action (*read)(ObjectReader& reader, const Folder& folder);
};

// The key that a step has names its kind. A further kind is a further line here.
constexpr std::array<StepKind, 7> kStepKinds = {{
    {"checkpoint", readCheckPointStep},
    {"wait", readWaitStep},
    {"logout", readLogoutStep},
    {"user", readUserStep},
    {"permission", readPermissionStep},
    {"crash", readCrashStep},
    {"screen", readScreenStep},
}};

const StepKind& kindOfStep(const Json& json, const Pointer& place) {
  std::set<std::string> known;
  for (const StepKind& kind : kStepKinds) {
    if (json.is_object() && json.contains(kind.key)) return kind;
    known.insert(kind.key);
  }
  throw PlacedError(place, "expected an object with one of " + listed(known));
}

Step readStep(const Json& json, const Pointer& place, const Folder& folder) {
  const StepKind& kind = kindOfStep(json, place);
  ObjectReader reader(json, place);
  Step step{kind.read(reader, folder), reader.text(kNoteKey).value_or("")};
  if (step.note.size() > kMaxNoteBytes) {
    throw PlacedError(reader.placeOf(kNoteKey),
                      "longer than " + std::to_string(kMaxNoteBytes) + " bytes");
  }
  reader.finish();
  return step;
}

std::vector<Step> readSteps(const Json& json, const Pointer& place, const Folder& folder) {
  if (!json.is_array() || json.empty() || json.size() > kMaxSteps) {
    throw PlacedError(place, "expected an array of 1 to " + std::to_string(kMaxSteps) + " steps");
  }
  std::vector<Step> steps;
  steps.reserve(json.size());
  for (std::size_t i = 0; i < json.size(); ++i) {
    steps.push_back(readStep(json[i], place / i, folder));
  }
  return steps;
}

JourneySetup readSetup(const Json& json, const Pointer& place) {
  ObjectReader reader(json, place);
  JourneySetup setup;
  setup.userId = reader.text("user");
  setup.application.identifier =
      reader.text("applicationIdentifier").value_or(setup.application.identifier);
  setup.application.shortVersion = reader.text("applicationVersion");
  setup.wantsDeviceIdentifier =
      reader.boolean("deviceIdentifier").value_or(setup.wantsDeviceIdentifier);
  setup.debug = reader.boolean("debug").value_or(setup.debug);
  reader.finish();
  return setup;
}

std::optional<std::filesystem::path> readServerFile(ObjectReader& reader, const std::string& key,
                                                    const std::filesystem::path& folder) {
  const auto name = reader.text(key);
  if (!name) return std::nullopt;
  const std::filesystem::path file = folder / *name;
  try {
    loadStrictJson(file);
  } catch (const InputError& error) {
    throw PlacedError(reader.placeOf(key), error.what());
  }
  return file;
}

ServerFiles readServerFiles(const Json& json, const Pointer& place,
                            const std::filesystem::path& folder) {
  ObjectReader reader(json, place);
  ServerFiles files;
  files.config = readServerFile(reader, "config", folder);
  files.rules = readServerFile(reader, "rules", folder);
  files.faults = readServerFile(reader, "faults", folder);
  reader.finish();
  return files;
}

}  // namespace

Journey parseJourney(const Json& json, const std::filesystem::path& folder) {
  ObjectReader reader(json, Pointer());
  Journey journey;
  journey.title = requireText(reader, "title");
  if (const Json* setup = reader.find("setup")) {
    journey.setup = readSetup(*setup, reader.placeOf("setup"));
  }
  if (const Json* server = reader.find("server")) {
    journey.server = readServerFiles(*server, reader.placeOf("server"), folder);
  }
  journey.steps = readSteps(reader.require("steps"), reader.placeOf("steps"), folder);
  reader.finish();
  return journey;
}

Journey loadJourney(const std::filesystem::path& file) {
  const Json json = loadStrictJson(file);
  try {
    return parseJourney(json, file.parent_path());
  } catch (const InputError& error) {
    throw InputError(file.string() + ": " + error.what());
  }
}

}  // namespace demo_host
