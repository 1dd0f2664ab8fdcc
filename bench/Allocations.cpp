#include "Allocations.h"

#include <cstddef>

#include <malloc.h>

// The C library's own functions, behind the ones that are replaced here.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* p, std::size_t size);
void __libc_free(void* p);
}

namespace {

long s_calls = 0;
long s_now = 0;
long s_peak = 0;

void Add(long bytes) {
    s_now += bytes;
    if (s_now > s_peak)
        s_peak = s_now;
}

long SizeOf(void* p) {
    return static_cast<long>(malloc_usable_size(p));
}

void* Counted(void* p) {
    ++s_calls;
    Add(SizeOf(p));
    return p;
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) {
    return Counted(__libc_malloc(size));
}

void* calloc(std::size_t count, std::size_t size) {
    return Counted(__libc_calloc(count, size));
}

void* realloc(void* p, std::size_t size) {
    Add(-SizeOf(p));
    return Counted(__libc_realloc(p, size));
}

void free(void* p) {
    Add(-SizeOf(p));
    __libc_free(p);
}

}  // extern "C"

namespace allocations {

void Reset() {
    s_calls = 0;
    s_peak = s_now;
}

Count Get() {
    return {s_calls, s_peak};
}

}  // namespace allocations
