// What a verdict costs on the real platform: the host's thread, the way to the server and back,
// memory, the start. The baselines run in turns with the library, in the same run: machines change
// their speed, so only ratios and figures of one run compare.
//
// verdict_benchmark [--rounds N]    the table
// verdict_benchmark --profile N     N verdicts, one after another, for strace and perf

#include <stdlib.h>
#include <sys/resource.h>

#include <cstdio>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>

#include "benchmarks/verdict/curl_client.h"
#include "benchmarks/verdict/library_client.h"
#include "benchmarks/verdict/loopback_server.h"
#include "benchmarks/verdict/measure.h"

namespace quorvance {
namespace {

constexpr int kVerdictsInTurn = 1500;
constexpr int kVerdictsAtOnce = 4000;
constexpr int kInFlight = 16;
constexpr int kVerdictsForMemory = 20'000;
constexpr int kStarts = 15;
// A checkpoint that is traced in full leaves six entries.
constexpr int kVerdictsForTraces = 100'000 / 6;

/// One folder for each process of the library, all removed at the end: to delete files makes the
/// creation of others slow for a while.
class Folders {
 public:
  Folders() {
    std::string name = std::filesystem::temp_directory_path() / "verdict_benchmark.XXXXXX";
    root_ = mkdtemp(name.data());
  }
  ~Folders() { std::filesystem::remove_all(root_); }
  Folders(const Folders&) = delete;
  Folders& operator=(const Folders&) = delete;

  std::string next() { return root_ + "/" + std::to_string(number_++); }

 private:
  std::string root_;
  int number_ = 0;
};

/// Figures by the name of a row, from all rounds.
using Table = std::map<std::string, Figures>;

/// Of private memory, since it was made.
class Growth {
 public:
  /// All of it, and what has not been written to.
  Figures figures() const {
    return {privateMegabytes() - before_, privateCleanMegabytes() - cleanBefore_};
  }

 private:
  const double before_ = privateMegabytes();
  const double cleanBefore_ = privateCleanMegabytes();
};

enum class Tracing { off, on };
enum class Reports { none, many };

class Benchmark {
 public:
  Benchmark(int processors, std::string body) : processors_(processors), body_(std::move(body)) {}

  void runRound();
  void runOnce();
  void print() const;

  /// Figures of a workload of the library's in a process of its own.
  Figures library(Tracing tracing, Reports reports,
                  const std::function<Figures(LibraryClient&)>& workload);

 private:
  Figures curl(const std::function<Figures(const CurlClient&)>& workload);
  void addInTurn(const std::string& row, Tracing tracing, Reports reports);
  void addAtOnce(const std::string& row, Reports reports);
  void add(const std::string& row, double figure) { table_[row].push_back(figure); }
  double of(const std::string& row) const;
  void printTimes() const;
  void printRates() const;
  void printOnce() const;

