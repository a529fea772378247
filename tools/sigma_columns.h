#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "files/system/system_file.h"
#include "geomath/chain/chain_uncertainty.h"
#include "tools/row_loop.h"

namespace geomath_files::program {

/// What the user says of uncertainties.
struct SigmaOptions {
  /// Three standard deviations or six variances and covariances: numbers, or names of columns.
  std::vector<std::string> sigma;
  std::string frame = "neu";    ///< of given ones: "neu" or "xyz"
  double datum = 0, geoid = 0;  ///< standard deviations of the steps, metres
  std::string nodes;            ///< unit of the accuracies in grids, which take part; else empty

  bool Asked() const { return !sigma.empty(); }
};

/// Adds --sigma, --sigma-frame, --sigma-datum, --sigma-geoid and --sigma-nodes.
void AddSigmaOptions(CLI::App& arguments, SigmaOptions& options);

/// Carries the uncertainty of positions through a system, as columns of results behind the position:
/// standard deviations north, east and up, and the ellipse of one standard deviation. What the system
/// says of its site's parameters takes part.
class SigmaColumns {
 public:
  /// Throws UserError for what is wrong with the options.
  SigmaColumns(const SigmaOptions& options, const CoordinateSystem& system, bool inverse);

  /// The columns to be read, none where numbers were given; and those of the results.
  const std::vector<std::string>& Read() const { return read_; }
  static std::vector<ResultColumn> Results(int decimals);
  /// What of the site counts as exact for want of a covariance, as a sentence; empty for nothing.
  const std::string& Note() const { return note_; }

  /// Converts the positions of a block, radians and metres in the chain's axes, with what the block
  /// has read, and puts the columns into its results from `column` on.
  void Convert(RowBlock& block, std::size_t column, zel_cs::geomath::PointDates dates,
               std::vector<zel_cs::geomath::ChainStep>& failed) const;

 private:
  void TakeSite(const CoordinateSystem& system);
  void TakeNodes(const std::string& unit, const CoordinateSystem& system);

  zel_cs::geomath::ChainUncertainty uncertainty_;
  std::string note_;
  bool inverse_, geocentric_;
  std::size_t given_;  // 3 or 6
  std::vector<double> numbers_;
  std::vector<std::string> read_;
};

}  // namespace geomath_files::program
