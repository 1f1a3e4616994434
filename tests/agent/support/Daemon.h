#pragma once

#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

/// A program that runs beside the test: what it writes (both streams, in order), and how it ends.
class Daemon {
 public:
  /// Starts `arguments[0]` with the rest.
  explicit Daemon(std::vector<std::string> const& arguments);
  /// Kills it if it still runs.
  ~Daemon();
  Daemon(Daemon const&) = delete;
  Daemon& operator=(Daemon const&) = delete;

  void signal(int number) const;
  /// Stops the process where it stands, and returns when it does stand; `signal(SIGCONT)` lets it
  /// go on.
  void freeze() const;

  /// The first line, not waited for before, that contains `text`; empty when none comes in time or
  /// the program ends.
  std::string waitFor(std::string const& text);
  /// Waits until `count` lines contain `text`; whether they came in time.
  bool waitForLines(std::string const& text, std::size_t count);
  /// How many of the lines so far contain `text`.
  std::size_t linesWith(std::string const& text) const;
  std::vector<std::string> const& lines() const { return lines_; }
  /// All lines as one text, for the message of a failing test.
  std::string output() const;

  /// Reads what is left and returns the exit status (128 + n for signal n); nothing when it does
  /// not end in time.
  std::optional<int> wait();

 private:
  bool readMore();

  pid_t process_{-1};
  int pipe_{-1};
  bool ended_{false};
  std::string rest_;
  std::vector<std::string> lines_;
  std::size_t waitedFor_{0};
};
