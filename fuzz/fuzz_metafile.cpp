// The picture loader's metafile path: WMF and EMF bytes through libwmf or libemf2svg and
// the SVG renderer. Drawing text needs a GUI application, made once without a screen.
#include <QByteArray>
#include <QGuiApplication>
#include <cstdint>
#include <cstdlib>

#include "basPicture.h"

// The font database that the application keeps for its whole life is not a leak of an input.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libfontconfig.so\n";
}

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    static int Argc = 1;
    static char Name[] = "fuzz_metafile";
    static char* Argv[] = {Name, nullptr};
    new QGuiApplication(Argc, Argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size)
{
    StdPicture Picture;
    basPicture::LoadMetafileFromMemory(QByteArray(reinterpret_cast<const char*>(Data), static_cast<qsizetype>(Size)),
                                       Picture);
    return 0;
}
