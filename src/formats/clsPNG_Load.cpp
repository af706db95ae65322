// The PNG reader: the chunk walker, the row filters, Adam7, and the conversion of the rows to a
// bitmap of 1, 4, 8, 24 or 32 bits.
#include <algorithm>
#include <cstring>
#include <fstream>

#include "basBitMap.h"
#include "basMath.h"
#include "clsCRC.h"
#include "clsPNG.h"

namespace {

constexpr uint8_t Signature[8] = {137, 'P', 'N', 'G', 13, 10, 26, 10};

uint32_t BE32(const uint8_t* P)
{
    return (uint32_t{P[0]} << 24) | (uint32_t{P[1]} << 16) | (uint32_t{P[2]} << 8) | P[3];
}

int SamplesPerPixel(uint8_t ColorType)
{
    switch (ColorType) {
    case 0: case 3: return 1;
    case 2: return 3;
    case 4: return 2;
    case 6: return 4;
    default: return 0;
    }
}

// The colour types and depths the conversion knows.
bool KnownFormat(uint8_t ColorType, uint8_t Depth)
{
    switch (ColorType) {
    case 0: return Depth == 1 || Depth == 2 || Depth == 4 || Depth == 8 || Depth == 16;
    case 3: return Depth == 1 || Depth == 2 || Depth == 4 || Depth == 8;
    case 2: case 4: case 6: return Depth == 8 || Depth == 16;
    default: return false;
    }
}

int64_t DibStride(int64_t Width, int Bits) { return (Width * Bits + 31) / 32 * 4; }

uint8_t Paeth(int A, int B, int C)
{
    const int P = A + B - C;
    const int PA = std::abs(P - A), PB = std::abs(P - B), PC = std::abs(P - C);
    if (PA <= PB && PA <= PC)
        return static_cast<uint8_t>(A);
    return static_cast<uint8_t>(PB <= PC ? B : C);
}

// Undoes one row's filter in place. Row holds the row without its filter byte, Prev the row
// above as already unfiltered (zeros for the first). An unknown filter leaves the row.
void UnfilterRow(uint8_t Type, uint8_t* Row, const uint8_t* Prev, size_t Count, size_t Left)
{
    switch (Type) {
    case 1:
        for (size_t I = Left; I < Count; ++I)
            Row[I] = static_cast<uint8_t>(Row[I] + Row[I - Left]);
        break;
    case 2:
        for (size_t I = 0; I < Count; ++I)
            Row[I] = static_cast<uint8_t>(Row[I] + Prev[I]);
        break;
    case 3:
        for (size_t I = 0; I < Left && I < Count; ++I)
            Row[I] = static_cast<uint8_t>(Row[I] + (Prev[I] >> 1));
        for (size_t I = Left; I < Count; ++I)
            Row[I] = static_cast<uint8_t>(Row[I] + ((Row[I - Left] + Prev[I]) >> 1));
        break;
    case 4:
        for (size_t I = 0; I < Left && I < Count; ++I)
            Row[I] = static_cast<uint8_t>(Row[I] + Prev[I]);
        for (size_t I = Left; I < Count; ++I)
            Row[I] = static_cast<uint8_t>(Row[I] + Paeth(Row[I - Left], Prev[I], Prev[I - Left]));
        break;
    default:
        break;
    }
}

} // namespace

int32_t clsPNG::OpenPNG(const std::string& FileName, bool TagMode)
{
    std::ifstream In(FileName, std::ios::binary | std::ios::ate);
    if (!In)
        return Error = ErrFileNotFound;
    const std::streamoff Size = In.tellg();
    if (Size < MinFileSize)
        return Error = ErrInvalidFile;
    std::vector<uint8_t> File(static_cast<size_t>(Size));
    In.seekg(0);
    if (!In.read(reinterpret_cast<char*>(File.data()), Size))
        return Error = ErrFileNotFound;
    In.close();
    return OpenPNGBytes(File.data(), File.size(), TagMode);
}

int32_t clsPNG::OpenPNGBytes(const uint8_t* Bytes, size_t Count, bool TagMode)
{
    if (static_cast<int64_t>(Count) < MinFileSize)
        return Error = ErrInvalidFile;
    if (std::memcmp(Bytes, Signature, 8) != 0)
        return Error = ErrSignature;
    const std::vector<uint8_t> File(Bytes, Bytes + Count);
    return ReadChunks(File, 8, TagMode);
}

