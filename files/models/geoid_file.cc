#include "files/models/geoid_file.h"

#include <fmt/format.h>
#include <gdal_priv.h>
#include <ogr_spatialref.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>
#include <sstream>

#include "files/gdal/ogr.h"
#include "files/words/name_match.h"
#include "files/words/user_error.h"
#include "geomath/base/angle.h"
#include "geomath/chain/geoid_models.h"
#include "geomath/geomath.h"

using namespace zel_cs::geomath;

namespace geomath_tools {
namespace {

template <class Model>
std::unique_ptr<RegionalGeoid> Make(const RegionalGeoidData& data) {
  return std::make_unique<Model>(data);
}

constexpr GridScheme kInterpolations[] = {
    {"RegGeoid2x2SW", Make<RegGeoid2x2SW>, false, true},
    {"RegGeoid2x2NW", Make<RegGeoid2x2NW>, true, true},
    {"RegGeoid2x2Denmark", Make<RegGeoid2x2Denmark>, true, true},
    {"RegionalGeoid", Make<RegionalGeoid>, false, false},
    {"RegGeoidSwedishInterpalation3", Make<RegGeoidSwedishInterpalation3>, true, false},
    {"RegGeoidInterpalation4", Make<RegGeoidInterpalation4>, false, false},
    {"RegGeoidInterpalation4x4SW", Make<RegGeoidInterpalation4x4SW>, false, false},
    {"RegGeoidInterpalation4x4NW", Make<RegGeoidInterpalation4x4NW>, true, false},
    {"RegGeoidIntrp_Lagrange4x4SW", Make<RegGeoidIntrp_Lagrange4x4SW>, false, false},
    {"RegGeoidIntrp_Spline4x4SW", Make<RegGeoidIntrp_Spline4x4SW>, false, false},
    {"RegGeoidInterpalation_GG2008SW", Make<RegGeoidInterpalation_GG2008SW>, false, false},
    {"RegGeoidKrigingIntrp", Make<RegGeoidKrigingIntrp>, false, false},
};
constexpr const char* kUsual = "RegGeoid2x2SW";
constexpr const char* kUsualOfWideGrids = "RegGeoidIntrp_Spline4x4SW";

const GridScheme& FindScheme(const std::string& name) {
  for (const GridScheme& row : kInterpolations)
    if (FoldName(row.name) == FoldName(name)) return row;
  throw UserError(fmt::format("interpolation \"{}\" is unknown; {}", Printable(name),
                              SuggestName(name, InterpolationNames())));
}

// Reads a raster into a grid.
class GridReader {
 public:
  explicit GridReader(const GeoidChoice& choice) : file_(choice.grid) {
    const GDALDatasetUniquePtr raster = OpenGridFile(file_);
    if (!raster || raster->GetRasterCount() < 1)
      throw UserError(
          fmt::format("{}: is no grid that can be read (GeoTIFF, GTX, BYN, ISG, NGS, "
                      "ASCII, Surfer, EHdr, XYZ){}",
                      file_, OgrComplaint()));
    PlaceNodes(*raster);
    ReadNodes(*raster->GetRasterBand(1));
    CloseSeam();
    grid_.scheme = &ChooseScheme(choice.interpolation, grid_.place, file_);
    OrderRows();
  }

  GeoidGrid Take() { return std::move(grid_); }

 private:
  [[noreturn]] void Refuse(const std::string& reason) const {
    throw UserError(fmt::format("{}: {}", file_, reason));
  }

  void PlaceNodes(GDALDataset& raster) {
    const OGRSpatialReference* system = raster.GetSpatialRef();
    if (system && !system->IsGeographic())
      Refuse("the grid is not in latitude and longitude, which geoid grids must be");
    double t[6];
    if (raster.GetGeoTransform(t) != CE_None || t[2] != 0 || t[4] != 0 || !(t[1] > 0) || t[5] == 0)
      Refuse("the grid has no position, or is rotated");
    GridPlace& place = grid_.place;
    place.columns = raster.GetRasterXSize();
    place.rows = raster.GetRasterYSize();
    place.latStep = std::abs(t[5]);
    place.lonStep = t[1];
    northFirst_ = t[5] < 0;
    const double first = t[3] + t[5] / 2;
    place.south = northFirst_ ? first - (place.rows - 1) * place.latStep : first;
    place.west = t[0] + t[1] / 2;
    if (const std::string problem = PlaceProblem(place); !problem.empty()) Refuse(problem);
  }

