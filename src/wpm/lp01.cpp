#include "wpm/lp01.h"

#include <cmath>
#include <string>

#include "diagnostics.h"

namespace {

constexpr double kFirstZeroOfJ0 = 2.404825557695773;

double J(int order, double x) {
  return std::cyl_bessel_j(order, x);
}

// Far out the function leaves the range of a double.
double K(int order, double x) {
  return x < 700.0 ? std::cyl_bessel_k(order, x) : 0.0;
}

double core_parameter(double w, double V) {
  return std::sqrt((V - w) * (V + w));
}

// The characteristic equation without its poles; it falls from above 0 to below as w grows. In very
// thick fibres K0 and K1 leave the range of a double, but not their ratio.
double mismatch(double w, double V) {
  const double u = core_parameter(w, V);
  const double ratio = w < 700.0 ? K(1, w) / K(0, w) : 1.0 + 0.5 / w;
  return u * J(1, u) - w * ratio * J(0, u);
}

double root(double V) {
  double low = V > kFirstZeroOfJ0 ? core_parameter(kFirstZeroOfJ0, V) : 0.0;
  double high = V;
  for (;;) {
    const double middle = low + (high - low) / 2;
    if (middle <= low || middle >= high) return middle;
    (mismatch(middle, V) > 0 ? low : high) = middle;
  }
}

}  // namespace

bool Lp01::exists(double radius, double n_core, double n_cladding, double k0) {
  return std::isfinite(radius) && std::isfinite(n_core) && std::isfinite(k0) && radius > 0 &&
         k0 > 0 && n_cladding > 0 && n_core > n_cladding;
}

Lp01::Lp01(double radius, double n_core, double n_cladding, double k0) : radius_(radius) {
  if (!exists(radius, n_core, n_cladding, k0))
    diagnostics::fail("a core of radius " + std::to_string(radius) + " m and index " +
                      std::to_string(n_core) + " in " + std::to_string(n_cladding) +
                      " guides no mode; its radius must be above 0 and n above ne");
  const double V = k0 * radius * std::sqrt((n_core - n_cladding) * (n_core + n_cladding));
  w_ = root(V);
  u_ = core_parameter(w_, V);
  // A mode that is not bound at this precision is the plane wave of the cladding.
  cladding_scale_ = w_ > 0 && K(0, w_) > 0 ? J(0, u_) / K(0, w_) : 0.0;
  const double transverse = w_ / (k0 * radius);
  effective_index_ = std::sqrt(n_cladding * n_cladding + transverse * transverse);
}

double Lp01::operator()(double rho) const {
  const double r = rho / radius_;
  return r <= 1.0 ? J(0, u_ * r) : cladding_scale_ * K(0, w_ * r);
}
