#include "PixelMemory.h"

#include <cstdlib>
#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace {

#if defined(__linux__)
constexpr size_t HugePage = size_t(2) * 1024 * 1024;
constexpr size_t MapFrom = size_t(8) * 1024 * 1024;
#endif

} // namespace

PixelMemory::PixelMemory(size_t Bytes)
{
#if defined(__linux__)
    if (Bytes >= MapFrom) {
        // One huge page more than asked, so the block can start on a huge page boundary.
        const size_t Total = Bytes + HugePage;
        void* Block = mmap(nullptr, Total, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (Block == MAP_FAILED)
            return;
        const auto Address = reinterpret_cast<uintptr_t>(Block);
        Aligned = reinterpret_cast<uint8_t*>((Address + HugePage - 1) & ~(HugePage - 1));
        madvise(Aligned, Bytes, MADV_HUGEPAGE);
        Base = Block;
        MappedBytes = Total;
        return;
    }
#endif
    Aligned = static_cast<uint8_t*>(std::calloc(Bytes ? Bytes : 1, 1));
    Base = Aligned;
}

PixelMemory& PixelMemory::operator=(PixelMemory&& Other) noexcept
{
    if (this != &Other) {
        Release();
        Base = Other.Base;
        MappedBytes = Other.MappedBytes;
        Aligned = Other.Aligned;
        Other.Base = nullptr;
        Other.MappedBytes = 0;
        Other.Aligned = nullptr;
    }
    return *this;
}

void PixelMemory::Release()
{
#if defined(__linux__)
    if (MappedBytes) {
        munmap(Base, MappedBytes);
        Base = nullptr;
        MappedBytes = 0;
        Aligned = nullptr;
        return;
    }
#endif
    std::free(Base);
    Base = nullptr;
    Aligned = nullptr;
}