  // A hole is NaN, which every scheme carries into its result.
  void ReadNodes(GDALRasterBand& band) {
    const auto& [south, west, latStep, lonStep, rows, columns] = grid_.place;
    std::vector<float>& nodes = grid_.nodes;
    nodes.resize(static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns));
    if (band.RasterIO(GF_Read, 0, 0, columns, rows, nodes.data(), columns, rows, GDT_Float32, 0,
                      0) != CE_None)
      Refuse("cannot be read to its end" + OgrComplaint());
    int marked = 0, scaled = 0, shifted = 0;
    const auto noData = static_cast<float>(band.GetNoDataValue(&marked));
    const double scale = band.GetScale(&scaled), offset = band.GetOffset(&shifted);
    if (scaled && (scale == 0 || !std::isfinite(scale)))
      Refuse(fmt::format("its scale factor is {}: no height can be told from it", scale));
    for (float& z : nodes) {
      const bool hole = (marked && z == noData) || !std::isfinite(z);
      const double metres = (scaled ? scale : 1) * z + (shifted ? offset : 0);
      z = hole ? std::numeric_limits<float>::quiet_NaN() : static_cast<float>(metres);
    }
  }

  // Repeats columns past both ends of a grid around the Earth, so that every stencil is whole.
  void CloseSeam() {
    constexpr int kRepeated = 3;
    constexpr double kRounding = 1e-6;  // steps
    GridPlace& place = grid_.place;
    const double around = 360 / place.lonStep;
    if (std::abs(around - std::round(around)) > kRounding) return;
    const int period = static_cast<int>(std::round(around));
    if (place.columns < period || place.columns > period + 1 || period < kRepeated) return;
    const int wider = period + 2 * kRepeated;
    const auto width = static_cast<std::size_t>(place.columns);
    std::vector<float> closed;
    closed.reserve(static_cast<std::size_t>(place.rows) * static_cast<std::size_t>(wider));
    for (int r = 0; r < place.rows; ++r)
      for (int c = -kRepeated; c < period + kRepeated; ++c)
        closed.push_back(grid_.nodes[static_cast<std::size_t>(r) * width +
                                     static_cast<std::size_t>((c + period) % period)]);
    grid_.nodes.swap(closed);
    place.columns = wider;
    place.west -= kRepeated * place.lonStep;
  }

  void OrderRows() {
    if (northFirst_ == grid_.scheme->northFirst) return;
    const auto width = static_cast<std::ptrdiff_t>(grid_.place.columns);
    const auto begin = grid_.nodes.begin();
    for (std::ptrdiff_t low = 0, high = grid_.place.rows - 1; low < high; ++low, --high)
      std::swap_ranges(begin + low * width, begin + (low + 1) * width, begin + high * width);
  }

  std::string file_;
  bool northFirst_ = false;
  GeoidGrid grid_;
};

class GridGeoid : public LoadedGeoid {
 public:
  explicit GridGeoid(const GeoidChoice& choice)
      : grid_(GridReader(choice).Take()),
        model_(MakeGridModel(*grid_.scheme, grid_.place, grid_.nodes.data())),
        heights_(*model_) {}

  const GeoidHeight& Heights() const override { return heights_; }
  const GeoidGrid* Grid() const override { return &grid_; }

 private:
  GeoidGrid grid_;
  std::unique_ptr<RegionalGeoid> model_;
  RegionalGeoidHeight heights_;
};

/// Coefficients of one file, and what it says of them.
struct Coefficients {
  std::vector<double> C, S;
  int degrees = 0;
  double gm = 0, radius = 0;  // of a .gfc file; 0 when it says nothing
};

class CoefficientReader {
 public:
  explicit CoefficientReader(const std::string& file) : file_(file), in_(file) {
    if (!in_) throw UserError(file + ": cannot be read");
  }

