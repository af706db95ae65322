// The PNG object's state, its messages and the small members.
#include "clsPNG.h"

#include "clsCRC.h"

clsPNG::clsPNG() = default;

clsPNG::~clsPNG() { ClearUp(); }

clsCRC& clsPNG::Crc()
{
    if (!CrcObject)
        CrcObject = std::make_unique<clsCRC>();
    return *CrcObject;
}

void clsPNG::SwapBytesLong(int32_t& Value)
{
    const auto U = static_cast<uint32_t>(Value);
    Value = static_cast<int32_t>((U >> 24) | ((U >> 8) & 0xFF00u) | ((U << 8) & 0xFF0000u) | (U << 24));
}

void clsPNG::ClearUp()
{
    HeaderWidth = HeaderHeight = 0;
    HeaderDepth = HeaderColorType = HeaderCompression = HeaderFilter = HeaderInterlace = 0;
    AlphaFlag = TranspFlag = BkgdFlag = false;
    AlphaBytes.clear();
    TranspPayload.clear();
    TranspColorValue = 0;
    BkgdColor = 0;
    BkgdColorPerFile = -1;
    Comment.clear();
    ZText.clear();
    ModTime.clear();
    Data.clear();
    Data.shrink_to_fit();
    PaletteBytes.clear();
    GammaValue = 0;
    TagList.clear();
    Error = 0;
    WorkDepth = 0;
    BitmapDepth = 0;
    Bitmap.clear();
    Bitmap.shrink_to_fit();
    BitmapTable.clear();
}

std::string clsPNG::ErrMsgOpenText(int16_t Code)
{
    static const char* const Messages[] = {
        "",
        "File not found.",
        "Invalid PNG file.",
        "Invalid PNG file signature.",
        "Chunk name invalid or dislocated.",
        "Will read pass the file end.",
        "Invalid CRC check sum found.",
        "Error reading header data.",
        "Essential data chunks not present.",
        "Critical chunk erroneoursly repeated.",
    };
    const char* Message = Code >= 1 && Code <= 9 ? Messages[Code] : "";
    return "Error: " + std::to_string(Code) + "   " + Message;
}

std::string clsPNG::ErrMsgSaveText(int16_t Code)
{
    const char* Message = Code == ErrSaveDepth ? "Not 24-bit or 8-bit." : Code == ErrSaveReadOnly ? "File exists and read only." : "";
    return "Error: " + std::to_string(Code) + "   " + Message;
}

void clsPNG::FlagErrMsgOpen(int16_t Code)
{
    if (MessageSink)
        MessageSink(ErrMsgOpenText(Code), Caption);
}

void clsPNG::FlagErrMsgSave(int16_t Code)
{
    if (MessageSink)
        MessageSink(ErrMsgSaveText(Code), Caption);
}
