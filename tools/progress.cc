#include "tools/progress.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace geomath_files::program {
namespace {

constexpr std::chrono::milliseconds kFirst{1000}, kInterval{200};

bool StandardErrorIsTerminal() {
#ifdef _WIN32
  return _isatty(_fileno(stderr)) != 0;
#else
  return isatty(fileno(stderr)) != 0;
#endif
}

std::string ShortCount(double count) {
  if (count >= 1e6) return fmt::format("{:.2f} M", count / 1e6);
  if (count >= 1e3) return fmt::format("{:.1f} k", count / 1e3);
  return fmt::format("{:.0f}", count);
}

}  // namespace

std::string ProgressLine(long long count, double done, double seconds, const std::string& unit) {
  const double rate = seconds > 0 ? static_cast<double>(count) / seconds : 0;
  const std::string speed = fmt::format("{} {}/s", ShortCount(rate), unit);
  if (!(done > 0))
    return fmt::format("{} {}  {}", ShortCount(static_cast<double>(count)), unit, speed);
  constexpr int kWidth = 30;
  const double share = std::min(done, 1.0);
  const int filled = static_cast<int>(share * kWidth);
  const auto left = static_cast<long long>(std::ceil(std::min(seconds * (1 - share) / share, 1e9)));
  return fmt::format("[{:#<{}}{:.<{}}] {:3.0f} %  {}  {}:{:02}:{:02} left", "", filled, "",
                     kWidth - filled, 100 * share, speed, left / 3600, left / 60 % 60, left % 60);
}

Progress::Progress(std::string unit)
    : unit_(std::move(unit)),
      onTerminal_(StandardErrorIsTerminal()),
      start_(Clock::now()),
      next_(start_ + kFirst) {}

Progress::~Progress() { Erase(); }

void Progress::Update(long long count, double done) {
  if (!onTerminal_) return;
  const Clock::time_point now = Clock::now();
  if (now < next_) return;
  next_ = now + kInterval;
  const double seconds = std::chrono::duration<double>(now - start_).count();
  Erase();
  std::fputs(ProgressLine(count, done, seconds, unit_).c_str(), stderr);
  std::fflush(stderr);
  drawn_ = true;
}

void Progress::Print(const std::string& line) {
  Erase();
  std::fprintf(stderr, "%s\n", line.c_str());
}

void Progress::Erase() {
  if (drawn_) std::fputs("\r\x1b[K", stderr);
  drawn_ = false;
}

}  // namespace geomath_files::program
