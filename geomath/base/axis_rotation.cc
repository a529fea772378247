#include "geomath/base/axis_rotation.h"

namespace zel_cs::geomath {
namespace {

struct NamedAxes {
  const wchar_t* name;
  double m0, m1, m2, m3;  // caller = matrix · (north, east)
};

constexpr NamedAxes kNamedAxes[] = {
    {L"WN", 0, -1, 1, 0},   // (−east, north)
    {L"WS", 0, -1, -1, 0},  // (−east, −north)
    {L"SW", -1, 0, 0, -1},  // (−north, −east)
    {L"SE", -1, 0, 0, 1},   // (−north, east)
    {L"EN", 0, 1, 1, 0},    // (east, north)
    {L"ES", 0, 1, -1, 0},   // (east, −north)
    {L"NW", 1, 0, 0, -1},   // (north, −east)
};

unsigned char DirectionCode(const TAbstractPoint<double, 4>& m) {
  unsigned code = 0;
  for (int i = 0; i < 4; ++i) {
    const int bit = i / 2 * 4 + i % 2;  // row · 4 + column
    if (m[i] > 0) code |= 1u << bit;
    if (m[i] < 0) code |= 1u << (bit + 2);
  }
  return static_cast<unsigned char>(code);
}

}  // namespace

AxisRotation::AxisRotation()
    : direction_(kNorthEastDirection), rotation_(SetROT(1, 0, 0, 1)), reference_(rotation_) {}

AxisRotation::AxisRotation(const wchar_t* axes) : AxisRotation() { AxisRotation::SetAxes(axes); }

AxisRotation::AxisRotation(const AxisRotation& other) = default;

AxisRotation& AxisRotation::operator=(const AxisRotation& other) {
  SetAxes(other.GetAxes());
  return *this;
}

AxisRotation::~AxisRotation() = default;

void AxisRotation::Rotate(unsigned int dir, double& a, double& b) const {
  if (IsIdentity()) return;
  const TAbstractPoint<double, 4>& m = rotation_;
  const double x = a, y = b;
  a = m[0] * x + (dir == 0 ? m[1] : m[2]) * y;
  b = (dir == 0 ? m[2] : m[1]) * x + m[3] * y;
}

void AxisRotation::SetAxes(const wchar_t* axes) {
  SetMatrix(reference_);
  direction_ = kNorthEastDirection;
  if (!axes || *axes == 0 || axes == axes_.Get()) return;

  axes_.Set(axes);
  if (!axes_.Get()) return;
  for (const NamedAxes& named : kNamedAxes) {
    if (CompareWideNoCase(axes_.Get(), named.name) == 0) {
      SetMatrix(SetROT(named.m0, named.m1, named.m2, named.m3));
      break;
    }
  }
  direction_ = DirectionCode(rotation_);
}

void AxisRotation::SetMatrix(const TAbstractPoint<double, 4>& matrix) {
  rotation_ = matrix;
  isIdentity_ = rotation_ == reference_;
}

const wchar_t* AxisRotation::GetAxes() const { return axes_.Get(); }

TAbstractPoint<double, 4> AxisRotation::SetROT(double m0, double m1, double m2, double m3) {
  TAbstractPoint<double, 4> matrix;
  matrix[0] = m0;
  matrix[1] = m1;
  matrix[2] = m2;
  matrix[3] = m3;
  return matrix;
}

void AxisRotation::CopyAxes(const AxisRotation& other) {
  axes_ = other.axes_;
  SetMatrix(other.rotation_);
  direction_ = other.direction_;
}

}  // namespace zel_cs::geomath