  const int processors_;
  const std::string body_;
  Folders folders_;
  Table table_;
};

Figures Benchmark::library(Tracing tracing, Reports reports,
                           const std::function<Figures(LibraryClient&)>& workload) {
  const LoopbackServer server(processors_);
  server.notes().isTraced = tracing == Tracing::on;
  const std::string folder = folders_.next();
  return inChild(processors_, [&] {
    LibraryClient client(server, folder);
    if (reports == Reports::many) storeReports(folder);
    LibraryClient::settle();
    return workload(client);
  });
}

Figures Benchmark::curl(const std::function<Figures(const CurlClient&)>& workload) {
  const LoopbackServer server(processors_);
  return inChild(processors_, [&] {
    return workload(CurlClient(server.url() + "qrsk-med/3.0/GetCheckpointRisk/", body_));
  });
}

double switchesOfProcess() {
  rusage usage = {};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_nvcsw + usage.ru_nivcsw);
}

void Benchmark::addInTurn(const std::string& row, Tracing tracing, Reports reports) {
  Figures figures = library(tracing, reports, [](LibraryClient& client) {
    const double before = switchesOfProcess();
    Figures times = client.inTurn(kVerdictsInTurn);
    times.push_back((switchesOfProcess() - before) / kVerdictsInTurn);
    return times;
  });
  if (figures.empty()) return;
  add(row + " switches", figures.back());
  const auto middle = figures.begin() + kVerdictsInTurn;
  const Figures calls(figures.begin(), middle);
  const Figures verdicts(middle, figures.end() - 1);
  add(row + " call p50", medianOf(calls));
  add(row + " call p99", quantileOf(calls, 0.99));
  add(row + " verdict p50", medianOf(verdicts));
  add(row + " verdict p99", quantileOf(verdicts, 0.99));
}

void Benchmark::addAtOnce(const std::string& row, Reports reports) {
  const Figures rate = library(Tracing::off, reports, [](LibraryClient& client) {
    return Figures{client.perSecond(kVerdictsAtOnce, kInFlight)};
  });
  if (!rate.empty()) add(row, rate[0]);
}

void Benchmark::runRound() {
  const Figures built = curl([](const CurlClient& client) { return client.buildings(3000); });
  add("building", medianOf(built));
  const Figures posted = curl([](const CurlClient& client) { return client.inTurn(3000); });
  add("curl p50", medianOf(posted));
  add("curl p99", quantileOf(posted, 0.99));
  addInTurn("plain", Tracing::off, Reports::none);
  addInTurn("traced", Tracing::on, Reports::none);
  addInTurn("reports", Tracing::off, Reports::many);
  const Figures rate = curl([](const CurlClient& client) {
    return Figures{client.perSecond(kVerdictsAtOnce, kInFlight)};
  });
  if (!rate.empty()) add("curl rate", rate[0]);
  addAtOnce("rate", Reports::none);
  addAtOnce("reports rate", Reports::many);
}

// What is steady enough to be measured once.
void Benchmark::runOnce() {
  const Figures grown = library(Tracing::on, Reports::none, [](LibraryClient& client) {
    const double before = privateMegabytes();
    client.perSecond(kVerdictsForTraces, kInFlight);
    return Figures{privateMegabytes() - before};
  });
  if (!grown.empty()) add("traces", grown[0]);
  const LoopbackServer server(processors_);
  const std::string folder = folders_.next();
  const Figures memory = inChild(processors_, [&] {
    const Growth growth;
    LibraryClient client(server, folder);
    client.perSecond(kVerdictsForMemory, kInFlight);
    return growth.figures();
  });
  const Figures ofCurl = inChild(processors_, [&] {
    const Growth growth;
    const CurlClient client(server.url() + "qrsk-med/3.0/GetCheckpointRisk/", body_);
    client.perSecond(kVerdictsForMemory, kInFlight);
    return growth.figures();
  });
  if (!memory.empty() && !ofCurl.empty()) {
    add("memory", memory[0] - ofCurl[0]);
    add("memory of code", memory[1] - ofCurl[1]);
  }
  for (int i = 0; i < kStarts; ++i) {
    const std::string ofStart = folders_.next();
    const Figures start =
        inChild(processors_, [&] { return LibraryClient(server, ofStart).start(); });
    if (start.size() != 2) continue;
    add("made", start[0]);
    add("set up", start[1]);
  }
}

double Benchmark::of(const std::string& row) const {
  const auto found = table_.find(row);
  return found == table_.end() ? 0 : medianOf(found->second);
}

// A row that misses its aim says what is in its way, where that is known.
void printRow(std::string_view name, double figure, std::string_view unit, std::string_view aim,
              bool isMet, const char* obstacle = nullptr) {
  std::printf("  %-46.*s %10.2f %-6.*s aim %-16.*s %s\n", static_cast<int>(name.size()),
              name.data(), figure, static_cast<int>(unit.size()), unit.data(),
              static_cast<int>(aim.size()), aim.data(), isMet ? "met" : "MISSED");
  if (!isMet && obstacle != nullptr) std::printf("      %s\n", obstacle);
}

constexpr const char* kWakeUpObstacle =
    "most of it is the wake-up of the network's thread, the dearer when that sleeps on another "
    "processor";
constexpr const char* kReportsObstacle =
    "reports are not looked at again while their folder stands still; what is left is chance";

void printBase(std::string_view name, double figure, std::string_view unit) {
  std::printf("  %-46.*s %10.2f %.*s\n", static_cast<int>(name.size()), name.data(), figure,
              static_cast<int>(unit.size()), unit.data());
}

void Benchmark::print() const {
  std::printf("\n%d processor%s, medians of %zu rounds\n", processors_, processors_ > 1 ? "s" : "",
              table_.at("curl p50").size());
  printTimes();
  printRates();
  if (table_.contains("made")) printOnce();
  std::fflush(stdout);
}

void Benchmark::printTimes() const {
  printBase("body's value built, with room reserved", of("building"), "us");
  printBase("libcurl and JSON, one exchange, p50", of("curl p50"), "us");
  printBase("libcurl and JSON, one exchange, p99", of("curl p99"), "us");
  printRow("checkpoint on the host's thread, p50", of("plain call p50"), "us", "15",
           of("plain call p50") <= 15, kWakeUpObstacle);
  printRow("checkpoint on the host's thread, p99", of("plain call p99"), "us", "60",
           of("plain call p99") <= 60,
           "the thread that the call wakes may take the processor from it before it returns");
  printRow("the same traced, p50", of("traced call p50"), "us", "30", of("traced call p50") <= 30,
           kWakeUpObstacle);
  printBase("the same traced, p99", of("traced call p99"), "us");
  const double ratio = of("plain verdict p50") / of("curl p50");
  printBase("verdict, one in flight, p50", of("plain verdict p50"), "us");
  printBase("verdict, one in flight, p99", of("plain verdict p99"), "us");
  printRow("the same over libcurl and JSON", ratio, "x", "1.4", ratio <= 1.4,
           "host, network and completion are three threads, and a fourth looks for reports: on one "
           "processor\n      each of these takes 8 to 12 us more, with its wake-up, its switches "
           "and its "
           "cold caches");
  const double burden = of("reports verdict p50") / of("plain verdict p50");
  printRow("the same with 150 stored reports, over without", burden, "x", "1.1", burden <= 1.1,
           kReportsObstacle);
  printBase("context switches a verdict", of("plain switches"), "");
}

void Benchmark::printRates() const {
  printBase("libcurl and JSON, 16 in flight, a second", of("curl rate"), "");
  printRow(
      "verdicts, 16 in flight, a second", of("rate"), "", "16000", of("rate") >= 16'000,
      "of the processors, the server and the client's thread want a part as well: compare with "
      "libcurl's row");
  const double burden = of("rate") / of("reports rate");
  printRow("without stored reports over with 150", burden, "x", "1.1", burden <= 1.1,
           kReportsObstacle);
}

void Benchmark::printOnce() const {
  printRow("trace buffer of 100 000 entries", of("traces"), "MB", "40", of("traces") <= 40,
           "most of it is the text of the checkpoints");
  printRow("private memory over libcurl's", of("memory"), "MB", "1.0", of("memory") <= 1,
           "beside the code, the fonts' configuration and the values of 16 checkpoints in flight");
  printBase("of it code that only this process has loaded", of("memory of code"), "MB");
  printBase("platform and manager made", of("made"), "us");
  printBase("setup call", of("set up"), "us");
  const double start = of("made") + of("set up");
  printRow("both", start, "us", "200", start <= 200,
           "one thread is started, and code and data are touched for the first time: once warm, "
           "platform\n      and manager take 20 us");
}

// What the library sends: the baselines send the same.
std::string bodyOfLibrary() {
  const LoopbackServer server(1);
  Folders folders;
  const std::string folder = folders.next();
  inChild(1, [&] {
    LibraryClient(server, folder);
    return Figures{0};
  });
  return server.lastBody();
}

void profile(int count) {
  Benchmark(2, {}).library(Tracing::off, Reports::none,
                           [&](LibraryClient& client) { return client.inTurn(count); });
}

void printTable(int rounds) {
  const std::string body = bodyOfLibrary();
  std::printf("a body of %zu bytes, %d verdicts a round\n", body.size(), kVerdictsInTurn);
  for (const int processors : {1, 2}) {
    Benchmark benchmark(processors, body);
    for (int round = 0; round < rounds; ++round) benchmark.runRound();
    if (processors == 1) benchmark.runOnce();
    benchmark.print();
  }
}

}  // namespace
}  // namespace quorvance

int main(int count, char** arguments) {
  int rounds = 5;
  for (int i = 1; i + 1 < count; ++i) {
    const std::string_view option = arguments[i];
    if (option == "--rounds") rounds = std::atoi(arguments[i + 1]);
    if (option == "--profile") {
      quorvance::profile(std::atoi(arguments[i + 1]));
      return 0;
    }
  }
  quorvance::printTable(rounds);
}