int32_t clsPNG::OpenPNG_GetTagData(const std::string& FileName, std::vector<std::string>& Tags)
{
    const int32_t Result = OpenPNG(FileName, true);
    if (Result == 0)
        Tags = TagList;
    return Result;
}

uint32_t clsPNG::DecodeBackground(const std::vector<uint8_t>& Payload) const
{
    const uint32_t MaxLevel = HeaderDepth >= 16 ? 65535u : (1u << std::min<int>(HeaderDepth, 8)) - 1;
    switch (HeaderColorType) {
    case 0:
    case 4: {
        if (Payload.size() != 2)
            return 0;
        uint32_t Level = (uint32_t{Payload[0]} << 8) | Payload[1];
        if (Level > MaxLevel)
            return 0;
        // A 16-bit grey keeps its high byte, as the samples do.
        if (HeaderDepth >= 16)
            Level >>= 8;
        const std::vector<uint8_t> Ramp = basBitMap::BuildGrayRamp(HeaderDepth, false);
        if (Level * 3 >= Ramp.size())
            return 0;
        return RGBColor(Ramp[Level * 3], Ramp[Level * 3 + 1], Ramp[Level * 3 + 2]);
    }
    case 2:
    case 6: {
        if (Payload.size() != 6 || MaxLevel == 0)
            return 0;
        uint32_t Element[3];
        for (int I = 0; I < 3; ++I) {
            const uint32_t Value = (uint32_t{Payload[I * 2]} << 8) | Payload[I * 2 + 1];
            Element[I] = static_cast<uint32_t>(
                std::clamp(RoundHalfEven(static_cast<double>(Value) / MaxLevel * 255.0), 0, 255));
        }
        return RGBColor(Element[0], Element[1], Element[2]);
    }
    case 3: {
        if (Payload.size() != 1 || size_t{Payload[0]} * 3 + 3 > PaletteBytes.size())
            return 0;
        const uint8_t* Entry = &PaletteBytes[size_t{Payload[0]} * 3];
        return RGBColor(Entry[0], Entry[1], Entry[2]);
    }
    default:
        return 0;
    }
}

int32_t clsPNG::ReadChunks(const std::vector<uint8_t>& File, size_t Start, bool TagMode)
{
    const size_t End = File.size();
    size_t At = Start;
    int HeaderCount = 0, DataCount = 0, EndCount = 0;
    clsCRC& Check = Crc();
    Check.setAlgorithm(1);
    while (true) {
        if (At > End || End - At < 8)
            return Error = ErrPastEnd;
        const uint64_t Length = BE32(&File[At]);
        const uint8_t* Type = &File[At + 4];
        At += 8;
        // The payload and its check value must lie within the file.
        if (Length + 4 > End - At)
            return Error = ErrPastEnd;
        const uint8_t* Payload = &File[At];
        const auto Count = static_cast<size_t>(Length);
        At += Count;
        const uint32_t Stored = BE32(&File[At]);
        At += 4;
        Check.Clear();
        if (Check.AddBytes(Type, 4 + Count) != Stored)
            return Error = ErrCrc;
        const std::string Name(reinterpret_cast<const char*>(Type), 4);
        if (TagMode) {
            char Hex[16];
            std::snprintf(Hex, sizeof Hex, "%x", Stored);
            TagList.push_back(Name + "/" + std::to_string(Length) + "/" + Hex);
        }
        if (Name == "IHDR") {
            if (Count < 13)
                return Error = ErrHeader;
            int32_t W = 0, H = 0;
            std::memcpy(&W, Payload, 4);
            std::memcpy(&H, Payload + 4, 4);
            SwapBytesLong(W);
            SwapBytesLong(H);
            HeaderWidth = W;
            HeaderHeight = H;
            HeaderDepth = Payload[8];
            HeaderColorType = Payload[9];
            HeaderCompression = Payload[10];
            HeaderFilter = Payload[11];
            HeaderInterlace = Payload[12];
            if (W < 1 || H < 1)
                return Error = ErrHeader;
            ++HeaderCount;
        } else if (Name == "PLTE") {
            PaletteBytes.assign(Payload, Payload + Count);
        } else if (Name == "IDAT") {
            Data.insert(Data.end(), Payload, Payload + Count);
            ++DataCount;
        } else if (Name == "IEND") {
            ++EndCount;
            break;
        } else if (Name == "bKGD") {
            const uint32_t Color = DecodeBackground(std::vector<uint8_t>(Payload, Payload + Count));
            BkgdColorPerFile = Color;
            if (!BkgdFlag) {
                BkgdColor = Color;
                BkgdFlag = true;
            }
        } else if (Name == "gAMA") {
            uint8_t Value[4] = {0, 0, 0, 0};
            std::memcpy(Value, Payload, std::min<size_t>(Count, 4));
            GammaValue = static_cast<int32_t>(BE32(Value));
        } else if (Name == "tEXt") {
            Comment.assign(reinterpret_cast<const char*>(Payload), Count);
            Comment.push_back('\0');
        } else if (Name == "tRNS") {
            TranspFlag = true;
            TranspPayload.assign(Payload, Payload + Count);
        }
        // Every other chunk, known or not, is passed over.
    }
    if (HeaderCount == 0 || DataCount == 0 || EndCount == 0)
        return Error = ErrMissingChunk;
    if (HeaderCount > 1 || EndCount > 1)
        return Error = ErrRepeatedChunk;
    if (TagMode)
        return Error = ErrNone;
    return Error = DecodeImage();
}

