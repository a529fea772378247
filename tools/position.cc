#include "tools/position.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

#include "files/words/user_error.h"
#include "tools/exit_status.h"

namespace geomath_files::program {

std::array<double, 3> ReadPosition(const std::vector<std::string>& texts, CoordinateKind kind,
                                   bool gon) {
  constexpr double kDegreesPerGon = 0.9;
  constexpr const char* names[][3] = {
      {"LAT", "LON", "HEIGHT"}, {"N", "E", "HEIGHT"}, {"X", "Y", "Z"}};
  const bool geographic = kind == CoordinateKind::geographic;
  std::array<double, 3> position{};
  for (std::size_t axis = 0; axis < texts.size() && axis < position.size(); ++axis) {
    const AngleKind angle = axis == 0 ? AngleKind::latitude : AngleKind::longitude;
    const bool isAngle = geographic && axis < 2;
    ParsedNumber number =
        isAngle && !gon ? ParseAngle(texts[axis], angle) : ParseNumber(texts[axis]);
    if (isAngle && gon && number) {
      number.value *= kDegreesPerGon;
      number.problem = AngleRangeProblem(number.value, angle);
    }
    if (!number)
      throw UserError(
          fmt::format("{}: {}", names[static_cast<std::size_t>(kind)][axis], number.problem));
    position[axis] = number.value;
  }
  return position;
}

int RunPosition(const std::vector<std::string>& texts, const PointOptions& options,
                const RowJob& job) {
  if (!options.output.empty())
    throw UserError("--output: one position is printed; only a file of points has an output");
  RefuseHeightOfSpace(options, job);
  if (texts.size() == 3 && options.fixedHeight)
    throw UserError("--fixed-height: the position has a height too; give one of them");
  if (job.given == CoordinateKind::geocentric && texts.size() < 3)
    throw UserError("Z: is missing; a position is X, Y and Z");
  if (!job.also.empty() || !job.dates.empty())
    throw UserError("one position has no columns; give numbers");
  std::array<double, 3> position = ReadPosition(texts, job.given, options.InGon());
  if (options.fixedHeight) position[2] = *options.fixedHeight;
  RowBlock block;
  block.count = 1;
  for (std::size_t axis = 0; axis < 3; ++axis) block.given[axis] = {position[axis]};
  if (texts.size() < 3 && !options.fixedHeight && job.heightOptional)
    block.given[2][0] = std::numeric_limits<double>::quiet_NaN();
  block.result.assign(job.results.size(), {0});
  block.problems.resize(1);
  job.work(block);
  if (!block.problems[0].empty()) {
    std::fprintf(stderr, "geomath: %s: %s\n", job.failure, block.problems[0].c_str());
    return kExitSomeFailed;
  }
  constexpr std::size_t kWidth = 36;  // of a name and its value
  for (std::size_t i = 0; i < job.results.size(); ++i) {
    const auto& [name, decimals, unit, sexagesimal] = job.results[i];
    if (std::isnan(block.result[i][0])) continue;
    fmt::print("{}{:>{}}{}{}\n", name, ResultText(block.result[i][0], job.results[i]),
               kWidth - std::min(kWidth, name.size()), unit.empty() ? "" : " ", unit);
  }
  if (job.summary)
    for (const std::string& line : job.summary(block.tally))
      std::fprintf(stderr, "geomath: %s\n", line.c_str());
  if (job.warnings)
    for (const std::string& line : job.warnings(block.tally))
      std::fprintf(stderr, "geomath: warning: %s\n", line.c_str());
  return kExitDone;
}

}  // namespace geomath_files::program
