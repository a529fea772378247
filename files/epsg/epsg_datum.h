#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <vector>

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

/// A similarity as the registry publishes it, perhaps about a pivot, perhaps to be run backwards.
struct RegisteredSimilarity {
  SevenParameters seven;
  double pivot[3] = {};
  bool inverse = false;

  bool IsPlain() const;
  /// What "similarity" is in the list "shifts" of a system file, whose rotations are those of the
  /// registry's methods.
  nlohmann::ordered_json Section() const;
};

/// A step of a transformation, PROJJSON, that is a similarity; nothing for one that is not. A
/// rotation of longitudes counts as far as it goes beyond the prime meridians of its two systems.
std::optional<RegisteredSimilarity> ReadSimilarity(const nlohmann::json& step);

/// What "similarity" is in the list "shifts" of a system file for a step of a transformation whose
/// parameters change with the date, or hold at one date only; nothing for one of another method.
std::optional<nlohmann::ordered_json> ReadDatedSimilarity(const nlohmann::json& step);

/// Similarities one after the other as one: as published when it is the only one.
SevenParameters JoinSimilarities(const std::vector<RegisteredSimilarity>& steps);

}  // namespace geomath_files
