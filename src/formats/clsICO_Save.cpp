// The icon writer: one image or all of them, each record rebuilt from its surfaces.
#include <cstring>
#include <fstream>

#include "BmpFileHeader.h"
#include "FileBytes.h"
#include "clsICO.h"

namespace {


} // namespace

bool clsICO::BuildICO(const std::vector<int16_t>& Indexes, std::vector<uint8_t>& File) const
{
    File.clear();
    if (Indexes.empty() || Indexes.size() > 32767)
        return false;
    for (const int16_t Index : Indexes)
        if (!InRange(Index))
            return false;
    // Records first, so that each entry can take its record's size and place.
    std::vector<std::vector<uint8_t>> Records;
    for (const int16_t Index : Indexes) {
        const IconImage& Image = *Images[static_cast<size_t>(Index)];
        const clsDIB& Color = Image.Color;
        const int32_t W = Color.DIBWidth(), H = Color.DIBHeight(), Bpp = Color.DIBbpp();
        std::vector<uint8_t> Record;
        PutLE32(Record, BitmapHeaderBytes);
        PutLE32(Record, static_cast<uint32_t>(W));
        PutLE32(Record, static_cast<uint32_t>(H * 2));
        PutLE16(Record, 1);
        PutLE16(Record, static_cast<uint32_t>(Bpp));
        Record.resize(BitmapHeaderBytes, 0);
        std::vector<uint8_t> Palette;
        if (Color.GetPaletteFromDIB8BPP(Palette) > 0) {
            for (size_t I = 3; I < Palette.size(); I += 4)
                Palette[I] = 0;
            Record.insert(Record.end(), Palette.begin(), Palette.end());
        }
        const size_t ColorAt = Record.size();
        Record.insert(Record.end(), Color.DIBBitsPtr(), Color.DIBBitsPtr() + Color.DIBSize());
        if (Bpp == 32 && Image.Alpha.Width() == W && Image.Alpha.Height() == H) {
            // The alpha array where the mask is black; the byte as it stands elsewhere.
            const DeviceContext* MaskDC = Image.Mask.DIBhDC();
            const int32_t Stride = Color.BytesPerScanline();
            for (int32_t Row = 0; Row < H; ++Row) {
                const uint8_t* MaskRow = MaskDC->Row(Row);
                uint8_t* Pixels = &Record[ColorAt + static_cast<size_t>(H - 1 - Row) * static_cast<size_t>(Stride)];
                for (int32_t X = 0; X < W; ++X)
                    if (!(MaskRow[X >> 3] & (0x80 >> (X & 7))))
                        Pixels[static_cast<size_t>(X) * 4 + 3] = Image.Alpha(X, Row);
            }
        }
        Record.insert(Record.end(), Image.Mask.DIBBitsPtr(), Image.Mask.DIBBitsPtr() + Image.Mask.DIBSize());
        Records.push_back(std::move(Record));
    }

    PutLE16(File, 0);
    PutLE16(File, 1);
    PutLE16(File, static_cast<uint32_t>(Indexes.size()));
    uint64_t Offset = HeaderBytes + EntryBytes * Indexes.size();
    for (size_t I = 0; I < Indexes.size(); ++I) {
        IconDirEntry Entry = Directory[static_cast<size_t>(Indexes[I])];
        // The file written is an icon: a cursor's hotspot fields become planes and depth.
        if (Header.Type == 2) {
            Entry.Planes = 1;
            Entry.BitCount = static_cast<int16_t>(Images[static_cast<size_t>(Indexes[I])]->Color.DIBbpp());
        }
        if (Offset + Records[I].size() > 0x7FFFFFFF)
            return false;
        File.push_back(Entry.Width);
        File.push_back(Entry.Height);
        File.push_back(Entry.ColorCount);
        File.push_back(Entry.Reserved);
        PutLE16(File, static_cast<uint16_t>(Entry.Planes));
        PutLE16(File, static_cast<uint16_t>(Entry.BitCount));
        PutLE32(File, static_cast<uint32_t>(Records[I].size()));
        PutLE32(File, static_cast<uint32_t>(Offset));
        Offset += Records[I].size();
    }
    for (const auto& Record : Records)
        File.insert(File.end(), Record.begin(), Record.end());
    return true;
}

bool clsICO::SaveICO_Single(int16_t Index, const std::string& FileName)
{
    std::vector<uint8_t> File;
    return BuildICO({Index}, File) && FileBytes::Write(FileName, File);
}

bool clsICO::SaveICO_All(const std::string& FileName)
{
    std::vector<int16_t> Indexes;
    for (int16_t I = 0; I < IconCount(); ++I)
        Indexes.push_back(I);
    std::vector<uint8_t> File;
    return BuildICO(Indexes, File) && FileBytes::Write(FileName, File);
}
