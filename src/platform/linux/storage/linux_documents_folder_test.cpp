#include "platform/linux/storage/linux_documents_folder.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>

#include "platform/linux/storage/file_lock.h"
#include "platform/linux/storage/temporary_name.h"
#include "platform/testing/lowered_limit_test_support.h"
#include "platform/testing/temporary_folder_test_support.h"

namespace quorvance {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

std::vector<std::string> documentNames(LinuxDocumentsFolder& folder) {
  std::vector<DocumentEntry> entries;
  EXPECT_FALSE(folder.list(entries).has_value());
  std::vector<std::string> names;
  names.reserve(entries.size());
  for (const DocumentEntry& entry : entries) names.push_back(entry.name);
  return names;
}

TEST(DocumentsFolderTest, FilesAreWholePrivateAndFoundAgain) {
  const TemporaryFolder root;
  LinuxDocumentsFolder folder(root.at("a/b"));
  ASSERT_TRUE(folder.prepare());
  EXPECT_FALSE(folder.write("crash1.json", "{}").has_value());
  EXPECT_EQ(root.permissionsOf("a/b"), 0700U);
  EXPECT_EQ(root.permissionsOf("a/b/crash1.json"), 0600U);
  EXPECT_FALSE(folder.rename("crash1.json", "crash2.json").has_value());
  std::string bytes;
  EXPECT_EQ(folder.read("crash2.json", bytes).kind, DocumentRead::Kind::whole);
  EXPECT_EQ(bytes, "{}");
  EXPECT_THAT(documentNames(folder), ElementsAre("crash2.json"));
  EXPECT_FALSE(folder.remove("crash2.json").has_value());
  EXPECT_TRUE(folder.remove("crash2.json").has_value());
  EXPECT_TRUE(std::filesystem::is_empty(root.at("a/b")));
}

TEST(DocumentsFolderTest, FolderThatIsGoneIsMadeAgainAndNoneIsAnAnswer) {
  const TemporaryFolder root;
  LinuxDocumentsFolder folder(root.at("data"));
  ASSERT_TRUE(folder.prepare());
  std::filesystem::remove_all(root.at("data"));
  EXPECT_TRUE(folder.write("bio1.json", "{}").has_value());
  ASSERT_TRUE(folder.prepare());
  EXPECT_FALSE(folder.write("bio1.json", "{}").has_value());
  std::vector<DocumentEntry> entries;
  EXPECT_FALSE(LinuxDocumentsFolder(std::nullopt).prepare());
  LinuxDocumentsFolder blocked(root.at("data/bio1.json/data"));
  EXPECT_FALSE(blocked.prepare());
  EXPECT_TRUE(blocked.list(entries).has_value());
}

TEST(DocumentsFolderTest, OddThingsUnderAReportsNameAreNeverReadable) {
  const TemporaryFolder root;
  LinuxDocumentsFolder folder(root.at("data"));
  ASSERT_TRUE(folder.prepare());
  root.put("secret.json", "{\"of\": \"somebody else\"}");
  ASSERT_EQ(mkfifo(root.at("data/crash-fifo").c_str(), 0600), 0);
  ASSERT_EQ(symlink(root.at("secret.json").c_str(), root.at("data/crash-link").c_str()), 0);
  ASSERT_TRUE(std::filesystem::create_directory(root.at("data/crash-folder")));
  root.put("data/crash-large", std::string(kMaxDocumentBytes + 1, ' '));
  for (const char* name : {"crash-fifo", "crash-link", "crash-folder", "crash-large"}) {
    std::string bytes;
    EXPECT_EQ(folder.read(name, bytes).kind, DocumentRead::Kind::unreadable) << name;
    EXPECT_EQ(bytes, "") << name;
    EXPECT_FALSE(folder.rename(name, std::string("unreadable-") + name).has_value()) << name;
    EXPECT_FALSE(folder.remove(std::string("unreadable-") + name).has_value()) << name;
  }
  std::string bytes;
  EXPECT_EQ(folder.read("crash-missing", bytes).kind, DocumentRead::Kind::failed);
  EXPECT_EQ(root.get("secret.json"), "{\"of\": \"somebody else\"}");
}

std::vector<std::string> namesIn(LinuxDocumentsFolder& folder, std::string_view category) {
  std::vector<std::string> names;
  if (folder.listNames(category, names)) names = {"an error"};
  return names;
}

// A change within the coarseness of file times may leave the folder's time as it was.
TEST(DocumentsFolderTest, NamesAreListedAnewUnlessTheFolderHasStoodForAWhile) {
  for (const bool isSettled : {false, true}) {
    const TemporaryFolder root;
    LinuxDocumentsFolder folder(root.path(), isSettled ? 0s : std::chrono::seconds(1h));
    for (const char* const name : {"bio1.json", ".bio2.json", "crash1.json"}) root.put(name, "{}");
    EXPECT_THAT(namesIn(folder, "bio"), ElementsAre("bio1.json"));
    {
      const NoMoreDescriptors none;  // which a look at the folder needs
      EXPECT_THAT(namesIn(folder, "crash"), ElementsAre(isSettled ? "crash1.json" : "an error"));
    }
    std::filesystem::remove_all(root.path());
    EXPECT_THAT(namesIn(folder, "bio"), ElementsAre("an error"));
  }
}

// On a kernel whose file times are coarse several changes fall into one of them.
TEST(DocumentsFolderTest, WhatThisProcessChangesIsListedAtOnce) {
  const TemporaryFolder root;
  LinuxDocumentsFolder folder(root.path(), 0s);
  for (int i = 0; i < 100; ++i) {
    EXPECT_FALSE(folder.write("bio1.json", "{}").has_value());
    EXPECT_THAT(namesIn(folder, "bio"), ElementsAre("bio1.json"));
    EXPECT_FALSE(folder.rename("bio1.json", "bio2.json").has_value());
    EXPECT_THAT(namesIn(folder, "bio"), ElementsAre("bio2.json"));
    EXPECT_FALSE(folder.remove("bio2.json").has_value());
    EXPECT_THAT(namesIn(folder, "bio"), IsEmpty());
  }
}

/// A temporary as this process would begin it, made by a fork that has died since.
std::string temporaryOfTheDead(const TemporaryFolder& root, const std::string& document,
                               bool isReplacement) {
  const pid_t child = fork();
  if (child == 0) {
    root.put(TemporaryName::make(document, isReplacement), "{}");
    _exit(0);
  }
  waitpid(child, nullptr, 0);
  for (const auto& entry : std::filesystem::directory_iterator(root.path())) {
    if (entry.path().native().ends_with(document)) return entry.path().filename();
  }
  return "";
}

TEST(DocumentsFolderTest, WhatTheDeadLeftIsToldApartFromTheWorkOfTheLiving) {
  const TemporaryFolder root;
  LinuxDocumentsFolder folder(root.path());
  const std::string first = temporaryOfTheDead(root, "crashA-1.json", false);
  const std::string second = temporaryOfTheDead(root, "crashA-2.json", true);
  // A process of the dead one's number, started later.
  const std::string reused = ".report-new-" + std::to_string(getpid()) + "-1-crashB.json";
  root.put(reused, "{}");
  root.put(".report-of another form", "{}");
  root.put(".report-new-99999999999999999999-1-crashC.json", "{}");
  root.put(".other", "not a report's");
  // What may not be taken up: a writer's own, one that a writer of another system's numbers has
  // locked, and what is no file.
  root.put(TemporaryName::make("crashD.json", false), "{}");
  root.put(".report-new-4000000-1-crashE.json", "{}");
  const FileLock lock(root.at(".report-new-4000000-1-crashE.json"), std::chrono::seconds(0));
  ASSERT_EQ(mkfifo(root.at(".report-pipe").c_str(), 0600), 0);
  std::vector<std::string> told;
  for (const UnfinishedDocument& one : folder.unfinishedDocuments()) {
    told.push_back(one.temporaryName + " is " + (one.isReplacement ? "again " : "") + one.name);
  }
  EXPECT_THAT(told,
              UnorderedElementsAre(first + " is crashA-1.json", second + " is again crashA-2.json",
                                   reused + " is crashB.json", ".report-of another form is ",
                                   ".report-new-99999999999999999999-1-crashC.json is "));
  EXPECT_THAT(documentNames(folder), IsEmpty());
}

TEST(DocumentsFolderTest, AnOpenFolderOfOursIsNarrowedAndOneOfOthersRefused) {
  const TemporaryFolder root;
  namespace fs = std::filesystem;
  fs::create_directory(root.at("open"));
  fs::permissions(root.at("open"), fs::perms::all);
  fs::create_directory_symlink("open", root.at("link"));
  EXPECT_TRUE(LinuxDocumentsFolder(root.at("link")).prepare());
  EXPECT_EQ(root.permissionsOf("open"), 0700U);
  for (const unsigned left : {0755U, 0770U, 01777U}) {
    fs::permissions(root.at("open"), fs::perms(left));
    EXPECT_TRUE(LinuxDocumentsFolder(root.at("open")).prepare());
    EXPECT_EQ(root.permissionsOf("open"), left);
  }
  if (geteuid() != 0) GTEST_SKIP() << "only root can give things away";
  constexpr uid_t kSomebody = 65534;
  ASSERT_EQ(lchown(root.at("link").c_str(), kSomebody, kSomebody), 0);
  EXPECT_FALSE(LinuxDocumentsFolder(root.at("link")).prepare());
  EXPECT_TRUE(LinuxDocumentsFolder(root.at("open")).prepare());
  fs::permissions(root.at("open"), fs::perms::all);
  ASSERT_EQ(chown(root.at("open").c_str(), kSomebody, kSomebody), 0);
  EXPECT_FALSE(LinuxDocumentsFolder(root.at("open")).prepare());
  EXPECT_EQ(root.permissionsOf("open"), 0777U);
}

TEST(DocumentsFolderTest, HiddenThingsAreRemovedAndOthersAreNot) {
  const TemporaryFolder root;
  LinuxDocumentsFolder folder(root.path());
  root.put(TemporaryName::make("crash1.json", false), "{");
  root.put(".report-new-1-1-bio1.json", "{");  // of a process that lives
  root.put(".hidden", "of somebody else");
  root.put("crash2.json", "{}");
  const auto lock = folder.lockAmongProcesses("reports", 0ms);
  EXPECT_TRUE(folder.removeHidden());
  std::vector<std::string> left;
  for (const auto& entry : std::filesystem::directory_iterator(root.path())) {
    left.push_back(entry.path().filename());
  }
  EXPECT_THAT(left, UnorderedElementsAre(".hidden", "crash2.json"));
}

}  // namespace
}  // namespace quorvance
