// Cross-sections and the flux profile of a run that holds a few slices only.
#include <numeric>

#include "io/io.h"
#include "io/section_stream.h"
#include "wpm/byte_stream.h"

bool can_stream(plane p, int s, const Grid& grid) {
  const bool is_along_z = p == XZ || p == ZX || p == YZ || p == ZY;
  return grid.is_square() && grid.voxels() > 0 && !(is_along_z && s == -1);
}

namespace {

class CrossSectionSink : public Sink {
 public:
  CrossSectionSink(const std::string& file, Quantity quantity, plane p, int s, const Grid& grid)
      : stream_(file, p, s, grid), quantity_(quantity) {}

  void take(int k, const Slice& slice) override {
    switch (quantity_) {
      case Quantity::kField:
        stream_.take(k, real_parts(slice.E));
        break;
      case Quantity::kFlux:
        stream_.take(k, {slice.F});
        break;
      case Quantity::kIndex:
        stream_.take(k, real_parts(slice.N));
        break;
    }
  }
  [[nodiscard]] SliceRequest required(int k) const override {
    if (!stream_.shows(k)) return {};
    SliceRequest request = stream_.required();
    request.E = quantity_ == Quantity::kField;
    request.F = quantity_ == Quantity::kFlux;
    request.N = quantity_ == Quantity::kIndex;
    return request;
  }
  void finish() override { stream_.finish(); }
  SinkState save() override { return stream_.save(); }
  void restore(const SinkState& state) override { stream_.restore(state); }

 private:
  SectionStream stream_;
  Quantity quantity_;
};

class FluxProfileFile : public FluxProfileSink {
 public:
  explicit FluxProfileFile(std::string name) : name_(std::move(name)) {}

  void take(int k, const Slice& slice) override {
    if (k == 0)
      flux0_ = slice.flux;
    else
      file() << ',';
    file() << slice.flux / flux0_;
  }
  [[nodiscard]] SliceRequest required(int /*k*/) const override {
    return {false, false, false, true};
  }
  void finish() override {
    file() << '\n';
    file_.reset();
  }
  SinkState save() override {
    ByteWriter state;
    state.put(file().save());
    state.put(flux0_);
    return state.bytes();
  }
  void restore(const SinkState& state) override {
    ByteReader from(state);
    file_ = std::make_unique<OutputFile>(name_, from.take<std::int64_t>());
    flux0_ = from.take<double>();
  }
  [[nodiscard]] double flux0() const override { return flux0_; }

 private:
  OutputFile& file() {
    if (!file_) {
      file_ = std::make_unique<OutputFile>(name_);
      *file_ << '\n';
    }
    return *file_;
  }

  std::string name_;
  std::unique_ptr<OutputFile> file_;
  double flux0_ = 0.0;
};

template <typename Values>
void store(const Grid& grid, const std::string& file, plane p, int s, Values values) {
  SectionStream stream(file, p, s, grid);
  for (int k = 0; k < grid.nz; ++k)
    if (stream.shows(k)) stream.take(k, values(k));
  stream.finish();
}

}  // namespace

std::unique_ptr<Sink> make_cross_section_sink(const std::string& file, Quantity quantity, plane p,
                                              int s, const Grid& grid) {
  return std::make_unique<CrossSectionSink>(file, quantity, p, s, grid);
}

std::unique_ptr<FluxProfileSink> make_flux_profile_sink(const std::string& file) {
  return std::make_unique<FluxProfileFile>(file);
}

void store_slices(const std::function<const cpx*(int)>& slice, const Grid& grid,
                  const std::string& file, plane p, int s) {
  store(grid, file, p, s, [&slice](int k) { return real_parts(slice(k)); });
}

void store_slices(const std::function<const double*(int)>& slice, const Grid& grid,
                  const std::string& file, plane p, int s) {
  store(grid, file, p, s, [&slice](int k) { return SliceValues{slice(k)}; });
}

double store_flux_profile(const double* F, const Grid& grid, const std::string& file) {
  FluxProfileFile profile(file);
  for (int k = 0; k < grid.nz; ++k) {
    const double* slice = F + static_cast<std::size_t>(k) * grid.plane();
    Slice sum{};
    sum.flux = std::accumulate(slice, slice + grid.plane(), 0.0);
    profile.take(k, sum);
  }
  profile.finish();
  return profile.flux0();
}
