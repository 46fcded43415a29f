#include "fftw++.h"

#include <cstdint>
#include <iterator>
#include <set>
#include <sstream>
#include <string>

#include "aborts.h"
#include "diagnostics.h"
#include "wisdom.h"
#include "wisdom_state.h"

namespace fftwpp {
namespace {

constexpr std::size_t kAlignment = sizeof(Complex);

fftw_complex* raw(Complex* p) {
  return reinterpret_cast<fftw_complex*>(p);
}

int read_character(void* stream) {
  return GetWisdom(*static_cast<std::ifstream*>(stream));
}
void write_character(char c, void* stream) {
  PutWisdom(c, *static_cast<std::ofstream*>(stream));
}

std::multiset<std::string> lines_of(std::istream& text) {
  std::multiset<std::string> lines;
  for (std::string line; std::getline(text, line);) lines.insert(line);
  return lines;
}

// Whether the file has these lines in any order. If so it is not written again: a killed run must
// not leave a partial file.
bool holds(const char* name, const std::string& wisdom) {
  if (!is_readable_wisdom(name)) return false;
  std::ifstream file(name);
  std::istringstream text(wisdom);
  return lines_of(file) == lines_of(text);
}

}  // namespace

std::ifstream fftw::ifWisdom;
std::ofstream fftw::ofWisdom;
bool fftw::Wise = false;
const double fftw::twopi = 6.283185307179586;
unsigned int fftw::effort = FFTW_MEASURE;
const char* fftw::WisdomName = "wisdom3.txt";

int GetWisdom(std::ifstream& s) {
  return s.get();
}
void PutWisdom(char c, std::ofstream& s) {
  s.put(c);
}

fftw::fftw(unsigned int doubles_, int sign_) : doubles(doubles_), sign(sign_), norm(1.0) {
  const unsigned int elements = doubles / 2;
  norm /= elements;
  static bool initialize = true;
  if (!initialize) return;
  explain_aborts();
  const Doing beginning("preparing to transform");
  fftw_init_threads();
  initialize = false;
}

fftw::~fftw() {
  if (plan != nullptr) fftw_destroy_plan(plan);
}

void noplan() {
  throw zerith::Error("Unable to construct FFTW plan", 1);
}

void fftw::CheckAlign(Complex* p, const char* s) {
  if (reinterpret_cast<std::uintptr_t>(p) % kAlignment == 0) return;
  std::ostringstream text;
  text << s << " array is not " << kAlignment << "-byte aligned: address " << p;
  diagnostics::warn(text.str());
}

void fftw::Setup(Complex* in, Complex* out) {
  const std::string what =
      "planning a transform of " + std::to_string(doubles / 2) + " complex numbers";
  const Doing planning(what.c_str());
  ReadWisdom();
  // Measured planning overwrites its arrays. Without an input it uses scratch memory, so no data of
  // the caller is lost.
  Complex* scratch = nullptr;
  if (in == nullptr) {
    Array::newAlign(scratch, (doubles + 1) / 2, kAlignment);
    in = scratch;
  }
  CheckAlign(in, "constructor input");
  if (out == nullptr)
    out = in;
  else
    CheckAlign(out, "constructor output");
  inplace = out == in;

  fftw_plan_with_nthreads(1);
  plan = Plan(in, out);
  if (plan == nullptr) {
    Array::deleteAlign(scratch);
    noplan();
  }
  threads = 1;
  if (maxthreads > 1) TryThreads(in, out);

  Array::deleteAlign(scratch);
  WriteWisdom();
}

// Ignores a file that is not valid wisdom from end to end: FFTW detects most damage, but not all.
void fftw::ReadWisdom() {
  if (Wise) return;
  Wise = true;
  if (!is_readable_wisdom(WisdomName)) return;
  ifWisdom.open(WisdomName);
  const std::string text{std::istreambuf_iterator<char>(ifWisdom), {}};
  if (is_sound_wisdom(text)) {
    ifWisdom.clear();
    ifWisdom.seekg(0);
    fftw_import_wisdom(read_character, &ifWisdom);
  }
  ifWisdom.close();
  ifWisdom.clear();
}

void fftw::WriteWisdom() {
  if (is_wisdom_closed() || !is_writable_wisdom(WisdomName) || holds(WisdomName, wisdom_text()))
    return;
  ofWisdom.open(WisdomName, std::ios::out | std::ios::trunc);
  fftw_export_wisdom(write_character, &ofWisdom);
  ofWisdom.close();
  ofWisdom.clear();
}

Complex* fftw::Setout(Complex* in, Complex* out) {
  CheckAlign(in, "input");
  if (out == nullptr)
    out = in;
  else
    CheckAlign(out, "output");
  if (inplace != (out == in))
    throw zerith::Error(
        "ERROR: fft constructor and call must be both in place or both out of place", 1);
  return out;
}

void fftw::fft(Complex* in, Complex* out) {
  const Doing transforming("transforming");
  out = Setout(in, out);
  Execute(in, out, false);
}

void fftw::fftNormalized(Complex* in, Complex* out) {
  const Doing transforming("transforming");
  out = Setout(in, out);
  Execute(in, out, false);
  for (unsigned int i = 0; i < (doubles + 1) / 2; ++i) out[i] *= norm;
}

void fftw::Execute(Complex* in, Complex* out, bool /*shift*/) {
  fftw_execute_dft(plan, raw(in), raw(out));
}

fft2d::fft2d(unsigned int nx_, unsigned int ny_, int sign_, Complex* in, Complex* out)
    : fftw(2 * nx_ * ny_, sign_), nx(nx_), ny(ny_) {
  Setup(in, out);
}

fftw_plan fft2d::Plan(Complex* in, Complex* out) {
  return fftw_plan_dft_2d(static_cast<int>(nx), static_cast<int>(ny), raw(in), raw(out), sign,
                          effort);
}

void fft2d::Execute(Complex* in, Complex* out, bool /*shift*/) {
  fftw_execute_dft(plan, raw(in), raw(out));
}

}  // namespace fftwpp
