#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "files/words/number_text.h"
#include "files/words/user_error.h"

/// What stands behind the classes of the package. JavaScript describes an object in JSON, gets a
/// handle, and converts points in blocks of columns that lie in the memory of the module.
namespace geomath_js {

using nlohmann::json;

inline constexpr std::size_t kBlock = 1024;  ///< points
inline constexpr std::size_t kColumns = 8;

/// Points on their way: arguments come in the first columns, results leave there.
struct Block {
  double (&columns)[kColumns][kBlock];
  std::uint8_t* steps;  ///< receives the ChainStep of each point, where wanted
  std::size_t count;
  bool degrees;  ///< angles of the caller; else radians
};

/// Angles as the library takes them: radians, NaN where they lie beyond what their kind may be.
void TakeAngles(const Block& block, std::size_t column, geomath_files::AngleKind kind);
/// The same for what takes degrees, as magnetic fields do.
void TakeDegrees(const Block& block, std::size_t column, geomath_files::AngleKind kind);
/// Radians of the library as the caller has them.
void GiveAngles(const Block& block, std::size_t column);
void Multiply(const Block& block, std::size_t column, double factor);
/// Positions that an inverse put more than a full turn away become NaN in the first `width` columns:
/// the point lies beyond the map.
void DropBeyondTheMap(const Block& block, std::size_t width);

/// An object of the package; unchanged once it is made.
class Object {
 public:
  virtual ~Object() = default;
  /// Runs the operation of that number, which its class and JavaScript count alike.
  virtual void Convert(int operation, const Block& block) const = 0;
  /// The values of its properties.
  virtual json Describe() const = 0;
};

using Handle = std::shared_ptr<Object>*;

/// The object of class T whose handle stands at `key`; null when there is none.
template <class T>
std::shared_ptr<T> PartAt(const json& given, const char* key) {
  const auto found = given.find(key);
  if (found == given.end() || !found->is_number_integer()) return nullptr;
  const auto handle = reinterpret_cast<Handle>(found->get<std::uintptr_t>());
  auto part = std::dynamic_pointer_cast<T>(*handle);
  if (!part)
    throw geomath_files::UserError(std::string("\"") + key + "\" is an object of another class");
  return part;
}

/// Numbers by their names, as a property list.
struct NamedNumber {
  const char* name;
  double value;
};
json Numbers(std::initializer_list<NamedNumber> list);

/// The rest of what was given, for the readers of sections.
json Without(json given, std::initializer_list<const char*> keys);

/// Bytes that JavaScript put into memory: an array of address and size.
std::string BytesAt(const json& place);
std::vector<double> DoublesAt(const json& given, const char* key);

std::shared_ptr<Object> MakeEllipsoid(const json& given);
std::shared_ptr<Object> MakeDatum(const json& given);
std::shared_ptr<Object> MakeProjection(const json& given);
std::shared_ptr<Object> MakeLocalToGrid(const json& given);
std::shared_ptr<Object> MakeGridToGround(const json& given);
std::shared_ptr<Object> MakeRegionalGeoid(const json& given);
std::shared_ptr<Object> MakeGlobalGeoid(const json& given);
std::shared_ptr<Object> MakeShiftGrid(const json& given);
std::shared_ptr<Object> MakeChain(const json& given);
std::shared_ptr<Object> MakeSystemChain(const json& given);
std::shared_ptr<Object> MakeCalibration(const json& given);
std::shared_ptr<Object> MakeCalibrationChain(const json& given);
std::shared_ptr<Object> MakeMagneticModel(const json& given);
std::shared_ptr<Object> MakeMagneticField(const json& given);

}  // namespace geomath_js