int32_t clsPNG::DecodeImage()
{
    // Pictures the conversion cannot make, or too large to hold, are refused with the header.
    if (!KnownFormat(HeaderColorType, HeaderDepth) ||
        static_cast<int64_t>(HeaderWidth) * HeaderHeight > MaxPixels)
        return ErrHeader;
    const int64_t RowBytes =
        (int64_t{SamplesPerPixel(HeaderColorType)} * HeaderDepth * HeaderWidth + 7) / 8 + 1;
    const int64_t Expected = RowBytes * HeaderHeight + (HeaderInterlace == 1 ? HeaderHeight : 0);
    const auto OutSize = static_cast<size_t>(Expected + 100);
    if (HeaderCompression == 0) {
        std::vector<uint8_t> Rows(OutSize, 0);
        // The two bytes of the zlib header are dropped unread.
        if (Data.size() > 2)
            Inflate(Data.data() + 2, Data.size() - 2, Rows, false);
        Data = std::move(Rows);
    } else {
        Data.erase(Data.begin(), Data.begin() + static_cast<std::ptrdiff_t>(std::min<size_t>(2, Data.size())));
        Data.resize(OutSize, 0);
    }
    if (HeaderInterlace == 0)
        UnfilterRows();
    else if (HeaderInterlace == 1)
        Adam7();
    ProcessImageData();
    return ErrNone;
}

void clsPNG::UnfilterRows()
{
    const int Bits = SamplesPerPixel(HeaderColorType) * HeaderDepth;
    const size_t Left = std::max(1, Bits / 8);
    const size_t RowBytes = (static_cast<size_t>(Bits) * static_cast<size_t>(HeaderWidth) + 7) / 8;
    std::vector<uint8_t> Zeros(RowBytes, 0);
    const uint8_t* Prev = Zeros.data();
    uint8_t* Base = Data.data();
    // Rows move down over their filter bytes one block at a time, then are unfiltered in place.
    for (size_t Y = 0; Y < static_cast<size_t>(HeaderHeight); ++Y) {
        uint8_t* Row = Base + Y * RowBytes;
        const uint8_t Type = Base[Y * (RowBytes + 1)];
        std::memmove(Row, Base + Y * (RowBytes + 1) + 1, RowBytes);
        UnfilterRow(Type, Row, Prev, RowBytes, Left);
        Prev = Row;
    }
}

