// What main prints on the error stream: the messages of a run, each on a line that begins
// "zerith: ", and the error that ends it.
#pragma once

#include <string>

#include "diagnostics.h"

class Terminal : public zerith::Observer {
 public:
  // quiet: nothing but errors.
  explicit Terminal(bool is_quiet) : is_quiet_(is_quiet) {}

  // For one of several processes of a run, all but the first of which have a name: from now on
  // only its errors are shown, with the name.
  void set_name(const std::string& name);

  [[nodiscard]] bool shows_notes() const override;

  // Work's status, or that of the error that ended it, after it is printed.
  template <typename Work>
  int status_of(Work work) {
    try {
      return work();
    } catch (const zerith::Error& error) {
      return report(error);
    } catch (const std::exception& error) {
      return report(zerith::Error(error.what()));
    }
  }

 protected:
  void show(zerith::Message kind, const std::string& text) override;

 private:
  int report(const zerith::Error& error);
  void print(zerith::Message kind, const std::string& text) const;

  bool is_quiet_;
  std::string name_;
};

// From now on a failing operator new prints an error and ends the process with status 255, in
// whatever thread. main calls it before anything else.
void install_memory_handler();
