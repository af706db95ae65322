#pragma once
// One GIF file in memory and the store of frames the animation editor works on: the logical
// screen, the global palette and, from 1, one record per image (an 8-bit top-down index surface,
// a 1-bit mask with white for transparent, the frame's palette) with its graphic control record.
// It reads GIF 87a and 89a files and writes them again.
#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "clsDIB.h"
#include "clsPal.h"

class DeviceContext;

class clsGIF {
public:
    // The most frames a file or the editor may hold.
    static constexpr int16_t MaxFrames = 120;
    // The shortest file read: the last index of a file (its length less 1) must be at least this.
    static constexpr int32_t MinLastIndex = 100;
    // The logical screen of a file of one frame, and of a file that has a second image.
    static constexpr int32_t MaxScreenSide = 10000;
    static constexpr int64_t MaxScreenArea = 15000000;
    static constexpr int32_t MaxAnimationSide = 2000;
    static constexpr int64_t MaxAnimationArea = 3000000;
    // A frame's own size is not held against the screen, but a frame whose two surfaces would
    // need more than this is refused before anything is allocated, and so is a file whose frames
    // together would. The figures are a one-frame screen at its largest and 120 frames on an
    // animation's largest screen, with room for the masks and row padding.
    static constexpr int64_t MaxFrameBytes = 32 * 1024 * 1024;
    static constexpr int64_t MaxFramesBytes = 512 * 1024 * 1024;

    // Refusal codes of the readers.
    enum ErrorCode : int16_t {
        ErrNone = 0,
        ErrFileNotFound = 1,
        ErrNotGIF = 2,
        ErrNoSignature = 3,
        ErrUnknownVersion = 4,
        ErrNoTrailer = 5,
        ErrScreenSize = 6,
        ErrTestFailed = 7,
        ErrLoadFailed = 8,
        ErrOutOfBounds = 11,
        ErrTooManyFrames = 12,
        ErrNoFrame = 13,
        ErrInvalid = 20,
    };

    clsGIF();
    ~clsGIF();
    clsGIF(const clsGIF&) = delete;
    clsGIF& operator=(const clsGIF&) = delete;

    // The file tests alone; 0 is good.
    int16_t PreliminaryTest(const std::string& FileName);
    // The file tests, then the whole file through LoadStream. 0 is good; any other code leaves
    // the object empty.
    int16_t LoadFromGIFFile(const std::string& FileName);
    // Reads a whole file held in Bytes (emptied on return). 0 is good.
    int16_t LoadStream(std::vector<uint8_t>& Bytes);

    // The words the user is shown for a code: the file name and a line break first when a name
    // is given, then the message and a line break.
    static std::string ErrMessageText(int16_t Code, const std::string& FileName);
    // Shows ErrMessageText with Title through MessageSink, which the window layer sets to its
    // message box; nothing is shown while no sink is set.
    void FlagErrMessage(int16_t Code, const std::string& FileName, const std::string& Title);
    static inline std::function<void(const std::string& Text, const std::string& Title)> MessageSink;

    // Writes all frames, or FrameOne alone when it is above 0, with Comment as the file's
    // comment. False on any failure; an unfinished file stays.
    bool Save(const std::string& FileName, int16_t FrameOne = 0, const std::string& Comment = std::string());
    // Empties everything but GlobalPaletteExists.
    void ClearUp();

    void UpdateLocalPalettePerGlobal(int16_t Frame);
    void UpdateLocalPalettePerLocal(int16_t Frame);
    // Draws the frame at its place moved by (X, Y). With transparency the mask is ANDed and the
    // index image ORed; DrawBackground first fills the frame's box (at 0, 0 with AtOrigin) with
    // the transparent colour.
    void FrameDraw(DeviceContext* hDC, int16_t Frame, int32_t X, int32_t Y, bool DrawBackground = false,
                   bool AtOrigin = false);
    void FrameMask(int16_t Frame, uint8_t Index);
    bool Remask_All_Frames();
    bool FrameCopy(int16_t Source, int16_t Target);
    bool FrameReplaceImage(const std::string& FileName, int16_t Frame);
    bool FrameInsertImage(const std::string& FileName, int16_t Frame);
    bool FrameInsertBlank(int16_t Frame, int32_t Width, int32_t Height);
    void FrameDelete(int16_t Frame);
    void FrameMoveUp(int16_t Frame);
    void FrameMoveDown(int16_t Frame);
    bool FrameMoveTo(int16_t From, int16_t To);
    bool FrameSwap(int16_t One, int16_t Other);

