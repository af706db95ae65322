#pragma once

// Program-wide routines shared by every window: file and folder tests, path splitting and the
// shortened form of a path used in captions and menus. On this system "/" is the path separator
// and there are no drive letters.

#include <QString>

#include <cstdint>
#include <functional>
#include <vector>

class clsDIB;
class QLabel;
class QWidget;

namespace basTsMainPro {

// The title of every message box and of the frame.
inline constexpr char ProductTitle[] = "Tessavo, Icon Editor & Animated GIF Editor";

// True if `path` names a regular file that can be opened for reading. A folder is not a file.
bool FileExists(const QString& path);

// True if `path` names an existing folder.
bool FolderExists(const QString& path);

// Pieces of a path:
//   0, 3  folder, ending in "/"            4  name and extension
//   1     full path without extension      5  name
//   2     drive (always empty here)        6  extension with its dot
// A part outside 0..6, a path over 255 characters, or one that starts with "$" or a blank gives "".
inline constexpr int MaxParsedPathLength = 255;
QString ParseFileSpec(const QString& path, int part);

// A path shortened for display. With four or more "/" it keeps the text up to the second "/",
// then "/...../", then the name and extension. If that is still longer than `maxLen` it becomes the
// first 3 characters, "......", and the last maxLen - 9 characters.
inline constexpr int DisplayPathLength = 80; // captions and menus
QString ShortenPathForDisplay(const QString& path, int maxLen);

// The program's folder, ending in "/". It is the executable's folder unless a test or an
// installation has set another one; SetAppFolder("") goes back to the executable's folder.
QString AppFolder();
void SetAppFolder(const QString& folder);

// ---- Program-wide state, settled at start-up and kept by the frame ----

// The system folders of this platform: WindowsFolder and SystemFolder without a trailing "/",
// TempFolder with one (the application folder when the system has no temporary folder).
inline QString WindowsFolder;
inline QString SystemFolder;
inline QString TempFolder;

// zlib is linked into the program; ZlibPath keeps the name the settings and messages know it by,
// and ZlibAvailable() is the test each PNG writer runs. Tests may pretend it is missing.
inline QString ZlibPath;
bool ZlibAvailable();
void SetZlibAvailableForTest(bool available);

// 0 on every system this program runs on: no version-specific workarounds apply.
inline int16_t WinVerCode = 0;

// The picture loader for PNG and TIFF input is usable (its image plugins load).
inline bool GdiPlusAvailable = false;
inline bool GdiPlusStartFailed = false;

inline int16_t ScreenDpiX = 96;
inline int16_t ScreenDpiY = 96;

// Why the next document window is created, and what it is to load.
enum DocOpenModes : int32_t {
    DocOpenFromCommandLine = 2,
    DocOpenFromFileOpen = 3,
    DocOpenFromFileNew = 4,
    DocOpenFromFileBrowser = 7,
};
inline int32_t DocOpenMode = 0;
inline QString DocOpenPath;
inline int32_t NewImageWidth = 640;
inline int32_t NewImageHeight = 480;

// One slot per document window ever opened in this run; the slot index is the window's Tag.
struct DocSlot {
    bool Dirty = false;
    bool Closed = false;
};
std::vector<DocSlot>& DocSlots();
// The document windows by slot (null once closed). Same bounds as DocSlots().
std::vector<QWidget*>& DocForms();
// Back to one empty slot, as the frame's File menu does before it opens the first document.
void ResetDocSlots();
// The index at which the next document goes: the first closed or unused slot, else a new one.
int NextFreeDocSlot();
// True if any slot holds an open document window.
bool AnyDocumentOpen();

// Option mirrors, copied from the Options menu.
inline bool SDIOnly = false;
inline int WatchRAMIndex = 0; // 0 no watch; 1..4 a limit of 10000..40000 KB
inline bool RemindColorSetting = true;
inline bool InvokeIconEditorOnProgramStart = true;
inline bool FitInEvenIfSmaller = false;
inline bool JPGAddBackEXIF = true;
// Options of the current run only; never stored.
inline bool UseAlternativeMarquee = false;
inline bool SuspendCanvasResize = false;
inline bool SuspendRegionResize = false;

// The toolbox's colours, 0x00BBGGRR.
inline uint32_t ColorFirst = 0x000000;
inline uint32_t ColorSecond = 0xFFFFFF;
inline uint32_t ColorBezierFill = 0x0000FF;

// Memories of dialogs between two uses in one run; -1 stands for the dialog's own default.
inline constexpr int32_t DialogMemoryDefault = -1;
inline constexpr int32_t TextDialogAngleDefault = -361; // the text dialog's third value
inline int32_t TextDialogMemory[3] = {DialogMemoryDefault, DialogMemoryDefault, TextDialogAngleDefault};
inline int32_t AdjustEdgeMemory = DialogMemoryDefault;
inline int32_t GradientMemory = DialogMemoryDefault;
inline int32_t ShadowMemory = DialogMemoryDefault;
inline int32_t RegionOperationMemory = DialogMemoryDefault;
void ResetDialogMemories();

// ---- Shared routines ----

// Linux paths are already short; the path comes back unchanged.
QString GetShortPath(const QString& path);
// True for a file its owner may not write (the read-only attribute of this platform).
bool IsReadOnlyFile(const QString& path);
// Makes the file writable by its owner again; false if that failed.
bool ClearFileAttributes(const QString& path);
// Deletes a file that exists and is not read-only; true if it is gone afterwards.
bool DeleteFileSafe(const QString& path);

// Each component limited to 0..255.
void ClampRGB(int16_t& r, int16_t& g, int16_t& b);
// Two upper-case hexadecimal digits per component, red first: "0C22FF".
QString ColorToHex(int r, int g, int b);

// Leaves a size that is positive and inside the limits alone unless `force`; otherwise scales it
// by the smaller of maxW / w and maxH / h.
void BestFitSize(int32_t w, int32_t h, int32_t maxW, int32_t maxH, int32_t& outW, int32_t& outH, bool force);

// The smallest box of `picture` holding a pixel other than `blank`, as left, top, right and bottom
// (inclusive). False when every pixel is blank.
struct PixelBox {
    int32_t Left = 0;
    int32_t Top = 0;
    int32_t Right = -1;
    int32_t Bottom = -1;
};
bool NonBlankBounds(const clsDIB& picture, uint32_t blank, PixelBox& box);

// The RAM watch: free memory in KB (MemAvailable of /proc/meminfo), the limit of a watch index,
// and the reminder text. CheckRamLevel shows the reminder when memory is below the limit.
int64_t AvailablePhysicalKB();
void SetAvailablePhysicalKBForTest(int64_t kb); // negative: read the system again
int32_t RamLimitKB(int watchIndex);
QString RamLowMessage(int64_t availableKB);
bool CheckRamLevel();

// ---- Routines on the program's windows ----

// Case-insensitive search of the open windows (top-level and document windows), last first.
QWidget* FindForm(const QString& name);
bool IsFormLoaded(const QString& name);
// As IsFormLoaded, then gives the window the focus; true if found.
bool ActivateFormIfLoaded(const QString& name);
// Closes and releases every window of that name.
void UnloadForm(const QString& name);
// Closes the panoramic view, the colour chart, the GIF/PNG save panel and the file browser.
void CloseToolWindows();
// Closes every document window whose slot is open.
void CloseAllDocuments();
// Sizes `inner` inside `outer` to `percent` (clamped to 1..99); with showText it also reads
// the number and "%".
void ShowPercentBar(QWidget* outer, QLabel* inner, int percent, bool showText);

// Windows of the layers above the shell (documents, editors, the colour chart) are made by name,
// so the frame never includes them. Each layer registers its windows once at start-up; tests
// register stand-ins. CreateForm gives null for a name nobody registered.
using FormFactory = std::function<QWidget*()>;
void RegisterFormFactory(const QString& name, FormFactory factory);
bool HasFormFactory(const QString& name);
QWidget* CreateForm(const QString& name);

// What the next colour chart is opened for: the colour it sets and what it shows.
enum class ColorChartTarget { Second = 0, First = 1, BezierFill = 2 };
enum class ColorChartMode { Palette256, WebSafe, Chart, PictureOwn };
inline ColorChartTarget ChartTarget = ColorChartTarget::First;
inline ColorChartMode ChartMode = ColorChartMode::Chart;
// For PictureOwn: the palette file ("JASC-PAL") that holds the picture's colours.
inline QString ChartPaletteFile;
// Writes a colour chosen in the chart to ColorFirst, ColorSecond or ColorBezierFill.
void SetChartColor(ColorChartTarget target, uint32_t color);

} // namespace basTsMainPro
