#include "support/plain_nest.h"

#include <cmath>

#include "fftw++.h"

namespace {

// Fresnel's amplitude transmission: 2 kz_i/(kz_i + kz_t) in TE; in TM the wavenumbers count with
// the other side's index squared, and the whole with the product of the indices. A wave at grazing
// incidence on both sides passes. Both parts are rounded down to whole steps of 0.0001.
cpx transmission(polarization pol, cpx n_i, cpx n_t, cpx kz_i, cpx kz_t) {
  const bool is_te = pol == TE;
  const cpx below = is_te ? kz_i + kz_t : n_i * n_i * kz_t + n_t * n_t * kz_i;
  if (below.real() == 0.0 && below.imag() == 0.0) return 1.0;
  const cpx share = kz_i / below;
  const cpx t = (is_te ? share : n_i * n_t * share) * cpx(2.0, 0.0);
  return {std::floor(t.real() / 0.0001) * 0.0001, std::floor(t.imag() / 0.0001) * 0.0001};
}

}  // namespace

void plain_nest_3D(cpx* E, double* F, const cpx* N, const cpx* KX, const double* X, const cpx* KY,
                   const double* Y, double k0, double dz, double /*dy*/, double /*dx*/, int nz,
                   int ny, int nx, bool do_evanescent_modes, bool is_magnetic_field,
                   polarization pol) {
  const cpx one(1.0, 0.0);
  const cpx ione(0.0, 1.0);
  const cpx zero(0.0, 0.0);
  const int plane = nx * ny;
  const double fn = plane;
  std::vector<cpx> S(static_cast<std::size_t>(plane));
  fftwpp::fft2d forward(static_cast<unsigned>(nx), static_cast<unsigned>(ny), -1, nullptr,
                        S.data());
  const auto wavenumber = [](double nk0, double kxy_sq, bool is_vertical_incidence) {
    if (is_vertical_incidence) return cpx(nk0, 0.0);
    const double r = kxy_sq / (nk0 * nk0);
    const cpx root = std::sqrt(cpx(1.0 - r, 0.0 - 0.0 * r));
    return cpx(nk0 * root.real(), nk0 * root.imag());
  };

  for (int k = 0; k < nz - 1; ++k) {
    forward.fft(E + std::ptrdiff_t{k} * plane, S.data());
    for (int q = 0; q < ny; ++q)
      for (int p = 0; p < nx; ++p) {
        const cpx s = S[static_cast<std::size_t>(q * nx + p)];
        if (std::abs(s) < 0.0001) continue;
        const double sign = (p + q) % 2 == 0 ? 1.0 : -1.0;
        const cpx f(s.real() * sign / fn, s.imag() * sign / fn);
        const double kx = KX[p].real();
        const double ky = KY[q].real();
        const double kxy_sq = kx * kx + ky * ky;
        const bool is_vertical_incidence = q == 0 && p == 0;
        for (int j = 0; j < ny; ++j)
          for (int i = 0; i < nx; ++i) {
            const int idx_0 = k * plane + j * nx + i;
            const int idx_1 = idx_0 + plane;
            const cpx n_i = N[idx_0];
            const cpx n_t = N[idx_1];
            const bool is_index_change = n_i.real() != n_t.real();
            const cpx kz_i = wavenumber(k0 * n_i.real(), kxy_sq, is_vertical_incidence);
            const cpx kz_t =
                is_index_change ? wavenumber(k0 * n_t.real(), kxy_sq, is_vertical_incidence) : kz_i;
            const bool evanescent_i = kz_i.real() == 0.0;
            const bool evanescent_t = kz_t.real() == 0.0;

            const double phi_xy = X[i] * kx + Y[j] * ky;
            cpx phi_z(kz_t.real() * dz, kz_t.imag() * dz);
            if (n_t.imag() != 0.0)
              phi_z = cpx(phi_z.real(), (k0 * n_t.imag()) * dz + kz_t.imag() * dz);
            const cpx iphi = (phi_z + phi_xy) * ione;

            cpx t = one;
            if (is_index_change && (pol == TE || pol == TM))
              t = transmission(pol, n_i, n_t, kz_i, kz_t);

            cpx f_t = zero;
            bool has_flux = false;
            if (!evanescent_i && !evanescent_t) {
              f_t = t * f;
              has_flux = true;
            } else if (!do_evanescent_modes) {
              continue;
            } else if (!evanescent_i && evanescent_t && n_i.real() > n_t.real()) {
              f_t = t * f;
            } else if (evanescent_i && !evanescent_t && n_t.real() > n_i.real()) {
              f_t = t * f;
              has_flux = true;
            } else if (evanescent_i && !is_index_change) {
              f_t = f;
            }
            if (has_flux) {
              const double modulus = std::abs(f_t);
              F[idx_1] += (modulus * modulus) * kz_t.real();
            }
            cpx g = f_t;
            if (is_magnetic_field) g = f_t * cpx(n_t.real() / (k0 * 376.73031346), 0.0);
            E[idx_1] += g * std::exp(iphi);
          }
      }
  }
}
