// The share of a voxel inside a body.
#pragma once

#include <array>
#include <functional>

struct Point {
  double x, y;
};

// The area that a quadrilateral, corners in anticlockwise order, shares with a disc of this squared
// radius about the origin. Exact except for rounding: the sum over the sides of the area between
// side and origin, a triangle inside the disc and a sector outside.
double shared_area(const std::array<Point, 4>& corners, double radius_squared);

// Mean of a function over -1/2 to 1/2, to the tolerance, by Simpson's rule. Intervals are halved
// until both halves agree with the whole.
double mean_over_depth(const std::function<double(double)>& f, double tolerance);
