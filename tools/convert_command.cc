#include "tools/convert_command.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "files/points/point_columns.h"
#include "files/points/point_sink.h"
#include "files/points/point_source.h"
#include "files/system/system_file.h"
#include "files/words/user_error.h"
#include "geomath/base/angle.h"
#include "geomath/chain/coordinate_chain.h"
#include "tools/command.h"
#include "tools/progress.h"

using namespace zel_cs::geomath;

namespace geomath_tools {
namespace {

struct ConvertOptions {
  std::string system, input, output, layer;
  bool inverse = false;
  std::string columns, results;  // as given: names separated by commas
  std::optional<double> fixedHeight;
  int decimals = 4;
};

// Ctrl-C ends the work after the rows in hand, so that the output is whole as far as it goes.
volatile std::sig_atomic_t interrupted = 0;
void Interrupt(int) { interrupted = 1; }

void CatchInterrupts() {
  for (const int signal : {SIGINT, SIGTERM}) {
#ifdef _WIN32
    std::signal(signal, Interrupt);
#else
    struct sigaction action = {};
    action.sa_handler = Interrupt;
    action.sa_flags = static_cast<int>(SA_RESETHAND);  // the second one ends the program at once
    sigaction(signal, &action, nullptr);               // and reading that waits is broken off
#endif
  }
}

// Rows that are read, converted together and written: enough for the batch, little memory.
constexpr std::size_t kBlockRows = 4096;

// Of an angle in degrees: 1e-6 of a degree is 0.1 m or less, so that these figures show at least
// what the chosen decimals of a metre show.
constexpr int kMoreDecimalsForDegrees = 6;

// The name, or the name with a number behind it where a column has it already.
std::string FreeName(const std::string& name, const std::vector<std::string>& taken) {
  const auto isTaken = [&](const std::string& candidate) {
    return std::any_of(taken.begin(), taken.end(), [&](const std::string& other) {
      return CLI::detail::to_lower(other) == CLI::detail::to_lower(candidate);
    });
  };
  std::string free = name;
  for (int i = 2; isTaken(free); ++i) free = fmt::format("{}_{}", name, i);
  return free;
}

// The names of a comma-separated list; between `least` and three of them, none empty.
std::vector<std::string> SplitNames(const std::string& option, const std::string& list,
                                    std::size_t least) {
  std::vector<std::string> names =
      list.empty() ? std::vector<std::string>() : CLI::detail::split(list, ',');
  const bool blank = std::find(names.begin(), names.end(), "") != names.end();
  if (!list.empty() && (blank || names.size() < least || names.size() > 3))
    throw UserError(fmt::format("{}: \"{}\" must be {} names separated by commas", option, list,
                                least == 3 ? "three" : "two or three"));
  return names;
}

ColumnChoice ChoiceOf(const ConvertOptions& options) {
  ColumnChoice choice{SplitNames("--columns", options.columns, 2), options.fixedHeight};
  if (choice.names.size() == 3 && choice.fixedHeight)
    throw UserError("--fixed-height: --columns names a height column too; give one of them");
  return choice;
}

ResultStyle StyleOf(const ConvertOptions& options, const PointSource& source) {
  const std::vector<std::string> columns = source.ColumnNames();
  std::vector<std::string> names = {"n", "e", "h_local"};
  if (options.inverse) names = {"lat", "lon", "h_global"};
  const std::vector<std::string> chosen = SplitNames("--results", options.results, 3);
  ResultStyle style;
  for (std::size_t i = 0; i < names.size(); ++i) {
    style.names[i] = chosen.empty() ? FreeName(names[i], columns) : chosen[i];
    if (std::find(columns.begin(), columns.end(), style.names[i]) != columns.end())
      throw UserError(
          fmt::format("--results: {} has a column \"{}\" already", source.Name(), style.names[i]));
  }
  const int metres = options.decimals;
  const int horizontal = options.inverse ? metres + kMoreDecimalsForDegrees : metres;
  style.decimals = {horizontal, horizontal, metres};
  return style;
}

// Converts the rows of a source block by block and hands them to a sink.
class Conversion {
 public:
  Conversion(const ConvertOptions& options, const CoordinateSystem& system, PointSource& source,
             const PointColumns& columns, PointSink& sink)
      : inverse_(options.inverse),
        geographicGeometry_(options.inverse || IsGeoJsonName(options.output)),
        system_(system),
        source_(source),
        sink_(sink),
        columns_(columns),
        records_(kBlockRows),
        given_(kBlockRows),
        problems_(kBlockRows),
        first_(kBlockRows),
        second_(kBlockRows),
        height_(kBlockRows),
        failed_(kBlockRows),
        progress_("rows") {}

  int Run() {
    CatchInterrupts();
    try {
      while (const std::size_t count = ReadBlock()) {
        ConvertBlock(count);
        WriteBlock(count);
        progress_.Update(rows_, source_.Done());
        if (interrupted || !trouble_.empty()) break;
      }
    } catch (const UserError&) {
      sink_.Close();
      throw;
    }
    sink_.Close();
    if (failures_ > 0)
      progress_.Print(
          fmt::format("geomath: {} of {} rows could not be converted; their results "
                      "are empty",
                      failures_, rows_));
    if (interrupted) throw UserError(fmt::format("interrupted after {} rows", rows_));
    if (!trouble_.empty()) throw UserError(trouble_);
    return failures_ == 0 ? kExitDone : kExitSomeFailed;
  }

