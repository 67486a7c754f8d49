#include "benchmarks/verdict/measure.h"

#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <fstream>
#include <string>
#include <string_view>
#include <utility>

namespace quorvance {
namespace {

constexpr unsigned kLongestWorkloadSeconds = 60;

[[noreturn]] void runChild(int processors, int output, const std::function<Figures()>& workload) {
  alarm(kLongestWorkloadSeconds);
  runOn(processors);
  const Figures figures = workload();
  const auto bytes = figures.size() * sizeof(double);
  const bool isWritten = write(output, figures.data(), bytes) == static_cast<ssize_t>(bytes);
  // Destructors and exit handlers are no part of a workload.
  _exit(isWritten ? 0 : 1);
}

// Of all pages whose kind begins so.
double megabytesOf(std::string_view kind) {
  std::ifstream file("/proc/self/smaps_rollup");
  double kilobytes = 0;
  for (std::string word; file >> word;) {
    if (!word.starts_with(kind)) continue;
    double pages = 0;
    file >> pages;
    kilobytes += pages;
  }
  return kilobytes / 1024;
}

}  // namespace

void runOn(int processors) {
  cpu_set_t set;
  CPU_ZERO(&set);
  for (std::size_t i = 0; std::cmp_less(i, processors); ++i) CPU_SET(i, &set);
  sched_setaffinity(0, sizeof(set), &set);
}

double quantileOf(Figures figures, double share) {
  if (figures.empty()) return 0;
  const auto at = static_cast<std::ptrdiff_t>(share * static_cast<double>(figures.size() - 1));
  std::nth_element(figures.begin(), figures.begin() + at, figures.end());
  return figures[static_cast<std::size_t>(at)];
}

double medianOf(Figures figures) { return quantileOf(std::move(figures), 0.5); }

Figures inChild(int processors, const std::function<Figures()>& workload) {
  int ends[2] = {};
  if (pipe(ends) != 0) return {};
  std::fflush(stdout);
  const pid_t child = fork();
  if (child == 0) {
    close(ends[0]);
    runChild(processors, ends[1], workload);
  }
  close(ends[1]);
  Figures figures;
  double figure = 0;
  std::size_t filled = 0;
  for (;;) {
    auto* const place = reinterpret_cast<char*>(&figure) + filled;
    const ssize_t got = read(ends[0], place, sizeof(figure) - filled);
    if (got <= 0) break;
    filled += static_cast<std::size_t>(got);
    if (filled < sizeof(figure)) continue;
    figures.push_back(figure);
    filled = 0;
  }
  close(ends[0]);
  int status = 0;
  const bool isOver = child > 0 && waitpid(child, &status, 0) == child;
  if (isOver && WIFEXITED(status) && WEXITSTATUS(status) == 0) return figures;
  std::fprintf(stderr, "a workload failed\n");
  return {};
}

double privateMegabytes() { return megabytesOf("Private_"); }

double privateCleanMegabytes() { return megabytesOf("Private_Clean"); }

double nowMicroseconds() {
  using std::chrono::steady_clock;
  return std::chrono::duration<double, std::micro>(steady_clock::now().time_since_epoch()).count();
}

}  // namespace quorvance
