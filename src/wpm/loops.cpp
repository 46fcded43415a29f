#include "wpm/loops.h"

#include <cstring>
#include <type_traits>

#include "wpm/modes.h"

// The loops are compiled once more for processors with wider registers and chosen when the program
// is loaded. Neither form contracts or reorders arithmetic, so both give the same bits.
// NOLINTBEGIN(bugprone-macro-parentheses): parameters and arguments come with theirs
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && \
    !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define ZERITH_WIDE [[gnu::target_clones("avx2", "default")]]
// Likewise for loops written for any width: name(parameters) as widest arguments, with the body
// name_by<Vector>.
#define ZERITH_WIDEST(name, parameters, arguments)           \
  namespace {                                                \
  [[gnu::target("default")]] void name##_widest parameters { \
    name##_by<Two> arguments;                                \
  }                                                          \
  [[gnu::target("avx2")]] void name##_widest parameters {    \
    name##_by<Two> arguments;                                \
  }                                                          \
  [[gnu::target("avx512f")]] void name##_widest parameters { \
    name##_by<Four> arguments;                               \
  }                                                          \
  }                                                          \
  void name parameters {                                     \
    name##_widest arguments;                                 \
  }
#else
#define ZERITH_WIDE
#define ZERITH_WIDEST(name, parameters, arguments) \
  void name parameters {                           \
    name##_by<Two> arguments;                      \
  }
#endif
// NOLINTEND(bugprone-macro-parentheses)

