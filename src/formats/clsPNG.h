#pragma once
// One PNG file: the reader (chunk walker, its own inflate, row filters, Adam7, sample
// conversion, composition over the background colour) and the writer, whose deflate step is
// zlib's compress2. Failures are numbers, never exceptions: ErrorNum and the results of OpenPNG
// and SavePNG; FlagErrMsgOpen and FlagErrMsgSave turn a number into a message.
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class clsCRC;
class clsDIB;
class DeviceContext;

class clsPNG {
public:
    // Open results.
    enum OpenError : int32_t {
        ErrNone = 0,
        ErrFileNotFound = 1,
        ErrInvalidFile = 2,
        ErrSignature = 3,
        ErrChunkName = 4,  // has a message; nothing sets it
        ErrPastEnd = 5,
        ErrCrc = 6,
        ErrHeader = 7,
        ErrMissingChunk = 8,
        ErrRepeatedChunk = 9,
    };
    // Save results.
    enum SaveError : int32_t {
        ErrSaveDepth = 1,
        ErrSaveReadOnly = 2,
    };
    // Inflate results: 0 when the final block ended, negative otherwise. The walker ignores
    // them: a damaged stream gives a damaged picture.
    enum InflateResult : int32_t {
        InflateOK = 0,
        InflateInputEnded = -1,
        InflateStoredLength = -2,   // LEN and NLEN are not complements, or LEN does not fit
        InflateBlockType = -3,      // block type 3
        InflateBadCode = -4,        // a bit pattern no code has, a symbol past the table, a distance past the start
        InflateRepeatFirst = -5,    // repeat-previous as the first code length
        InflateRepeatOverrun = -6,  // a run of code lengths past HLIT + HDIST
        InflateTree = -7,           // a code tree could not be built (the message has been shown)
    };

    // Shortest file read: a smaller well-formed PNG is refused.
    static constexpr int64_t MinFileSize = 100;
    // The most pixels a decoded picture may have; a larger IHDR is refused with ErrHeader before
    // anything is allocated. Settable so that the fuzz target can work with smaller pictures.
    static inline int64_t MaxPixels = 64LL * 1024 * 1024;

    clsPNG();
    ~clsPNG();
    clsPNG(const clsPNG&) = delete;
    clsPNG& operator=(const clsPNG&) = delete;

    // Opens, checks and reads the file. The caller clears first (ClearUp). In tag mode only the
    // chunk list is made; otherwise the picture is decoded for DrawPNG.
    int32_t OpenPNG(const std::string& FileName, bool TagMode = false);
    // The same over a file already in memory.
    int32_t OpenPNGBytes(const uint8_t* Bytes, size_t Count, bool TagMode = false);
    // OpenPNG in tag mode; on 0 Tags gets one "type/length/crc" string a chunk, in file order.
    int32_t OpenPNG_GetTagData(const std::string& FileName, std::vector<std::string>& Tags);
    // The chunk walker over the file's bytes from Start; in image mode it goes on to inflate
    // and ProcessImageData.
    int32_t ReadChunks(const std::vector<uint8_t>& File, size_t Start, bool TagMode = false);
    // Converts the unfiltered rows to the bitmap that DrawPNG copies. False leaves no bitmap.
    bool ProcessImageData();
    // Copies the decoded bitmap to the target at X, Y; a width or height below 1 means the
    // picture's own.
    void DrawPNG(DeviceContext* Target, int32_t Width, int32_t Height, int32_t X, int32_t Y);
    static void SwapBytesLong(int32_t& Value);

