#include <algorithm>
#include <cmath>

#include "files/models/coefficient_file.h"
#include "files/models/geoid_file.h"
#include "files/models/geoid_schemes.h"
#include "geomath/chain/geoid_models.h"
#include "geomath/geoid/global_geoid.h"
#include "js/bindings/objects.h"
#include "js/bindings/offered_files.h"

using namespace zel_cs::geomath;
using namespace geomath_files;

namespace geomath_js {
namespace {

class RegionalGeoidObject : public GeoidObject {
 public:
  RegionalGeoidObject(GeoidGrid of)
      : grid_(std::move(of)), heights_(*grid_.scheme, grid_.place, grid_.nodes.data()) {}
  const GeoidHeight& Heights() const override { return heights_; }
  json Describe() const override {
    const GridPlace& p = grid_.place;
    json described = Numbers(
        {{"south", p.south}, {"west", p.west}, {"latStep", p.latStep}, {"lonStep", p.lonStep}});
    described["rows"] = p.rows;
    described["columns"] = p.columns;
    described["interpolation"] = grid_.scheme->name;
    return described;
  }

 private:
  GeoidGrid grid_;
  GridModel heights_;
};

class GlobalGeoidObject : public GeoidObject {
 public:
  explicit GlobalGeoidObject(GeoidCoefficients of)
      : coefficients_(std::move(of)), model_(DataOf(coefficients_)), heights_(model_) {}
  const GeoidHeight& Heights() const override { return heights_; }
  json Describe() const override { return {{"maxDegree", coefficients_.degrees - 1}}; }

 private:
  static GlobalGeoidData DataOf(const GeoidCoefficients& c) {
    const bool corrected = !c.correctionC.empty();
    return {c.degrees,
            c.C.data(),
            c.S.data(),
            false,
            0,
            corrected ? c.correctionC.data() : nullptr,
            corrected ? c.correctionS.data() : nullptr};
  }

