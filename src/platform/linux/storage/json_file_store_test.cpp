#include "platform/linux/storage/json_file_store.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/collection.h"
#include "platform/testing/temporary_folder_test_support.h"
#include "platform/testing/test_world.h"

namespace quorvance {
namespace {

namespace fs = std::filesystem;
using Kind = StoredEntry::Kind;

class JsonFileStoreTest : public testing::Test {
 protected:
  JsonFileStore makeStore() { return JsonFileStore(folder_.at("app/quorvance"), lane_); }
  std::string stateText() const { return folder_.get("app/quorvance/state.json"); }
  void putState(std::string_view bytes) const { folder_.put("app/quorvance/state.json", bytes); }
  /// Puts a file where the folder should be, or takes it away again.
  void obstructDisk(bool isObstructed) const {
    fs::remove_all(folder_.at("app"));
    if (isObstructed) folder_.put("app", "not a folder");
  }

  TemporaryFolder folder_;
  std::shared_ptr<ManualExecutor> lane_ = std::make_shared<ManualExecutor>();
};

TEST_F(JsonFileStoreTest, MemoryAnswersAtOnceAndTheDiskAfterARestart) {
  JsonFileStore store = makeStore();
  EXPECT_EQ(store.read("deviceId").kind, Kind::absent);
  store.write("deviceId", "d1");
  store.write("user_id", "\xc3\xa4\"\n");
  EXPECT_EQ(store.read("deviceId").text, "d1");
  EXPECT_EQ(stateText(), "");
  lane_->run();
  JsonFileStore restarted = makeStore();
  EXPECT_EQ(restarted.read("deviceId").text, "d1");
  EXPECT_EQ(restarted.read("user_id").text, "\xc3\xa4\"\n");
}

TEST_F(JsonFileStoreTest, WritesOfOneTurnShareATaskAndLeaveAFileThatHasThemAlone) {
  JsonFileStore store = makeStore();
  store.write("a", "1");
  store.write("b", "2");
  store.synchronize();
  lane_->hold(WorkLane::files);
  lane_->run();
  EXPECT_EQ(lane_->waiting(), 1U) << "on another lane, or of each write";
  lane_->release(WorkLane::files);
  lane_->run();
  EXPECT_EQ(stateText(), R"({"a":"1","b":"2"})");
  const auto stateFile = folder_.at("app/quorvance/state.json");
  fs::create_hard_link(stateFile, folder_.at("first"));
  store.write("a", "1");
  lane_->run();
  EXPECT_TRUE(fs::equivalent(stateFile, folder_.at("first"))) << "it was written anew";
}

// What this process wrote last is not what the file holds.
TEST_F(JsonFileStoreTest, WhatAnotherProcessDidToTheFileIsSeenByTheNextWrite) {
  JsonFileStore store = makeStore();
  store.write("user", "ann");
  store.write("device", "d");
  lane_->run();
  const std::string whole = stateText();
  putState(R"({"device":"d","user":"bob"})");
  store.write("user", "ann");
  lane_->run();
  EXPECT_EQ(stateText(), whole);
  putState("{\"user\":");
  store.write("device", "e");
  lane_->run();
  EXPECT_EQ(stateText(), R"({"device":"e","user":"ann"})") << "spoilt";
}

TEST_F(JsonFileStoreTest, KeepsWhatOthersPutIntoTheFile) {
  putState(R"({"foreign":{"x":[1,null]},"n":7,"a":"old"})");
  JsonFileStore store = makeStore();
  EXPECT_EQ(store.read("n").kind, Kind::other);
  EXPECT_EQ(store.read("n").text, "");
  // Another process changes the file after this one has read it.
  putState(R"({"foreign":{"x":[1,null]},"n":7,"a":"old","late":"l"})");
  store.write("a", "new");
  store.write("b", "added");
  lane_->run();
  EXPECT_EQ(stateText(), R"({"foreign":{"x":[1,null]},"n":7,"a":"new","late":"l","b":"added"})");
}

TEST_F(JsonFileStoreTest, MakesPrivateFoldersAndFilesAgainWhenTheyAreGone) {
  const mode_t mask = umask(0277);
  JsonFileStore store = makeStore();
  for (const char* text : {"1", "2"}) {
    obstructDisk(false);
    store.write("a", text);
    lane_->run();
    EXPECT_EQ(folder_.permissionsOf("app"), 0700U);
    EXPECT_EQ(folder_.permissionsOf("app/quorvance"), 0700U);
    EXPECT_EQ(folder_.permissionsOf("app/quorvance/state.json"), 0600U);
    EXPECT_EQ(stateText(), R"({"a":")" + std::string(text) + R"("})");
  }
  umask(mask);
}

TEST_F(JsonFileStoreTest, StartsEmptyWithAFileThatIsNoStateAndReplacesIt) {
  const std::string tooLong = R"({"a":")" + std::string(JsonFileStore::kMaxFileBytes, 'x') + "\"}";
  for (const std::string& bytes : {std::string(), std::string("rubbish"), std::string("[1]"),
                                   std::string("{\"a\":"), std::string(500, '['), tooLong}) {
    putState(bytes);
    JsonFileStore store = makeStore();
    EXPECT_EQ(store.read("a").kind, Kind::absent);
    store.write("a", "1");
    lane_->run();
    EXPECT_EQ(stateText(), R"({"a":"1"})");
    EXPECT_EQ(folder_.get("app/quorvance/unreadable-state.json"), bytes);
  }
}

TEST_F(JsonFileStoreTest, SetsAsideAFolderOrAPipeInPlaceOfItsFileUnderAFreeName) {
  const std::string path = folder_.at("app/quorvance/state.json");
  // The first name is taken by a folder that is not empty.
  fs::create_directories(folder_.at("app/quorvance/unreadable-state.json/full"));
  for (const bool isPipe : {false, true}) {
    fs::remove_all(path);
    if (!isPipe) fs::create_directories(path + "/full");
    ASSERT_EQ(isPipe ? mkfifo(path.c_str(), 0600) : 0, 0);
    JsonFileStore store = makeStore();
    EXPECT_EQ(store.read("a").kind, Kind::absent);
    store.write("a", "1");
    lane_->run();
    ASSERT_TRUE(fs::is_regular_file(path)) << isPipe;
    EXPECT_EQ(stateText(), R"({"a":"1"})");
  }
  EXPECT_TRUE(fs::exists(folder_.at("app/quorvance/unreadable-state-2.json/full")));
  EXPECT_TRUE(fs::is_fifo(folder_.at("app/quorvance/unreadable-state-3.json")));
}

TEST_F(JsonFileStoreTest, IsWrittenWithoutALockWhereNoneIsToBeHad) {
  fs::create_directories(folder_.at("app/quorvance/state.lock"));
  JsonFileStore store = makeStore();
  store.write("a", "1");
  lane_->run();
  EXPECT_EQ(stateText(), R"({"a":"1"})");
}

TEST_F(JsonFileStoreTest, ADefaultYieldsToTheFileAndToTheHostButItsWriteToNobody) {
  struct Case {
    const char* name;
    bool isUnreadableAtFirst;
    bool isWrittenByHost;
    const char* read;
  };
  const std::string theirs = R"({ "a": "theirs", "b": "b" })";
  for (const Case& c : {Case{"the first reading fails", true, false, "theirs"},
                        Case{"another process came first", false, false, "theirs"},
                        Case{"the first reading fails, the host writes", true, true, "host's"},
                        Case{"another came first, the host writes", false, true, "host's"}}) {
    obstructDisk(false);
    fs::create_directories(folder_.at("app/quorvance"));
    const std::string path = folder_.at("app/quorvance/state.json");
    if (c.isUnreadableAtFirst) fs::create_symlink(path, path);  // it cannot be opened for now
    JsonFileStore store = makeStore();
    EXPECT_EQ(store.read("a").kind, Kind::absent) << c.name;
    store.writeDefault("a", "default");
    EXPECT_EQ(store.read("a").text, "default") << c.name;
    if (c.isUnreadableAtFirst) lane_->run();
    fs::remove(path);
    putState(theirs);
    if (c.isWrittenByHost) store.write("a", "host's");
    store.writeDefault("a", "another default");
    store.synchronize();
    lane_->run();
    EXPECT_EQ(store.read("a").text, c.read) << c.name;
    EXPECT_EQ(makeStore().read("a").text, c.read) << c.name;
    EXPECT_EQ(stateText() == theirs, !c.isWrittenByHost) << c.name;
    EXPECT_EQ(store.read("b").text, c.isUnreadableAtFirst ? "b" : "") << c.name;
  }
}

TEST_F(JsonFileStoreTest, AFileThatCouldNotBeReadIsReadWithoutAnyWrite) {
  const std::string path = folder_.at("app/quorvance/state.json");
  fs::create_directories(folder_.at("app/quorvance"));
  fs::create_symlink(path, path);
  JsonFileStore store = makeStore();
  EXPECT_EQ(store.read("a").kind, Kind::absent);
  lane_->run();
  fs::remove(path);
  putState(R"({"a":"1"})");
  EXPECT_EQ(store.read("a").kind, Kind::absent) << "the caller waited for the disk";
  EXPECT_EQ(store.read("a").kind, Kind::absent);
  EXPECT_EQ(lane_->waiting(), 1U);
  lane_->run();
  EXPECT_EQ(store.read("a").text, "1");
  EXPECT_EQ(lane_->waiting(), 0U);
}

TEST_F(JsonFileStoreTest, WhatFailedBeforeIsTriedOnceMoreAtTheEndOfTheStore) {
  obstructDisk(true);
  {
    JsonFileStore store = makeStore();
    store.write("a", "1");
    lane_->run();
    obstructDisk(false);
  }
  lane_->run();
  EXPECT_EQ(stateText(), R"({"a":"1"})");
}

TEST_F(JsonFileStoreTest, WhatFailedBeforeIsTriedOnceMoreAtTheEndOfTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto endWithAStore = [&] {
    static std::function<void()> judge;
    judge = [this] {
      lane_->run();
      _exit(stateText() == R"({"a":"1"})" ? EXIT_SUCCESS : EXIT_FAILURE);
    };
    std::atexit([] { judge(); });  // before the library's handler, so it runs after that
    obstructDisk(true);
    JsonFileStore store = makeStore();
    store.write("a", "1");
    lane_->run();
    obstructDisk(false);
    std::exit(EXIT_SUCCESS);
  };
  EXPECT_EXIT(endWithAStore(), testing::ExitedWithCode(EXIT_SUCCESS), "");
}

// The older value must not come back with a restart.
TEST_F(JsonFileStoreTest, TextThatIsTooLongTakesTheOlderOneAway) {
  const std::string longest(JsonFileStore::kMaxTextBytes, 'x');
  putState(R"({"foreign":")" + std::string(JsonFileStore::kMaxFileBytes - 1000, 'f') +
           R"(","fits":"old","long":"old"})");
  const DebugLines debug;
  JsonFileStore store = makeStore();
  store.write("long", longest + "x");
  EXPECT_EQ(store.read("long").text, longest + "x");
  lane_->run();
  EXPECT_EQ(makeStore().read("long").kind, Kind::absent);
  EXPECT_EQ(makeStore().read("fits").text, "old");
  EXPECT_TRUE(debug.contain("long is too long")) << "in silence";
  // Here it is the file that would be too long.
  store.write("fits", longest);
  lane_->run();
  EXPECT_EQ(makeStore().read("fits").kind, Kind::absent);
  EXPECT_TRUE(debug.contain("fits is too long"));
  EXPECT_EQ(makeStore().read("foreign").text.size(), JsonFileStore::kMaxFileBytes - 1000);
  putState("{}");
  store.write("fits", longest);
  lane_->run();
  EXPECT_EQ(makeStore().read("fits").text, longest);
}

