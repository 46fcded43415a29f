// Bodies whose cross-sections are round: guides, tapers, splitters and lenses.
#pragma once

#include <vector>

#include "system/mix.h"
#include "system/rule.h"

// An axis that is not along z: (tan tiltx, tan tilty, 1), scaled to length 1.
struct Tilt {
  explicit Tilt(const struct_layer& l);

  double slope_x, slope_y;  // of the axis, sideways over along z
  double cosine;            // of its angle with z
  [[nodiscard]] bool is_none() const { return slope_x == 0 && slope_y == 0; }
  // From a point (u, v) of a slice and the axis's place there to the plane square to the axis,
  // where the body is round.
  void to_square_plane(double& u, double& v) const;
};

// The cross-section of a slice: a sample at (u, v) from the centre lies outside if
// u^2 + v^2 + w^2 > limit. Lengths in file units.
struct CrossSection {
  std::vector<double> u, v;  // of each column and row
  double w = 0;
  double limit = 0;
  Look look = Look::kCore;            // how u and v were worked out,
  double centre_x = 0, centre_y = 0;  // and what from
};

// The disc at some depth of a slice's voxels: its centre from the cross-section's, its radius.
struct Disc {
  double x, y;
  double radius_squared;
};

// Radii about the cross-section's centre: all within inner belongs to the body at all depths of a
// slice's voxels, nothing beyond outer at any. Negative: none does.
struct Reach {
  double inner, outer;
};

// With up to one level a voxel takes one of the two materials whole, by the place of its sample.
// With more a voxel that the face cuts takes the mean. Its cell is the box of one spacing each way
// about its sample, in z as across: so the mean is that of the samples which a finer grid would
// take in its place, and the face stays where it is with one level.
class RoundBody : public Rule {
 public:
  RoundBody(const struct_sysOptions& so, const struct_layer& l);
  void paint(int iz, const Canvas& canvas) const override;
  void sign(int iz, Signature& signature) const override;

 protected:
  [[nodiscard]] const Frame& frame() const { return frame_; }
  // Spacing in file units, by way of metres.
  [[nodiscard]] double spacing_x() const { return frame_.dx / frame_.metres; }
  [[nodiscard]] double spacing_y() const { return frame_.dy / frame_.metres; }
  [[nodiscard]] double spacing_z() const { return frame_.dz / frame_.metres; }
  // The domain's centre in file units from the grid's first sample.
  [[nodiscard]] double middle_x() const { return ((frame_.nx * frame_.dx) / frame_.metres) * 0.5; }
  [[nodiscard]] double middle_y() const { return ((frame_.ny * frame_.dy) / frame_.metres) * 0.5; }

  [[nodiscard]] virtual CrossSection cut(int iz) const = 0;
  // At a depth of -1/2 to 1/2 spacings in z from slice iz, and what holds for all of them.
  [[nodiscard]] virtual Disc disc(int iz, double depth) const = 0;
  [[nodiscard]] virtual Reach reach(int iz) const = 0;
  // Whether all slices, and all depths of their voxels, look alike.
  [[nodiscard]] virtual bool is_steady() const { return false; }
  // The tilt of a body that is round square to its axis only.
  [[nodiscard]] virtual const Tilt* tilt() const { return nullptr; }
  // Rows from the last to the first: what stays on a grid whose rows overlap when it is painted
  // column by column.
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
