#pragma once

#include <chrono>
#include <cstdio>
#include <string>

namespace geomath_files::program {

/// A line on standard error that shows how far long work has come, its rate and the time that is
/// left. It is drawn only when standard error is a terminal, and not before the first second.
class Progress {
 public:
  explicit Progress(std::string unit);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// `count` units are done, the share `done` (0 to 1) of all; negative when that is not known.
  void Update(long long count, double done);
  /// Writes a line of text to standard error, past the progress line.
  void Print(const std::string& line);

 private:
  using Clock = std::chrono::steady_clock;
  void Erase();

  std::string unit_;
  bool onTerminal_, drawn_ = false;
  Clock::time_point start_, next_;
};

/// The text of the line: bar, share, rate and time left. `seconds` have passed so far.
std::string ProgressLine(long long count, double done, double seconds, const std::string& unit);

}  // namespace geomath_files::program
