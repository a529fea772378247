#include "tools/row_loop.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>

#include "files/points/point_sink.h"
#include "files/points/point_source.h"
#include "files/words/date_text.h"
#include "files/words/name_match.h"
#include "files/words/output_file.h"
#include "files/words/user_error.h"
#include "geomath/base/point_dates.h"
#include "tools/exit_status.h"
#include "tools/interrupt.h"
#include "tools/progress.h"

using zel_cs::geomath::kNoDate;

namespace geomath_files::program {
namespace {

// Rows that are read, converted together and written: enough for the batch, little memory.
constexpr std::size_t kBlockRows = 4096;

// The names of a list, none empty; none at all where nothing is given.
std::vector<std::string> NamesIn(const std::string& option, const std::string& list,
                                 std::size_t least, std::size_t most) {
  std::vector<std::string> names = SplitNames(list);
  if (list.empty()) return names;
  const bool blank = std::find(names.begin(), names.end(), "") != names.end();
  if (blank || names.size() < least || names.size() > most)
    throw UserError(fmt::format("{}: \"{}\" must be {} names separated by commas", option, list,
                                least == most ? fmt::format("{}", least) : "two or three"));
  return names;
}

ColumnChoice ChoiceOf(const PointOptions& options, const RowJob& job) {
  ColumnChoice choice;
  if (!options.noHeader) choice.names = NamesIn("--columns", options.columns, 2, 3);
  choice.heightOptional = job.heightOptional;
  choice.fixedHeight = options.fixedHeight;
  choice.fromGeometry = options.fromGeometry;
  choice.decimalComma = options.decimalComma;
  choice.gon = options.InGon();
  choice.crs = job.givenCrs;
  choice.unit = job.unit;
  choice.ignoreCrs = options.ignoreCrs;
  if (choice.names.size() == 3 && choice.fixedHeight)
    throw UserError("--fixed-height: --columns names a height column too; give one of them");
  if (choice.fromGeometry && !options.columns.empty())
    throw UserError("--from-geometry: --columns names columns; give one of them");
  return choice;
}

using ResultNames = std::vector<std::string>;

// The column that has one of the names in any letter case; null where none has.
const std::string* TakenBy(const std::vector<std::string>& columns, const ResultNames& names) {
  for (const std::string& column : columns) {
    for (const std::string& name : names) {
      if (LowerCase(name) == LowerCase(column)) return &column;
    }
  }
  return nullptr;
}

// The usual names. Where the input has one of them, all get the same number behind them, so that
// they still are seen to belong together.
ResultNames FreeNames(const ResultNames& usual, const PointSource& source) {
  const std::vector<std::string> columns = source.ColumnNames();
  const std::string* taken = TakenBy(columns, usual);
  if (!taken) return usual;
  ResultNames names = usual;
  for (int i = 2; TakenBy(columns, names); ++i) {
    for (std::size_t k = 0; k < names.size(); ++k) names[k] = fmt::format("{}_{}", usual[k], i);
  }
  std::fprintf(stderr, "geomath: %s has a column \"%s\" already; the results are %s\n",
               source.Name().c_str(), taken->c_str(), ListNames(names).c_str());
  return names;
}

void CheckChosen(const ResultNames& names, const PointSource& source) {
  const std::vector<std::string> columns = source.ColumnNames();
  if (const std::string* taken = TakenBy(columns, names))
    throw UserError(
        fmt::format("--results: {} has a column \"{}\" already", source.Name(), *taken));
  for (const std::string& name : names) {
    if (std::count_if(names.begin(), names.end(), [&](const std::string& other) {
          return LowerCase(other) == LowerCase(name);
        }) > 1)
      throw UserError(fmt::format("--results: \"{}\" stands there twice", name));
  }
}

std::vector<ResultColumn> ResultsOf(const PointOptions& options, const RowJob& job,
                                    const PointSource& source) {
  std::vector<ResultColumn> results = job.results;
  ResultNames names = NamesIn("--results", options.results, results.size(), results.size());
  if (names.empty()) {
    for (const ResultColumn& column : results) names.push_back(column.name);
    names = FreeNames(names, source);
  } else {
    CheckChosen(names, source);
  }
  for (std::size_t i = 0; i < results.size(); ++i) results[i].name = names[i];
  return results;
}

class RowLoop {
 public:
  RowLoop(const RowJob& job, PointSource& source, PointColumns& columns, PointSink& sink,
          bool decimalCommaSaid)
      : job_(job),
        source_(source),
        columns_(columns),
        sink_(sink),
        records_(kBlockRows),
        decimalCommaSaid_(decimalCommaSaid),
        progress_("rows") {
    for (std::vector<double>& column : block_.given) column.resize(kBlockRows);
    block_.result.assign(job.results.size(), std::vector<double>(kBlockRows));
    block_.problems.resize(kBlockRows);
    block_.blank.resize(kBlockRows);
    block_.also.assign(job.also.size(), std::vector<double>(kBlockRows));
    for (const std::string& name : job.also) also_.push_back(ColumnOf(name, source));
    if (!job.dates.empty()) {
      dates_ = ColumnOf(job.dates, source);
      block_.dates.resize(kBlockRows);
    }
    result_.resize(job.results.size());
  }

