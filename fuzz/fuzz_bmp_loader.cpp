// The picture loader's BMP path, then the surface built from what it gives.
#include <QByteArray>
#include <cstdint>

#include "basPicture.h"
#include "clsDIB.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size)
{
    const QByteArray Bytes(reinterpret_cast<const char*>(Data), static_cast<qsizetype>(Size));
    StdPicture Picture;
    if (!basPicture::LoadBmpFromMemory(Bytes, Picture))
        return 0;
    clsDIB Dib;
    if (Dib.CreateDIBFromPic(Picture, false))
        Dib.CountColorsDIB(Dib);
    clsDIB Deep;
    if (Deep.CreateDIBFromPic(Picture, true))
        Deep.BPPperActualDIB(Deep);
    return 0;
}