  GeoidCoefficients coefficients_;
  GlobalGeoid model_;
  GlobalGeoidHeight heights_;
};

[[noreturn]] void Refuse(const std::string& reason) { throw UserError("RegionalGeoid: " + reason); }

/// Nodes from the south or the north, in the order of the scheme, closed at the seam.
std::shared_ptr<RegionalGeoidObject> RegionalOf(GridPlace place, const GridScheme& scheme,
                                                std::vector<float> nodes, bool northFirst) {
  if (place.rows < 2 || place.columns < 2)
    Refuse("the grid must have two rows and two columns at least");
  if (nodes.size() !=
      static_cast<std::size_t>(place.rows) * static_cast<std::size_t>(place.columns))
    Refuse("the grid must have rows times columns heights");
  if (!(place.latStep > 0 && place.lonStep > 0)) Refuse("the steps must be above 0");
  if (const std::string problem = PlaceProblem(place); !problem.empty()) Refuse(problem);
  if (northFirst != scheme.northFirst)
    for (int row = 0; row < place.rows / 2; ++row)
      std::swap_ranges(nodes.begin() + row * place.columns,
                       nodes.begin() + (row + 1) * place.columns,
                       nodes.begin() + (place.rows - 1 - row) * place.columns);
  if (auto closed = CloseSeam(place, nodes.data()); !closed.empty()) nodes = std::move(closed);
  return std::make_shared<RegionalGeoidObject>(GeoidGrid{place, &scheme, std::move(nodes)});
}

double NumberAt(const json& given, const char* key) {
  if (!given.contains(key) || !given.at(key).is_number())
    Refuse(std::string("\"") + key + "\" must be a number");
  return given.at(key).get<double>();
}

int CountAt(const json& given, const char* key) {
  constexpr double kMost = 1 << 30;
  const double count = NumberAt(given, key);
  if (!(count >= 0 && count <= kMost && count == std::floor(count)))
    Refuse(std::string("\"") + key + "\" must be a count");
  return static_cast<int>(count);
}

}  // namespace

void GeoidObject::Convert(int, const Block& block) const {
  double heights[kBlock];
  TakeAngles(block, 0, AngleKind::latitude);
  TakeAngles(block, 1, AngleKind::longitude);
  Heights().Heights(block.columns[0], block.columns[1], heights, block.count);
  std::copy_n(heights, block.count, block.columns[0]);
}

std::shared_ptr<Object> MakeRegionalGeoid(const json& given) {
  if (given.contains("file")) {
    const OfferedFiles files(given.at("files"));
    return GtxGeoid(given.at("file").get<std::string>(), given.value("interpolation", ""));
  }
  const std::string bytes = BytesAt(given.at("grid"));
  std::vector<float> nodes(bytes.size() / sizeof(float));
  std::copy_n(bytes.data(), nodes.size() * sizeof(float), reinterpret_cast<char*>(nodes.data()));
  const GridPlace place{NumberAt(given, "south"),   NumberAt(given, "west"),
                        NumberAt(given, "latStep"), NumberAt(given, "lonStep"),
                        CountAt(given, "rows"),     CountAt(given, "columns")};
  return RegionalOf(place, ChooseScheme(given.value("interpolation", "")), std::move(nodes),
                    given.value("northFirst", false));
}

std::shared_ptr<GeoidObject> GtxGeoid(const std::string& file, const std::string& interpolation) {
  const std::string_view bytes = OfferedFile(file);
  const auto refuse = [&](const char* reason) { throw UserError(file + ": " + reason); };
  std::size_t at = 0;
  const auto next = [&]<class T>(T value) {  // most significant byte first
    char* to = reinterpret_cast<char*>(&value);
    std::reverse_copy(bytes.data() + at, bytes.data() + at + sizeof value, to);
    at += sizeof value;
    return value;
  };
  constexpr std::size_t kHead = 40;
  constexpr std::int32_t kMostOnSide = 1 << 20;
  if (bytes.size() < kHead) refuse("is no GTX grid: it ends inside its head");
  GridPlace place;
  place.south = next(0.0);
  place.west = next(0.0);
  place.latStep = next(0.0);
  place.lonStep = next(0.0);
  place.rows = next(std::int32_t{0});
  place.columns = next(std::int32_t{0});
  if (place.rows < 2 || place.rows > kMostOnSide || place.columns < 2 ||
      place.columns > kMostOnSide ||
      bytes.size() - kHead != std::uint64_t{4} * static_cast<unsigned>(place.rows) *
                                  static_cast<unsigned>(place.columns))
    refuse("is no GTX grid: its size is not that of its rows and columns");
  constexpr float kHole = -88.8888F, kRounding = 1e-3F;
  std::vector<float> nodes((bytes.size() - kHead) / sizeof(float));
  for (float& node : nodes) {
    node = next(0.0F);
    if (!std::isfinite(node) || std::abs(node - kHole) < kRounding) node = std::nanf("");
  }
  return RegionalOf(place, ChooseScheme(interpolation), std::move(nodes), false);
}

std::shared_ptr<Object> MakeGlobalGeoid(const json& given) {
  GeoidCoefficients c{DoublesAt(given, "cosines"), DoublesAt(given, "sines"),
                      DoublesAt(given, "correctionCosines"), DoublesAt(given, "correctionSines"),
                      0};
  const auto refuse = [](const char* reason) {
    throw UserError(std::string("GlobalGeoid: ") + reason);
  };
  if (c.correctionC.empty() != c.correctionS.empty())
    refuse("a correction needs cosines and sines");
  std::size_t terms = 0;
  while (terms < c.C.size()) terms += static_cast<std::size_t>(++c.degrees);
  const auto whole = [&](const std::vector<double>& column) { return column.size() == terms; };
  if (terms == 0 || !whole(c.C) || !whole(c.S) ||
      (!c.correctionC.empty() && !(whole(c.correctionC) && whole(c.correctionS))))
    refuse(
        "the arrays must all have (n + 1)(n + 2)/2 coefficients, n the maximum degree: degree "
        "after "
        "degree, in each the orders from 0");
  for (const auto* column : {&c.C, &c.S, &c.correctionC, &c.correctionS})
    if (!std::all_of(column->begin(), column->end(), [](double x) { return std::isfinite(x); }))
      refuse("a coefficient is not finite");
  return std::make_shared<GlobalGeoidObject>(std::move(c));
}

}  // namespace geomath_js
