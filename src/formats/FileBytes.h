#pragma once
// Whole files in and out of memory, as every codec here reads and writes them.
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <vector>

namespace FileBytes {

// The whole file; a file longer than Limit is refused, or with Head only its first Limit bytes
// are read.
inline bool Read(const std::string& FileName, std::vector<uint8_t>& Bytes, int64_t Limit, bool Head = false)
{
    Bytes.clear();
    std::ifstream In(FileName, std::ios::binary | std::ios::ate);
    if (!In)
        return false;
    const std::streamoff Size = In.tellg();
    if (Size < 0 || (Size > Limit && !Head))
        return false;
    Bytes.resize(static_cast<size_t>(Size < Limit ? Size : Limit));
    In.seekg(0);
    return Bytes.empty() ||
           static_cast<bool>(In.read(reinterpret_cast<char*>(Bytes.data()), static_cast<std::streamsize>(Bytes.size())));
}

// Writes the bytes as the whole file, deleting any file of that name first.
inline bool Write(const std::string& FileName, const std::vector<uint8_t>& Bytes)
{
    std::error_code Ec;
    std::filesystem::remove(FileName, Ec);
    std::ofstream Out(FileName, std::ios::binary | std::ios::trunc);
    if (!Out)
        return false;
    Out.write(reinterpret_cast<const char*>(Bytes.data()), static_cast<std::streamsize>(Bytes.size()));
    Out.close();
    return static_cast<bool>(Out);
}

} // namespace FileBytes
