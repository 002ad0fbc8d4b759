#include "Tests/Support/AllocationGuard.h"

#include <cstddef>
#include <cstdlib>
#include <unistd.h>

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define MOSSBIT_FOREIGN_ALLOCATOR 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || !defined(__GLIBC__)
#define MOSSBIT_FOREIGN_ALLOCATOR 1
#endif

namespace {

thread_local int guards = 0;

} // namespace

namespace mossbit {

AllocationGuard::AllocationGuard() noexcept {
    ++guards;
}

AllocationGuard::~AllocationGuard() {
    --guards;
}

} // namespace mossbit

#ifndef MOSSBIT_FOREIGN_ALLOCATOR

namespace {

void check() {
    if (guards == 0)
        return;
    guards = 0;
    constexpr char message[] = "memory was allocated or freed under an AllocationGuard\n";
    [[maybe_unused]] const auto written = write(STDERR_FILENO, message, sizeof message - 1);
    std::abort();
}

} // namespace

// The program's own definitions come before the library's, for `new` and `delete` too.
extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void __libc_free(void* block);

void* malloc(std::size_t size) noexcept {
    check();
    return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) noexcept {
    check();
    return __libc_calloc(count, size);
}

void* realloc(void* block, std::size_t size) noexcept {
    check();
    return __libc_realloc(block, size);
}

void free(void* block) noexcept {
    if (block != nullptr)
        check();
    __libc_free(block);
}

} // extern "C"

#endif
