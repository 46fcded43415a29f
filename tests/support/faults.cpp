// Preloaded into the real program by a test: makes one call fail and counts all calls.
//
// FAULT=KIND:N makes the N-th call of a kind fail, counted from 1: "memory" (an allocation),
// "open", "write" or "close" (of files other than the standard streams), "thread" (the start of
// one). At exit the file COUNTS gets the number of calls of each kind, as "KIND N" a line.
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void* __libc_memalign(std::size_t, std::size_t);
}

namespace {

enum Kind { kMemory, kOpen, kWrite, kClose, kThread, kKinds };
constexpr const char* kNames[kKinds] = {"memory", "open", "write", "close", "thread"};

std::atomic<long> calls[kKinds];
long failing[kKinds];  // 0: none
bool is_counting = false;

template <typename Function>
Function next(const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

// Counts the call. Returns whether it is the one to fail, with error in errno.
bool fails(Kind kind, int error) {
  if (!is_counting || ++calls[kind] != failing[kind]) return false;
  errno = error;
  return true;
}

bool has_mode(int flags) {
  return (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
}

bool fails_on(int descriptor, Kind kind, int error) {
  return descriptor > STDERR_FILENO && fails(kind, error);
}

[[gnu::constructor]] void begin() {
  const char* fault = std::getenv("FAULT");
  for (int kind = 0; fault != nullptr && kind < kKinds; ++kind) {
    const std::size_t length = std::strlen(kNames[kind]);
    if (std::strncmp(fault, kNames[kind], length) == 0 && fault[length] == ':')
      failing[kind] = std::atol(fault + length + 1);
  }
}

[[gnu::destructor]] void end() {
  is_counting = false;
  const char* name = std::getenv("COUNTS");
  std::FILE* file = name != nullptr ? std::fopen(name, "w") : nullptr;
  if (file == nullptr) return;
  for (int kind = 0; kind < kKinds; ++kind)
    std::fprintf(file, "%s %ld\n", kNames[kind], calls[kind].load());
  std::fclose(file);
}

// Calls before main belong to the loader and the libraries.
using Main = int (*)(int, char**, char**);
Main real_main;
int counted_main(int argc, char** argv, char** environment) {
  is_counting = true;
  return real_main(argc, argv, environment);
}

}  // namespace

extern "C" {

int __libc_start_main(Main main, int argc, char** argv, void (*init)(), void (*fini)(),
                      void (*rtld_fini)(), void* stack_end) {
  real_main = main;
  const auto start = next<int (*)(Main, int, char**, void (*)(), void (*)(), void (*)(), void*)>(
      "__libc_start_main");
  return start(counted_main, argc, argv, init, fini, rtld_fini, stack_end);
}

void* malloc(std::size_t bytes) {
  return fails(kMemory, ENOMEM) ? nullptr : __libc_malloc(bytes);
}
void* calloc(std::size_t count, std::size_t bytes) {
  return fails(kMemory, ENOMEM) ? nullptr : __libc_calloc(count, bytes);
}
void* realloc(void* old, std::size_t bytes) {
  return fails(kMemory, ENOMEM) ? nullptr : __libc_realloc(old, bytes);
}
void* memalign(std::size_t alignment, std::size_t bytes) {
  return fails(kMemory, ENOMEM) ? nullptr : __libc_memalign(alignment, bytes);
}
void* aligned_alloc(std::size_t alignment, std::size_t bytes) {
  return memalign(alignment, bytes);
}
int posix_memalign(void** memory, std::size_t alignment, std::size_t bytes) {
  if (fails(kMemory, ENOMEM)) return ENOMEM;
  *memory = __libc_memalign(alignment, bytes);
  return *memory == nullptr ? ENOMEM : 0;
}

int openat(int folder, const char* name, int flags, ...) {
  if (fails(kOpen, EMFILE)) return -1;
  va_list more;
  va_start(more, flags);
  const mode_t mode = has_mode(flags) ? va_arg(more, mode_t) : 0;
  va_end(more);
  return static_cast<int>(syscall(SYS_openat, folder, name, flags, mode));
}
int open(const char* name, int flags, ...) {
  va_list more;
  va_start(more, flags);
  const mode_t mode = has_mode(flags) ? va_arg(more, mode_t) : 0;
  va_end(more);
  return openat(AT_FDCWD, name, flags, mode);
}
int open64(const char* name, int flags, ...) {
  va_list more;
  va_start(more, flags);
  const mode_t mode = has_mode(flags) ? va_arg(more, mode_t) : 0;
  va_end(more);
  return openat(AT_FDCWD, name, flags, mode);
}
std::FILE* fopen(const char* name, const char* mode) {
  return fails(kOpen, EMFILE) ? nullptr
                              : next<std::FILE* (*)(const char*, const char*)>("fopen")(name, mode);
}
std::FILE* fopen64(const char* name, const char* mode) {
  return fopen(name, mode);
}

ssize_t write(int descriptor, const void* data, std::size_t bytes) {
  if (fails_on(descriptor, kWrite, ENOSPC)) return -1;
  return syscall(SYS_write, descriptor, data, bytes);
}
ssize_t pwrite(int descriptor, const void* data, std::size_t bytes, off_t place) {
  if (fails_on(descriptor, kWrite, ENOSPC)) return -1;
  return syscall(SYS_pwrite64, descriptor, data, bytes, place);
}
ssize_t writev(int descriptor, const iovec* data, int count) {
  if (fails_on(descriptor, kWrite, ENOSPC)) return -1;
  return syscall(SYS_writev, descriptor, data, count);
}

// A failed close still closes the file.
int close(int descriptor) {
  const long status = syscall(SYS_close, descriptor);
  return fails_on(descriptor, kClose, EIO) ? -1 : static_cast<int>(status);
}
int fclose(std::FILE* file) {
  const int status = next<int (*)(std::FILE*)>("fclose")(file);
  return fails(kClose, EIO) ? EOF : status;
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                   void* argument) {
  if (fails(kThread, EAGAIN)) return EAGAIN;
  return next<int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*)>(
      "pthread_create")(thread, attributes, body, argument);
}

}  // extern "C"
