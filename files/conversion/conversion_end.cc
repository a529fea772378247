#include "files/conversion/conversion_end.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "files/conversion/scaled_column.h"
#include "files/epsg/epsg_code.h"
#include "files/epsg/epsg_projection.h"
#include "files/epsg/epsg_registry.h"
#include "files/epsg/projjson.h"
#include "files/system/json_section.h"
#include "files/system/system_document.h"
#include "files/words/name_match.h"
#include "files/words/text_file.h"
#include "files/words/user_error.h"
#include "geomath/base/angle.h"

using namespace zel_cs::geomath;
using nlohmann::json;
using nlohmann::ordered_json;

namespace geomath_files {
namespace {

// A code, or two with a + between them.
struct Codes {
  explicit Codes(const std::string& text) {
    const std::size_t plus = text.find('+');
    first = WithoutAuthority(text.substr(0, plus));
    if (plus != std::string::npos) second = WithoutAuthority(text.substr(plus + 1));
    valid = IsEpsgCode(first) && (plus == std::string::npos || IsEpsgCode(second));
  }
  std::string first, second;
  bool valid;
};

std::size_t FirstCharacter(const std::string& text) {
  return text.find_first_not_of(" \t\r\n\xEF\xBB\xBF");
}

// A system file says nothing of a "type".
bool IsProjJson(const std::string& text, const std::string& name) {
  const std::size_t first = FirstCharacter(text);
  if (first == std::string::npos || text[first] != '{') return false;
  const json document = ParseJson(text, name);
  return document.contains("type") || document.contains("$schema");
}

bool IsWkt(const std::string& text) {
  const std::size_t first = FirstCharacter(text);
  return first != std::string::npos && std::isalpha(static_cast<unsigned char>(text[first])) &&
         text.find('[') != std::string::npos;
}

}  // namespace

class EndReader {
 public:
  EndReader(const EpsgRegistry& registry, ConversionEnd& end) : registry_(registry), end_(end) {}

  void Read(const std::string& text) {
    const Codes codes(text);
    std::error_code ignored;
    if (codes.valid)
      TakeCodes(codes);
    else if (text == "-" || std::filesystem::exists(text, ignored))
      TakeFile(text);
    else if (IsWkt(text))
      TakeRegistered(registry_.CrsOfText(text, "the coordinate system"), text);
    else
      throw UserError(
          fmt::format("\"{}\" is no EPSG code, such as EPSG:31467 or EPSG:25832+7837, and no file; "
                      "geomath system --find finds codes by name or place",
                      Printable(text)));
  }

 private:
  [[noreturn]] void Refuse(const std::string& why) const {
    throw UserError(end_.title_ + ": " + why);
  }

  void TakeFile(const std::string& path) {
    const std::string text = ReadSystemText(path), name = InputName(path);
    if (path != "-") end_.files_.push_back(path);
    if (IsWkt(text) || IsProjJson(text, name))
      TakeRegistered(registry_.CrsOfText(text, name), text);
    else
      TakeSystem(ParseSystem(text, name), name);
  }

  void TakeSystem(std::unique_ptr<CoordinateSystem> system, const std::string& name) {
    end_.kind_ = EndKind::projected;
    end_.title_ = system->Name().empty() ? name : fmt::format("{} ({})", name, system->Name());
    end_.units_ = system->Units();
    const Codes codes(system->GeographicCrs());
    if (codes.valid)
      end_.geographic_ = registry_.Crs(codes.first).geographic;
    else if (IsWkt(system->GeographicCrs()))
      end_.geographic_ = registry_.CrsOfText(system->GeographicCrs(), name).geographic;
    if (end_.geographic_.empty())
      Refuse(
          "does not name the system of its positions, without which nobody knows how it hangs "
          "together with others: \"crs\": {\"geographic\": \"EPSG:4258\"}");
    end_.ellipsoidalHeights_ = true;
    if (system->Area()) end_.area_ = *system->Area();
    end_.crs_ = system->GridCrs();
    for (const std::string& file : system->Files())
      if (!file.empty()) end_.files_.push_back(file);
    end_.system_ = std::move(system);
  }

