#include "tools/row_loop.h"

#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <memory>
#include <thread>

#include "files/points/point_sink.h"
#include "files/points/point_source.h"
#include "files/words/date_text.h"
#include "files/words/name_match.h"
#include "files/words/output_file.h"
#include "files/words/user_error.h"
#include "geomath/base/point_dates.h"
#include "tools/exit_status.h"
#include "tools/interrupt.h"
#include "tools/ordered_pipeline.h"
#include "tools/progress.h"

using zel_cs::geomath::kNoDate;

namespace geomath_files::program {
namespace {

// Rows that are converted together: enough for the batch, and they stay in the cache.
constexpr std::size_t kBlockRows = 512;

constexpr int kMostJobs = 1024;

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
  RefuseHeightOfSpace(options, job);
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
                                    const PointSource& source, const PointColumns& columns) {
  std::vector<ResultColumn> results = job.results;
  if (job.heightOptional && columns.LackHeights()) results.resize(2);
  ResultNames names = NamesIn("--results", options.results, results.size(), job.results.size());
  if (names.size() > results.size()) results = job.results;
  if (names.empty()) {
    for (const ResultColumn& column : results) names.push_back(column.name);
    names = FreeNames(names, source);
  } else {
    CheckChosen(names, source);
  }
  for (std::size_t i = 0; i < results.size(); ++i) results[i].name = names[i];
  return results;
}

// The column of the source that has that name.
std::size_t ColumnOf(const std::string& name, const PointSource& source) {
  const std::vector<std::string> columns = source.ColumnNames();
  const auto found = std::find(columns.begin(), columns.end(), name);
  if (found != columns.end()) return static_cast<std::size_t>(found - columns.begin());
  throw UserError(fmt::format("{}: there is no column \"{}\"; {}", source.Name(), Printable(name),
                              SuggestName(name, columns)));
}

// A decimal year may have a decimal comma, as the other numbers of the file.
ParsedNumber DateIn(std::string_view text) {
  const std::size_t comma = text.find(',');
  if (comma == std::string_view::npos) return ParseDate(text);
  std::string written(text);
  written[comma] = '.';
  return ParseDate(written);
}

// Rows on their way from the source to the sink.
struct Batch {
  RawRows rows;
  CsvRows begin;                 // where its rows begin, without their text
  double done = -1;              // of the source
  bool lastForNow = false;       // the next rows have not arrived
  char mark = 0;                 // decimal mark that the rows before have shown
  PointsRead read;               // what these have shown
  std::vector<Record> records;   // of the rows in hand
  RowBlock block;                // likewise
  std::vector<double> result;    // of a row
  std::string text;              // printed
  std::vector<std::string> bad;  // reports of rows without result
  long long count = 0;           // of rows
};

class RowLoop {
 public:
  RowLoop(const RowJob& job, PointSource& source, const PointColumns& columns, PointSink& sink,
          std::size_t results, std::size_t jobs)
      : job_(job),
        source_(source),
        columns_(columns),
        sink_(sink),
        results_(results),
        jobs_(jobs > 0 ? jobs : std::max(std::thread::hardware_concurrency(), 1u)),
        ahead_(source.Csv() && sink.IsText() && !job.inOrder),
        batches_(PipelinePlaces(jobs_)),
        read_(columns.Start()),
        mark_(read_.numbers.Mark()),
        decimalComma_(mark_ == ','),
        progress_("rows") {
    for (const std::string& name : job.also) also_.push_back(ColumnOf(name, source));
    if (!job.dates.empty()) dates_ = ColumnOf(job.dates, source);
    for (Batch& batch : batches_) MakeRoom(batch);
  }