void clsPNG::Adam7()
{
    // The columns of each pass within a block of 8, and the rows: start and step.
    static const char* const Columns[7] = {"1", "5", "15", "37", "1357", "2468", "12345678"};
    static const int RowStart[7] = {0, 0, 4, 0, 2, 0, 1};
    static const int RowStep[7] = {8, 8, 8, 4, 4, 2, 2};
    const int Samples = SamplesPerPixel(HeaderColorType);
    const int Depth = HeaderDepth;
    const int Bits = Samples * Depth;
    const size_t Left = std::max(1, Bits / 8);
    const size_t PixelBytes = Depth < 8 ? 1 : static_cast<size_t>(Bits / 8);
    const int64_t Width = HeaderWidth, Height = HeaderHeight;
    std::vector<uint8_t> Out(static_cast<size_t>(Width * Height) * PixelBytes, 0);
    const uint8_t Mask = static_cast<uint8_t>((1u << std::min(Depth, 8)) - 1);
    size_t At = 0;
    for (int Pass = 0; Pass < 7; ++Pass) {
        const std::string Digits = Columns[Pass];
        const int64_t InLast = std::count_if(Digits.begin(), Digits.end(), [&](char D) { return D - '0' <= Width % 8; });
        const int64_t PassWidth = Width / 8 * static_cast<int64_t>(Digits.size()) + InLast;
        const int64_t PassRows = Height > RowStart[Pass] ? (Height - RowStart[Pass] + RowStep[Pass] - 1) / RowStep[Pass] : 0;
        if (PassWidth == 0 || PassRows == 0)
            continue;
        const size_t RowBytes = static_cast<size_t>((PassWidth * Bits + 7) / 8);
        std::vector<uint8_t> Prev(RowBytes, 0), Row(RowBytes);
        for (int64_t R = 0; R < PassRows; ++R) {
            // The buffer may end before the last passes (it is sized by the plain rows):
            // what was gathered so far stays.
            if (At + 1 + RowBytes > Data.size()) {
                Data = std::move(Out);
                return;
            }
            const uint8_t Type = Data[At];
            std::memcpy(Row.data(), &Data[At + 1], RowBytes);
            At += RowBytes + 1;
            UnfilterRow(Type, Row.data(), Prev.data(), RowBytes, Left);
            const int64_t Y = RowStart[Pass] + R * RowStep[Pass];
            uint8_t* Target = &Out[static_cast<size_t>(Y * Width) * PixelBytes];
            // Pixel I of the pass lies in block I / n at the column of digit I mod n.
            const auto N = static_cast<int64_t>(Digits.size());
            for (int64_t I = 0; I < PassWidth; ++I) {
                const int64_t X = I / N * 8 + (Digits[static_cast<size_t>(I % N)] - '1');
                if (Depth < 8) {
                    const int64_t Bit = I * Depth;
                    Target[X] = static_cast<uint8_t>((Row[static_cast<size_t>(Bit / 8)] >> (8 - Depth - Bit % 8)) & Mask);
                } else {
                    std::memcpy(Target + X * static_cast<int64_t>(PixelBytes), &Row[static_cast<size_t>(I) * PixelBytes],
                                PixelBytes);
                }
            }
            std::swap(Prev, Row);
        }
    }
    Data = std::move(Out);
}