    std::string GIFVersion() const { return Header.Version; }
    int32_t BgdWidth() const { return Header.Screen.Width; }
    void setBgdWidth(int16_t Value) { Header.Screen.Width = Value; }
    int32_t BgdHeight() const { return Header.Screen.Height; }
    void setBgdHeight(int16_t Value) { Header.Screen.Height = Value; }
    float PixelAspectRatio() const;
    void setPixelAspectRatio(float Value);
    uint16_t NetscapeLoops() const { return Header.Loops; }
    void setNetscapeLoops(uint16_t Value) { Header.Loops = Value; }
    uint8_t BgdColorIndex() const { return Header.Screen.BackgroundIndex; }
    void setBgdColorIndex(uint8_t Value) { Header.Screen.BackgroundIndex = Value; }

    uint8_t* GlobalPalettePtr() { return Header.GlobalPalette.data(); }
    void getGlobalPalette(std::vector<uint8_t>& Target) const;
    void CopyToGlobalPalette(const uint8_t* Source, int32_t Bytes);
    // Colour values 0x00BBGGRR.
    uint32_t GlobalPaletteColor(int32_t Index) const;
    void GlobalPaletteR_G_B_Get(int32_t Index, uint8_t& Red, uint8_t& Green, uint8_t& Blue) const;
    void GlobalPaletteR_G_B_Change(int32_t Index, uint8_t Red, uint8_t Green, uint8_t Blue);
    int32_t GlobalPaletteR_G_B_Find(uint8_t Red, uint8_t Green, uint8_t Blue) const;
    bool GlobalPaletteExists() const { return Header.GlobalExists; }
    void setGlobalPaletteExists(bool Value) { Header.GlobalExists = Value; }
    bool GlobalPaletteSorted() const { return Header.GlobalSorted; }
    void setGlobalPaletteSorted(bool Value) { Header.GlobalSorted = Value; }
    int16_t GlobalPaletteEntries() const { return Header.GlobalEntries; }
    void setGlobalPaletteEntries(int16_t Value) { Header.GlobalEntries = Value; }
    // The transparent index of the first frame that uses transparency, or -1.
    int32_t GlobalTransparentColorIndex() const;

    // Storing a count extends the record arrays to hold it.
    void setFramesCount(int16_t Value);
    int16_t FramesCount() const { return Count; }

    // The frame's surfaces; an empty surface for a frame number out of range.
    clsDIB& FrameDIBXOR(int16_t Frame);
    clsDIB& FrameDIBAND(int16_t Frame);
    // Frame fields: reads of a frame out of range answer 0, stores to one do nothing.
    int16_t FrameDelay(int16_t Frame) const;
    void setFrameDelay(int16_t Frame, int16_t Value);
    bool FrameInterlaced(int16_t Frame) const;
    void setFrameInterlaced(int16_t Frame, bool Value);
    int16_t FrameLeft(int16_t Frame) const;
    void setFrameLeft(int16_t Frame, int16_t Value);
    int16_t FrameTop(int16_t Frame) const;
    void setFrameTop(int16_t Frame, int16_t Value);
    int32_t FrameWidth(int16_t Frame) const;
    int32_t FrameHeight(int16_t Frame) const;
    bool FrameUseTransparentColor(int16_t Frame) const;
    void setFrameUseTransparentColor(int16_t Frame, bool Value);
    int16_t FrameTransparentColorIndex(int16_t Frame) const;
    void setFrameTransparentColorIndex(int16_t Frame, int16_t Value);
    uint32_t FrameTransparentColor(int16_t Frame) const;
    uint8_t FrameDisposalMethod(int16_t Frame) const;
    void setFrameDisposalMethod(int16_t Frame, uint8_t Value);

    uint8_t* LocalPalettePtr(int16_t Frame);
    void getLocalPalette(int16_t Frame, std::vector<uint8_t>& Target) const;
    void CopyToLocalPalette(int16_t Frame, const uint8_t* Source, int32_t Bytes);
    uint32_t LocalPaletteColor(int16_t Frame, int32_t Index) const;
    void LocalPaletteR_G_B_Get(int16_t Frame, int32_t Index, uint8_t& Red, uint8_t& Green, uint8_t& Blue) const;
    void LocalPaletteR_G_B_Change(int16_t Frame, int32_t Index, uint8_t Red, uint8_t Green, uint8_t Blue);
    bool LocalPaletteUsed(int16_t Frame) const;
    void setLocalPaletteUsed(int16_t Frame, bool Value);
    bool LocalPaletteSorted(int16_t Frame) const;
    void setLocalPaletteSorted(int16_t Frame, bool Value);
    int16_t LocalPaletteEntries(int16_t Frame) const;
    void setLocalPaletteEntries(int16_t Frame, int16_t Value);

    // The bit of value 2 of the logical screen's flags.
    bool hasUserInput() const { return (Header.Screen.Flags & 2) != 0; }
    bool hasComment() const { return !Header.Comment.empty(); }
    std::string CommentText() const { return Header.Comment; }
    void setCommentText(const std::string& Value) { Header.Comment = Value; }

