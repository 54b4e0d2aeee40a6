#include "support/heap_probe.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> requests{0};
std::atomic<std::size_t> failing_size{0};

bool IsGranted(std::size_t size)
{
    ++requests;
    const std::size_t limit = failing_size;
    return limit == 0 || size < limit;
}

} // namespace

// The linker sends every call here (--wrap) and gives the true function the name with __real_. Only the length of a
// size differs in the compiler's name for operator new.
#ifdef _WIN32
#define NEW_OBJECT(prefix) prefix##_Znwy
#define NEW_ARRAY(prefix) prefix##_Znay
#else
#define NEW_OBJECT(prefix) prefix##_Znwm
#define NEW_ARRAY(prefix) prefix##_Znam
#endif

extern "C" {
void *__real_malloc(std::size_t size);
void *__real_calloc(std::size_t count, std::size_t size);
void *__real_realloc(void *block, std::size_t size);
void *NEW_OBJECT(__real_)(std::size_t size);
void *NEW_ARRAY(__real_)(std::size_t size);

void *__wrap_malloc(std::size_t size);
void *__wrap_calloc(std::size_t count, std::size_t size);
void *__wrap_realloc(void *block, std::size_t size);
void *NEW_OBJECT(__wrap_)(std::size_t size);
void *NEW_ARRAY(__wrap_)(std::size_t size);

void *__wrap_malloc(std::size_t size)
{
    return IsGranted(size) ? __real_malloc(size) : nullptr;
}

void *__wrap_calloc(std::size_t count, std::size_t size)
{
    return IsGranted(count * size) ? __real_calloc(count, size) : nullptr;
}

void *__wrap_realloc(void *block, std::size_t size)
{
    return IsGranted(size) ? __real_realloc(block, size) : nullptr;
}

void *NEW_OBJECT(__wrap_)(std::size_t size)
{
    if (!IsGranted(size))
        throw std::bad_alloc();
    return NEW_OBJECT(__real_)(size);
}

void *NEW_ARRAY(__wrap_)(std::size_t size)
{
    if (!IsGranted(size))
        throw std::bad_alloc();
    return NEW_ARRAY(__real_)(size);
}
}

namespace kessil::test {

std::size_t HeapProbe::Requests()
{
    return requests;
}

void HeapProbe::FailFrom(std::size_t size)
{
    failing_size = size;
}

} // namespace kessil::test