 private:
  // Reading may break off; the rows before that are converted and written all the same.
  std::size_t ReadBlock() {
    std::size_t count = 0;
    try {
      while (count < kBlockRows && source_.Next(records_[count])) ++count;
    } catch (const UserError& error) {
      trouble_ = error.what();
    }
    return count;
  }

  AxisPair GivenAxes() const { return inverse_ ? system_.Grid() : system_.Geographic(); }
  AxisPair ResultAxes() const { return inverse_ ? system_.Geographic() : system_.Grid(); }

  void ConvertBlock(std::size_t count) {
    const double unit = inverse_ ? 1 : kRadPerDeg;
    for (std::size_t i = 0; i < count; ++i) {
      std::array<double, 3>& point = given_[i];
      point = {};
      problems_[i] = source_.Problem(records_[i]);
      if (problems_[i].empty()) problems_[i] = columns_.Read(records_[i], point);
      first_[i] = point[0] * unit;
      second_[i] = point[1] * unit;
      height_[i] = point[2];
      if (!GivenAxes().northFirst) std::swap(first_[i], second_[i]);
    }
    const CoordinateChain& chain = system_.Chain();
    if (inverse_)
      chain.ToGlobalBatch(first_.data(), second_.data(), height_.data(), count, 1, failed_.data());
    else
      chain.ToLocalBatch(first_.data(), second_.data(), height_.data(), count, 1, failed_.data());
  }

  void WriteBlock(std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
      const Record& record = records_[i];
      if (record.IsBlank()) {
        sink_.Write(record, {});
        continue;
      }
      ++rows_;
      const bool done = problems_[i].empty() && failed_[i] == ChainStep::none;
      if (!done) Report(i);
      sink_.Write(record, done ? Result(i) : Converted{});
    }
  }

  Converted Result(std::size_t i) const {
    const double unit = inverse_ ? kDegPerRad : 1;
    Converted converted;
    converted.done = true;
    converted.result = {first_[i] * unit, second_[i] * unit, height_[i]};
    if (!ResultAxes().northFirst) std::swap(converted.result[0], converted.result[1]);
    const bool ofGiven = geographicGeometry_ && !inverse_;
    const std::array<double, 3>& place = ofGiven ? given_[i] : converted.result;
    converted.x = place[1];
    converted.y = place[0];
    converted.z = place[2];
    return converted;
  }

  void Report(std::size_t i) {
    ++failures_;
    const std::string reason = !problems_[i].empty() ? problems_[i]
                                                     : fmt::format("{} cannot convert this point",
                                                                   ChainStepName(failed_[i]));
    progress_.Print(fmt::format("{}, {}: not converted: {}", source_.Name(),
                                source_.Place(records_[i]), reason));
  }

  bool inverse_, geographicGeometry_;
  const CoordinateSystem& system_;
  PointSource& source_;
  PointSink& sink_;
  const PointColumns& columns_;

  std::vector<Record> records_;
  std::vector<std::array<double, 3>> given_;
  std::vector<std::string> problems_;
  std::vector<double> first_, second_, height_;
  std::vector<ChainStep> failed_;

  Progress progress_;
  long long rows_ = 0, failures_ = 0;
  std::string trouble_;
};

int Convert(const ConvertOptions& options) {
  const auto system = ReadSystemFile(options.system);
  const auto source = OpenPoints(options.input, options.layer);
  RefuseSameFile(options.input, options.output);
  const ResultStyle style = StyleOf(options, *source);
  // Everything that can be wrong is known before the output is created, which destroys an old one.
  const CoordinateKind kind = options.inverse ? CoordinateKind::grid : CoordinateKind::geographic;
  const PointColumns columns(*source, kind, ChoiceOf(options));
  const auto sink = CreatePoints(options.output, *source, style);
  return Conversion(options, *system, *source, columns, *sink).Run();
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
      .add_option("INPUT", options->input,
                  "points: CSV, GeoJSON, GeoPackage, Shapefile; - for CSV from standard input")
      ->required();
  arguments
      .add_option("-o,--output", options->output,
                  "output file, replaced if it exists: .csv, .geojson, .gpkg, .shp; - for CSV "
                  "on standard output")
      ->required();
  arguments.add_flag("--inverse", options->inverse, "from local to global coordinates");
  arguments.add_option("--columns", options->columns,
                       "names of the input columns, default lat,lon,h (--inverse: n,e,h_local or "
                       "n,e,h)");
  arguments.add_option("--results", options->results, "names of the three result columns");
  arguments.add_option("--fixed-height", options->fixedHeight,
                       "height of all points, metres, instead of a height column");
  arguments
      .add_option("--decimals", options->decimals,
                  "decimals of metres in CSV output, default 4; degrees get 6 more")
      ->check(CLI::Range(0, 9));
  arguments.add_option("--layer", options->layer, "layer of the input, when it has several");
  return [options] { return Convert(*options); };
}

}  // namespace geomath_tools
