#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

namespace geomath_files {

/// The seven parameters of a transformation to WGS 84, as the section "datum" of a system file
/// holds them: metres, arc-seconds, parts per million.
struct SevenParameters {
  double shift[3] = {}, rotation[3] = {}, ppm = 0;
  bool positionVector = false;

  bool IsNull() const;
  /// Metres by which the exact rotation of a system file may depart from the registry's methods,
  /// whose matrix holds the angles themselves: R·r²/2 on a radius R of the earth.
  double SmallAngleError() const;
  nlohmann::ordered_json Section() const;
};

/// What a system file can hold of a transformation, PROJJSON.
struct HeldOperation {
  std::string method;                         ///< "NTv2"; those of several steps joined by " + "
  std::optional<SevenParameters> parameters;  ///< where it is a similarity: as published, or joined
};

/// Steps between prime meridians count as nothing: the projection's longitudes count from
/// Greenwich.
HeldOperation HoldOperation(const nlohmann::json& document);

}  // namespace geomath_files
