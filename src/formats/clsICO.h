#pragma once
// The general reader and writer of .ico and .cur files for the rest of the program (file
// browser, layer and difference dialogs): every image of a file is kept as a colour surface
// at the file's depth, a 1-bit mask surface (white transparent) and, for 32-bit images, a
// byte array of alpha values. Images are bitmaps behind a 40-byte header; an image stored as
// PNG, or an entry whose width or height byte is 0 (a 256-pixel image), makes the file
// invalid. Failures are false, never exceptions; a failed open leaves the object empty.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Array2D.h"
#include "IconFileLayout.h"
#include "clsDIB.h"

class clsICO {
public:
    using IconHeader = IconFileLayout::FileHeader;
    using IconDirEntry = IconFileLayout::DirEntry;

    static constexpr size_t HeaderBytes = 6;
    static constexpr size_t EntryBytes = 16;
    static constexpr size_t BitmapHeaderBytes = 40;
    // Largest file read whole.
    static constexpr int64_t MaxFileBytes = int64_t(256) * 1024 * 1024;
    // Pixel memory of all images of one file together; a file asking for more is refused
    // before anything is allocated (entries may all point at one large record). Settable so
    // that the fuzz target can work with less.
    static inline int64_t MaxTotalBytes = int64_t(512) * 1024 * 1024;

    clsICO();
    ~clsICO();
    clsICO(const clsICO&) = delete;
    clsICO& operator=(const clsICO&) = delete;

    // Reads every image; replaces what the object held.
    bool OpenICO(const std::string& FileName);
    // The same over a file already in memory.
    bool OpenICOBytes(const uint8_t* Bytes, size_t Count);
    // The file's count when its header type is 1 (2 for ValidCursor), the count is above 0
    // and the first entry passes the entry test; 0 otherwise.
    int16_t ValidIcons(const std::string& FileName);
    int16_t ValidCursor(const std::string& FileName);

    // Mask with AND, colour with OR (so inverse areas show as plain colour), then a 32-bit
    // image blended by its alpha over what lay there before.
    bool DrawIcon_To_DIB(clsDIB& Target, int16_t Index, int32_t X, int32_t Y);
    // Plain copies of the colour or the mask surface.
    bool DrawImage(DeviceContext* Target, int16_t Index, int32_t X, int32_t Y);
    bool DrawMask(DeviceContext* Target, int16_t Index, int32_t X, int32_t Y);

    // The first image of exactly this size and depth, -1 if none.
    int16_t SeekIcon(int32_t Width, int32_t Height, int32_t BitCount) const;
    // Of the images of this size, the first above 8 bits if there is one, otherwise the last
    // of 8 bits or below; -1 if none has the size.
    int16_t SeekIcon_Size(int32_t Width, int32_t Height) const;

    // The colour and the mask surface of an image, null outside the range.
    clsDIB* DIBXOR(int16_t Index) const;
    clsDIB* DIBAND(int16_t Index) const;
    // Copies of the alpha array (indexed x, then image row from the top). Get fails for an
    // image without one; put needs the image's size.
    bool getArrayAlpha(int16_t Index, Array2D<uint8_t>& Alpha) const;
    bool putArrayAlpha(int16_t Index, const Array2D<uint8_t>& Alpha);

    int16_t FileType() const { return Header.Type; }
    int16_t IconCount() const { return static_cast<int16_t>(Images.size()); }
    const IconHeader& FileHeader() const { return Header; }
    const std::vector<IconDirEntry>& Entries() const { return Directory; }
    // Size and depth from the colour surface, bytes from the directory entry; 0 outside the
    // range.
    int32_t IconWidth(int16_t Index) const;
    int32_t IconHeight(int16_t Index) const;
    int32_t IconBPP(int16_t Index) const;
    int32_t IconBytesInRes(int16_t Index) const;
    // Directory fields of a cursor; 0 for an icon.
    int16_t HotSpotX(int16_t Index) const;
    int16_t HotSpotY(int16_t Index) const;

    // 2 gives 1, 16 gives 4, 256 gives 8, anything else 24.
    static int16_t convBPP_Upto24(int32_t ColorCount);

    // One image as a single-image icon file (record at offset 22), or all of them, the first
    // record at 6 + 16 times the count and each next one behind the last.
    bool SaveICO_Single(int16_t Index, const std::string& FileName);
    bool SaveICO_All(const std::string& FileName);
    // The bytes those two write.
    bool BuildICO(const std::vector<int16_t>& Indexes, std::vector<uint8_t>& File) const;

    // Releases every surface and array.
    void ClearUp();

private:
    struct IconImage {
        clsDIB Color;
        clsDIB Mask;  // 1 bit, white transparent
        Array2D<uint8_t> Alpha;  // only for 32-bit images
    };
    bool ReadImage(const uint8_t* File, size_t FileSize, const IconDirEntry& Entry, int64_t& Budget);
    bool InRange(int16_t Index) const { return Index >= 0 && Index < static_cast<int16_t>(Images.size()); }

    IconHeader Header;
    std::vector<IconDirEntry> Directory;
    std::vector<std::unique_ptr<IconImage>> Images;
};
