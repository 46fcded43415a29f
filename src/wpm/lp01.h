// The fundamental mode of a step-index fibre.
#pragma once

// The scalar mode LP01 (D. Gloge, Applied Optics 10, 2252, 1971; Snyder & Love, Optical Waveguide
// Theory, 14). With V = k0 a sqrt(n1^2 - n2^2) and u^2 + w^2 = V^2 it is the root of
//
//   u J1(u) / J0(u) = w K1(w) / K0(w)
//
// below the first zero of J0, and its field is J0(u rho/a) / J0(u) in the core and
// K0(w rho/a) / K0(w) outside, here divided by the value at the centre.
class Lp01 {
 public:
  // radius of the core in m, indices of core and cladding, k0 in rad/m. Ends the process where
  // there is no such mode: all must be finite and above 0, and n_core above n_cladding.
  Lp01(double radius, double n_core, double n_cladding, double k0);

  // Whether these describe a fibre that has the mode.
  static bool exists(double radius, double n_core, double n_cladding, double k0);

  // The field at distance rho >= 0 from the axis, in m: real, 1 on the axis.
  double operator()(double rho) const;

  // The propagation constant over k0, between the two indices.
  [[nodiscard]] double effective_index() const { return effective_index_; }

 private:
  double radius_;
  double u_, w_;
  double cladding_scale_;  // J0(u) / K0(w)
  double effective_index_;
};
