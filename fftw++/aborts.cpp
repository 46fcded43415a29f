#include "aborts.h"

#include <unistd.h>

#include <csignal>
#include <cstring>

namespace fftwpp {
namespace {

struct sigaction before {};

// Calls only functions that are safe in a signal handler.
void write_text(const char* text) {
  [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, text, std::strlen(text));
}

}  // namespace

constinit thread_local const char* Doing::now = nullptr;

void explain_aborts() {
  static const bool is_listening = [] {
    struct sigaction action {};
    action.sa_handler = [](int signal) {
      if (Doing::now == nullptr) {
        sigaction(signal, &before, nullptr);
        raise(signal);
        return;
      }
      write_text("zerith: error: the transform library gave up while ");
      write_text(Doing::now);
      write_text(", most likely for want of memory; make nx and ny smaller\n");
      _exit(1);
    };
    action.sa_flags = SA_NODEFER;
    return sigaction(SIGABRT, &action, &before) == 0;
  }();
  static_cast<void>(is_listening);
}

}  // namespace fftwpp