  int Run() {
    while (ReadBlock()) {
      FollowDecimalComma();
      job_.work(block_);
      WriteBlock();
      if (source_.WouldWait()) sink_.Flush();
      progress_.Update(rows_, source_.Done());
      if (Interrupted() || !trouble_.empty()) break;
    }
    sink_.Close();
    for (const std::string& note : sink_.Notes()) progress_.Print("geomath: " + note);
    if (failures_ > 0)
      progress_.Print(fmt::format("geomath: {} of {} rows {}; their results are empty", failures_,
                                  rows_, job_.failures));
    Warn(columns_.StaleNote());
    if (job_.summary)
      for (const std::string& line : job_.summary()) progress_.Print("geomath: " + line);
    if (job_.warning) Warn(job_.warning());
    if (Interrupted()) throw UserError(fmt::format("interrupted after {} rows", rows_));
    if (!trouble_.empty()) throw UserError(trouble_);
    return failures_ == 0 ? kExitDone : kExitSomeFailed;
  }

 private:
  // Reading may break off; the rows before that are converted and written all the same.
  bool ReadBlock() {
    std::size_t& count = block_.count;
    count = 0;
    try {
      for (; count < kBlockRows; ++count) {
        if (count > 0 && source_.WouldWait()) break;  // somebody waits for the answer
        if (!source_.Next(records_[count])) break;
        ReadRow(count);
      }
    } catch (const UserError& error) {
      trouble_ = error.what();
    }
    return count > 0;
  }

  void ReadRow(std::size_t i) {
    std::array<double, 3> point{};
    block_.blank[i] = records_[i].IsBlank();
    std::string& problem = block_.problems[i];
    problem = source_.Problem(records_[i]);
    if (problem.empty()) problem = columns_.Read(records_[i], point);
    for (std::size_t k = 0; k < also_.size(); ++k) {
      const ParsedNumber number = numbers_.Number(records_[i].Text(also_[k]));
      if (problem.empty() && !number) problem = job_.also[k] + " " + number.problem;
      block_.also[k][i] = number ? number.value : 0;
    }
    if (dates_) {
      const ParsedNumber date = DateIn(records_[i].Text(*dates_));
      if (problem.empty() && !date) problem = job_.dates + " " + date.problem;
      block_.dates[i] = date ? date.value : kNoDate;
    }
    for (std::size_t axis = 0; axis < 3; ++axis)
      block_.given[axis][i] = problem.empty() ? point[axis] : 0;
  }

  // A decimal year may have a decimal comma, as the other numbers of the file.
  static ParsedNumber DateIn(std::string_view text) {
    const std::size_t comma = text.find(',');
    if (comma == std::string_view::npos) return ParseDate(text);
    std::string written(text);
    written[comma] = '.';
    return ParseDate(written);
  }

  static std::size_t ColumnOf(const std::string& name, const PointSource& source) {
    const std::vector<std::string> columns = source.ColumnNames();
    const auto found = std::find(columns.begin(), columns.end(), name);
    if (found != columns.end()) return static_cast<std::size_t>(found - columns.begin());
    throw UserError(fmt::format("{}: there is no column \"{}\"; {}", source.Name(), Printable(name),
                                SuggestName(name, columns)));
  }

  void WriteBlock() {
    for (std::size_t i = 0; i < block_.count; ++i) {
      const Record& record = records_[i];
      if (record.IsBlank()) {
        sink_.Write(record, {});
        continue;
      }
      ++rows_;
      const bool done = block_.problems[i].empty();
      if (!done) Report(i);
      sink_.Write(record, done ? Result(i) : Converted{});
    }
  }