  void TakeCodes(const Codes& codes) {
    TakeRegistered(registry_.Crs(codes.first), "EPSG:" + codes.first);
    if (codes.second.empty()) return;
    if (!end_.vertical_.empty()) Refuse("has a system of heights already");
    if (end_.kind_ == EndKind::geocentric) Refuse("its coordinates have no heights");
    TakeVertical(registry_.Crs(codes.second));
  }

  void TakeVertical(const RegisteredCrs& crs) {
    if (crs.document.value("type", "") != "VerticalCRS")
      throw UserError(fmt::format("EPSG:{} {}: is no system of heights", crs.code, crs.name));
    const json& axis = crs.document.at("coordinate_system").at("axis").at(0);
    if (axis.value("direction", "") != "up")
      throw UserError(fmt::format("EPSG:{} {}: counts depths", crs.code, crs.name));
    end_.vertical_ = crs.code;
    end_.ellipsoidalHeights_ = false;
    end_.units_.height = LengthUnitOf(MemberOf(axis, "unit"));
    end_.title_ += fmt::format(" + EPSG:{} {}", crs.code, crs.name);
    for (std::string* text : {&end_.crs_, &end_.definition_})
      if (text->starts_with("EPSG:")) *text += "+" + crs.code;
  }

  void TakeCompound(const RegisteredCrs& crs) {
    if (crs.horizontal.empty() || crs.vertical.empty())
      Refuse("the parts of the pair are none of the registry");
    TakeRegistered(registry_.Crs(crs.horizontal), "EPSG:" + crs.horizontal);
    TakeVertical(registry_.Crs(crs.vertical));
  }

  // `definition` is what a layer of it carries.
  void TakeRegistered(const RegisteredCrs& crs, const std::string& definition) {
    end_.title_ = crs.code.empty() ? crs.name : fmt::format("EPSG:{} {}", crs.code, crs.name);
    const std::string type = crs.document.value("type", "?");
    if (type == "CompoundCRS") return TakeCompound(crs);
    if (type == "VerticalCRS")
      Refuse(
          fmt::format("is a system of heights alone; a horizontal one stands before it: "
                      "EPSG:25832+{}",
                      crs.code));
    if (type != "ProjectedCRS" && type != "GeographicCRS" && type != "GeodeticCRS")
      Refuse(fmt::format("is a {}, which cannot be converted", type));
    end_.geographic_ = crs.geographic;
    if (crs.geographic.empty())
      Refuse("the registry has no geographic system of its datum, and so no operation");
    NoteDeprecation(crs);
    end_.area_ = crs.area;
    end_.definition_ = end_.crs_ = crs.code.empty() ? definition : "EPSG:" + crs.code;
    const json& axes = crs.document.at("coordinate_system");
    end_.ellipsoidalHeights_ = axes.at("axis").size() == 3;
    if (type == "ProjectedCRS")
      TakeProjection(ProjectionOf(crs.document, end_.title_));
    else if (axes.value("subtype", "") == "Cartesian")
      TakeGeocentric(crs.document);
    else
      TakeGeographic(crs.document);
  }

  void NoteDeprecation(const RegisteredCrs& crs) {
    if (!crs.deprecated) return;
    std::string successors;
    for (const std::string& each : crs.successors) successors += " EPSG:" + each;
    end_.notes_.push_back(end_.title_ + " is deprecated" +
                          (successors.empty() ? "" : "; in its place:" + successors));
  }

  void TakeProjection(const EpsgProjection& projection) {
    end_.kind_ = EndKind::projected;
    json file = {{"local", EllipsoidFigures(projection.ellipsoid)},
                 {"projection", projection.section}};
    if (!projection.axes.empty()) file["axes"] = {{"grid", projection.axes}};
    end_.system_ = MakeSystem(file, end_.title_);
    end_.units_.plane = projection.unit;
    // A layer's x and y are east and north: others would be taken for what they are not.
    if (!projection.axes.empty()) end_.crs_.clear();
  }

  void TakeGeocentric(const json& document) {
    end_.kind_ = EndKind::geocentric;
    end_.ellipsoid_ = EllipsoidOf(document);
    end_.crs_.clear();
    if (PrimeMeridianOf(document) != 0) Refuse("its X does not lie on the meridian of Greenwich");
  }

