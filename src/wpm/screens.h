// Screens: thin masks that multiply the field of one slice.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "system/index_stack.h"
#include "wpm/slice.h"

// Multiplies the field of a slice by its screens: 1 in the opening, the screen's transmission, an
// amplitude, elsewhere; or by the numbers of a file, the transmission beyond them. This is the thin
// screen of Kirchhoff (Goodman, Introduction to Fourier Optics, 3.1): the field behind is that of
// the incident wave where it is open, whatever the rim is made of.
//
// A sample that the rim cuts gets the share of its area that is open, in the steps of the layer's
// `levels`; with 1, or none given, it is open if its middle is. The flux of the slice is what
// arrives, before the screen.
class ScreenMask : public FieldMask {
 public:
  // screens: those of the stack. configuration: path of the file that they are from, for messages
  // and names of files. Ends the process with its line if a screen lies outside the grid or its
  // file does not serve.
  ScreenMask(const Grid& grid, const std::vector<Screen>& screens,
             const std::string& configuration);
  // For slices of the rows of a window alone.
  ScreenMask(const Grid& grid, const Window& window, const std::vector<Screen>& screens,
             const std::string& configuration);

  void apply(int k, cpx* E) override;
  [[nodiscard]] bool covers(int k) const override { return factors_.count(k) != 0; }

 private:
  std::map<int, std::vector<cpx>> factors_;  // of the slices with screens, [rows][nx]
};
