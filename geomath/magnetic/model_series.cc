#include "geomath/magnetic/model_series.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "geomath/magnetic/model_text.h"
#include "geomath/platform/read_number.h"

namespace zel_cs::geomath {
namespace {

using magnetic::Attempt;
using magnetic::Fields;
using magnetic::Lines;

/// Reads the layout .shc.
class ShcReader {
 public:
  explicit ShcReader(std::string_view text) : lines_(text) {}

  MagneticModelSeries Read() {
    ReadHeader();
    ReadEpochs();
    MakeModels();
    std::size_t rows = 0;
    for (; const auto line = NextLine(); ++rows) ReadRow(Fields(*line));
    const auto terms = static_cast<std::size_t>(degree_ * (degree_ + 2));  // g and h
    if (rows != terms)
      throw CoefficientFault{lines_.Number(), std::to_string(terms - rows) + " of the " +
                                                  std::to_string(terms) + " rows up to degree " +
                                                  std::to_string(degree_) + " are missing"};
    return std::move(models_);
  }

 private:
  [[noreturn]] void Refuse(const char* reason) const {
    throw CoefficientFault{lines_.Number(), reason};
  }

  // The next line that is no comment.
  std::optional<std::string_view> NextLine() {
    while (const auto line = lines_.Next()) {
      if (!line->starts_with('#')) return line;
      if (name_.empty()) name_ = magnetic::Trimmed(line->substr(1));
    }
    return std::nullopt;
  }

  void ReadHeader() {
    constexpr int kLinear = 2, kMostEpochs = 1000;
    Fields fields(NextLine().value_or(""));
    const auto lowest = ReadInteger(fields.Next()), highest = ReadInteger(fields.Next()),
               epochs = ReadInteger(fields.Next()), order = ReadInteger(fields.Next());
    if (!lowest || !highest || !epochs || !order)
      Refuse("lowest and highest degree, number of epochs and spline order belong there");
    if (*lowest != 1 || *highest < 1 || *highest > kMaxMagneticDegree)
      Refuse("the degrees must begin with 1 and reach at most 133");
    if (*order != kLinear || *epochs < 2 || *epochs > kMostEpochs)
      Refuse("the coefficients must be linear in time (spline order 2) between two epochs or more");
    degree_ = *highest;
    values_.resize(static_cast<std::size_t>(*epochs));
  }

  // One number for each epoch.
  void ReadValues(Fields fields) {
    for (double& value : values_) {
      const auto number = ReadNumber(fields.Next());
      if (!number) Refuse("a number with a decimal point for each epoch belongs there");
      value = *number;
    }
    if (!fields.AtEnd()) Refuse("there are more numbers than epochs");
  }

  void ReadEpochs() {
    ReadValues(Fields(NextLine().value_or("")));
    epochs_ = values_;
    if (std::adjacent_find(epochs_.begin(), epochs_.end(), std::greater_equal<>()) != epochs_.end())
      Refuse("the epochs must rise");
  }

  void MakeModels() {
    const auto empty = AllocateMagneticModel(degree_);
    if (!empty) throw std::bad_alloc();
    empty->modelName = name_.substr(0, kMaxModelName);
    models_.assign(epochs_.size() - 1, *empty);
    for (std::size_t i = 0; i < models_.size(); ++i) {
      models_[i].epoch = epochs_[i];
      models_[i].coefficientFileEndDate = epochs_[i + 1];
    }
    given_.resize(2 * TermCount(degree_));
  }

  void ReadRow(Fields fields) {
    const auto n = ReadInteger(fields.Next()), m = ReadInteger(fields.Next());
    if (!n || !m || *n < 1 || *n > degree_ || *m < -*n || *m > *n)
      Refuse("a degree and an order up to those of the first line belong there");
    const std::size_t index = TermIndex(*n, std::abs(*m));
    const bool sine = *m < 0;
    if (given_[2 * index + sine]) Refuse("the term is given twice");
    given_[2 * index + sine] = true;
    ReadValues(fields);
    for (std::size_t i = 0; i < models_.size(); ++i) {
      WMMtype_MagneticModel& model = models_[i];
      (sine ? model.h : model.g)[index] = values_[i];
      (sine ? model.hDot : model.gDot)[index] =
          (values_[i + 1] - values_[i]) / (epochs_[i + 1] - epochs_[i]);
    }
  }

  Lines lines_;
  std::string name_;
  int degree_ = 0;
  std::vector<double> epochs_, values_;
  std::vector<bool> given_;  // cosine and sine of each term
  MagneticModelSeries models_;
};

/// A COF file has a name where .shc has its second number.
bool IsShc(std::string_view text) {
  const std::string_view first = magnetic::FirstLineOf(text);
  Fields fields(first);
  fields.Next();
  return first.starts_with('#') || ReadInteger(fields.Next());
}

MagneticModelSeries SeriesOf(std::string_view text) {
  if (IsShc(text)) return ShcReader(text).Read();
  MagneticModelSeries models;
  CoefficientFault fault;
  const auto model = ParseCoefficients(text, &fault);
  if (!model) throw CoefficientFault(std::move(fault));
  models.push_back(std::move(*model));
  return models;
}

}  // namespace

MagneticModelSeries ReadModelSeries(const char* path, CoefficientFault* fault) noexcept {
  return Attempt(fault, [&] { return SeriesOf(magnetic::TextOfFile(path)); });
}

MagneticModelSeries ParseModelSeries(std::string_view text, CoefficientFault* fault) noexcept {
  return Attempt(fault, [&] { return SeriesOf(text); });
}

}  // namespace zel_cs::geomath