  int Run() {
    const PipelineStages stages = {[this](std::size_t i) { return Read(batches_[i]); },
                                   [this](std::size_t i) { WorkAhead(batches_[i]); },
                                   [this](std::size_t i) { Write(batches_[i]); }};
    // The first rows alone: nearly always they show how numbers are written.
    if (stages.read(0)) {
      stages.work(0);
      stages.write(0);
      RunPipeline(jobs_, stages);
    }
    sink_.Close();
    for (const std::string& note : sink_.Notes()) progress_.Print("geomath: " + note);
    if (failures_ > 0)
      progress_.Print(fmt::format("geomath: {} of {} rows {}; their results are empty", failures_,
                                  rows_, job_.failures));
    if (const std::string note = columns_.StaleNote(read_); !note.empty()) Warn(note);
    if (job_.summary)
      for (const std::string& line : job_.summary(tally_)) progress_.Print("geomath: " + line);
    if (job_.warnings)
      for (const std::string& line : job_.warnings(tally_)) Warn(line);
    if (Interrupted()) throw UserError(fmt::format("interrupted after {} rows", rows_));
    if (!trouble_.empty()) throw UserError(trouble_);
    return failures_ == 0 ? kExitDone : kExitSomeFailed;
  }

 private:
  void MakeRoom(Batch& batch) const {
    batch.records.resize(kBlockRows);
    batch.result.resize(results_);
    RowBlock& block = batch.block;
    for (std::vector<double>& column : block.given) column.resize(kBlockRows);
    block.result.assign(job_.results.size(), std::vector<double>(kBlockRows));
    block.problems.resize(kBlockRows);
    block.blank.resize(kBlockRows);
    block.also.assign(job_.also.size(), std::vector<double>(kBlockRows));
    if (dates_) block.dates.resize(kBlockRows);
  }

  // Reading may break off; the rows before that are converted and written all the same.
  bool Read(Batch& batch) {
    if (Interrupted() || !trouble_.empty()) return false;
    try {
      if (!source_.Read(batch.rows)) return false;
    } catch (const UserError& error) {
      trouble_ = error.what();
      return false;
    }
    batch.begin.at = batch.rows.csv.at;
    batch.begin.line = batch.rows.csv.line;
    batch.done = source_.Done();
    batch.lastForNow = source_.WouldWait();
    return true;
  }

  void WorkAhead(Batch& batch) {
    if (!ahead_) return;
    batch.mark = mark_;
    ConvertText(batch);
  }

  void ConvertText(Batch& batch) const {
    batch.read = {NumberReader(batch.mark), 0, {}};
    Convert(batch, batch.read);
  }

  void Write(Batch& batch) {
    if (!ahead_) {
      Convert(batch, read_);
    } else {
      if (batch.mark != mark_) {  // it was not known when the work began
        batch.mark = mark_;
        batch.rows.csv.at = batch.begin.at;
        batch.rows.csv.line = batch.begin.line;
        ConvertText(batch);
      }
      read_.numbers = batch.read.numbers;
    }
    mark_ = read_.numbers.Mark();
    TellDecimalComma();
    for (const std::string& report : batch.bad) progress_.Print(report);
    sink_.WriteText(batch.text);
    failures_ += static_cast<long long>(batch.bad.size());
    rows_ += batch.count;
    tally_.Add(batch.block.tally);
    if (batch.lastForNow) sink_.Flush();
    progress_.Update(rows_, batch.done);
  }

  void Convert(Batch& batch, PointsRead& read) const {
    batch.text.clear();
    batch.bad.clear();
    batch.count = 0;
    batch.block.tally = {};
    while (TakeBlock(batch, read)) {
      job_.work(batch.block);
      for (std::size_t i = 0; i < batch.block.count; ++i)
        WriteRow(batch, i, read.numbers.Mark() == ',');
    }
  }

  bool TakeBlock(Batch& batch, PointsRead& read) const {
    std::size_t& count = batch.block.count;
    for (count = 0; count < kBlockRows; ++count) {
      if (!source_.Take(batch.rows, batch.records[count])) break;
      ReadRow(batch.records[count], count, batch.block, read);
    }
    return count > 0;
  }

  void ReadRow(const Record& record, std::size_t i, RowBlock& block, PointsRead& read) const {
    std::array<double, 3> point{};
    block.blank[i] = record.IsBlank();
    std::string& problem = block.problems[i];
    problem = source_.Problem(record);
    if (problem.empty()) problem = columns_.Read(record, read, point);
    for (std::size_t k = 0; k < also_.size(); ++k) {
      const ParsedNumber number = read.numbers.Number(record.Text(also_[k]));
      if (problem.empty() && !number) problem = job_.also[k] + " " + number.problem;
      block.also[k][i] = number ? number.value : 0;
    }
    if (dates_) {
      const ParsedNumber date = DateIn(record.Text(*dates_));
      if (problem.empty() && !date) problem = job_.dates + " " + date.problem;
      block.dates[i] = date ? date.value : kNoDate;
    }
    for (std::size_t axis = 0; axis < 3; ++axis)
      block.given[axis][i] = problem.empty() ? point[axis] : 0;
  }

