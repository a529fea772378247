#include "tools/sigma_columns.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "files/words/name_match.h"
#include "files/words/number_text.h"
#include "files/words/user_error.h"
#include "geomath/base/angle.h"

using namespace zel_cs::geomath;

namespace geomath_files::program {
namespace {

// Where the six variances and covariances stand in a matrix: nn, ne, nu, ee, eu, uu.
constexpr std::size_t kUpper[] = {0, 1, 2, 4, 5, 8}, kLower[] = {0, 3, 6, 4, 7, 8};
constexpr std::size_t kVariances[] = {0, 4, 8};

// The ellipse of one standard deviation: semi-axes, and the bearing of the major one, degrees.
struct ErrorEllipse {
  double major, minor, bearing;
};

ErrorEllipse EllipseOf(double nn, double ne, double ee) {
  const double middle = (nn + ee) / 2, half = std::hypot((nn - ee) / 2, ne);
  const double bearing = 0.5 * std::atan2(2 * ne, nn - ee) * kDegPerRad;
  return {std::sqrt(middle + half), std::sqrt(std::max(middle - half, 0.0)),
          bearing < 0 ? bearing + 180 : bearing};
}

}  // namespace

void AddSigmaOptions(CLI::App& arguments, SigmaOptions& options) {
  arguments
      .add_option("--sigma", options.sigma,
                  "uncertainty of the input, which the results get too: three standard deviations "
                  "(metres north, east, up) or six variances and covariances (nn, ne, nu, ee, eu, "
                  "uu), as numbers or as names of columns")
      ->delimiter(',')
      ->allow_extra_args(false);
  arguments
      .add_option("--sigma-frame", options.frame,
                  "what --sigma is of: neu (the default) or xyz, geocentric X, Y, Z")
      ->check(CLI::IsMember({"neu", "xyz"}));
  arguments.add_option("--sigma-datum", options.datum,
                       "standard deviation of the datum in every direction, metres");
  arguments.add_option("--sigma-geoid", options.geoid,
                       "standard deviation of geoid heights, metres");
  arguments.add_option("--sigma-nodes", options.nodes,
                       "shift grids take part with the accuracies of their nodes, which are in "
                       "this unit: m, ft, us-ft, …");
}

SigmaColumns::SigmaColumns(const SigmaOptions& options, const CoordinateSystem& system,
                           bool inverse)
    : uncertainty_(system.Chain()),
      inverse_(inverse),
      geocentric_(options.frame == "xyz"),
      given_(options.sigma.size()) {
  if (given_ != 3 && given_ != 6)
    throw UserError(
        "--sigma: three standard deviations or six variances and covariances are wanted");
  if (geocentric_ && inverse)
    throw UserError("--sigma-frame: with --inverse the input is local: north, east, up");
  for (const std::string& text : options.sigma)
    if (const ParsedNumber number = ParseNumber(text)) numbers_.push_back(number.value);
  if (numbers_.empty())
    read_ = options.sigma;
  else if (numbers_.size() != given_)
    throw UserError("--sigma: give numbers, or names of columns");
  if (!uncertainty_.SetDatum(options.datum))
    throw UserError("--sigma-datum: a standard deviation is not negative");
  if (!uncertainty_.SetGeoid(options.geoid))
    throw UserError("--sigma-geoid: a standard deviation is not negative");
  TakeSite(system);
  if (!options.nodes.empty()) TakeNodes(options.nodes, system);
}

void SigmaColumns::TakeSite(const CoordinateSystem& system) {
  const LocalToGrid* const site = system.Chain().GetLocalization();
  if (!site) return;
  const SiteErrors errors = system.SiteUncertainty().value_or(SiteErrors());
  uncertainty_.SetSite(errors.covariance);
  const int exact = site->mode & ~errors.parts;
  if (exact == LocalToGrid::kNotSetUp) return;
  note_ = fmt::format("--sigma: the site has no covariance {}, which counts as exact",
                      exact == LocalToGrid::kBoth         ? "of its parameters"
                      : exact == LocalToGrid::kHorizontal ? "of positions"
                                                          : "of heights");
}

void SigmaColumns::TakeNodes(const std::string& unit, const CoordinateSystem& system) {
  const double metres = LengthUnitNamed(unit, "--sigma-nodes").metres;
  bool any = false;
  for (const SystemShift& shift : system.Shifts())
    if (const auto* grid = dynamic_cast<const ShiftGrid*>(shift.shift.get()))
      any |= uncertainty_.SetShiftNodes(*grid, metres, metres);
  if (!any)
    throw UserError("--sigma-nodes: no shift grid of the system has accuracies in its nodes");
}

std::vector<ResultColumn> SigmaColumns::Results(int decimals) {
  return {{"sigma_n", decimals},   {"sigma_e", decimals},   {"sigma_h", decimals},
          {"ellipse_a", decimals}, {"ellipse_b", decimals}, {"ellipse_bearing", 1, "deg"}};
}

void SigmaColumns::Convert(RowBlock& block, std::size_t column, PointDates dates,
                           std::vector<ChainStep>& failed) const {
  const std::size_t count = block.count;
  std::vector<double> covariances(9 * count, 0.0);
  for (std::size_t i = 0; i < count; ++i) {
    double* const matrix = &covariances[9 * i];
    for (std::size_t k = 0; k < given_; ++k) {
      const double value = numbers_.empty() ? block.also[k][i] : numbers_[k];
      if (given_ == 3) {
        // A square has no sign: what is negative is none.
        matrix[kVariances[k]] = value >= 0 ? value * value : -1;
      } else {
        matrix[kUpper[k]] = matrix[kLower[k]] = value;
      }
    }
  }
  auto &x = block.result[0], &y = block.result[1], &h = block.result[2];
  using enum CovarianceFrame;
  if (inverse_)
    uncertainty_.ToGlobalBatch(x.data(), y.data(), h.data(), covariances.data(), count, 1,
                               failed.data(), northEastUp, northEastUp, dates);
  else
    uncertainty_.ToLocalBatch(x.data(), y.data(), h.data(), covariances.data(), count, 1,
                              failed.data(), geocentric_ ? geocentric : northEastUp, northEastUp,
                              dates);
  for (std::size_t i = 0; i < count; ++i) {
    const double* const c = &covariances[9 * i];
    const ErrorEllipse ellipse = EllipseOf(c[0], c[1], c[4]);
    const double values[] = {std::sqrt(c[0]), std::sqrt(c[4]), std::sqrt(c[8]),
                             ellipse.major,   ellipse.minor,   ellipse.bearing};
    for (std::size_t k = 0; k < std::size(values); ++k) block.result[column + k][i] = values[k];
  }
}

}  // namespace geomath_files::program
