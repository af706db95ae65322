#include "clsCRC.h"

#include <array>
#include <fstream>

namespace {

// Table 0 is the classic byte table; tables 1 to 7 advance it by one to seven more zero bytes,
// so that eight bytes are taken in one step with the same result.
using Crc32Tables = std::array<std::array<uint32_t, 256>, 8>;

Crc32Tables MakeCrc32Tables() {
    Crc32Tables Tables{};
    for (uint32_t I = 0; I < 256; ++I) {
        uint32_t C = I;
        for (int K = 0; K < 8; ++K)
            C = (C & 1) ? 0xEDB88320u ^ (C >> 1) : C >> 1;
        Tables[0][I] = C;
    }
    for (uint32_t I = 0; I < 256; ++I)
        for (size_t T = 1; T < 8; ++T)
            Tables[T][I] = (Tables[T - 1][I] >> 8) ^ Tables[0][Tables[T - 1][I] & 0xFF];
    return Tables;
}

std::array<uint16_t, 256> MakeCrc16Table() {
    std::array<uint16_t, 256> Table{};
    for (uint32_t I = 0; I < 256; ++I) {
        uint32_t Remainder = 0;
        uint32_t Data = I << 8;
        for (int K = 0; K < 8; ++K) {
            Remainder = ((Data ^ Remainder) & 0x8000) ? (Remainder << 1) ^ 0x1021 : Remainder << 1;
            Data <<= 1;
        }
        Table[I] = static_cast<uint16_t>(Remainder);
    }
    return Table;
}

// Built on first use of each algorithm.
const Crc32Tables& Crc32Table() {
    static const Crc32Tables Tables = MakeCrc32Tables();
    return Tables;
}

const std::array<uint16_t, 256>& Crc16Table() {
    static const std::array<uint16_t, 256> Table = MakeCrc16Table();
    return Table;
}

uint32_t Crc32Run(uint32_t State, const uint8_t* Bytes, size_t Count) {
    const Crc32Tables& T = Crc32Table();
    while (Count >= 8) {
        const uint32_t Low = State ^ (uint32_t{Bytes[0]} | uint32_t{Bytes[1]} << 8 | uint32_t{Bytes[2]} << 16 |
                                      uint32_t{Bytes[3]} << 24);
        State = T[7][Low & 0xFF] ^ T[6][(Low >> 8) & 0xFF] ^ T[5][(Low >> 16) & 0xFF] ^ T[4][Low >> 24] ^
                T[3][Bytes[4]] ^ T[2][Bytes[5]] ^ T[1][Bytes[6]] ^ T[0][Bytes[7]];
        Bytes += 8;
        Count -= 8;
    }
    for (size_t I = 0; I < Count; ++I)
        State = (State >> 8) ^ T[0][(State ^ Bytes[I]) & 0xFF];
    return State;
}

} // namespace

clsCRC::clsCRC() { setAlgorithm(1); }

void clsCRC::setAlgorithm(int16_t Value) {
    AlgorithmValue = Value == 0 ? 0 : -1;
    if (AlgorithmValue == 0)
        Crc16Table();
    else
        Crc32Table();
}

void clsCRC::Clear() {
    Crc16State = 0;
    Crc32State = 0xFFFFFFFFu;
}

uint32_t clsCRC::CurrValue() const { return AlgorithmValue == 0 ? Crc16State : ~Crc32State; }

void clsCRC::setCurrValue(uint32_t Value) {
    if (AlgorithmValue == 0)
        Crc16State = static_cast<uint16_t>(Value);
    else
        Crc32State = ~Value;
}

uint32_t clsCRC::AddBytes(const uint8_t* Bytes, size_t Count) {
    if (Count == 0)
        return CurrValue();
    if (AlgorithmValue == 0) {
        const uint16_t* Table = Crc16Table().data();
        uint32_t State = Crc16State;
        for (size_t I = 0; I < Count; ++I)
            State = ((State << 8) & 0xFF00) ^ Table[((State >> 8) ^ Bytes[I]) & 0xFF];
        Crc16State = static_cast<uint16_t>(State);
    } else {
        Crc32State = Crc32Run(Crc32State, Bytes, Count);
    }
    return CurrValue();
}

uint32_t clsCRC::AddBytes(const std::vector<uint8_t>& Bytes) { return AddBytes(Bytes.data(), Bytes.size()); }

uint32_t clsCRC::AddString(const std::string& Text) {
    return AddBytes(reinterpret_cast<const uint8_t*>(Text.data()), Text.size());
}

uint32_t clsCRC::CalculateBytes(const std::vector<uint8_t>& Bytes) {
    Clear();
    return AddBytes(Bytes);
}

uint32_t clsCRC::CalculateString(const std::string& Text) {
    Clear();
    return AddString(Text);
}

std::optional<uint32_t> clsCRC::CalculateFile(const std::string& FileName) {
    Clear();
    std::ifstream In(FileName, std::ios::binary);
    if (!In)
        return std::nullopt;
    std::vector<uint8_t> Buffer(1 << 16);
    size_t Total = 0;
    while (In) {
        In.read(reinterpret_cast<char*>(Buffer.data()), static_cast<std::streamsize>(Buffer.size()));
        const auto Got = static_cast<size_t>(In.gcount());
        AddBytes(Buffer.data(), Got);
        Total += Got;
    }
    if (Total == 0)
        return std::nullopt;
    return CurrValue();
}

uint32_t clsCRC::Crc32(const uint8_t* Bytes, size_t Count, uint32_t Previous) {
    return ~Crc32Run(~Previous, Bytes, Count);
}
