#include "system/shares.h"

#include <algorithm>
#include <cmath>

namespace {

double cross(const Point& a, const Point& b) {
  return a.x * b.y - a.y * b.x;
}

double sector(const Point& a, const Point& b, double radius_squared) {
  return 0.5 * radius_squared * std::atan2(cross(a, b), a.x * b.x + a.y * b.y);
}

// The area of the triangle (a, b, origin) in the disc; positive if a to b turns anticlockwise.
double shared_by_side(const Point& a, const Point& b, double radius_squared) {
  const Point side = {b.x - a.x, b.y - a.y};
  const auto at = [&](double s) { return Point{a.x + s * side.x, a.y + s * side.y}; };
  // The side's line meets the circle where |a + s side|^2 is the squared radius.
  const double square = side.x * side.x + side.y * side.y;
  const double half = a.x * side.x + a.y * side.y;
  const double rest = a.x * a.x + a.y * a.y - radius_squared;
  const double discriminant = half * half - square * rest;
  if (!(discriminant > 0)) return sector(a, b, radius_squared);
  const double root = std::sqrt(discriminant);
  const double enters = (-half - root) / square;
  const double leaves = (-half + root) / square;
  if (enters >= 1 || leaves <= 0) return sector(a, b, radius_squared);
  const Point first = enters > 0 ? at(enters) : a;
  const Point last = leaves < 1 ? at(leaves) : b;
  double area = 0.5 * cross(first, last);
  if (enters > 0) area += sector(a, first, radius_squared);
  if (leaves < 1) area += sector(last, b, radius_squared);
  return area;
}

struct Interval {
  double begin, end;
  double at_begin, at_middle, at_end;
  [[nodiscard]] double middle() const { return 0.5 * (begin + end); }
  [[nodiscard]] double integral() const {
    return (end - begin) / 6 * (at_begin + 4 * at_middle + at_end);
  }
};

double integrate(const std::function<double(double)>& f, const Interval& whole, double tolerance,
                 int halvings_left) {
  const Interval left = {whole.begin, whole.middle(), whole.at_begin,
                         f(0.5 * (whole.begin + whole.middle())), whole.at_middle};
  const Interval right = {whole.middle(), whole.end, whole.at_middle,
                          f(0.5 * (whole.middle() + whole.end)), whole.at_end};
  const double halves = left.integral() + right.integral();
  const bool is_rough = std::fabs(halves - whole.integral()) > tolerance;  // false for NaN
  if (!is_rough || halvings_left == 0) return halves;
  return integrate(f, left, tolerance / 2, halvings_left - 1) +
         integrate(f, right, tolerance / 2, halvings_left - 1);
}

}  // namespace

double shared_area(const std::array<Point, 4>& corners, double radius_squared) {
  if (!(radius_squared > 0)) return 0.0;
  double area = 0.0;
  for (std::size_t i = 0; i < corners.size(); ++i)
    area += shared_by_side(corners[i], corners[(i + 1) % corners.size()], radius_squared);
  return std::max(area, 0.0);
}

double mean_over_depth(const std::function<double(double)>& f, double tolerance) {
  constexpr int kHalvings = 20;
  return integrate(f, {-0.5, 0.5, f(-0.5), f(0.0), f(0.5)}, tolerance, kHalvings);
}
