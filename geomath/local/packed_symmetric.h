#pragma once

namespace zel_cs::geomath {

/// Inverts a symmetric positive definite matrix in place. `packed` holds its upper triangle by
/// columns (a11, a12, a22, a13, a23, a33, …), `n` is its order. By Cholesky factorisation A = RᵀR,
/// inversion of R and the product R⁻¹R⁻ᵀ (Bunch, Dongarra, Moler and Stewart 1979, LINPACK,
/// chapter 3). False, the contents then partly overwritten, when a reduced pivot is not positive. A
/// pivot that lost most of its digits but is still positive is accepted: sites of some hundred
/// metres in coordinates of some thousand kilometres are such.
bool InvertPackedSymmetric(double* packed, int n);

}  // namespace zel_cs::geomath
