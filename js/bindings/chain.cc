#include <fmt/format.h>

#include <cmath>

#include "files/system/shift_section.h"
#include "files/system/system_file.h"
#include "js/bindings/objects.h"
#include "js/bindings/offered_files.h"

using namespace zel_cs::geomath;
using namespace geomath_files;

namespace geomath_js {
namespace {

// The dated ones have the dates of the points, decimal years, in the fourth column.
enum ChainOperation { kToLocal, kToGlobal, kToLocalDated, kToGlobalDated };

constexpr const char* kFrames[] = {"global", "local"};  // by GeoidFrame

GeoidFrame FrameOf(const json& given) {
  const std::string name = given.value("geoidFrame", kFrames[0]);
  if (name != kFrames[0] && name != kFrames[1])
    throw UserError(fmt::format("CoordinateChain: \"geoidFrame\" is \"{}\"; known: \"{}\", \"{}\"",
                                name, kFrames[0], kFrames[1]));
  return name == kFrames[0] ? GeoidFrame::global : GeoidFrame::local;
}

double UnitAt(const json& given, const char* key) {
  const double metres = given.value(key, 1.0);
  if (!(metres > 0 && std::isfinite(metres)))
    throw UserError("CoordinateChain: a unit is a number of metres above 0");
  return metres;
}

std::string AxesText(const wchar_t* axes) {
  const std::wstring text = axes ? axes : L"NE";
  return {text.begin(), text.end()};
}

std::shared_ptr<ChainObject> ChainOf(CoordinateSystem& system) {
  auto object = std::make_shared<ChainObject>();
  const CoordinateChain& read = system.Chain();
  object->global = std::make_shared<EllipsoidObject>(*read.GetGlobalEllipsoid());
  if (const Datum* datum = system.SevenParameters())
    object->datum = std::make_shared<DatumObject>(
        std::make_shared<EllipsoidObject>(system.LocalEllipsoid()), *datum);
  object->fixedHeight = system.FixedHeight();
  const NamedProjection& named = system.Named();
  const Ellipsoid& on = system.LocalEllipsoid();
  object->projection = std::make_shared<ProjectionObject>(*named.kind, named.values, on.a, on.invF,
                                                          AxesText(named.projection->GetNEAxes()),
                                                          AxesText(named.projection->GetBLAxes()));
  if (const LoadedGeoid* geoid = system.Geoid()) {
    object->geoid = SharedGeoid(*geoid);
    object->geoidFrame = read.GetGeoidFrame();
  }
  if (const LocalToGrid* site = read.GetLocalization())
    object->localization = std::make_shared<SiteObject>(*site);
  if (const GridToGround* ground = read.GetGround())
    object->ground = std::make_shared<GroundObject>(*ground);
  for (SystemShift& shift : system.ReleaseShifts())
    object->shifts.push_back(std::make_shared<SystemShift>(std::move(shift)));
  object->date = system.Date();
  object->unit = system.Units().plane.metres;
  object->heightUnit = system.Units().height.metres;
  object->Join();
  return object;
}

}  // namespace

void ChainObject::Convert(int operation, const Block& block) const {
  auto& [first, second, third, years, e, f, g, h] = block.columns;
  auto* const failedAt = reinterpret_cast<ChainStep*>(block.steps);
  const bool toLocal = operation == kToLocal || operation == kToLocalDated;
  const bool dated = operation == kToLocalDated || operation == kToGlobalDated;
  if (!dated && chain.NeedsDates() && std::isnan(date))
    throw UserError(
        "CoordinateChain: a frame that moves needs the date of the positions: give an \"epoch\"");
  const PointDates dates = dated ? PointDates(years) : PointDates(date);
  if (toLocal) {
    TakePosition(block, projection.get());
    chain.ToLocalDatedBatch(dates, first, second, third, block.count, 1, failedAt);
  } else {
    if (!projection) TakePosition(block, nullptr);
    if (projection && unit != 1) Multiply(block, 0, unit), Multiply(block, 1, unit);
    if (heightUnit != 1) Multiply(block, 2, heightUnit);
    chain.ToGlobalDatedBatch(dates, first, second, third, block.count, 1, failedAt);
    DropBeyondTheMap(block, 3);
  }
  if (!toLocal || !projection) {  // angles
    GiveAngles(block, 0);
    GiveAngles(block, 1);
  }
  if (!toLocal) return;
  if (projection && unit != 1) Multiply(block, 0, 1 / unit), Multiply(block, 1, 1 / unit);
  if (heightUnit != 1) Multiply(block, 2, 1 / heightUnit);
}

json ChainObject::Describe() const {
  json described = {{"unit", unit},
                    {"heightUnit", heightUnit},
                    {"shifts", shifts.size()},
                    {"needsEpoch", chain.NeedsDates()}};
  if (projection) described["projection"] = projection->Describe();
  return described;
}

void ChainObject::TakeParts(const ChainObject& other) {
  global = other.global;
  datum = other.datum;
  fixedHeight = other.fixedHeight;
  shifts = other.shifts;
  projection = other.projection;
  geoid = other.geoid;
  geoidFrame = other.geoidFrame;
  localization = other.localization;
  ground = other.ground;
  unit = other.unit;
  heightUnit = other.heightUnit;
  date = other.date;
}

// Steps on different ellipsoids would give coordinates that look right and are not.
void ChainObject::RequireOneEllipsoid() const {
  const auto other = datum ? datum->ellipsoid : global;
  if (!projection || !other) return;
  const Ellipsoid &grid = projection->projection->GetEllipsoid(), &on = other->ellipsoid;
  constexpr double kSameMetres = 1e-3;  // publishers round their axes to a millimetre
  if (std::abs(on.a - grid.a) <= kSameMetres && std::abs(on.b - grid.b) <= kSameMetres) return;
  throw UserError(
      fmt::format("CoordinateChain: the projection stands on Ellipsoid({}, {}), {} on "
                  "Ellipsoid({}, {}): they must share one ellipsoid",
                  grid.a, grid.invF, datum ? "the datum" : "without a datum the global coordinates",
                  on.a, on.invF));
}

void ChainObject::Join() {
  RequireOneEllipsoid();
  chain = CoordinateChain();
  if (global) chain.SetGlobalEllipsoid(&global->ellipsoid);
  if (fixedHeight) {
    if (!datum) throw UserError("CoordinateChain: \"fixedHeight\" needs a datum");
    fixedHeightDatum_.emplace(global->ellipsoid, datum->datum, *fixedHeight);
  } else if (datum) {
    chain.SetDatum(&datum->datum);
  }
  std::vector<const SystemShift*> inOrder;
  for (const auto& shift : shifts) inOrder.push_back(shift.get());
  AddShifts(chain, inOrder, fixedHeightDatum_ ? &*fixedHeightDatum_ : nullptr);
  if (projection) chain.SetProjection(projection->projection.get());
  if (geoid) chain.SetGeoid(&geoid->Heights(), geoidFrame);
  if (localization) chain.SetLocalization(&localization->site);
  if (ground) chain.SetGround(&ground->ground);
}

std::shared_ptr<Object> MakeChain(const json& given) {
  auto object = std::make_shared<ChainObject>();
  object->global = PartAt<EllipsoidObject>(given, "globalEllipsoid");
  object->datum = PartAt<DatumObject>(given, "datum");
  if (!object->global && object->datum) object->global = EllipsoidAt({});
  object->projection = PartAt<ProjectionObject>(given, "projection");
  object->geoid = PartAt<GeoidObject>(given, "geoid");
  object->geoidFrame = FrameOf(given);
  object->localization = PartAt<SiteObject>(given, "localization");
  object->ground = PartAt<GroundObject>(given, "ground");
  if (given.contains("fixedHeight")) object->fixedHeight = given.at("fixedHeight").get<double>();
  if (given.contains("epoch")) object->date = given.at("epoch").get<double>();
  object->unit = UnitAt(given, "unit");
  object->heightUnit = UnitAt(given, "heightUnit");
  object->Join();
  return object;
}

std::shared_ptr<Object> MakeSystemChain(const json& given) {
  const OfferedFiles files(given.at("files"));
  const auto system =
      ParseSystem(given.at("text").get<std::string>(), given.value("name", "system"));
  return ChainOf(*system);
}

}  // namespace geomath_js
