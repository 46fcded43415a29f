// Cross-sections and the flux profile of a run that holds a few slices only.
#include "io/io.h"
#include "io/marks.h"
#include "io/section_stream.h"

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
  [[nodiscard]] SliceParts looks_at(int k) const override {
    if (!stream_.shows(k)) return {};
    SliceParts parts = stream_.looks_at();
    parts.E = quantity_ == Quantity::kField;
    parts.F = quantity_ == Quantity::kFlux;
    parts.N = quantity_ == Quantity::kIndex;
    return parts;
  }
  void finish() override { stream_.finish(); }
  Mark mark() override { return stream_.mark(); }
  void go_back_to(const Mark& mark) override { stream_.go_back_to(mark); }

 private:
  SectionStream stream_;
  Quantity quantity_;
};

class FluxProfileFile : public FluxProfileSink {
 public:
  FluxProfileFile(std::string name, std::size_t samples)
      : name_(std::move(name)), samples_(samples) {}

  void take(int k, const Slice& slice) override {
    double flux = 0.0;
    for (std::size_t i = 0; !slice.flux && i < samples_; ++i) flux += slice.F[i];
    if (slice.flux) flux = *slice.flux;
    if (k == 0)
      flux0_ = flux;
    else
      file() << ',';
    file() << flux / flux0_;
  }
  [[nodiscard]] SliceParts looks_at(int /*k*/) const override {
    return {false, false, false, true};
  }
  void finish() override {
    file() << '\n';
    file_.reset();
  }
  Mark mark() override {
    Mark mark;
    put(mark, file().save());
    put(mark, flux0_);
    return mark;
  }
  void go_back_to(const Mark& mark) override {
    std::string_view rest = mark;
    file_ = std::make_unique<OutputFile>(name_, take_value<std::int64_t>(rest));
    flux0_ = take_value<double>(rest);
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
  std::size_t samples_;
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

std::unique_ptr<FluxProfileSink> make_flux_profile_sink(const std::string& file, const Grid& grid) {
  return std::make_unique<FluxProfileFile>(file, grid.plane());
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
  FluxProfileFile profile(file, grid.plane());
  for (int k = 0; k < grid.nz; ++k) {
    // A sink reads no more of a slice than it shows.
    double* slice = const_cast<double*>(F) + static_cast<std::size_t>(k) * grid.plane();
    profile.take(k, {nullptr, slice, nullptr});
  }
  profile.finish();
  return profile.flux0();
}
