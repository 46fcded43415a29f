// What a run over several ranks does that another one needs not.
#pragma once

#include "main/run.h"

// Refuses what several ranks cannot do together. Says nothing where there is one.
void require_shareable(const Run& run);

// What the first rank alone has found, the index at the entry and where a stopped run goes on, to
// all.
void share_entry_index(Run& run);
void share_resumed(Run& run);

// Of a slice, [ny][nx], that the first rank has, to every rank its own rows.
std::vector<cpx> my_rows(const Run& run, const cpx* slice);
std::vector<double> my_rows(const Run& run, const double* slice);

// A sink on every rank before those of the first: brings together for them what they require of a
// slice. What nobody requires stays on its rank.
class GatheringSink : public Sink {
 public:
  // sinks: the first rank's, which outlive this one; none on the others.
  GatheringSink(const Run& run, std::vector<Sink*> sinks);
  void take(int k, const Slice& own) override;
  void finish() override;
  SinkState save() override { return {}; }  // the first rank's sinks have theirs
  void restore(const SinkState& /*state*/) override {}

 private:
  [[nodiscard]] SliceRequest request(int k) const;
  template <typename T>
  void gather(const T* own, const SliceRequest& request, std::vector<T>& whole) const;

  const Grid grid_;
  std::vector<Sink*> sinks_;
  std::vector<cpx> E_, N_;  // on the first rank, where they were wanted
  std::vector<double> F_;
};
