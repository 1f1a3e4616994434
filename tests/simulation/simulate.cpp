#include <charconv>
#include <cstdio>
#include <cstring>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "tests/simulation/Run.h"

namespace {

using Simulation::Plant;

constexpr char const* kUsage{
    "usage: simulate --seeds FIRST..LAST --events N [--jobs N] [--plant FAULT]\n"
    "Plays N events of each seed on the library and on a model of it, and compares them.\n"
    "       simulate --list-plants\n"};

struct Options {
  std::uint64_t first{1};
  std::uint64_t last{0};
  std::uint64_t events{0};
  std::uint64_t jobs{1};
  Plant plant{Plant::none};
};

/// What some seeds came to; added up over all of them.
struct Sum {
  std::uint64_t seeds{0};
  std::uint64_t events{0};
  std::uint64_t compared{0};
  std::uint64_t differences{0};
  std::uint64_t digest{0};
  Simulation::Run::Tally tally;

  void add(Sum const& other) {
    seeds += other.seeds;
    events += other.events;
    compared += other.compared;
    differences += other.differences;
    digest += other.digest;  // whatever the order of the seeds
    tally.recorded += other.tally.recorded;
    tally.withdrawn += other.tally.withdrawn;
    tally.raised += other.tally.raised;
    tally.traces += other.tally.traces;
    tally.readings += other.tally.readings;
    tally.avoided += other.tally.avoided;
  }
};

Sum playSeed(std::uint64_t seed, Options const& options) {
  Simulation::Run run{seed, options.plant};
  Sum sum;
  sum.seeds = 1;
  if (!run.play(options.events)) {
    sum.differences = 1;
    std::printf("seed %llu, event %llu (%s): %s\n", static_cast<unsigned long long>(seed),
                static_cast<unsigned long long>(run.events()), run.what().c_str(),
                run.difference().c_str());
    (void)std::fflush(stdout);
  }
  sum.events = run.events();
  sum.compared = run.compared();
  sum.tally = run.tally();
  Simulation::Digest digest;
  digest.add(seed);
  digest.add(run.digest());
  sum.digest = digest.value();
  return sum;
}

/// Plays the seeds of one of `jobs` workers, until one differs.
Sum playShare(std::uint64_t worker, Options const& options) {
  Sum sum;
  for (std::uint64_t seed = options.first + worker; seed <= options.last; seed += options.jobs) {
    sum.add(playSeed(seed, options));
    if (sum.differences != 0) break;
  }
  return sum;
}

/// Clock, sinks and trace facility are the process's, so each worker is a process.
bool playAll(Options const& options, Sum& sum) {
  if (options.jobs == 1) {
    sum = playShare(0, options);
    return true;
  }
  int ends[2];
  if (pipe(ends) != 0) return false;
  std::vector<pid_t> workers;
  for (std::uint64_t worker = 0; worker < options.jobs; ++worker) {
    pid_t const child = fork();
    if (child < 0) return false;
    if (child == 0) {
      Sum const share = playShare(worker, options);
      _exit(write(ends[1], &share, sizeof share) == sizeof share ? 0 : 3);
    }
    workers.push_back(child);
  }
  close(ends[1]);
  bool well = true;
  Sum share;
  while (read(ends[0], &share, sizeof share) == sizeof share)
    sum.add(share);
  for (pid_t const child : workers) {
    int status = 0;
    waitpid(child, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
      std::printf("a worker ended with status %d\n", status);
      well = false;
    }
  }
  return well;
}

bool numberIs(std::uint64_t& number, char const* begin, char const* end) {
  auto const result = std::from_chars(begin, end, number);
  return result.ec == std::errc{} && result.ptr == end;
}

bool optionIs(Options& options, std::string const& name, char const* value) {
  char const* const end = value + std::strlen(value);
  if (name == "--events") return numberIs(options.events, value, end) && options.events > 0;
  if (name == "--jobs") return numberIs(options.jobs, value, end) && options.jobs > 0;
  if (name == "--seeds") {
    char const* const dots = std::strstr(value, "..");
    if (dots == nullptr) return false;
    return numberIs(options.first, value, dots) && numberIs(options.last, dots + 2, end);
  }
  if (name != "--plant") return false;
  for (auto const& plant : Simulation::kPlants)
    if (plant.name == value) {
      options.plant = plant.plant;
      return true;
    }
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && std::strcmp(argv[1], "--list-plants") == 0) {
    for (auto const& plant : Simulation::kPlants)
      std::printf("%-28s %s\n", plant.name.data(), plant.what.data());
    return 0;
  }
  Options options;
  bool understood = argc > 1 && argc % 2 == 1;
  for (int i = 1; understood && i + 1 < argc; i += 2)
    understood = optionIs(options, argv[i], argv[i + 1]);
  if (!understood || options.last < options.first || options.events == 0) {
    std::fputs(kUsage, stderr);
    return 2;
  }

  Sum sum;
  bool const well = playAll(options, sum);
  auto const shown = [](std::uint64_t number) { return static_cast<unsigned long long>(number); };
  std::printf(
      "%llu records written, %llu withdrawn, %llu exceptions, %llu clock readings, "
      "%llu trace lines; %llu events avoided\n",
      shown(sum.tally.recorded), shown(sum.tally.withdrawn), shown(sum.tally.raised),
      shown(sum.tally.readings), shown(sum.tally.traces), shown(sum.tally.avoided));
  std::printf("%llu seeds, %llu events, %llu values compared, %llu differences, digest %016llx\n",
              shown(sum.seeds), shown(sum.events), shown(sum.compared), shown(sum.differences),
              shown(sum.digest));
  return well && sum.differences == 0 && sum.seeds == options.last - options.first + 1 ? 0 : 1;
}