bool clsPNG::ProcessImageData()
{
    Bitmap.clear();
    BitmapTable.clear();
    BitmapDepth = 0;
    const uint8_t Type = HeaderColorType, Depth = HeaderDepth;
    if (!KnownFormat(Type, Depth) || HeaderWidth < 1 || HeaderHeight < 1 ||
        static_cast<int64_t>(HeaderWidth) * HeaderHeight > MaxPixels)
        return false;
    const bool Unpacked = HeaderInterlace == 1;
    const size_t W = static_cast<size_t>(HeaderWidth), H = static_cast<size_t>(HeaderHeight);
    const int Samples = SamplesPerPixel(Type);
    const size_t PixelBytes = Unpacked && Depth < 8 ? 1 : static_cast<size_t>(Samples * Depth / 8);
    const size_t SourceStride =
        Unpacked ? W * PixelBytes : (static_cast<size_t>(Samples) * Depth * W + 7) / 8;
    // Rows past a short stream read as zeros.
    if (Data.size() < SourceStride * H)
        Data.resize(SourceStride * H, 0);
    const uint8_t* Source = Data.data();
    // Sample of an indexed or grey pixel: its palette index (a 16-bit grey keeps its high byte).
    auto IndexAt = [&](const uint8_t* Row, size_t X) -> uint8_t {
        if (Depth >= 8 || Unpacked)
            return Row[X * PixelBytes];
        const size_t Bit = X * Depth;
        return static_cast<uint8_t>((Row[Bit / 8] >> (8 - Depth - Bit % 8)) & ((1u << Depth) - 1));
    };

    std::vector<uint8_t> Rgba;  // top-down B, G, R, A rows, for the pictures with alpha
    if (Type == 0 || Type == 3) {
        std::vector<uint8_t> Colors = Type == 0 ? basBitMap::BuildGrayRamp(Depth, false) : PaletteBytes;
        const size_t Entries = Type == 0 ? Colors.size() / 3 : 256;
        Colors.resize(Entries * 3, 0);
        if (TranspFlag) {
            std::vector<uint8_t> Alpha(Entries, 255);
            if (Type == 3) {
                std::copy_n(TranspPayload.begin(), std::min(TranspPayload.size(), Entries), Alpha.begin());
            } else if (TranspPayload.size() >= 2 && TranspPayload[1] < Entries) {
                Alpha[TranspPayload[1]] = 0;
            }
            Rgba.resize(W * H * 4);
            for (size_t Y = 0; Y < H; ++Y) {
                const uint8_t* Row = Source + Y * SourceStride;
                uint8_t* Out = &Rgba[Y * W * 4];
                for (size_t X = 0; X < W; ++X, Out += 4) {
                    const size_t I = IndexAt(Row, X);
                    Out[0] = Colors[I * 3 + 2];
                    Out[1] = Colors[I * 3 + 1];
                    Out[2] = Colors[I * 3];
                    Out[3] = Alpha[I];
                }
            }
            AlphaFlag = true;
        } else {
            // Indexed rows: packed as in the file where the depth is 1, 4 or 8 and the rows were
            // not interlaced; one byte a pixel otherwise.
            const int OutBits = !Unpacked && (Depth == 1 || Depth == 4 || Depth == 8) ? Depth : 8;
            const size_t Stride = static_cast<size_t>(DibStride(HeaderWidth, OutBits));
            Bitmap.assign(Stride * H, 0);
            for (size_t Y = 0; Y < H; ++Y) {
                const uint8_t* Row = Source + Y * SourceStride;
                uint8_t* Out = &Bitmap[Y * Stride];
                if (OutBits == Depth)
                    std::memcpy(Out, Row, OutBits == 8 ? W : (W * OutBits + 7) / 8);
                else
                    for (size_t X = 0; X < W; ++X)
                        Out[X] = IndexAt(Row, X);
            }
            BitmapTable = std::move(Colors);
            BitmapDepth = static_cast<int16_t>(OutBits);
            WorkDepth = BitmapDepth;
            return true;
        }
    } else if (Type == 2) {
        const size_t Step = Depth / 8;  // bytes a sample
        if (TranspFlag) {
            // Each pixel is transparent where the six payload bytes equal the six bytes that start
            // at it; at depth 8 the payload reads R, R, G, G, B, B first, so that only runs of a
            // grey match. Bytes past the picture read as zeros.
            uint8_t Key[6] = {0, 0, 0, 0, 0, 0};
            const bool KeyValid = TranspPayload.size() == 6;
            if (KeyValid) {
                std::copy_n(TranspPayload.begin(), 6, Key);
                if (Depth == 8)
                    for (int I = 0; I < 3; ++I)
                        Key[I * 2] = Key[I * 2 + 1];
            }
            const size_t Total = SourceStride * H;
            Rgba.resize(W * H * 4);
            for (size_t Y = 0; Y < H; ++Y) {
                const size_t RowAt = Y * SourceStride;
                uint8_t* Out = &Rgba[Y * W * 4];
                for (size_t X = 0; X < W; ++X, Out += 4) {
                    const size_t P = RowAt + X * 3 * Step;
                    bool Match = KeyValid;
                    for (size_t K = 0; K < 6 && Match; ++K)
                        Match = (P + K < Total ? Source[P + K] : 0) == Key[K];
                    Out[0] = Source[P + 2 * Step];
                    Out[1] = Source[P + Step];
                    Out[2] = Source[P];
                    Out[3] = Match ? 0 : 255;
                }
            }
            AlphaFlag = false;
            // Straight on to composition, whether or not a background was set.
            const size_t Stride = static_cast<size_t>(DibStride(HeaderWidth, 24));
            Bitmap.assign(Stride * H, 0);
            const uint8_t Back[3] = {ColorB(BkgdColor), ColorG(BkgdColor), ColorR(BkgdColor)};
            for (size_t Y = 0; Y < H; ++Y) {
                const uint8_t* In = &Rgba[Y * W * 4];
                uint8_t* Out = &Bitmap[Y * Stride];
                for (size_t X = 0; X < W; ++X, In += 4, Out += 3)
                    for (int C = 0; C < 3; ++C)
                        Out[C] = In[3] ? In[C] : Back[C];
            }
            BitmapDepth = WorkDepth = 24;
            return true;
        }
        const size_t Stride = static_cast<size_t>(DibStride(HeaderWidth, 24));
        Bitmap.assign(Stride * H, 0);
        for (size_t Y = 0; Y < H; ++Y) {
            const uint8_t* In = Source + Y * SourceStride;
            uint8_t* Out = &Bitmap[Y * Stride];
            if (Step == 1) {
                for (size_t X = 0; X < W; ++X, In += 3, Out += 3) {
                    Out[0] = In[2];
                    Out[1] = In[1];
                    Out[2] = In[0];
                }
            } else {
                for (size_t X = 0; X < W; ++X, In += 6, Out += 3) {
                    Out[0] = In[4];
                    Out[1] = In[2];
                    Out[2] = In[0];
                }
            }
        }
        BitmapDepth = WorkDepth = 24;
        return true;
    } else {
        // Grey with alpha, and RGBA: the high byte of 16-bit samples, red and blue swapped.
        const size_t Step = Depth / 8;
        Rgba.resize(W * H * 4);
        for (size_t Y = 0; Y < H; ++Y) {
            const uint8_t* In = Source + Y * SourceStride;
            uint8_t* Out = &Rgba[Y * W * 4];
            if (Type == 4) {
                for (size_t X = 0; X < W; ++X, In += 2 * Step, Out += 4) {
                    Out[0] = Out[1] = Out[2] = In[0];
                    Out[3] = In[Step];
                }
            } else if (Step == 1) {
                for (size_t X = 0; X < W; ++X, In += 4, Out += 4) {
                    Out[0] = In[2];
                    Out[1] = In[1];
                    Out[2] = In[0];
                    Out[3] = In[3];
                }
            } else {
                for (size_t X = 0; X < W; ++X, In += 8, Out += 4) {
                    Out[0] = In[4];
                    Out[1] = In[2];
                    Out[2] = In[0];
                    Out[3] = In[6];
                }
            }
        }
        AlphaFlag = true;
    }

    if (BkgdFlag) {
        // Over the background colour: (S * A + (255 - A) * B + 255) >> 8 where A is partial.
        const size_t Stride = static_cast<size_t>(DibStride(HeaderWidth, 24));
        Bitmap.assign(Stride * H, 0);
        const uint32_t Back[3] = {ColorB(BkgdColor), ColorG(BkgdColor), ColorR(BkgdColor)};
        for (size_t Y = 0; Y < H; ++Y) {
            const uint8_t* In = &Rgba[Y * W * 4];
            uint8_t* Out = &Bitmap[Y * Stride];
            for (size_t X = 0; X < W; ++X, In += 4, Out += 3) {
                const uint32_t A = In[3];
                for (int C = 0; C < 3; ++C)
                    Out[C] = A == 255 ? In[C]
                             : A == 0 ? static_cast<uint8_t>(Back[C])
                                      : static_cast<uint8_t>((In[C] * A + (255 - A) * Back[C] + 255) >> 8);
            }
        }
        BitmapDepth = WorkDepth = 24;
        return true;
    }
    // 32-bit rows lie bottom-up.
    Bitmap.resize(W * H * 4);
    for (size_t Y = 0; Y < H; ++Y)
        std::memcpy(&Bitmap[(H - 1 - Y) * W * 4], &Rgba[Y * W * 4], W * 4);
    BitmapDepth = WorkDepth = 32;
    return true;
}

