#include "platform/linux/FileDescriptor.h"

#include <unistd.h>
#include <utility>

namespace vardel::linux_desktop {

FileDescriptor::~FileDescriptor()
{
    if (descriptor_ >= 0)
        ::close(descriptor_);
}

FileDescriptor::FileDescriptor(FileDescriptor&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1))
{
}

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept
{
    if (this != &other) {
        FileDescriptor released(std::move(*this));
        descriptor_ = std::exchange(other.descriptor_, -1);
    }
    return *this;
}

} // namespace vardel::linux_desktop