TEST_F(JsonFileStoreTest, WhatCannotBeWrittenStaysInMemoryAndIsTriedAgainWithTheNextWrite) {
  obstructDisk(true);
  JsonFileStore store = makeStore();
  JsonFileStore homeless(std::nullopt, lane_);
  for (JsonFileStore* const one : {&store, &homeless}) {
    one->write("a", "1");
    one->write("b", "1");
    lane_->run();
    EXPECT_EQ(one->read("a").text, "1");
  }
  obstructDisk(false);
  putState(R"({"c":"0"})");
  homeless.write("a", "2");
  EXPECT_EQ(lane_->waiting(), 0U);
  store.write("a", "2");
  lane_->run();
  EXPECT_EQ(stateText(), R"({"c":"0","a":"2","b":"1"})");
}

TEST_F(JsonFileStoreTest, WithoutCollectionMemoryAloneIsChangedUntilTheFirstUseAfterIt) {
  setCollectionEnabled(false);
  JsonFileStore store = makeStore();
  store.write("a", "1");
  lane_->run();
  EXPECT_FALSE(fs::exists(folder_.at("app")));
  EXPECT_EQ(store.read("a").text, "1");
  setCollectionEnabled(true);
  store.synchronize();
  lane_->run();
  EXPECT_EQ(stateText(), R"({"a":"1"})");
}

