#include "PixelArray32.h"

#include "clsDIB.h"

PixelArray32::PixelArray32(clsDIB& Dib)
{
    DeviceContext* Context = Dib.DIBhDC();
    if (!Context || !Dib.DIBBitsPtr() || Context->Bpp() != 32)
        return;
    Context->EndPaint();
    Base = reinterpret_cast<uint32_t*>(Dib.DIBBitsPtr());
    W = Context->Width();
    H = Context->Height();
    Pitch = Context->Stride() / 4;
    TopDown = Context->TopDown();
}
