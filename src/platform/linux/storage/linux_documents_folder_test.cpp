#include "platform/linux/storage/linux_documents_folder.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utime.h>

#include <filesystem>

#include "platform/linux/storage/temporary_folder_test_support.h"

namespace quorvance {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> documentNames(LinuxDocumentsFolder& folder) {
  std::vector<DocumentEntry> entries;
  EXPECT_FALSE(folder.list(entries).has_value());
  std::vector<std::string> names;
  for (const DocumentEntry& entry : entries) names.push_back(entry.name);
  return names;
}

mode_t permissionsOf(const std::string& path) {
  struct stat status = {};
  EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
  return status.st_mode & 07777U;
}

TEST(DocumentsFolderTest, FilesAreWholePrivateAndFoundAgain) {
  const TemporaryFolder root;
  LinuxDocumentsFolder folder(root.at("a/b"));
  ASSERT_TRUE(folder.prepare());
  EXPECT_FALSE(folder.write("crash1.json", "{}").has_value());
  EXPECT_EQ(permissionsOf(root.at("a/b")), 0700U);
  EXPECT_EQ(permissionsOf(root.at("a/b/crash1.json")), 0600U);
  EXPECT_FALSE(folder.rename("crash1.json", "crash2.json").has_value());
  std::string bytes;
  EXPECT_EQ(folder.read("crash2.json", bytes).kind, DocumentRead::Kind::whole);
  EXPECT_EQ(bytes, "{}");
  EXPECT_THAT(documentNames(folder), ElementsAre("crash2.json"));
  EXPECT_FALSE(folder.remove("crash2.json").has_value());
  EXPECT_TRUE(folder.remove("crash2.json").has_value());
  EXPECT_THAT(std::filesystem::directory_iterator(root.at("a/b")),
              testing::Eq(std::filesystem::directory_iterator()));
}

TEST(DocumentsFolderTest, FolderThatWasRemovedIsMadeAgain) {
  const TemporaryFolder root;
  LinuxDocumentsFolder folder(root.at("data"));
  ASSERT_TRUE(folder.prepare());
  std::filesystem::remove_all(root.at("data"));
  EXPECT_TRUE(folder.write("bio1.json", "{}").has_value());
  ASSERT_TRUE(folder.prepare());
  EXPECT_FALSE(folder.write("bio1.json", "{}").has_value());
}

TEST(DocumentsFolderTest, NoFolderIsAnAnswer) {
  LinuxDocumentsFolder none(std::nullopt);
  EXPECT_FALSE(none.prepare());
  const TemporaryFolder root;
  root.put("file", "in the way");
  LinuxDocumentsFolder blocked(root.at("file/data"));
  EXPECT_FALSE(blocked.prepare());
  std::vector<DocumentEntry> entries;
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

TEST(DocumentsFolderTest, LeftoversOfADeadProcessGoWithTheFirstUse) {
  const TemporaryFolder root;
  root.put(".report-old", "torn");
  root.put(".report-new", "of a process that is writing it now");
  root.put(".other-old", "not ours");
  const utimbuf longAgo = {1'000'000'000, 1'000'000'000};
  ASSERT_EQ(utime(root.at(".report-old").c_str(), &longAgo), 0);
  ASSERT_EQ(utime(root.at(".other-old").c_str(), &longAgo), 0);
  LinuxDocumentsFolder folder(root.path());
  ASSERT_TRUE(folder.prepare());
  EXPECT_FALSE(std::filesystem::exists(root.at(".report-old")));
  EXPECT_TRUE(std::filesystem::exists(root.at(".report-new")));
  EXPECT_TRUE(std::filesystem::exists(root.at(".other-old")));
  EXPECT_THAT(documentNames(folder), IsEmpty());
}

}  // namespace
}  // namespace quorvance
