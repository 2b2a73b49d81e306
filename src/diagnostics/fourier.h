#pragma once

// The discrete Fourier transform of a power of two of values: the values at even and at odd places
// are transformed separately and combined, smallest pieces first, in n log2(n) / 2 steps.
//
// Source: J. W. Cooley, J. W. Tukey, An algorithm for the machine calculation of complex Fourier
// series, Mathematics of Computation 19 (1965), pages 297-301.

#include <complex>
#include <vector>

namespace Hovar {

using Spectrum = std::vector<std::complex<double>>;

/// Replaces n = 2^k values x (n >= 1) by X[k] = sum over j of x[j] exp(-2 pi i j k / n), in place.
/// It is not scaled, so transforming twice gives n x[-j mod n].
void TransformFourier(Spectrum& values);

}  // namespace Hovar
