#pragma once

#include <cstddef>

#include "geomath/proj/point_factors.h"

namespace zel_cs::geomath {

class TGeoProj;

/// A projection's record of prepared constants with what runs on it, its type out of sight: what the
/// base needs for batches and derivatives. Refers to the record; empty where a class has none.
/// ViewOf (kernels/projection_blocks.h) makes it.
class FormulaView {
 public:
  /// What runs on a record of one type, as the member functions below.
  struct Operations {
    bool (*differentiate)(const void* record, double b, double l, GridDerivatives& derivatives);
    void (*differentiateBlock)(const void* record, const TGeoProj& proj,
                               double* const (&columns)[6], std::size_t count);
    void (*forward)(const void* record, const TGeoProj& proj, double* b, double* l, std::size_t n);
    void (*inverse)(const void* record, const TGeoProj& proj, double* n, double* e, std::size_t m);
  };

  FormulaView() = default;
  FormulaView(const void* record, const Operations& operations)
      : record_(record), operations_(&operations) {}

  explicit operator bool() const { return record_ != nullptr; }

  /// The derivatives at a point; false, the result untouched, where the record does not serve it.
  bool Differentiate(double b, double l, GridDerivatives& derivatives) const {
    return operations_->differentiate(record_, b, l, derivatives);
  }
  /// The same for a block, as TGeoProj::DifferentiateBlock, with what Forward makes of it in the last
  /// two columns.
  void DifferentiateBlock(const TGeoProj& proj, double* const (&columns)[6],
                          std::size_t count) const {
    operations_->differentiateBlock(record_, proj, columns, count);
  }
  /// Converts a block of columns in place. Points that the kernel does not serve go through the
  /// single-point form of `proj`, and all points of a host's class that has a form of its own.
  void Forward(const TGeoProj& proj, double* b, double* l, std::size_t count) const {
    operations_->forward(record_, proj, b, l, count);
  }
  void Inverse(const TGeoProj& proj, double* n, double* e, std::size_t count) const {
    operations_->inverse(record_, proj, n, e, count);
  }

 private:
  const void* record_ = nullptr;
  const Operations* operations_ = nullptr;
};

}  // namespace zel_cs::geomath