  Coefficients Read() {
    const bool icgem = file_.size() > 4 && FoldName(file_.substr(file_.size() - 4)) == ".gfc";
    if (icgem) ReadHeader();
    for (std::string text; NextLine(text);) {
      std::istringstream fields(text);
      std::string key;
      if (icgem) {
        fields >> key;
        if (key != "gfc" && key != "gfct") continue;  // of gfct the static part
      }
      ReadTerm(fields);
    }
    if (result_.degrees == 0) throw UserError(file_ + ": holds no coefficients");
    return std::move(result_);
  }

 private:
  // A D stands for E in figures written by Fortran programs; # begins a comment.
  bool NextLine(std::string& text) {
    while (std::getline(in_, text)) {
      ++line_;
      text.erase(std::min(text.find('#'), text.size()));
      for (char& c : text)
        if (c == 'D' || c == 'd') c = 'e';
      if (text.find_first_not_of(" \t\r") != std::string::npos) return true;
    }
    return false;
  }

  void ReadHeader() {
    for (std::string text; std::getline(in_, text);) {
      ++line_;
      std::istringstream fields(text);
      std::string key, value;
      fields >> key >> value;
      std::replace_if(
          value.begin(), value.end(), [](char c) { return c == 'D' || c == 'd'; }, 'e');
      if (key == "end_of_head") return;
      if (key == "earth_gravity_constant") result_.gm = std::atof(value.c_str());
      if (key == "radius") result_.radius = std::atof(value.c_str());
      if (key == "norm" && value == "unnormalize")
        throw UserError(file_ + ": the coefficients are not normalised, which they must be");
    }
    throw UserError(file_ + ": has no line \"end_of_head\", as ICGEM's files do");
  }

  void ReadTerm(std::istringstream& fields) {
    constexpr int kHighestDegree = 5000;
    int n = -1, m = -1;
    std::string c, s;
    if (!(fields >> n >> m >> c >> s) || n < 0 || m < 0 || m > n || n > kHighestDegree)
      throw UserError(fmt::format("{}, line {}: degree, order and two coefficients belong there",
                                  file_, line_));
    const auto degree = static_cast<std::size_t>(n);
    const std::size_t k = degree * (degree + 1) / 2 + static_cast<std::size_t>(m);
    if (n >= result_.degrees) {
      result_.degrees = n + 1;
      result_.C.resize((degree + 1) * (degree + 2) / 2);
      result_.S.resize(result_.C.size());
    }
    result_.C[k] = std::atof(c.c_str());
    result_.S[k] = std::atof(s.c_str());
    if (!std::isfinite(result_.C[k]) || !std::isfinite(result_.S[k]))
      throw UserError(fmt::format("{}, line {}: a coefficient is not finite", file_, line_));
  }

  std::string file_;
  std::ifstream in_;
  long line_ = 0;
  Coefficients result_;
};

// Even zonal terms of the WGS84 normal field, fully normalised (C = -J/sqrt(2n + 1); J of the point
// program of EGM96, Lemoine et al. 1998), n = 2, 4, 6, 8, 10.
constexpr double kNormalJ[] = {0.108262982131e-2, -0.237091120053e-5, 0.608346498882e-8,
                               -0.142681087920e-10, 0.121439275882e-13};
constexpr double kModelGM = 3.986004418e14, kModelRadius = 6378137.0;  // what GlobalGeoid uses

// Reads the coefficients of a model and of its correction.
class ModelReader {
 public:
  explicit ModelReader(const GeoidChoice& choice)
      : potential_(CoefficientReader(choice.model).Read()) {
    Rescale();
    if (choice.subtractNormalField) SubtractNormalField();
    if (choice.correction.empty()) return;
    correction_ = CoefficientReader(choice.correction).Read();
    correction_.C.resize(potential_.C.size());
    correction_.S.resize(potential_.C.size());
  }

  GeoidCoefficients Take() {
    return {std::move(potential_.C), std::move(potential_.S), std::move(correction_.C),
            std::move(correction_.S), potential_.degrees};
  }

 private:
  void Rescale() {
    if (!(potential_.gm > 0 && potential_.radius > 0)) return;
    double factor = potential_.gm / kModelGM;
    for (std::size_t n = 0, k = 0; k < potential_.C.size(); ++n) {
      for (std::size_t m = 0; m <= n; ++m, ++k) {
        potential_.C[k] *= factor;
        potential_.S[k] *= factor;
      }
      factor *= potential_.radius / kModelRadius;
    }
  }