    // One 8-bit surface (its rows in memory order, the top row first) as a file with the
    // palette's 256 entries as global table. TransparentColor is a colour value; negative is none.
    bool SaveGIFFrom_BPP8_DIB(const std::string& FileName, clsDIB& Dib, const clsPal& Pal, bool UseTransparent,
                              int32_t TransparentColor, bool Interlace, const std::string& Comment = std::string());
    // Loads the first image of a file into slot Frame (at most FramesCount + 1 and 120).
    int16_t LoadFromGIFFileAddOn(const std::string& FileName, int16_t Frame, int16_t Delay, uint8_t Disposal,
                                 bool MakeGlobal, bool UseTransparent, int32_t TransparentColor, int16_t Left,
                                 int16_t Top, bool Interlaced);
    // The byte at column X, memory row Y of an 8-bit surface; 0 outside it.
    uint8_t PaletteIndex_In_DIB_XY(clsDIB& Dib, int32_t X, int32_t Y) const;

private:
    // The graphic control record of a frame.
    struct FrameControl {
        bool UseTransparentColor = false;
        int16_t TransparentColorIndex = 0;
        int16_t Delay = 0;
        uint8_t DisposalMethod = 0;
        bool UserInput = false;
    };
    // The record of one image. Its surfaces are shared between records after FrameCopy, so
    // shifting the list moves references only.
    struct FrameRecord {
        std::shared_ptr<clsDIB> DIBXOR = std::make_shared<clsDIB>();
        std::shared_ptr<clsDIB> DIBAND = std::make_shared<clsDIB>();
        int16_t Left = 0;
        int16_t Top = 0;
        bool Interlaced = false;
        bool LocalPaletteUsed = false;
        bool LocalPaletteSorted = false;
        int16_t LocalPaletteEntries = 0;
        std::array<uint8_t, 1024> Palette{};
    };
    // The logical screen descriptor as it stands in the file.
    struct ScreenDescriptor {
        int16_t Width = 0;
        int16_t Height = 0;
        uint8_t Flags = 0;
        uint8_t BackgroundIndex = 0;
        uint8_t AspectByte = 0;
    };
    // Everything of a file but its frames.
    struct FileHeader {
        std::string Signature;
        std::string Version;
        ScreenDescriptor Screen;
        uint16_t Loops = 0;
        bool GlobalExists = false;
        bool GlobalSorted = false;
        int16_t GlobalEntries = 0;
        std::array<uint8_t, 1024> GlobalPalette{};
        std::string Comment;
    };
    // The first image of a file as the frame list operations take it in.
    struct LoadedImage {
        FileHeader Header;
        FrameControl Control;
        FrameRecord Record;
    };

    // The block reader, into the header and records given. With FirstImageOnly it stops at the
    // second image.
    static int16_t ReadStream(const std::vector<uint8_t>& Bytes, FileHeader& Header,
                              std::vector<FrameControl>& Controls, std::vector<FrameRecord>& Records,
                              int16_t& Images, bool FirstImageOnly);
    // The file tests; on success Bytes holds the whole file. ReadFailureCode is the code of a
    // file that passes the tests but cannot be read.
    static int16_t FileTests(const std::string& FileName, std::vector<uint8_t>& Bytes, int16_t ReadFailureCode);
    // The file tests and the reader for the first image of a file; the object is not touched.
    static int16_t ReadFirstImage(const std::string& FileName, LoadedImage& Image);
    static void DecodeFrame(FrameRecord& Record, const FrameControl& Control, uint8_t MinCodeSize,
                            const std::vector<uint8_t>& Data);
    // FrameMask on a record.
    static void MaskRecord(FrameRecord& Record, const FrameControl& Control, uint8_t Index);
    // Puts a first image read from a file into slot Frame as LoadFromGIFFileAddOn does.
    void PlaceImage(LoadedImage& Image, int16_t Frame, int16_t Delay, uint8_t Disposal, bool UseTransparent,
                    int32_t TransparentColor, int16_t Left, int16_t Top, bool Interlaced);
    // Opens a slot at Frame: the count grows by one and the frames from Frame on move up by one.
    void OpenSlot(int16_t Frame);
    // Cuts a frame after the first to its part inside the logical screen.
    void ClipFrameToScreen(int16_t Frame);
    bool ValidFrame(int16_t Frame) const { return Frame >= 1 && Frame <= Count; }
    void EnsureRecords(int32_t Upper);
    void ResetRecords();
    static uint32_t PaletteColor(const std::array<uint8_t, 1024>& Palette, int32_t Index);

    // A short-lived 32-bit surface for drawing a frame's background.
    clsDIB ScratchA;
    FileHeader Header;
    int16_t Count = 0;
    // Both from index 1; index 0 is never used.
    std::vector<FrameControl> Controls;
    std::vector<FrameRecord> Frames;
    int32_t LastIndex = 0;
    clsDIB NoSurface;
};