TEST_F(JsonFileStoreTest, WhatIsForgottenLeavesNothingAndDoesNotComeBack) {
  JsonFileStore store = makeStore();
  store.write("a", "1");
  lane_->run();
  for (const char* name : {"state.tmp", "state.77.tmp", "unreadable-state.json", "statement.txt"}) {
    folder_.put("app/quorvance/" + std::string(name), "x");
  }
  store.write("b", "2");  // waits for the disk
  for (const bool isOn : {false, true}) {
    setCollectionEnabled(isOn);
    EXPECT_TRUE(store.forget());
    EXPECT_FALSE(store.isForgotten());
    EXPECT_EQ(store.read("a").kind, Kind::absent);
    lane_->run();
    EXPECT_TRUE(store.isForgotten());
    std::vector<std::string> left;
    for (const auto& entry : fs::directory_iterator(folder_.at("app/quorvance"))) {
      left.push_back(entry.path().filename());
    }
    EXPECT_EQ(left, std::vector<std::string>{"statement.txt"});
    store.write("c", "3");
  }
  lane_->run();
  EXPECT_EQ(stateText(), R"({"c":"3"})");
}

TEST_F(JsonFileStoreTest, AnotherUsersFolderIsNeitherReadNorWritten) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can give a folder away";
  putState(R"({"deviceId":"planted"})");
  ASSERT_EQ(chown(folder_.at("app/quorvance").c_str(), 65534, 65534), 0);
  JsonFileStore store = makeStore();
  EXPECT_EQ(store.read("deviceId").kind, Kind::absent);
  store.write("a", "1");
  lane_->run();
  EXPECT_EQ(stateText(), R"({"deviceId":"planted"})");
}

}  // namespace
}  // namespace quorvance
