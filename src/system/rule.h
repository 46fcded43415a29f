// How a component paints its slices.
#pragma once

#include <bit>
#include <cstdint>
#include <memory>
#include <vector>

#include "system/canvas.h"
#include "system/slab.h"
#include "system/system.h"

// The first entry of a signature: the meaning of the values after it.
enum class Look : std::uint64_t {
  kUniform,
  kCross,
  kCore,
  kLeaning,
  kArm,
  kBall,
  kGraded,
  kOfItsOwn
};

// All values that decide how a slice is painted, as bits. Slices with equal signatures are equal.
class Signature {
 public:
  void add(Look look) { bits_.push_back(static_cast<std::uint64_t>(look)); }
  void add(bool flag) { bits_.push_back(flag ? 1 : 0); }
  void add(double value) { bits_.push_back(std::bit_cast<std::uint64_t>(value)); }
  void add(const cpx& value) { add(value.real()), add(value.imag()); }
  void add_address(const void* p) { bits_.push_back(reinterpret_cast<std::uintptr_t>(p)); }
  void clear() { bits_.clear(); }
  friend bool operator==(const Signature&, const Signature&) = default;

 private:
  std::vector<std::uint64_t> bits_;
};

// A component at its place in the stack. It is made once and paints any slice on any canvas.
class Rule {
 public:
  virtual ~Rule() = default;
  virtual void paint(int iz, const Canvas& canvas) const = 0;
  virtual void sign(int iz, Signature& signature) const = 0;
};

// A component kind: its log line, its thickness in slices (not rounded) and its rule. Reserved
// kinds and screens have no rule and paint nothing.
struct Kind {
  component t;
  const char* line;
  double (*thickness)(const struct_sysOptions&, const struct_layer&);
  std::unique_ptr<Rule> (*rule)(const struct_sysOptions&, const Slab&, const struct_layer&);
};

// Null for a value outside the enumeration.
const Kind* kind_of(component t);

// Throws Error if a grating takes a slice and its period is under two samples in x or y. number:
// its place among the layers, from 1, for the message; 0 if unknown.
void require_grating_periods(const struct_sysOptions& so, const Slab& slab, const struct_layer& l,
                             int number);

std::unique_ptr<Rule> make_homog(const struct_sysOptions&, const Slab&, const struct_layer&);
std::unique_ptr<Rule> make_grating(const struct_sysOptions&, const Slab&, const struct_layer&);
std::unique_ptr<Rule> make_guide(const struct_sysOptions&, const Slab&, const struct_layer&);
std::unique_ptr<Rule> make_taper(const struct_sysOptions&, const Slab&, const struct_layer&);
std::unique_ptr<Rule> make_splitter(const struct_sysOptions&, const Slab&, const struct_layer&);
std::unique_ptr<Rule> make_grin(const struct_sysOptions&, const Slab&, const struct_layer&);
std::unique_ptr<Rule> make_equal_bars(const struct_sysOptions&, const struct_layer&);
std::unique_ptr<Rule> make_index_file(const struct_sysOptions&, const Slab&, const struct_layer&);
std::unique_ptr<Rule> make_lens(const struct_sysOptions&, const Slab&, const struct_layer&);

// The thickness of the layer, or the depth of its file.
double thickness_of_file(const struct_sysOptions&, const struct_layer&);
