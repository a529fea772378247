#include "files/models/shift_file.h"
#include "geomath/base/angle.h"
#include "js/bindings/objects.h"

using namespace zel_cs::geomath;

namespace geomath_js {
namespace {

enum ShiftOperation { kForward, kInverse };

class ShiftGridObject : public Object {
 public:
  explicit ShiftGridObject(std::unique_ptr<CoordinateShift> of) : grid_(std::move(of)) {}

  void Convert(int operation, const Block& block) const override {
    auto& [first, second, third, d, e, f, g, h] = block.columns;
    TakeAngles(block, 0, geomath_files::AngleKind::latitude);
    TakeAngles(block, 1, geomath_files::AngleKind::longitude);
    if (operation == kForward)
      grid_->ForwardBatch(first, second, third, block.count);
    else
      grid_->InverseBatch(first, second, third, block.count);
    GiveAngles(block, 0);
    GiveAngles(block, 1);
  }
  json Describe() const override { return json::object(); }

 private:
  std::unique_ptr<CoordinateShift> grid_;
};

}  // namespace

std::shared_ptr<Object> MakeShiftGrid(const json& given) {
  geomath_files::ShiftChoice choice;
  choice.file = given.value("name", "ShiftGrid");
  return std::make_shared<ShiftGridObject>(
      geomath_files::ParseShift({{"", BytesAt(given.at("bytes"))}}, choice));
}

}  // namespace geomath_js