void clsPNG::DrawPNG(DeviceContext* Target, int32_t DrawWidth, int32_t DrawHeight, int32_t X, int32_t Y)
{
    if (!Target || BitmapDepth == 0 || Bitmap.empty())
        return;
    if (DrawWidth < 1)
        DrawWidth = HeaderWidth;
    if (DrawHeight < 1)
        DrawHeight = HeaderHeight;
    std::vector<uint8_t> Table = BitmapTable;
    bool Made = false;
    switch (BitmapDepth) {
    case 1:
        Table.resize(6, 0);
        basBitMap::SetPalette2FromRGB(Table);
        Made = basBitMap::BitmapFromRows1(Bitmap, HeaderWidth, HeaderHeight, true);
        break;
    case 4:
        Table.resize(48, 0);
        basBitMap::SetPalette16FromRGB(Table);
        Made = basBitMap::BitmapFromRows4(Bitmap, HeaderWidth, HeaderHeight, true);
        break;
    case 8:
        Table.resize(768, 0);
        basBitMap::SetPalette256FromRGB(Table);
        Made = basBitMap::BitmapFromRows8(Bitmap, HeaderWidth, HeaderHeight, true);
        break;
    case 24:
        Made = basBitMap::BitmapFromRows24(Bitmap, HeaderWidth, HeaderHeight, true);
        break;
    case 32:
        Made = basBitMap::BitmapFromRows32(Bitmap, HeaderWidth, HeaderHeight, false);
        break;
    default:
        break;
    }
    if (Made)
        basBitMap::PaintBitmapToDC(Target, DrawWidth, DrawHeight, X, Y);
}
