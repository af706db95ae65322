#pragma once
// Checksums over bytes, strings and files: the CRC-32 of PNG and ZIP (reflected polynomial
// 0xEDB88320, state starting at all ones, result complemented) or the CCITT CRC-16 (polynomial
// 0x1021, not reflected, state starting at 0). Each table is built when its algorithm is first
// chosen. A new object computes CRC-32.
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

class clsCRC {
public:
    clsCRC();

    // Clear, then the string's bytes (the program's strings are already single-byte text here).
    uint32_t CalculateString(const std::string& Text);
    // Clear, then the bytes.
    uint32_t CalculateBytes(const std::vector<uint8_t>& Bytes);
    // Clear, then the file's bytes. A missing, unreadable or empty file has no value.
    std::optional<uint32_t> CalculateFile(const std::string& FileName);
    // The value so far: CRC-32 complemented, CRC-16 in the low 16 bits. Setting it sets the
    // state (a CRC-32 value is complemented back into the running state).
    uint32_t CurrValue() const;
    void setCurrValue(uint32_t Value);
    // Adds to the running value and returns CurrValue.
    uint32_t AddBytes(const std::vector<uint8_t>& Bytes);
    uint32_t AddBytes(const uint8_t* Bytes, size_t Count);
    uint32_t AddString(const std::string& Text);
    // 0 is CRC-16; any other value is stored as -1, CRC-32.
    int16_t Algorithm() const { return AlgorithmValue; }
    void setAlgorithm(int16_t Value);
    // CRC-16 state to 0, CRC-32 state to all ones.
    void Clear();

    // The CRC-32 of a whole run of bytes, for callers that need no object.
    static uint32_t Crc32(const uint8_t* Bytes, size_t Count, uint32_t Previous = 0);

private:
    int16_t AlgorithmValue = -1;
    uint16_t Crc16State = 0;
    uint32_t Crc32State = 0xFFFFFFFFu;
};
