#include "wpm/slice.h"

Slice Slices::at(int k) {
  const bool is_new = k > newest_;
  Slice of_run = slice(k, is_new);
  if (is_new) {
    const bool has_previous = k == newest_ + 1 && newest_ >= 0;
    newest_ = k;
    copies(k) = {};
    if (device_ != nullptr && has_previous) device_->prefetch(slice(k - 1, false), of_run);
  }
  of_run.on_device = copies(k).on_device;
  return of_run;
}

void Slices::set_made(int k, bool is_whole_on_host) {
  if (device_ != nullptr) copies(k) = {is_whole_on_host, true};
}

cpx* Slices::fetch_field(int k) {
  const Slice of_run = at(k);
  if (!copies(k).on_host) device_->fetch_field(of_run);
  copies(k).on_host = true;
  return of_run.E;
}

cpx* Slices::change_field(int k) {
  cpx* E = fetch_field(k);
  copies(k).on_device = false;
  return E;
}
