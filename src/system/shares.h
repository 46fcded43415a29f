// How much of a voxel lies inside of a body.
#pragma once

#include <array>
#include <functional>

struct Point {
  double x, y;
};

// Area that a quadrilateral, its corners in anticlockwise order, shares with the disc of this
// squared radius about the origin. Exact but for rounding: the sum over the sides of the area
// between the side and the origin, a triangle inside the disc and a sector outside of it.
double shared_area(const std::array<Point, 4>& corners, double radius_squared);

// Mean of a function over -1/2 to 1/2, to the tolerance: Simpson's rule on intervals that are
// halved until both halves agree with the whole.
double mean_over_depth(const std::function<double(double)>& f, double tolerance);