  void TakeGeographic(const json& document) {
    end_.kind_ = EndKind::geographic;
    const double meridian = PrimeMeridianOf(document);
    end_.meridian_ = meridian * kRadPerDeg;
    const json& axis = document.at("coordinate_system").at("axis").at(0);
    const double unit = Degrees({{"value", 1}, {"unit", axis.value("unit", json("degree"))}});
    if (unit != 1) {
      end_.crs_.clear();  // a layer of it would not be in degrees
      end_.notes_.push_back(end_.title_ + ": latitudes and longitudes are degrees here");
    }
    if (meridian != 0)
      end_.notes_.push_back(fmt::format(
          "{}: longitudes count from its own meridian, {:.7g} degrees", end_.title_, meridian));
  }

  const EpsgRegistry& registry_;
  ConversionEnd& end_;
};

ConversionEnd::ConversionEnd(const EpsgRegistry& registry, const std::string& text) {
  EndReader(registry, *this).Read(text);
}

std::string ConversionEnd::Projected() const {
  constexpr std::string_view kRegistered = "EPSG:";
  if (kind_ != EndKind::projected || !definition_.starts_with(kRegistered)) return "";
  return definition_.substr(kRegistered.size(), definition_.find('+') - kRegistered.size());
}

namespace {

// Longitudes within half a turn of their meridian.
void TurnLongitudes(double* longitudes, std::size_t count, double turn) {
  if (turn == 0) return;
  for (std::size_t i = 0; i < count; ++i)
    longitudes[i] = std::remainder(longitudes[i] + turn, kTwoPi);
}

void MarkFailures(const double* a, const double* b, const double* c, std::size_t count,
                  ChainStep step, ChainStep* failed) {
  for (std::size_t i = 0; i < count; ++i)
    failed[i] =
        std::isfinite(a[i]) && std::isfinite(b[i]) && std::isfinite(c[i]) ? ChainStep::none : step;
}

}  // namespace

// A system file may count positions to the south or west.
void ConversionEnd::CountEastAndNorth(double* a, double* b, std::size_t count) const {
  Multiply(a, count, system_->Geographic().northSign);
  Multiply(b, count, system_->Geographic().eastSign);
}

void ConversionEnd::ToPositions(double* a, double* b, double* c, std::size_t count,
                                PointDates dates, ChainStep* failed) const {
  Multiply(c, count, units_.height.metres);
  if (kind_ == EndKind::geographic) {
    TurnLongitudes(b, count, meridian_);
  } else if (kind_ == EndKind::geocentric) {
    ellipsoid_.XYZ_to_BLH_Batch(a, b, c, count);
  } else {
    const bool northFirst = system_->Grid().northFirst;
    for (double* plane : {a, b}) Multiply(plane, count, units_.plane.metres);
    system_->Chain().ToGlobalDatedBatch(dates, northFirst ? a : b, northFirst ? b : a, c, count, 1,
                                        failed);
    if (system_->Geographic().northFirst != northFirst) std::swap_ranges(a, a + count, b);
    CountEastAndNorth(a, b, count);
    return;
  }
  MarkFailures(a, b, c, count, ChainStep::input, failed);
}

void ConversionEnd::FromPositions(double* a, double* b, double* c, std::size_t count,
                                  PointDates dates, ChainStep* failed) const {
  if (kind_ == EndKind::geographic) {
    TurnLongitudes(b, count, -meridian_);
  } else if (kind_ == EndKind::geocentric) {
    ellipsoid_.BLH_to_XYZ_Batch(a, b, c, count);
  } else {
    const bool northFirst = system_->Geographic().northFirst;
    CountEastAndNorth(a, b, count);
    system_->Chain().ToLocalDatedBatch(dates, northFirst ? a : b, northFirst ? b : a, c, count, 1,
                                       failed);
    if (system_->Grid().northFirst != northFirst) std::swap_ranges(a, a + count, b);
    for (double* plane : {a, b}) Divide(plane, count, units_.plane.metres);
  }
  Divide(c, count, units_.height.metres);
  if (kind_ != EndKind::projected) MarkFailures(a, b, c, count, ChainStep::input, failed);
}

}  // namespace geomath_files
