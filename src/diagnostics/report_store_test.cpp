#include "diagnostics/report_store.h"

#include <gmock/gmock.h>

#include <cmath>

#include "diagnostics/report_keeper.h"
#include "platform/testing/test_world.h"

namespace quorvance {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct StoreWorld : TestWorld {
  std::shared_ptr<InnerQuorvanceData> state =
      std::make_shared<InnerQuorvanceData>(time, store, identity);
  std::shared_ptr<TracingManager> tracing =
      std::make_shared<TracingManager>(state, std::make_shared<SystemTexts>(environment));
  std::shared_ptr<DeliveryLedger> ledger = std::make_shared<DeliveryLedger>();
  std::shared_ptr<ReportStore> reports =
      std::make_shared<ReportStore>(documents, std::make_shared<ExceptionLogger>(tracing), ledger);

  void fill(std::string_view prefix, int count) {
    for (int i = 0; i < count; ++i) {
      documents->files[std::string(prefix) + std::to_string(100 + i) + ".json"] = "{}";
    }
  }
};

Json smallReport() {
  Json report = makeObject(1);
  putMember(report, "error_code", 7);
  return report;
}

TEST(ReportStoreTest, KeepsFiftyOfACategoryAndDropsTheNewest) {
  for (const auto& [there, isKept] : {std::pair(49, true), {50, false}, {51, false}}) {
    StoreWorld world;
    world.fill("crash", there);
    world.fill("communicationError", 50);
    EXPECT_EQ(world.reports->storeReport(smallReport(), ReportCategory::crash), isKept) << there;
    EXPECT_EQ(world.documents->count("crash"), static_cast<std::size_t>(there + (isKept ? 1 : 0)));
    EXPECT_TRUE(world.reports->storeReport(smallReport(), ReportCategory::bio));
    EXPECT_TRUE(world.tracing->isEmpty());
  }
}

TEST(ReportStoreTest, FileIsNamedWithoutASeparatorAndIndented) {
  StoreWorld world;
  // A process that never ends its turn costs no report.
  world.documents->lockedElsewhere = {"reports"};
  EXPECT_TRUE(world.reports->storeReport(smallReport(), ReportCategory::activity));
  ASSERT_EQ(world.documents->files.size(), 1U);
  const auto& [name, bytes] = *world.documents->files.begin();
  EXPECT_THAT(name, testing::MatchesRegex("activity[0-9A-F]{8}-[0-9A-F-]{27}\\.json"));
  EXPECT_EQ(bytes, "{\n  \"error_code\": 7\n}");
}

TEST(ReportStoreTest, FailuresAreSilentAndOnlyWriteErrorsAreNotLogged) {
  const PlatformError full{"disk", 28, "No space left", std::nullopt};
  StoreWorld world;
  world.documents->isAvailable = false;
  EXPECT_FALSE(world.reports->storeReport(smallReport(), ReportCategory::crash));
  world.documents->isAvailable = true;
  world.documents->writeError = full;
  EXPECT_FALSE(world.reports->storeReport(smallReport(), ReportCategory::crash));
  EXPECT_EQ(world.tracing->size(), 0U);
  world.documents->listError = full;
  EXPECT_FALSE(world.reports->storeReport(smallReport(), ReportCategory::crash));
  EXPECT_EQ(world.tracing->size(), 1U);
  world.documents->listError.reset();
  world.documents->removeError = full;
  EXPECT_FALSE(world.reports->storeReport(Json(std::nan("")), ReportCategory::crash));
  world.reports->removeReport("crash1.json");
  EXPECT_EQ(world.tracing->size(), 3U);
  EXPECT_THAT(world.documents->files, IsEmpty());
}

TEST(ReportStoreTest, WhatCouldNeverBeUploadedIsRefusedAndLogged) {
  for (const auto& [bytes, isKept] :
       {std::pair(kMaxDocumentBytes, true), {kMaxDocumentBytes + 1, false}}) {
    StoreWorld world;
    const std::string around = "{\n  \"a\": \"\"\n}";
    Json report = makeObject(1);
    putMember(report, "a", std::string(bytes - around.size(), 'x'));
    EXPECT_EQ(world.reports->storeReport(report, ReportCategory::crash), isKept);
    EXPECT_EQ(world.documents->files.size(), isKept ? 1U : 0U);
    EXPECT_EQ(world.tracing->size(), isKept ? 0U : 1U);
  }
}

TEST(ReportStoreTest, FolderThatIsNamedAndCannotBeMadeIsLogged) {
  struct NamedFolder : MemoryDocuments {
    std::optional<std::string> fileSystemPath() const override { return "/named"; }
  };
  StoreWorld world;
  const auto folder = std::make_shared<NamedFolder>();
  folder->isAvailable = false;
  folder->listError = PlatformError{"disk", 20, "Not a directory", std::nullopt};
  ReportStore reports(folder, std::make_shared<ExceptionLogger>(world.tracing), world.ledger);
  EXPECT_FALSE(reports.storeReport(smallReport(), ReportCategory::crash));
  EXPECT_EQ(world.tracing->size(), 1U);
}

TEST(ReportStoreTest, UnreadableFilesAreSetAsideAndNoLongerCount) {
  StoreWorld world;
  world.documents->files = {{"crash1.json", "rubbish"},
                            {"crash2.json", "[]"},
                            {"crash3.json", "{}"},
                            {"crash4.json", "{}"},
                            {"unreadable-state.json", "not a report"}};
  world.documents->oddNames = {"crash4.json"};
  for (const char* name : {"crash1.json", "crash2.json", "crash4.json"}) {
    EXPECT_FALSE(world.reports->readReport(name).has_value()) << name;
  }
  // What cannot be read now stays.
  world.documents->readError = PlatformError{"disk", 5, "Input/output error", std::nullopt};
  EXPECT_FALSE(world.reports->readReport("crash3.json").has_value());
  world.documents->readError.reset();
  EXPECT_TRUE(world.reports->readReport("crash3.json").has_value());
  EXPECT_THAT(world.reports->reportsOf(ReportCategory::crash), ElementsAre("crash3.json"));
  EXPECT_EQ(world.documents->count("unreadable-crash"), 3U);
  EXPECT_EQ(world.tracing->size(), 4U);
  // Only the newest ten stay, and others' files are left alone.
  for (int i = 10; i < 20; ++i) {
    const std::string name = "crash" + std::to_string(i) + ".json";
    world.documents->files[name] = "rubbish";
    world.reports->readReport(name);
  }
  EXPECT_EQ(world.documents->count("unreadable-crash"), 10U);
  EXPECT_EQ(world.documents->count("unreadable-crash1.json"), 0U);
  EXPECT_EQ(world.documents->count("unreadable-state"), 1U);
}

TEST(ReportStoreTest, WholeReportsOfTheDeadAreTakenUpOnceWithinTheLimit) {
  StoreWorld world;
  world.fill("crash", 49);
  world.documents->files["bioA.json"] = R"({"first": 1})";
  const auto leave = [&](const std::string& name, bool isReplacement, const char* bytes) {
    const std::string temporary = ".report-" + std::to_string(world.documents->unfinished.size());
    world.documents->files[temporary] = bytes;
    world.documents->unfinished.push_back({temporary, name, isReplacement});
  };
  leave("crashNew.json", false, "{}");
  leave("crashTooMany.json", false, "{}");
  leave("bioA.json", true, R"({"second": 2})");
  leave("bioA.json", true, R"({"torn)");
  leave("bioSent.json", true, "{}");
  leave("bioTorn.json", false, "{\"a\":");
  leave("state.json", false, "{}");
  leave("", false, "{}");
  EXPECT_EQ(world.reports->reportsOf(ReportCategory::crash).size(), 50U);
  EXPECT_EQ(world.documents->count(".report"), 0U);
  EXPECT_EQ(world.documents->count("crashNew.json"), 1U);
  EXPECT_EQ(world.documents->count("crashTooMany.json"), 0U);
  EXPECT_THAT(world.reports->reportsOf(ReportCategory::bio), ElementsAre("bioA.json"));
  EXPECT_EQ(world.documents->files["bioA.json"], R"({"second": 2})");
  EXPECT_EQ(world.documents->count("state"), 0U);
  // Only the start of a process looks for them.
  leave("activityLate.json", false, "{}");
  EXPECT_THAT(world.reports->reportsOf(ReportCategory::activity), IsEmpty());
}

TEST(ReportKeeperTest, WaitForTheDiskInOrderAndInBounds) {
  StoreWorld world;
  ReportKeeper keeper(world.reports, world.time, std::make_shared<SystemTexts>(world.environment),
                      world.ledger);
  world.time->hold(WorkLane::files);
  for (std::size_t i = 0; i < kMaxWaitingReports + 5; ++i) {
    keeper.storeReport(smallReport(), ReportCategory::crash);
  }
  EXPECT_EQ(world.time->waiting(), kMaxWaitingReports);
  keeper.storeReport(smallReport(), ReportCategory::activity);
  EXPECT_THAT(world.documents->files, IsEmpty());
  world.time->release(WorkLane::files);
  world.time->run();
  EXPECT_EQ(world.documents->count("crash"), kMaxReportsPerCategory);
  EXPECT_EQ(world.documents->count("activity"), 1U) << "its own category had room";
  keeper.storeReport(smallReport(), ReportCategory::bio);
  world.time->run();
  EXPECT_EQ(world.documents->count("bio"), 1U);
}

}  // namespace
}  // namespace quorvance
