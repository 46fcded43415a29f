#include "main/checkpoint.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fstream>
#include <sstream>
#include <utility>

#include "diagnostics.h"
#include "main/identity.h"
#include "ranks/ranks.h"
#include "wisdom_state.h"
#include "wpm/byte_stream.h"

namespace {

constexpr const char* kMagic = "zerith checkpoint 1\n";

std::string packed(const RunState& state) {
  ByteWriter body;
  body.put(static_cast<std::int32_t>(state.backend));
  body.put(std::int32_t{state.slice});
  body.put(state.step_seconds);
  body.put(state.taken_by_edge);
  body.put(std::uint64_t{state.sinks.size()});
  for (const SinkState& sink : state.sinks) body.put_text(sink);
  body.put(std::uint64_t{state.E.size() * sizeof(cpx)});
  body.put_all(state.E);
  body.put_text(state.wisdom);
  body.put_text(state.wisdom_single);
  return body.bytes();
}

RunState unpacked(std::string_view body) {
  ByteReader from(body);
  RunState state;
  state.backend = static_cast<Backend>(from.take<std::int32_t>());
  state.slice = from.take<std::int32_t>();
  state.step_seconds = from.take<double>();
  state.taken_by_edge = from.take<double>();
  for (auto sinks = from.take<std::uint64_t>(); sinks > 0; --sinks)
    state.sinks.emplace_back(from.take_text());
  from.take_all(state.E, from.take<std::uint64_t>() / sizeof(cpx));
  state.wisdom = from.take_text();
  state.wisdom_single = from.take_text();
  return state;
}

// The run that a checkpoint is of, and its state if the checkpoint is whole.
std::pair<std::string, std::optional<RunState>> read(std::string_view text) {
  try {
    ByteReader from(text);
    std::string of_run(from.take_text());
    const std::string body(from.take_text());
    if (from.take_text() != hash_of(body) || !from.is_at_end()) return {};
    return {std::move(of_run), unpacked(body)};
  } catch (const TooFewBytes&) {
    return {};
  }
}

// All of text, to the disk.
bool write_durably(const std::string& name, const std::string& text) {
  const int descriptor = open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (descriptor < 0) return false;
  std::size_t done = 0;
  while (done < text.size()) {
    const ssize_t written = write(descriptor, text.data() + done, text.size() - done);
    if (written < 0 && errno != EINTR) break;
    if (written > 0) done += static_cast<std::size_t>(written);
  }
  const bool is_whole = done == text.size() && fsync(descriptor) == 0;
  const int error = errno;
  close(descriptor);
  errno = error;
  return is_whole;
}

volatile std::sig_atomic_t signal_that_came = 0;

void note_signal(int number) {
  signal_that_came = number;
  std::signal(number, SIG_DFL);  // the next one acts
}

}  // namespace

std::optional<RunState> read_checkpoint(const std::string& file, const std::string& identity) {
  if (file.empty()) return std::nullopt;
  std::ifstream stream(file, std::ios::binary);
  if (!stream) {
    if (errno == ENOENT) return std::nullopt;
    diagnostics::fail(file + ": the checkpoint cannot be read: " + std::strerror(errno));
  }
  std::ostringstream content;
  content << stream.rdbuf();
  const std::string text = content.str();
  const std::size_t magic = std::strlen(kMagic);
  if (text.compare(0, magic, kMagic) != 0)
    diagnostics::fail(file +
                      ": this is no checkpoint of this version; name another file with "
                      "--checkpoint, or remove it to begin anew");
  auto [of_run, state] = read(std::string_view(text).substr(magic));
  if (!state) diagnostics::fail(file + ": the checkpoint is damaged; remove it to begin anew");
  if (of_run != identity)
    diagnostics::fail(file +
                      ": this checkpoint is of another run: the configuration, its input "
                      "files, the options or the version differ; remove it to begin anew");
  return state;
}

void write_checkpoint(const std::string& file, const std::string& identity, const RunState& state) {
  ByteWriter all;
  const std::string body = packed(state);
  all.put_text(identity);
  all.put_text(body);
  all.put_text(hash_of(body));
  const std::string beside = file + ".new";
  if (write_durably(beside, kMagic + all.bytes()) && std::rename(beside.c_str(), file.c_str()) == 0)
    return;
  diagnostics::error(file + ": the checkpoint cannot be written: " + std::strerror(errno) +
                     "; the run goes on");
}

HeldSignals::HeldSignals() {
  std::signal(SIGINT, note_signal);
  std::signal(SIGTERM, note_signal);
}

HeldSignals::~HeldSignals() {
  std::signal(SIGINT, SIG_DFL);
  std::signal(SIGTERM, SIG_DFL);
  if (signal_that_came != 0 && std::uncaught_exceptions() == 0) std::raise(signal_that_came);
}

Checkpointer::Checkpointer(std::string file, std::string identity, double every_seconds,
                           Backend backend, const Grid& grid, std::span<Sink* const> sinks,
                           const double& step_seconds, const EdgeMask* edge)
    : file_(std::move(file)),
      identity_(std::move(identity)),
      every_(every_seconds),
      backend_(backend),
      grid_(grid),
      sinks_(sinks),
      step_seconds_(step_seconds),
      edge_(edge) {}

void Checkpointer::write(int k, const Slice& slice) {
  RunState state;
  state.backend = backend_;
  state.slice = k;
  state.step_seconds = step_seconds_;
  state.taken_by_edge = edge_ != nullptr ? edge_->taken() : 0.0;
  if (ranks::is_first()) state.E.resize(grid_.plane());
  ranks::gather_lines(slice.E, state.E.data(), grid_.ny, {0, grid_.ny},
                      static_cast<std::size_t>(grid_.nx) * sizeof(cpx));
  if (!ranks::is_first()) return;
  for (Sink* sink : sinks_) state.sinks.push_back(sink->save());
  state.wisdom = fftwpp::wisdom_text();
  state.wisdom_single = fftwpp::single_wisdom_text();
  write_checkpoint(file_, identity_, state);
  written_ = std::chrono::steady_clock::now();
}

bool Checkpointer::requires_field(int /*k*/) {
  // What one rank saw of the clock or of a signal, all do.
  const bool is_late = std::chrono::steady_clock::now() - written_ >= every_;
  const int due = ranks::most(2 * signal_that_came + (is_late && ranks::is_first() ? 1 : 0));
  signal_ = due / 2;
  is_due_ = !file_.empty() && due != 0;
  return is_due_;
}

void Checkpointer::slice_done(int k, const Slice& slice, const StepResult& /*step*/) {
  if (is_due_) write(k, slice);
  if (signal_ == 0) return;
  if (ranks::is_first()) {
    if (file_.empty())
      for (Sink* sink : sinks_) sink->save();  // to the disk
    diagnostics::progress("");
    diagnostics::error("stopped by a signal behind slice " + std::to_string(k) + " of " +
                       std::to_string(grid_.nz - 1) +
                       (file_.empty() ? "; what is written holds the slices up to there"
                                      : "; the same command goes on from " + file_));
  }
  ranks::meet();
  std::signal(signal_, SIG_DFL);
  std::raise(signal_);
}
