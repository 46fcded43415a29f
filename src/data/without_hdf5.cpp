// Data sets in a build without HDF5: none can be opened.
#include "data/dataset.h"
#include "diagnostics.h"

namespace data {

struct Dataset::Inside {
  std::optional<Sampling> sampling;
  std::string name;
};

Dataset::Dataset(const std::string& file, const std::string& dataset, Layout /*layout*/,
                 const std::string& where)
    : inside_(nullptr) {
  diagnostics::fail(where + ": " + file + ":" + dataset +
                    " cannot be read: this program was built without HDF5; install it (Debian: "
                    "libhdf5-dev) and build with -DZERITH_HDF5=on");
}
Dataset::~Dataset() = default;
Dataset::Dataset(Dataset&&) noexcept = default;

int Dataset::slices() const {
  return 0;
}
int Dataset::rows() const {
  return 0;
}
int Dataset::columns() const {
  return 0;
}
bool Dataset::is_complex() const {
  return false;
}
const std::optional<Sampling>& Dataset::sampling() const {
  return inside_->sampling;
}
const std::string& Dataset::name() const {
  return inside_->name;
}
void Dataset::read(int /*first*/, int /*count*/, double* /*values*/) const {}

}  // namespace data
