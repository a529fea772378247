#include "tools/row_loop.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <memory>

#include "files/points/point_sink.h"
#include "files/points/point_source.h"
#include "files/words/name_match.h"
#include "files/words/output_file.h"
#include "files/words/user_error.h"
#include "tools/exit_status.h"
#include "tools/interrupt.h"
#include "tools/progress.h"

namespace geomath_tools {
namespace {

// Rows that are read, converted together and written: enough for the batch, little memory.
constexpr std::size_t kBlockRows = 4096;

// The names of a comma-separated list; between `least` and three of them, none empty.
std::vector<std::string> SplitNames(const std::string& option, const std::string& list,
                                    std::size_t least) {
  if (list.empty()) return {};
  std::vector<std::string> names = CLI::detail::split(list, ',');
  const bool blank = std::find(names.begin(), names.end(), "") != names.end();
  if (blank || names.size() < least || names.size() > 3)
    throw UserError(fmt::format("{}: \"{}\" must be {} names separated by commas", option, list,
                                least == 3 ? "three" : "two or three"));
  return names;
}

ColumnChoice ChoiceOf(const PointOptions& options, const RowJob& job) {
  ColumnChoice choice{SplitNames("--columns", options.columns, 2), options.fixedHeight,
                      job.givenCrs, options.ignoreCrs};
  if (choice.names.size() == 3 && choice.fixedHeight)
    throw UserError("--fixed-height: --columns names a height column too; give one of them");
  return choice;
}

using ResultNames = std::array<std::string, 3>;

// The column that has one of the names in any letter case; null where none has.
const std::string* TakenBy(const std::vector<std::string>& columns, const ResultNames& names) {
  for (const std::string& column : columns) {
    for (const std::string& name : names) {
      if (LowerCase(name) == LowerCase(column)) return &column;
    }
  }
  return nullptr;
}

// The usual names. Where the input has one of them, all three get the same number behind them, so
// that they still are seen to belong together.
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

ResultNames ChosenNames(const std::vector<std::string>& chosen, const PointSource& source) {
  ResultNames names;
  std::copy(chosen.begin(), chosen.end(), names.begin());
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
  return names;
}

ResultNames NamesOf(const PointOptions& options, const RowJob& job, const PointSource& source) {
  const std::vector<std::string> chosen = SplitNames("--results", options.results, 3);
  return chosen.empty() ? FreeNames(job.names, source) : ChosenNames(chosen, source);
}

class RowLoop {
 public:
  RowLoop(const RowJob& job, PointSource& source, const PointColumns& columns, PointSink& sink)
      : job_(job),
        source_(source),
        columns_(columns),
        sink_(sink),
        records_(kBlockRows),
        progress_("rows") {
    for (auto* columnsOf : {&block_.given, &block_.result}) {
      for (std::vector<double>& column : *columnsOf) column.resize(kBlockRows);
    }
    block_.problems.resize(kBlockRows);
  }

  int Run() {
    while (ReadBlock()) {
      job_.work(block_);
      WriteBlock();
      progress_.Update(rows_, source_.Done());
      if (Interrupted() || !trouble_.empty()) break;
    }
    sink_.Close();
    for (const std::string& note : sink_.Notes()) progress_.Print("geomath: " + note);
    if (failures_ > 0)
      progress_.Print(fmt::format("geomath: {} of {} rows {}; their results are empty", failures_,
                                  rows_, job_.failures));
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
      for (; count < kBlockRows && source_.Next(records_[count]); ++count) ReadRow(count);
    } catch (const UserError& error) {
      trouble_ = error.what();
    }
    return count > 0;
  }

  void ReadRow(std::size_t i) {
    std::array<double, 3> point{};
    std::string& problem = block_.problems[i];
    problem = source_.Problem(records_[i]);
    if (problem.empty()) problem = columns_.Read(records_[i], point);
    for (std::size_t axis = 0; axis < 3; ++axis)
      block_.given[axis][i] = problem.empty() ? point[axis] : 0;
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

  Converted Result(std::size_t i) const {
    const auto& place = job_.placedByResult ? block_.result : block_.given;
    const auto& [first, second, third] = block_.result;
    return {true, {first[i], second[i], third[i]}, place[1][i], place[0][i], place[2][i]};
  }

  void Report(std::size_t i) {
    ++failures_;
    progress_.Print(fmt::format("{}, {}: {}: {}", source_.Name(), source_.Place(records_[i]),
                                job_.failure, block_.problems[i]));
  }

  const RowJob& job_;
  PointSource& source_;
  const PointColumns& columns_;
  PointSink& sink_;
  std::vector<Record> records_;
  RowBlock block_;
  Progress progress_;
  long long rows_ = 0, failures_ = 0;
  std::string trouble_;
};

}  // namespace

void AddPointOptions(CLI::App& arguments, PointOptions& options, const std::string& defaults) {
  arguments.add_option("--columns", options.columns,
                       "names of the input columns, default " + defaults);
  arguments.add_option("--results", options.results, "names of the three result columns");
  arguments.add_option("--fixed-height", options.fixedHeight,
                       "height of all points, metres, instead of a height column");
  arguments.add_flag("--ignore-crs", options.ignoreCrs,
                     "take the point geometry as it stands, whatever system the layer is in");
  arguments.add_option("--layer", options.layer, "layer of the input, when it has several");
}

int RunRows(const PointOptions& options, const RowJob& job) {
  const ColumnChoice choice = ChoiceOf(options, job);
  CatchInterrupts();
  const auto source = OpenPoints(options.input, options.layer);
  std::vector<std::string> inputs = job.files;
  inputs.push_back(options.input);
  RefuseOverwriting(inputs, {options.output});
  const ResultStyle style{NamesOf(options, job, *source), job.decimals, job.placeCrs};
  const PointColumns columns(*source, job.given, choice);
  if (!columns.Note().empty()) std::fprintf(stderr, "geomath: %s\n", columns.Note().c_str());
  // Everything that can be wrong is known before the output is created.
  const auto sink = CreatePoints(options.output, *source, style);
  return RowLoop(job, *source, columns, *sink).Run();
}

}  // namespace geomath_tools
