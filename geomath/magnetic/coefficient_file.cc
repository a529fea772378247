#include "geomath/magnetic/coefficient_file.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "geomath/magnetic/model_text.h"
#include "geomath/platform/decimal_year.h"
#include "geomath/platform/read_number.h"

namespace zel_cs::geomath {
namespace {

using magnetic::Attempt;
using magnetic::Fields;
using magnetic::Lines;

/// What a file says, before the size of the model is known.
struct Draft {
  std::string name;
  std::optional<double> epoch, endDate;
  double editionDate = 0;
  std::optional<int> degree;  // as the file states it
  std::vector<GaussTerm> terms;
};

/// "month/day/year" as a decimal year, 0 when it is no date.
double EditionDate(std::string_view date) {
  Fields parts(date, '/');
  const auto month = ReadInteger(parts.Next()), day = ReadInteger(parts.Next()),
             year = ReadInteger(parts.Next());
  return month && day && year ? DecimalYear(*year, *month, *day).value_or(0) : 0;
}

/// n, m, g, h, ġ, ḣ. `empty` stands for a coefficient that is left out, where that is allowed.
GaussTerm ReadTerm(Fields fields, std::string_view empty, const Lines& lines) {
  const auto n = ReadInteger(fields.Next()), m = ReadInteger(fields.Next());
  double values[4];
  bool numbers = true;
  for (double& value : values) {
    const std::string_view field = fields.Next();
    const auto number = ReadNumber(field.empty() ? empty : field);
    numbers = numbers && number;
    value = number.value_or(0);
  }
  if (!n || !m || !numbers || !fields.AtEnd())
    throw CoefficientFault{lines.Number(),
                           "degree, order and four numbers with a decimal point belong there"};
  if (*n < 1 || *n > kMaxMagneticDegree || *m < 0 || *m > *n)
    throw CoefficientFault{lines.Number(), "there is no term of degree " + std::to_string(*n) +
                                               " and order " + std::to_string(*m)};
  return {*n, *m, values[0], values[1], values[2], values[3]};
}

Draft ReadCof(Lines& lines) {
  Draft draft;
  Fields header(lines.Next().value_or(""));
  draft.epoch = ReadNumber(header.Next());
  draft.name = header.Next();
  draft.editionDate = EditionDate(header.Next());
  if (!draft.epoch)
    throw CoefficientFault{lines.Number(),
                           "a line such as \"2025.0 WMM-2025 11/13/2024\" begins a "
                           "coefficient file"};
  while (const auto line = lines.Next()) {
    if (line->starts_with("9999")) return draft;
    draft.terms.push_back(ReadTerm(Fields(*line), "", lines));
  }
  throw CoefficientFault{lines.Number(),
                         "the line of nines at the end is missing: the file was cut off"};
}

void ReadShdfHeader(std::string_view line, Draft& draft) {
  const std::size_t colon = line.find(':');
  if (colon == std::string_view::npos) return;
  const std::string_view key = line.substr(1, colon - 1);
  const std::string_view value = Fields(line.substr(colon + 1)).Next();
  if (key == "ModelName") draft.name = value;
  if (key == "ModelStartDate") draft.epoch = ReadNumber(value);
  if (key == "ModelEndDate") draft.endDate = ReadNumber(value);
  if (key == "ReleaseDate") draft.editionDate = ReadNumber(value).value_or(0);
  if (key == "IntStaticDeg") draft.degree = ReadInteger(value);
}

Draft ReadShdf(Lines& lines) {
  constexpr std::string_view kInternal = "I,", kExternal = "E,";
  Draft draft;
  while (const auto line = lines.Next()) {
    if (line->starts_with('#') || line->starts_with(kExternal)) continue;
    if (line->starts_with('%')) {
      if (!draft.terms.empty()) break;  // the next model
      ReadShdfHeader(*line, draft);
    } else if (line->starts_with(kInternal)) {
      draft.terms.push_back(ReadTerm(Fields(line->substr(kInternal.size()), ','), "0", lines));
    } else {
      throw CoefficientFault{lines.Number(), "a row \"I,n,m,g,h,gdot,hdot\" belongs there"};
    }
  }
  if (!draft.epoch) throw CoefficientFault{0, "the line \"%ModelStartDate: YEAR\" is missing"};
  return draft;
}

/// Every term up to the highest degree, once.
void CheckComplete(const Draft& draft, int degree) {
  std::vector<bool> given(TermCount(degree));
  for (const GaussTerm& term : draft.terms) {
    const std::size_t index = TermIndex(term.n, term.m);
    if (given[index])
      throw CoefficientFault{0, "the term of degree " + std::to_string(term.n) + " and order " +
                                    std::to_string(term.m) + " is given twice"};
    given[index] = true;
  }
  const std::size_t terms = given.size() - 1;  // index 0 is none
  if (draft.terms.size() != terms)
    throw CoefficientFault{0, std::to_string(terms - draft.terms.size()) + " of the " +
                                  std::to_string(terms) + " terms up to degree " +
                                  std::to_string(degree) + " are missing"};
}

std::unique_ptr<WMMtype_MagneticModel> BuildModel(const Draft& draft) {
  if (draft.terms.empty()) throw CoefficientFault{0, "there are no coefficients"};
  const auto lower = [](const GaussTerm& a, const GaussTerm& b) { return a.n < b.n; };
  const int highest = std::max_element(draft.terms.begin(), draft.terms.end(), lower)->n;
  const int degree = draft.degree.value_or(highest);
  if (degree != highest)
    throw CoefficientFault{0, "the highest degree is " + std::to_string(highest) +
                                  ", the file states " + std::to_string(degree)};
  CheckComplete(draft, degree);

  auto model = AllocateMagneticModel(degree);
  if (!model) return nullptr;
  model->modelName = draft.name.substr(0, kMaxModelName);
  model->epoch = *draft.epoch;
  model->coefficientFileEndDate = draft.endDate.value_or(*draft.epoch + kModelYears);
  model->editionDate = draft.editionDate;
  for (const GaussTerm& term : draft.terms) StoreTerm(*model, term);
  return model;
}

std::unique_ptr<WMMtype_MagneticModel> ModelOf(std::string_view text) {
  Lines lines(text);
  return BuildModel(magnetic::FirstLineOf(text).starts_with('%') ? ReadShdf(lines)
                                                                 : ReadCof(lines));
}

}  // namespace

std::unique_ptr<WMMtype_MagneticModel> ParseCoefficients(std::string_view text,
                                                         CoefficientFault* fault) noexcept {
  return Attempt(fault, [&] { return ModelOf(text); });
}

std::unique_ptr<WMMtype_MagneticModel> ReadCoefficientFile(const char* path,
                                                           CoefficientFault* fault) noexcept {
  return Attempt(fault, [&] { return ModelOf(magnetic::TextOfFile(path)); });
}

}  // namespace zel_cs::geomath
