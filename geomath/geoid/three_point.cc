#include "geomath/geoid/three_point.h"

#include "geomath/geoid/geoid_status.h"
#include "geomath/geoid/grid/interpolants.h"

namespace zel_cs::geomath {
namespace {

template <class Value>
double OfArray(double step, double offset, const CSmartArray<Value, 1>& v) {
  return v.size() < 3 ? kNoHeight : ThreePoint(step, offset, v[0], v[1], v[2]);
}

}  // namespace

double PIP(double step, double offset, const CSmartArray<float, 1>& v) {
  return OfArray(step, offset, v);
}

double PIPWord(double step, double offset, const CSmartArray<short, 1>& v) {
  return OfArray(step, offset, v);
}

unsigned char* ConvertBytes(unsigned char* dst, const unsigned char* src, int n) {
  for (int low = 0, high = n - 1; low <= high; ++low, --high) {
    const unsigned char first = src[low], last = src[high];
    dst[low] = last;
    dst[high] = first;
  }
  return dst;
}

}  // namespace zel_cs::geomath
