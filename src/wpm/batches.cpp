#include "wpm/batches.h"

#include <algorithm>

#include "diagnostics.h"

namespace wpm {

template <typename T>
AlignedArray<T> allocate_aligned(std::size_t count) {
  auto* memory = static_cast<T*>(fftw_malloc(std::max<std::size_t>(count, 1) * sizeof(T)));
  if (memory == nullptr)
    diagnostics::fail("no memory for a transform, " + std::to_string(count * sizeof(T)) +
                      " bytes; make nx and ny smaller");
  std::uninitialized_fill_n(memory, count, T());
  return AlignedArray<T>(memory);
}
template AlignedArray<double> allocate_aligned(std::size_t count);
template AlignedArray<cpx> allocate_aligned(std::size_t count);
template AlignedArray<std::complex<float>> allocate_aligned(std::size_t count);

TurningPlane::Blocks::Blocks(int writers, int readers)
    : step(static_cast<std::size_t>(writers * kBatch * kBatch + 3 * kBatch)),
      values(allocate_aligned<cpx>(static_cast<std::size_t>(readers) * step)) {}

TurningPlane::TurningPlane(int written_lines, int read_lines)
    : written_lines_(written_lines),
      read_lines_(read_lines),
      written_(groups_of(ranks::share(written_lines).size()), groups_of(read_lines)),
      read_(groups_of(written_lines),
            ranks::count() == 1 ? 0 : groups_of(ranks::share(read_lines).size())) {}

void TurningPlane::exchange() {
  if (ranks::count() > 1)
    ranks::transpose(written_lines_, read_lines_, written_.values.get(), written_.step,
                     read_.values.get(), read_.step);
}

Workspace::Workspace(int longest)
    : in(allocate_aligned<cpx>(kBatch * line_step(longest))),
      out(allocate_aligned<cpx>(kBatch * line_step(longest))),
      drift_in(allocate_aligned<std::complex<float>>(kBatch * line_step(longest))),
      drift_out(allocate_aligned<std::complex<float>>(kBatch * line_step(longest))) {}

namespace {

fftwpp::many_layout layout_of_lines(int n) {
  const auto step = static_cast<int>(line_step(n));
  return {n, kBatch, 1, step, 1, step};
}

}  // namespace

std::unique_ptr<fftwpp::fft1d_many> inverse_of_lines(int n, Workspace& work) {
  return std::make_unique<fftwpp::fft1d_many>(layout_of_lines(n), 1, work.in.get(), work.out.get());
}
std::unique_ptr<fftwpp::fft1f_many> drift_of_lines(int n, Workspace& work) {
  return std::make_unique<fftwpp::fft1f_many>(layout_of_lines(n), 1, work.drift_in.get(),
                                              work.drift_out.get());
}

std::vector<float> numbers_twice(const Axis& axis) {
  std::vector<float> result;
  for (const double number : axis.number)
    result.insert(result.end(), 2, static_cast<float>(number));
  result.resize(static_cast<std::size_t>(groups_of(axis.n)) * std::size_t{2 * kBatch});
  return result;
}
std::vector<double> drift_with_both_signs(const Axis& axis) {
  std::vector<double> result;
  for (const double drift : axis.drift) result.insert(result.end(), {-drift, drift});
  result.resize(static_cast<std::size_t>(groups_of(axis.n)) * std::size_t{2 * kBatch});
  return result;
}

}  // namespace wpm