  Converted Result(std::size_t i) {
    for (std::size_t k = 0; k < result_.size(); ++k) result_[k] = block_.result[k][i];
    const auto& given = block_.given;
    const double y = job_.placedByResult ? result_[0] : given[0][i];
    const double x = job_.placedByResult ? result_[1] : given[1][i];
    const double z = job_.placedByResult ? result_[2] : given[2][i];
    return {true, result_, x, y, std::isnan(z) ? 0 : z};
  }

  void FollowDecimalComma() {
    if (decimalComma_ || !columns_.HasDecimalComma()) return;
    decimalComma_ = true;
    sink_.UseDecimalComma();
    if (!decimalCommaSaid_)
      progress_.Print(
          fmt::format("geomath: {}: numbers are read with a decimal comma", source_.Name()));
  }

  void Warn(const std::string& text) {
    if (!text.empty()) progress_.Print("geomath: warning: " + text);
  }

  void Report(std::size_t i) {
    ++failures_;
    progress_.Print(fmt::format("{}, {}: {}: {}", source_.Name(), source_.Place(records_[i]),
                                job_.failure, block_.problems[i]));
  }

  const RowJob& job_;
  PointSource& source_;
  PointColumns& columns_;
  PointSink& sink_;
  std::vector<Record> records_;
  RowBlock block_;
  std::vector<std::size_t> also_;     // columns of the source
  std::optional<std::size_t> dates_;  // likewise
  NumberReader numbers_;              // of those
  std::vector<double> result_;        // of a row
  bool decimalComma_ = false, decimalCommaSaid_;
  Progress progress_;
  long long rows_ = 0, failures_ = 0;
  std::string trouble_;
};

}  // namespace

void AddPointOptions(CLI::App& arguments, PointOptions& options, const std::string& defaults) {
  arguments.add_option("--columns", options.columns,
                       "names of the input columns, default " + defaults +
                           "; one with a comma stands in quotation marks");
  arguments.add_flag("--no-header", options.noHeader,
                     "the CSV input has no header; --columns names all its columns");
  arguments.add_option("--results", options.results, "names of the result columns");
  arguments.add_option("--fixed-height", options.fixedHeight,
                       "height of all points instead of a height column, in the unit of heights "
                       "(metres where nothing else is said)");
  arguments.add_flag("--ignore-crs", options.ignoreCrs,
                     "take the point geometry as it stands, whatever system the layer is in");
  arguments.add_flag("--decimal-comma", options.decimalComma,
                     "numbers of the input have a decimal comma, where that cannot be recognised");
  arguments
      .add_option("--angles,--angle", options.angles,
                  "latitudes and longitudes: degrees (the default), dms (degrees minutes seconds, "
                  "which are read anyway) or gon, in columns lat_gon and lon_gon")
      ->check(CLI::IsMember({"degrees", "dms", "gon"}));
  arguments.add_flag("--from-geometry", options.fromGeometry,
                     "coordinates from the geometry of features, whatever columns they have");
  arguments.add_option("--layer", options.layer, "layer of the input, when it has several");
}

int RunRows(const PointOptions& options, const RowJob& job) {
  const ColumnChoice choice = ChoiceOf(options, job);
  CatchInterrupts();
  const auto source = OpenPoints(
      options.input, options.layer,
      options.noHeader ? NamesOfAllColumns(options.columns) : std::vector<std::string>{});
  std::vector<std::string> inputs = job.files;
  inputs.push_back(options.input);
  RefuseOverwriting(inputs, {options.output});
  const bool fromGrid = job.given == CoordinateKind::grid;
  const bool toGrid = job.made ? *job.made == CoordinateKind::grid : !fromGrid;
  const bool inGrid = job.placedByResult ? toGrid : fromGrid;
  const ResultStyle style{ResultsOf(options, job, *source), job.placeCrs, inGrid,
                          job.placeUnit.value_or(job.unit)};
  PointColumns columns(*source, job.given, choice);
  if (!columns.Note().empty()) std::fprintf(stderr, "geomath: %s\n", columns.Note().c_str());
  // Everything that can be wrong is known before the output is created.
  const auto sink = CreatePoints(options.output, *source, style);
  return RowLoop(job, *source, columns, *sink, options.decimalComma).Run();
}

}  // namespace geomath_files::program
