#include "python/bindings/epsg.h"

#include <fmt/format.h>
#include <pybind11/pybind11.h>

namespace geomath_python {
namespace {

std::string AxesText(const wchar_t* axes) {
  const std::wstring text = axes ? axes : L"NE";
  return {text.begin(), text.end()};
}

}  // namespace

std::unique_ptr<geomath_tools::CoordinateSystem> SystemOfEpsg(
    int code, const geomath_tools::DatumWish& wish) {
  const pybind11::gil_scoped_release unlocked;
  const auto made = geomath_tools::MakeEpsgSystem(std::to_string(code), wish);
  return geomath_tools::ParseSystem(made.document.dump(), fmt::format("EPSG:{}", code));
}

std::shared_ptr<ProjectionObject> ProjectionObjectOf(
    const geomath_tools::CoordinateSystem& system) {
  const geomath_tools::NamedProjection& named = system.Named();
  const auto& on = system.LocalEllipsoid();
  return std::make_shared<ProjectionObject>(*named.kind, named.values, on.a, on.invF,
                                            AxesText(named.projection->GetNEAxes()),
                                            AxesText(named.projection->GetBLAxes()));
}

}  // namespace geomath_python
