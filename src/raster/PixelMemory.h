#pragma once
// The pixel memory of a surface: zeroed, as a new section is. Large blocks are mapped
// straight from the system and asked to use huge pages, which makes first touching them
// (every fresh surface is written whole) several times cheaper.
#include <cstddef>
#include <cstdint>

class PixelMemory {
public:
    PixelMemory() = default;
    explicit PixelMemory(size_t Bytes);
    ~PixelMemory() { Release(); }
    PixelMemory(const PixelMemory&) = delete;
    PixelMemory& operator=(const PixelMemory&) = delete;
    PixelMemory(PixelMemory&& Other) noexcept { *this = static_cast<PixelMemory&&>(Other); }
    PixelMemory& operator=(PixelMemory&& Other) noexcept;

    uint8_t* Data() const { return Aligned; }
    void Release();

private:
    void* Base = nullptr;
    size_t MappedBytes = 0;
    uint8_t* Aligned = nullptr;
};
