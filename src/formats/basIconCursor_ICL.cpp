// The .icl scan: no walk of the file's tables, only a byte-by-byte search of the whole file for
// what looks like an icon's bitmap header, kept where the record it implies fits.
#include "basIconCursor.h"
#include "basIconCursor_Layout.h"

namespace basIconCursor {

namespace {

bool IclWidth(int32_t Width)
{
    return Width == 16 || Width == 24 || Width == 32 || Width == 48;
}

bool IclBits(int32_t Bits)
{
    return Bits == 1 || Bits == 4 || Bits == 8 || Bits == 24 || Bits == 32;
}

} // namespace

bool ScanIclFile(const std::string& FileName, std::vector<IclRecord>& Records)
{
    Records.clear();
    std::vector<uint8_t> Bytes;
    if (!ReadFileBytes(FileName, Bytes, MaxScanBytes)) {
        SetLastError(ErrFile);
        return false;
    }
    SetLastError(ErrInvalid);
    const int64_t Size = static_cast<int64_t>(Bytes.size());
    if (Size < 2 || Bytes[0] != 'M' || Bytes[1] != 'Z')
        return false;
    const uint8_t* B = Bytes.data();
    int64_t LastEnd = 0;
    for (int64_t P = 0; Size - P > 40; ++P) {
        // Header size 40, width, height twice the width, one plane, a known depth.
        if (B[P] != 40)
            continue;
        const int32_t Width = B[P + 4];
        const int32_t Bits = B[P + 14];
        if (!IclWidth(Width) || B[P + 8] != 2 * Width || B[P + 12] != 1 || !IclBits(Bits))
            continue;
        const int64_t End = P + IconResourceBytes(Width, Width, static_cast<int16_t>(Bits));
        if (End > Size || (!Records.empty() && P < LastEnd))
            continue;
        IclRecord Record;
        Record.Start = P;
        Record.End = End;
        Record.Bits = static_cast<int16_t>(Bits);
        Record.Width = Width;
        Record.SizeText = std::to_string(Width) + "x" + std::to_string(Bits);
        Record.SizeText.resize(5, ' ');
        Records.push_back(Record);
        LastEnd = End;
    }
    SetLastError(ErrNone);
    return true;
}

bool LoadIclRecordToPictures(const std::string& FileName, const IclRecord& Record, clsDIB& Image, clsDIB& Mask,
                             Array2D<uint8_t>& Alpha)
{
    std::vector<uint8_t> Bytes;
    if (!ReadFileBytes(FileName, Bytes, MaxScanBytes)) {
        SetLastError(ErrFile);
        return false;
    }
    SetLastError(ErrInvalid);
    if (Record.Start < 0 || Record.End > static_cast<int64_t>(Bytes.size()) || !IclWidth(Record.Width))
        return false;
    return DecodeIconRecord(Bytes, Record.Start, Record.Width, Record.Width, Image, Mask, Alpha);
}

} // namespace basIconCursor
