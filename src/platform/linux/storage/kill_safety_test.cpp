#include <gmock/gmock.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include "base/json.h"
#include "base/uuid.h"
#include "platform/linux/storage/json_file_store.h"
#include "platform/linux/storage/linux_documents_folder.h"
#include "platform/linux/storage/temporary_folder_test_support.h"
#include "platform/linux/threads/work_queue.h"

// Processes that are killed while they write. A kill shows wholeness; that a report outlives a loss
// of power is what the synchronisation before its rename is for, and no test here can show it.

namespace quorvance {
namespace {

/// A child that runs `work` for ever and says on the pipe what it has finished; killed after it has
/// said `lines` things. Returns what it said.
template <class Work>
std::string killWhileWorking(std::size_t lines, Work work) {
  std::array<int, 2> pipeEnds{};
  EXPECT_EQ(pipe(pipeEnds.data()), 0);
  const pid_t child = fork();
  if (child == 0) {
    close(pipeEnds[0]);
    work(pipeEnds[1]);
    _exit(1);
  }
  close(pipeEnds[1]);
  std::string said;
  std::array<char, 4096> buffer{};
  const auto readSome = [&] {
    const ssize_t count = read(pipeEnds[0], buffer.data(), buffer.size());
    if (count > 0) said.append(buffer.data(), static_cast<std::size_t>(count));
    return count > 0;
  };
  while (static_cast<std::size_t>(std::count(said.begin(), said.end(), '\n')) < lines) {
    if (!readSome()) break;
  }
  kill(child, SIGKILL);
  while (readSome()) {
  }
  close(pipeEnds[0]);
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFSIGNALED(status));
  return said;
}

void say(int descriptor, const std::string& line) {
  const std::string text = line + "\n";
  // Short enough for a pipe to take it whole, also from four threads.
  if (write(descriptor, text.data(), text.size()) < 0) _exit(2);
}

std::vector<std::string> wholeLines(const std::string& text) {
  std::vector<std::string> lines;
  std::size_t start = 0;
  for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', start)) {
    lines.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return lines;
}

TEST(KillSafetyTest, NoAcceptedReportIsLostOrTorn) {
  constexpr int kKills = 200;
  const std::string filler(900, 'x');
  for (int i = 0; i < kKills; ++i) {
    const TemporaryFolder root;
    const std::string said = killWhileWorking(static_cast<std::size_t>(1 + i % 20), [&](int out) {
      LinuxDocumentsFolder folder(root.path());
      folder.prepare();
      std::vector<std::thread> threads;
      threads.reserve(4);
      for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
          for (int n = 0; n < 12; ++n) {
            const std::string name = "crash" + randomUuid() + ".json";
            if (!folder.write(name, "{\"filler\": \"" + filler + "\"}")) say(out, name);
          }
        });
      }
      for (std::thread& thread : threads) thread.join();
      pause();
    });
    LinuxDocumentsFolder folder(root.path());
    std::vector<DocumentEntry> entries;
    ASSERT_FALSE(folder.list(entries).has_value());
    for (const DocumentEntry& entry : entries) {
      std::string bytes;
      ASSERT_EQ(folder.read(entry.name, bytes).kind, DocumentRead::Kind::whole);
      ASSERT_TRUE(parseJson(bytes).has_value()) << entry.name;
    }
    for (const std::string& name : wholeLines(said)) {
      std::string bytes;
      ASSERT_EQ(folder.read(name, bytes).kind, DocumentRead::Kind::whole) << name;
    }
  }
}

TEST(KillSafetyTest, StateFileIsNeverTorn) {
  constexpr int kKills = 100;
  const TemporaryFolder root;
  for (int i = 0; i < kKills; ++i) {
    killWhileWorking(1, [&](int out) {
      const auto queue = std::make_shared<WorkQueue>();
      JsonFileStore store(root.path(), queue);
      for (int n = 0;; ++n) {
        store.write("user_id", "user " + std::to_string(n) + std::string(2000, 'x'));
        store.synchronize();
        queue->post(WorkLane::files, [&] { say(out, "written"); });
        if (n > 1'000'000) break;
      }
    });
    const std::string bytes = root.get("state.json");
    ASSERT_TRUE(parseJson(bytes).has_value()) << bytes.size();
  }
}

TEST(TwoProcessesTest, LoseNoUpdateOfTheStateFile) {
  constexpr int kKeys = 100;
  const TemporaryFolder root;
  std::vector<pid_t> children;
  children.reserve(2);
  for (const std::string& owner : {std::string("left"), std::string("right")}) {
    const pid_t child = fork();
    if (child == 0) {
      const auto queue = std::make_shared<WorkQueue>();
      JsonFileStore store(root.path(), queue);
      for (int i = 0; i < kKeys; ++i) {
        store.write(owner + std::to_string(i), "set");
        store.synchronize();
        // Each update is a turn of its own at the file.
        std::promise<void> written;
        queue->post(WorkLane::files, [&] { written.set_value(); });
        written.get_future().wait();
      }
      _exit(0);
    }
    children.push_back(child);
  }
  for (const pid_t child : children) {
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
  }
  const auto state = parseJson(root.get("state.json"));
  ASSERT_TRUE(state.has_value());
  EXPECT_EQ(state->size(), 2U * kKeys);
}

}  // namespace
}  // namespace quorvance
