#include "files/models/coefficient_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <optional>
#include <string_view>
#include <utility>

#include "files/words/name_match.h"
#include "files/words/user_error.h"
#include "geomath/base/ellipsoid.h"
#include "geomath/platform/read_number.h"

using namespace zel_cs::geomath;

namespace geomath_files {
namespace {

// Even zonal terms of the WGS84 normal field, fully normalised (C = -J/sqrt(2n + 1); J of the point
// program of EGM96, Lemoine et al. 1998), n = 2, 4, 6, 8, 10.
constexpr double kNormalJ[] = {0.108262982131e-2, -0.237091120053e-5, 0.608346498882e-8,
                               -0.142681087920e-10, 0.121439275882e-13};
constexpr int kHighestDegree = 5000;

constexpr std::string_view kBlanks = " \t\r";

// Takes the next field from a line, empty when there is none.
std::string_view TakeField(std::string_view& line) {
  line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
  const std::string_view field = line.substr(0, line.find_first_of(kBlanks));
  line.remove_prefix(field.size());
  return field;
}

std::size_t IndexOf(int n, int m) {
  return static_cast<std::size_t>(n) * (static_cast<std::size_t>(n) + 1) / 2 +
         static_cast<std::size_t>(m);
}

/// Coefficients of one file, and what it says of them.
struct Coefficients {
  std::vector<double> C, S;
  int degrees = 0;
  double gm = 0, radius = 0;  // of a .gfc file; 0 when there is no head
};

class CoefficientReader {
 public:
  /// Every term from `lowestDegree` on has to be there.
  CoefficientReader(const std::string& file, int lowestDegree)
      : file_(file), lowest_(lowestDegree), in_(file) {
    if (!in_) throw UserError(file + ": cannot be read");
  }

  Coefficients Read() {
    const bool icgem = file_.size() > 4 && FoldName(file_.substr(file_.size() - 4)) == ".gfc";
    if (icgem) ReadHead();
    for (std::string text; NextLine(text);) {
      std::string_view fields = text;
      const std::string_view key = icgem ? TakeField(fields) : "";
      if (icgem && key != "gfc" && key != "gfct") continue;
      ReadTerm(fields, key == "gfct");  // of gfct the static part
    }
    if (result_.degrees == 0) throw UserError(file_ + ": holds no coefficients");
    CheckComplete();
    return std::move(result_);
  }

 private:
  [[noreturn]] void Refuse(const std::string& reason) const {
    throw UserError(fmt::format("{}, line {}: {}", file_, line_, reason));
  }

  // As std::getline, of a line that ends.
  bool GetLine(std::string& text) {
    constexpr std::size_t kLongestLine = 1 << 16;  // bytes; a comment may be a paragraph
    text.clear();
    std::streambuf& bytes = *in_.rdbuf();
    constexpr int kEnd = std::char_traits<char>::eof();
    int c = bytes.sbumpc();
    if (c == kEnd) return false;
    ++line_;
    for (; c != kEnd && c != '\n'; c = bytes.sbumpc()) {
      if (text.size() == kLongestLine)
        Refuse(fmt::format("a line of more than {} KiB: this is no coefficient file",
                           kLongestLine >> 10));
      text += static_cast<char>(c);
    }
    return true;
  }

  // The next line that holds more than a comment, which # begins.
  bool NextLine(std::string& text) {
    constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
    while (GetLine(text)) {
      if (line_ == 1 && text.starts_with(kUtf8Mark)) text.erase(0, kUtf8Mark.size());
      text.erase(std::min(text.find('#'), text.size()));
      if (text.find_first_not_of(kBlanks) != std::string::npos) return true;
    }
    return false;
  }

  double NumberIn(std::string_view field, const char* what) const {
    if (const auto number = ReadNumber(field)) return *number;
    const bool comma = field.find(',') != std::string_view::npos;
    Refuse(fmt::format("{}: \"{}\" is not a number{}", what, Printable(field),
                       comma ? " (write the decimal point as \".\")" : ""));
  }

  // What stands before "begin_of_head" is free text.
  void ReadHead() {
    for (std::string text; GetLine(text);) {
      std::string_view fields = text;
      const std::string_view key = TakeField(fields), value = TakeField(fields);
      if (key == "end_of_head") return CheckHead();
      if (key == "begin_of_head") head_ = {};
      if (key == "earth_gravity_constant") head_.gm = {line_, std::string(value)};
      if (key == "radius") head_.radius = {line_, std::string(value)};
      if (key == "max_degree") head_.degree = {line_, std::string(value)};
      if (key == "norm") head_.norm = value;
    }
    throw UserError(file_ + ": has no line \"end_of_head\", as ICGEM's files do");
  }

  struct HeadLine {
    long line = 0;
    std::string value;
  };
  struct Head {
    HeadLine gm, radius, degree;
    std::string norm;
  };

  // A number of the head that must be near that of the Earth.
  double ConstantOf(const HeadLine& given, const char* key, double near, const char* unit) {
    constexpr double kEarth = 1e-3;  // models differ by 1e-6
    if (given.line == 0)
      throw UserError(fmt::format("{}: its head has no line \"{}\"", file_, key));
    const long end = std::exchange(line_, given.line);
    const double value = NumberIn(given.value, key);
    if (!(std::abs(value / near - 1) < kEarth))
      Refuse(fmt::format("{} {} is not that of the Earth in {}, about {}", key, given.value, unit,
                         near));
    line_ = end;
    return value;
  }

