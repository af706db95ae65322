#pragma once

// The settings file "TsPaint.ini": where it lives, the name of every section and key, and the rule
// by which each stored text becomes a setting. Readers pass an empty default to the INI layer and
// apply their own default here, so an empty value and a missing key read alike.

#include <QString>

#include <cstdint>
#include <optional>

namespace basSettings {

inline constexpr char SettingsFileName[] = "TsPaint.ini";

// The application folder + "TsPaint.ini" when that folder is writable, else the per-user data
// folder + "/TsPaint.ini". The ForWriting form also creates the per-user folder.
QString SettingsFilePath();
QString SettingsFilePathForWriting();

// Sections and keys, spelled as old settings files have them.
inline constexpr char SectionOptions[] = "Options";
inline constexpr char KeySDIOnly[] = "SDIOnly";
inline constexpr char KeyWatchRAM[] = "WatchRAM";
inline constexpr char KeyRemindColorSetting[] = "RemindColorSetting";
inline constexpr char KeyInvokeIconEditorOnProgramStart[] = "InvokeIconEditorOnProgramStart";
inline constexpr char KeyFitInEvenIfSmaller[] = "FitInEvenIfSmaller";
inline constexpr char KeyJPGAddBackEXIF[] = "JPGAddBackEXIF";

inline constexpr char SectionSettings[] = "Settings";
inline constexpr char KeyBrushSizeIndex[] = "BrushSizeIndex";

inline constexpr char SectionColorChartPos[] = "ColorChart Pos";
inline constexpr char KeyLeft[] = "Left";
inline constexpr char KeyTop[] = "Top";

inline constexpr char SectionDialogShowPreview[] = "DialogShowPreview";
inline constexpr char KeyShowPreview[] = "ShowPreview";

inline constexpr char SectionSlideShow[] = "SlideShow";
inline constexpr char KeySlideSize[] = "SlideSize";
inline constexpr char KeySlideStyle[] = "SlideStyle";
inline constexpr char KeySlidePace[] = "SlidePace";

inline constexpr char SectionLastFolder[] = "Last Folder";
inline constexpr char KeyLastFolderPAL[] = "PAL";
inline constexpr char KeyLastFolderFileBrowse[] = "FileBrowse";
inline constexpr char KeyLastFolderCustomBrush[] = "CustomBrush";
inline constexpr char KeyLastFolderCustomPattern[] = "CustomPattern";
inline constexpr char KeyLastFolderStamp[] = "Stamp";
inline constexpr char KeyLastFolderBatchConvert[] = "BatchConvert";
// Spelled so since the first release; correcting it would lose the folder of every old file.
inline constexpr char KeyLastFolderGIFaniBuild[] = "GIFaniBuildLactFolder";
inline constexpr char KeyLastFolderPALGIFani[] = "PAL_GIFani";
inline constexpr char KeyLastFolderGIFaniExtract[] = "GIFaniExtractFolder";

inline constexpr char SectionGIFaniScreenPos[] = "GIFani Screen Pos";
// Keys "Left" and "Top" as above.
inline constexpr char KeyWidth[] = "Width";
inline constexpr char KeyHeight[] = "Height";
inline constexpr char KeyWinState[] = "WinState";

inline constexpr char SectionIconEditorOptions[] = "IconEditor Options";
inline constexpr char KeyGridLines[] = "GridLines";
inline constexpr char KeyDisplayPixelRGB[] = "DisplayPixelRGB";
inline constexpr char KeyTooltip256ColorChart[] = "Tooltip256ColorChart";
inline constexpr char KeyFlagMsgIfAlpha[] = "FlagMsgIfAlpha";

inline constexpr char SectionIconEditorLastFolder[] = "IconEditor Last Folder";
inline constexpr char KeyIconEditorLastFolder[] = "LastFolder";

// Reading rules, on the text as read (trimmed; empty when missing).

// True only for exactly "-1"; any other non-empty text is false; empty takes `whenMissing`.
bool BooleanFromText(const QString& stored, bool whenMissing);
QString TextFromBoolean(bool value); // "-1" or "0"

// The checked entry of the RAM watch menu: 3 when missing, the stored index when it is a whole
// number 0..4, and no entry at all for anything else.
inline constexpr int WatchRAMEntries = 5;
inline constexpr int WatchRAMDefault = 3;
std::optional<int> WatchRAMFromText(const QString& stored);
// The mirror copied from the menu: the checked index, or 0 (no watch) when none is checked.
int WatchRAMMirror(std::optional<int> checkedEntry);

// The brush size list index: 2 when missing, not a whole number, or outside 0..listCount-1.
inline constexpr int BrushSizeIndexDefault = 2;
int BrushSizeIndexFromText(const QString& stored, int listCount);

// Colour chart position in twips; -1 when missing or not a 16-bit whole number.
struct ColorChartPos {
    int16_t Left = -1;
    int16_t Top = -1;
};
int16_t ColorChartCoordinateFromText(const QString& stored);
// Keeps the chart on the screen: below 0 becomes 0, beyond the screen's size less the chart's
// (2790 twips across, 7110 down) is pulled back. On a screen smaller than the chart the left or top
// edge wins and the value is 0.
inline constexpr int ColorChartMarginWidth = 2790;
inline constexpr int ColorChartMarginHeight = 7110;
ColorChartPos ClampColorChartPos(ColorChartPos pos, int screenWidthTwips, int screenHeightTwips);

// "SlideSize" counts only if its text holds one of the digits "0123456789" anywhere; its value is
// then the whole number the text starts with (0 if it starts otherwise). Without a digit it is 0.
int SlideSizeFromText(const QString& stored);
// "SlideStyle" and "SlidePace": the whole number the text starts with, 0 when missing.
int NumberFromText(const QString& stored);

// A stored folder is used only while it still exists; otherwise the caller's fallback.
QString FolderOrFallback(const QString& stored, const QString& fallback);

// Readers and writers on the settings file.

QString ReadRaw(const QString& section, const QString& key, const QString& iniFile);
// Writes only when the stored text differs from `value` or the key is absent (or empty). True if
// it wrote.
bool WriteIfChanged(const QString& section, const QString& key, const QString& value, const QString& iniFile);

// The Options menu as stored. WatchRAMChecked is the menu's checked entry, if any.
struct OptionSettings {
    bool SDIOnly = false;
    std::optional<int> WatchRAMChecked = WatchRAMDefault;
    bool RemindColorSetting = true;
    bool InvokeIconEditorOnProgramStart = true;
    bool FitInEvenIfSmaller = false;
    bool JPGAddBackEXIF = true;
};
OptionSettings ReadOptions(const QString& iniFile);
// Each key is read first and written only when it changed or is absent. "WatchRAM" is written as
// its mirror, so a menu with no entry checked stores 0.
void WriteOptions(const OptionSettings& options, const QString& iniFile);

int ReadBrushSizeIndex(int listCount, const QString& iniFile);
void WriteBrushSizeIndex(int index, const QString& iniFile);

ColorChartPos ReadColorChartPos(const QString& iniFile); // unclamped, -1 when unset
void WriteColorChartPos(ColorChartPos pos, const QString& iniFile);

bool ReadShowPreview(const QString& iniFile); // true when missing
void WriteShowPreview(bool showPreview, const QString& iniFile);

struct SlideShowSettings {
    int SlideSize = 0;
    int SlideStyle = 0;
    int SlidePace = 0;
};
SlideShowSettings ReadSlideShow(const QString& iniFile);
void WriteSlideShow(const SlideShowSettings& slideShow, const QString& iniFile);

// Any "Last Folder" key (and the icon editor's "LastFolder" through the section overload).
QString ReadLastFolder(const QString& key, const QString& fallback, const QString& iniFile);
QString ReadLastFolder(const QString& section, const QString& key, const QString& fallback,
                       const QString& iniFile);
void WriteLastFolder(const QString& key, const QString& folder, const QString& iniFile);

} // namespace basSettings
