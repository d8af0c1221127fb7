#pragma once

#include <cstdlib>
#include <memory>

namespace vardel::linux_desktop {

// What a C library hands over to be released with free(), as xcb's replies are.
template<typename T> struct FreeDeleter {
    void operator()(T* pointer) const { std::free(pointer); }
};
template<typename T> using MallocHandle = std::unique_ptr<T, FreeDeleter<T>>;

} // namespace vardel::linux_desktop