  void CheckHead() {
    if (head_.norm == "unnormalized" || head_.norm == "unnormalize")
      throw UserError(file_ + ": the coefficients are not normalised, which they must be");
    result_.gm = ConstantOf(head_.gm, "earth_gravity_constant", kModelGM, "m3/s2");
    result_.radius = ConstantOf(head_.radius, "radius", kWgs84A, "m");
  }

  void ReadTerm(std::string_view fields, bool mayRepeat) {
    const auto n = ReadInteger(TakeField(fields)), m = ReadInteger(TakeField(fields));
    const std::string_view c = TakeField(fields), s = TakeField(fields);
    if (!n || !m || s.empty() || *n < 0 || *m < 0 || *m > *n || *n > kHighestDegree)
      Refuse("degree, order and two coefficients belong there");
    if (*n >= result_.degrees) {
      result_.degrees = *n + 1;
      result_.C.resize(IndexOf(*n, *n) + 1);
      result_.S.resize(result_.C.size());
      given_.resize(result_.C.size());
    }
    const std::size_t k = IndexOf(*n, *m);
    if (given_[k] && !mayRepeat)
      Refuse(fmt::format("the term of degree {} and order {} is given twice", *n, *m));
    given_[k] = true;
    result_.C[k] = NumberIn(c, "cosine coefficient");
    result_.S[k] = NumberIn(s, "sine coefficient");
  }

  void CheckComplete() const {
    const int highest = result_.degrees - 1;
    for (int n = lowest_; n <= highest; ++n)
      for (int m = 0; m <= n; ++m)
        if (!given_[IndexOf(n, m)])
          throw UserError(
              fmt::format("{}: holds no term of degree {} and order {}, but others up to "
                          "degree {}: it is not whole",
                          file_, n, m, highest));
    const auto stated = ReadInteger(head_.degree.value);
    if (stated && *stated > highest)
      throw UserError(fmt::format("{}: ends with degree {}, its head says {}: it is not whole",
                                  file_, highest, *stated));
  }

  std::string file_;
  int lowest_;
  std::ifstream in_;
  long line_ = 0;
  Head head_;
  std::vector<bool> given_;
  Coefficients result_;
};

// From the constants of a .gfc file to those of GlobalGeoid.
void Rescale(Coefficients& potential) {
  if (potential.gm == 0) return;
  double factor = potential.gm / kModelGM;
  for (std::size_t n = 0, k = 0; k < potential.C.size(); ++n) {
    for (std::size_t m = 0; m <= n; ++m, ++k) {
      potential.C[k] *= factor;
      potential.S[k] *= factor;
    }
    factor *= potential.radius / kWgs84A;
  }
}

void SubtractNormalField(Coefficients& potential) {
  int n = 2;
  for (const double J : kNormalJ) {
    if (n < potential.degrees) potential.C[IndexOf(n, 0)] += J / std::sqrt(2.0 * n + 1);
    n += 2;
  }
}

std::string NormalFieldWarning(const CoefficientFiles& files, const std::vector<double>& C) {
  constexpr double kMuchOfNormalField = 1e-4;  // its C(2, 0) is -4.8e-4
  if (C.size() <= IndexOf(2, 0) || std::abs(C[IndexOf(2, 0)]) < kMuchOfNormalField) return "";
  return fmt::format(
      "{}: {}", files.model,
      files.subtractNormalField
          ? "the coefficients held no normal field; leave out --subtract-normal-field"
          : "the coefficients still hold the normal field; --subtract-normal-field takes "
            "that of WGS84 away");
}

}  // namespace

CoefficientSet ReadCoefficients(const CoefficientFiles& files) {
  constexpr int kLowestUsed = 2;  // degrees 0 and 1 of the potential are not summed
  Coefficients potential = CoefficientReader(files.model, kLowestUsed).Read(), correction;
  Rescale(potential);
  if (files.subtractNormalField) SubtractNormalField(potential);
  std::string warning = NormalFieldWarning(files, potential.C);
  if (!files.correction.empty()) {
    correction = CoefficientReader(files.correction, 0).Read();
    if (warning.empty() && correction.degrees != potential.degrees)
      warning = fmt::format("{}: ends with degree {}, the model with {}", files.correction,
                            correction.degrees - 1, potential.degrees - 1);
    correction.C.resize(potential.C.size());
    correction.S.resize(potential.C.size());
  }
  return {{std::move(potential.C), std::move(potential.S), std::move(correction.C),
           std::move(correction.S), potential.degrees},
          std::move(warning)};
}

std::unique_ptr<GlobalGeoid> MakeHarmonicModel(const GeoidCoefficients& c) {
  const bool corrected = !c.correctionC.empty();
  return std::make_unique<GlobalGeoid>(c.degrees, c.C.data(), c.S.data(), false, 0,
                                       corrected ? c.correctionC.data() : nullptr,
                                       corrected ? c.correctionS.data() : nullptr);
}

}  // namespace geomath_files