namespace wpm {
namespace {

constexpr double kWeak = 1e-8;  // the square of the cut-off
constexpr double kUnsure = 1e-6;

// Two complex numbers, re im re im. What cannot be said by a plain loop without the compiler
// taking the numbers apart one by one is said in these.
using Two = double __attribute__((vector_size(32)));
using TwoSingle = float __attribute__((vector_size(16)));
using TwoMask = long long __attribute__((vector_size(32)));
// And four, where registers hold them: maybe nowhere.
using Four = double __attribute__((vector_size(64)));
using FourSingle = float __attribute__((vector_size(32)));
template <typename Vector>
using SingleOf = std::conditional_t<sizeof(Vector) == sizeof(Two), TwoSingle, FourSingle>;
template <typename Vector>
constexpr int kNumbers = sizeof(Vector) / sizeof(cpx);  // complex ones

template <typename Vector, typename T>
[[gnu::always_inline]] inline Vector load(const T* from) {
  Vector v;
  std::memcpy(&v, from, sizeof v);
  return v;
}
template <typename Vector, typename T>
[[gnu::always_inline]] inline void store(const Vector& v, T* to) {
  std::memcpy(static_cast<void*>(to), &v, sizeof v);
}

// re and im exchanged, or one of them twice; the numbers in reverse order.
[[gnu::always_inline]] inline Two exchanged(const Two& a) {
  return __builtin_shufflevector(a, a, 1, 0, 3, 2);
}
[[maybe_unused, gnu::always_inline]] inline Four exchanged(const Four& a) {
  return __builtin_shufflevector(a, a, 1, 0, 3, 2, 5, 4, 7, 6);
}
[[gnu::always_inline]] inline TwoSingle exchanged(const TwoSingle& a) {
  return __builtin_shufflevector(a, a, 1, 0, 3, 2);
}
[[maybe_unused, gnu::always_inline]] inline FourSingle exchanged(const FourSingle& a) {
  return __builtin_shufflevector(a, a, 1, 0, 3, 2, 5, 4, 7, 6);
}
[[gnu::always_inline]] inline Two reversed(const Two& a) {
  return __builtin_shufflevector(a, a, 2, 3, 0, 1);
}
[[maybe_unused, gnu::always_inline]] inline Four reversed(const Four& a) {
  return __builtin_shufflevector(a, a, 6, 7, 4, 5, 2, 3, 0, 1);
}

// The plain product: operands are finite, and the standard one's recovery of infinities costs.
[[gnu::always_inline]] inline Two product(const Two& a, const Two& b) {
  const Two straight = a * __builtin_shufflevector(b, b, 0, 0, 2, 2);
  const Two crossed = exchanged(a) * __builtin_shufflevector(b, b, 1, 1, 3, 3);
  return __builtin_shufflevector(straight - crossed, straight + crossed, 0, 5, 2, 7);
}
[[maybe_unused, gnu::always_inline]] inline Four product(const Four& a, const Four& b) {
  const Four straight = a * __builtin_shufflevector(b, b, 0, 0, 2, 2, 4, 4, 6, 6);
  const Four crossed = exchanged(a) * __builtin_shufflevector(b, b, 1, 1, 3, 3, 5, 5, 7, 7);
  return __builtin_shufflevector(straight - crossed, straight + crossed, 0, 9, 2, 11, 4, 13, 6, 15);
}

[[gnu::always_inline]] inline cpx product(const cpx& a, const cpx& b) {
  return {a.real() * b.real() - a.imag() * b.imag(), a.imag() * b.real() + a.real() * b.imag()};
}

template <typename Vector>
[[gnu::always_inline]] inline Vector corrected(const Vector& row,
                                               const std::complex<float>* correction,
                                               const double* drift) {
  const auto crossed = exchanged(load<SingleOf<Vector>>(correction));
  return row + load<Vector>(drift) * __builtin_convertvector(crossed, Vector);
}
[[gnu::always_inline]] inline cpx corrected(const cpx& row, const std::complex<float>& c,
                                            const double* drift) {
  return {row.real() + drift[0] * static_cast<double>(c.imag()),
          row.imag() + drift[1] * static_cast<double>(c.real())};
}

[[gnu::always_inline]] inline std::complex<float> drifted_one(const cpx& value,
                                                              const float* number) {
  return {static_cast<float>(value.real()) * number[0],
          static_cast<float>(value.imag()) * number[1]};
}

}  // namespace

ZERITH_WIDE Taken take_amplitudes(int n, const cpx* S, double scale, cpx* f) {
  const double tame = kTameAmplitude / scale * (kTameAmplitude / scale);
  // How many are weak if a value too close to the cut-off is, and if it isn't.
  TwoMask weak_at_most{};
  TwoMask weak_at_least{};
  TwoMask is_tame = ~TwoMask{};
  int a = 0;
  for (; a + 2 <= n; a += 2) {
    const auto s = load<Two>(S + a);
    const Two squares = s * s;
    const Two modulus = squares + __builtin_shufflevector(squares, squares, 1, 0, 3, 2);
    const TwoMask is_weak = modulus < kWeak * (1 + kUnsure);  // a NaN is not
    const Two amplitude = s * scale;
    store(reinterpret_cast<Two>(reinterpret_cast<TwoMask>(amplitude) & ~is_weak), f + a);
    weak_at_most -= is_weak;
    weak_at_least -= modulus < kWeak * (1 - kUnsure);
    is_tame &= modulus < tame;
  }
  const long long weak = weak_at_most[0] + weak_at_most[2];
  Taken taken;
  taken.kept = static_cast<std::size_t>(a - weak);
  taken.is_tame = (is_tame[0] & is_tame[2]) != 0;
  const bool is_sure = weak == weak_at_least[0] + weak_at_least[2];
  if (!is_sure) a = 0, taken.kept = 0;  // one by one
  for (; a < n; ++a) {
    const bool is_kept = !is_weak(S[a]);
    f[a] = is_kept ? S[a] * scale : 0.0;
    taken.kept += is_kept ? 1 : 0;
    if (is_kept && !(std::norm(S[a]) < tame)) taken.is_tame = false;
  }
  return taken;
}

namespace {

template <typename Vector>
[[gnu::always_inline]] inline void apply_transfer_by(int n, const cpx* f, const cpx* factor,
                                                     const float* number, cpx* row,
                                                     std::complex<float>* drifted) {
  const auto some = [&]<typename V>(int a, const V& t) __attribute__((always_inline)) {
    const V value = product(load<V>(f + a), t);
    store(value, row + a);
    store(__builtin_convertvector(value, SingleOf<V>) * load<SingleOf<V>>(number + 2 * a),
          drifted + a);
  };
  const auto one = [&](int a, int fold) __attribute__((always_inline)) {
    row[a] = product(f[a], factor[fold]);
    drifted[a] = drifted_one(row[a], number + 2 * a);
  };
  const int half = n / 2 + 1;
  int a = 0;
  for (; a + kNumbers<Vector> <= half; a += kNumbers<Vector>) some(a, load<Vector>(factor + a));
  for (; a + 2 <= half; a += 2) some(a, load<Two>(factor + a));
  if (a < half) one(a, a), ++a;
  for (; a + kNumbers<Vector> <= n; a += kNumbers<Vector>)
    some(a, reversed(load<Vector>(factor + (n - a - kNumbers<Vector> + 1))));
  for (; a + 2 <= n; a += 2) some(a, reversed(load<Two>(factor + (n - a - 1))));
  if (a < n) one(a, n - a);
}

template <typename Vector>
[[gnu::always_inline]] inline void drift_lines_by(int n, const cpx* lines, const float* number,
                                                  std::complex<float>* drifted) {
  for (int v = 0; v < n; ++v, lines += 8, drifted += 8)
    for (int line = 0; line < 8; line += kNumbers<Vector>)
      store(__builtin_convertvector(load<Vector>(lines + line), SingleOf<Vector>) * number[2 * v],
            drifted + line);
}

template <typename Vector>
[[gnu::always_inline]] inline void copy_into_blocks_by(int n, const cpx* row, std::size_t step,
                                                       cpx* blocks, std::size_t block_step) {
  for (int begin = 0; begin < n; begin += 8, blocks += block_step)
    for (std::size_t line = 0; line < 8; ++line)
      for (std::size_t a = 0; a < 8; a += kNumbers<Vector>)
        store(load<Vector>(row + line * step + static_cast<std::size_t>(begin) + a),
              blocks + 8 * line + a);
}

template <typename Vector>
[[gnu::always_inline]] inline void correct_into_blocks_by(int n, const cpx* row,
                                                          const std::complex<float>* correction,
                                                          std::size_t step, const double* drift,
                                                          cpx* blocks, std::size_t block_step) {
  for (int begin = 0; begin < n; begin += 8, blocks += block_step)
    for (std::size_t line = 0; line < 8; ++line)
      for (std::size_t a = 0; a < 8; a += kNumbers<Vector>) {
        const std::size_t from = line * step + static_cast<std::size_t>(begin) + a;
        store(corrected(load<Vector>(row + from), correction + from,
                        drift + 2 * (static_cast<std::size_t>(begin) + a)),
              blocks + 8 * line + a);
      }
}

template <typename Vector>
[[gnu::always_inline]] inline void add_corrected_by(int n, const cpx* row,
                                                    const std::complex<float>* correction,
                                                    const double* drift, cpx* out) {
  const auto some = [&]<typename V>(int a, const V& sum) __attribute__((always_inline)) {
    store(sum + corrected(load<V>(row + a), correction + a, drift + 2 * a), out + a);
  };
  int a = 0;
  for (; a + kNumbers<Vector> <= n; a += kNumbers<Vector>) some(a, load<Vector>(out + a));
  for (; a + 2 <= n; a += 2) some(a, load<Two>(out + a));
  for (; a < n; ++a) out[a] += corrected(row[a], correction[a], drift + 2 * a);
}

}  // namespace

ZERITH_WIDEST(apply_transfer,
              (int n, const cpx* f, const cpx* factor, const float* number, cpx* row,
               std::complex<float>* drifted),
              (n, f, factor, number, row, drifted))
ZERITH_WIDEST(drift_lines,
              (int n, const cpx* lines, const float* number, std::complex<float>* drifted),
              (n, lines, number, drifted))
ZERITH_WIDEST(copy_into_blocks,
              (int n, const cpx* row, std::size_t step, cpx* blocks, std::size_t block_step),
              (n, row, step, blocks, block_step))
ZERITH_WIDEST(correct_into_blocks,
              (int n, const cpx* row, const std::complex<float>* correction, std::size_t step,
               const double* drift, cpx* blocks, std::size_t block_step),
              (n, row, correction, step, drift, blocks, block_step))
ZERITH_WIDEST(add_corrected,
              (int n, const cpx* row, const std::complex<float>* correction, const double* drift,
               cpx* out),
              (n, row, correction, drift, out))

ZERITH_WIDE void times_number(int n, const cpx* row, const float* number,
                              std::complex<float>* drifted) {
  int a = 0;
  for (; a + 2 <= n; a += 2)
    store(__builtin_convertvector(load<Two>(row + a), TwoSingle) * load<TwoSingle>(number + 2 * a),
          drifted + a);
  if (a < n) drifted[a] = drifted_one(row[a], number + 2 * a);
}

ZERITH_WIDE void add_weighted(int n, const cpx* row, const std::complex<float>* correction,
                              const double* drift, const cpx* weight, cpx* out) {
  int a = 0;
  for (; a + 2 <= n; a += 2)
    store(load<Two>(out + a) + product(corrected(load<Two>(row + a), correction + a, drift + 2 * a),
                                       load<Two>(weight + a)),
          out + a);
  for (; a < n; ++a) out[a] += product(corrected(row[a], correction[a], drift + 2 * a), weight[a]);
}

ZERITH_WIDE void power_of(int n, const cpx* f, const cpx* g, double* power) {
  const auto square = [](const cpx& c) { return c.real() * c.real() + c.imag() * c.imag(); };
  if (g == nullptr)
    for (int a = 0; a < n; ++a) power[a] = square(f[a]);
  else
    for (int a = 0; a < n; ++a) power[a] = square(f[a]) + square(g[a]);
}

ZERITH_WIDE void fold_power(int n, double* power) {
  for (int a = 1; a < n - a; ++a) power[a] += power[n - a];
}

// One chain of additions would be all latency.
ZERITH_WIDE double weighted_sum(int n, const double* power, const double* factor) {
  Two strands[2] = {{0.0, 0.0, 0.0, 0.0}, {0.0, 0.0, 0.0, 0.0}};
  int a = 0;
  for (; a + 8 <= n; a += 8) {
    strands[0] += load<Two>(power + a) * load<Two>(factor + a);
    strands[1] += load<Two>(power + a + 4) * load<Two>(factor + a + 4);
  }
  const Two sum = strands[0] + strands[1];
  double total = (sum[0] + sum[1]) + (sum[2] + sum[3]);
  for (; a < n; ++a) total += power[a] * factor[a];
  return total;
}

ZERITH_WIDE int length_of_run(int n, const cpx* N) {
  using Bits = TwoMask;
  const cpx twice[2] = {N[0], N[0]};
  const auto first = load<Bits>(twice);
  int a = 0;
  for (; a + 8 <= n; a += 8) {
    const Bits differs = ((load<Bits>(N + a) ^ first) | (load<Bits>(N + a + 2) ^ first)) |
                         ((load<Bits>(N + a + 4) ^ first) | (load<Bits>(N + a + 6) ^ first));
    if (((differs[0] | differs[1]) | (differs[2] | differs[3])) != 0) break;
  }
  // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison): representations are what is compared
  while (a < n && std::memcmp(N + a, N, sizeof(cpx)) == 0) ++a;
  return a;
}

}  // namespace wpm
