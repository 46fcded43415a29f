// Device memory: pages of its own, closed to the host outside copies, transforms and kernels.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "device.h"
#include "standin.h"

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(address, bytes) ((void)(address), (void)(bytes))
#define ASAN_UNPOISON_MEMORY_REGION(address, bytes) ((void)(address), (void)(bytes))
#endif

namespace standin {
namespace {

constexpr std::size_t kAlignment = 256;
constexpr std::size_t kAddressSpace = std::size_t{1} << 47;  // what a process can map at all

std::size_t page_size() {
  static const auto size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  return size;
}

std::size_t round_up(std::size_t bytes, std::size_t unit) {
  return (bytes + unit - 1) / unit * unit;
}

std::uintptr_t address(const void* pointer) {
  return reinterpret_cast<std::uintptr_t>(pointer);
}

bool is_on_device(bool is_target, cudaMemcpyKind kind) {
  return kind == cudaMemcpyDeviceToDevice ||
         kind == (is_target ? cudaMemcpyHostToDevice : cudaMemcpyDeviceToHost);
}

}  // namespace

void Allocation::protect(bool is_open) const {
  const std::size_t inside = mapped - 2 * page_size();
  const int rights = is_open ? PROT_READ | PROT_WRITE : PROT_NONE;
  if (mprotect(pages + page_size(), inside, rights) != 0) misuse("mprotect failed");
}

Memory::Memory() : limit_(memory_of_device()) {}

void* Memory::allocate(std::size_t bytes) {
  if (used_ > limit_ || bytes > limit_ - used_ || bytes > kAddressSpace) return nullptr;
  const std::size_t extent = round_up(bytes, kAlignment);
  const std::size_t inside = round_up(extent, page_size());
  const std::size_t mapped = inside + 2 * page_size();
  void* pages =
      mmap(nullptr, mapped, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (pages == MAP_FAILED) return nullptr;

  auto* first = static_cast<std::byte*>(pages);
  std::byte* begin = first + page_size();
  std::byte* data = begin + (inside - extent);
  ASAN_POISON_MEMORY_REGION(begin, inside);
  ASAN_UNPOISON_MEMORY_REGION(data, bytes);
  allocations_.emplace(address(data), Allocation{first, mapped, data, bytes});
  used_ += bytes;
  return data;
}

bool Memory::release(const void* pointer) {
  const auto found = allocations_.find(address(pointer));
  if (found == allocations_.end()) return false;
  const Allocation& allocation = found->second;
  ASAN_UNPOISON_MEMORY_REGION(allocation.pages, allocation.mapped);
  munmap(allocation.pages, allocation.mapped);
  used_ -= allocation.size;
  allocations_.erase(found);
  return true;
}

const Allocation* Memory::find(const void* pointer) const {
  return find(pointer, 1);
}

const Allocation* Memory::find(const void* pointer, std::size_t bytes) const {
  auto next = allocations_.upper_bound(address(pointer));
  if (next == allocations_.begin()) return nullptr;
  const Allocation& allocation = std::prev(next)->second;
  const std::size_t offset = address(pointer) - address(allocation.data);
  const bool is_inside = offset <= allocation.size && bytes <= allocation.size - offset;
  return is_inside ? &allocation : nullptr;
}

Access::Access(const Memory& memory, const std::vector<const void*>& pointers) {
  for (const void* pointer : pointers) {
    const Allocation* allocation = memory.find(pointer);
    if (allocation == nullptr) {
      is_granted_ = false;
    } else if (std::find(opened_.begin(), opened_.end(), allocation) == opened_.end()) {
      allocation->protect(true);
      opened_.push_back(allocation);
    }
  }
}

Access::~Access() {
  for (const Allocation* allocation : opened_) allocation->protect(false);
}

void set_memory_limit(std::size_t bytes) {
  const std::lock_guard lock(device().mutex);
  device().memory.set_limit(bytes);
}

}  // namespace standin

cudaError_t cudaMalloc(void** pointer, std::size_t bytes) {
  standin::Device& device = standin::device();
  const std::lock_guard lock(device.mutex);
  *pointer = nullptr;
  if (bytes == 0 || device.errors.is_faulted()) return device.errors.record(cudaSuccess);
  if (device.calls.take(standin::Call::kAllocation)) *pointer = device.memory.allocate(bytes);
  return device.errors.record(*pointer != nullptr ? cudaSuccess : cudaErrorMemoryAllocation);
}

cudaError_t cudaFree(void* pointer) {
  standin::Device& device = standin::device();
  const std::lock_guard lock(device.mutex);
  const bool is_released = pointer == nullptr || device.memory.release(pointer);
  return device.errors.record(is_released ? cudaSuccess : cudaErrorInvalidValue);
}

cudaError_t cudaMemcpy(void* target, const void* source, std::size_t bytes, cudaMemcpyKind kind) {
  return cudaMemcpy2D(target, bytes, source, bytes, bytes, 1, kind);
}

cudaError_t cudaMemcpy2D(void* target, std::size_t target_pitch, const void* source,
                         std::size_t source_pitch, std::size_t width, std::size_t height,
                         cudaMemcpyKind kind) {
  standin::Device& device = standin::device();
  const std::lock_guard lock(device.mutex);
  if (width == 0 || height == 0 || device.errors.is_faulted())
    return device.errors.record(cudaSuccess);
  if (!device.calls.take(standin::Call::kCopy)) return device.errors.record(cudaErrorUnknown);
  if (width > target_pitch || width > source_pitch)
    return device.errors.record(cudaErrorInvalidValue);

  std::vector<const void*> device_sides;
  for (const bool is_target : {true, false}) {
    const void* side = is_target ? target : source;
    const std::size_t bytes = (height - 1) * (is_target ? target_pitch : source_pitch) + width;
    const bool is_device_side = standin::is_on_device(is_target, kind);
    const bool is_valid = is_device_side ? device.memory.find(side, bytes) != nullptr
                                         : device.memory.find(side) == nullptr && side != nullptr;
    if (!is_valid) return device.errors.record(cudaErrorInvalidValue);
    if (is_device_side) device_sides.push_back(side);
  }
  const standin::Access access(device.memory, device_sides);
  for (std::size_t row = 0; row < height; ++row)
    std::memmove(static_cast<std::byte*>(target) + row * target_pitch,
                 static_cast<const std::byte*>(source) + row * source_pitch, width);
  return device.errors.record(cudaSuccess);
}

cudaError_t cudaMemset(void* target, int value, std::size_t bytes) {
  standin::Device& device = standin::device();
  const std::lock_guard lock(device.mutex);
  if (bytes == 0 || device.errors.is_faulted()) return device.errors.record(cudaSuccess);
  if (!device.calls.take(standin::Call::kLaunch)) return device.errors.record(cudaErrorUnknown);
  if (device.memory.find(target, bytes) == nullptr)
    return device.errors.record(cudaErrorInvalidValue);
  const standin::Access access(device.memory, {target});
  std::memset(target, value, bytes);
  return device.errors.record(cudaSuccess);
}