  void WriteRow(Batch& batch, std::size_t i, bool decimalComma) const {
    const Record& record = batch.records[i];
    Converted converted;
    if (!record.IsBlank()) {
      ++batch.count;
      const std::string& problem = batch.block.problems[i];
      if (problem.empty())
        converted = Result(batch, i);
      else
        batch.bad.push_back(fmt::format("{}, {}: {}: {}", source_.Name(), source_.Place(record),
                                        job_.failure, problem));
    }
    if (sink_.IsText())
      sink_.Print(record, converted, decimalComma, batch.text);
    else
      sink_.Write(record, converted);
  }

  Converted Result(Batch& batch, std::size_t i) const {
    std::vector<double>& result = batch.result;
    for (std::size_t k = 0; k < result.size(); ++k) result[k] = batch.block.result[k][i];
    const auto& given = batch.block.given;
    const double y = job_.placedByResult ? result[0] : given[0][i];
    const double x = job_.placedByResult ? result[1] : given[1][i];
    const double z = job_.placedByResult ? batch.block.result[2][i] : given[2][i];
    return {true, result, x, y, z};
  }

  void TellDecimalComma() {
    if (decimalComma_ || mark_ != ',') return;
    decimalComma_ = true;
    progress_.Print(
        fmt::format("geomath: {}: numbers are read with a decimal comma", source_.Name()));
  }

  void Warn(const std::string& text) { progress_.Print("geomath: warning: " + text); }

  const RowJob& job_;
  PointSource& source_;
  const PointColumns& columns_;
  PointSink& sink_;
  std::vector<std::size_t> also_;     // columns of the source
  std::optional<std::size_t> dates_;  // likewise
  const std::size_t results_;         // columns of them that are written
  const std::size_t jobs_;
  const bool ahead_;  // rows are worked on while those before them are
  std::vector<Batch> batches_;
  PointsRead read_;         // by the rows that are written
  std::atomic<char> mark_;  // of numbers in them
  bool decimalComma_;       // the user knows of it
  Progress progress_;
  RowTally tally_;
  long long rows_ = 0, failures_ = 0;
  std::string trouble_;
};

}  // namespace

void RowTally::Count(std::size_t number) {
  if (counts.size() <= number) counts.resize(number + 1);
  ++counts[number];
}

long long RowTally::operator[](std::size_t number) const {
  return number < counts.size() ? counts[number] : 0;
}

void RowTally::Add(const RowTally& later) {
  counts.resize(std::max(counts.size(), later.counts.size()));
  for (std::size_t i = 0; i < later.counts.size(); ++i) counts[i] += later.counts[i];
  if (first.empty()) first = later.first;
}

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
  arguments
      .add_option("--jobs", options.jobs,
                  "threads that work on rows, all processors by default; the output is the same")
      ->check(CLI::Range(0, kMostJobs));
}

void RefuseHeightOfSpace(const PointOptions& options, const RowJob& job) {
  if (job.given == CoordinateKind::geocentric && options.fixedHeight)
    throw UserError("--fixed-height: X, Y and Z are given, of which none is a height");
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
  const PointColumns columns(*source, job.given, choice);
  const ResultStyle style{ResultsOf(options, job, *source, columns), job.placeCrs, inGrid,
                          job.placeUnit.value_or(job.unit), !columns.LackHeights()};
  if (!columns.Note().empty()) std::fprintf(stderr, "geomath: %s\n", columns.Note().c_str());
  // Everything that can be wrong is known before the output is created.
  const auto sink = CreatePoints(options.output, *source, style);
  return RowLoop(job, *source, columns, *sink, style.columns.size(), options.jobs).Run();
}

}  // namespace geomath_files::program
