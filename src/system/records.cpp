#include <cmath>

#include "system/system.h"

void struct_emfield::copy(const struct_emfield& f) {
  *this = f;
}

void struct_emfield::reset() {
  *this = {};
}

void struct_layer::copy(const struct_layer& l) {
  const struct_layer old = *this;
  *this = l;
  wx = old.wx;
  wy = old.wy;
  dx = old.dx;
  dy = old.dy;
  dz = old.dz;
}

void struct_layer::reset() {
  *this = {};
}

void struct_sysOptions::copy(const struct_sysOptions& s) {
  const std::string own_name = sysname;
  *this = s;
  sysname = own_name;
}

void struct_sysOptions::reset() {
  *this = {};
}

cpx epsToN(const cpx& eps) {
  const double re = eps.real();
  const double im = eps.imag();
  const double a = std::sqrt(re * re + im * im);
  return {std::sqrt((re + a) * 0.5), std::sqrt((a - re) * 0.5)};
}

cpx nToEps(const cpx& n) {
  return {n.real() * n.real() - n.imag() * n.imag(), (n.real() + n.real()) * n.imag()};
}

bool removeBlanks(char* s) {
  char* out = s;
  for (; *s != '\0'; ++s)
    if (*s != ' ') *out++ = *s;
  *out = '\0';
  return true;
}

double metres_per_unit(scale scl) {
  switch (scl) {
    case M:
      return 1.0;
    case DM:
      return 0.1;
    case CM:
      return 0.01;
    case MM:
      return 0.001;
    case UM:
      return 1e-06;
    case PM:
      return 1e-12;
    case NM:
      break;
  }
  return 1e-09;
}
