// Bodies whose cross-sections are round: guides, tapers, splitters and lenses.
#pragma once

#include <vector>

#include "system/mix.h"
#include "system/rule.h"

// An axis that is not along z: (tan tiltx, tan tilty, 1), scaled to length 1.
struct Tilt {
  explicit Tilt(const struct_layer& l);

  double slope_x, slope_y;  // of the axis: sideways / along z
  double cosine;            // of its angle with z
  [[nodiscard]] bool is_none() const { return slope_x == 0 && slope_y == 0; }
  // Projects (u, v), relative to the axis in a slice, onto the plane normal to the axis. The body
  // is round in that plane.
  void to_square_plane(double& u, double& v) const;
};

// The cross-section of a slice. A sample at (u, v) from the centre is outside if u^2 + v^2 + w^2 >
// limit. Lengths in file units.
struct CrossSection {
  std::vector<double> u, v;  // of each column and row
  double w = 0;
  double limit = 0;
  Look look = Look::kCore;            // how u and v were computed
  double centre_x = 0, centre_y = 0;  // and from which values
};

// The disc at a depth of a slice's voxels: centre relative to the cross-section's, and radius.
struct Disc {
  double x, y;
  double radius_squared;
};

// Radii about the cross-section's centre. All within inner is in the body at all depths of a
// slice's voxels, nothing beyond outer at any. Negative: none is.
struct Reach {
  double inner, outer;
};

// With up to one level a voxel takes one of the two materials, by the position of its sample. With
// more, a voxel that contains the face takes the mean. Its cell is a box of one spacing along x, y
// and z about its sample. The mean equals that of a finer grid's samples. The face stays where it
// is with one level.
class RoundBody : public Rule {
 public:
  RoundBody(const struct_sysOptions& so, const struct_layer& l);
  void paint(int iz, const Canvas& canvas) const override;
  void sign(int iz, Signature& signature) const override;

 protected:
  [[nodiscard]] const Frame& frame() const { return frame_; }
  // Spacing in file units, computed from metres.
  [[nodiscard]] double spacing_x() const { return frame_.dx / frame_.metres; }
  [[nodiscard]] double spacing_y() const { return frame_.dy / frame_.metres; }
  [[nodiscard]] double spacing_z() const { return frame_.dz / frame_.metres; }
  // The domain's centre in file units from the grid's first sample.
  [[nodiscard]] double middle_x() const { return ((frame_.nx * frame_.dx) / frame_.metres) * 0.5; }
  [[nodiscard]] double middle_y() const { return ((frame_.ny * frame_.dy) / frame_.metres) * 0.5; }

  [[nodiscard]] virtual CrossSection cut(int iz) const = 0;
  // At a depth of -1/2 to 1/2 spacings in z from slice iz; bounds for all depths.
  [[nodiscard]] virtual Disc disc(int iz, double depth) const = 0;
  [[nodiscard]] virtual Reach reach(int iz) const = 0;
  // Whether all slices and all depths of their voxels are equal.
  [[nodiscard]] virtual bool is_steady() const { return false; }
  // The tilt of a body that is round only in the plane normal to its axis.
  [[nodiscard]] virtual const Tilt* tilt() const { return nullptr; }
  // Whether to paint rows from last to first. If rows overlap, this equals painting by columns.
  [[nodiscard]] virtual bool goes_by_columns() const { return false; }

 private:
  void square_distances(const CrossSection& section, double v, std::vector<double>& squares) const;
  void paint_shared_row(int iz, const Canvas::Row& row, const CrossSection& section, double v,
                        const std::vector<double>& squares, double near, double far) const;
  [[nodiscard]] double share(int iz, double u, double v) const;

  Frame frame_;
  cpx inside_, outside_;
  bool is_over_;
  Mix mix_;
};
