#include "tools/convert_command.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "files/points/point_sink.h"
#include "files/system/system_file.h"
#include "geomath/base/angle.h"
#include "geomath/chain/coordinate_chain.h"
#include "tools/row_loop.h"

using namespace zel_cs::geomath;

namespace geomath_tools {
namespace {

struct ConvertOptions {
  std::string system;
  PointOptions points;
  bool inverse = false;
  int decimals = 4;
};

// Of an angle in degrees: 1e-6 of a degree is 0.1 m or less, so that these figures show at least
// what the chosen decimals of a metre show.
constexpr int kMoreDecimalsForDegrees = 6;

// Converts the rows of a block together.
class Conversion {
 public:
  Conversion(const CoordinateSystem& system, bool inverse)
      : chain_(system.Chain()),
        inverse_(inverse),
        given_(inverse ? system.Grid() : system.Geographic()),
        results_(inverse ? system.Geographic() : system.Grid()) {}

  void operator()(RowBlock& block) {
    const std::size_t count = block.count;
    failed_.resize(count);
    auto &first = block.result[0], &second = block.result[1], &height = block.result[2];
    Copy(block.given, inverse_ ? 1 : kRadPerDeg, given_, block.result, count);
    if (inverse_)
      chain_.ToGlobalBatch(first.data(), second.data(), height.data(), count, 1, failed_.data());
    else
      chain_.ToLocalBatch(first.data(), second.data(), height.data(), count, 1, failed_.data());
    Copy(block.result, inverse_ ? kDegPerRad : 1, results_, block.result, count);
    for (std::size_t i = 0; i < count; ++i) {
      if (block.problems[i].empty() && failed_[i] != ChainStep::none)
        block.problems[i] = fmt::format("{} cannot convert this point", ChainStepName(failed_[i]));
    }
  }

 private:
  // Between north first and the order of the axes, which is the same exchange both ways.
  template <class From>
  static void Copy(const From& from, double unit, AxisPair axes,
                   std::vector<std::vector<double>>& to, std::size_t count) {
    const std::size_t north = axes.northFirst ? 0 : 1;
    for (std::size_t i = 0; i < count; ++i) {
      const double first = from[north][i] * unit, second = from[1 - north][i] * unit;
      to[0][i] = first;
      to[1][i] = second;
      to[2][i] = from[2][i];
    }
  }

  const CoordinateChain& chain_;
  bool inverse_;
  AxisPair given_, results_;
  std::vector<ChainStep> failed_;
};

int Convert(const ConvertOptions& options) {
  const auto system = ReadSystemFile(options.system);
  const int metres = options.decimals, degrees = metres + kMoreDecimalsForDegrees;
  RowJob job;
  job.failure = "not converted";
  job.failures = "could not be converted";
  if (options.inverse) {
    job.given = CoordinateKind::grid;
    job.results = {{"lat", degrees}, {"lon", degrees}, {"h_global", metres}};
  } else {
    job.given = CoordinateKind::geographic;
    job.results = {{"n", metres}, {"e", metres}, {"h_local", metres}};
  }
  job.placedByResult = options.inverse || !IsGeoJsonName(options.points.output);
  const std::string& positions = system->GeographicCrs();
  job.givenCrs = options.inverse ? system->GridCrs() : positions;
  job.placeCrs = job.placedByResult && !options.inverse ? system->GridCrs() : positions;
  job.files = system->Files();
  job.files.push_back(options.system);
  job.work = Conversion(*system, options.inverse);
  return RunRows(options.points, job);
}

}  // namespace

std::function<int()> PrepareConvert(CLI::App& arguments) {
  const auto options = std::make_shared<ConvertOptions>();
  arguments.footer(
      "Forward, latitude, longitude (decimal degrees, or degrees minutes seconds) and height\n"
      "become northing, easting and height (columns n, e, h_local); with --inverse the other\n"
      "way (columns lat, lon, h_global). All columns of the input travel through unchanged.\n"
      "A row that cannot be converted keeps its place with empty results and is reported.\n"
      "Exit status: 0 all rows converted, 1 some rows not, 2 stopped.");
  arguments
      .add_option("--system", options->system, "JSON file that describes the coordinate system")
      ->required();
  arguments
      .add_option("INPUT", options->points.input,
                  "points: CSV, GeoJSON, GeoPackage, Shapefile; - for CSV from standard input")
      ->required();
  arguments
      .add_option("-o,--output", options->points.output,
                  "output file, replaced if it exists: .csv, .geojson, .gpkg, .shp; - for CSV "
                  "on standard output")
      ->required();
  arguments.add_flag("--inverse", options->inverse, "from local to global coordinates");
  AddPointOptions(arguments, options->points, "lat,lon,h (--inverse: n,e,h_local or n,e,h)");
  arguments
      .add_option("--decimals", options->decimals,
                  "decimals of metres in CSV output, default 4; degrees get 6 more")
      ->check(CLI::Range(0, 9));
  return [options] { return Convert(*options); };
}

}  // namespace geomath_tools