  void SubtractNormalField() {
    std::size_t n = 2;
    for (const double J : kNormalJ) {
      const std::size_t k = n * (n + 1) / 2;
      if (k < potential_.C.size()) potential_.C[k] += J / std::sqrt(2 * static_cast<double>(n) + 1);
      n += 2;
    }
  }

  Coefficients potential_, correction_;
};

class ModelGeoid : public LoadedGeoid {
 public:
  explicit ModelGeoid(const GeoidChoice& choice)
      : coefficients_(ModelReader(choice).Take()),
        model_(MakeHarmonicModel(coefficients_)),
        heights_(*model_) {
    WarnOfNormalField(choice);
  }

  const GeoidHeight& Heights() const override { return heights_; }
  const GeoidCoefficients* Coefficients() const override { return &coefficients_; }

 private:
  void WarnOfNormalField(const GeoidChoice& choice) {
    constexpr double kMuchOfNormalField = 1e-4;  // its C(2, 0) is -4.8e-4
    const std::vector<double>& C = coefficients_.C;
    if (C.size() < 4 || std::abs(C[3]) < kMuchOfNormalField) return;
    warning = fmt::format(
        "{}: {}", choice.model,
        choice.subtractNormalField
            ? "the coefficients held no normal field; leave out --subtract-normal-field"
            : "the coefficients still hold the normal field; --subtract-normal-field takes "
              "that of WGS84 away");
  }

  GeoidCoefficients coefficients_;
  std::unique_ptr<GlobalGeoid> model_;
  GlobalGeoidHeight heights_;
};

}  // namespace

std::vector<std::string> InterpolationNames() {
  std::vector<std::string> names;
  for (const GridScheme& row : kInterpolations) names.emplace_back(row.name);
  return names;
}

std::string PlaceProblem(const GridPlace& place) {
  constexpr double kMostNodes = 250e6;
  constexpr double kRounding = 1e-6;
  if (1.0 * place.rows * place.columns > kMostNodes)
    return fmt::format("{} by {} nodes are too many", place.rows, place.columns);
  const double north = place.south + (place.rows - 1) * place.latStep;
  const bool onEarth =
      place.south >= -90 - kRounding && north <= 90 + kRounding && std::abs(place.west) <= 540;
  return onEarth ? "" : "the grid does not lie between the poles, in degrees";
}

const GridScheme& ChooseScheme(const std::string& name, const GridPlace& place,
                               const std::string& subject) {
  const bool wide = place.LonExtent() > 180;
  const std::string usual = wide ? kUsualOfWideGrids : kUsual;
  const GridScheme& scheme = FindScheme(name.empty() ? usual : name);
  if (wide && scheme.halfTurnOnly)
    throw UserError(
        fmt::format("{}: {} serves grids of at most 180 degrees of longitude; {} "
                    "is for wider ones",
                    subject, scheme.name, usual));
  return scheme;
}

std::unique_ptr<RegionalGeoid> MakeGridModel(const GridScheme& scheme, const GridPlace& place,
                                             const float* nodes) {
  const double latStep = place.latStep * kRadPerDeg, lonStep = place.lonStep * kRadPerDeg;
  const TGridRgn region({place.south * kRadPerDeg, (place.rows - 1) * latStep,
                         place.west * kRadPerDeg, (place.columns - 1) * lonStep},
                        latStep, lonStep);
  return scheme.make(
      RegionalGeoidData(region, place.columns, place.rows, nodes, 0, L"", L"", 4, 1.0, L""));
}

std::unique_ptr<GlobalGeoid> MakeHarmonicModel(const GeoidCoefficients& c) {
  const bool corrected = !c.correctionC.empty();
  return std::make_unique<GlobalGeoid>(c.degrees, c.C.data(), c.S.data(), false, 0,
                                       corrected ? c.correctionC.data() : nullptr,
                                       corrected ? c.correctionS.data() : nullptr);
}

std::unique_ptr<LoadedGeoid> OpenGeoid(const GeoidChoice& choice) {
  if (choice.grid.empty() == choice.model.empty())
    throw UserError("a geoid is a grid or a model: give one of them");
  if (!choice.grid.empty()) return std::make_unique<GridGeoid>(choice);
  return std::make_unique<ModelGeoid>(choice);
}

}  // namespace geomath_tools