    int32_t Width() const { return HeaderWidth; }
    int32_t Height() const { return HeaderHeight; }
    uint8_t BitDepth() const { return HeaderDepth; }
    uint8_t ColorType() const { return HeaderColorType; }
    uint8_t Compression() const { return HeaderCompression; }
    uint8_t Filter() const { return HeaderFilter; }
    bool AlphaSet() const { return AlphaFlag; }
    void setAlphaSet(bool Value) { AlphaFlag = Value; }
    // One byte a pixel, row after row, top row first; used only by the writer.
    void SetAlphaBytes(const std::vector<uint8_t>& Bytes) { AlphaBytes = Bytes; }
    bool HasTranspColor() const { return TranspFlag; }
    void setHasTranspColor(bool Value) { TranspFlag = Value; }
    uint32_t TranspColor() const { return TranspColorValue; }
    void setTranspColor(uint32_t Value) { TranspColorValue = Value; }
    // The raw tRNS payload of the file read.
    const std::vector<uint8_t>& TranspData() const { return TranspPayload; }
    bool HasBKGDChunk() const { return BkgdFlag; }
    void setHasBKGDChunk(bool Value) { BkgdFlag = Value; }
    uint32_t BKGDchunkColor() const { return BkgdColor; }
    void setBKGDchunkColor(uint32_t Value) { BkgdColor = Value; }
    // The colour of the file's last bKGD, -1 when none was read.
    int64_t BKGDchunkColorPerFile() const { return BkgdColorPerFile; }
    uint8_t Interlacing() const { return HeaderInterlace; }
    void setInterlacing(uint8_t Value) { HeaderInterlace = Value; }
    const std::string& CommentText() const { return Comment; }
    void setCommentText(const std::string& Value) { Comment = Value; }
    // Always empty: the walker passes over zTXt and tIME.
    const std::string& zText() const { return ZText; }
    const std::string& ModiTime() const { return ModTime; }
    double Gama() const { return GammaValue / 100000.0; }
    // The palette as read: three bytes an entry, red, green, blue.
    const std::vector<uint8_t>& Palette() const { return PaletteBytes; }
    // Depth of the decoded bitmap: 1, 4, 8, 24 or 32, 0 when there is none.
    int16_t WorkingDepth() const { return BitmapDepth; }
    // The decoded bitmap: DIB rows of WorkingDepth bits, bottom-up for 32 bits and top-down
    // otherwise, and its colour table as red, green, blue triples for depths up to 8.
    const std::vector<uint8_t>& BitmapRows() const { return Bitmap; }
    const std::vector<uint8_t>& BitmapPalette() const { return BitmapTable; }
    // The chunk strings of the last walk in tag mode.
    const std::vector<std::string>& Tags() const { return TagList; }

    // Empties strings, resets all flags and arrays; BKGDchunkColorPerFile becomes -1.
    void ClearUp();
    int32_t ErrorNum() const { return Error; }

    // The words of the open and save messages for a code: "Error: ", the code, three spaces
    // and the message.
    static std::string ErrMsgOpenText(int16_t Code);
    static std::string ErrMsgSaveText(int16_t Code);
    // Show those texts through MessageSink with the program's caption.
    void FlagErrMsgOpen(int16_t Code);
    void FlagErrMsgSave(int16_t Code);
    // The program's message box, set by the window layer; nothing is shown while it is unset.
    static inline std::function<void(const std::string& Text, const std::string& Title)> MessageSink;
    static constexpr const char* Caption = "Tessavo, Icon Editor & Animated GIF Editor";

    // Writes Source (Width by Height from its top left) as an 8-bit paletted or 24-bit file.
    int32_t SavePNG(const std::string& FileName, DeviceContext* Source, int32_t Width, int32_t Height,
                    int16_t BitsPerPixel);
    int32_t IDATchunkSplitSize() const { return SplitSize; }
    void setIDATchunkSplitSize(int32_t Value) { SplitSize = Value; }

    // The inflate of the reader. Out keeps its size: output past its end is cut, each further
    // byte landing on the last position, and decoding goes on to the stream's end. With
    // Deflate64 length 258 takes 16 extra bits. Written (when given) gets the bytes produced,
    // cut included.
    static int32_t Inflate(const uint8_t* In, size_t InLength, std::vector<uint8_t>& Out, bool Deflate64,
                           size_t* Written = nullptr);

private:
    int32_t DecodeImage();
    void UnfilterRows();
    void Adam7();
    uint32_t DecodeBackground(const std::vector<uint8_t>& Payload) const;
    void WriteChunk(std::vector<uint8_t>& File, const char* Type, const uint8_t* Payload, size_t Count);

    clsCRC& Crc();

    int32_t HeaderWidth = 0;
    int32_t HeaderHeight = 0;
    uint8_t HeaderDepth = 0;
    uint8_t HeaderColorType = 0;
    uint8_t HeaderCompression = 0;
    uint8_t HeaderFilter = 0;
    uint8_t HeaderInterlace = 0;
    bool AlphaFlag = false;
    std::vector<uint8_t> AlphaBytes;
    bool TranspFlag = false;
    std::vector<uint8_t> TranspPayload;
    uint32_t TranspColorValue = 0;
    bool BkgdFlag = false;
    uint32_t BkgdColor = 0;
    int64_t BkgdColorPerFile = -1;
    std::string Comment;
    std::string ZText;
    std::string ModTime;
    std::vector<uint8_t> Data;  // IDAT payloads, then the inflated rows, then the unfiltered rows
    std::vector<uint8_t> PaletteBytes;
    int32_t GammaValue = 0;
    std::vector<std::string> TagList;
    int32_t Error = 0;
    int16_t WorkDepth = 0;  // depth of the rows in Data during conversion
    int16_t BitmapDepth = 0;
    std::vector<uint8_t> Bitmap;
    std::vector<uint8_t> BitmapTable;
    int32_t SplitSize = 204800;
    std::unique_ptr<clsCRC> CrcObject;
};
